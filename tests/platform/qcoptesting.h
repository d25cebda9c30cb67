#pragma once

#include "platform/qcopchannel.h"
#include "platform/socketaddress.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

/// What the tests of the channels have in common: processes and bare sockets at the other end.
namespace qcoptesting
{

inline constexpr int WaitMs = 30'000; // for a slow, busy machine
// What a call that may take SendTimeoutMs may take on such a machine.
inline constexpr int BoundMs = 5'000;
inline constexpr char Channel[] = "Quarn";

/// A folder for the channels' sockets, which goes with this.
class RuntimeFolder : public QTemporaryDir
{
public:
    // Short wherever the tests run: the address of a socket has 107 bytes.
    RuntimeFolder() : QTemporaryDir(QStringLiteral("/tmp/qcop-XXXXXX"))
    {
        QVERIFY(isValid());
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path()));
    }
};

/// A descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }
    int operator*() const { return number_; }

private:
    int number_;
};

inline QByteArray socketPath()
{
    return qgetenv("XDG_RUNTIME_DIR") + "/qcop/" + Channel;
}

/// A peer that speaks to the channel by itself. Its descriptor does not block.
inline Descriptor connectedPeer()
{
    Descriptor peer(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const SocketAddress address(socketPath());
    if (::connect(*peer, address.get(), address.size()) != 0)
        qCritical("cannot connect: %s", std::strerror(errno));
    return peer;
}

/// A listening socket in the channel's place that is nobody's channel.
inline Descriptor foreignListener()
{
    Descriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const SocketAddress address(socketPath());
    if (::bind(*listener, address.get(), address.size()) != 0 || ::listen(*listener, 8) != 0)
        qCritical("cannot listen: %s", std::strerror(errno));
    return listener;
}

/// Whether the channel has closed the connection.
inline bool isDropped(const Descriptor& peer)
{
    char byte = 0;
    const ssize_t got = ::recv(*peer, &byte, 1, MSG_DONTWAIT | MSG_PEEK);
    return got == 0 || (got < 0 && errno != EAGAIN);
}

inline qsizetype descriptorCount()
{
    return QDir("/proc/self/fd").entryList().size();
}

/// A field of /proc/PID/status; empty if there is none.
inline QByteArray statusOf(qint64 pid, const QByteArray& field)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(field + ":"))
            return line.sliced(field.size() + 1).simplified();
    }
    return {};
}

/// Another process that listens on the channel.
class Listener : public QProcess
{
public:
    /// Prints into `outputFile` if one is given.
    explicit Listener(const QString& outputFile = {})
    {
        if (!outputFile.isEmpty())
            setStandardOutputFile(outputFile);
        start(QCOP_TOOL, {"listen", Channel});
        registered_ = QTest::qWaitFor([] { return QCopChannel::isRegistered(Channel); }, WaitMs);
    }
    ~Listener() override
    {
        kill();
        waitForFinished(WaitMs);
    }
    bool hasRegistered() const { return registered_; }
    bool signal(int number) const { return ::kill(static_cast<pid_t>(processId()), number) == 0; }
    bool stop() const
    {
        return signal(SIGSTOP) && QTest::qWaitFor([this] { return isIn('T'); }, WaitMs);
    }
    bool isIn(char state) const { return statusOf(processId(), "State").startsWith(state); }
    bool prints(const QByteArray& expected)
    {
        const auto complete = [&] {
            return (output_ += readAllStandardOutput()).size() >= expected.size();
        };
        return QTest::qWaitFor(complete, WaitMs) && output_ == expected;
    }
    QByteArray output() { return output_ += readAllStandardOutput(); }

private:
    bool registered_ = false;
    QByteArray output_;
};

} // namespace qcoptesting
