#include "extras/work.h"

#include <algorithm>
#include <cerrno>

Work::Work(const OperationRequest& wanted) : request(wanted)
{
    outcomes.fill(SourceOutcome::NotReached, request.sources.size());
    for (int source = 0; source < int(request.sources.size()); ++source) {
        if (!isUsable(source))
            fail(source, request.sources[source], Trouble::Missing, EINVAL);
    }
}

bool Work::isUsable(int source) const
{
    const QByteArray& path = request.sources[source];
    const QByteArray name = nameOf(path);
    return path.startsWith('/') && !name.isEmpty() && name != "." && name != "..";
}

bool Work::isStillMeant(int source, int folder, const struct stat& info) const
{
    const auto mark = marks.constFind(source);
    return mark == marks.constEnd() ||
           isStill(*mark, folder, nameOf(request.sources[source]), info);
}

QByteArray Work::fullSource(int source, const QByteArray& from) const
{
    const QByteArray& path = request.sources[source];
    return path.left(path.lastIndexOf('/') + 1) + from;
}

QByteArray Work::fullTarget(const QByteArray& to) const
{
    return to.isEmpty() ? request.target : below(request.target, to);
}

void Work::fail(int source, const QByteArray& path, Trouble trouble, int error)
{
    failures.add({path, trouble, error});
    outcomes[source] = SourceOutcome::Failed;
}

bool Work::note(const Kept& kept, int source, const QByteArray& path)
{
    if (kept.isAll())
        return true;
    lacks |= kept.lacks;
    notAllKept.insert(source);
    if (outcomes[source] == SourceOutcome::Done)
        outcomes[source] = SourceOutcome::NotAllKept;
    if (kept.error == 0)
        return true;
    // Of a copy nothing is missing yet: its source is still there.
    if (request.kind == OperationKind::Move)
        fail(source, path, Trouble::CannotKeep, kept.error);
    else
        failures.add({path, Trouble::CannotKeep, kept.error});
    return request.kind != OperationKind::Move;
}

void Work::end(int source)
{
    if (outcomes[source] == SourceOutcome::NotReached)
        outcomes[source] =
            notAllKept.contains(source) ? SourceOutcome::NotAllKept : SourceOutcome::Done;
}

void Work::leaveOut(int source)
{
    if (outcomes[source] != SourceOutcome::Failed)
        outcomes[source] = SourceOutcome::LeftOut;
}

bool Work::hasLost(int source) const
{
    return outcomes[source] == SourceOutcome::Failed || outcomes[source] == SourceOutcome::LeftOut;
}

void Work::undo(int source)
{
    if (outcomes[source] == SourceOutcome::Done || outcomes[source] == SourceOutcome::NotAllKept)
        outcomes[source] = SourceOutcome::NotReached;
}

void Work::takeOff(qint64 entries, qint64 bytes)
{
    progress.entriesTotal = std::max(progress.entriesTotal - entries, progress.entriesDone);
    progress.bytesTotal = std::max(progress.bytesTotal - bytes, progress.bytesDone);
}

void Work::loseJournal(int error)
{
    if (journal != nullptr)
        journal->remove();
    journal.reset();
    journalError = error;
}

FolderCursor& SourceFolders::of(int source)
{
    const QByteArray& path = request_.sources[source];
    const QByteArray parent = path.left(path.lastIndexOf('/') + 1);
    if (cursor_ == nullptr || parent != parent_ || cursor_->top() < 0) {
        cursor_ = std::make_unique<FolderCursor>(FolderCursor::openTop(parent));
        parent_ = parent;
    }
    return *cursor_;
}

QByteArray SourceFolders::name(int source) const
{
    return nameOf(request_.sources[source]);
}
