#pragma once

#include "extras/entrymark.h"
#include "extras/operationtypes.h"

#include <QByteArray>

#include <sys/stat.h>

/// One thing that a journal tells. Paths are relative: `from` to the folder that the source lies
/// in, `to` to the target.
struct JournalRecord {
    enum class Type : quint8 {
        Request,        ///< what was asked for; the first of all
        Decision,       ///< about the conflict of `from`, a full path
        DecisionForAll, ///< about all without one of their own
        Made,           ///< `to` is about to become the entry `identity`, made from `from`
        Moved,          ///< `from`, which is the entry `identity`, is about to become `to`
        Joined,         ///< the contents of the folder `from` go into `to`, which was there before
        Source,         ///< what a source is; written with the request
        Aside,          ///< what is in the way at `to` waits under `temporary`, in the same folder
        /// A folder that entries come from or go into, also written with the request: the one that
        /// `source` lies in, or the target, which has no number.
        Place,
        Damage,    ///< what stood here, and behind it, could not be read
        Cancelled, ///< the user has called it off; it is being brought to its end
        Resumed    ///< after that the user has had it finished or taken back
    };

    Type type = Type::Made;
    qint32 source = 0; ///< its place among the sources
    QByteArray from;
    QByteArray to;
    QByteArray temporary;   ///< a name
    EntryIdentity identity; ///< the entry in the target
    EntryIdentity origin;   ///< the entry that it was made from
    bool replaces = false;  ///< something takes the name's place, which cannot come back
    /// What the source was: a folder that is being emptied is not what it was any more.
    quint32 mode = 0;
    quint32 user = 0;
    quint32 group = 0;
    quint32 links = 0; ///< how many names it had
    qint64 size = 0;
    qint64 modified = 0;
    qint64 accessed = 0;
    /// What the entry in the target is: not all file systems tell a time as another one does, or
    /// know how large what they make up will be.
    qint64 madeSize = 0;
    qint64 madeModified = 0;
    qint64 born = 0;        ///< of a source or a place
    quint64 fileSystem = 0; ///< of a place: the kind of its file system, as statfs(2) gives it

    Answer answer = Answer::Replace;
    OperationRequest request;
    qint64 started = 0;

    void setFacts(const struct stat& info);
    /// The facts as the system says them; of the other fields of stat none is set.
    struct stat facts() const;
    /// The entry in the target, and the one that it was made from, which is only told by its size
    /// and time: it may have been away and have come back.
    void setMade(const EntryMark& mark);
    EntryMark made() const;
    EntryMark originMark() const;
    /// Of a source or a place.
    void setMark(const EntryMark& mark);
    EntryMark mark() const;

    static constexpr qint32 TargetPlace = -1;

    QByteArray toBytes() const;
    /// False if they are no record.
    bool fromBytes(const QByteArray& bytes);
};
