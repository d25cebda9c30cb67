#pragma once

#include <QByteArray>
#include <QList>

/// What an operation on files is asked for, finds and tells. Paths are bytes as the system has
/// them, sizes bytes, times nanoseconds since 1970.

enum class OperationKind { Copy, Move, Delete };

struct OperationRequest {
    OperationKind kind = OperationKind::Copy;
    /// Absolute paths, each of an entry itself: a link at the end of one is never followed. The
    /// back entry ("..") is none, nor is the root.
    QList<QByteArray> sources;
    /// The absolute path of the folder to copy or move into; a link to one is followed. Unused by
    /// Delete.
    QByteArray target;
    /// The name that a single source gets in the target, if not its own.
    QByteArray newName;
};

/// What is to be done with what is in the way.
enum class Answer {
    Replace,  ///< what is in the way stays until its successor is whole and on the medium
    KeepBoth, ///< the new one becomes "name (2).ext", or the next number that is free
    LeaveOut, ///< nothing happens to either
};

enum class EntryType { File, Folder, Link, Other };

struct EntryFacts {
    EntryType type = EntryType::File;
    qint64 size = 0;
    qint64 modified = 0;
};

/// Something in the target has the name that a source would get. Two folders never are in each
/// other's way: the contents of one join those of the other.
struct Conflict {
    QByteArray source; ///< full path
    QByteArray target; ///< full path
    EntryFacts sourceFacts;
    EntryFacts targetFacts;
};

enum class Trouble {
    // What is refused or cannot work. The others of the sources are done all the same.
    SameFile,       ///< source and target are one file; refused
    IntoItself,     ///< a folder would get into itself or below itself; refused
    Missing,        ///< there is no such source
    NotAllowed,     ///< a folder cannot be read, or what is in it not moved or deleted
    BadName,        ///< the target's file system does not have such names
    TooLarge,       ///< nor files of that size
    NameCollision,  ///< the target does not tell this name from another one in its folder
    TargetUnusable, ///< the target is no folder, or nothing can be written there
    // What happened while it was worked on.
    CannotRead,
    CannotWrite, ///< a full disk for one; `error` tells
    CannotMake,
    CannotRename,
    CannotRemove,  ///< what was moved elsewhere stays where it was, too
    CannotKeep,    ///< owner, mode, times or extended attributes cannot be written
    SourceChanged, ///< it was written to while it was read, twice, or before it could be removed
    // While something is taken back.
    Replaced,     ///< it took the place of another one, which cannot come back
    ChangedSince, ///< somebody has written to it since; it stays
    NotesDamaged  ///< the journal tells no more from some place on; what it told there is not known
};

/// What cannot or could not be done with one entry.
struct Failure {
    QByteArray path; ///< full path of the entry that could not be done
    Trouble trouble = Trouble::CannotRead;
    int error = 0; ///< an errno; 0 where the system said nothing
};

/// A list that keeps its first entries and counts all.
template<typename Type>
struct Listed {
    static constexpr qsizetype Most = 500;

    QList<Type> first;
    qint64 count = 0;

    void add(const Type& one)
    {
        ++count;
        if (first.size() < Most)
            first.append(one);
    }
    bool isEmpty() const { return count == 0; }
};

/// What is known before anything is changed.
struct SurveyResult {
    qint64 entries = 0; ///< all that will be worked on, hidden ones and folders included
    qint64 folders = 0; ///< as many of them are folders
    qint64 bytes = 0;   ///< contents that have to be written, or that deleting takes away
    /// Free and needed bytes of the target's file system. What is only renamed needs none.
    qint64 freeBytes = 0;
    qint64 neededBytes = 0;
    bool hasRoom = true;
    Listed<Failure> troubles; ///< what will not be done, whatever is answered
    Listed<Conflict> conflicts;

    /// Whether there is nothing to tell or to ask before.
    bool isPlain() const { return hasRoom && troubles.isEmpty() && conflicts.isEmpty(); }
};

struct OperationProgress {
    qint64 bytesDone = 0; ///< on the medium; what waits in memory does not count
    qint64 bytesTotal = 0;
    qint64 entriesDone = 0;
    qint64 entriesTotal = 0;
    double bytesPerSecond = 0; ///< 0 while not known
    int secondsLeft = -1;      ///< -1 while not known
    QByteArray current;        ///< full path of the entry that is worked on

    /// 0 to 100; by bytes, by entries where there are no bytes to write. 100 only when all is done.
    int percent() const;
};

enum class SourceOutcome {
    NotReached, ///< cancelled before, or not yet
    Done,       ///< whole, with everything in it
    NotAllKept, ///< whole, but something of what it had beside its content is told to be missing
    LeftOut,    ///< all or a part of it stays where it was, as was answered
    Failed      ///< some of it could not be done
};
