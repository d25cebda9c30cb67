#pragma once

#include "extras/flushing.h"
#include "extras/targetfolder.h"
#include "extras/work.h"

#include <QByteArray>
#include <QHash>
#include <QSet>

#include <deque>
#include <optional>
#include <sys/stat.h>
#include <vector>

/// What is in the way of an entry and shall give way to it.
struct InTheWay {
    EntryMark mark;
    bool isFolder = false;
};

/// A change that waits until what it needs is on the medium.
struct BatchItem {
    enum class Kind {
        Put,          ///< the whole new entry `temporary` in `workFolder` gets its name, `to`
        MoveIn,       ///< the source `from` itself becomes `to`
        FinishFolder, ///< nothing more comes into `to`: it gets its permissions and times
        Drop          ///< the source `from` goes, since all of it is on the medium elsewhere
    };

    Kind kind = Kind::Put;
    int source = 0;
    QByteArray from;
    QByteArray to;
    QByteArray workFolder;
    QByteArray temporary;
    struct stat facts = {}; ///< of the source
    EntryMark mark;         ///< of the entry that gets the name
    std::optional<InTheWay> replaced;
    QByteArray accessList;    ///< of a folder that is finished
    bool dropsSource = false; ///< when `to` is there for sure, the source goes
    bool isAgain = false;     ///< something took its name once before
    qint64 bytes = 0; ///< of its content, and how many of them have been written out already
    qint64 flushed = 0;
};

/// An entry to be removed with all that is in it, below the target.
struct Remainder {
    QByteArray folder;
    QByteArray name;
};

/// An entry that did not get its place and is to be looked at once more.
struct Refused {
    int source = 0;
    QByteArray from;
    QByteArray to;
    bool cannotBeRenamed = false; ///< it must be copied; else something has taken its name
};

/// Collects changes and makes them together: first all that was written is flushed and what will be
/// done stands in the journal, then names are given. A source goes when the next flush has put the
/// names of its successors on the medium, too. What is flushed is not waited for at one go.
class Batch
{
public:
    /// Both outlive it.
    Batch(Work& work, TargetFolder& target);

    void add(BatchItem item);
    /// Whether so much is waiting that it should be committed.
    bool isFull() const;
    bool isEmpty() const { return items_.empty(); }
    /// Whether an entry is about to get that name.
    bool isPending(const QByteArray& to) const { return pending_.contains(keyOf(to)); }
    /// Grows with each commit: what was added in an earlier one has its name now.
    quint64 serial() const { return serial_; }
    /// Sources with entries that wait.
    QSet<int> unsettled() const;
    /// Bytes of waiting entries that have been written out already.
    qint64 flushedBytes() const { return flushedBytes_; }

    /// Begins to make the changes, or goes on with that, with one wait for the medium at most. True
    /// when all are made; until then nothing but what finishes folders is added.
    bool commit();
    bool isCommitting() const { return stage_ != Stage::Idle; }
    /// Commits, and waits in the same way until all of it is on the medium.
    bool settle();
    /// From now on a flush gets some tenths of a second. What it has not put on the medium by then
    /// gets no name, and no source goes for it.
    void hurry();

    /// What is left to be removed, and what must be tried again; the caller's to take.
    std::deque<Remainder> remainders;
    std::deque<Refused> refused;
    /// Of the last commit: folders, by the path that they should have got, whose place another one
    /// had taken, so that their contents go into that, and those that could not be placed.
    QSet<QByteArray> joined;
    QSet<QByteArray> lost;

private:
    enum class Stage {
        Idle,
        Together, ///< the target's whole file system is being flushed
        Each,     ///< or the new files, and folders with new names
        Names     ///< only the folders
    };

    QByteArray keyOf(const QByteArray& to) const;
    void record(const BatchItem& item);

    // batchflush.cpp: what gets onto the medium before and after
    void startCommit();
    void flushTogether();
    void flushEach();
    void flushNames();
    void noteName(const QByteArray& folder);
    void addNames();
    bool hasFlushed();
    void startStage(Stage stage);
    bool endTogether();
    void endEach();
    void noteJournal();
    int errorOfNames() const;
    void keepSources(int error);
    void giveUp();
    void giveUpItems();

    // batch.cpp: the changes
    void applyAll();
    void apply(const BatchItem& item);
    void put(const BatchItem& item);
    void moveIn(const BatchItem& item);
    bool give(const BatchItem& item, int fromFolder, const QByteArray& name, int folder);
    bool putAside(const BatchItem& item, int fromFolder, const QByteArray& name, int folder);
    QByteArray placeOf(const QByteArray& folder) const;
    bool joinInstead(const BatchItem& item, int folder);
    void tryAgain(const BatchItem& item, bool cannotBeRenamed);
    void finishFolder(const BatchItem& item);
    void dropAll();
    void drop(const BatchItem& item);
    void done(const BatchItem& item);
    void discard(const BatchItem& item);

    Work& work_;
    SourceFolders sources_; ///< apart from those of a walk, which is elsewhere meanwhile
    TargetFolder& target_;
    std::vector<BatchItem> items_;
    std::vector<BatchItem> drops_;     ///< of the batch before
    std::vector<BatchItem> postponed_; ///< folders that hold what could not be renamed
    QSet<QByteArray> pending_;
    quint64 serial_ = 1;
    qint64 waitingBytes_ = 0;
    qint64 flushedBytes_ = 0;
    QSet<QByteArray> named_; ///< folders with names that may not be on the medium yet
    bool hasManyNamed_ = false;

    Stage stage_ = Stage::Idle;
    std::optional<Flushing> flushing_;
    bool flushesJournal_ = false;   ///< as the first
    std::vector<size_t> flushed_;   ///< the items that it flushes, in their order
    bool hasSettled_ = false;       ///< the folders, after the last commit
    qint64 started_ = 0;            ///< microseconds
    std::optional<qint64> hurries_; ///< until then, microseconds
    QHash<QByteArray, QByteArray>
        elsewhere_; ///< of joined folders, where what was made for them is
};
