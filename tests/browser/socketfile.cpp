#include "tests/browser/socketfile.h"

#include <QFile>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

void makeSocket(const QString& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    QCOMPARE(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
}
