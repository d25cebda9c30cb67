#pragma once

#include <QObject>
#include <QTimer>

/// Asks for one picture after the other. What cannot be shown is passed over at once; when nothing
/// can be, the show ends.
class SlideShow : public QObject
{
    Q_OBJECT

public:
    /// How long a picture is shown, milliseconds, unless it is set otherwise.
    static constexpr int Interval = 4000;

    explicit SlideShow(QObject* parent);

    void setInterval(int milliseconds) { timer_.setInterval(milliseconds); }
    bool isRunning() const { return running_; }
    /// Begins with the picture that is shown.
    void start();
    void stop();
    /// To be called when a picture of `count` has come; `usable` if it can be shown.
    void pictureCame(bool usable, int count);

signals:
    void nextWanted();
    /// No picture can be shown.
    void ended();

private:
    QTimer timer_;
    bool running_ = false;
    int unusable_ = 0; ///< in a row
};
