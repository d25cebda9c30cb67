#include "sharing/obexpush.h"

#include <utility>

namespace
{

const QLatin1String ObexService("org.bluez.obex");
const QLatin1String ClientPath("/org/bluez/obex");
const QLatin1String Client("org.bluez.obex.Client1");
const QLatin1String Session("org.bluez.obex.Session1");
const QLatin1String ObjectPushInterface("org.bluez.obex.ObjectPush1");
const QLatin1String Transfer("org.bluez.obex.Transfer1");
/// Finding, paging and connecting a device; the service itself gives up earlier.
constexpr int ConnectMilliseconds = 90000;
constexpr int TransferReplyMilliseconds = 10000;
constexpr int FarewellMilliseconds = 3000;
/// The largest packet of the exchange protocol. A device decides on the first whether it wants the
/// file.
constexpr qint64 FirstPacketBytes = 0xffff;

/// What the service itself says. The words of the bus mean nothing to a user.
QString reasonIn(const BusMessage& error)
{
    return error.errorName.startsWith(ObexService) ? error.errorText : QString();
}

/// Whether the service was told "no" when it greeted the device: "... failed with 0x43" (forbidden)
/// or 0x41 (unauthorized), perhaps with the mark of a last packet, 0x80.
bool tellsRefusal(const QString& reason)
{
    for (const char* code : {"0x41", "0x43", "0xc1", "0xc3"}) {
        if (reason.contains(QLatin1String(code), Qt::CaseInsensitive))
            return true;
    }
    return reason.contains(QLatin1String("Forbidden")) ||
           reason.contains(QLatin1String("Unauthorized"));
}

} // namespace

ObexPush::ObexPush(const QString& file) : file_(absolutePath(file)), entry_(entryId(file_)) {}

ObexPush::~ObexPush()
{
    end();
}

void ObexPush::open()
{
    connection_ = BusConnection::open(BusConnection::Bus::Session, ObexService);
    connect(connection_.get(), &BusConnection::ready, this, &ObexPush::listen);
    connect(connection_.get(), &BusConnection::lost, this, &ObexPush::becomeLost);
}

void ObexPush::listen()
{
    connection_->listen(BusProperties, "PropertiesChanged",
                        [this](const BusMessage& message) { propertiesChanged(message); });
    connection_->listen(BusObjectManager, "InterfacesRemoved",
                        [this](const BusMessage& message) { interfacesRemoved(message); });
}

void ObexPush::call(const QString& path, const QString& interface, const char* method,
                    const QVariantList& arguments, int milliseconds,
                    void (ObexPush::*handler)(const BusMessage&))
{
    connection_->call(path, interface, method, arguments, milliseconds,
                      [this, handler](const BusMessage& reply) { (this->*handler)(reply); });
}

void ObexPush::send(const QString& adapter, const QString& device)
{
    QVariantMap how{{QStringLiteral("Target"), QStringLiteral("opp")}};
    if (!adapter.isEmpty())
        how.insert(QStringLiteral("Source"), adapter);
    call(ClientPath, Client, "CreateSession", {device, how}, ConnectMilliseconds,
         &ObexPush::sessionMade);
}

void ObexPush::sessionMade(const BusMessage& reply)
{
    if (finished_)
        return;
    session_ = reply.arguments.value(0).toString();
    if (session_.isEmpty()) {
        const QString reason = reasonIn(reply);
        finish(tellsRefusal(reason) ? Outcome::Refused : Outcome::Failed, reason);
        return;
    }
    // Whoever chose the device meant what was there when it was offered. What is gone the service
    // itself complains of.
    if (isTaken(file_) && entryId(file_) != entry_) {
        finish(Outcome::Failed);
        return;
    }
    size_ = EntryInfo(file_).size();
    call(session_, ObjectPushInterface, "SendFile", {file_}, TransferReplyMilliseconds,
         &ObexPush::transferMade);
}

void ObexPush::transferMade(const BusMessage& reply)
{
    if (finished_)
        return;
    transfer_ = reply.arguments.value(0).toString();
    if (transfer_.isEmpty()) {
        finish(Outcome::Failed, reasonIn(reply));
        return;
    }
    QVariantMap properties = reply.arguments.value(1).toMap();
    // A small file is through before this is handled.
    properties.insert(beforeReply_.value(transfer_));
    beforeReply_.clear();
    update(properties);
}

void ObexPush::propertiesChanged(const BusMessage& message)
{
    if (finished_ || message.signature != QLatin1String("sa{sv}as") ||
        message.arguments.value(0).toString() != Transfer)
        return;
    const QVariantMap properties = message.arguments.value(1).toMap();
    if (message.path == transfer_)
        update(properties);
    else if (transfer_.isEmpty() && !session_.isEmpty() &&
             message.path.startsWith(session_ + QLatin1Char('/')))
        beforeReply_[message.path].insert(properties);
}

void ObexPush::update(const QVariantMap& properties)
{
    size_ = properties.value(QStringLiteral("Size"), size_).toLongLong();
    sent_ = properties.value(QStringLiteral("Transferred"), sent_).toLongLong();
    const QString status = properties.value(QStringLiteral("Status")).toString();
    if (status == QLatin1String("complete"))
        finish(Outcome::Sent);
    else if (status == QLatin1String("error"))
        askWhyItFailed();
    else
        emit progressed(sent_, size_);
}

/// The service has one status for all failures. A device that refuses does so on the first packet
/// and stays connected; when it has gone the session goes with it.
void ObexPush::askWhyItFailed()
{
    if (failing_)
        return;
    failing_ = true;
    if (sent_ > FirstPacketBytes) {
        finish(Outcome::Failed);
        return;
    }
    call(session_, BusProperties, "Get", {QString(Session), QStringLiteral("Destination")},
         FarewellMilliseconds, &ObexPush::learnWhyItFailed);
}

void ObexPush::learnWhyItFailed(const BusMessage& reply)
{
    finish(reply.isError() ? Outcome::Failed : Outcome::Refused);
}

void ObexPush::interfacesRemoved(const BusMessage& message)
{
    const QString path = message.arguments.value(0).toString();
    if (path.isEmpty() || (path != transfer_ && path != session_))
        return;
    // A transfer that failed is taken away while we ask why.
    if (path == transfer_ && failing_)
        return;
    finish(Outcome::Failed);
}

void ObexPush::becomeLost()
{
    finish(Outcome::Failed);
}

void ObexPush::cancel()
{
    if (finished_)
        return;
    if (transfer_.isEmpty()) {
        // With nobody to report to, the service ends a session that is only being made.
        finish(Outcome::Cancelled);
        return;
    }
    const QString transfer = std::exchange(transfer_, QString());
    // The device is told before the session goes.
    connection_->call(transfer, Transfer, "Cancel", {}, FarewellMilliseconds,
                      [this](const BusMessage&) { end(); });
    finished_ = true;
    emit finished(Outcome::Cancelled, QString());
}

void ObexPush::finish(Outcome outcome, const QString& reason)
{
    if (finished_)
        return;
    finished_ = true;
    end();
    emit finished(outcome, reason);
}

void ObexPush::end()
{
    if (connection_ != nullptr) {
        if (!finished_ && !transfer_.isEmpty())
            connection_->send(transfer_, Transfer, "Cancel");
        if (!session_.isEmpty())
            connection_->send(ClientPath, Client, "RemoveSession",
                              {QVariant::fromValue(BusPath{session_})});
    }
    session_.clear();
    connection_.reset();
}
