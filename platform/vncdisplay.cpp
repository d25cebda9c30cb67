#include "platform/vncdisplay.h"

#include "platform/qcopchannel.h"

#include <QGuiApplication>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr char Channel[] = "QuarnDisplay";
constexpr char PlatformVariable[] = "QT_QPA_PLATFORM";
const QByteArray Shown = QByteArrayLiteral("shown ");
const QByteArray Port = QByteArrayLiteral(":port=");
constexpr int UsualPort = 5900;
constexpr int LastPort = 65535;
constexpr int PortsTried = 100;

bool isWanted = false;

/// What the toolkit was told of the display, with its size; that of the command line is not known.
QByteArray ownPlatform()
{
    const QByteArray platform = qgetenv(PlatformVariable);
    return platform == "vnc" || platform.startsWith("vnc:") ? platform
                                                            : QByteArrayLiteral("vnc:size=480x640");
}

/// Where the number of the port begins and how long it is; -1 if none is told.
qsizetype portPlace(const QByteArray& platform, qsizetype& length)
{
    const qsizetype place = platform.indexOf(Port);
    if (place < 0)
        return -1;
    const qsizetype begin = place + Port.size();
    const qsizetype end = platform.indexOf(':', begin);
    length = (end < 0 ? platform.size() : end) - begin;
    return begin;
}

int portOf(const QByteArray& platform)
{
    qsizetype length = 0;
    const qsizetype begin = portPlace(platform, length);
    return begin < 0 ? UsualPort : platform.mid(begin, length).toInt();
}

QByteArray withPort(QByteArray platform, int port)
{
    qsizetype length = 0;
    const qsizetype begin = portPlace(platform, length);
    const QByteArray number = QByteArray::number(port);
    return begin < 0 ? platform + Port + number : platform.replace(begin, length, number);
}

bool isFree(int port)
{
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (probe < 0)
        return false;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(in_port_t(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // As the server binds it, past connections that are not forgotten yet.
    const int reuse = 1;
    ::setsockopt(probe, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    const bool free =
        ::bind(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::listen(probe, 1) == 0;
    ::close(probe);
    return free;
}

} // namespace

VncDisplay::VncDisplay(QObject* parent) : QObject(parent) {}

VncDisplay::~VncDisplay() = default;

bool VncDisplay::isUsed()
{
    return isWanted || QGuiApplication::platformName() == QLatin1String("vnc");
}

void VncDisplay::setUsed(bool used)
{
    isWanted = used;
}

QByteArray VncDisplay::platformForGuest()
{
    const QByteArray own = ownPlatform();
    const int first = portOf(own) + 1;
    for (int port = first; port < first + PortsTried && port <= LastPort; ++port) {
        if (isFree(port))
            return withPort(own, port);
    }
    return {};
}

void VncDisplay::show()
{
    if (channel_)
        return;
    const QByteArray message = Shown + QByteArray::number(portOf(ownPlatform()));
    if (QCopChannel::isRegistered(Channel) && QCopChannel::send(Channel, message))
        return;
    channel_ = std::make_unique<QCopChannel>(Channel);
    connect(channel_.get(), &QCopChannel::received, this, &VncDisplay::take);
}

void VncDisplay::take(const QByteArray& message)
{
    if (!message.startsWith(Shown))
        return;
    bool isNumber = false;
    const int port = message.mid(Shown.size()).toInt(&isNumber);
    if (isNumber && port > 0 && port <= LastPort)
        emit guestShown(port);
}
