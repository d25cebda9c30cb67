#pragma once

#include "extras/foldercursor.h"
#include "extras/inodeset.h"
#include "extras/journal.h"
#include "extras/metadata.h"
#include "extras/operationtypes.h"

#include <QHash>
#include <QSet>

#include <memory>
#include <optional>

/// What has been answered about what is in the way.
struct Decisions {
    QHash<QByteArray, Answer> byPath; ///< by the full path of the source
    std::optional<Answer> forAll;

    std::optional<Answer> about(const QByteArray& path) const
    {
        const auto found = byPath.constFind(path);
        return found != byPath.constEnd() ? std::optional(*found) : forAll;
    }
};

/// What the parts of one operation share: what is asked for, what was answered, how far it is and
/// what went wrong.
struct Work {
    explicit Work(const OperationRequest& wanted);

    OperationRequest request;
    Decisions decisions;
    QHash<int, EntryMark> marks; ///< what the sources were when they were looked at
    /// Files with more than one name among the sources, if that was looked at.
    std::optional<InodeSet> linked;
    OperationProgress progress;
    unsigned lacks = 0; ///< each Lack that was met
    Listed<Failure> failures;
    QList<SourceOutcome> outcomes;
    QSet<int> notAllKept;             ///< sources with entries of which something is missing
    std::unique_ptr<Journal> journal; ///< null if there is none
    QByteArray temporaryPrefix;       ///< what temporary names begin with
    int journalError = 0;
    /// For how long one step waits for the medium. Long when nobody waits for the operation: then
    /// nothing wakes the processor before the medium does.
    int patienceMs = 10;

    /// The full path of an entry of a source, by its path from the source's folder on.
    QByteArray fullSource(int source, const QByteArray& from) const;
    QByteArray fullTarget(const QByteArray& to) const;

    /// Whether a source is the path of an entry: absolute, and its last name is one. What is not
    /// has failed from the beginning.
    bool isUsable(int source) const;
    /// Whether a source, which is in that open folder, is what it was when it was looked at, if it
    /// was.
    bool isStillMeant(int source, int folder, const struct stat& info) const;
    void fail(int source, const QByteArray& path, Trouble trouble, int error);
    /// An entry of a source is whole in the target, but without something that it had. What its
    /// file system refused is told for the entry, what it lacks once for all. True if the source of
    /// the entry may go all the same.
    bool note(const Kept& kept, int source, const QByteArray& path);
    void leaveOut(int source);
    /// All of a source has been worked on.
    void end(int source);
    bool hasLost(int source) const;
    /// A source that was done is not wholly done after all.
    void undo(int source);
    /// What will not be worked on after all.
    void takeOff(qint64 entries, qint64 bytes);

    /// Goes on without a journal, after an error in writing it.
    void loseJournal(int error);
};

/// The folders that sources lie in, opened when they are needed. Most operations have one.
class SourceFolders
{
public:
    explicit SourceFolders(const OperationRequest& request) : request_(request) {}

    /// A cursor in the folder of a source, for paths that begin with the source's name. Valid until
    /// the next call. Its top is not open, with errno set, if the folder cannot be opened.
    FolderCursor& of(int source);
    QByteArray name(int source) const;

private:
    const OperationRequest& request_;
    QByteArray parent_;
    std::unique_ptr<FolderCursor> cursor_;
};
