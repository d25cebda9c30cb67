#pragma once

#include <QByteArray>
#include <QObject>

#include <memory>

class QCopChannel;

/// Programs on VNC. The toolkit gives each one a server of its own, which shows its window alone
/// and needs a port of its own.
///
/// The first one of a user that shows its window is the host, to whom each later one tells by the
/// channel "QuarnDisplay" and its message "shown PORT" where it is to be seen.
class VncDisplay : public QObject
{
    Q_OBJECT

public:
    explicit VncDisplay(QObject* parent = nullptr);
    ~VncDisplay() override;

    /// Whether the toolkit's platform is VNC. Needs the application object.
    static bool isUsed();
    /// Makes it so, whatever it is.
    static void setUsed(bool used);

    /// What QT_QPA_PLATFORM is to be for a program that this one starts: the same display, on the
    /// first port above this program's that is free. Empty if there is none in reach.
    static QByteArray platformForGuest();

    /// Our window is about to be shown.
    void show();

signals:
    /// Another program of the user has shown its window on this port.
    void guestShown(int port);

private:
    void take(const QByteArray& message);

    std::unique_ptr<QCopChannel> channel_; ///< the host's
};
