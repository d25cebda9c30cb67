#pragma once

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>

// What counts the changes that a process makes, and ends it at one of them.

/// A function of the C library, which this library is in front of.
template<typename Function>
Function original(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

inline long numberFrom(const char* variable)
{
    const char* text = std::getenv(variable);
    return text != nullptr ? std::strtol(text, nullptr, 10) : 0;
}

/// Counts the changes of this process.
class Changes
{
public:
    Changes() : killAt_(numberFrom("QUARN_KILL_AT")), after_(numberFrom("QUARN_KILL_AFTER") != 0) {}

    ~Changes()
    {
        const char* path = std::getenv("QUARN_KILL_COUNT");
        if (path == nullptr)
            return;
        std::array<char, 24> text{};
        const int length = std::snprintf(text.data(), text.size(), "%ld\n", count_.load());
        const auto open = original<int (*)(const char*, int, ...)>("open");
        const auto write = original<ssize_t (*)(int, const void*, size_t)>("write");
        const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (file < 0 || write(file, text.data(), size_t(length)) != length)
            std::abort();
        close(file);
    }

    Changes(const Changes&) = delete;
    Changes& operator=(const Changes&) = delete;

    /// To be called before a change; true if the process is to end after it.
    bool begin()
    {
        const bool chosen = ++count_ == killAt_;
        if (chosen && !after_)
            end();
        return chosen;
    }

    [[noreturn]] static void end()
    {
        kill(getpid(), SIGKILL);
        std::abort();
    }

private:
    std::atomic<long> count_ = 0;
    long killAt_;
    bool after_;
};

inline Changes& changes()
{
    static Changes all;
    return all;
}

/// Calls a function of the C library, as a change if it is one.
template<typename Function, typename... Arguments>
auto callIf(bool changing, Function function, Arguments... arguments)
{
    const bool last = changing && changes().begin();
    const auto result = function(arguments...);
    if (last)
        Changes::end();
    return result;
}

template<typename Function, typename... Arguments>
auto change(const char* name, Function, Arguments... arguments)
{
    return callIf(true, original<Function>(name), arguments...);
}

/// Whether what is written to a file may reach a disk.
inline bool isStored(int file)
{
    struct stat status;
    return fstat(file, &status) == 0 && (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode));
}

template<typename Function, typename... Arguments>
auto changeOf(int file, const char* name, Function, Arguments... arguments)
{
    return callIf(isStored(file), original<Function>(name), arguments...);
}
