#pragma once

#include "extras/treewalk.h"

#include <QByteArray>

#include <functional>
#include <optional>

/// Removes an entry with all that is in it, one step at a time. Follows no link and goes into no
/// other file system.
class Removal
{
public:
    /// What could not be removed, by its path below the top of the cursor.
    using Failed = std::function<void(const QByteArray& path, int error)>;

    /// Removes what is at `path` below the top of the cursor, which outlives this.
    Removal(FolderCursor& cursor, const QByteArray& path, Failed failed);

    /// Removes one entry, or looks into a folder. False when there is nothing more to do.
    bool step();
    /// Entries removed so far.
    qint64 removed() const { return removed_; }
    const QByteArray& current() const { return walk_.path(); }

private:
    void leave();
    void enter();
    bool unlink(int flags);
    void tell(int error);

    TreeWalk walk_;
    Failed failed_;
    qint64 removed_ = 0;
    qint64 failures_ = 0;
    qint64 removedBefore_ = -1; ///< when the current folder was last read
    std::optional<dev_t> device_;
};
