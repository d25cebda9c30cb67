#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>

#include <memory>

class QCopChannel;
class QSocketNotifier;

/// Takes turns on a display without a window system. It shows what was drawn last, and its keys
/// reach all who read them, so only one of a user's programs may draw and listen.
///
/// The first one that shows its window is the host, who lends the display to each later one until
/// that hides its window or ends, in whatever way. Programs find each other by the channel
/// "QuarnDisplay" and its messages "taken PID" and "given PID". A system that cannot tell the host
/// of the end of a process (Linux before 5.3) has no turns.
class DisplayTurn : public QObject
{
    Q_OBJECT

public:
    explicit DisplayTurn(QObject* parent = nullptr);
    ~DisplayTurn() override;

    /// Whether the toolkit's platform is such a display. Needs the application object.
    static bool isNeeded();
    /// Makes it one, whatever it is.
    static void setNeeded(bool needed);

    /// Our window is about to be shown, or has been hidden.
    void show();
    void hide();
    /// Whether the display is not lent.
    bool isOurs() const { return guests_.empty(); }

signals:
    /// It has been lent, or is ours again: what is shown is to be drawn anew then.
    void changed();

private:
    class Guest;

    void take(const QByteArray& message);
    void lend(qint64 process);
    void takeBack(qint64 process);

    std::unique_ptr<QCopChannel> channel_; ///< the host's
    QHash<qint64, std::shared_ptr<Guest>> guests_;
    bool isGuest_ = false;
};
