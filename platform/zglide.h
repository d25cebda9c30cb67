#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

/// Moves a text that is wider than its place, so that all of it can be read: rests, glides to the
/// text's end, rests, and this once more. Then it is over and nothing wakes the process.
class ZGlide : public QObject
{
    Q_OBJECT

public:
    static constexpr int RestMilliseconds = 700;
    static constexpr int PixelsPerSecond = 30;
    static constexpr int Times = 2;

    explicit ZGlide(QObject* parent) : QObject(parent) {}

    /// Begins anew, for a text that is `distance` pixels wider than its place. Without motion, or
    /// if it is not wider, this is stop().
    void start(int distance);
    void stop();
    bool isRunning() const { return timer_.isActive(); }
    /// How far the text has glided from its beginning to its end, in pixels; negative while it does
    /// not.
    qreal offset() const { return offset_; }

signals:
    /// offset() is another one.
    void moved();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    enum class Phase { Before, Gliding, Behind };

    void enter(Phase phase);
    void setOffset(qreal offset);

    QBasicTimer timer_;
    QElapsedTimer since_;
    Phase phase_ = Phase::Before;
    int distance_ = 0;
    int done_ = 0;
    qreal offset_ = -1;
};
