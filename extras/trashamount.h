#pragma once

#include "extras/inodeset.h"
#include "extras/trash.h"

#include <QList>

#include <atomic>

/// How much there is in entries of trashes, with all that is below them: as an operation counts
/// what it is to delete. Links are not followed, a file with several names takes its room once, and
/// what cannot be looked into counts as one entry. May be read by other threads while it counts.
class TrashAmount
{
public:
    /// Adds those of the entries that are still there. Ends early when it is stopped.
    void add(const Trash& trash, const QList<TrashEntry>& counted,
             const std::atomic<bool>& isStopped);

    qint64 entries() const { return entries_; }
    qint64 bytes() const { return bytes_; }

private:
    void count(const struct stat& about);

    std::atomic<qint64> entries_ = 0;
    std::atomic<qint64> bytes_ = 0;
    InodeSet seen_; ///< files with several names
};
