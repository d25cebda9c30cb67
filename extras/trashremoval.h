#pragma once

#include "extras/trashfolder.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QSet>

#include <vector>

/// Takes apart what is to be deleted for good, in pieces: all that lies in the folders "expunged"
/// of trashes, be it from another time. Folders below others are brought to the top first, so that
/// none is too deep; nothing is followed, and what is mounted below is left.
class TrashRemoval
{
public:
    explicit TrashRemoval(const std::vector<TrashFolder>& trashes);

    /// Whether there is anything to do.
    bool isNeeded() const;
    /// Works for about that long, and removes something at least. False once nothing is left that
    /// can be removed.
    bool step(int milliseconds);

    /// Entries that have gone.
    qint64 removed() const { return removed_; }
    /// How many could not be removed, and the errno of the first; 0 if all could.
    qint64 failures() const { return failures_; }
    int firstError() const { return firstError_; }

private:
    bool clear(int expunged);
    bool removeFolder(int expunged, const QByteArray& name);
    bool raise(int expunged, int folder, const char* name);
    void fail(const QByteArray& name);
    bool timeIsUp() const { return began_.elapsed() >= allowedMs_; }

    std::vector<FileHandle> expunged_;
    size_t current_ = 0;
    QSet<QByteArray> left_; ///< what could not be removed from the current one
    QElapsedTimer began_;   ///< the piece of work
    qint64 allowedMs_ = 0;
    qint64 removed_ = 0;
    qint64 failures_ = 0;
    int firstError_ = 0;
};
