#pragma once

#include <QByteArrayList>

/// A tree as one line for each entry in it, sorted: path below the top, kind, mode, owner, times of
/// change in nanoseconds, and content or target. Two trees with the same lines are the same to any
/// program. Empty if there is nothing at `path`.
QByteArrayList treeText(const QByteArray& path);

/// Makes things for trees; every one fails the test if it does not work. Paths are bytes.
namespace making
{
void file(const QByteArray& path, const QByteArray& content, unsigned mode = 0644);
void folder(const QByteArray& path, unsigned mode = 0755);
void symbolicLink(const QByteArray& path, const QByteArray& target);
void fifo(const QByteArray& path, unsigned mode = 0640);
void socket(const QByteArray& path);
/// Gives an entry (a link itself) a time of change and of last access, both in the past.
void age(const QByteArray& path, long seconds);
/// A tree with some of everything.
void variety(const QByteArray& path);
} // namespace making
