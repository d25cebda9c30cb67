#pragma once

#include <QByteArray>
#include <QHash>

#include <optional>

/// What a trash remembers of a folder in it, so that nobody has to walk it again.
struct TrashedSize {
    qint64 bytes = 0;    ///< on the disk, with all below
    qint64 infoTime = 0; ///< when its info file was written, seconds since 1970; others are stale
    friend bool operator==(const TrashedSize&, const TrashedSize&) = default;
};
using TrashedSizes = QHash<QByteArray, TrashedSize>;

// The sizes stand in the file "directorysizes" of a trash, by the names in "files".

TrashedSizes parseTrashedSizes(const QByteArray& text);
QByteArray trashedSizesText(const TrashedSizes& sizes);

/// Those that an open trash remembers; none if there is no such file.
TrashedSizes readTrashedSizes(int trash);
/// Puts others in their place at once. They are only remembered: a failure is not told.
void writeTrashedSizes(int trash, const TrashedSizes& sizes);
/// Removes what a write that was cut short left.
void tidyTrashedSizes(int trash);

/// What a folder takes on its disk with all below it, hard links once for each name, links not
/// followed. nullopt if that takes longer than `milliseconds` or something cannot be looked at.
std::optional<qint64> sizeOnDisk(int parent, const QByteArray& name, int milliseconds);
