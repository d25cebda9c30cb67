// Makes one change to the disk after the other in the folder of its argument, where each works, and
// says which it has made, a line each. "only reading" as second argument: everything that is none.

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace
{

int file = -1;
int source = -1;

bool isOpen(int descriptor)
{
    return descriptor >= 0 && close(descriptor) == 0;
}

struct Change {
    const char* name;
    bool (*make)();
};

const Change Changes[] = {
    {"open", [] { return (file = open("a", O_CREAT | O_RDWR, 0644)) >= 0; }},
    {"write", [] { return write(file, "text", 4) == 4; }},
    {"pwrite", [] { return pwrite(file, "text", 4, 0) == 4; }},
    {"writev",
     [] {
         char text[] = "text";
         const iovec part{text, 4};
         return writev(file, &part, 1) == 4;
     }},
    {"fsync", [] { return fsync(file) == 0; }},
    {"fdatasync", [] { return fdatasync(file) == 0; }},
    {"syncfs", [] { return syncfs(file) == 0; }},
    {"fchmod", [] { return fchmod(file, 0600) == 0; }},
    {"fchown", [] { return fchown(file, getuid(), getgid()) == 0; }},
    {"futimens", [] { return futimens(file, nullptr) == 0; }},
    {"fallocate", [] { return posix_fallocate(file, 0, 64) == 0; }},
    {"ftruncate", [] { return ftruncate(file, 8) == 0; }},
    {"openat", [] { return isOpen(openat(AT_FDCWD, "a", O_RDWR | O_TRUNC)); }},
    {"creat", [] { return isOpen(creat("b", 0644)); }},
    {"copy_file_range", [] { return copy_file_range(source, nullptr, file, nullptr, 1, 0) == 1; }},
    {"sendfile", [] { return sendfile(file, source, nullptr, 1) == 1; }},
    {"rename", [] { return rename("b", "c") == 0; }},
    {"renameat", [] { return renameat(AT_FDCWD, "c", AT_FDCWD, "d") == 0; }},
    {"renameat2", [] { return renameat2(AT_FDCWD, "d", AT_FDCWD, "e", RENAME_NOREPLACE) == 0; }},
    {"syscall",
     [] { return syscall(SYS_renameat2, AT_FDCWD, "e", AT_FDCWD, "f", RENAME_NOREPLACE) == 0; }},
    {"link", [] { return link("f", "g") == 0; }},
    {"linkat", [] { return linkat(AT_FDCWD, "f", AT_FDCWD, "h", 0) == 0; }},
    {"symlink", [] { return symlink("none", "i") == 0; }},
    {"symlinkat", [] { return symlinkat("none", AT_FDCWD, "j") == 0; }},
    {"unlink", [] { return unlink("g") == 0; }},
    {"unlinkat", [] { return unlinkat(AT_FDCWD, "h", 0) == 0; }},
    {"remove", [] { return remove("i") == 0; }},
    {"mkdir", [] { return mkdir("k", 0755) == 0; }},
    {"mkdirat", [] { return mkdirat(AT_FDCWD, "l", 0755) == 0; }},
    {"rmdir", [] { return rmdir("k") == 0; }},
    {"mkfifo", [] { return mkfifo("m", 0644) == 0; }},
    {"mknod", [] { return mknod("n", S_IFIFO | 0644, 0) == 0; }},
    {"chmod", [] { return chmod("f", 0600) == 0; }},
    {"fchmodat", [] { return fchmodat(AT_FDCWD, "f", 0640, 0) == 0; }},
    {"chown", [] { return chown("f", getuid(), getgid()) == 0; }},
    {"lchown", [] { return lchown("j", getuid(), getgid()) == 0; }},
    {"fchownat", [] { return fchownat(AT_FDCWD, "f", getuid(), getgid(), 0) == 0; }},
    {"utimes", [] { return utimes("f", nullptr) == 0; }},
    {"utimensat", [] { return utimensat(AT_FDCWD, "f", nullptr, 0) == 0; }},
    {"truncate", [] { return truncate("f", 3) == 0; }},
    {"mkstemp",
     [] {
         char name[] = "o-XXXXXX";
         return isOpen(mkstemp(name));
     }},
    {"mkdtemp",
     [] {
         char name[] = "p-XXXXXX";
         return mkdtemp(name) != nullptr;
     }},
};

/// False if something in it does not work. What is written goes nowhere near a disk.
bool onlyRead()
{
    int ends[2] = {-1, -1};
    char letter = 0;
    struct stat status;
    return pipe(ends) == 0 && write(ends[1], "x", 1) == 1 && read(ends[0], &letter, 1) == 1 &&
           isOpen(ends[0]) && isOpen(ends[1]) && stat("source", &status) == 0 &&
           isOpen(open("source", O_RDONLY)) && isOpen(openat(AT_FDCWD, "source", O_RDWR)) &&
           access("none", F_OK) != 0 && syscall(SYS_getpid) == getpid();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2 || chdir(argv[1]) != 0 || (source = open("source", O_RDONLY)) < 0)
        return EXIT_FAILURE;
    if (argc > 2)
        return onlyRead() ? EXIT_SUCCESS : EXIT_FAILURE;
    for (const Change& change : Changes) {
        if (!change.make()) {
            std::fprintf(stderr, "%s does not work\n", change.name);
            return EXIT_FAILURE;
        }
        std::printf("%s\n", change.name);
        std::fflush(stdout);
    }
    return EXIT_SUCCESS;
}
