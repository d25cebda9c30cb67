#pragma once

#include <QStringList>

/// Bookmarks: names and the folder of each, index by index.
struct Bookmarks {
    QStringList names;
    QStringList paths;
};

/// Reads a bookmark file: UTF-8, two lines a bookmark, its name and its folder. One empty line
/// before a name is skipped, so that an empty line at the end gives one more, nameless, bookmark. A
/// last name without a folder gets an empty one. Empty if the file is missing or unreadable; only
/// the first MiB is read, and of a line the first 4096 characters.
Bookmarks readBookmarks(const QString& file);
