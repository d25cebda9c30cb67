#include "platform/qcopchannel.h"

#include "platform/qcopserver.h"
#include "platform/socketaddress.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <optional>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr qsizetype MaxNameLength = 64;
// A server sets its socket up as "/.xxxxxxxx" in the folder and then renames it.
constexpr qsizetype SetUpNameBytes = 10;
constexpr int ReservePollMs = 20;
constexpr char LockSuffix[] = ".lock";

enum class Folder { Find, Create };

bool isChannelName(const QByteArray& name)
{
    const auto allowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '.' || c == '_' || c == '-';
    };
    return !name.isEmpty() && name.size() <= MaxNameLength && !name.startsWith('.') &&
           !name.endsWith(LockSuffix) && std::all_of(name.begin(), name.end(), allowed);
}

QByteArray folderPath()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(runtime) && QFileInfo(runtime).isDir())
        return QFile::encodeName(QDir::cleanPath(runtime + QLatin1String("/qcop")));
    return QFile::encodeName(QDir::tempPath()) + "/qcop-" + QByteArray::number(::geteuid());
}

/// Whether nobody else can reach into the folder. A missing one is not, without a warning.
bool isPrivateFolder(const QByteArray& folder)
{
    struct stat about = {};
    if (::lstat(folder.constData(), &about) != 0)
        return false;
    if (S_ISDIR(about.st_mode) && about.st_uid == ::geteuid() &&
        (about.st_mode & (S_IRWXG | S_IRWXO)) == 0)
        return true;
    qWarning("QCopChannel: %s is not a private folder of this user", folder.constData());
    return false;
}

/// The path of the channel's socket; nothing if its name, its path or the folder is refused.
std::optional<QByteArray> socketPath(const QByteArray& channel, Folder wanted)
{
    if (!isChannelName(channel)) {
        qWarning("QCopChannel: \"%s\" is not a channel name",
                 channel.left(MaxNameLength).constData());
        return std::nullopt;
    }
    const QByteArray folder = folderPath();
    QByteArray path = folder + '/' + channel;
    if (std::max(path.size(), folder.size() + SetUpNameBytes) > SocketAddress::MaxPathBytes) {
        qWarning("QCopChannel: %s is too long for a socket", path.constData());
        return std::nullopt;
    }
    if (wanted == Folder::Create && ::mkdir(folder.constData(), S_IRWXU) != 0 && errno != EEXIST) {
        qWarning("QCopChannel: cannot make %s: %s", folder.constData(), std::strerror(errno));
        return std::nullopt;
    }
    if (!isPrivateFolder(folder))
        return std::nullopt;
    return path;
}

/// connect() to a socket of the file system. Gives 0 or the errno.
int connectTo(int socket, const QByteArray& path)
{
    const SocketAddress address(path);
    return ::connect(socket, address.get(), address.size()) == 0 ? 0 : errno;
}

/// Whether a process has a stream socket open at `path`. A datagram socket asks: it is refused for
/// its type by a live one, which notices nothing, and for want of a peer by one that was left
/// behind. Sockets appear at their path only once they listen.
bool isAlive(const QByteArray& path)
{
    const int asking = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (asking < 0)
        return false;
    const auto closing = qScopeGuard([asking] { ::close(asking); });
    return connectTo(asking, path) == EPROTOTYPE;
}

/// The owner's hold on a channel. The system lets go of it when the process ends in any way.
class OwnerLock
{
public:
    explicit OwnerLock(const QByteArray& path)
        : file_(::open((path + LockSuffix).constData(),
                       O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR))
    {
        if (file_ < 0)
            qWarning("QCopChannel: cannot open %s%s: %s", path.constData(), LockSuffix,
                     std::strerror(errno));
    }
    ~OwnerLock()
    {
        if (file_ < 0)
            return;
        // Closing alone would leave it locked while a child between fork and exec has a copy.
        ::flock(file_, LOCK_UN);
        ::close(file_);
    }
    OwnerLock(const OwnerLock&) = delete;
    OwnerLock& operator=(const OwnerLock&) = delete;

    bool isOpen() const { return file_ >= 0; }
    bool take() { return isOpen() && ::flock(file_, LOCK_EX | LOCK_NB) == 0; }

private:
    int file_ = -1;
};

/// By the path of the socket.
using Reservations = std::map<QByteArray, std::unique_ptr<OwnerLock>>;

