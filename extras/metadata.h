#pragma once

#include <QByteArray>

#include <sys/stat.h>

// What an entry has beside its content.

/// Kinds of what a file system may have no place for at all.
enum Lack : unsigned {
    LacksOwner = 1,
    LacksRights = 2, ///< permissions and access lists
    LacksAttributes = 4,
    LacksTime = 8
};

/// How much of what an entry had its successor has got. What only root may give, such as a file to
/// another user, is not missed where a user works: neither is what belongs to the machine and not
/// to the entry, the attributes outside of "user." and access lists.
struct Kept {
    int error = 0;      ///< why the file system, which has such things, refused one here; or 0
    unsigned lacks = 0; ///< each Lack that the entry had something of

    bool isAll() const { return error == 0 && lacks == 0; }
    Kept& operator+=(const Kept& more);
};

/// Owner, extended attributes and access lists of an open file or folder; of a folder all but the
/// list for itself, which may forbid that anything comes into it.
Kept copyOwnerAndAttributes(int from, int to, const struct stat& info);
/// The list for an open folder itself, as the system stores it; empty if it has none.
QByteArray accessListOf(int folder);
/// Gives an open folder such a list, when nothing more comes into it. No list is none.
Kept setAccessList(int folder, const QByteArray& list);
/// Permissions and times of an open file or folder, which come last: writing changes times, and
/// some permissions forbid it. The owner has been set before.
Kept setModeAndTimes(int to, const struct stat& info);

/// An entry of an open folder.
struct EntryPlace {
    int folder = -1;
    const QByteArray& name;
};
/// Owner and times of a link; all of what is neither file nor folder.
Kept copyMetadata(const EntryPlace& from, const EntryPlace& to, const struct stat& info);
