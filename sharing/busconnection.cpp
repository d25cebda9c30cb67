#include "sharing/busconnection.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <algorithm>
#include <cstdint>
#include <poll.h>
#include <time.h>
#include <utility>

namespace
{

/// How long the bus itself may take to answer.
constexpr int BusMilliseconds = 10000;
constexpr int PartingMilliseconds = 1000;
/// After so many the event loop does other things first, however many more there are.
constexpr int MostMessagesAtOnce = 64;
const QLatin1String BusService("org.freedesktop.DBus");
const QLatin1String BusPathName("/org/freedesktop/DBus");

BusCall busCall(const char* method, const QVariantList& arguments = {})
{
    return {BusService, BusPathName, BusService, QLatin1String(method), arguments};
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
    return "unix:path=" + runtime.toPercentEncoding("/") + "/bus";
}

/// Those of the addresses, separated by ";", that are sockets to connect to: looking up a host or
/// starting a program would block.
QByteArray localOnes(const QByteArray& addresses)
{
    QByteArrayList result;
    for (const QByteArray& address : addresses.split(';')) {
        if (address.startsWith("unix:") &&
            (address.contains("path=/") || address.contains("abstract=")))
            result.append(address);
    }
    return result.join(';');
}

quint64 monotonicMicroseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return quint64(now.tv_sec) * 1000000 + quint64(now.tv_nsec) / 1000;
}

/// A notifier may be telling just now.
void retire(QSocketNotifier*& notifier)
{
    if (notifier == nullptr)
        return;
    notifier->setEnabled(false);
    notifier->deleteLater();
    notifier = nullptr;
}

} // namespace

BusConnection::Pointer BusConnection::open(Bus bus, const QString& service)
{
    Pointer result(new BusConnection(service));
    result->start(bus);
    return result;
}

// Whoever is still parting when the program ends goes with the application object.
BusConnection::BusConnection(const QString& service)
    : QObject(QCoreApplication::instance()), service_(service)
{
    clock_.setSingleShot(true);
    connect(&clock_, &QTimer::timeout, this, &BusConnection::pump);
}

BusConnection::~BusConnection()
{
    shut();
}

void BusConnection::start(Bus bus)
{
    const QByteArray addresses = localOnes(addressesOf(bus));
    const bool started = sd_bus_new(&bus_) >= 0 &&
                         sd_bus_set_address(bus_, addresses.constData()) >= 0 &&
                         sd_bus_set_bus_client(bus_, 1) >= 0 && sd_bus_start(bus_) >= 0;
    if (!started) {
        QTimer::singleShot(0, this, &BusConnection::lose);
        return;
    }
    // First, so that nothing is missed.
    addMatch(QStringLiteral("type='signal',sender='%1',interface='%1',member='NameOwnerChanged',"
                            "arg0='%2'")
                 .arg(BusService, service_),
             [this](const BusMessage& signal) { ownerChanged(signal); });
    findOwner();
    watch();
}

void BusConnection::findOwner()
{
    callOn(busCall("GetNameOwner", {service_}), BusMilliseconds,
           [this](const BusMessage& reply) { ownerFound(reply); });
}

void BusConnection::ownerFound(const BusMessage& reply)
{
    owner_ = reply.arguments.value(0).toString();
    if (!owner_.isEmpty()) {
        becomeReady();
        return;
    }
    callOn(busCall("ListActivatableNames"), BusMilliseconds, [this](const BusMessage& names) {
        if (names.arguments.value(0).toStringList().contains(service_))
            becomeReady();
        else
            lose();
    });
}

void BusConnection::ownerChanged(const BusMessage& signal)
{
    if (signal.sender != BusService || signal.signature != QLatin1String("sss"))
        return;
    const QString before = std::exchange(owner_, signal.arguments.value(2).toString());
    if (!before.isEmpty() && before != owner_)
        lose();
}

void BusConnection::becomeReady()
{
    ready_ = true;
    emit ready();
}

void BusConnection::part()
{
    disconnect();
    watches_.clear();
    parting_ = true;
    if (!ready_) {
        shut();
        deleteLater();
        return;
    }
    // A bus that writes to a connection that has gone forgets what came from it and is not read
    // yet. When it answers it has read everything.
    const auto done = [this](const BusMessage&) {
        shut();
        deleteLater();
    };
    callOn(busCall("GetId"), PartingMilliseconds, done);
}

void BusConnection::lose()
{
    shut();
    if (parting_)
        deleteLater();
    else
        emit lost();
}

void BusConnection::shut()
{
    ready_ = false;
    watches_.clear();
    clock_.stop();
    retire(readable_);
    retire(writable_);
    shut_ = true;
    if (!processing_)
        closeBus();
}

void BusConnection::closeBus()
{
    sd_bus_close_unref(std::exchange(bus_, nullptr));
}

void BusConnection::call(const QString& path, const QString& interface, const char* method,
                         const QVariantList& arguments, int milliseconds, Handler handler)
{
    callOn({service_, path, interface, QLatin1String(method), arguments}, milliseconds,
           std::move(handler));
}

