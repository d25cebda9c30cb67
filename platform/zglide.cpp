#include "platform/zglide.h"

#include "platform/zmotion.h"

#include <QTimerEvent>

#include <algorithm>

namespace
{

constexpr int SecondMilliseconds = 1000;

} // namespace

void ZGlide::start(int distance)
{
    stop();
    if (!ZMotion::isEnabled() || distance <= 0)
        return;
    distance_ = distance;
    done_ = 0;
    enter(Phase::Before);
}

void ZGlide::stop()
{
    timer_.stop();
    setOffset(-1);
}

void ZGlide::enter(Phase phase)
{
    phase_ = phase;
    since_.start();
    // While it glides a step is a pixel; the clock decides where it is all the same.
    timer_.start(phase == Phase::Gliding ? SecondMilliseconds / PixelsPerSecond : RestMilliseconds,
                 Qt::PreciseTimer, this);
}

void ZGlide::setOffset(qreal offset)
{
    if (offset_ == offset)
        return;
    offset_ = offset;
    emit moved();
}

void ZGlide::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != timer_.timerId())
        return;
    switch (phase_) {
    case Phase::Before:
        setOffset(0);
        enter(Phase::Gliding);
        break;
    case Phase::Gliding:
        setOffset(std::min<qreal>(distance_,
                                  qreal(since_.elapsed() * PixelsPerSecond) / SecondMilliseconds));
        if (offset_ >= distance_)
            enter(Phase::Behind);
        break;
    case Phase::Behind:
        if (++done_ == Times) {
            stop();
        } else {
            setOffset(-1);
            enter(Phase::Before);
        }
        break;
    }
}
