#include "extras/batch.h"

#include "extras/metadata.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace
{

/// Whether an entry is what it was when it was copied.
bool isUntouched(const struct stat& copied, const struct stat& now, int folder)
{
    const bool isSame = now.st_size == copied.st_size &&
                        (now.st_mode & S_IFMT) == (copied.st_mode & S_IFMT) &&
                        now.st_dev == copied.st_dev &&
                        (now.st_ino == copied.st_ino || !hasLastingNumbers(folder)) &&
                        nanoseconds(now.st_mtim) == nanoseconds(copied.st_mtim);
    // Each other name of it that went has changed this time.
    return isSame &&
           (copied.st_nlink > 1 || nanoseconds(now.st_ctim) == nanoseconds(copied.st_ctim));
}

} // namespace

Batch::Batch(Work& work, TargetFolder& target)
    : work_(work), sources_(work.request), target_(target)
{
}

QByteArray Batch::keyOf(const QByteArray& to) const
{
    return target_.limits().nameKey(to);
}

void Batch::add(BatchItem item)
{
    if (item.kind == BatchItem::Kind::Put || item.kind == BatchItem::Kind::MoveIn) {
        record(item);
        pending_.insert(keyOf(item.to));
        waitingBytes_ += item.bytes - item.flushed;
        flushedBytes_ += item.flushed;
    }
    items_.push_back(std::move(item));
}

bool Batch::isFull() const
{
    return qint64(items_.size()) >= target_.pace().batchEntries() ||
           waitingBytes_ >= target_.pace().batchBytes();
}

QSet<int> Batch::unsettled() const
{
    QSet<int> sources;
    for (const auto* waiting : {&items_, &drops_, &postponed_}) {
        for (const BatchItem& item : *waiting)
            sources.insert(item.source);
    }
    for (const Refused& one : refused)
        sources.insert(one.source);
    return sources;
}

void Batch::record(const BatchItem& item)
{
    if (work_.journal == nullptr)
        return;
    JournalRecord record;
    record.type =
        item.kind == BatchItem::Kind::Put ? JournalRecord::Type::Made : JournalRecord::Type::Moved;
    record.source = item.source;
    record.from = item.from;
    record.to = item.to;
    record.replaces = item.replaced.has_value();
    record.setFacts(item.facts);
    record.setMade(item.mark);
    work_.journal->add(record);
}

void Batch::applyAll()
{
    dropAll();
    std::vector<BatchItem> items;
    items.swap(items_);
    for (const BatchItem& item : items)
        apply(item);
    for (auto one = elsewhere_.constBegin(); one != elsewhere_.constEnd(); ++one)
        remainders.push_back({parentOf(one.value()), nameOf(one.value())});
    elsewhere_.clear();
    pending_.clear();
    waitingBytes_ = flushedBytes_ = 0;
    ++serial_;
}

void Batch::apply(const BatchItem& item)
{
    switch (item.kind) {
    case BatchItem::Kind::Put:
        put(item);
        break;
    case BatchItem::Kind::MoveIn:
        moveIn(item);
        break;
    case BatchItem::Kind::FinishFolder:
        finishFolder(item);
        break;
    case BatchItem::Kind::Drop:
        drops_.push_back(item);
        break;
    }
}

void Batch::put(const BatchItem& item)
{
    const bool isFolder = S_ISDIR(item.facts.st_mode);
    const QByteArray parent = parentOf(item.to);
    // What has lost its folder is made anew with it, or was told of with it.
    if (lost.contains(parent)) {
        if (isFolder)
            lost.insert(item.to);
        work_.takeOff(1, item.bytes);
        return;
    }
    // The folders that it is in have got their names before it.
    const QByteArray place = placeOf(parent);
    FileHandle made;
    if (const int there = place == parent ? -1 : target_.folder(place); there >= 0)
        made = sameFile(there);
    const int folder = target_.folder(parent);
    if (folder >= 0 && give(item, place == parent ? folder : made.get(), item.temporary, folder)) {
        done(item);
        return;
    }
    const int error = errno;
    const bool isTaken = folder >= 0 && error == EEXIST && !item.replaced;
    if (isTaken && isFolder && joinInstead(item, folder))
        return;
    remainders.push_back({place, item.temporary});
    if (isFolder)
        lost.insert(item.to);
    if (isTaken && !item.isAgain) {
        tryAgain(item, false);
        return;
    }
    work_.fail(item.source, work_.fullSource(item.source, item.from), Trouble::CannotRename, error);
    work_.takeOff(1, item.bytes);
}

/// Where the folder is that was made to get this path: there, or, if another one had taken it,
/// where it was made.
QByteArray Batch::placeOf(const QByteArray& folder) const
{
    return elsewhere_.value(folder, folder);
}

/// A folder has come into a new folder's place since it was looked at: two folders never are in
/// each other's way.
bool Batch::joinInstead(const BatchItem& item, int folder)
{
    struct stat there = {};
    if (!lookAt(folder, nameOf(item.to), there) || !S_ISDIR(there.st_mode))
        return false;
    elsewhere_.insert(item.to, below(placeOf(parentOf(item.to)), item.temporary));
    joined.insert(item.to);
    return true;
}

