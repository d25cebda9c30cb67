#include "extras/deletion.h"

#include <algorithm>
#include <cerrno>

Deletion::Deletion(Work& work, bool isSecondRun)
    : work_(work), sources_(work.request), isSecondRun_(isSecondRun)
{
}

bool Deletion::step()
{
    if (isCancelled_)
        return false;
    if (!isFlushed())
        return true;
    if (removal_ == nullptr)
        return nextSource();
    const bool isMore = removal_->step();
    work_.progress.entriesDone = before_ + removal_->removed();
    if (isMore) {
        work_.progress.current = work_.fullSource(source_, removal_->current());
        return true;
    }
    before_ += removal_->removed();
    removal_.reset();
    emptied_ = folderOf(source_);
    work_.end(source_);
    return true;
}

QByteArray Deletion::folderOf(int source) const
{
    const QByteArray& path = work_.request.sources[source];
    return path.left(path.lastIndexOf('/') + 1);
}

bool Deletion::isFlushed()
{
    if (flushing_ && !flushing_->isDone(work_.patienceMs))
        return false;
    flushing_.reset();
    return true;
}

/// False when there is no other one, and all is done.
bool Deletion::nextSource()
{
    const int count = int(work_.request.sources.size());
    do {
        source_ = std::min(source_ + 1, count);
    } while (source_ < count && !work_.isUsable(source_));
    // A journal that is gone before its work is on the medium could leave half of it.
    if (!emptied_.isEmpty() && (source_ == count || folderOf(source_) != emptied_)) {
        if (work_.journal != nullptr) {
            flushing_.emplace();
            flushing_->add(FolderCursor::openTop(emptied_), Flushing::What::File);
            flushing_->start();
        }
        emptied_.clear();
    }
    if (source_ == count)
        return flushing_.has_value();
    // What has taken its name since it was asked about is not what was meant.
    struct stat info = {};
    if (sources_.of(source_).go({}) &&
        lookAt(sources_.of(source_).folder(), sources_.name(source_), info) &&
        !work_.isStillMeant(source_, sources_.of(source_).folder(), info)) {
        work_.fail(source_, work_.request.sources[source_], Trouble::SourceChanged, 0);
        return nextSource();
    }
    removal_ = std::make_unique<Removal>(
        sources_.of(source_), sources_.name(source_),
        [this](const QByteArray& path, int error) { failed(path, error); });
    return true;
}

void Deletion::failed(const QByteArray& path, int error)
{
    const bool isGone = error == ENOENT && path == sources_.name(source_);
    if (isGone && isSecondRun_)
        return;
    work_.fail(source_, work_.fullSource(source_, path),
               isGone ? Trouble::Missing : Trouble::CannotRemove, error);
}
