#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <limits>

/// What a file system cannot hold.
struct TargetLimits {
    qint64 mostFileBytes = std::numeric_limits<qint64>::max();
    /// The longest name: in bytes, or in units of UTF-16 where names are such texts.
    qint64 mostNameUnits = 255;
    bool namesAreTexts = false; ///< UTF-8 alone
    bool namesAreOfDos = false; ///< without the characters that paths of DOS are made of
    bool ignoresCase = false;
    bool keepsHoles = true;   ///< what was never written of a file takes no room
    bool keepsLinks = true;   ///< a file can have several names
    bool keepsRights = true;  ///< entries have owners and permissions of their own
    bool hasClusters = false; ///< its blocks are what files take, however large

    /// The limits of the file system that an open folder is on.
    static TargetLimits of(int folder);
    /// By the number that statfs(2) gives a kind of file system, and its longest name in bytes.
    static TargetLimits ofKind(quint64 kind, qint64 nameBytes);
    /// The same for one that a program provides, by what fileSystemName() calls it.
    static TargetLimits ofProgram(const QByteArray& name, qint64 nameBytes);

    bool takesName(const QByteArray& name) const;
    /// The same for all names of which a folder can have only one.
    QByteArray nameKey(const QByteArray& name) const;
};
