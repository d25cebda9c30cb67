#include "platform/bluezdevices.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <algorithm>

namespace
{

using Interfaces = QMap<QString, QVariantMap>;
using Objects = QMap<QDBusObjectPath, Interfaces>;

const QLatin1String Service("org.bluez");
const QLatin1String AdapterInterface("org.bluez.Adapter1");
const QLatin1String DeviceInterface("org.bluez.Device1");
const QLatin1String ObjectManager("org.freedesktop.DBus.ObjectManager");
const QLatin1String Properties("org.freedesktop.DBus.Properties");
const QLatin1String Powered("Powered");
/// What a device that takes files says it has: the object push profile.
const QLatin1String ObjectPush("00001105-0000-1000-8000-00805f9b34fb");
constexpr int GatherMilliseconds = 100;

QDBusMessage serviceCall(const QString& path, const QString& interface, const char* method)
{
    return QDBusMessage::createMethodCall(Service, path, interface, QLatin1String(method));
}

/// The name that the user or the device gave; the service makes one of the address if there is
/// none.
QString nameOf(const QVariantMap& device)
{
    const QString alias = device.value(QStringLiteral("Alias")).toString();
    QString address = device.value(QStringLiteral("Address")).toString();
    if (!alias.isEmpty() && alias != address.replace(QLatin1Char(':'), QLatin1Char('-')))
        return alias;
    return device.value(QStringLiteral("Name")).toString();
}

bool isPaired(const QVariantMap& device)
{
    return device.value(QStringLiteral("Paired")).toBool();
}

/// Whether a file could be sent there. Low-energy devices and blocked ones cannot take any; of a
/// paired one all abilities are known.
bool takesFiles(const QVariantMap& device)
{
    const QStringList abilities = device.value(QStringLiteral("UUIDs")).toStringList();
    return !device.value(QStringLiteral("Address")).toString().isEmpty() &&
           device.value(QStringLiteral("AddressType")) != QStringLiteral("random") &&
           !device.value(QStringLiteral("Blocked")).toBool() &&
           (!isPaired(device) || abilities.isEmpty() ||
            abilities.contains(ObjectPush, Qt::CaseInsensitive));
}

/// The adapters, powered ones first.
QStringList adaptersOf(const Objects& objects)
{
    QStringList powered;
    QStringList others;
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        const auto adapter = object->find(AdapterInterface);
        if (adapter != object->end())
            (adapter->value(Powered).toBool() ? powered : others).append(object.key().path());
    }
    return powered + others;
}

} // namespace

std::unique_ptr<BluezDevices> BluezDevices::open(const QDeadlineTimer& deadline)
{
    std::unique_ptr<BluezDevices> result(new BluezDevices(deadline));
    return result->start(deadline) ? std::move(result) : nullptr;
}

BluezDevices::BluezDevices(const QDeadlineTimer& deadline)
    : connection_(BusConnection::Bus::System, deadline)
{
    changedSoon_.setSingleShot(true);
    changedSoon_.setInterval(GatherMilliseconds);
    connect(&changedSoon_, &QTimer::timeout, this, &BluezDevices::changed);
}

BluezDevices::~BluezDevices()
{
    if (searching_ && connection_.isOpen())
        connection_.bus().send(serviceCall(adapter_, AdapterInterface, "StopDiscovery"));
}

bool BluezDevices::start(const QDeadlineTimer& deadline)
{
    if (!connection_.isOpen() || !connection_.offers(Service, deadline))
        return false;
    // First, so that nothing is missed; what comes is handled when the event loop is back.
    listen();
    const QDBusMessage reply = connection_.call(
        serviceCall(QStringLiteral("/"), ObjectManager, "GetManagedObjects"), deadline);
    if (reply.signature() != QLatin1String("a{oa{sa{sv}}}"))
        return false;
    const auto objects = qdbus_cast<Objects>(reply.arguments().constFirst());
    for (const QString& adapter : adaptersOf(objects)) {
        const QVariantMap properties =
            objects.value(QDBusObjectPath(adapter), {}).value(AdapterInterface);
        if (!properties.value(Powered).toBool() && !power(adapter, deadline))
            continue;
        adapter_ = adapter;
        adapterAddress_ = properties.value(QStringLiteral("Address")).toString();
        break;
    }
    if (adapter_.isEmpty())
        return false;
    for (auto object = objects.begin(); object != objects.end(); ++object)
        addDevice(object.key().path(), object->value(DeviceInterface));
    std::stable_sort(known_.begin(), known_.end(), [](const Known& one, const Known& other) {
        return isPaired(one.properties) && !isPaired(other.properties);
    });
    return true;
}

