#pragma once

#include "files/entry.h"
#include "sharing/busconnection.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <optional>

/// Sends one file to one Bluetooth device through the user's object exchange service.
class ObexPush : public QObject
{
    Q_OBJECT

public:
    enum class Outcome { Sent, Refused, Cancelled, Failed };

    /// The file that there is under that path now: one that takes its name later is not sent.
    explicit ObexPush(const QString& file);
    /// Ends what is going on.
    ~ObexPush() override;

    /// isOpen() some time later, or finished() with a failure if there is no bus, or no service and
    /// no way to start it; never within this call.
    void open();
    bool isOpen() const { return connection_ != nullptr && connection_->isReady(); }
    /// When it is open, and once only. The addresses are those of this machine's adapter and of the
    /// device.
    void send(const QString& adapter, const QString& device);
    /// The outcome comes before this returns; nothing if there was one already.
    void cancel();

signals:
    /// Bytes sent and bytes in all, as the service tells them; 0 in all while that is not known.
    void progressed(qint64 sent, qint64 size);
    /// Once. `reason` is what the service says about a failure; may be empty.
    void finished(ObexPush::Outcome outcome, const QString& reason);

private:
    void listen();
    void call(const QString& path, const QString& interface, const char* method,
              const QVariantList& arguments, int milliseconds,
              void (ObexPush::*handler)(const BusMessage&));
    void propertiesChanged(const BusMessage& message);
    void interfacesRemoved(const BusMessage& message);
    void becomeLost();
    void sessionMade(const BusMessage& reply);
    void transferMade(const BusMessage& reply);
    void update(const QVariantMap& properties);
    void askWhyItFailed();
    void learnWhyItFailed(const BusMessage& reply);
    void finish(Outcome outcome, const QString& reason = QString());
    void end();

    BusConnection::Pointer connection_;
    QString file_;
    std::optional<EntryId> entry_;
    QString session_; ///< object paths; empty while there is none
    QString transfer_;
    QHash<QString, QVariantMap> beforeReply_; ///< what came of transfers before ours was known
    qint64 sent_ = 0;
    qint64 size_ = 0;
    bool failing_ = false; ///< the transfer ended in an error whose kind is being asked for
    bool finished_ = false;
};
