// Keeps the toolkit's VNC server to this machine: `quarn --vnc` has it loaded before the C library.
//
// The server asks for no password, listens on all addresses and has no option that would change it.
// So here the one call by which it chooses its address takes the loopback address in place of all.
// It does so for the server's own port alone, which stands in the variable that chose VNC: programs
// that are started inherit both, and what they serve is theirs to say.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

/// The port that QT_QPA_PLATFORM, for example "vnc:size=480x640:port=5901", gives the server; 0 if
/// it is about another display.
unsigned long portOfServer()
{
    constexpr unsigned long UsualPort = 5900;
    constexpr std::string_view Vnc("vnc");
    constexpr std::string_view Port(":port=");
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    if (platform == nullptr)
        return 0;
    const std::string_view text(platform);
    if (text != Vnc && !text.starts_with("vnc:"))
        return 0;
    const size_t place = text.find(Port);
    return place == std::string_view::npos
               ? UsualPort
               : std::strtoul(platform + place + Port.size(), nullptr, 10);
}

bool isForServer(in_port_t port)
{
    const unsigned long wanted = portOfServer();
    return wanted != 0 && ntohs(port) == wanted;
}

/// The call of the system itself.
int bindTo(int socket, const void* address, socklen_t length)
{
    return int(syscall(SYS_bind, socket, address, length));
}

} // namespace

// The system's header declares it so. A socket that takes IPv6 alone cannot be bound to the
// loopback address of IPv4, and the server then does not come up.
extern "C" __attribute__((visibility("default"))) int bind(int socket, const sockaddr* address,
                                                           socklen_t length) noexcept
{
    if (address != nullptr && length >= sizeof(sockaddr_in) && address->sa_family == AF_INET) {
        sockaddr_in here = {};
        std::memcpy(&here, address, sizeof here);
        if (here.sin_addr.s_addr == htonl(INADDR_ANY) && isForServer(here.sin_port)) {
            here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            return bindTo(socket, &here, sizeof here);
        }
    } else if (address != nullptr && length >= sizeof(sockaddr_in6) &&
               address->sa_family == AF_INET6) {
        sockaddr_in6 here = {};
        std::memcpy(&here, address, sizeof here);
        if (std::memcmp(&here.sin6_addr, &in6addr_any, sizeof in6addr_any) == 0 &&
            isForServer(here.sin6_port)) {
            inet_pton(AF_INET6, "::ffff:127.0.0.1", &here.sin6_addr);
            return bindTo(socket, &here, sizeof here);
        }
    }
    return bindTo(socket, address, length);
}
