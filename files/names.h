#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

/// What a text in UTF-8 may begin with. In a name it stands for itself.
inline constexpr QByteArrayView ByteOrderMark = "\xef\xbb\xbf";

// To the system a name is a row of bytes, to the program a text. These two turn one into the other
// without loss. They hold for whole paths too, since "/" ends every sequence of UTF-8.

/// The text of a name: what is UTF-8 as it is, a byte-order mark included. Each byte that is no
/// part of valid UTF-8 becomes a surrogate of its own, U+DC80 for 0x80 to U+DCFF for 0xff.
/// Different names have different texts.
QString decodeName(QByteArrayView name);

/// The name that decodeName() gives this text for. nullopt if there is none: the text has a zero,
/// another lone surrogate, or surrogates whose bytes would be valid UTF-8 together.
std::optional<QByteArray> encodeName(QStringView text);

/// The bytes of a path as system calls take them. Empty, which no call finds anything under, if the
/// text stands for no path.
QByteArray encodedPath(QStringView path);
