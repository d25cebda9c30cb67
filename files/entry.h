#pragma once

#include <QString>

#include <optional>

#include <sys/types.h>

// What is under a path, and changes to it. A text that stands for no path names nothing: questions
// find nothing there, and changes fail.

/// What the system says about an entry; asked once. All but isLink() is about what a link leads to.
class EntryInfo
{
public:
    explicit EntryInfo(const QString& path);

    /// False also for a link that leads nowhere.
    bool exists() const { return exists_; }
    bool isLink() const { return isLink_; }
    bool isFolder() const;
    bool isFile() const;
    qint64 size() const { return size_; }   ///< bytes; 0 if there is nothing
    unsigned mode() const { return mode_; } ///< kind and permissions; 0 if there is nothing
    /// The name of the user who owns it; empty if nobody has that number.
    QString owner() const;

private:
    bool exists_ = false;
    bool isLink_ = false;
    unsigned mode_ = 0;
    qint64 size_ = 0;
    uid_t owner_ = 0;
};

/// Tells an entry from another one that takes its name; links are entries of their own.
struct EntryId {
    unsigned deviceMajor = 0;
    unsigned deviceMinor = 0;
    quint64 inode = 0;
    unsigned kind = 0;
    /// When it was made, where the file system keeps that; numbers of files are used again.
    qint64 birthSeconds = 0;
    unsigned birthNanoseconds = 0;

    friend bool operator==(const EntryId&, const EntryId&) = default;
};

/// nullopt if there is nothing under that path.
std::optional<EntryId> entryId(const QString& path);

/// Whether there is something under a path; a link that leads nowhere is nothing.
bool entryExists(const QString& path);
/// Whether the name is in use, be it by a link that leads nowhere.
bool isTaken(const QString& path);
/// Removes a file or link. False, with errno set, if it fails.
bool removeFile(const QString& path);
/// Makes a folder in one that is there. False if it fails or there is something of that name.
bool makeFolder(const QString& path);
/// Gives an entry, be it a link that leads nowhere, another path. False if it fails; what there is
/// of that path already is never replaced.
bool renameEntry(const QString& from, const QString& to);
/// The path without links, "." and "..", from the root on; the current folder's for an empty one.
/// Empty if there is nothing.
QString canonicalPath(const QString& path);
/// A path from the root on, without "." and doubled "/". Links and ".." stay as they are.
QString absolutePath(const QString& path);
