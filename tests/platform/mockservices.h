#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
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
        name_ = QStringLiteral("control") + QString::number(quintptr(this));
        QVERIFY(QDBusConnection::connectToBus(QString::fromUtf8(address()), name_).isConnected());
    }

    ~PrivateBus()
    {
        QDBusConnection::disconnectFromBus(name_);
        end();
    }

    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    void end() { MockServices::end(daemon_); }
    QByteArray address() const
    {
        return "unix:path=" + folder_.filePath(QStringLiteral("bus")).toUtf8();
    }
    QDBusConnection control() const { return QDBusConnection(name_); }
    bool has(const QString& service) const
    {
        return control().interface()->isServiceRegistered(service);
    }
    /// How many programs are connected, the test's own control and the bus itself left out.
    qsizetype guests() const
    {
        const QStringList names = control().interface()->registeredServiceNames();
        return names.filter(QRegularExpression(QStringLiteral("^:"))).size() - 1;
    }

private:
    QTemporaryDir folder_;
    QProcess daemon_;
    QString name_;
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
        const QDBusMessage reply = ask(path, interface, method, arguments);
        [&reply, &method] {
            QVERIFY2(reply.type() == QDBusMessage::ReplyMessage,
                     qPrintable(method + QStringLiteral(": ") + reply.errorMessage()));
        }();
        return reply.arguments().value(0);
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
        const QVariant value = call(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("Get"), {interface, name});
        return value.value<QDBusVariant>().variant();
    }
    bool exists(const QString& path)
    {
        const QDBusMessage reply =
            ask(path, QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("GetCalls"), {});
        return reply.type() == QDBusMessage::ReplyMessage;
    }
    /// How often a method of an object was called.
    qsizetype calls(const QString& path, const QString& method)
    {
        const QVariant log = mock(path, QStringLiteral("GetMethodCalls"), {method});
        const auto list = log.value<QDBusArgument>();
        qsizetype count = 0;
        for (list.beginArray(); !list.atEnd(); ++count) {
            quint64 time = 0;
            QVariantList arguments;
            list.beginStructure();
            list >> time >> arguments;
            list.endStructure();
        }
        list.endArray();
        return count;
    }

private:
    QDBusMessage ask(const QString& path, const QString& interface, const QString& method,
                     const QVariantList& arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(name_, path, interface, method);
        message.setArguments(arguments);
        message.setAutoStartService(false);
        return bus_.control().call(message, QDBus::Block, 10000);
    }

    PrivateBus& bus_;
    QString name_;
    QProcess process_;
};
