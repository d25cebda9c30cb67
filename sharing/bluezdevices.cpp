#include "sharing/bluezdevices.h"

#include <algorithm>
#include <utility>

namespace
{

const QLatin1String BluezService("org.bluez");
const QLatin1String AdapterInterface("org.bluez.Adapter1");
const QLatin1String DeviceInterface("org.bluez.Device1");
const QLatin1String Powered("Powered");
/// What a device that takes files says it has: the object push profile.
const QLatin1String ObjectPushUuid("00001105-0000-1000-8000-00805f9b34fb");
constexpr int GatherMilliseconds = 100;
constexpr int DeviceReplyMilliseconds = 25000;

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
            abilities.contains(ObjectPushUuid, Qt::CaseInsensitive));
}

QVariantMap adapterIn(const QVariant& object)
{
    return object.toMap().value(AdapterInterface).toMap();
}

/// The adapters, powered ones first.
QStringList adaptersOf(const QVariantMap& objects)
{
    QStringList powered;
    QStringList others;
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        if (object->toMap().contains(AdapterInterface))
            (adapterIn(*object).value(Powered).toBool() ? powered : others).append(object.key());
    }
    return powered + others;
}

} // namespace

BluezDevices::BluezDevices()
{
    changedSoon_.setSingleShot(true);
    changedSoon_.setInterval(GatherMilliseconds);
    connect(&changedSoon_, &QTimer::timeout, this, &BluezDevices::changed);
}

BluezDevices::~BluezDevices()
{
    if (searching_)
        connection_->send(adapter_, AdapterInterface, "StopDiscovery");
}

void BluezDevices::open()
{
    connection_ = BusConnection::open(BusConnection::Bus::System, BluezService);
    connect(connection_.get(), &BusConnection::ready, this, &BluezDevices::listen);
    connect(connection_.get(), &BusConnection::lost, this, &BluezDevices::becomeLost);
}

void BluezDevices::listen()
{
    // First, so that nothing is missed.
    hear(BusObjectManager, "InterfacesAdded", &BluezDevices::interfacesAdded);
    hear(BusObjectManager, "InterfacesRemoved", &BluezDevices::interfacesRemoved);
    hear(BusProperties, "PropertiesChanged", &BluezDevices::propertiesChanged);
    connection_->call(QStringLiteral("/"), BusObjectManager, "GetManagedObjects", {},
                      DeviceReplyMilliseconds,
                      [this](const BusMessage& reply) { objectsCame(reply); });
}

void BluezDevices::hear(const QString& interface, const char* signal,
                        void (BluezDevices::*handler)(const BusMessage&))
{
    connection_->listen(interface, signal, [=, this](const BusMessage& message) {
        if (isOpen())
            (this->*handler)(message);
        else
            early_.append([=, this] { (this->*handler)(message); });
    });
}

void BluezDevices::objectsCame(const BusMessage& reply)
{
    // What was told before is in there.
    early_.clear();
    if (reply.signature == QLatin1String("a{oa{sa{sv}}}"))
        objects_ = reply.arguments.value(0).toMap();
    adapters_ = adaptersOf(objects_);
    tryAdapters();
}

void BluezDevices::tryAdapters()
{
    if (adapters_.isEmpty()) {
        becomeLost();
        return;
    }
    const QString adapter = adapters_.takeFirst();
    if (adapterIn(objects_.value(adapter)).value(Powered).toBool()) {
        take(adapter);
        return;
    }
    connection_->call(
        adapter, BusProperties, "Set",
        {QString(AdapterInterface), QString(Powered), QVariant::fromValue(BusVariant{true})},
        DeviceReplyMilliseconds, [this, adapter](const BusMessage& reply) {
            if (reply.isError())
                tryAdapters();
            else
                take(adapter);
        });
}

void BluezDevices::take(const QString& adapter)
{
    adapter_ = adapter;
    adapterAddress_ =
        adapterIn(objects_.value(adapter)).value(QStringLiteral("Address")).toString();
    for (auto object = objects_.begin(); object != objects_.end(); ++object)
        addDevice(object.key(), object->toMap().value(DeviceInterface).toMap());
    std::stable_sort(known_.begin(), known_.end(), [](const Known& one, const Known& other) {
        return isPaired(one.properties) && !isPaired(other.properties);
    });
    objects_.clear();
    for (const auto& early : std::exchange(early_, {})) {
        if (isOpen())
            early();
    }
}

void BluezDevices::startSearch()
{
    if (!isOpen() || searching_)
        return;
    searching_ = true;
    // What takes files speaks the classic protocol; a service that cannot filter finds all.
    connection_->send(adapter_, AdapterInterface, "SetDiscoveryFilter",
                      {QVariantMap{{QStringLiteral("Transport"), QStringLiteral("bredr")}}});
    connection_->call(adapter_, AdapterInterface, "StartDiscovery", {}, DeviceReplyMilliseconds,
                      [this](const BusMessage& reply) {
                          if (reply.isError())
                              searchEnded();
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

void BluezDevices::interfacesAdded(const BusMessage& message)
{
    if (message.signature != QLatin1String("oa{sa{sv}}"))
        return;
    const QVariantMap interfaces = message.arguments.value(1).toMap();
    addDevice(message.arguments.value(0).toString(), interfaces.value(DeviceInterface).toMap());
}

void BluezDevices::interfacesRemoved(const BusMessage& message)
{
    if (message.signature != QLatin1String("oas"))
        return;
    const QString path = message.arguments.value(0).toString();
    const QStringList interfaces = message.arguments.value(1).toStringList();
    if (path == adapter_ && interfaces.contains(AdapterInterface))
        becomeLost();
    else if (interfaces.contains(DeviceInterface) &&
             known_.removeIf([&path](const Known& known) { return known.path == path; }) > 0)
        tellSoon();
}

void BluezDevices::propertiesChanged(const BusMessage& message)
{
    if (message.signature != QLatin1String("sa{sv}as"))
        return;
    const QString interface = message.arguments.value(0).toString();
    const QVariantMap properties = message.arguments.value(1).toMap();
    if (message.path == adapter_ && interface == AdapterInterface)
        adapterChanged(properties);
    else if (interface == DeviceInterface)
        addDevice(message.path, properties);
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
    if (connection_ == nullptr)
        return;
    connection_.reset();
    adapter_.clear();
    known_.clear();
    searching_ = false;
    changedSoon_.stop();
    emit lost();
}
