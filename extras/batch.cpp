#include "extras/batch.h"

#include "extras/metadata.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace
{

/// So many files, or folders, are flushed one by one. More are flushed with their whole file
/// system, which is faster for them, but waits for what others have written there.
constexpr qsizetype FewFlushes = 16;

bool isNewFile(const BatchItem& item)
{
    return item.kind == BatchItem::Kind::Put && S_ISREG(item.facts.st_mode);
}

/// Whether an entry is what it was when it was copied.
bool isUntouched(const struct stat& copied, const struct stat& now)
{
    const bool isSame = now.st_size == copied.st_size &&
                        (now.st_mode & S_IFMT) == (copied.st_mode & S_IFMT) &&
                        EntryIdentity::of(now) == EntryIdentity::of(copied) &&
                        nanoseconds(now.st_mtim) == nanoseconds(copied.st_mtim);
    // Each other name of it that went has changed this time, and a journal does not know it.
    const bool knowsChange = copied.st_nlink == 1 && nanoseconds(copied.st_ctim) != 0;
    return isSame && (!knowsChange || nanoseconds(now.st_ctim) == nanoseconds(copied.st_ctim));
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
    record.identity = item.identity;
    record.replaces = item.replaced.has_value();
    record.setFacts(item.facts);
    work_.journal->add(record);
}

void Batch::commit()
{
    if (items_.empty() && drops_.empty())
        return;
    const qint64 started = microsecondsNow();
    flush();
    target_.pace().noteFlush(waitingBytes_, qint64(items_.size()), microsecondsNow() - started);
    dropAll();
    std::vector<BatchItem> items;
    items.swap(items_);
    for (const BatchItem& item : items)
        apply(item);
    pending_.clear();
    waitingBytes_ = flushedBytes_ = 0;
    ++serial_;
}

void Batch::settle()
{
    commit();
    if (!flushNames() && !drops_.empty())
        keepSources();
    dropAll();
    if (refused.empty()) {
        drops_.swap(postponed_);
        dropAll();
    }
}

void Batch::flush()
{
    const bool hasFiles = std::any_of(items_.begin(), items_.end(), isNewFile);
    const bool isMany = std::count_if(items_.begin(), items_.end(), isNewFile) > FewFlushes;
    bool isSafe = true;
    if (work_.journal != nullptr) {
        // One flush of the file system is for both where it has both.
        const bool together = isMany && work_.journal->device() == target_.device();
        isSafe = together ? work_.journal->write() : work_.journal->flush();
    }
    if (!isSafe)
        work_.loseJournal(errno);
    if (isMany && target_.flush()) {
        named_.clear();
        hasManyNamed_ = false;
        return;
    }
    if (hasFiles)
        flushEach();
    if (!drops_.empty() && !flushNames())
        keepSources();
}

/// The names that were given before get onto the medium.
bool Batch::flushNames()
{
    bool isSafe = true;
    if (hasManyNamed_)
        isSafe = target_.flush();
    for (const QByteArray& path : std::as_const(named_)) {
        const int folder = target_.folder(path);
        isSafe = isSafe && folder >= 0 && (fsync(folder) == 0 || errno == EINVAL);
    }
    named_.clear();
    hasManyNamed_ = false;
    return isSafe;
}

/// What has no name on the medium for sure may be there only once.
void Batch::keepSources()
{
    const int error = errno;
    for (const BatchItem& item : drops_)
        work_.fail(item.source, work_.fullSource(item.source, item.from), Trouble::CannotWrite,
                   error);
    drops_.clear();
}

/// Flushes the new files one by one; those that cannot be written get no name.
void Batch::flushEach()
{
    for (auto item = items_.begin(); item != items_.end();) {
        bool isSafe = true;
        if (isNewFile(*item)) {
            const int folder = target_.folder(item->workFolder);
            const FileHandle file(folder < 0 ? -1
                                             : openat(folder, item->temporary.constData(),
                                                      O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
            isSafe = file.isOpen() && fsync(file.get()) == 0;
        }
        if (isSafe) {
            ++item;
            continue;
        }
        work_.fail(item->source, work_.fullSource(item->source, item->from), Trouble::CannotWrite,
                   errno);
        discard(*item);
        item = items_.erase(item);
    }
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
    // The folders that it is in have got their names before it.
    const int folder = target_.folder(parentOf(item.to));
    if (folder >= 0 && give(item, folder, item.temporary, folder)) {
        done(item);
        return;
    }
    work_.fail(item.source, work_.fullSource(item.source, item.from), Trouble::CannotRename, errno);
    work_.takeOff(1, item.bytes);
    remainders.push_back({parentOf(item.to), item.temporary});
}

void Batch::moveIn(const BatchItem& item)
{
    FolderCursor& sources = sources_.of(item.source);
    const QByteArray name = nameOf(item.from);
    struct stat now = {};
    const bool isThere = sources.go(parentOf(item.from)) && lookAt(sources.folder(), name, now);
    if (isThere && EntryIdentity::of(now) != item.identity) {
        work_.fail(item.source, work_.fullSource(item.source, item.from), Trouble::SourceChanged,
                   0);
        return;
    }
    const int folder = isThere ? target_.folder(parentOf(item.to)) : -1;
    if (folder >= 0 && give(item, sources.folder(), name, folder)) {
        done(item);
    } else if (isThere && errno == EXDEV) {
        refused.push_back({item.source, item.from, item.to});
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
    if (EntryIdentity::of(now) != item.replaced->identity) {
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
    const int folder = target_.folder(item.to);
    const int error = folder < 0 ? errno : setModeAndTimes(folder, item.facts);
    if (error != 0)
        work_.fail(item.source, work_.fullTarget(item.to), Trouble::CannotKeep, error);
    else if (item.dropsSource)
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
    if (!isUntouched(item.facts, now))
        work_.fail(item.source, path, Trouble::SourceChanged, 0);
    else if (unlinkat(sources.folder(), name.constData(), 0) != 0 && errno != ENOENT)
        work_.fail(item.source, path, Trouble::CannotRemove, errno);
}

void Batch::done(const BatchItem& item)
{
    work_.progress.bytesDone += item.bytes;
    ++work_.progress.entriesDone;
    if (named_.size() < FewFlushes)
        named_.insert(parentOf(item.to));
    else
        hasManyNamed_ = true;
    if (item.dropsSource)
        drops_.push_back(item);
}

/// Takes a temporary entry away that will not get its name.
void Batch::discard(const BatchItem& item)
{
    const int folder = target_.folder(item.workFolder);
    if (folder >= 0)
        unlinkat(folder, item.temporary.constData(), 0);
    work_.takeOff(1, item.bytes);
}
