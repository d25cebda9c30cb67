#include "platform/vncdisplay.h"

#include "platform/qcopchannel.h"

#include <QGuiApplication>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr char HostChannel[] = "QuarnDisplay";
constexpr char PlatformVariable[] = "QT_QPA_PLATFORM";
const QByteArray ShownOn = QByteArrayLiteral("shown ");
const QByteArray PortKey = QByteArrayLiteral(":port=");
constexpr int UsualVncPort = 5900;
constexpr int LastPort = 65535;
constexpr int PortsTried = 100;

bool vncIsWanted = false;

/// What the toolkit was told of the display, with its size; that of the command line is not known.
QByteArray ownVncPlatform()
{
    const QByteArray platform = qgetenv(PlatformVariable);
    return platform == "vnc" || platform.startsWith("vnc:") ? platform
                                                            : QByteArrayLiteral("vnc:size=480x640");
}

/// Where the number of the port begins and how long it is; -1 if none is told.
qsizetype placeOfPort(const QByteArray& platform, qsizetype& length)
{
    const qsizetype place = platform.indexOf(PortKey);
    if (place < 0)
        return -1;
    const qsizetype begin = place + PortKey.size();
    const qsizetype end = platform.indexOf(':', begin);
    length = (end < 0 ? platform.size() : end) - begin;
    return begin;
}

int portOfPlatform(const QByteArray& platform)
{
    qsizetype length = 0;
    const qsizetype begin = placeOfPort(platform, length);
    return begin < 0 ? UsualVncPort : platform.mid(begin, length).toInt();
}

QByteArray platformWithPort(QByteArray platform, int port)
{
    qsizetype length = 0;
    const qsizetype begin = placeOfPort(platform, length);
    const QByteArray number = QByteArray::number(port);
    return begin < 0 ? platform + PortKey + number : platform.replace(begin, length, number);
}

bool portIsFree(int port)
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
    return vncIsWanted || QGuiApplication::platformName() == QLatin1String("vnc");
}

void VncDisplay::setUsed(bool used)
{
    vncIsWanted = used;
}

QByteArray VncDisplay::platformForGuest()
{
    const QByteArray own = ownVncPlatform();
    const int first = portOfPlatform(own) + 1;
    for (int port = first; port < first + PortsTried && port <= LastPort; ++port) {
        if (portIsFree(port))
            return platformWithPort(own, port);
    }
    return {};
}

void VncDisplay::show()
{
    if (channel_)
        return;
    const QByteArray message = ShownOn + QByteArray::number(portOfPlatform(ownVncPlatform()));
    if (QCopChannel::isRegistered(HostChannel) && QCopChannel::send(HostChannel, message))
        return;
    channel_ = std::make_unique<QCopChannel>(HostChannel);
    connect(channel_.get(), &QCopChannel::received, this, &VncDisplay::take);
}

void VncDisplay::take(const QByteArray& message)
{
    if (!message.startsWith(ShownOn))
        return;
    bool isNumber = false;
    const int port = message.mid(ShownOn.size()).toInt(&isNumber);
    if (isNumber && port > 0 && port <= LastPort)
        emit guestShown(port);
}
