// Lets the toolkit start programs inside of an emulator of a processor: scripts/cross has it loaded
// into each of them.
//
// The toolkit asks the kernel whether a new process can come with a descriptor, and the emulator
// hands that on to a kernel that can; but it does not know the call itself, and no process starts.
// Here the answer is no, and the toolkit takes the older way.

#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>

extern "C" long syscall(long number, ...) noexcept
{
    using Call = long (*)(long, long, long, long, long, long, long);
    static const auto next = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "syscall"));
    constexpr int MostArguments = 6;
    long arguments[MostArguments] = {};
    va_list list;
    va_start(list, number);
    for (long& argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && arguments[0] == P_PIDFD) {
        errno = EINVAL;
        return -1;
    }
    return next(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                arguments[5]);
}
