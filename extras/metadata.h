#pragma once

#include <QByteArray>

#include <sys/stat.h>

// What an entry has beside its content. Each of these gives what must be kept and cannot: 0, or the
// errno. What the file system does not have, or the user may not set, needs not be kept.

/// Owner, extended attributes and access lists of an open file or folder; of a folder all but the
/// list for itself, which may forbid that anything comes into it.
int copyOwnerAndAttributes(int from, int to, const struct stat& info);
/// The list for an open folder itself, as the system stores it; empty if it has none.
QByteArray accessListOf(int folder);
/// Gives an open folder such a list, when nothing more comes into it. No list is none.
int setAccessList(int folder, const QByteArray& list);
/// Permissions and times of an open file or folder, which come last: writing changes times, and
/// some permissions forbid it. The owner has been set before.
int setModeAndTimes(int to, const struct stat& info);
/// Owner and times of a link, owner, permissions and times of what is neither file nor folder.
int setMetadataOf(int folder, const QByteArray& name, const struct stat& info);
