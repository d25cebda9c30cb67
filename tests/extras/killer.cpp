// A library for LD_PRELOAD that kills a process at a chosen change to the disk.
//
// Each call that changes something there is counted from 1: what makes, names, fills, cuts, marks
// or flushes a file. Writing counts for plain files and devices only, not for pipes, sockets and
// terminals. Before the call that QUARN_KILL_AT names the process gets SIGKILL; with
// QUARN_KILL_AFTER=1 when that call has returned. QUARN_KILL_COUNT names a file that gets the
// number of calls when the process ends by itself.
//
// Seen is what a program calls in the C library, not what the library does within: the buffered
// files of <stdio.h> go unseen.

#include "tests/extras/changecount.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>

namespace
{

// Made before main(), so that a process that changes nothing tells so, too.
[[maybe_unused]] const Changes& atStart = changes();

bool makesFile(int flags)
{
    return (flags & (O_CREAT | O_TRUNC)) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

unsigned modeOf(int flags, va_list arguments)
{
    return makesFile(flags) ? va_arg(arguments, unsigned) : 0;
}

/// The numbers of the calls that change something, as every architecture has them.
constexpr std::array<long, 32> ChangingCalls{
    SYS_renameat2,   SYS_linkat,          SYS_symlinkat,
    SYS_unlinkat,    SYS_mkdirat,         SYS_mknodat,
    SYS_fchmod,      SYS_fchmodat,        452L /* fchmodat2, which older headers do not name */,
    SYS_fchown,      SYS_fchownat,        SYS_utimensat,
    SYS_setxattr,    SYS_lsetxattr,       SYS_fsetxattr,
    SYS_removexattr, SYS_lremovexattr,    SYS_fremovexattr,
    SYS_truncate,    SYS_ftruncate,       SYS_fallocate,
    SYS_fsync,       SYS_fdatasync,       SYS_sync,
    SYS_syncfs,      SYS_sync_file_range, SYS_copy_file_range,
    SYS_pwrite64,    SYS_writev,          SYS_pwritev,
    SYS_pwritev2,    SYS_sendfile,
};

bool isChange(long number, const std::array<long, 6>& arguments)
{
    switch (number) {
    case SYS_write:
        return isStored(int(arguments[0]));
    case SYS_openat:
        return makesFile(int(arguments[2]));
    case SYS_ioctl:
        return arguments[1] == long(FICLONE) || arguments[1] == long(FICLONERANGE);
    default:
        return std::find(ChangingCalls.begin(), ChangingCalls.end(), number) != ChangingCalls.end();
    }
}

} // namespace

// The names and types are the C library's.
extern "C" {

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return callIf(makesFile(flags), original<decltype(&open)>("open"), path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return callIf(makesFile(flags), original<decltype(&open64)>("open64"), path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return callIf(makesFile(flags), original<decltype(&openat)>("openat"), folder, path, flags,
                  mode);
}

int openat64(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = modeOf(flags, arguments);
    va_end(arguments);
    return callIf(makesFile(flags), original<decltype(&openat64)>("openat64"), folder, path, flags,
                  mode);
}

int ioctl(int file, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return callIf(request == FICLONE || request == FICLONERANGE,
                  original<decltype(&ioctl)>("ioctl"), file, request, argument);
}

long syscall(long number, ...) noexcept
{
    std::array<long, 6> values{};
    va_list arguments;
    va_start(arguments, number);
    // As many as a call can have, whether or not this one has them.
    for (long& value : values)
        value = va_arg(arguments, long);
    va_end(arguments);
    return callIf(isChange(number, values), original<decltype(&syscall)>("syscall"), number,
                  values[0], values[1], values[2], values[3], values[4], values[5]);
}

} // extern "C"
