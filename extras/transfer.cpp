#include "extras/transfer.h"

#include <cerrno>
#include <unistd.h>

// What is done in which order.

Transfer::Transfer(Work& work, JournalIndex* earlier)
    : work_(work),
      earlier_(earlier),
      sources_(work.request),
      target_(work.request.target, work.temporaryPrefix),
      batch_(work, target_)
{
    links_.expect(std::move(work.linked));
    for (int source = 0; source < int(work.request.sources.size()); ++source) {
        if (!work.isUsable(source))
            continue;
        const QByteArray name = sources_.name(source);
        const QByteArray& newName = work.request.newName;
        jobs_.push_back({source, name, newName.isEmpty() ? name : newName, false, false});
    }
}

Transfer::~Transfer()
{
    giveUpCopy();
}

Transfer::Step Transfer::step()
{
    if (!prepare())
        return Step::Done;
    if (isCancelled_)
        return end();
    if (isAsking_)
        return Step::Ask;
    if (copy_ != nullptr) {
        stepFile();
        return Step::More;
    }
    if (batch_.isCommitting() || (!isHeld_ && batch_.isFull())) {
        commit();
        return Step::More;
    }
    if (isHeld_)
        return place();
    if (walk_ == nullptr && !nextJob())
        return end();
    return nextEntry();
}

/// False if there is no target to work in.
bool Transfer::prepare()
{
    if (target_.isOpen())
        return true;
    for (int source = 0; source < int(work_.request.sources.size()); ++source)
        work_.fail(source, work_.request.target, Trouble::TargetUnusable, target_.error());
    return false;
}

/// Goes on with giving names. True when they are given.
bool Transfer::commit()
{
    if (!batch_.commit())
        return false;
    for (Level& level : levels_) {
        if (batch_.joined.contains(level.to))
            level.isNew = false;
        level.isLost = level.isLost || batch_.lost.contains(level.to);
    }
    return true;
}

bool Transfer::nextJob()
{
    if (jobs_.empty())
        return false;
    job_ = jobs_.front();
    jobs_.pop_front();
    Level base;
    base.to = base.work = parentOf(job_->to);
    base.isKnown = true;
    levels_.clear();
    levels_.push_back(base);
    walk_ = std::make_unique<TreeWalk>(sources_.of(job_->source), job_->from);
    return true;
}

Transfer::Step Transfer::nextEntry()
{
    switch (walk_->next()) {
    case TreeWalk::Step::Entry:
    case TreeWalk::Step::Enter:
        isHeld_ = true;
        return place();
    case TreeWalk::Step::Leave:
        leave();
        break;
    case TreeWalk::Step::Failed:
        walkFailed();
        break;
    case TreeWalk::Step::Ended:
        jobEnded();
        break;
    }
    return Step::More;
}

void Transfer::walkFailed()
{
    const bool isTop = walk_->path() == job_->from && levels_.size() == 1;
    const int error = walk_->error();
    // What an earlier run has moved is not there any more.
    if (isTop && error == ENOENT && earlier_ != nullptr) {
        const auto record = earlier_->find(job_->source, job_->from);
        struct stat made = {};
        if (record && (record->type == JournalRecord::Type::Joined || isAt(*record, made))) {
            ++work_.progress.entriesDone;
            return;
        }
    }
    work_.fail(job_->source, work_.fullSource(job_->source, walk_->path()),
               isTop && error == ENOENT ? Trouble::Missing : Trouble::CannotRead, error);
    work_.takeOff(1, 0);
}

void Transfer::jobEnded()
{
    walk_.reset();
    work_.end(job_->source);
}

void Transfer::leave()
{
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.isLost)
        return;
    const bool isMove = work_.request.kind == OperationKind::Move;
    BatchItem item =
        itemFor(level.isNew ? BatchItem::Kind::FinishFolder : BatchItem::Kind::Drop, level.to);
    item.facts = level.facts;
    item.accessList = level.accessList;
    item.dropsSource = isMove && !level.keepsSource;
    if (level.isNew || isMove)
        batch_.add(item);
    if (!level.isNew)
        ++work_.progress.entriesDone;
}

/// What is in the folders on the way stays, so they get what they shall have; no source goes.
void Transfer::leaveAll()
{
    while (levels_.size() > 1) {
        if (levels_.back().isNew && !levels_.back().isLost) {
            BatchItem item = itemFor(BatchItem::Kind::FinishFolder, levels_.back().to);
            item.facts = levels_.back().facts;
            item.accessList = levels_.back().accessList;
            batch_.add(item);
        }
        levels_.pop_back();
    }
}

void Transfer::cancel(bool isForGood)
{
    isCancelled_ = true;
    giveUpCopy();
    // A folder that more is to come into must stay open for that.
    if (walk_ != nullptr && isForGood)
        leaveAll();
    // What is for good may take its time; nobody waits for it.
    if (!isForGood)
        batch_.hurry();
    walk_.reset();
    jobs_.clear();
    isHeld_ = false;
    isAsking_ = false;
}

void Transfer::giveUpCopy()
{
    if (copy_ == nullptr)
        return;
    const bool hasMade = copy_->hasMade();
    copy_.reset();
    const int folder = hasMade ? target_.folder(copied_->workFolder) : -1;
    if (folder >= 0)
        unlinkat(folder, copied_->temporary.constData(), 0);
    copied_.reset();
}

Transfer::Step Transfer::end()
{
    if (!batch_.settle())
        return Step::More;
    takeRefused();
    if (!jobs_.empty())
        return Step::More;
    return removeRemainders() ? Step::More : Step::Done;
}

void Transfer::takeRefused()
{
    for (; !batch_.refused.empty(); batch_.refused.pop_front()) {
        const Refused& one = batch_.refused.front();
        work_.undo(one.source);
        if (!isCancelled_)
            jobs_.push_back(
                {one.source, one.from, one.to, one.cannotBeRenamed, !one.cannotBeRenamed});
    }
}

/// Removes one entry of what replaced ones have left. False when there is nothing more.
bool Transfer::removeRemainders()
{
    if (removal_ == nullptr) {
        if (batch_.remainders.empty())
            return false;
        const Remainder one = batch_.remainders.front();
        batch_.remainders.pop_front();
        removal_ = std::make_unique<Removal>(
            target_.cursor(), below(one.folder, one.name),
            [this](const QByteArray& path, int error) {
                if (error != ENOENT)
                    work_.failures.add({work_.fullTarget(path), Trouble::CannotRemove, error});
            });
    }
    if (!removal_->step())
        removal_.reset();
    return true;
}

qint64 Transfer::flushedBytes() const
{
    return batch_.flushedBytes() + (copy_ != nullptr ? copy_->flushed() : 0);
}
