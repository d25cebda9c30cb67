#pragma once

#include "extras/filecopy.h"
#include "extras/flushing.h"
#include "extras/journalindex.h"
#include "extras/targetfolder.h"
#include "extras/work.h"

#include <QHash>

#include <memory>
#include <optional>

/// Undoes what a journal tells, from its end to its beginning: what a copy has made goes, what was
/// moved goes back to where it was.
class TakingBack
{
public:
    /// Both outlive it.
    TakingBack(Work& work, JournalIndex& earlier);

    /// False when nothing is left to do.
    bool step();
    /// Ends with the next step; the journal stays good for another try.
    void cancel() { isCancelled_ = true; }
    bool wasCancelled() const { return isCancelled_; }

private:
    /// Something that goes back to another file system.
    struct Return {
        JournalRecord record;
        QByteArray temporary;
        bool hasName = false; ///< that it had; what has been made of it may go soon
    };
    /// What is where something came from.
    enum class Origin { Itself, Nothing, Another };
    /// A name in the folder of a source.
    struct Name {
        int source = 0;
        QByteArray from;
    };

    bool isFlushed();
    void undo(const JournalRecord& record);
    bool isOurs(const JournalRecord& record, const struct stat& made, int folder);
    void tellGone(const JournalRecord& record, int error);
    void tellOther(const JournalRecord& record);
    void noteReturned(const JournalRecord& record);
    void undoMade(const JournalRecord& record, const struct stat& made);
    void undoFolder(const JournalRecord& record);
    void moveBack(const JournalRecord& record);
    std::optional<Name> otherName(const JournalRecord& record);
    void findStayed();
    bool linkBack(const JournalRecord& record, int into, const QByteArray& temporary);
    void copyBack(const JournalRecord& record, const struct stat& made);
    bool hasKept(const JournalRecord& record, const Kept& kept);
    void stepCopy();
    void placeBack(const JournalRecord& record, const QByteArray& temporary);
    void stepReturn();
    void giveNameBack();
    void abandonReturn();
    bool remakeSpecial(const JournalRecord& record, int folder, const QByteArray& temporary);
    void unmake(const JournalRecord& record);
    int sourceFolder(const JournalRecord& record);
    Origin originOf(const JournalRecord& record);
    void fail(const JournalRecord& record, Trouble trouble, int error);

    Work& work_;
    JournalIndex& earlier_;
    SourceFolders sources_;
    TargetFolder target_;
    size_t next_; ///< places before it are still to be undone
    std::unique_ptr<FileCopy> copy_;
    std::optional<Flushing> flushing_; ///< at the end
    std::optional<Return> returning_;
    std::optional<Flushing> returned_; ///< of what is returning
    /// Files with several names: those that are back, by what they were in the target, and those
    /// that have a name in the sources of which no journal tells, by what they are.
    QHash<quint64, Name> back_;
    std::optional<QHash<quint64, Name>> stayed_;
    quint64 count_ = 0;
    bool hasBegun_ = false;
    bool isCancelled_ = false;
};
