#include "tests/extras/opengate.h"

#include <QByteArrayView>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstring>
#include <mutex>

namespace
{

/// It outlives whoever waits at it.
struct Gate {
    std::mutex mutex;
    std::condition_variable opened;
    QByteArray path;
    bool isOpen = true;
    int waiting = 0;
    int passes = 0;
    int free = 0; ///< do not wait

    void set(const QByteArray& start, bool open, int freePasses = 0)
    {
        const std::lock_guard lock(mutex);
        path = start;
        isOpen = open;
        passes = 0;
        free = freePasses;
    }
    void open()
    {
        const std::lock_guard lock(mutex);
        isOpen = true;
        opened.notify_all();
    }
    void pass(const char* wanted)
    {
        constexpr std::chrono::seconds Longest(20);
        std::unique_lock lock(mutex);
        const QByteArrayView whole(wanted, qsizetype(std::strlen(wanted)) + 1);
        if (path.isEmpty() || !whole.startsWith(path))
            return;
        ++passes;
        if (isOpen || passes <= free)
            return;
        ++waiting;
        opened.wait_for(lock, Longest, [this] { return isOpen; });
        --waiting;
    }
    int read(const int& number)
    {
        const std::lock_guard lock(mutex);
        return number;
    }
};

Gate& gate()
{
    static Gate only;
    return only;
}

} // namespace

OpenGate::OpenGate()
{
    gate().set({}, true);
}

OpenGate::~OpenGate()
{
    open();
}

void OpenGate::watch(const QByteArray& start)
{
    gate().set(start, true);
}

void OpenGate::shut(const QByteArray& start, int free)
{
    gate().set(start, false, free);
}

void OpenGate::open()
{
    gate().open();
}

int OpenGate::passes() const
{
    return gate().read(gate().passes);
}

int OpenGate::waiting() const
{
    return gate().read(gate().waiting);
}

// In the place of the system's own, for everything in the process.
extern "C" int open(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const auto mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(more, mode_t) : mode_t(0);
    va_end(more);
    gate().pass(path);
    return int(syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode));
}
