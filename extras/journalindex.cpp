#include "extras/journalindex.h"

#include <QHashFunctions>

#include <algorithm>

namespace
{

size_t hashOf(int source, const QByteArray& from)
{
    return qHashMulti(0, source, from);
}

} // namespace

JournalIndex::JournalIndex(int file) : reader_(file)
{
    JournalRecord record;
    for (qint64 place = reader_.offset(); reader_.next(record); place = reader_.offset()) {
        switch (record.type) {
        case JournalRecord::Type::Request:
            request_ = record.request;
            break;
        case JournalRecord::Type::Decision:
            decisions_.byPath.insert(record.from, record.answer);
            break;
        case JournalRecord::Type::DecisionForAll:
            decisions_.forAll = record.answer;
            break;
        case JournalRecord::Type::Source:
            marks_.insert(record.source, record.mark());
            break;
        case JournalRecord::Type::Damage:
            isDamaged_ = true;
            break;
        case JournalRecord::Type::Cancelled:
        case JournalRecord::Type::Resumed:
            break;
        case JournalRecord::Type::Place:
            folders_.append(record);
            break;
        case JournalRecord::Type::Aside:
            asides_.push_back(record);
            break;
        case JournalRecord::Type::Made:
            if (record.links > 1 && S_ISREG(record.mode))
                linked_[record.origin.inode].append(place);
            [[fallthrough]];
        case JournalRecord::Type::Moved:
        case JournalRecord::Type::Joined:
            places_.push_back(place);
            byEntry_.emplace_back(hashOf(record.source, record.from), place);
            break;
        }
    }
    std::sort(byEntry_.begin(), byEntry_.end());
}

std::optional<JournalRecord> JournalIndex::find(int source, const QByteArray& from)
{
    const size_t hash = hashOf(source, from);
    auto after = std::upper_bound(
        byEntry_.begin(), byEntry_.end(), hash,
        [](size_t wanted, const std::pair<size_t, qint64>& one) { return wanted < one.first; });
    while (after != byEntry_.begin() && (--after)->first == hash) {
        JournalRecord record = at(after->second);
        if (record.source == source && record.from == from)
            return record;
    }
    return std::nullopt;
}

JournalRecord JournalIndex::at(qint64 place)
{
    JournalRecord record;
    reader_.seek(place);
    if (!reader_.next(record))
        record = {};
    return record;
}
