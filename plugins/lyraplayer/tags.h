#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>

/// What the tags of a file say. Texts are single lines of limited length.
struct TrackTags {
    QString title;
    QByteArray picture; ///< a picture file: the front cover, or else the first picture
};

/// A text of tags as one line that can be laid out quickly.
QString tagLine(const QString& text);

/// Reads the tags of a file (a path as the file system has it), with the picture only if it is
/// wanted. Nothing, in short time, for what is no regular file, has no tags or only broken ones.
/// Once `cancelled` is set, by another thread, it gives up soon.
TrackTags readTags(const QByteArray& file, bool withPicture, const std::atomic<bool>& cancelled);

/// No more of a file is read than this, bytes: tags stand at its ends, and what has none would be
/// searched through.
inline constexpr qint64 MaxTagBytes = 16 * 1024 * 1024;
