#include "plugins/lyraplayer/trackreader.h"

#include "plugins/lyraplayer/cover.h"
#include "plugins/lyraplayer/playlist.h"
#include "plugins/lyraplayer/tags.h"

#include <cstdlib>
#include <utility>

TrackReader::TrackReader(QObject* parent)
    : QObject(parent), titles_(std::make_shared<std::atomic<bool>>(false))
{
    worker_.moveToThread(&thread_);
    thread_.start();
}

TrackReader::~TrackReader()
{
    *titles_ = true;
    if (cover_)
        *cover_ = true;
    thread_.quit();
    // Some decoders read all there is and then compute for as long as they like.
    if (!thread_.wait(Patience))
        std::_Exit(EXIT_FAILURE);
}

void TrackReader::askTitle(int number, const QByteArray& track)
{
    if (isStream(track))
        return;
    post(false, [this, number, track, request = titles_] {
        const QString title = *request ? QString() : readTags(track, false, *request).title;
        if (title.isEmpty())
            return;
        QMetaObject::invokeMethod(this, [this, number, title] { emit titleRead(number, title); });
    });
}

void TrackReader::askCover(const QByteArray& track, QSize box)
{
    if (cover_)
        *cover_ = true;
    cover_ = std::make_shared<std::atomic<bool>>(false);
    post(true, [this, track, box, request = cover_] {
        if (*request)
            return;
        const QImage cover = isStream(track) ? QImage() : readCover(track, box, *request);
        QMetaObject::invokeMethod(this, [this, request, cover] { finishCover(request, cover); });
    });
}

/// Lets the thread do something, with what is looked at most before all that waits.
void TrackReader::post(bool first, std::function<void()> work)
{
    {
        const QMutexLocker locker(&mutex_);
        work_.insert(first ? work_.begin() : work_.end(), std::move(work));
    }
    QMetaObject::invokeMethod(&worker_, [this] {
        QMutexLocker locker(&mutex_);
        const std::function<void()> next = std::move(work_.front());
        work_.pop_front();
        locker.unlock();
        next();
    });
}

void TrackReader::finishCover(const Cancellation& request, const QImage& cover)
{
    if (request != cover_)
        return;
    cover_.reset();
    emit coverRead(cover);
}
