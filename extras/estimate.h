#pragma once

#include <QtGlobal>

/// How fast work goes and how long the rest will take, from how much is done at which time. Slow at
/// first to say something, then calm: the rate is an average over the last seconds, and the time
/// left counts down with the clock and moves towards a new estimate instead of jumping to it.
class Estimate
{
public:
    /// Work is counted in any unit, times in milliseconds of a clock that never goes back.
    explicit Estimate(qint64 total) : total_(total) {}

    /// Tells how much is done at a time. Neither ever gets less.
    void note(qint64 done, qint64 milliseconds);
    /// What turns out to be more, or less, to do.
    void setTotal(qint64 total) { total_ = total; }
    /// A time in which nobody worked, while a question was open for one, is no time.
    void skip(qint64 milliseconds) { skipped_ += milliseconds; }

    /// Units a second; 0 while not known.
    double rate() const { return rate_; }
    /// Whole seconds, at least 1 while something is left to do; -1 while not known.
    int secondsLeft() const;

private:
    void move(double seconds);

    qint64 total_ = 0;
    qint64 done_ = 0;
    qint64 skipped_ = 0;
    qint64 first_ = -1; ///< time of the first note, milliseconds
    qint64 last_ = 0;   ///< time of the last one that counted
    qint64 lastDone_ = 0;
    double rate_ = 0;
    double weight_ = 0; ///< how much the average rests on so far, 0 to 1
    double left_ = -1;  ///< seconds as shown
};
