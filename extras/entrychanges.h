#pragma once

#include <QByteArray>

#include <sys/stat.h>

/// Renames an entry to a name that nothing has; EEXIST if something has it. On file systems that
/// cannot tell in one step the name is taken before. False, with errno set, if it fails.
bool renameToFree(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to);
/// Whether a name is in use in a folder, be it by a link that leads nowhere, and by what.
bool lookAt(int folder, const QByteArray& name, struct stat& info);
/// Flushes all that a file system has in memory. The folder is one on it.
bool flushAll(int folder);

/// Nanoseconds since 1970.
qint64 nanoseconds(const timespec& time);
timespec timeOf(qint64 nanoseconds);

/// Tells one entry from others while it is there.
struct EntryIdentity {
    quint64 device = 0;
    quint64 inode = 0;

    static EntryIdentity of(const struct stat& info) { return {info.st_dev, info.st_ino}; }
    friend bool operator==(const EntryIdentity&, const EntryIdentity&) = default;
};
size_t qHash(const EntryIdentity& identity, size_t seed = 0);

/// A free name for `name` in a folder: "name (2).ext", or the next number. Names that `isPending`
/// are as good as taken. Cut where it would be longer than `mostUnits` bytes.
template<typename IsPending>
QByteArray freeNameIn(int folder, const QByteArray& name, qint64 mostUnits,
                      const IsPending& isPending);

/// What stands between a name's beginning and its number, as bytes: "name", ".ext". A name that
/// begins with its only "." has no extension.
struct NameParts {
    QByteArray stem;
    QByteArray extension;

    static NameParts of(const QByteArray& name);
    /// "stem (2).ext"; the stem is cut, between characters of UTF-8, so that all is no longer than
    /// that.
    QByteArray numbered(int number, qint64 mostBytes) const;
};

template<typename IsPending>
QByteArray freeNameIn(int folder, const QByteArray& name, qint64 mostUnits,
                      const IsPending& isPending)
{
    const NameParts parts = NameParts::of(name);
    for (int number = 2;; ++number) {
        const QByteArray tried = parts.numbered(number, mostUnits);
        struct stat info = {};
        if (!isPending(tried) && !lookAt(folder, tried, info))
            return tried;
    }
}
