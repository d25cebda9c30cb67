#include "platform/obexpush.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>

#include <utility>

namespace
{

const QLatin1String Service("org.bluez.obex");
const QLatin1String ClientPath("/org/bluez/obex");
const QLatin1String Client("org.bluez.obex.Client1");
const QLatin1String Session("org.bluez.obex.Session1");
const QLatin1String ObjectPush("org.bluez.obex.ObjectPush1");
const QLatin1String Transfer("org.bluez.obex.Transfer1");
const QLatin1String Properties("org.freedesktop.DBus.Properties");
/// Finding, paging and connecting a device; the service itself gives up earlier.
constexpr int ConnectMilliseconds = 90000;
constexpr int ReplyMilliseconds = 10000;
constexpr int FarewellMilliseconds = 3000;
/// The largest packet of the exchange protocol. A device decides on the first whether it wants the
/// file.
constexpr qint64 FirstPacketBytes = 0xffff;

QDBusMessage serviceCall(const QString& path, const QString& interface, const char* method,
                         const QVariantList& arguments = {})
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(Service, path, interface, QLatin1String(method));
    message.setArguments(arguments);
    return message;
}

QString pathIn(const QDBusMessage& message)
{
    return message.arguments().value(0).value<QDBusObjectPath>().path();
}

/// What the service itself says. The words of the bus mean nothing to a user.
QString reasonIn(const QDBusMessage& error)
{
    return error.errorName().startsWith(Service) ? error.errorMessage() : QString();
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

std::unique_ptr<ObexPush> ObexPush::open(const QDeadlineTimer& deadline)
{
    std::unique_ptr<ObexPush> result(new ObexPush(deadline));
    if (!result->connection_.isOpen() || !result->connection_.offers(Service, deadline))
        return nullptr;
    result->listen();
    return result;
}

ObexPush::ObexPush(const QDeadlineTimer& deadline)
    : connection_(BusConnection::Bus::Session, deadline)
{
}

ObexPush::~ObexPush()
{
    end();
}

void ObexPush::listen()
{
    QDBusConnection bus = connection_.bus();
    bus.connect(Service, QString(), Properties, QStringLiteral("PropertiesChanged"), this,
                SLOT(propertiesChanged(QDBusMessage)));
    bus.connect(Service, QString(), QStringLiteral("org.freedesktop.DBus.ObjectManager"),
                QStringLiteral("InterfacesRemoved"), this, SLOT(interfacesRemoved(QDBusMessage)));
    connection_.whenGone(Service, this, SLOT(becomeLost()));
}

void ObexPush::whenReplied(const QDBusPendingCall& call,
                           const std::function<void(const QDBusMessage&)>& action)
{
    auto* watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, action] {
        watcher->deleteLater();
        action(watcher->reply());
    });
}

void ObexPush::send(const QString& adapter, const QString& device, const QString& file)
{
    file_ = QFileInfo(file).absoluteFilePath();
    QVariantMap how{{QStringLiteral("Target"), QStringLiteral("opp")}};
    if (!adapter.isEmpty())
        how.insert(QStringLiteral("Source"), adapter);
    const QDBusMessage message = serviceCall(ClientPath, Client, "CreateSession", {device, how});
    whenReplied(connection_.bus().asyncCall(message, ConnectMilliseconds),
                [this](const QDBusMessage& reply) { sessionMade(reply); });
}

void ObexPush::sessionMade(const QDBusMessage& reply)
{
    if (finished_)
        return;
    session_ = pathIn(reply);
    if (session_.isEmpty()) {
        const QString reason = reasonIn(reply);
        finish(tellsRefusal(reason) ? Outcome::Refused : Outcome::Failed, reason);
        return;
    }
    size_ = QFileInfo(file_).size();
    whenReplied(connection_.bus().asyncCall(serviceCall(session_, ObjectPush, "SendFile", {file_}),
                                            ReplyMilliseconds),
                [this](const QDBusMessage& answer) { transferMade(answer); });
}

void ObexPush::transferMade(const QDBusMessage& reply)
{
    if (finished_)
        return;
    transfer_ = pathIn(reply);
    if (transfer_.isEmpty()) {
        finish(Outcome::Failed, reasonIn(reply));
        return;
    }
    QVariantMap properties = qdbus_cast<QVariantMap>(reply.arguments().value(1));
    // A small file is through before this is handled.
    properties.insert(beforeReply_.value(transfer_));
    beforeReply_.clear();
    update(properties);
}

void ObexPush::propertiesChanged(const QDBusMessage& message)
{
    if (finished_ || message.signature() != QLatin1String("sa{sv}as") ||
        message.arguments().at(0).toString() != Transfer)
        return;
    const auto properties = qdbus_cast<QVariantMap>(message.arguments().at(1));
    if (message.path() == transfer_)
        update(properties);
    else if (transfer_.isEmpty() && !session_.isEmpty() &&
             message.path().startsWith(session_ + QLatin1Char('/')))
        beforeReply_[message.path()].insert(properties);
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
    const QDBusMessage question =
        serviceCall(session_, Properties, "Get", {QString(Session), QStringLiteral("Destination")});
    whenReplied(connection_.bus().asyncCall(question, FarewellMilliseconds),
                [this](const QDBusMessage& reply) {
                    const bool connected = reply.type() == QDBusMessage::ReplyMessage;
                    finish(connected ? Outcome::Refused : Outcome::Failed);
                });
}

void ObexPush::interfacesRemoved(const QDBusMessage& message)
{
    const QString path = pathIn(message);
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
    whenReplied(connection_.bus().asyncCall(serviceCall(transfer, Transfer, "Cancel"),
                                            FarewellMilliseconds),
                [this](const QDBusMessage&) { end(); });
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
    if (connection_.isOpen()) {
        QDBusConnection bus = connection_.bus();
        if (!finished_ && !transfer_.isEmpty())
            bus.send(serviceCall(transfer_, Transfer, "Cancel"));
        if (!session_.isEmpty())
            bus.send(serviceCall(ClientPath, Client, "RemoveSession",
                                 {QVariant::fromValue(QDBusObjectPath(session_))}));
    }
    session_.clear();
    connection_.close();
}