bool BluezDevices::power(const QString& adapter, const QDeadlineTimer& deadline) const
{
    QDBusMessage message = serviceCall(adapter, Properties, "Set");
    message.setArguments(
        {QString(AdapterInterface), QString(Powered), QVariant::fromValue(QDBusVariant(true))});
    return connection_.call(message, deadline).type() == QDBusMessage::ReplyMessage;
}

void BluezDevices::listen()
{
    QDBusConnection bus = connection_.bus();
    bus.connect(Service, QString(), ObjectManager, QStringLiteral("InterfacesAdded"), this,
                SLOT(interfacesAdded(QDBusMessage)));
    bus.connect(Service, QString(), ObjectManager, QStringLiteral("InterfacesRemoved"), this,
                SLOT(interfacesRemoved(QDBusMessage)));
    bus.connect(Service, QString(), Properties, QStringLiteral("PropertiesChanged"), this,
                SLOT(propertiesChanged(QDBusMessage)));
    connection_.whenGone(Service, this, SLOT(becomeLost()));
}

void BluezDevices::startSearch()
{
    if (adapter_.isEmpty() || searching_)
        return;
    searching_ = true;
    // What takes files speaks the classic protocol; a service that cannot filter finds all.
    QDBusMessage filter = serviceCall(adapter_, AdapterInterface, "SetDiscoveryFilter");
    filter.setArguments({QVariantMap{{QStringLiteral("Transport"), QStringLiteral("bredr")}}});
    QDBusConnection bus = connection_.bus();
    bus.send(filter);
    auto* started = new QDBusPendingCallWatcher(
        bus.asyncCall(serviceCall(adapter_, AdapterInterface, "StartDiscovery")), this);
    connect(started, &QDBusPendingCallWatcher::finished, this, [this, started] {
        if (QDBusPendingReply<>(*started).isError())
            searchEnded();
        started->deleteLater();
    });
}

QList<BluetoothDevice> BluezDevices::devices() const
{
    QList<BluetoothDevice> result;
    for (const Known& known : known_) {
        if (takesFiles(known.properties))
            result.append({known.path, known.properties.value(QStringLiteral("Address")).toString(),
                           nameOf(known.properties), isPaired(known.properties)});
    }
    return result;
}

void BluezDevices::addDevice(const QString& path, const QVariantMap& properties)
{
    if (!path.startsWith(adapter_ + QLatin1Char('/')) || properties.isEmpty())
        return;
    const auto found = std::find_if(known_.begin(), known_.end(),
                                    [&path](const Known& known) { return known.path == path; });
    if (found == known_.end())
        known_.append({path, properties});
    else
        found->properties.insert(properties);
    tellSoon();
}

void BluezDevices::tellSoon()
{
    if (!changedSoon_.isActive())
        changedSoon_.start();
}

void BluezDevices::interfacesAdded(const QDBusMessage& message)
{
    if (message.signature() != QLatin1String("oa{sa{sv}}"))
        return;
    const auto path = message.arguments().at(0).value<QDBusObjectPath>().path();
    addDevice(path, qdbus_cast<Interfaces>(message.arguments().at(1)).value(DeviceInterface));
}

void BluezDevices::interfacesRemoved(const QDBusMessage& message)
{
    if (message.signature() != QLatin1String("oas"))
        return;
    const auto path = message.arguments().at(0).value<QDBusObjectPath>().path();
    const QStringList interfaces = message.arguments().at(1).toStringList();
    if (path == adapter_ && interfaces.contains(AdapterInterface))
        becomeLost();
    else if (interfaces.contains(DeviceInterface) &&
             known_.removeIf([&path](const Known& known) { return known.path == path; }) > 0)
        tellSoon();
}

void BluezDevices::propertiesChanged(const QDBusMessage& message)
{
    if (message.signature() != QLatin1String("sa{sv}as"))
        return;
    const QString interface = message.arguments().at(0).toString();
    const auto properties = qdbus_cast<QVariantMap>(message.arguments().at(1));
    if (message.path() == adapter_ && interface == AdapterInterface)
        adapterChanged(properties);
    else if (interface == DeviceInterface)
        addDevice(message.path(), properties);
}

void BluezDevices::adapterChanged(const QVariantMap& properties)
{
    if (!properties.value(Powered, true).toBool())
        becomeLost();
    else if (!properties.value(QStringLiteral("Discovering"), true).toBool())
        searchEnded();
}

void BluezDevices::searchEnded()
{
    if (!searching_)
        return;
    searching_ = false;
    tellSoon();
}

void BluezDevices::becomeLost()
{
    if (adapter_.isEmpty())
        return;
    adapter_.clear();
    known_.clear();
    searching_ = false;
    changedSoon_.stop();
    emit lost();
}
