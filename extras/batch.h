#pragma once

#include "extras/targetfolder.h"
#include "extras/work.h"

#include <QByteArray>
#include <QSet>

#include <deque>
#include <optional>
#include <sys/stat.h>
#include <vector>

/// What is in the way of an entry and shall give way to it.
struct InTheWay {
    EntryIdentity identity;
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
    EntryIdentity identity; ///< of the entry that gets the name
    std::optional<InTheWay> replaced;
    bool dropsSource = false; ///< when `to` is there for sure, the source goes
    qint64 bytes = 0; ///< of its content, and how many of them have been written out already
    qint64 flushed = 0;
};

/// An entry to be removed with all that is in it, below the target.
struct Remainder {
    QByteArray folder;
    QByteArray name;
};

/// An entry that cannot be renamed into the target and must be copied there.
struct Refused {
    int source = 0;
    QByteArray from;
    QByteArray to;
};

/// Collects changes and makes them together: first all that was written is flushed and what will be
/// done stands in the journal, then names are given. A source goes when the next flush has put the
/// names of its successors on the medium, too.
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
    /// Bytes of waiting entries that have been written out already.
    qint64 flushedBytes() const { return flushedBytes_; }

    void commit();
    /// Commits, and waits until all of it is on the medium.
    void settle();

    /// What is left to be removed, and what must be copied after all; the caller's to take.
    std::deque<Remainder> remainders;
    std::deque<Refused> refused;

private:
    QByteArray keyOf(const QByteArray& to) const;
    void record(const BatchItem& item);
    void flush();
    bool flushNames();
    void flushEach();
    void keepSources();
    void apply(const BatchItem& item);
    void put(const BatchItem& item);
    void moveIn(const BatchItem& item);
    bool give(const BatchItem& item, int fromFolder, const QByteArray& name, int folder);
    bool putAside(const BatchItem& item, int fromFolder, const QByteArray& name, int folder);
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
};
