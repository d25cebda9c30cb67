#include "plugins/picview/slideshow.h"

SlideShow::SlideShow(QObject* parent) : QObject(parent)
{
    timer_.setSingleShot(true);
    timer_.setInterval(Interval);
    connect(&timer_, &QTimer::timeout, this, &SlideShow::nextWanted);
}

void SlideShow::start()
{
    running_ = true;
    unusable_ = 0;
    timer_.start();
}

void SlideShow::stop()
{
    running_ = false;
    timer_.stop();
}

void SlideShow::pictureCame(bool usable, int count)
{
    if (!running_)
        return;
    if (usable) {
        unusable_ = 0;
        timer_.start();
    } else if (++unusable_ < count) {
        emit nextWanted();
    } else {
        stop();
        emit ended();
    }
}
