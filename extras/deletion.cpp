#include "extras/deletion.h"

#include <cerrno>
#include <unistd.h>

Deletion::Deletion(Work& work, bool isSecondRun)
    : work_(work), sources_(work.request), isSecondRun_(isSecondRun)
{
}

bool Deletion::step()
{
    if (isCancelled_ || (removal_ == nullptr && !nextSource()))
        return false;
    const bool isMore = removal_->step();
    work_.progress.entriesDone = before_ + removal_->removed();
    if (isMore) {
        work_.progress.current = work_.fullSource(source_, removal_->current());
        return true;
    }
    before_ += removal_->removed();
    removal_.reset();
    if (work_.outcomes[source_] == SourceOutcome::NotReached)
        work_.outcomes[source_] = SourceOutcome::Done;
    return true;
}

/// A journal that is gone before its work is on the medium could leave half of it.
void Deletion::flushBefore(int next)
{
    const auto parent = [this](int source) { return parentOf(work_.request.sources[source]); };
    const int last = next - 1;
    const bool isOther = next >= int(work_.request.sources.size()) || parent(next) != parent(last);
    const int folder = isOther ? sources_.of(last).top() : -1;
    if (folder >= 0 && work_.journal != nullptr)
        fsync(folder);
}

bool Deletion::nextSource()
{
    do {
        ++source_;
        if (source_ > 0)
            flushBefore(source_);
    } while (source_ < int(work_.request.sources.size()) && !work_.isUsable(source_));
    if (source_ >= int(work_.request.sources.size()))
        return false;
    // What has taken its name since it was asked about is not what was meant.
    struct stat info = {};
    if (sources_.of(source_).go({}) &&
        lookAt(sources_.of(source_).folder(), sources_.name(source_), info) &&
        !work_.isStill(source_, info)) {
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
