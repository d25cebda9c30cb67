#include "tests/browser/socketfile.h"

#include "platform/socketaddress.h"

#include <QFile>
#include <QTest>

#include <sys/socket.h>
#include <unistd.h>

void makeSocket(const QString& path)
{
    const SocketAddress address(QFile::encodeName(path));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    QCOMPARE(::bind(socket, address.get(), address.size()), 0);
    ::close(socket);
}
