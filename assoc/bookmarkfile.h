#pragma once

#include <QStringList>

/// Bookmarks: names and the folder of each, index by index.
struct Bookmarks {
    QStringList names;
    QStringList paths;
};

/// Reads a bookmark file: UTF-8 (paths may have any bytes), two lines a bookmark, its name and its
/// folder. One empty line before a name is skipped, so that an empty line at the end gives one
/// more, nameless, bookmark. A last name without a folder gets an empty one. Empty if the file is
/// missing or unreadable. Only the first 64 MiB and 1,000,000 bookmarks are read, none by half, and
/// of a line the first 4096 characters.
Bookmarks readBookmarks(const QString& file);

/// Appends a bookmark to a file, which is made if it is missing. False, with the file as it was,
/// if it cannot be read or written, if a line break in the name or folder would break its lines, or
/// if the folder's text stands for no path.
bool appendBookmark(const QString& file, const QString& name, const QString& folder);
