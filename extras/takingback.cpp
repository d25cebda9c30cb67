#include "extras/takingback.h"

#include "extras/leftovers.h"
#include "extras/metadata.h"
#include "extras/treewalk.h"

#include <QSet>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

TakingBack::TakingBack(Work& work, JournalIndex& earlier)
    : work_(work),
      earlier_(earlier),
      sources_(work.request),
      target_(work.request.target, work.temporaryPrefix),
      next_(earlier.places().size())
{
    work_.progress.entriesTotal = qint64(next_);
}

bool TakingBack::step()
{
    if (isCancelled_) {
        abandonReturn();
        return false;
    }
    if (!hasBegun_) {
        hasBegun_ = true;
        if (target_.isOpen() && !clearLeftovers(earlier_, target_, work_.temporaryPrefix))
            work_.failures.add({work_.request.target, Trouble::CannotRemove, errno});
        return true;
    }
    if (copy_ != nullptr) {
        stepCopy();
        return true;
    }
    if (returning_) {
        stepReturn();
        return true;
    }
    if (next_ == 0)
        return !isFlushed();
    undo(earlier_.at(earlier_.places()[--next_]));
    ++work_.progress.entriesDone;
    return true;
}

/// Whether all that was done is on the medium.
bool TakingBack::isFlushed()
{
    if (!flushing_) {
        flushing_.emplace();
        QSet<quint64> devices;
        const auto add = [this, &devices](int top) {
            struct stat info = {};
            if (top < 0 || fstat(top, &info) != 0 || devices.contains(info.st_dev))
                return;
            devices.insert(info.st_dev);
            flushing_->add(sameFile(top), Flushing::What::FileSystem);
        };
        add(target_.cursor().top());
        for (int source = 0; source < int(work_.request.sources.size()); ++source)
            add(work_.isUsable(source) ? sources_.of(source).top() : -1);
        flushing_->start();
    }
    return flushing_->isDone(work_.patienceMs);
}

void TakingBack::undo(const JournalRecord& record)
{
    work_.progress.current = work_.fullTarget(record.to);
    const bool isMove = work_.request.kind == OperationKind::Move;
    if (record.type == JournalRecord::Type::Joined) {
        if (isMove)
            undoFolder(record);
        return;
    }
    noteReturned(record);
    struct stat made = {};
    const int folder = target_.folder(parentOf(record.to));
    if (folder < 0 || !lookAt(folder, nameOf(record.to), made)) {
        tellGone(record, errno);
        return;
    }
    if (!isOurs(record, made, folder)) {
        tellOther(record);
        return;
    }
    if (record.replaces)
        fail(record, Trouble::Replaced, 0);
    if (record.type == JournalRecord::Type::Moved)
        moveBack(record);
    else if (S_ISDIR(record.mode))
        undoFolder(record);
    else
        undoMade(record, made);
}

bool TakingBack::isOurs(const JournalRecord& record, const struct stat& made, int folder)
{
    // What has only been renamed goes back whatever was written to it.
    if (record.type == JournalRecord::Type::Moved && made.st_ino == record.identity.inode &&
        hasLastingNumbers(folder))
        return (made.st_mode & S_IFMT) == (record.mode & S_IFMT);
    return isThat(record.made(), made, folder);
}

/// There is nothing to undo: it never got its name, or somebody has taken it away since. Of what
/// was moved that is told if it is not in its old place, either.
void TakingBack::tellGone(const JournalRecord& record, int error)
{
    const bool isMove = work_.request.kind == OperationKind::Move;
    if (error != ENOENT && error != ENOTDIR)
        fail(record, Trouble::CannotRead, error);
    else if (isMove && originOf(record) == Origin::Nothing)
        fail(record, Trouble::Missing, ENOENT);
}

/// What has the name is another one, or has been changed, and stays.
void TakingBack::tellOther(const JournalRecord& record)
{
    const bool isMove = work_.request.kind == OperationKind::Move;
    // What was to be replaced is still there: nothing has happened.
    const bool mayBeFromBefore = record.replaces || record.type == JournalRecord::Type::Moved;
    if (!mayBeFromBefore || (isMove && originOf(record) == Origin::Nothing))
        fail(record, Trouble::ChangedSince, 0);
}

