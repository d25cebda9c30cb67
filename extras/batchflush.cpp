#include "extras/batch.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

// What gets onto the medium, before names are given and after.

namespace
{

/// So many files, or folders, are flushed one by one. More are flushed with their whole file
/// system, which is faster for them, but waits for what others have written there.
constexpr qsizetype FewFlushes = 16;
constexpr qint64 HurryMicroseconds = 400 * 1000;

bool isNewFile(const BatchItem& item)
{
    return item.kind == BatchItem::Kind::Put && S_ISREG(item.facts.st_mode);
}

} // namespace

bool Batch::commit()
{
    if (stage_ == Stage::Idle) {
        if (items_.empty() && drops_.empty())
            return true;
        startCommit();
    }
    if (!hasFlushed()) {
        giveUp();
        return stage_ == Stage::Idle;
    }
    if (stage_ == Stage::Together && !endTogether())
        return false;
    if (stage_ == Stage::Each)
        endEach();
    stage_ = Stage::Idle;
    flushing_.reset();
    target_.pace().noteFlush(waitingBytes_, qint64(items_.size()), microsecondsNow() - started_);
    applyAll();
    return true;
}

void Batch::startCommit()
{
    started_ = microsecondsNow();
    hasSettled_ = false;
    joined.clear();
    lost.clear();
    if (std::count_if(items_.begin(), items_.end(), isNewFile) > FewFlushes)
        flushTogether();
    else
        flushEach();
}

void Batch::startStage(Stage stage)
{
    stage_ = stage;
    flushing_.emplace();
    flushed_.clear();
    flushesJournal_ = false;
}

void Batch::flushTogether()
{
    startStage(Stage::Together);
    Journal* journal = work_.journal.get();
    if (journal != nullptr && !journal->write())
        work_.loseJournal(errno);
    // One flush of the file system is for both where it has both.
    else if (journal != nullptr && journal->device() != target_.device()) {
        flushing_->add(sameFile(journal->descriptor()), Flushing::What::Data);
        flushesJournal_ = true;
    }
    flushing_->add(sameFile(target_.cursor().top()), Flushing::What::FileSystem);
    flushing_->start();
}

/// False if each has to be flushed after all.
bool Batch::endTogether()
{
    const bool isSafe = flushing_->error(flushing_->count() - 1) == 0;
    if (flushesJournal_)
        noteJournal();
    else if (isSafe && work_.journal != nullptr)
        work_.journal->setFlushed();
    if (!isSafe) {
        flushEach();
        return false;
    }
    named_.clear();
    hasManyNamed_ = false;
    return true;
}

