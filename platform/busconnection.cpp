#include "platform/busconnection.h"

#include "platform/busgreeting.h"

#include <QDBusServiceWatcher>
#include <QFile>

#include <algorithm>

namespace
{

/// How long a bus that is alive may take to let us in.
constexpr qint64 GreetingMilliseconds = 1000;
const QLatin1String BusService("org.freedesktop.DBus");

int left(const QDeadlineTimer& deadline, qint64 most = 60000)
{
    // The toolkit takes 0 and below for its own, long, time-out.
    return int(std::clamp<qint64>(deadline.remainingTime(), 1, most));
}

QByteArray addressesOf(BusConnection::Bus bus)
{
    if (bus == BusConnection::Bus::System) {
        const QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
        return address.isEmpty() ? "unix:path=/run/dbus/system_bus_socket" : address;
    }
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (!address.isEmpty() || runtime.isEmpty())
        return address;
    return "unix:path=" + QFile::encodeName(QFile::decodeName(runtime)).toPercentEncoding("/") +
           "/bus";
}

/// The first of the addresses, separated by ";", at which a bus answers; empty if none does.
QByteArray addressThatAnswers(const QByteArray& addresses, const QDeadlineTimer& deadline)
{
    const QByteArray local("unix:");
    const QDeadlineTimer greeting(left(deadline, GreetingMilliseconds));
    for (const QByteArray& address : addresses.split(';')) {
        if (!address.startsWith(local))
            continue;
        for (const QByteArray& part : address.mid(local.size()).split(',')) {
            const qsizetype equals = part.indexOf('=');
            const QByteArray key = part.left(equals);
            if (equals < 0 || (key != "path" && key != "abstract"))
                continue;
            const QByteArray name = QByteArray::fromPercentEncoding(part.mid(equals + 1));
            if (busGreets(name, key == "abstract", greeting))
                return address;
        }
    }
    return {};
}

QDBusMessage busCall(const char* method)
{
    return QDBusMessage::createMethodCall(BusService, QStringLiteral("/org/freedesktop/DBus"),
                                          BusService, QLatin1String(method));
}

} // namespace

BusConnection::BusConnection(Bus bus, const QDeadlineTimer& deadline)
{
    static int made = 0;
    const QByteArray address = addressThatAnswers(addressesOf(bus), deadline);
    if (address.isEmpty())
        return;
    name_ = QStringLiteral("share%1").arg(++made);
    if (!QDBusConnection::connectToBus(QString::fromLatin1(address), name_).isConnected())
        close();
}

BusConnection::~BusConnection()
{
    close();
}

bool BusConnection::isOpen() const
{
    return !name_.isEmpty() && bus().isConnected();
}

void BusConnection::close()
{
    // It keeps the connection alive, and may be just telling of the loss.
    if (watcher_) {
        watcher_->setConnection(QDBusConnection(QString()));
        watcher_->deleteLater();
    }
    watcher_.clear();
    if (!name_.isEmpty())
        QDBusConnection::disconnectFromBus(name_);
    name_.clear();
}

QDBusConnection BusConnection::bus() const
{
    return QDBusConnection(name_);
}

bool BusConnection::offers(const QString& service, const QDeadlineTimer& deadline) const
{
    QDBusMessage owned = busCall("NameHasOwner");
    owned.setArguments({service});
    if (call(owned, deadline).arguments().value(0).toBool())
        return true;
    const QDBusMessage names = call(busCall("ListActivatableNames"), deadline);
    return names.arguments().value(0).toStringList().contains(service);
}

QDBusMessage BusConnection::call(const QDBusMessage& message, const QDeadlineTimer& deadline) const
{
    return bus().call(message, QDBus::Block, left(deadline));
}

void BusConnection::whenGone(const QString& service, QObject* receiver, const char* slot)
{
    bus().connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                  receiver, slot);
    watcher_ = new QDBusServiceWatcher(service, bus(), QDBusServiceWatcher::WatchForUnregistration,
                                       receiver);
    QObject::connect(watcher_, SIGNAL(serviceUnregistered(QString)), receiver, slot);
}
