// Tells how some calls of the system end that tests need: scripts/cross starts it on this machine's
// processor and in the emulator, and so shows why those tests are left out there. Each call is as
// the tests make it.

#include <sched.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

// One error is what Linux answers, 0 for none; the other what came.
void tell(const char* call, int wanted, int found)
{
    if (found != wanted)
        std::printf("%s: \"%s\", and not \"%s\"\n", call, std::strerror(found),
                    std::strerror(wanted));
}

// Of a program that is missing: who starts it is to hear of that.
void spawnNothing()
{
    char name[] = "/nowhere";
    char* arguments[] = {name, nullptr};
    pid_t child = 0;
    const int error = posix_spawn(&child, name, nullptr, nullptr, arguments, environ);
    tell("posix_spawn of a program that is missing", ENOENT, error);
}

// A process that comes with a descriptor, as the toolkit starts programs.
void cloneWithDescriptor()
{
    int descriptor = -1;
    const long child =
        syscall(SYS_clone, CLONE_PIDFD | SIGCHLD, nullptr, &descriptor, nullptr, nullptr);
    if (child == 0)
        _exit(0);
    tell("clone with a descriptor", 0, child < 0 ? errno : 0);
    if (child > 0)
        waitpid(static_cast<pid_t>(child), nullptr, 0);
}

// An access list: version 2, then pairs of kind and rights with the number of a user or group, 1
// for one.
void setAccessList()
{
    const unsigned char list[] = {2,    0,    0,    0,    1,    0,    6,    0,    0xff, 0xff, 0xff,
                                  0xff, 2,    0,    6,    0,    1,    0,    0,    0,    4,    0,
                                  4,    0,    0xff, 0xff, 0xff, 0xff, 0x10, 0,    6,    0,    0xff,
                                  0xff, 0xff, 0xff, 0x20, 0,    4,    0,    0xff, 0xff, 0xff, 0xff};
    char name[] = "/tmp/limitsXXXXXX";
    const int file = mkstemp(name);
    const int status = fsetxattr(file, "system.posix_acl_access", list, sizeof list, 0);
    tell("an access list for user 1", 0, status < 0 ? errno : 0);
    unlink(name);
    close(file);
}

void changeUser()
{
    const int status = setuid(1);
    tell("setuid to user 1", 0, status < 0 ? errno : 0);
}

} // namespace

int main()
{
    spawnNothing();
    cloneWithDescriptor();
    setAccessList();
    changeUser();
    return 0;
}
