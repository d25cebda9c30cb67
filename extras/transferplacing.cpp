#include "extras/transfer.h"

#include "extras/entryfacts.h"
#include "extras/metadata.h"

#include <cerrno>

// Where an entry goes.

/// Finds a place for the entry that the walk is at, and begins to make it there.
Transfer::Step Transfer::place()
{
    isHeld_ = false;
    if (levels_.back().isLost) {
        passOver();
        return Step::More;
    }
    const QByteArray& from = walk_->path();
    work_.progress.current = work_.fullSource(job_->source, from);
    QByteArray to = levels_.size() == 1 ? job_->to : below(levels_.back().to, nameOf(from));
    if (isRefused(to) || isDoneAlready())
        return Step::More;
    std::optional<InTheWay> replaced;
    switch (look(to, replaced)) {
    case Verdict::Free: {
        BatchItem item = itemFor(isRenamed() ? BatchItem::Kind::MoveIn : BatchItem::Kind::Put, to);
        item.replaced = replaced;
        if (item.kind == BatchItem::Kind::Put)
            make(item);
        else
            batch_.add(item);
        if (item.kind == BatchItem::Kind::MoveIn && S_ISDIR(item.facts.st_mode))
            walk_->skip();
        break;
    }
    case Verdict::Joins:
        join(to);
        break;
    case Verdict::Out:
        break;
    case Verdict::Ask:
        isHeld_ = isAsking_ = true;
        return Step::Ask;
    case Verdict::Later:
        isHeld_ = true;
        break;
    }
    return Step::More;
}

/// What is in a folder that has no place is neither made nor told of one by one.
void Transfer::passOver()
{
    const struct stat& info = walk_->info();
    work_.takeOff(1, S_ISREG(info.st_mode) ? info.st_size : 0);
    if (S_ISDIR(info.st_mode))
        walk_->skip();
}

bool Transfer::isRefused(const QByteArray& to)
{
    const struct stat& info = walk_->info();
    const bool isTop = levels_.size() == 1 && walk_->path() == sources_.name(job_->source);
    if (isTop && !work_.isStillMeant(job_->source, walk_->folder(), info))
        refuse(Trouble::SourceChanged, 0);
    else if (!target_.limits().takesName(nameOf(to)))
        refuse(Trouble::BadName, 0);
    else if (S_ISREG(info.st_mode) && info.st_size > target_.limits().mostFileBytes)
        refuse(Trouble::TooLarge, EFBIG);
    else if (S_ISDIR(info.st_mode) && target_.isBelow(info))
        refuse(Trouble::IntoItself, 0);
    else
        return false;
    return true;
}

/// Whether an earlier run has made the entry. A folder's contents are looked at all the same.
bool Transfer::isDoneAlready()
{
    if (earlier_ == nullptr)
        return false;
    const auto record = earlier_->find(job_->source, walk_->path());
    if (!record || record->type != JournalRecord::Type::Made)
        return false;
    struct stat made = {};
    if (!isAt(*record, made) || (made.st_mode & S_IFMT) != (walk_->info().st_mode & S_IFMT))
        return false;
    // Where numbers do not last, what was to be replaced cannot be told from a successor that is
    // like it: it is replaced once more.
    if (record->replaces && !hasLastingNumbers(target_.cursor().top()))
        return false;
    const bool isMove = work_.request.kind == OperationKind::Move;
    if (isMove && !isUnchanged(record->originMark(), walk_->info())) {
        refuse(Trouble::SourceChanged, 0);
        return true;
    }
    ++work_.progress.entriesDone;
    if (S_ISDIR(made.st_mode)) {
        Level level;
        level.to = level.work = record->to;
        level.isNew = level.isKnown = true;
        level.facts = record->facts();
        FolderCursor& sources = sources_.of(job_->source);
        if (sources.go(walk_->path()))
            level.accessList = accessListOf(sources.folder());
        levels_.push_back(level);
        return true;
    }
    work_.progress.bytesDone += S_ISREG(made.st_mode) ? walk_->info().st_size : 0;
    if (isMove)
        batch_.add(itemFor(BatchItem::Kind::Drop, record->to));
    return true;
}

