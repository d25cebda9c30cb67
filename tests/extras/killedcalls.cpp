// The functions of the C library that change something whatever they are asked for, or only what
// they write to.

#include "tests/extras/changecount.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

#include <cstdio>
#include <cstdlib>

// The names and types are the C library's.
extern "C" {

ssize_t write(int file, const void* data, size_t count)
{
    return changeOf(file, "write", &write, file, data, count);
}

ssize_t pwrite(int file, const void* data, size_t count, off_t at)
{
    return changeOf(file, "pwrite", &pwrite, file, data, count, at);
}

ssize_t pwrite64(int file, const void* data, size_t count, off64_t at)
{
    return changeOf(file, "pwrite64", &pwrite64, file, data, count, at);
}

ssize_t writev(int file, const iovec* parts, int count)
{
    return changeOf(file, "writev", &writev, file, parts, count);
}

ssize_t pwritev(int file, const iovec* parts, int count, off_t at)
{
    return changeOf(file, "pwritev", &pwritev, file, parts, count, at);
}

ssize_t pwritev64(int file, const iovec* parts, int count, off64_t at)
{
    return changeOf(file, "pwritev64", &pwritev64, file, parts, count, at);
}

ssize_t pwritev2(int file, const iovec* parts, int count, off_t at, int flags)
{
    return changeOf(file, "pwritev2", &pwritev2, file, parts, count, at, flags);
}

ssize_t pwritev64v2(int file, const iovec* parts, int count, off64_t at, int flags)
{
    return changeOf(file, "pwritev64v2", &pwritev64v2, file, parts, count, at, flags);
}

ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t count,
                        unsigned flags)
{
    return change("copy_file_range", &copy_file_range, from, fromAt, to, toAt, count, flags);
}

ssize_t sendfile(int to, int from, off_t* at, size_t count) noexcept
{
    return changeOf(to, "sendfile", &sendfile, to, from, at, count);
}

ssize_t sendfile64(int to, int from, off64_t* at, size_t count) noexcept
{
    return changeOf(to, "sendfile64", &sendfile64, to, from, at, count);
}

int creat(const char* path, mode_t mode)
{
    return change("creat", &creat, path, mode);
}

int creat64(const char* path, mode_t mode)
{
    return change("creat64", &creat64, path, mode);
}

int mkstemp(char* pattern)
{
    return change("mkstemp", &mkstemp, pattern);
}

int mkstemp64(char* pattern)
{
    return change("mkstemp64", &mkstemp64, pattern);
}

int mkostemp(char* pattern, int flags)
{
    return change("mkostemp", &mkostemp, pattern, flags);
}

int mkostemp64(char* pattern, int flags)
{
    return change("mkostemp64", &mkostemp64, pattern, flags);
}

char* mkdtemp(char* pattern) noexcept
{
    return change("mkdtemp", &mkdtemp, pattern);
}

