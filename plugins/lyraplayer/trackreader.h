#pragma once

#include <QByteArray>
#include <QImage>
#include <QMutex>
#include <QObject>
#include <QSize>
#include <QThread>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>

/// Reads what files of music hold besides the music, one after the other in a thread of its own, a
/// cover before the titles that wait. Streams have nothing to be read. Tracks are as the playlist
/// has them.
class TrackReader : public QObject
{
    Q_OBJECT

public:
    /// How long a decoder that is told to stop may go on, milliseconds.
    static constexpr int Patience = 10000;

    explicit TrackReader(QObject* parent);
    /// Gives up what it is doing and waits for that; ends the process if the decoder does not obey.
    ~TrackReader() override;

    /// titleRead() follows if the track's tags give it a title.
    void askTitle(int number, const QByteArray& track);
    /// coverRead() follows, unless another cover is asked for meanwhile; with a null image if the
    /// track has no cover.
    void askCover(const QByteArray& track, QSize box);

signals:
    void titleRead(int number, const QString& title);
    void coverRead(const QImage& cover);

private:
    using Cancellation = std::shared_ptr<std::atomic<bool>>;
    void post(bool first, std::function<void()> work);
    void finishCover(const Cancellation& request, const QImage& cover);

    QThread thread_;
    QObject worker_; ///< lives in the thread
    QMutex mutex_;
    std::deque<std::function<void()>> work_; ///< guarded by the mutex; what is asked of the thread
    Cancellation titles_;
    Cancellation cover_;
};
