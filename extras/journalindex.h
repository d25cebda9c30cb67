#pragma once

#include "extras/journalreader.h"
#include "extras/work.h"

#include <QHash>
#include <QList>

#include <optional>
#include <utility>
#include <vector>

/// What an earlier run of an operation has told its journal, to be asked about by entry. Takes some
/// bytes for each entry, and the records stay in the file.
class JournalIndex
{
public:
    /// Reads the journal through; the descriptor stays its owner's and must outlive this.
    explicit JournalIndex(int file);

    const OperationRequest& request() const { return request_; }
    const Decisions& decisions() const { return decisions_; }
    /// What the sources were at the beginning, as far as that matters.
    const QHash<int, EntryMark>& marks() const { return marks_; }
    /// Whether a part of it could not be read.
    bool isDamaged() const { return isDamaged_; }
    /// The folders that entries come from and go into.
    const QList<JournalRecord>& folders() const { return folders_; }
    /// The last record about a source's entry, if it was made, moved or joined.
    std::optional<JournalRecord> find(int source, const QByteArray& from);
    /// Where the records about entries begin in the file, in their order.
    const std::vector<qint64>& places() const { return places_; }
    JournalRecord at(qint64 place);
    /// What waits aside, in the order in which it was put there.
    const std::vector<JournalRecord>& asides() const { return asides_; }
    /// The records of each file that has several names, by its number. A run that was cut short may
    /// have left some of them without what they tell of.
    const QHash<quint64, QList<qint64>>& linked() const { return linked_; }

private:
    JournalReader reader_;
    OperationRequest request_;
    Decisions decisions_;
    QHash<int, EntryMark> marks_;
    QList<JournalRecord> folders_;
    bool isDamaged_ = false;
    std::vector<qint64> places_;
    std::vector<std::pair<size_t, qint64>> byEntry_; ///< hash of the entry and the record's place
    std::vector<JournalRecord> asides_;
    QHash<quint64, QList<qint64>> linked_;
};