/// Whether the target has the entry that a record is about.
bool Transfer::isAt(const JournalRecord& record, struct stat& made)
{
    const int folder = target_.folder(parentOf(record.to));
    if (folder < 0 || !lookAt(folder, nameOf(record.to), made))
        return false;
    // What is only renamed may be written to by then.
    if (record.type == JournalRecord::Type::Moved && made.st_ino == record.identity.inode &&
        hasLastingNumbers(folder))
        return (made.st_mode & S_IFMT) == (record.mode & S_IFMT);
    return isThat(record.made(), made, folder);
}

/// What is at the place. After Free it may be another one than before, or what is there gives way.
Transfer::Verdict Transfer::look(QByteArray& to, std::optional<InTheWay>& replaced)
{
    if (batch_.isPending(to)) {
        commit();
        return Verdict::Later;
    }
    const Level& level = levels_.back();
    if (level.isNew && !target_.limits().ignoresCase)
        return Verdict::Free;
    const int folder = target_.folder(workPath(level));
    if (folder < 0) {
        refuse(Trouble::CannotMake, errno);
        return Verdict::Out;
    }
    struct stat there = {};
    if (!lookAt(folder, nameOf(to), there)) {
        if (errno == ENOENT)
            return Verdict::Free;
        refuse(Trouble::CannotMake, errno);
        return Verdict::Out;
    }
    if (EntryIdentity::of(there) == EntryIdentity::of(walk_->info())) {
        refuse(Trouble::SameFile, 0);
        return Verdict::Out;
    }
    if (S_ISDIR(there.st_mode) && S_ISDIR(walk_->info().st_mode))
        return Verdict::Joins;
    return decide(to, folder, there, replaced);
}

Transfer::Verdict Transfer::decide(QByteArray& to, int folder, const struct stat& there,
                                   std::optional<InTheWay>& replaced)
{
    const QByteArray source = work_.progress.current;
    const auto answer = work_.decisions.about(source);
    if (!answer) {
        question_ = {source, work_.fullTarget(to), factsOf(walk_->info()), factsOf(there)};
        return Verdict::Ask;
    }
    if (*answer == Answer::LeaveOut) {
        work_.leaveOut(job_->source);
        work_.takeOff(1, S_ISREG(walk_->info().st_mode) ? walk_->info().st_size : 0);
        if (S_ISDIR(walk_->info().st_mode))
            walk_->skip();
        return Verdict::Out;
    }
    if (*answer == Answer::KeepBoth) {
        const QByteArray parent = parentOf(to);
        to = below(parent, freeNameIn(folder, nameOf(to), target_.limits().mostNameUnits,
                                      [&](const QByteArray& name) {
                                          return batch_.isPending(below(parent, name));
                                      }));
        return Verdict::Free;
    }
    // What lies there is what the target itself lies in: nothing can take its place.
    if (S_ISDIR(there.st_mode) && target_.isBelow(there)) {
        refuse(Trouble::IntoItself, 0);
        return Verdict::Out;
    }
    replaced = InTheWay{EntryMark::of(there), S_ISDIR(there.st_mode)};
    return Verdict::Free;
}

/// The contents of the folder that the walk is at go into one that is there.
void Transfer::join(const QByteArray& to)
{
    Level level;
    level.to = to;
    level.work = to;
    level.facts = walk_->info();
    levels_.push_back(level);
    if (work_.journal == nullptr)
        return;
    JournalRecord record;
    record.type = JournalRecord::Type::Joined;
    record.source = job_->source;
    record.from = walk_->path();
    record.to = to;
    record.setFacts(walk_->info());
    work_.journal->add(record);
}

void Transfer::refuse(Trouble trouble, int error)
{
    const struct stat& info = walk_->info();
    work_.fail(job_->source, work_.fullSource(job_->source, walk_->path()), trouble, error);
    work_.takeOff(1, S_ISREG(info.st_mode) ? info.st_size : 0);
    if (S_ISDIR(info.st_mode))
        walk_->skip();
}

bool Transfer::isRenamed() const
{
    return work_.request.kind == OperationKind::Move && !job_->cannotBeRenamed &&
           walk_->info().st_dev == target_.device();
}

BatchItem Transfer::itemFor(BatchItem::Kind kind, const QByteArray& to) const
{
    BatchItem item;
    item.kind = kind;
    item.source = job_->source;
    item.from = walk_->path();
    item.to = to;
    item.facts = walk_->info();
    item.mark = EntryMark::of(item.facts);
    item.isAgain = job_->isAgain;
    return item;
}

/// Where a folder is now.
QByteArray Transfer::workPath(const Level& level) const
{
    return level.serial == batch_.serial() ? level.work : level.to;
}
