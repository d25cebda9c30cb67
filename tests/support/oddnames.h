#pragma once

#include <QByteArray>
#include <QList>

/// Names that a file system takes and that a program easily mistakes for others.
struct OddKind {
    const char* title;
    QList<QByteArray> names;
};

const QList<OddKind>& oddKinds();
/// The place in the list of each byte between letters: as many names again as of bytes alone.
constexpr int BytesInside = 1;
/// The same kinds with some of the names of each, for further forms of what has been seen with all.
const QList<OddKind>& thinnedOddKinds();
/// The names of a kind for what is done name by name: all, but of the bytes inside some.
const QList<QByteArray>& namesForEach(int kind);
/// A column "kind" with a row for each kind: its place in both lists.
void addOddKinds();

/// The names that one could be mistaken for: by a decoder that replaces, drops or reads leniently
/// what is no UTF-8, by one that eats the byte-order mark, by a text that is trimmed, composed or
/// cut.
QList<QByteArray> twinsOf(const QByteArray& name);

/// Whether a name between double quotes reaches a program that the shell starts.
bool survivesTheShell(const QByteArray& name);