/// It is looked at once more when all others are done, and may be asked about then.
void Batch::tryAgain(const BatchItem& item, bool cannotBeRenamed)
{
    refused.push_back({item.source, item.from, item.to, cannotBeRenamed});
}

void Batch::moveIn(const BatchItem& item)
{
    FolderCursor& sources = sources_.of(item.source);
    const QByteArray name = nameOf(item.from);
    struct stat now = {};
    const bool isThere = sources.go(parentOf(item.from)) && lookAt(sources.folder(), name, now);
    if (isThere && !isStill(item.mark, sources.folder(), name, now)) {
        work_.fail(item.source, work_.fullSource(item.source, item.from), Trouble::SourceChanged,
                   0);
        return;
    }
    const int folder = isThere ? target_.folder(parentOf(item.to)) : -1;
    if (folder >= 0 && give(item, sources.folder(), name, folder)) {
        done(item);
    } else if (isThere && errno == EXDEV) {
        tryAgain(item, true);
    } else if (folder >= 0 && errno == EEXIST && !item.replaced && !item.isAgain) {
        tryAgain(item, false);
    } else {
        work_.fail(item.source, work_.fullSource(item.source, item.from), Trouble::CannotRename,
                   errno);
    }
}

/// Gives an entry its name. False, with errno set, if it cannot have it.
bool Batch::give(const BatchItem& item, int fromFolder, const QByteArray& name, int folder)
{
    const QByteArray to = nameOf(item.to);
    struct stat now = {};
    if (!item.replaced || !lookAt(folder, to, now))
        return renameToFree(fromFolder, name, folder, to);
    // Something else than what was asked about has taken its place.
    if (!isStill(item.replaced->mark, folder, to, now)) {
        errno = EEXIST;
        return false;
    }
    if (item.replaced->isFolder || S_ISDIR(item.facts.st_mode))
        return putAside(item, fromFolder, name, folder);
    return renameat(fromFolder, name.constData(), folder, to.constData()) == 0;
}

/// A folder and what is none cannot take each other's place in one step.
bool Batch::putAside(const BatchItem& item, int fromFolder, const QByteArray& name, int folder)
{
    const QByteArray to = nameOf(item.to);
    const QByteArray aside = target_.temporaryName();
    if (work_.journal != nullptr) {
        JournalRecord record;
        record.type = JournalRecord::Type::Aside;
        record.to = item.to;
        record.temporary = aside;
        work_.journal->add(record);
        if (!work_.journal->flush())
            work_.loseJournal(errno);
    }
    if (!renameToFree(folder, to, folder, aside))
        return false;
    if (!renameToFree(fromFolder, name, folder, to)) {
        const int error = errno;
        renameToFree(folder, aside, folder, to);
        errno = error;
        return false;
    }
    remainders.push_back({parentOf(item.to), aside});
    return true;
}

void Batch::finishFolder(const BatchItem& item)
{
    if (lost.contains(item.to))
        return;
    // One that was there keeps what it has.
    if (joined.contains(item.to)) {
        ++work_.progress.entriesDone;
        if (item.dropsSource)
            drops_.push_back(item);
        return;
    }
    const int folder = target_.folder(item.to);
    Kept kept = folder < 0 ? Kept{errno, 0} : setAccessList(folder, item.accessList);
    if (folder >= 0)
        kept += setModeAndTimes(folder, item.facts);
    if (!work_.note(kept, item.source, work_.fullTarget(item.to)) || !item.dropsSource)
        return;
    // What it has got now is flushed with it, too, before its source goes.
    noteName(item.to);
    drops_.push_back(item);
}

void Batch::dropAll()
{
    std::vector<BatchItem> drops;
    drops.swap(drops_);
    for (const BatchItem& item : drops)
        drop(item);
}

void Batch::drop(const BatchItem& item)
{
    FolderCursor& sources = sources_.of(item.source);
    const QByteArray name = nameOf(item.from);
    const QByteArray path = work_.fullSource(item.source, item.from);
    struct stat now = {};
    if (!sources.go(parentOf(item.from)) || !lookAt(sources.folder(), name, now)) {
        if (errno != ENOENT)
            work_.fail(item.source, path, Trouble::CannotRemove, errno);
        return;
    }
    if (S_ISDIR(now.st_mode)) {
        if (unlinkat(sources.folder(), name.constData(), AT_REMOVEDIR) == 0)
            return;
        if (errno == ENOTEMPTY && !refused.empty())
            postponed_.push_back(item);
        // What was left out, or failed, is still in it and has been told.
        else if (errno != ENOTEMPTY || !work_.hasLost(item.source))
            work_.fail(item.source, path, Trouble::CannotRemove, errno);
        return;
    }
    if (!isUntouched(item.facts, now, sources.folder()))
        work_.fail(item.source, path, Trouble::SourceChanged, 0);
    else if (unlinkat(sources.folder(), name.constData(), 0) != 0 && errno != ENOENT)
        work_.fail(item.source, path, Trouble::CannotRemove, errno);
}

void Batch::done(const BatchItem& item)
{
    work_.progress.bytesDone += item.bytes;
    ++work_.progress.entriesDone;
    noteName(parentOf(item.to));
    if (item.dropsSource)
        drops_.push_back(item);
}
