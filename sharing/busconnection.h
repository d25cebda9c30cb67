#pragma once

#include "sharing/busmessage.h"

#include <QLatin1String>
#include <QObject>
#include <QTimer>

#include <functional>
#include <list>
#include <memory>
#include <utility>

class QSocketNotifier;

// What every service on a bus may offer.
inline const QLatin1String BusProperties("org.freedesktop.DBus.Properties");
inline const QLatin1String BusObjectManager("org.freedesktop.DBus.ObjectManager");

/// A connection of our own to one service on one of the machine's message buses. It lives in the
/// event loop: no call here waits for anything, whatever the other side does or fails to do.
///
/// The addresses come from DBUS_SYSTEM_BUS_ADDRESS and DBUS_SESSION_BUS_ADDRESS, else from the
/// usual places. Only buses on local sockets are taken; none is ever started.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    enum class Bus { System, Session };
    using Handler = std::function<void(const BusMessage&)>;

    struct Close {
        void operator()(BusConnection* connection) const { connection->part(); }
    };
    /// The owner's. When it goes nothing is told any more, but what was sent is still delivered:
    /// the connection closes when the bus has taken it, or a second later.
    using Pointer = std::unique_ptr<BusConnection, Close>;

    /// Begins to connect. ready() or lost() follows, never within this call.
    static Pointer open(Bus bus, const QString& service);
    ~BusConnection() override;

    bool isReady() const { return ready_; }
    /// Calls a method of the service. The handler gets the reply or an error; after lost() nothing.
    void call(const QString& path, const QString& interface, const char* method,
              const QVariantList& arguments, int milliseconds, Handler handler);
    /// The same for a call whose reply is of no interest.
    void send(const QString& path, const QString& interface, const char* method,
              const QVariantList& arguments = {});
    /// Gives the handler all signals of that name that the service sends.
    void listen(const QString& interface, const char* signal, Handler handler);

signals:
    /// The service is there, or the bus can start it when it is called.
    void ready();
    /// There is no bus or service, or it has gone. Told once.
    void lost();

private:
    struct Watch {
        BusConnection* connection;
        Handler handler;
        sd_bus_slot* slot = nullptr;

        Watch(BusConnection* of, Handler action) : connection(of), handler(std::move(action)) {}
        ~Watch() { sd_bus_slot_unref(slot); }
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
    };

    explicit BusConnection(const QString& service);
    void start(Bus bus);
    void findOwner();
    void ownerFound(const BusMessage& reply);
    void ownerChanged(const BusMessage& signal);
    void becomeReady();
    void part();
    void lose();
    void shut();
    void closeBus();

    void pump();
    void watch();
    void watchSocket();
    void watchClock();

    void callOn(const BusCall& call, int milliseconds, Handler handler);
    void addMatch(const QString& rule, Handler handler);
    Handler taken(const Watch* watch);
    void fail(const Watch* watch);
    static int replied(sd_bus_message* message, void* watch, sd_bus_error* error);
    static int signalled(sd_bus_message* message, void* watch, sd_bus_error* error);

    QString service_;
    QString owner_; ///< the service's unique name; empty while it does not run
    sd_bus* bus_ = nullptr;
    std::list<std::unique_ptr<Watch>> watches_;
    QSocketNotifier* readable_ = nullptr;
    QSocketNotifier* writable_ = nullptr;
    QTimer clock_; ///< for the time-outs of calls, and for messages that are read already
    bool ready_ = false;
    bool processing_ = false; ///< the bus is at work and must not be closed
    bool shut_ = false;       ///< nothing more is done with it
    bool parting_ = false;
};
