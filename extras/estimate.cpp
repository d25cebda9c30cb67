#include "extras/estimate.h"

#include <algorithm>
#include <cmath>

namespace
{

/// Nothing is said before.
constexpr qint64 FirstWords = 1000;
/// How often the average is renewed.
constexpr qint64 Interval = 250;
/// After so many seconds a change of the speed is most of the average: this part of the time that
/// has passed, within bounds, since what comes in gulps shows its pace only after some of them.
constexpr double MemoryShare = 0.3;
constexpr double ShortMemory = 3;
constexpr double LongMemory = 15;
/// The share of the way to a new estimate that is gone in a second.
constexpr double Pull = 0.15;

} // namespace

void Estimate::note(qint64 done, qint64 milliseconds)
{
    milliseconds -= skipped_;
    if (first_ < 0) {
        first_ = last_ = milliseconds;
        done_ = lastDone_ = done;
        return;
    }
    done_ = std::max(done_, done);
    const qint64 passed = milliseconds - last_;
    if (passed < Interval)
        return;
    const double seconds = double(passed) / 1000;
    const double memory =
        std::clamp(double(milliseconds - first_) / 1000 * MemoryShare, ShortMemory, LongMemory);
    const double kept = std::exp(-seconds / memory);
    const double now = double(done_ - lastDone_) / seconds;
    // An average over what there is: without the weight it would begin at 0.
    const double sum = rate_ * weight_ * kept + now * (1 - kept);
    weight_ = weight_ * kept + 1 - kept;
    rate_ = sum / weight_;
    last_ = milliseconds;
    lastDone_ = done_;
    move(seconds);
}

void Estimate::move(double seconds)
{
    if (last_ - first_ < FirstWords || rate_ <= 0)
        return;
    const double estimated = double(std::max<qint64>(total_ - done_, 0)) / rate_;
    if (left_ < 0) {
        left_ = estimated;
        return;
    }
    const double counted = std::max(left_ - seconds, 0.0);
    const double share = 1 - std::pow(1 - Pull, seconds);
    left_ = counted + (estimated - counted) * share;
}

int Estimate::secondsLeft() const
{
    if (left_ < 0 || total_ <= 0)
        return -1;
    if (done_ >= total_)
        return 0;
    return std::max(1, int(std::min(std::ceil(left_), 1e9)));
}
