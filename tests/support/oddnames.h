#pragma once

#include <QByteArray>
#include <QList>

/// Names that a file system takes and that a program easily mistakes for others.
struct OddKind {
    const char* title;
    QList<QByteArray> names;
};

const QList<OddKind>& oddKinds();
/// A column "kind" with a row for each kind: its place in oddKinds().
void addOddKinds();
/// A few names of each kind, for what takes long.
QList<QByteArray> someOddNames();

/// The names that one could be mistaken for: by a decoder that replaces, drops or reads leniently
/// what is no UTF-8, by one that eats the byte-order mark, by a text that is trimmed, composed or
/// cut.
QList<QByteArray> twinsOf(const QByteArray& name);

/// Whether a name between double quotes reaches a program that the shell starts.
bool survivesTheShell(const QByteArray& name);
