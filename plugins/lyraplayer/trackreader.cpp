#include "plugins/lyraplayer/trackreader.h"

#include "plugins/lyraplayer/cover.h"
#include "plugins/lyraplayer/playlist.h"
#include "plugins/lyraplayer/tags.h"

#include <cstdlib>

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
    QMetaObject::invokeMethod(&worker_, [this, number, track, request = titles_] {
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
    QMetaObject::invokeMethod(&worker_, [this, track, box, request = cover_] {
        if (*request)
            return;
        const QImage cover = isStream(track) ? QImage() : readCover(track, box, *request);
        QMetaObject::invokeMethod(this, [this, request, cover] { finishCover(request, cover); });
    });
}

void TrackReader::finishCover(const Cancellation& request, const QImage& cover)
{
    if (request != cover_)
        return;
    cover_.reset();
    emit coverRead(cover);
}
