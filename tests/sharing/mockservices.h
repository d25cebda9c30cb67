#pragma once

#include "sharing/busmessage.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/prctl.h>

// Message buses and services of a test's own. All end with the object, and with the test's process.

namespace MockServices
{

inline void start(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
}

inline void end(QProcess& process)
{
    process.kill();
    process.waitForFinished();
}

/// The command line of a stand-in for a service.
inline QStringList mockArguments(const QString& serviceTemplate, const QString& bus)
{
    return {QStringLiteral("-B"),         QStringLiteral("-m"), QStringLiteral("dbusmock"), bus,
            QStringLiteral("--template"), serviceTemplate};
}

/// The test's own connection, on which calls block.
struct Disconnect {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using Control = std::unique_ptr<sd_bus, Disconnect>;

inline Control connected(const QByteArray& address)
{
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    Control control(bus);
    const bool started = sd_bus_set_address(bus, address.constData()) >= 0 &&
                         sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
    return started ? std::move(control) : nullptr;
}

/// The reply, or an error.
inline BusMessage ask(sd_bus* bus, const BusCall& call)
{
    constexpr quint64 Microseconds = 10000000;
    BusMessage result;
    const BusMessagePointer message = call.make(bus);
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    if (message != nullptr && sd_bus_call(bus, message.get(), Microseconds, &error, &reply) >= 0)
        result = BusMessage::read(reply);
    else
        result.errorName =
            message != nullptr ? QString::fromUtf8(error.name) : QStringLiteral("no such call");
    if (result.isError())
        result.errorText = QString::fromUtf8(error.message);
    sd_bus_message_unref(reply);
    sd_bus_error_free(&error);
    return result;
}

} // namespace MockServices

/// A message bus. `rules` go into its configuration.
class PrivateBus
{
public:
    explicit PrivateBus(const QByteArray& rules = {})
    {
        const QString configuration = folder_.filePath(QStringLiteral("bus.conf"));
        QFile file(configuration);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<busconfig><type>session</type><listen>" + address() +
                   "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                   "<allow send_destination=\"*\"/><allow eavesdrop=\"true\"/><allow "
                   "own=\"*\"/></policy>" +
                   rules + "</busconfig>");
        file.close();
        MockServices::start(daemon_, QStringLiteral("dbus-daemon"),
                            {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                             QStringLiteral("--config-file=") + configuration});
        QVERIFY2(daemon_.waitForReadyRead(), "no message bus");
        control_ = MockServices::connected(address());
        QVERIFY(control_ != nullptr);
        // A full bus has room for no more than this.
        QVERIFY(guests() >= 0);
    }

    ~PrivateBus() { end(); }

    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    void end() { MockServices::end(daemon_); }
    /// Keeps it from doing anything until resume().
    void pause() { ::kill(pid_t(daemon_.processId()), SIGSTOP); }
    void resume() { ::kill(pid_t(daemon_.processId()), SIGCONT); }
    QByteArray address() const
    {
        return "unix:path=" + folder_.filePath(QStringLiteral("bus")).toUtf8();
    }
    sd_bus* control() const { return control_.get(); }
    bool has(const QString& service) const { return names().contains(service); }
    /// How many programs are connected, the test's own control and the bus itself left out.
    qsizetype guests() const { return names().filter(QStringLiteral(":")).size() - 1; }

private:
    QStringList names() const
    {
        const QString bus = QStringLiteral("org.freedesktop.DBus");
        const BusMessage reply = MockServices::ask(
            control(), {bus, QStringLiteral("/"), bus, QStringLiteral("ListNames")});
        return reply.arguments.value(0).toStringList();
    }

    QTemporaryDir folder_;
    QProcess daemon_;
    MockServices::Control control_;
};

/// A stand-in for a service, run by dbusmock. Its objects are changed by calls.
class MockService
{
public:
    MockService(PrivateBus& bus, const QString& name, const QString& serviceTemplate)
        : bus_(bus), name_(name)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QString::fromUtf8(bus.address()));
        process_.setProcessEnvironment(environment);
        MockServices::start(
            process_, QStringLiteral(QUARN_PYTHON),
            MockServices::mockArguments(serviceTemplate, QStringLiteral("--session")));
    }

    ~MockService() { MockServices::end(process_); }

    MockService(const MockService&) = delete;
    MockService& operator=(const MockService&) = delete;

    void awaitStart()
    {
        QVERIFY2(QTest::qWaitFor([this] { return bus_.has(name_); }, 30000),
                 process_.readAll().constData());
        // The name comes before the objects.
        QVERIFY(QTest::qWaitFor(
            [this] {
                return exists(QStringLiteral("/org/bluez/obex")) ||
                       exists(QStringLiteral("/org/bluez"));
            },
            30000));
    }

    void end() { MockServices::end(process_); }
    /// Keeps it from answering until resume().
    void pause() { ::kill(pid_t(process_.processId()), SIGSTOP); }
    void resume() { ::kill(pid_t(process_.processId()), SIGCONT); }

    /// Calls a method; what it returns first. Fails the test if it fails.
    QVariant call(const QString& path, const QString& interface, const QString& method,
                  const QVariantList& arguments = {})
    {
        const BusMessage reply = ask(path, interface, method, arguments);
        [&reply, &method] {
            QVERIFY2(!reply.isError(), qPrintable(method + QStringLiteral(": ") + reply.errorText));
        }();
        return reply.arguments.value(0);
    }

    /// Back to how it started.
    void reset() { mock(QStringLiteral("/"), QStringLiteral("Reset")); }
    QVariant mock(const QString& path, const QString& method, const QVariantList& arguments = {})
    {
        return call(path, QStringLiteral("org.freedesktop.DBus.Mock"), method, arguments);
    }
    /// Changes properties, with the signal that tells so.
    void update(const QString& path, const QString& interface, const QVariantMap& properties)
    {
        mock(path, QStringLiteral("UpdateProperties"), {interface, properties});
    }
    QVariant property(const QString& path, const QString& interface, const QString& name)
    {
        return call(path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                    {interface, name});
    }
    bool exists(const QString& path)
    {
        return !ask(path, QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("GetCalls"),
                    {})
                    .isError();
    }
    /// How often a method of an object was called.
    qsizetype calls(const QString& path, const QString& method)
    {
        return mock(path, QStringLiteral("GetMethodCalls"), {method}).toList().size();
    }

private:
    BusMessage ask(const QString& path, const QString& interface, const QString& method,
                   const QVariantList& arguments)
    {
        return MockServices::ask(bus_.control(),
                                 {name_, path, interface, method, arguments, false});
    }

    PrivateBus& bus_;
    QString name_;
    QProcess process_;
};
