#pragma once

#include <QByteArray>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

/// The address of a local socket in the file system, as the system's calls take it.
class SocketAddress
{
public:
    /// The longest path that an address holds, in bytes.
    static constexpr qsizetype MaxPathBytes = sizeof(sockaddr_un::sun_path) - 1;

    /// A path of no more than MaxPathBytes.
    explicit SocketAddress(const QByteArray& path)
    {
        Q_ASSERT(path.size() <= MaxPathBytes);
        address_.sun_family = AF_UNIX;
        std::memcpy(address_.sun_path, path.constData(), static_cast<size_t>(path.size()));
    }

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
    static constexpr socklen_t size() { return sizeof(sockaddr_un); }

private:
    sockaddr_un address_ = {};
};
