#include "extras/surveyor.h"

#include "extras/entryfacts.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

Surveyor::Surveyor(const Work& work) : work_(work), sources_(work.request) {}

bool Surveyor::step()
{
    if (!hasBegun_)
        begin();
    if (walk_ == nullptr && !nextSource()) {
        end();
        return false;
    }
    switch (walk_->next()) {
    case TreeWalk::Step::Entry:
    case TreeWalk::Step::Enter:
        see();
        break;
    case TreeWalk::Step::Leave:
        levels_.pop_back();
        break;
    case TreeWalk::Step::Failed:
        walkFailed();
        break;
    case TreeWalk::Step::Ended:
        walk_.reset();
        break;
    }
    return true;
}

void Surveyor::begin()
{
    hasBegun_ = true;
    for (int source = 0; source < int(work_.request.sources.size()); ++source) {
        if (!work_.isUsable(source))
            result_.troubles.add({work_.request.sources[source], Trouble::Missing, EINVAL});
    }
    levels_.push_back({});
    if (deletes())
        return;
    target_ = std::make_unique<TargetFolder>(work_.request.target, QByteArray());
    if (!target_->isOpen()) {
        result_.troubles.add({work_.request.target, Trouble::TargetUnusable, target_->error()});
        return;
    }
    levels_.back().joined = QByteArray();
    if (faccessat(target_->cursor().top(), ".", W_OK | X_OK, AT_EACCESS) != 0)
        result_.troubles.add({work_.request.target, Trouble::TargetUnusable, errno});
    room_ = TargetRoom(target_->cursor().top(), target_->limits());
    result_.freeBytes = room_.freeBytes();
}

bool Surveyor::nextSource()
{
    do {
        ++source_;
    } while (source_ < int(work_.request.sources.size()) && !work_.isUsable(source_));
    if (source_ >= int(work_.request.sources.size()))
        return false;
    walk_ = std::make_unique<TreeWalk>(sources_.of(source_), sources_.name(source_));
    levels_.resize(1);
    return true;
}

void Surveyor::walkFailed()
{
    const bool isTop = levels_.size() == 1 && walk_->path() == sources_.name(source_);
    const bool isMissing = isTop && walk_->error() == ENOENT;
    trouble(isMissing ? Trouble::Missing : Trouble::NotAllowed, walk_->error());
}

void Surveyor::trouble(Trouble trouble, int error)
{
    result_.troubles.add({work_.fullSource(source_, walk_->path()), trouble, error});
}

void Surveyor::see()
{
    const bool isFolder = S_ISDIR(walk_->info().st_mode);
    const bool isTop = levels_.size() == 1;
    if (isTop)
        marks_.insert(source_,
                      EntryMark::withBirth(walk_->folder(), nameOf(walk_->path()), walk_->info()));
    const QByteArray name =
        isTop && !work_.request.newName.isEmpty() ? work_.request.newName : nameOf(walk_->path());
    if (!writes()) {
        count();
        if (isFolder)
            levels_.push_back({});
    } else if (fits(name)) {
        if (!isWhole(name) && isFolder)
            walk_->skip();
    } else if (isFolder) {
        walk_->skip();
    }
}

/// Whether the target can hold the entry at all.
bool Surveyor::fits(const QByteArray& name)
{
    const struct stat& info = walk_->info();
    const TargetLimits& limits = target_->limits();
    if (!limits.takesName(name)) {
        trouble(Trouble::BadName, 0);
    } else if (S_ISREG(info.st_mode) && info.st_size > limits.mostFileBytes) {
        trouble(Trouble::TooLarge, EFBIG);
    } else if (S_ISDIR(info.st_mode) && target_->isBelow(info)) {
        trouble(Trouble::IntoItself, 0);
    } else {
        if (limits.ignoresCase) {
            const QByteArray key = limits.nameKey(name);
            if (levels_.back().names.contains(key))
                trouble(Trouble::NameCollision, 0);
            levels_.back().names.insert(key);
        }
        return true;
    }
    return false;
}

/// Looks at what is in the way and counts. False if a folder's contents need not be seen.
bool Surveyor::isWhole(const QByteArray& name)
{
    const struct stat& info = walk_->info();
    const auto& joined = levels_.back().joined;
    struct stat there = {};
    const int folder = joined ? target_->folder(*joined) : -1;
    const bool isTaken = folder >= 0 && lookAt(folder, name, there);
    std::optional<QByteArray> joins;
    if (isTaken && EntryIdentity::of(there) == EntryIdentity::of(info)) {
        trouble(Trouble::SameFile, 0);
        return false;
    }
    if (isTaken && S_ISDIR(info.st_mode) && S_ISDIR(there.st_mode))
        joins = below(*joined, name);
    else if (isTaken)
        result_.conflicts.add({work_.fullSource(source_, walk_->path()),
                               work_.fullTarget(below(*joined, name)), factsOf(info),
                               factsOf(there)});
    if (work_.request.kind == OperationKind::Move && info.st_dev == target_->device() && !joins) {
        // It is only renamed, with all that is in it. If that should fail, what is in it is not
        // known.
        linked_.reset();
        ++result_.entries;
        result_.folders += S_ISDIR(info.st_mode) ? 1 : 0;
        return false;
    }
    if (S_ISDIR(info.st_mode)) {
        levels_.push_back({joins, {}});
        result_.neededBytes += joins ? 0 : room_.ofFolder();
    }
    count();
    return true;
}

/// A file with several names is written, or goes, only once; whether that is with this one.
bool Surveyor::isFirstName()
{
    const struct stat& info = walk_->info();
    if (info.st_nlink < 2 || (writes() && !target_->limits().keepsLinks))
        return true;
    const EntryIdentity identity = EntryIdentity::of(info);
    if (seen_.insert(identity))
        return true;
    if (linked_)
        linked_->insert(identity);
    return false;
}

void Surveyor::count()
{
    const struct stat& info = walk_->info();
    ++result_.entries;
    if (S_ISDIR(info.st_mode))
        ++result_.folders;
    if (!S_ISREG(info.st_mode) || !isFirstName())
        return;
    result_.bytes += info.st_size;
    result_.neededBytes += writes() ? room_.ofFile(info) : 0;
}

void Surveyor::end()
{
    walk_.reset();
    result_.hasRoom = deletes() || result_.neededBytes <= result_.freeBytes;
}
