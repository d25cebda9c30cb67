#pragma once

#include "extras/entrychanges.h"
#include "extras/foldercursor.h"
#include "extras/pace.h"
#include "extras/targetlimits.h"

#include <QByteArray>

#include <vector>

/// The folder that an operation writes into, and all below it.
class TargetFolder
{
public:
    /// Not open if it is no folder; error() tells. All temporary names will begin with `prefix`.
    TargetFolder(const QByteArray& path, const QByteArray& prefix);

    bool isOpen() const { return cursor_.top() >= 0; }
    int error() const { return error_; }
    FolderCursor& cursor() { return cursor_; }
    /// The descriptor of a folder below, valid until the next call; -1 with errno set.
    int folder(const QByteArray& path) { return cursor_.go(path) ? cursor_.folder() : -1; }
    /// Whether it lies in that folder, or is it.
    bool isBelow(const struct stat& folder) const;

    quint64 device() const { return device_; }
    const TargetLimits& limits() const { return limits_; }
    Pace& pace() { return pace_; }
    /// A name that no entry has had yet in this run.
    QByteArray temporaryName();

private:
    FolderCursor cursor_;
    int error_ = 0;
    QByteArray prefix_;
    quint64 device_ = 0;
    quint64 count_ = 0;
    TargetLimits limits_;
    Pace pace_;
    std::vector<EntryIdentity> above_; ///< it and all that it lies in
};
