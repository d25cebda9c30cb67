#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

/// What the info file of an entry in the trash tells.
struct TrashInfo {
    QByteArray path;    ///< where it was: absolute, or relative to where the trash lies
    qint64 deleted = 0; ///< when, seconds since 1970; 0 if that is not told
};

/// Bytes as they stand in an info file: those of a path that are letters, digits, "/" and a few
/// signs as they are, others as "%" and two digits.
QByteArray percentEncoded(const QByteArray& bytes);
/// Undoes it. nullopt if a "%" is not followed by two digits, or for a zero.
std::optional<QByteArray> percentDecoded(QByteArrayView text);

/// The content of an info file.
QByteArray trashInfoText(const TrashInfo& info);
/// Reads one. nullopt if it tells no path: it is no such file, it was cut off, or the path is
/// empty or goes up by "..".
std::optional<TrashInfo> parseTrashInfo(QByteArrayView text);
