#include "extras/aside.h"

#include "extras/slices.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace
{

/// For what has been stopped to come to its end.
constexpr int EndMs = 300;
/// The event loop gets its turn so often.
constexpr int TurnMs = 10;

struct Work {
    std::function<void(const std::atomic<bool>&)> run;
    std::atomic<bool> isStopped = false;
    std::mutex mutex;
    std::condition_variable ended;
    bool isDone = false;
    std::function<void()> lateEnd; ///< set when it is left alone

    void go()
    {
        run(isStopped);
        {
            const std::lock_guard lock(mutex);
            isDone = true;
            ended.notify_all();
        }
        if (lateEnd)
            lateEnd();
    }
    /// False if it is done already.
    bool leave(std::function<void()> atEnd)
    {
        const std::lock_guard lock(mutex);
        if (!isDone)
            lateEnd = std::move(atEnd);
        return !isDone;
    }
    bool waitDone(int milliseconds)
    {
        std::unique_lock lock(mutex);
        return ended.wait_for(lock, std::chrono::milliseconds(milliseconds),
                              [this] { return isDone; });
    }
};

} // namespace

Aside runAside(const QString& title, std::function<void(const std::atomic<bool>& isStopped)> work,
               const std::function<QStringList()>& lines, std::function<void()> lateEnd)
{
    const auto shared = std::make_shared<Work>();
    shared->run = std::move(work);
    try {
        std::thread([shared] { shared->go(); }).detach();
    } catch (const std::system_error&) {
        shared->go();
    }
    // What is quick is over before anything else is drawn.
    if (shared->waitDone(TurnMs))
        return Aside::Done;
    if (runInSlices(
            title,
            [&shared](int milliseconds) {
                return !shared->waitDone(std::min(milliseconds, TurnMs));
            },
            lines))
        return Aside::Done;
    shared->isStopped = true;
    return shared->waitDone(EndMs) || !shared->leave(std::move(lateEnd)) ? Aside::Stopped
                                                                         : Aside::GoesOn;
}
