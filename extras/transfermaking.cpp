#include "extras/transfer.h"

#include "extras/metadata.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

// New entries under temporary names.

/// Makes the entry that the walk is at. A file may take more steps.
void Transfer::make(BatchItem item)
{
    Level& level = levels_.back();
    makeKnown(level);
    item.workFolder = workPath(level);
    item.temporary = target_.temporaryName();
    if (makeLink(item)) {
        keep(item);
        return;
    }
    const int folder = target_.folder(item.workFolder);
    if (folder < 0)
        refuse(Trouble::CannotMake, errno);
    else if (S_ISDIR(item.facts.st_mode))
        makeFolder(item, folder);
    else if (S_ISREG(item.facts.st_mode))
        startFile(item, folder);
    else if (makeSpecial(item, folder))
        keep(item);
}

/// A crash must not leave temporary entries where nobody looks for them.
void Transfer::makeKnown(Level& level)
{
    if (!level.isKnown && work_.journal != nullptr && !work_.journal->flush())
        work_.loseJournal(errno);
    level.isKnown = true;
}

void Transfer::makeFolder(BatchItem item, int folder)
{
    if (mkdirat(folder, item.temporary.constData(), 0700) != 0) {
        refuse(Trouble::CannotMake, errno);
        return;
    }
    struct stat made = {};
    const FileHandle opened(openat(folder, item.temporary.constData(),
                                   O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened.isOpen() || fstat(opened.get(), &made) != 0) {
        refuse(Trouble::CannotMake, errno);
        unlinkat(folder, item.temporary.constData(), AT_REMOVEDIR);
        return;
    }
    Level level;
    level.to = item.to;
    level.work = below(item.workFolder, item.temporary);
    level.serial = batch_.serial();
    level.isNew = level.isKnown = true;
    level.facts = item.facts;
    // What cannot be opened the walk will tell.
    FolderCursor& sources = sources_.of(item.source);
    Kept kept;
    if (sources.go(item.from)) {
        level.accessList = accessListOf(sources.folder());
        kept = copyOwnerAndAttributes(sources.folder(), opened.get(), item.facts);
    }
    level.keepsSource = !work_.note(kept, item.source, work_.progress.current);
    item.mark = EntryMark::of(made);
    batch_.add(item);
    levels_.push_back(level);
}

/// Gives a file another name if it is in the target by one already. False if it is not.
bool Transfer::makeLink(BatchItem& item)
{
    const auto linked = linkedFor(item.facts);
    if (!linked)
        return false;
    const int folder = target_.folder(item.workFolder);
    const FileHandle into(folder < 0 ? -1 : fcntl(folder, F_DUPFD_CLOEXEC, 0));
    const bool isWaiting = linked->serial == batch_.serial();
    const QByteArray name = isWaiting ? linked->temporary : nameOf(linked->to);
    const int from = target_.folder(isWaiting ? linked->workFolder : parentOf(linked->to));
    struct stat made = {};
    // A file system without such links gets another file.
    if (from < 0 || !into.isOpen() ||
        linkat(from, name.constData(), into.get(), item.temporary.constData(), 0) != 0)
        return false;
    // What was made may never have got that name, or have lost it to another one since.
    if (!lookAt(into.get(), item.temporary, made) || !isThat(linked->made, made, into.get())) {
        unlinkat(into.get(), item.temporary.constData(), 0);
        return false;
    }
    item.mark = EntryMark::of(made);
    return true;
}

std::optional<LinkedFiles::Place> Transfer::linkedFor(const struct stat& info)
{
    if (const LinkedFiles::Place* place = links_.find(info))
        return *place;
    return earlier_ == nullptr || !S_ISREG(info.st_mode) ? std::nullopt : linkedEarlier(info);
}

/// Where an earlier run has made a file with several names, if it is still there.
std::optional<LinkedFiles::Place> Transfer::linkedEarlier(const struct stat& info)
{
    for (const qint64 place : earlier_->linked().value(info.st_ino)) {
        const JournalRecord record = earlier_->at(place);
        struct stat made = {};
        if (record.size == info.st_size && record.modified == nanoseconds(info.st_mtim) &&
            isAt(record, made))
            return LinkedFiles::Place{record.to, {}, {}, 0, EntryMark::of(made)};
    }
    return std::nullopt;
}

/// Links, pipes, sockets and devices.
bool Transfer::makeSpecial(BatchItem& item, int folder)
{
    const char* name = item.temporary.constData();
    bool isMade = false;
    if (S_ISLNK(item.facts.st_mode)) {
        const int from = walk_->folder();
        char text[PATH_MAX];
        const ssize_t length =
            from < 0 ? -1 : readlinkat(from, nameOf(item.from).constData(), text, sizeof text - 1);
        if (length < 0) {
            refuse(Trouble::CannotRead, errno);
            return false;
        }
        text[length] = '\0';
        isMade = symlinkat(text, folder, name) == 0;
    } else {
        isMade =
            mknodat(folder, name, (item.facts.st_mode & S_IFMT) | 0600, item.facts.st_rdev) == 0;
    }
    if (!isMade) {
        refuse(Trouble::CannotMake, errno);
        return false;
    }
    const Kept kept =
        copyMetadata({walk_->folder(), nameOf(item.from)}, {folder, item.temporary}, item.facts);
    struct stat made = {};
    if (!lookAt(folder, item.temporary, made)) {
        refuse(Trouble::CannotMake, errno);
    } else if (keepsEnough(kept)) {
        item.mark = EntryMark::of(made);
        return true;
    }
    unlinkat(folder, name, 0);
    return false;
}

/// Whether a new entry has what it must have for its name. What can be moved only in part is not.
bool Transfer::keepsEnough(const Kept& kept)
{
    if (kept.error != 0 && work_.request.kind == OperationKind::Move) {
        refuse(Trouble::CannotKeep, kept.error);
        return false;
    }
    return work_.note(kept, job_->source, work_.progress.current);
}

void Transfer::startFile(const BatchItem& item, int folder)
{
    const int from = walk_->folder();
    if (from < 0) {
        refuse(Trouble::CannotRead, errno);
        return;
    }
    copied_ = item;
    copy_ = std::make_unique<FileCopy>(nameOf(item.from), item.facts, target_.pace());
    if (copy_->start(from, folder, item.temporary) == FileCopy::Step::Failed) {
        refuse(copy_->trouble(), copy_->error());
        giveUpCopy();
        return;
    }
    stepFile();
}

void Transfer::stepFile()
{
    switch (copy_->step()) {
    case FileCopy::Step::More:
        break;
    case FileCopy::Step::Failed:
        refuse(copy_->trouble(), copy_->error());
        giveUpCopy();
        break;
    case FileCopy::Step::Done:
        if (!keepsEnough(copy_->kept())) {
            giveUpCopy();
            break;
        }
        copied_->facts = copy_->source();
        copied_->mark = EntryMark::of(copy_->made());
        copied_->bytes = copy_->copied();
        copied_->flushed = copy_->flushed();
        copy_.reset();
        keep(*copied_);
        copied_.reset();
        break;
    }
}

/// A new entry is whole: it gets its name with the others of its batch.
void Transfer::keep(BatchItem item)
{
    item.dropsSource = work_.request.kind == OperationKind::Move;
    links_.add(item.facts, {item.to, item.workFolder, item.temporary, batch_.serial(), item.mark});
    batch_.add(std::move(item));
}
