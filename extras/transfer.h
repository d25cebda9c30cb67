#pragma once

#include "extras/batch.h"
#include "extras/filecopy.h"
#include "extras/journalindex.h"
#include "extras/linkedfiles.h"
#include "extras/removal.h"
#include "extras/treewalk.h"
#include "extras/work.h"

#include <deque>
#include <memory>
#include <optional>
#include <vector>

/// Copies or moves the sources of an operation into its target, one step at a time.
class Transfer
{
public:
    enum class Step { More, Ask, Done };

    /// `earlier` is what a journal tells about an earlier run, or null. Both outlive it.
    Transfer(Work& work, JournalIndex* earlier);
    ~Transfer();

    Step step();
    const Conflict& question() const { return question_; }
    /// After Ask, when the decision is among those of the work.
    void goOn() { isAsking_ = false; }
    /// Ends with the next steps: what is whole gets its name, what is half goes. `isForGood`: no
    /// other run will go on with it.
    void cancel(bool isForGood);
    /// Sources of which something is not on the medium by its name yet.
    QSet<int> unsettled() const { return batch_.unsettled(); }
    /// Bytes that have been written out of entries that have no name yet.
    qint64 flushedBytes() const;

private:
    /// An entry that is to be copied or moved with all below it.
    struct Job {
        int source = 0;
        QByteArray from;
        QByteArray to;
        bool cannotBeRenamed = false;
        bool isAgain = false; ///< something took its name once before
    };
    /// A folder of the target, on the way to where it is worked.
    struct Level {
        QByteArray to;            ///< the path that it has or will have
        QByteArray work;          ///< the path that it has until its batch is committed
        quint64 serial = 0;       ///< of that batch
        bool isNew = false;       ///< nothing can be in the way in it
        bool isKnown = false;     ///< its temporary entries will be found again
        bool keepsSource = false; ///< not all that the source has could be kept
        bool isLost = false;      ///< it did not get its name; what is in it is passed over
        struct stat facts = {};
        QByteArray accessList; ///< that it gets at the end
    };
    enum class Verdict { Free, Joins, Out, Ask, Later };

    // transfer.cpp: what is done in which order
    bool prepare();
    bool commit();
    bool nextJob();
    Step nextEntry();
    void walkFailed();
    void jobEnded();
    void leave();
    void leaveAll();
    void giveUpCopy();
    Step end();
    bool removeRemainders();
    void takeRefused();

    // transferplacing.cpp: where an entry goes
    Step place();
    void passOver();
    bool isDoneAlready();
    bool isAt(const JournalRecord& record, struct stat& made);
    bool isRefused(const QByteArray& to);
    Verdict look(QByteArray& to, std::optional<InTheWay>& replaced);
    Verdict decide(QByteArray& to, int folder, const struct stat& there,
                   std::optional<InTheWay>& replaced);
    void join(const QByteArray& to);
    void refuse(Trouble trouble, int error);
    bool isRenamed() const;
    BatchItem itemFor(BatchItem::Kind kind, const QByteArray& to) const;
    QByteArray workPath(const Level& level) const;

    // transfermaking.cpp: new entries under temporary names
    void make(BatchItem item);
    void makeFolder(BatchItem item, int folder);
    bool makeLink(BatchItem& item);
    bool makeSpecial(BatchItem& item, int folder);
    bool keepsEnough(const Kept& kept);
    void startFile(const BatchItem& item, int folder);
    void stepFile();
    std::optional<LinkedFiles::Place> linkedFor(const struct stat& info);
    std::optional<LinkedFiles::Place> linkedEarlier(const struct stat& info);
    void keep(BatchItem item);
    void makeKnown(Level& level);

    Work& work_;
    JournalIndex* earlier_;
    SourceFolders sources_;
    TargetFolder target_;
    Batch batch_;
    std::deque<Job> jobs_;
    std::optional<Job> job_;
    std::unique_ptr<TreeWalk> walk_;
    std::vector<Level> levels_;
    std::unique_ptr<FileCopy> copy_;
    std::optional<BatchItem> copied_; ///< what copy_ makes
    std::unique_ptr<Removal> removal_;
    LinkedFiles links_;
    Conflict question_;
    bool isHeld_ = false; ///< the entry that the walk is at has no place yet
    bool isAsking_ = false;
    bool isCancelled_ = false;
};