/// Of a file with several names that have gone all come back to one file: to the one that still has
/// a name, or has got it back already.
void TakingBack::noteReturned(const JournalRecord& record)
{
    if (work_.request.kind == OperationKind::Move && record.links > 1 && S_ISREG(record.mode) &&
        originOf(record) == Origin::Itself)
        back_.insert(record.identity.inode, {record.source, record.from});
}

/// A name that one of the names of a file can be linked to when it comes back.
std::optional<TakingBack::Name> TakingBack::otherName(const JournalRecord& record)
{
    if (!S_ISREG(record.mode) || record.links < 2)
        return std::nullopt;
    const auto known = back_.constFind(record.identity.inode);
    if (known != back_.constEnd())
        return *known;
    if (!stayed_)
        findStayed();
    const auto stayed = stayed_->constFind(record.origin.inode);
    struct stat now = {};
    // Another file may have got its number meanwhile.
    if (stayed == stayed_->constEnd() || !sources_.of(stayed->source).go(parentOf(stayed->from)) ||
        !lookAt(sources_.of(stayed->source).folder(), nameOf(stayed->from), now) ||
        !isThat(record.originMark(), now, sources_.of(stayed->source).folder()))
        return std::nullopt;
    return *stayed;
}

/// Looks for names that the operation had not come to when it was cut short.
void TakingBack::findStayed()
{
    stayed_.emplace();
    for (int source = 0; source < int(work_.request.sources.size()); ++source) {
        if (!work_.isUsable(source))
            continue;
        TreeWalk walk(sources_.of(source), sources_.name(source));
        for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::Ended; step = walk.next()) {
            const quint64 number = walk.info().st_ino;
            if (step == TreeWalk::Step::Entry && earlier_.linked().contains(number))
                stayed_->insert(number, {source, walk.path()});
        }
    }
}

/// Gives a file one of its names back that has another one there.
bool TakingBack::linkBack(const JournalRecord& record, int into, const QByteArray& temporary)
{
    const FileHandle to = sameFile(into);
    const auto other = otherName(record);
    if (!other)
        return false;
    FolderCursor& sources = sources_.of(other->source);
    return sources.go(parentOf(other->from)) &&
           linkat(sources.folder(), nameOf(other->from).constData(), to.get(),
                  temporary.constData(), 0) == 0;
}

void TakingBack::undoMade(const JournalRecord& record, const struct stat& made)
{
    const bool isMove = work_.request.kind == OperationKind::Move;
    const Origin origin = originOf(record);
    if (isMove && origin == Origin::Nothing)
        copyBack(record, made);
    // Another one has the name that it would get: it stays where it is.
    else if (isMove && origin == Origin::Another)
        fail(record, Trouble::CannotRename, EEXIST);
    // Without it there would be nothing of that name, and the other one does not come back.
    else if (record.replaces)
        return;
    else if (origin == Origin::Itself)
        unmake(record);
    // It may be the only one there is by now.
    else
        work_.fail(record.source, work_.fullSource(record.source, record.from),
                   origin == Origin::Nothing ? Trouble::Missing : Trouble::SourceChanged, 0);
}

