#include "platform/qcopserver.h"

#include "platform/qcopchannel.h"
#include "platform/socketaddress.h"

#include <QRandomGenerator>
#include <QTimer>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr quint32 Magic = 0x51434f50; // "QCOP"
constexpr qsizetype HeaderBytes = 3 * sizeof(quint32);
constexpr int Backlog = 50;
/// After an accept that failed for want of something, such as descriptors.
constexpr int RetryMs = 1000;

struct Lengths {
    qsizetype message = 0;
    qsizetype data = 0;
};

/// Nothing if a header is not one of ours or promises more than is allowed.
std::optional<Lengths> lengthsIn(const QByteArray& header)
{
    const auto number = [&header](size_t index) {
        return qFromBigEndian<quint32>(header.constData() + index * sizeof(quint32));
    };
    // As they came: on a processor of 32 bits the largest ones would be negative sizes.
    const quint32 message = number(1);
    const quint32 data = number(2);
    if (number(0) != Magic || message > quint32{QCopChannel::MaxMessageBytes} ||
        data > quint32{QCopChannel::MaxDataBytes})
        return std::nullopt;
    return Lengths{qsizetype(message), qsizetype(data)};
}

bool bindTo(int socket, const QByteArray& path)
{
    const SocketAddress address(path);
    return ::bind(socket, address.get(), address.size()) == 0;
}

/// Makes the socket listen at `path`, or leaves nothing there.
bool appearAt(const QByteArray& path, int socket)
{
    // Short: what fits into an address with the channel's name must fit with this one.
    const QByteArray setUp = path.left(path.lastIndexOf('/')) + "/." +
                             QByteArray::number(QRandomGenerator::system()->generate(), 16);
    if (!bindTo(socket, setUp))
        return false;
    if (::chmod(setUp.constData(), S_IRWXU) == 0 && ::listen(socket, Backlog) == 0 &&
        std::rename(setUp.constData(), path.constData()) == 0)
        return true;
    const int reason = errno;
    ::unlink(setUp.constData());
    errno = reason;
    return false;
}

} // namespace

/// One peer, from its connection until its message is there or it is given up.
class QCopServer::Connection : public QObject
{
public:
    Connection(int socket, QObject* parent)
        : QObject(parent), ready(socket, QSocketNotifier::Read), socket_(socket)
    {
        deadline.setSingleShot(true);
        deadline.start(QCopChannel::ReceiveTimeoutMs);
    }
    ~Connection() override { close(); }

    /// Reads what has come, until there are `size` bytes in all. False when no more will come.
    bool fill(qsizetype size)
    {
        while (bytes.size() < size) {
            const qsizetype before = bytes.size();
            bytes.resize(size);
            const ssize_t got =
                ::recv(socket_, bytes.data() + before, static_cast<size_t>(size - before), 0);
            const int reason = errno;
            bytes.resize(before + std::max<ssize_t>(got, 0));
            if (got == 0 || (got < 0 && reason != EINTR))
                return got < 0 && (reason == EAGAIN || reason == EWOULDBLOCK);
        }
        return true;
    }

    void close()
    {
        ready.setEnabled(false);
        deadline.stop();
        if (socket_ >= 0)
            ::close(std::exchange(socket_, -1));
    }

    QSocketNotifier ready;
    QTimer deadline;
    QByteArray bytes;

private:
    int socket_;
};

QCopServer::QCopServer(QObject* parent) : QObject(parent) {}

QCopServer::~QCopServer()
{
    if (socket_ < 0)
        return;
    acceptor_.reset();
    ::unlink(path_.constData());
    ::close(socket_);
}

bool QCopServer::listen(const QByteArray& path)
{
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listening < 0)
        return false;
    if (!appearAt(path, listening)) {
        const int reason = errno;
        ::close(listening);
        errno = reason;
        return false;
    }
    path_ = path;
    socket_ = listening;
    acceptor_ = std::make_unique<QSocketNotifier>(socket_, QSocketNotifier::Read);
    connect(acceptor_.get(), &QSocketNotifier::activated, this, &QCopServer::accept);
    return true;
}

QByteArray QCopServer::toWire(const QByteArray& message, const QByteArray& data)
{
    QByteArray wire(HeaderBytes, Qt::Uninitialized);
    qToBigEndian(Magic, wire.data());
    qToBigEndian(static_cast<quint32>(message.size()), wire.data() + sizeof(quint32));
    qToBigEndian(static_cast<quint32>(data.size()), wire.data() + 2 * sizeof(quint32));
    return wire + message + data;
}

/// Takes those who wait. Who finds all places taken stays in the backlog.
void QCopServer::accept()
{
    while (served_.size() < QCopChannel::MaxConnections) {
        const int socket = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        const int reason = errno;
        if (socket >= 0) {
            serve(socket);
        } else if (reason == EAGAIN || reason == EWOULDBLOCK) {
            acceptor_->setEnabled(true);
            return;
        } else if (reason != EINTR && reason != ECONNABORTED) {
            // Who waits keeps the socket ready; without a pause this would be tried without end.
            QTimer::singleShot(RetryMs, this, &QCopServer::accept);
            break;
        }
    }
    acceptor_->setEnabled(false);
}

void QCopServer::serve(int socket)
{
    // A sender's messages keep their order: what it sent before it made this connection is there.
    const QList<Connection*> earlier = served_;
    for (Connection* connection : earlier)
        read(connection);
    auto* connection = new Connection(socket, this);
    served_.append(connection);
    connect(&connection->ready, &QSocketNotifier::activated, this,
            [this, connection] { read(connection); });
    connect(&connection->deadline, &QTimer::timeout, this, [this, connection] {
        // What came in time counts, though this process was too busy to look.
        read(connection);
        drop(connection);
    });
    read(connection);
}

void QCopServer::read(Connection* connection)
{
    bool more = connection->fill(HeaderBytes);
    if (connection->bytes.size() >= HeaderBytes) {
        const std::optional<Lengths> lengths = lengthsIn(connection->bytes);
        if (!lengths) {
            drop(connection);
            return;
        }
        const qsizetype end = HeaderBytes + lengths->message + lengths->data;
        more = connection->fill(end);
        if (connection->bytes.size() == end) {
            more = false;
            const QByteArray message = connection->bytes.mid(HeaderBytes, lengths->message);
            const QByteArray data = connection->bytes.mid(HeaderBytes + lengths->message);
            // Not from here: a slot may destroy this object, and with it the connection.
            QMetaObject::invokeMethod(
                this, [this, message, data] { emit received(message, data); },
                Qt::QueuedConnection);
        }
    }
    if (!more)
        drop(connection);
}

void QCopServer::drop(Connection* connection)
{
    if (!served_.removeOne(connection))
        return;
    connection->close();
    connection->deleteLater();
    // Queued, so that a message that has just been read is ahead of those that waited.
    QMetaObject::invokeMethod(this, &QCopServer::accept, Qt::QueuedConnection);
}
