#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// What is to be played: absolute paths as the file system has them (names need not be UTF-8), or
/// addresses of network streams ("http://", "https://").
using Tracks = QList<QByteArray>;

/// Whether a file is a list of tracks, by its extension.
bool isPlaylist(const QString& path);

/// The tracks of an M3U list: one a line. Blank lines and those beginning with "#" are skipped, a
/// relative path starts at `folder`, "file://" addresses are paths.
Tracks parseM3u(const QByteArray& content, const QByteArray& folder);
/// The tracks of a PLS list: the values of its keys File1, File2 and so on, as they come.
Tracks parsePls(const QByteArray& content, const QByteArray& folder);

/// What the player plays when it is started on `path`: the tracks of a list, else the file itself.
/// Nothing (nullopt) if it is a list that cannot be read. Of a list only the first MaxPlaylistBytes
/// are read.
std::optional<Tracks> tracksOf(const QString& path);
inline constexpr qsizetype MaxPlaylistBytes = 64 * 1024 * 1024;

/// Whether a track is the address of a network stream.
bool isStream(const QByteArray& track);
/// What a track is called as long as nothing better is known: its file's name.
QString trackName(const QByteArray& track);