/// A folder comes after all that was in it.
void TakingBack::undoFolder(const JournalRecord& record)
{
    const bool isMove = work_.request.kind == OperationKind::Move;
    const int parent = isMove ? sourceFolder(record) : -1;
    if (parent >= 0) {
        const QByteArray name = nameOf(record.from);
        const bool isNew = mkdirat(parent, name.constData(), 0700) == 0;
        const FileHandle source(
            openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        const bool hasTarget = target_.cursor().go(record.to);
        const struct stat facts = record.facts();
        Kept kept;
        if (isNew && source.isOpen() && hasTarget) {
            kept += copyOwnerAndAttributes(target_.cursor().folder(), source.get(), facts);
            kept += setAccessList(source.get(), accessListOf(target_.cursor().folder()));
        }
        if (source.isOpen())
            kept += setModeAndTimes(source.get(), facts);
        // What is missing here is still there.
        if (!hasKept(record, kept))
            return;
    }
    if (record.type == JournalRecord::Type::Made)
        unmake(record);
}

void TakingBack::moveBack(const JournalRecord& record)
{
    const int source = sourceFolder(record);
    const int folder = target_.folder(parentOf(record.to));
    if (source < 0 || folder < 0 ||
        !renameToFree(folder, nameOf(record.to), source, nameOf(record.from)))
        fail(record, Trouble::CannotRename, errno);
}

void TakingBack::copyBack(const JournalRecord& record, const struct stat& made)
{
    const int into = sourceFolder(record);
    const QByteArray temporary = work_.temporaryPrefix + 'b' + QByteArray::number(++count_, 36);
    if (into >= 0 && linkBack(record, into, temporary)) {
        placeBack(record, temporary);
        return;
    }
    const int back = into < 0 ? -1 : sourceFolder(record);
    const int folder = back < 0 ? -1 : target_.folder(parentOf(record.to));
    if (folder < 0) {
        fail(record, Trouble::CannotMake, errno);
        return;
    }
    if (S_ISREG(made.st_mode)) {
        returning_ = Return{record, temporary, false};
        copy_ = std::make_unique<FileCopy>(nameOf(record.to), made, target_.pace());
        if (copy_->start(folder, back, temporary) == FileCopy::Step::Failed) {
            fail(record, copy_->trouble(), copy_->error());
            abandonReturn();
        }
    } else if (remakeSpecial(record, back, temporary)) {
        placeBack(record, temporary);
    }
}

bool TakingBack::remakeSpecial(const JournalRecord& record, int folder, const QByteArray& temporary)
{
    const int from = target_.folder(parentOf(record.to));
    struct stat info = {};
    bool isMade = from >= 0 && lookAt(from, nameOf(record.to), info);
    if (isMade && S_ISLNK(info.st_mode)) {
        char text[PATH_MAX];
        const ssize_t length =
            readlinkat(from, nameOf(record.to).constData(), text, sizeof text - 1);
        text[length < 0 ? 0 : length] = '\0';
        isMade = length >= 0 && symlinkat(text, folder, temporary.constData()) == 0;
    } else if (isMade) {
        isMade = mknodat(folder, temporary.constData(), (info.st_mode & S_IFMT) | 0600,
                         info.st_rdev) == 0;
    }
    if (!isMade) {
        fail(record, Trouble::CannotMake, errno);
        return false;
    }
    if (hasKept(record, copyMetadata({from, nameOf(record.to)}, {folder, temporary}, info)))
        return true;
    unlinkat(folder, temporary.constData(), 0);
    return false;
}

/// Whether what has come back is all there was. What its old place lacks it did not have there.
bool TakingBack::hasKept(const JournalRecord& record, const Kept& kept)
{
    return work_.note({kept.error, 0}, record.source, work_.fullTarget(record.to));
}

void TakingBack::stepCopy()
{
    switch (copy_->step()) {
    case FileCopy::Step::More:
        break;
    case FileCopy::Step::Failed:
        fail(returning_->record, copy_->trouble(), copy_->error());
        abandonReturn();
        break;
    case FileCopy::Step::Done:
        if (!hasKept(returning_->record, copy_->kept())) {
            abandonReturn();
            break;
        }
        copy_.reset();
        placeBack(JournalRecord(returning_->record), QByteArray(returning_->temporary));
        break;
    }
}

/// What is whole in its old place under a temporary name gets its old name when it is on the
/// medium, and its copy goes when that is there, too.
void TakingBack::placeBack(const JournalRecord& record, const QByteArray& temporary)
{
    returning_ = Return{record, temporary, false};
    const int folder = sourceFolder(record);
    FileHandle file(folder < 0 || !S_ISREG(record.mode)
                        ? -1
                        : openat(folder, temporary.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    returned_.emplace();
    // What cannot be opened is flushed with all others.
    if (file.isOpen())
        returned_->add(std::move(file), Flushing::What::File);
    else
        returned_->add(folder < 0 ? FileHandle() : sameFile(folder), Flushing::What::FileSystem);
    returned_->start();
}

void TakingBack::stepReturn()
{
    if (!returned_->isDone(work_.patienceMs))
        return;
    const int error = returned_->error(0);
    if (error != 0) {
        fail(returning_->record, Trouble::CannotWrite, error);
        abandonReturn();
    } else if (!returning_->hasName) {
        giveNameBack();
    } else {
        const JournalRecord record = returning_->record;
        returned_.reset();
        returning_.reset();
        unmake(record);
    }
}

void TakingBack::giveNameBack()
{
    const JournalRecord& record = returning_->record;
    const int folder = sourceFolder(record);
    if (folder < 0 || !renameToFree(folder, returning_->temporary, folder, nameOf(record.from))) {
        fail(record, Trouble::CannotRename, errno);
        abandonReturn();
        return;
    }
    if (record.links > 1 && S_ISREG(record.mode))
        back_.insert(record.identity.inode, {record.source, record.from});
    returning_->hasName = true;
    returned_.emplace();
    returned_->add(sameFile(folder), Flushing::What::File);
    returned_->start();
}

/// What is on its way back stays where it is; what has its old name already keeps that, too.
void TakingBack::abandonReturn()
{
    returned_.reset();
    const bool hasMade = copy_ != nullptr ? copy_->hasMade() : returning_ && !returning_->hasName;
    copy_.reset();
    const int folder = hasMade ? sourceFolder(returning_->record) : -1;
    if (folder >= 0)
        unlinkat(folder, returning_->temporary.constData(), 0);
    returning_.reset();
}

void TakingBack::unmake(const JournalRecord& record)
{
    const int folder = target_.folder(parentOf(record.to));
    const QByteArray name = nameOf(record.to);
    const int flags = S_ISDIR(record.mode) ? AT_REMOVEDIR : 0;
    bool isGone = folder >= 0 && unlinkat(folder, name.constData(), flags) == 0;
    // A folder that could be written when this was made in it has got what its source had.
    if (!isGone && folder >= 0 && errno == EACCES)
        isGone = fchmod(folder, 0700) == 0 && unlinkat(folder, name.constData(), flags) == 0;
    if (!isGone)
        fail(record, Trouble::CannotRemove, errno);
}

/// The open folder that a source lay in, made again if it is gone; -1 with errno set.
int TakingBack::sourceFolder(const JournalRecord& record)
{
    FolderCursor& sources = sources_.of(record.source);
    const QByteArray parent = parentOf(record.from);
    if (sources.go(parent))
        return sources.folder();
    // Its own record, which comes later, gives it what it had.
    for (qsizetype end = parent.indexOf('/'); sources.top() >= 0;
         end = parent.indexOf('/', end + 1)) {
        const QByteArray path = end < 0 ? parent : parent.left(end);
        if (!sources.go(path) && (!sources.go(parentOf(path)) ||
                                  mkdirat(sources.folder(), nameOf(path).constData(), 0700) != 0))
            return -1;
        if (end < 0)
            break;
    }
    return sources.go(parent) ? sources.folder() : -1;
}

/// What has come back has another number than it had.
TakingBack::Origin TakingBack::originOf(const JournalRecord& record)
{
    FolderCursor& sources = sources_.of(record.source);
    struct stat info = {};
    if (!sources.go(parentOf(record.from)) || !lookAt(sources.folder(), nameOf(record.from), info))
        return errno == ENOENT ? Origin::Nothing : Origin::Another;
    return isUnchanged(record.originMark(), info) ? Origin::Itself : Origin::Another;
}

void TakingBack::fail(const JournalRecord& record, Trouble trouble, int error)
{
    work_.fail(record.source, work_.fullTarget(record.to), trouble, error);
}
