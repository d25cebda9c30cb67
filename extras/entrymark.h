#pragma once

#include "extras/entrychanges.h"

#include <QByteArray>

#include <sys/stat.h>

/// What tells an entry from others when it is looked at again, be it after another start of the
/// machine. A device may have another number by then, and there are file systems that make the
/// numbers of entries up whenever they read them.
struct EntryMark {
    EntryIdentity identity; ///< without a device if that cannot be told any more
    quint32 kind = 0;       ///< the S_IFMT part of its mode
    qint64 size = 0;
    qint64 modified = 0;
    qint64 born = 0; ///< nanoseconds since 1970; 0 where that was not asked or is not known

    static EntryMark of(const struct stat& info);
    /// With the time of its birth. An empty name is for the folder itself.
    static EntryMark withBirth(int folder, const QByteArray& name, const struct stat& info);
};

/// Whether the file system of an open folder or file keeps the numbers of its entries when it is
/// mounted anew. One that cannot be asked does not.
bool hasLastingNumbers(int file);

/// Whether an entry is of the marked kind and, unless it is a folder, has its size and its time of
/// change, which a file system may have cut to what it can hold.
bool isUnchanged(const EntryMark& mark, const struct stat& now);
/// Whether an entry in an open folder is the marked one, unchanged, as far as that can be told: its
/// number counts where numbers last.
bool isThat(const EntryMark& mark, const struct stat& now, int folder);
/// Whether an entry of an open folder is the marked one, whatever has been written to it since.
/// False if that cannot be told.
bool isStill(const EntryMark& mark, int folder, const QByteArray& name, const struct stat& now);