Reservations& reservations()
{
    static Reservations kept;
    return kept;
}

/// The lock of the channel, adopted or taken now; null when another one has it.
std::unique_ptr<OwnerLock> ownerLock(const QByteArray& path)
{
    if (auto reserved = reservations().extract(path))
        return std::move(reserved.mapped());
    auto lock = std::make_unique<OwnerLock>(path);
    return lock->take() ? std::move(lock) : nullptr;
}

/// Lets the next blocking call on the socket end by itself at the deadline.
bool limitWaiting(int socket, const QDeadlineTimer& deadline)
{
    const qint64 left = deadline.remainingTime();
    if (left <= 0)
        return false; // 0 would mean to wait for ever
    timeval time = {};
    time.tv_sec = static_cast<time_t>(left / 1000);
    time.tv_usec = static_cast<suseconds_t>(left % 1000 * 1000);
    return ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time) == 0;
}

bool connectBefore(int socket, const QByteArray& path, const QDeadlineTimer& deadline)
{
    int error = EINTR;
    while (error == EINTR && limitWaiting(socket, deadline))
        error = connectTo(socket, path);
    return error == 0;
}

bool writeBefore(int socket, QByteArrayView bytes, const QDeadlineTimer& deadline)
{
    while (!bytes.isEmpty()) {
        if (!limitWaiting(socket, deadline))
            return false;
        const ssize_t sent =
            ::send(socket, bytes.data(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
        if (sent >= 0)
            bytes = bytes.sliced(sent);
        else if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace

struct QCopChannel::Private {
    // Declared first: it is given up after the server has removed the socket.
    std::unique_ptr<OwnerLock> lock;
    QCopServer server;
};

QCopChannel::QCopChannel(const QByteArray& channel, QObject* parent)
    : QObject(parent), d_(std::make_unique<Private>())
{
    connect(&d_->server, &QCopServer::received, this, &QCopChannel::received);
    listen(channel);
}

QCopChannel::~QCopChannel() = default;

bool QCopChannel::isOwner() const
{
    return d_->server.isListening();
}

bool QCopChannel::isRegistered(const QByteArray& channel)
{
    const std::optional<QByteArray> path = socketPath(channel, Folder::Find);
    return path && isAlive(*path);
}

bool QCopChannel::send(const QByteArray& channel, const QByteArray& message, const QByteArray& data)
{
    const QDeadlineTimer deadline(SendTimeoutMs);
    const std::optional<QByteArray> path = socketPath(channel, Folder::Find);
    if (!path)
        return false;
    if (message.size() > MaxMessageBytes || data.size() > MaxDataBytes) {
        qWarning("QCopChannel: a message to %s is too long", channel.constData());
        return false;
    }
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return false;
    const auto closing = qScopeGuard([socket] { ::close(socket); });
    return connectBefore(socket, *path, deadline) &&
           writeBefore(socket, QCopServer::toWire(message, data), deadline);
}

bool QCopChannel::reserve(const QByteArray& channel, int timeoutMs)
{
    const QDeadlineTimer deadline(std::max(timeoutMs, 0));
    const std::optional<QByteArray> path = socketPath(channel, Folder::Create);
    if (!path)
        return false;
    if (reservations().contains(*path))
        return true;
    auto lock = std::make_unique<OwnerLock>(*path);
    while (lock->isOpen()) {
        const bool taken = lock->take();
        // Asked even with the lock in hand: somebody may have deleted the owner's lock file.
        if (isAlive(*path))
            return false;
        if (taken) {
            reservations().emplace(*path, std::move(lock));
            return true;
        }
        if (deadline.hasExpired())
            return false;
        QThread::msleep(ReservePollMs);
    }
    return false;
}

void QCopChannel::releaseReservation(const QByteArray& channel)
{
    if (const std::optional<QByteArray> path = socketPath(channel, Folder::Find))
        reservations().erase(*path);
}

void QCopChannel::listen(const QByteArray& channel)
{
    const std::optional<QByteArray> path = socketPath(channel, Folder::Create);
    if (!path)
        return;
    d_->lock = ownerLock(*path);
    if (!d_->lock || isAlive(*path)) {
        qWarning("QCopChannel: %s is registered already", channel.constData());
        d_->lock.reset();
        return;
    }
    if (d_->server.listen(*path))
        return;
    qWarning("QCopChannel: cannot listen on %s: %s", path->constData(), std::strerror(errno));
    d_->lock.reset();
}
