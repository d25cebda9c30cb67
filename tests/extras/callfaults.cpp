#include "tests/extras/callfaults.h"

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace
{

/// What threads that flush wait at, also when the faults are gone.
struct Hold {
    std::mutex mutex;
    std::condition_variable let;
    bool isOpen = false;
    int waiting = 0;

    void wait()
    {
        std::unique_lock lock(mutex);
        ++waiting;
        let.wait(lock, [this] { return isOpen; });
        --waiting;
    }
    void open()
    {
        const std::lock_guard lock(mutex);
        isOpen = true;
        let.notify_all();
    }
};

struct Faults {
    qint64 writable = -1; ///< bytes until writing fails; -1: it does not
    int writeError = 0;
    qint64 readable = -1;
    int readError = 0;
    std::shared_ptr<Hold> hold;
    int flushError = 0;
    bool failsEachFlush = false;
    int writeOutError = 0;
    int renames = -1;
    int renameError = 0;
    bool knowsNoReplace = true;
    bool separatesFolders = false;
    std::optional<quint64> kind;
    std::function<void()> beforeReplacing;
    bool hidesSizes = false;
    std::optional<quint64> unflushable;
    qint64 blockBytes = 0; ///< 0: as it is
    qint64 freeBlocks = 0;
    QByteArray unsettable;
    int settingError = 0;
    QByteArray attribute;
    int ownError = 0;
    std::optional<int> permitError;
    std::function<void(int)> beforeReading;
    int reads = 0;
    bool isReading = false;
};

Faults* current = nullptr;

template<typename Result>
Result failed(int error)
{
    errno = error;
    return Result(-1);
}

bool isUnflushable(int file)
{
    struct stat info = {};
    return current != nullptr && current->unflushable && fstat(file, &info) == 0 &&
           info.st_ino == *current->unflushable;
}

int flushed(long number, int file, bool isRefused)
{
    if (isRefused)
        return failed<int>(current->flushError);
    if (const auto hold = current != nullptr ? current->hold : nullptr)
        hold->wait();
    return int(syscall(number, file));
}

} // namespace

CallFaults::CallFaults()
{
    Q_ASSERT(current == nullptr);
    current = new Faults;
}

CallFaults::~CallFaults()
{
    const auto hold = current->hold;
    delete std::exchange(current, nullptr);
    if (hold != nullptr)
        hold->open();
}

void CallFaults::holdFlushing()
{
    current->hold = std::make_shared<Hold>();
}

bool CallFaults::isFlushing() const
{
    const std::lock_guard lock(current->hold->mutex);
    return current->hold->waiting > 0;
}

void CallFaults::failWriting(qint64 afterBytes, int error)
{
    current->writable = afterBytes;
    current->writeError = error;
}

void CallFaults::failReading(qint64 afterBytes, int error)
{
    current->readable = afterBytes;
    current->readError = error;
}

void CallFaults::failFlushing(int error, bool ofEach)
{
    current->flushError = error;
    current->failsEachFlush = ofEach;
}

void CallFaults::failWritingOut(int error)
{
    current->writeOutError = error;
}

void CallFaults::failRenaming(int after, int error)
{
    current->renames = after;
    current->renameError = error;
}

void CallFaults::forgetNoReplace()
{
    current->knowsNoReplace = false;
}

void CallFaults::beforeReplacing(std::function<void()> work)
{
    current->beforeReplacing = std::move(work);
}

void CallFaults::hideSizes()
{
    current->hidesSizes = true;
}

void CallFaults::failFlushingOf(quint64 inode, int error)
{
    current->unflushable = inode;
    current->flushError = error;
}

void CallFaults::pretendKind(quint64 kind)
{
    current->kind = kind;
}

void CallFaults::pretendRoom(qint64 blockBytes, qint64 blocks)
{
    current->blockBytes = blockBytes;
    current->freeBlocks = blocks;
}

void CallFaults::failSetting(const QByteArray& start, int error)
{
    current->unsettable = start;
    current->settingError = error;
}

void CallFaults::pretendAttribute(const QByteArray& name)
{
    current->attribute = name;
}

void CallFaults::failOwning(int error)
{
    current->ownError = error;
}

void CallFaults::failPermitting(int error)
{
    current->permitError = error;
}

void CallFaults::beforeReading(std::function<void(int)> work)
{
    current->beforeReading = std::move(work);
}

void CallFaults::separateFolders()
{
    current->separatesFolders = true;
}

