// Ends while an operation that was cancelled waits for a medium that does not answer.
//
// leavingdriver stays|answers TARGET SOURCE...
//
// Copies the sources. The medium does not answer while a name is given; with "answers" it does when
// main() is left and what it had made is gone. The exit status is 0, 2 if it came to something
// else, 3 if what goes on has not come to its end then.

#include "extras/journals.h"
#include "extras/operation.h"

#include <cstring>
#include <mutex>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>

namespace
{

/// It is there for whoever waits at it, to the last.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    bool isOpen = false;
    bool hasWaiting = false;
    bool hasEnded = false;

    void pass()
    {
        std::unique_lock lock(mutex);
        hasWaiting = true;
        changed.notify_all();
        changed.wait(lock, [this] { return isOpen; });
    }
    void open()
    {
        const std::lock_guard lock(mutex);
        isOpen = true;
        changed.notify_all();
    }
    void end()
    {
        const std::lock_guard lock(mutex);
        hasEnded = true;
        changed.notify_all();
    }
    bool waitForEnd()
    {
        constexpr std::chrono::seconds Longest(20);
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, Longest, [this] { return hasEnded; });
    }
    bool hasOneWaiting()
    {
        const std::lock_guard lock(mutex);
        return hasWaiting;
    }
};

Gate& gate()
{
    static Gate& only = *new Gate;
    return only;
}

/// Made before all others of this program, and so destroyed after them.
struct LastOfAll {
    bool answers = false;

    ~LastOfAll()
    {
        if (!answers)
            return;
        gate().open();
        if (!gate().waitForEnd() || hasJournals())
            _exit(3);
    }
};

LastOfAll lastOfAll;

} // namespace

// In the place of the system's own.
extern "C" int renameat2(int from, const char* name, int to, const char* newName, unsigned flags)
{
    gate().pass();
    return int(syscall(SYS_renameat2, from, name, to, newName, flags));
}

int main(int argc, char** argv)
{
    constexpr int SliceMs = 30;
    if (argc < 4)
        return 2;
    lastOfAll.answers = std::strcmp(argv[1], "answers") == 0;
    OperationRequest request;
    request.kind = OperationKind::Copy;
    request.target = argv[2];
    for (int i = 3; i < argc; ++i)
        request.sources.append(argv[i]);
    Operation operation(request);
    operation.setLateEnd([] { gate().end(); });
    while (operation.step(SliceMs) == Operation::State::Surveying) {
    }
    operation.begin();
    while (!operation.hasEnded() && !gate().hasOneWaiting())
        operation.step(SliceMs);
    operation.cancel();
    while (!operation.hasEnded())
        operation.step(SliceMs);
    return operation.state() == Operation::State::Cancelled && hasJournals() ? 0 : 2;
}
