#pragma once

#include <QByteArray>
#include <QtEndian>

// Tags of music, byte by byte.

inline QByteArray bigEndian(quint32 number)
{
    const quint32 ordered = qToBigEndian(number);
    return QByteArray(reinterpret_cast<const char*>(&ordered), 4);
}

/// A size as ID3 writes it: seven bits a byte.
inline QByteArray id3Size(qsizetype size)
{
    const auto bits = quint32(size);
    return bigEndian(((bits & 0xfe00000U) << 3U) | ((bits & 0x1fc000U) << 2U) |
                     ((bits & 0x3f80U) << 1U) | (bits & 0x7fU));
}

inline QByteArray id3Frame(const QByteArray& name, const QByteArray& content)
{
    return name + id3Size(content.size()) + QByteArray(2, '\0') + content;
}

/// A text in UTF-8.
inline QByteArray id3Text(const QByteArray& name, const QByteArray& text)
{
    return id3Frame(name, '\x03' + text);
}

enum PictureType : char { OtherPicture = 0, FrontCover = 3, BackCover = 4 };

inline QByteArray id3Picture(const QByteArray& picture, PictureType type = FrontCover)
{
    return id3Frame("APIC", QByteArray("\x03image/png\0", 11) + char(type) + '\0' + picture);
}

/// A tag with these frames, and behind it the beginning of silence.
inline QByteArray mp3With(const QByteArray& frames)
{
    const QByteArray silence = QByteArray("\xff\xfb\x10\xc0", 4) + QByteArray(100, '\0');
    return QByteArray("ID3\x04\0\0", 6) + id3Size(frames.size()) + frames + silence.repeated(4);
}

/// A FLAC file without sound, with a picture.
inline QByteArray flacWith(const QByteArray& picture)
{
    const QByteArray content = bigEndian(FrontCover) + bigEndian(9) + "image/png" + bigEndian(0) +
                               QByteArray(16, '\0') + bigEndian(quint32(picture.size())) + picture;
    const QByteArray about("\x10\x00\x10\x00\0\0\0\0\0\0\x0a\xc4\x42\xf0", 14);
    return "fLaC" + bigEndian(34) + about + QByteArray(34 - 14, '\0') +
           bigEndian(0x86000000U | quint32(content.size())) + content;
}
