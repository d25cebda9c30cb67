#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QPointer>

class QDBusServiceWatcher;

/// A connection of our own to one of the machine's message buses, closed with this object: the
/// other side then ends whatever was going on for us.
///
/// The addresses come from DBUS_SYSTEM_BUS_ADDRESS and DBUS_SESSION_BUS_ADDRESS, else from the
/// usual places. Only buses on local sockets are taken; none is ever started. Until the deadline
/// the calls here block, and no longer, also when nothing answers.
class BusConnection
{
public:
    enum class Bus { System, Session };

    BusConnection(Bus bus, const QDeadlineTimer& deadline);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    bool isOpen() const;
    /// Ends the connection before its time. What was sent is still delivered.
    void close();
    /// For signals and for calls that do not block.
    QDBusConnection bus() const;
    /// Whether a service is there or the bus can start it.
    bool offers(const QString& service, const QDeadlineTimer& deadline) const;
    /// The reply, or an error message.
    QDBusMessage call(const QDBusMessage& message, const QDeadlineTimer& deadline) const;
    /// Calls `slot` (SLOT(f())) of `receiver` when a service or the bus itself goes away. Once
    /// only.
    void whenGone(const QString& service, QObject* receiver, const char* slot);

private:
    QPointer<QDBusServiceWatcher> watcher_; ///< the receiver's child
    QString name_;                          ///< by which the toolkit knows it; empty when closed
};