void Batch::flushEach()
{
    startStage(Stage::Each);
    Journal* journal = work_.journal.get();
    if (journal != nullptr && !journal->write()) {
        work_.loseJournal(errno);
    } else if (journal != nullptr && !journal->isFlushed()) {
        flushing_->add(sameFile(journal->descriptor()), Flushing::What::Data);
        flushesJournal_ = true;
    }
    for (size_t number = 0; number < items_.size(); ++number) {
        const BatchItem& item = items_[number];
        if (!isNewFile(item))
            continue;
        const int folder = target_.folder(item.workFolder);
        FileHandle file(folder < 0 ? -1
                                   : openat(folder, item.temporary.constData(),
                                            O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        // One with the permissions of a source of somebody else's may be closed to its own owner.
        if (!file.isOpen() && errno == EACCES)
            flushing_->add(sameFile(target_.cursor().top()), Flushing::What::FileSystem);
        else
            flushing_->add(std::move(file), Flushing::What::File);
        flushed_.push_back(number);
    }
    if (!drops_.empty())
        addNames();
    flushing_->start();
}

/// Those new files that could not be written get no name.
void Batch::endEach()
{
    if (flushesJournal_)
        noteJournal();
    if (!drops_.empty()) {
        if (const int error = errorOfNames())
            keepSources(error);
        named_.clear();
        hasManyNamed_ = false;
    }
    const size_t first = flushesJournal_ ? 1 : 0;
    for (size_t number = flushed_.size(); number-- > 0;) {
        const int error = flushing_->error(first + number);
        if (error == 0)
            continue;
        const auto item = items_.begin() + ptrdiff_t(flushed_[number]);
        work_.fail(item->source, work_.fullSource(item->source, item->from), Trouble::CannotWrite,
                   error);
        discard(*item);
        items_.erase(item);
    }
}

void Batch::noteJournal()
{
    if (const int error = flushing_->error(0))
        work_.loseJournal(error);
    else if (work_.journal != nullptr)
        work_.journal->setFlushed();
}

void Batch::noteName(const QByteArray& folder)
{
    if (named_.size() < FewFlushes)
        named_.insert(folder);
    else
        hasManyNamed_ = true;
}

void Batch::flushNames()
{
    startStage(Stage::Names);
    addNames();
    flushing_->start();
}

/// The folders with names that were given before.
void Batch::addNames()
{
    bool needsAll = hasManyNamed_;
    for (const QByteArray& path : std::as_const(named_)) {
        const int folder = target_.folder(path);
        // One that has got the permissions of its source may not be read any more.
        if (folder < 0 && errno == EACCES)
            needsAll = true;
        else
            flushing_->add(folder < 0 ? FileHandle() : sameFile(folder), Flushing::What::File);
    }
    if (needsAll)
        flushing_->add(sameFile(target_.cursor().top()), Flushing::What::FileSystem);
}

int Batch::errorOfNames() const
{
    const size_t first = (flushesJournal_ ? 1 : 0) + flushed_.size();
    for (size_t number = first; number < flushing_->count(); ++number) {
        if (const int error = flushing_->error(number))
            return error;
    }
    return 0;
}

/// What has no name on the medium for sure may be there only once.
void Batch::keepSources(int error)
{
    for (const BatchItem& item : drops_)
        work_.fail(item.source, work_.fullSource(item.source, item.from), Trouble::CannotWrite,
                   error);
    drops_.clear();
}

bool Batch::hasFlushed()
{
    return flushing_->isDone(work_.patienceMs);
}

bool Batch::settle()
{
    if (stage_ != Stage::Names) {
        const bool isMore = isCommitting() || !items_.empty() || !drops_.empty();
        // One flush at a time: sources go in a commit of their own.
        if (!commit() || isMore)
            return false;
    }
    if (stage_ == Stage::Idle && !hasSettled_) {
        hasSettled_ = true;
        flushNames();
    }
    if (stage_ == Stage::Names) {
        if (!hasFlushed()) {
            giveUp();
            return stage_ == Stage::Idle;
        }
        if (const int error = errorOfNames())
            keepSources(error);
        stage_ = Stage::Idle;
        flushing_.reset();
        named_.clear();
        hasManyNamed_ = false;
    }
    dropAll();
    if (refused.empty()) {
        drops_.swap(postponed_);
        dropAll();
    }
    return true;
}

void Batch::hurry()
{
    hurries_ = microsecondsNow() + HurryMicroseconds;
}

/// Waits no longer for a flush if there is a hurry.
void Batch::giveUp()
{
    if (!hurries_ || microsecondsNow() < *hurries_)
        return;
    flushing_.reset();
    // Their successors may not be on the medium.
    for (const BatchItem& item : drops_)
        work_.undo(item.source);
    drops_.clear();
    postponed_.clear();
    if (stage_ != Stage::Names)
        giveUpItems();
    named_.clear();
    hasManyNamed_ = false;
    hasSettled_ = true;
    stage_ = Stage::Idle;
}

void Batch::giveUpItems()
{
    QSet<QByteArray> unnamed;
    for (BatchItem& item : items_) {
        work_.undo(item.source);
        item.dropsSource = false;
        const bool isPut = item.kind == BatchItem::Kind::Put;
        if (isPut && S_ISDIR(item.facts.st_mode)) {
            unnamed.insert(item.to);
            remainders.push_back({item.workFolder, item.temporary});
        } else if (isPut) {
            discard(item);
        } else if (item.kind == BatchItem::Kind::FinishFolder && !unnamed.contains(item.to)) {
            finishFolder(item);
        }
    }
    items_.clear();
    pending_.clear();
    waitingBytes_ = flushedBytes_ = 0;
    ++serial_;
}

/// Takes a temporary entry away that will not get its name.
void Batch::discard(const BatchItem& item)
{
    const int folder = target_.folder(item.workFolder);
    if (folder >= 0)
        unlinkat(folder, item.temporary.constData(), 0);
    work_.takeOff(1, item.bytes);
}