int rename(const char* from, const char* to) noexcept
{
    return change("rename", &rename, from, to);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
{
    return change("renameat", &renameat, fromFolder, from, toFolder, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept
{
    return change("renameat2", &renameat2, fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) noexcept
{
    return change("link", &link, from, to);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    return change("linkat", &linkat, fromFolder, from, toFolder, to, flags);
}

int symlink(const char* target, const char* path) noexcept
{
    return change("symlink", &symlink, target, path);
}

int symlinkat(const char* target, int folder, const char* path) noexcept
{
    return change("symlinkat", &symlinkat, target, folder, path);
}

int unlink(const char* path) noexcept
{
    return change("unlink", &unlink, path);
}

int unlinkat(int folder, const char* path, int flags) noexcept
{
    return change("unlinkat", &unlinkat, folder, path, flags);
}

int remove(const char* path) noexcept
{
    return change("remove", &remove, path);
}

int rmdir(const char* path) noexcept
{
    return change("rmdir", &rmdir, path);
}

int mkdir(const char* path, mode_t mode) noexcept
{
    return change("mkdir", &mkdir, path, mode);
}

int mkdirat(int folder, const char* path, mode_t mode) noexcept
{
    return change("mkdirat", &mkdirat, folder, path, mode);
}

int mknod(const char* path, mode_t mode, dev_t device) noexcept
{
    return change("mknod", &mknod, path, mode, device);
}

int mknodat(int folder, const char* path, mode_t mode, dev_t device) noexcept
{
    return change("mknodat", &mknodat, folder, path, mode, device);
}

int mkfifo(const char* path, mode_t mode) noexcept
{
    return change("mkfifo", &mkfifo, path, mode);
}

int mkfifoat(int folder, const char* path, mode_t mode) noexcept
{
    return change("mkfifoat", &mkfifoat, folder, path, mode);
}

int chmod(const char* path, mode_t mode) noexcept
{
    return change("chmod", &chmod, path, mode);
}

int lchmod(const char* path, mode_t mode) noexcept
{
    return change("lchmod", &lchmod, path, mode);
}

int fchmod(int file, mode_t mode) noexcept
{
    return change("fchmod", &fchmod, file, mode);
}

int fchmodat(int folder, const char* path, mode_t mode, int flags) noexcept
{
    return change("fchmodat", &fchmodat, folder, path, mode, flags);
}

int chown(const char* path, uid_t owner, gid_t group) noexcept
{
    return change("chown", &chown, path, owner, group);
}

int lchown(const char* path, uid_t owner, gid_t group) noexcept
{
    return change("lchown", &lchown, path, owner, group);
}

int fchown(int file, uid_t owner, gid_t group) noexcept
{
    return change("fchown", &fchown, file, owner, group);
}

int fchownat(int folder, const char* path, uid_t owner, gid_t group, int flags) noexcept
{
    return change("fchownat", &fchownat, folder, path, owner, group, flags);
}

int utime(const char* path, const utimbuf* times) noexcept
{
    return change("utime", &utime, path, times);
}

int utimes(const char* path, const timeval* times) noexcept
{
    return change("utimes", &utimes, path, times);
}

int lutimes(const char* path, const timeval* times) noexcept
{
    return change("lutimes", &lutimes, path, times);
}

int futimes(int file, const timeval* times) noexcept
{
    return change("futimes", &futimes, file, times);
}

int futimesat(int folder, const char* path, const timeval* times) noexcept
{
    return change("futimesat", &futimesat, folder, path, times);
}

int utimensat(int folder, const char* path, const timespec* times, int flags) noexcept
{
    return change("utimensat", &utimensat, folder, path, times, flags);
}

int futimens(int file, const timespec* times) noexcept
{
    return change("futimens", &futimens, file, times);
}

int setxattr(const char* path, const char* name, const void* value, size_t size, int flags) noexcept
{
    return change("setxattr", &setxattr, path, name, value, size, flags);
}

int lsetxattr(const char* path, const char* name, const void* value, size_t size,
              int flags) noexcept
{
    return change("lsetxattr", &lsetxattr, path, name, value, size, flags);
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept
{
    return change("fsetxattr", &fsetxattr, file, name, value, size, flags);
}

int removexattr(const char* path, const char* name) noexcept
{
    return change("removexattr", &removexattr, path, name);
}

int lremovexattr(const char* path, const char* name) noexcept
{
    return change("lremovexattr", &lremovexattr, path, name);
}

int fremovexattr(int file, const char* name) noexcept
{
    return change("fremovexattr", &fremovexattr, file, name);
}

int truncate(const char* path, off_t size) noexcept
{
    return change("truncate", &truncate, path, size);
}

int truncate64(const char* path, off64_t size) noexcept
{
    return change("truncate64", &truncate64, path, size);
}

int ftruncate(int file, off_t size) noexcept
{
    return change("ftruncate", &ftruncate, file, size);
}

int ftruncate64(int file, off64_t size) noexcept
{
    return change("ftruncate64", &ftruncate64, file, size);
}

int fallocate(int file, int mode, off_t at, off_t size)
{
    return change("fallocate", &fallocate, file, mode, at, size);
}

int fallocate64(int file, int mode, off64_t at, off64_t size)
{
    return change("fallocate64", &fallocate64, file, mode, at, size);
}

int posix_fallocate(int file, off_t at, off_t size)
{
    return change("posix_fallocate", &posix_fallocate, file, at, size);
}

int posix_fallocate64(int file, off64_t at, off64_t size)
{
    return change("posix_fallocate64", &posix_fallocate64, file, at, size);
}

int fsync(int file)
{
    return change("fsync", &fsync, file);
}

int fdatasync(int file)
{
    return change("fdatasync", &fdatasync, file);
}

int syncfs(int file) noexcept
{
    return change("syncfs", &syncfs, file);
}

int sync_file_range(int file, off64_t at, off64_t size, unsigned flags)
{
    return change("sync_file_range", &sync_file_range, file, at, size, flags);
}

void sync() noexcept
{
    const bool last = changes().begin();
    original<decltype(&sync)>("sync")();
    if (last)
        Changes::end();
}

} // extern "C"
