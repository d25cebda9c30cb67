// A library for LD_PRELOAD that makes files of a process and its children fail or stand still.
//
// QUARN_FAULTS holds a rule a line: CALL ACTION BYTES PATH. CALL is "open", "read", "write" or
// "sync", which is to flush a file, or a file system by a file on it; PATH is a file's full path,
// or one that ends with "/" and means all below. A read or write gets as far as BYTES from the
// start of the file. From then on, or at once for the others, ACTION happens each time: a number is
// the errno that the call fails with; "hold" does nothing unless there is a file QUARN_FAULT_GATE,
// else makes the file QUARN_FAULT_GATE.reached and waits until something opens the FIFO
// QUARN_FAULT_GATE.fifo to write and closes it.

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

struct Rule {
    std::array<char, 8> call{};
    int error = 0; // 0: hold
    off_t bytes = 0;
    std::array<char, PATH_MAX> path{};
};

constexpr int MostRules = 32;

template<typename Function>
Function original(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

class Rules
{
public:
    Rules()
    {
        const char* text = std::getenv("QUARN_FAULTS");
        while (text != nullptr && *text != '\0' && count_ < MostRules) {
            parse(text, rules_[size_t(count_)]);
            const char* end = std::strchr(text, '\n');
            text = end != nullptr ? end + 1 : nullptr;
        }
    }

    bool isEmpty() const { return count_ == 0; }

    const Rule* find(const char* call, const char* path) const
    {
        for (int i = 0; i < count_; ++i) {
            const Rule& rule = rules_[size_t(i)];
            const size_t length = std::strlen(rule.path.data());
            const bool below = rule.path[length - 1] == '/';
            if (std::strcmp(rule.call.data(), call) == 0 &&
                std::strncmp(rule.path.data(), path, below ? length : length + 1) == 0)
                return &rule;
        }
        return nullptr;
    }

    const Rule* find(const char* call, int file) const
    {
        if (isEmpty())
            return nullptr;
        std::array<char, 64> link{};
        std::array<char, PATH_MAX> path{};
        std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", file);
        return readlink(link.data(), path.data(), path.size() - 1) > 0 ? find(call, path.data())
                                                                       : nullptr;
    }

private:
    void parse(const char* text, Rule& rule)
    {
        std::array<char, 8> action{};
        long long bytes = 0;
        if (std::sscanf(text, "%7s %7s %lld %4095[^\n]", rule.call.data(), action.data(), &bytes,
                        rule.path.data()) != 4)
            std::abort();
        rule.error = std::atoi(action.data());
        rule.bytes = off_t(bytes);
        ++count_;
    }

    std::array<Rule, MostRules> rules_{};
    int count_ = 0;
};

const Rules& rules()
{
    static const Rules all;
    return all;
}

int realOpen(const char* path, int flags)
{
    static const auto open = original<int (*)(const char*, int, ...)>("open");
    return open(path, flags, 0644);
}

void hold()
{
    const char* gate = std::getenv("QUARN_FAULT_GATE");
    if (gate == nullptr || access(gate, F_OK) != 0)
        return;
    std::array<char, PATH_MAX> path{};
    std::snprintf(path.data(), path.size(), "%s.reached", gate);
    close(realOpen(path.data(), O_WRONLY | O_CREAT | O_CLOEXEC));
    std::snprintf(path.data(), path.size(), "%s.fifo", gate);
    // Opening waits for the other end, reading until that is closed: the next wait would find it.
    const int fifo = realOpen(path.data(), O_RDONLY | O_CLOEXEC);
    char nothing = 0;
    static_cast<void>(!read(fifo, &nothing, 1));
    close(fifo);
}

/// Whether the call is to fail, with errno set.
bool strike(const Rule& rule)
{
    if (rule.error == 0)
        hold();
    errno = rule.error;
    return rule.error != 0;
}

/// How much of a transfer is to be tried; -1 if it is to fail.
ssize_t allowed(const char* call, int file, size_t count)
{
    const Rule* rule = rules().find(call, file);
    if (rule == nullptr)
        return ssize_t(count);
    const off_t left = rule->bytes - lseek(file, 0, SEEK_CUR);
    if (left > 0)
        return left < off_t(count) ? ssize_t(left) : ssize_t(count);
    return strike(*rule) ? -1 : ssize_t(count);
}

bool openFails(int folder, const char* path)
{
    if (rules().isEmpty())
        return false;
    std::array<char, PATH_MAX> whole{};
    const Rule* rule = nullptr;
    if (path[0] == '/' || folder == AT_FDCWD) {
        rule = rules().find("open", path);
    } else {
        std::array<char, 64> link{};
        std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", folder);
        const ssize_t length = readlink(link.data(), whole.data(), whole.size() / 2);
        if (length > 0)
            std::snprintf(whole.data() + length, whole.size() - size_t(length), "/%s", path);
        rule = rules().find("open", whole.data());
    }
    return rule != nullptr && strike(*rule);
}

int flushed(const char* name, int file)
{
    const auto real = original<int (*)(int)>(name);
    const Rule* rule = rules().find("sync", file);
    return rule != nullptr && strike(*rule) ? -1 : real(file);
}

unsigned modeOf(int flags, va_list arguments)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, unsigned) : 0;
}

} // namespace

// The names and types are the C library's.
extern "C" {

ssize_t read(int file, void* buffer, size_t count)
{
    static const auto real = original<ssize_t (*)(int, void*, size_t)>("read");
    const ssize_t part = allowed("read", file, count);
    return part < 0 ? -1 : real(file, buffer, size_t(part));
}

ssize_t write(int file, const void* buffer, size_t count)
{
    static const auto real = original<ssize_t (*)(int, const void*, size_t)>("write");
    const ssize_t part = allowed("write", file, count);
    return part < 0 ? -1 : real(file, buffer, size_t(part));
}

int fsync(int file)
{
    return flushed("fsync", file);
}

int fdatasync(int file)
{
    return flushed("fdatasync", file);
}

int syncfs(int file) noexcept
{
    return flushed("syncfs", file);
}

// What copies files without reading them is not there, so that they are read and written.

ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t count,
                        unsigned flags)
{
    using Call = ssize_t (*)(int, off64_t*, int, off64_t*, size_t, unsigned);
    static const auto real = original<Call>("copy_file_range");
    if (rules().isEmpty())
        return real(from, fromAt, to, toAt, count, flags);
    errno = ENOSYS;
    return -1;
}

int ioctl(int file, unsigned long request, ...)
{
    static const auto real = original<int (*)(int, unsigned long, ...)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request != FICLONE || rules().isEmpty())
        return real(file, request, argument);
    errno = EOPNOTSUPP;
    return -1;
}

int open(const char* path, int flags, ...)
{
    static const auto real = original<int (*)(const char*, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFails(AT_FDCWD, path) ? -1 : real(path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    static const auto real = original<int (*)(const char*, int, ...)>("open64");
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFails(AT_FDCWD, path) ? -1 : real(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...)
{
    static const auto real = original<int (*)(int, const char*, int, ...)>("openat");
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFails(folder, path) ? -1 : real(folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...)
{
    static const auto real = original<int (*)(int, const char*, int, ...)>("openat64");
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFails(folder, path) ? -1 : real(folder, path, flags, mode);
}

} // extern "C"