void BusConnection::send(const QString& path, const QString& interface, const char* method,
                         const QVariantList& arguments)
{
    call(path, interface, method, arguments, BusMilliseconds, [](const BusMessage&) {});
}

void BusConnection::listen(const QString& interface, const char* signal, Handler handler)
{
    addMatch(QStringLiteral("type='signal',sender='%1',interface='%2',member='%3'")
                 .arg(service_, interface, QLatin1String(signal)),
             [this, handler = std::move(handler)](const BusMessage& message) {
                 // Anyone on the bus may send us a signal of that name.
                 if (message.sender == owner_)
                     handler(message);
             });
}

void BusConnection::callOn(const BusCall& call, int milliseconds, Handler handler)
{
    if (shut_)
        return;
    const BusMessagePointer message = call.make(bus_);
    auto& pending = watches_.emplace_back(std::make_unique<Watch>(this, std::move(handler)));
    constexpr quint64 MicrosecondsInOne = 1000;
    if (message == nullptr ||
        sd_bus_call_async(bus_, &pending->slot, message.get(), replied, pending.get(),
                          quint64(milliseconds) * MicrosecondsInOne) < 0) {
        QTimer::singleShot(0, this, [this, failed = pending.get()] { fail(failed); });
        return;
    }
    watch();
}

void BusConnection::addMatch(const QString& rule, Handler handler)
{
    auto& added = watches_.emplace_back(std::make_unique<Watch>(this, std::move(handler)));
    // A bus that does not take it is as good as gone: the connection is closed then.
    if (sd_bus_add_match_async(bus_, &added->slot, rule.toUtf8().constData(), signalled, nullptr,
                               added.get()) < 0)
        QTimer::singleShot(0, this, &BusConnection::lose);
    watch();
}

/// Takes the watch away and returns what it was to do.
BusConnection::Handler BusConnection::taken(const Watch* watch)
{
    const auto found = std::find_if(watches_.begin(), watches_.end(),
                                    [watch](const auto& each) { return each.get() == watch; });
    if (found == watches_.end())
        return [](const BusMessage&) {};
    Handler handler = std::move((*found)->handler);
    watches_.erase(found);
    return handler;
}

void BusConnection::fail(const Watch* watch)
{
    BusMessage error;
    error.errorName = QStringLiteral("org.freedesktop.DBus.Error.Failed");
    taken(watch)(error);
}

int BusConnection::replied(sd_bus_message* message, void* watch, sd_bus_error* /*error*/)
{
    const auto* pending = static_cast<Watch*>(watch);
    const Handler handler = pending->connection->taken(pending);
    handler(BusMessage::read(message));
    return 0;
}

int BusConnection::signalled(sd_bus_message* message, void* watch, sd_bus_error* /*error*/)
{
    // The handler may take its own watch away.
    const Handler handler = static_cast<Watch*>(watch)->handler;
    handler(BusMessage::read(message));
    return 0;
}

void BusConnection::pump()
{
    for (int i = 0; i < MostMessagesAtOnce && !shut_; ++i) {
        processing_ = true;
        const int result = sd_bus_process(bus_, nullptr);
        processing_ = false;
        if (shut_)
            return closeBus();
        if (result < 0)
            return lose();
        if (result == 0)
            break;
    }
    watch();
}

/// Has the event loop call when the bus has something to do. Right after anything that changes
/// that.
void BusConnection::watch()
{
    if (shut_)
        return;
    watchSocket();
    watchClock();
}

void BusConnection::watchSocket()
{
    const int socket = sd_bus_get_fd(bus_);
    const int events = std::max(sd_bus_get_events(bus_), 0);
    if (socket < 0)
        return;
    // It changes when the next of several addresses is tried.
    if (readable_ == nullptr || readable_->socket() != socket) {
        retire(readable_);
        retire(writable_);
        readable_ = new QSocketNotifier(socket, QSocketNotifier::Read, this);
        writable_ = new QSocketNotifier(socket, QSocketNotifier::Write, this);
        connect(readable_, &QSocketNotifier::activated, this, &BusConnection::pump);
        connect(writable_, &QSocketNotifier::activated, this, &BusConnection::pump);
    }
    readable_->setEnabled((events & POLLIN) != 0);
    writable_->setEnabled((events & POLLOUT) != 0);
}

void BusConnection::watchClock()
{
    constexpr quint64 MostMicroseconds = 1000000000;
    constexpr quint64 MicrosecondsInOne = 1000;
    uint64_t until = 0;
    if (sd_bus_get_timeout(bus_, &until) <= 0) {
        clock_.stop();
        return;
    }
    const quint64 now = monotonicMicroseconds();
    const quint64 left = until > now ? std::min<quint64>(until - now, MostMicroseconds) : 0;
    clock_.start(int((left + MicrosecondsInOne - 1) / MicrosecondsInOne));
}
