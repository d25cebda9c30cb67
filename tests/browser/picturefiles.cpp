#include "tests/browser/picturefiles.h"

#include <QBuffer>
#include <QColor>
#include <QImage>
#include <QtEndian>

namespace
{

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray littleEndian(quint32 number, int size)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes.left(size);
}

quint32 crc(const QByteArray& bytes)
{
    quint32 sum = 0xffffffff;
    for (const char byte : bytes) {
        sum ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xedb88320U : 0U);
    }
    return ~sum;
}

QByteArray pngChunk(const char* type, const QByteArray& data)
{
    const QByteArray body = type + data;
    return bigEndian(quint32(data.size())) + body + bigEndian(crc(body));
}

} // namespace

QByteArray pictureFile(QSize size, const char* format, const QColor& colour)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return picture.save(&buffer, format) ? bytes : QByteArray();
}

QByteArray pngHeader(QSize size)
{
    const QByteArray kind("\x01\x00\x00\x00\x00", 5); // one bit a pixel, grey
    return QByteArray("\x89PNG\r\n\x1a\n", 8) +
           pngChunk("IHDR",
                    bigEndian(quint32(size.width())) + bigEndian(quint32(size.height())) + kind);
}

QByteArray blackPng(QSize size)
{
    const qsizetype row = 1 + (size.width() + 7) / 8;
    // In front of the compressed bytes the toolkit puts four that give their length.
    const QByteArray data = qCompress(QByteArray(row * size.height(), '\0'), 6).mid(4);
    return pngHeader(size) + pngChunk("IDAT", data) + pngChunk("IEND", {});
}

QByteArray jpegThatClaims(QSize size)
{
    QByteArray bytes = pictureFile({64, 48}, "jpg", Qt::red);
    const qsizetype frame = bytes.indexOf(QByteArray("\xff\xc0", 2));
    const QByteArray sides =
        bigEndian(quint32(size.height())).mid(2) + bigEndian(quint32(size.width())).mid(2);
    return frame < 0 ? QByteArray() : bytes.replace(frame + 5, 4, sides);
}

QByteArray iconThatClaims(QSize claimed, const QByteArray& png)
{
    constexpr quint32 DirectoryBytes = 22;
    return littleEndian(0, 2) + littleEndian(1, 2) + littleEndian(1, 2) +
           littleEndian(quint32(claimed.width()), 1) + littleEndian(quint32(claimed.height()), 1) +
           littleEndian(0, 2) + littleEndian(1, 2) + littleEndian(32, 2) +
           littleEndian(quint32(png.size()), 4) + littleEndian(DirectoryBytes, 4) + png;
}
