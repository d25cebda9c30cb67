#pragma once

#include "extras/flushing.h"
#include "extras/removal.h"
#include "extras/work.h"

#include <memory>
#include <optional>

/// Deletes the sources of an operation with all that is in them, one step at a time.
class Deletion
{
public:
    /// The work outlives it. What was deleted in an earlier run may be missing.
    Deletion(Work& work, bool isSecondRun);

    /// False when nothing is left to do.
    bool step();
    /// Ends with the next step; what has gone has gone.
    void cancel() { isCancelled_ = true; }

private:
    bool nextSource();
    QByteArray folderOf(int source) const;
    bool isFlushed();
    void failed(const QByteArray& path, int error);

    Work& work_;
    SourceFolders sources_;
    bool isSecondRun_;
    int source_ = -1;
    std::unique_ptr<Removal> removal_;
    QByteArray emptied_; ///< the folder of what has gone, if its names may still be on the medium
    std::optional<Flushing> flushing_;
    qint64 before_ = 0; ///< entries of the sources before this one
    bool isCancelled_ = false;
};
