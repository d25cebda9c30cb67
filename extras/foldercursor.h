#pragma once

#include "files/filehandle.h"

#include <QByteArray>

#include <vector>

#include <sys/types.h>

/// A place in a tree of folders, of any depth and any length of its path. Moves from one folder to
/// another with a few descriptors open, never through a link, and never into a folder that has
/// taken the name of one that it came through.
class FolderCursor
{
public:
    /// Takes the open folder that all paths are relative to. One that is not open makes every go()
    /// fail.
    explicit FolderCursor(FileHandle top) : top_(std::move(top)) {}

    /// Opens a folder by a path of any kind, links followed. Not open, with errno set, if it cannot
    /// be.
    static FileHandle openTop(const QByteArray& path);

    /// Makes the folder at `path` the current one: names with "/" between, relative to the top,
    /// which is the empty path. False, with errno set, if it is no folder or cannot be opened; the
    /// current folder is any above it then.
    bool go(const QByteArray& path);
    /// The current folder's descriptor, which stays the cursor's; valid until the next go().
    int folder() const { return steps_.empty() ? top_.get() : steps_.back().folder.get(); }
    int top() const { return top_.get(); }
    const QByteArray& path() const { return path_; }
    /// Forgets the way to the current folder, since folders on it have other names now.
    void forget();

private:
    /// A folder on the way from the top. Those that are far above have been closed.
    struct Step {
        qsizetype end = 0; ///< length of its path
        dev_t device = 0;
        ino_t inode = 0;
        FileHandle folder;
    };

    bool down(const QByteArray& path, qsizetype begin, qsizetype end);
    bool up();

    static constexpr size_t MostOpen = 24;

    FileHandle top_;
    std::vector<Step> steps_;
    QByteArray path_;
};

/// A path and a name in it, with "/" between if there is something before.
QByteArray below(const QByteArray& folder, const QByteArray& name);
/// What is before the last "/" of a path; empty if it has none.
QByteArray parentOf(const QByteArray& path);
/// What follows the last "/" of a path; all of one that has none.
QByteArray nameOf(const QByteArray& path);
