#include "platform/busgreeting.h"

#include <QFile>
#include <QLocalSocket>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <functional>
#include <unistd.h>

namespace
{

enum MessageType : char { MethodCall = 1, Error = 3 };

int left(const QDeadlineTimer& deadline)
{
    // Below 0 the socket would wait for ever.
    return int(std::clamp<qint64>(deadline.remainingTime(), 0, 60000));
}

void appendNumber(QByteArray& message, quint32 number)
{
    std::array<char, sizeof(number)> bytes{};
    qToLittleEndian(number, bytes.data());
    message.append(bytes.data(), qsizetype(bytes.size()));
}

/// A header field: its code, then a text of type "s" or "o".
void appendField(QByteArray& fields, char code, char type, const QByteArray& text)
{
    constexpr qsizetype FieldAlignment = 8;
    while (fields.size() % FieldAlignment != 0)
        fields.append('\0');
    fields.append(code).append('\1').append(type).append('\0');
    appendNumber(fields, quint32(text.size()));
    fields.append(text).append('\0');
}

/// The call with which a client asks for its name on the bus; the first message on a connection.
QByteArray helloMessage()
{
    QByteArray fields;
    appendField(fields, 1, 'o', "/org/freedesktop/DBus");
    appendField(fields, 2, 's', "org.freedesktop.DBus");
    appendField(fields, 3, 's', "Hello");
    appendField(fields, 6, 's', "org.freedesktop.DBus");
    QByteArray message;
    message.append('l').append(MethodCall).append('\0').append('\1');
    appendNumber(message, 0); // bytes of the body
    appendNumber(message, 1); // the message's number
    appendNumber(message, quint32(fields.size()));
    message.append(fields);
    constexpr qsizetype HeaderAlignment = 8;
    while (message.size() % HeaderAlignment != 0)
        message.append('\0');
    return message;
}

bool waitUntil(QLocalSocket& socket, const QDeadlineTimer& deadline,
               const std::function<bool()>& ready)
{
    while (!ready()) {
        if (deadline.hasExpired() || !socket.waitForReadyRead(left(deadline)))
            return false;
    }
    return true;
}

} // namespace

bool busGreets(const QByteArray& socketName, bool abstract, const QDeadlineTimer& deadline)
{
    QLocalSocket socket;
    if (abstract)
        socket.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    socket.connectToServer(QFile::decodeName(socketName));
    if (!socket.waitForConnected(left(deadline)))
        return false;
    socket.write(QByteArray(1, '\0') + "AUTH EXTERNAL " + QByteArray::number(geteuid()).toHex() +
                 "\r\n");
    if (!waitUntil(socket, deadline, [&socket] { return socket.canReadLine(); }) ||
        !socket.readLine().startsWith("OK"))
        return false;
    socket.write("BEGIN\r\n" + helloMessage());
    constexpr qint64 UpToType = 2;
    if (!waitUntil(socket, deadline, [&socket] { return socket.bytesAvailable() >= UpToType; }))
        return false;
    return socket.read(UpToType).at(1) != Error;
}
