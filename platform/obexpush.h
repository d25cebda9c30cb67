#pragma once

#include "platform/busconnection.h"

#include <QDBusPendingCall>
#include <QHash>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

/// Sends one file to one Bluetooth device through the user's object exchange service.
class ObexPush : public QObject
{
    Q_OBJECT

public:
    enum class Outcome { Sent, Refused, Cancelled, Failed };

    /// Blocks until the deadline at most; nullptr if there is no bus, or no service and no way to
    /// start it.
    static std::unique_ptr<ObexPush> open(const QDeadlineTimer& deadline);
    /// Ends what is going on.
    ~ObexPush() override;

    /// Once only. The addresses are those of this machine's adapter and of the device.
    void send(const QString& adapter, const QString& device, const QString& file);
    /// The outcome comes before this returns; nothing if there was one already.
    void cancel();

signals:
    /// Bytes sent and bytes in all, as the service tells them; 0 in all while that is not known.
    void progressed(qint64 sent, qint64 size);
    /// Once. `reason` is what the service says about a failure; may be empty.
    void finished(ObexPush::Outcome outcome, const QString& reason);

private slots:
    void propertiesChanged(const QDBusMessage& message);
    void interfacesRemoved(const QDBusMessage& message);
    void becomeLost();

private:
    explicit ObexPush(const QDeadlineTimer& deadline);
    void listen();
    void whenReplied(const QDBusPendingCall& call,
                     const std::function<void(const QDBusMessage&)>& action);
    void sessionMade(const QDBusMessage& reply);
    void transferMade(const QDBusMessage& reply);
    void update(const QVariantMap& properties);
    void askWhyItFailed();
    void finish(Outcome outcome, const QString& reason = QString());
    void end();

    BusConnection connection_;
    QString file_;
    QString session_; ///< object paths; empty while there is none
    QString transfer_;
    QHash<QString, QVariantMap> beforeReply_; ///< what came of transfers before ours was known
    qint64 sent_ = 0;
    qint64 size_ = 0;
    bool failing_ = false; ///< the transfer ended in an error whose kind is being asked for
    bool finished_ = false;
};