// In the place of the system's own, for everything in the process.
extern "C" {

ssize_t pread(int file, void* bytes, size_t size, off_t offset)
{
    if (current != nullptr && current->beforeReading && !current->isReading) {
        current->isReading = true;
        current->beforeReading(current->reads++);
        current->isReading = false;
    }
    if (current != nullptr && current->readable == 0)
        return failed<ssize_t>(current->readError);
    if (current != nullptr && current->readable > 0)
        size = std::min(size, size_t(current->readable));
    // The call with several pieces, which stays the system's: how the plain one takes its offset
    // differs between processors.
    const iovec piece = {bytes, size};
    const ssize_t got = preadv(file, &piece, 1, offset);
    if (current != nullptr && current->readable > 0 && got > 0)
        current->readable -= got;
    return got;
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset)
{
    if (current != nullptr && current->writable == 0)
        return failed<ssize_t>(current->writeError);
    if (current != nullptr && current->writable > 0)
        size = std::min(size, size_t(current->writable));
    const iovec piece = {const_cast<void*>(bytes), size};
    const ssize_t put = pwritev(file, &piece, 1, offset);
    if (current != nullptr && current->writable > 0 && put > 0)
        current->writable -= put;
    return put;
}

// What copies files without reading them is not there while something is to go wrong.
ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t size,
                        unsigned flags)
{
    if (current != nullptr)
        return failed<ssize_t>(ENOSYS);
    return syscall(SYS_copy_file_range, from, fromAt, to, toAt, size, flags);
}

int syncfs(int file)
{
    return flushed(SYS_syncfs, file,
                   current != nullptr && current->flushError != 0 && !current->unflushable);
}

int fsync(int file)
{
    return flushed(SYS_fsync, file,
                   current != nullptr && (current->failsEachFlush || isUnflushable(file)));
}

int fdatasync(int file)
{
    return flushed(SYS_fdatasync, file, current != nullptr && current->failsEachFlush);
}

int sync_file_range(int file, off64_t at, off64_t size, unsigned flags)
{
    if (current != nullptr && current->writeOutError != 0)
        return failed<int>(current->writeOutError);
    // How the system takes the numbers differs between processors.
    static const auto theirs =
        reinterpret_cast<decltype(&sync_file_range)>(dlsym(RTLD_NEXT, "sync_file_range"));
    return theirs(file, at, size, flags);
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags)
{
    if (current != nullptr && flags != 0 && !current->knowsNoReplace)
        return failed<int>(EINVAL);
    if (current != nullptr && current->separatesFolders && from != to)
        return failed<int>(EXDEV);
    if (current != nullptr && flags == 0 && current->beforeReplacing)
        current->beforeReplacing();
    if (current != nullptr && current->renames == 0)
        return failed<int>(current->renameError);
    if (current != nullptr && current->renames > 0)
        --current->renames;
    return int(syscall(SYS_renameat2, from, name, to, newName, flags));
}

int renameat(int from, const char* name, int to, const char* newName)
{
    return renameat2(from, name, to, newName, 0);
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags)
{
    if (current != nullptr && !current->unsettable.isEmpty() &&
        QByteArrayView(name).startsWith(current->unsettable))
        return failed<int>(current->settingError);
    return int(syscall(SYS_fsetxattr, file, name, value, size, flags));
}

ssize_t flistxattr(int file, char* names, size_t size)
{
    if (current == nullptr || current->attribute.isEmpty())
        return syscall(SYS_flistxattr, file, names, size);
    // With the zero at its end.
    const auto length = size_t(current->attribute.size() + 1);
    if (size >= length)
        std::memcpy(names, current->attribute.constData(), length);
    return ssize_t(length);
}

ssize_t fgetxattr(int file, const char* name, void* value, size_t size)
{
    if (current == nullptr || current->attribute != name)
        return syscall(SYS_fgetxattr, file, name, value, size);
    if (size > 0)
        std::memcpy(value, "x", 1);
    return 1;
}

int fchown(int file, uid_t user, gid_t group)
{
    if (current != nullptr && current->ownError != 0)
        return failed<int>(current->ownError);
    return fchownat(file, "", user, group, AT_EMPTY_PATH);
}

int fchmod(int file, mode_t mode)
{
    if (current == nullptr || !current->permitError)
        return int(syscall(SYS_fchmod, file, mode));
    return *current->permitError == 0 ? 0 : failed<int>(*current->permitError);
}

int fstat(int file, struct stat* info)
{
    const int result = fstatat(file, "", info, AT_EMPTY_PATH);
    if (current != nullptr && current->hidesSizes && S_ISREG(info->st_mode))
        info->st_size = 0;
    return result;
}

int fstatfs(int file, struct statfs* info)
{
    const int result = int(syscall(SYS_fstatfs, file, info));
    if (current != nullptr && current->kind)
        info->f_type = decltype(info->f_type)(*current->kind);
    return result;
}

int fstatvfs(int file, struct statvfs* info)
{
    // Where numbers of 32 bits are usual it has another name.
    static const auto theirs = reinterpret_cast<decltype(&fstatvfs)>(
        dlsym(RTLD_NEXT, sizeof(long) < sizeof(off_t) ? "fstatvfs64" : "fstatvfs"));
    const int result = theirs(file, info);
    if (current != nullptr && current->blockBytes > 0) {
        info->f_bsize = info->f_frsize = decltype(info->f_frsize)(current->blockBytes);
        info->f_bavail = decltype(info->f_bavail)(current->freeBlocks);
    }
    return result;
}
}
