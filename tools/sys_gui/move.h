#pragma once

#include <QByteArray>

#include <functional>

/// How far a move is, in bytes of file content. A total of 0 means that it is not known yet, or
/// that there is no content.
struct MoveProgress {
    qint64 bytesDone = 0;
    qint64 bytesTotal = 0;
};

struct MoveResult {
    enum State { Moved, Failed, Interrupted };

    State state = Moved;
    QByteArray message; ///< what failed and why, names in the file system's encoding
};

/// Called for every entry and every block that is copied, often within a millisecond. Its return of
/// false gives the move up, unless all has been copied already.
using MoveWatcher = std::function<bool(const MoveProgress&)>;

/// Moves the file, folder or link `source` into the folder `folder`, where nothing of its name may
/// be. Paths are in the file system's encoding.
///
/// Within a file system it is renamed. To another one it is copied under a temporary name, which is
/// put in place when it is whole and stored; only then is the source removed. A move that failed or
/// was interrupted before that leaves the source as it was and no copy. Modes, times and, where it
/// is allowed, owners are kept; hard links become files of their own.
MoveResult moveInto(const QByteArray& source, const QByteArray& folder, const MoveWatcher& watcher);
