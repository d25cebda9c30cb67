#include "tests/extras/callfaults.h"

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <memory>
#include <mutex>
#include <optional>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>
#include <vector>

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
    std::optional<CallFaults::Call> held; ///< flushing if it is none
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
    int linkError = 0;
    bool letsCopy = false;
    bool canShare = false;
    int shared = 0;
    int copied = 0;
    int written = 0;
    std::function<void(int)> beforeReading;
    int reads = 0;
    bool isReading = false;
};

/// Threads that were left alone may still look at those that are over.
std::atomic<Faults*> current = nullptr;
std::vector<std::unique_ptr<Faults>> allFaults;

template<typename Result>
Result failed(int error)
{
    errno = error;
    return Result(-1);
}

bool isUnflushable(int file)
{
    struct stat info = {};
    return current != nullptr && current.load()->unflushable && fstat(file, &info) == 0 &&
           info.st_ino == *current.load()->unflushable;
}

void holdAt(std::optional<CallFaults::Call> call)
{
    const Faults* faults = current;
    if (faults == nullptr || faults->held != call)
        return;
    if (const auto hold = faults->hold)
        hold->wait();
}

int flushed(long number, int file, bool isRefused)
{
    if (isRefused)
        return failed<int>(current.load()->flushError);
    holdAt({});
    return int(syscall(number, file));
}

} // namespace

CallFaults::CallFaults()
{
    Q_ASSERT(current == nullptr);
    allFaults.push_back(std::make_unique<Faults>());
    current = allFaults.back().get();
}

CallFaults::~CallFaults()
{
    const auto hold = current.load()->hold;
    current = nullptr;
    if (hold != nullptr)
        hold->open();
}

void CallFaults::holdFlushing()
{
    current.load()->hold = std::make_shared<Hold>();
}

void CallFaults::hold(Call call)
{
    current.load()->held = call;
    holdFlushing();
}

bool CallFaults::isFlushing() const
{
    const std::lock_guard lock(current.load()->hold->mutex);
    return current.load()->hold->waiting > 0;
}

void CallFaults::failWriting(qint64 afterBytes, int error)
{
    current.load()->writable = afterBytes;
    current.load()->writeError = error;
}

void CallFaults::failReading(qint64 afterBytes, int error)
{
    current.load()->readable = afterBytes;
    current.load()->readError = error;
}

void CallFaults::failFlushing(int error, bool ofEach)
{
    current.load()->flushError = error;
    current.load()->failsEachFlush = ofEach;
}

void CallFaults::failWritingOut(int error)
{
    current.load()->writeOutError = error;
}

void CallFaults::failRenaming(int after, int error)
{
    current.load()->renames = after;
    current.load()->renameError = error;
}

void CallFaults::forgetNoReplace()
{
    current.load()->knowsNoReplace = false;
}

void CallFaults::beforeReplacing(std::function<void()> work)
{
    current.load()->beforeReplacing = std::move(work);
}

void CallFaults::hideSizes()
{
    current.load()->hidesSizes = true;
}

void CallFaults::failFlushingOf(quint64 inode, int error)
{
    current.load()->unflushable = inode;
    current.load()->flushError = error;
}

void CallFaults::pretendKind(quint64 kind)
{
    current.load()->kind = kind;
}

void CallFaults::pretendRoom(qint64 blockBytes, qint64 blocks)
{
    current.load()->blockBytes = blockBytes;
    current.load()->freeBlocks = blocks;
}

void CallFaults::failSetting(const QByteArray& start, int error)
{
    current.load()->unsettable = start;
    current.load()->settingError = error;
}

void CallFaults::pretendAttribute(const QByteArray& name)
{
    current.load()->attribute = name;
}

void CallFaults::failOwning(int error)
{
    current.load()->ownError = error;
}

void CallFaults::failPermitting(int error)
{
    current.load()->permitError = error;
}

void CallFaults::failLinking(int error)
{
    current.load()->linkError = error;
}

void CallFaults::letCopy(bool canShare)
{
    current.load()->letsCopy = true;
    current.load()->canShare = canShare;
}

int CallFaults::shared() const
{
    return current.load()->shared;
}

int CallFaults::copied() const
{
    return current.load()->copied;
}

int CallFaults::written() const
{
    return current.load()->written;
}

void CallFaults::beforeReading(std::function<void(int)> work)
{
    current.load()->beforeReading = std::move(work);
}

void CallFaults::separateFolders()
{
    current.load()->separatesFolders = true;
}

// In the place of the system's own, for everything in the process.
extern "C" {

ssize_t pread(int file, void* bytes, size_t size, off_t offset)
{
    holdAt(CallFaults::Call::Read);
    if (current != nullptr && current.load()->beforeReading && !current.load()->isReading) {
        current.load()->isReading = true;
        current.load()->beforeReading(current.load()->reads++);
        current.load()->isReading = false;
    }
    if (current != nullptr && current.load()->readable == 0)
        return failed<ssize_t>(current.load()->readError);
    if (current != nullptr && current.load()->readable > 0)
        size = std::min(size, size_t(current.load()->readable));
    // The call with several pieces, which stays the system's: how the plain one takes its offset
    // differs between processors.
    const iovec piece = {bytes, size};
    const ssize_t got = preadv(file, &piece, 1, offset);
    if (current != nullptr && current.load()->readable > 0 && got > 0)
        current.load()->readable -= got;
    return got;
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset)
{
    if (current != nullptr)
        ++current.load()->written;
    if (current != nullptr && current.load()->writable == 0)
        return failed<ssize_t>(current.load()->writeError);
    if (current != nullptr && current.load()->writable > 0)
        size = std::min(size, size_t(current.load()->writable));
    const iovec piece = {const_cast<void*>(bytes), size};
    const ssize_t put = pwritev(file, &piece, 1, offset);
    if (current != nullptr && current.load()->writable > 0 && put > 0)
        current.load()->writable -= put;
    return put;
}

// What copies files without reading them is not there while something is to go wrong; of a file
// that cannot be read it knows no more than that one of two has a fault.
ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t size,
                        unsigned flags)
{
    if (current != nullptr && !current.load()->letsCopy)
        return failed<ssize_t>(current.load()->readError != 0 ? current.load()->readError : ENOSYS);
    if (current != nullptr)
        ++current.load()->copied;
    return syscall(SYS_copy_file_range, from, fromAt, to, toAt, size, flags);
}

int syncfs(int file)
{
    return flushed(SYS_syncfs, file,
                   current != nullptr && current.load()->flushError != 0 &&
                       !current.load()->unflushable);
}

int fsync(int file)
{
    return flushed(SYS_fsync, file,
                   current != nullptr && (current.load()->failsEachFlush || isUnflushable(file)));
}

int fdatasync(int file)
{
    return flushed(SYS_fdatasync, file, current != nullptr && current.load()->failsEachFlush);
}

int sync_file_range(int file, off64_t at, off64_t size, unsigned flags)
{
    holdAt(CallFaults::Call::WriteOut);
    if (current != nullptr && current.load()->writeOutError != 0)
        return failed<int>(current.load()->writeOutError);
    // How the system takes the numbers differs between processors.
    static const auto theirs =
        reinterpret_cast<decltype(&sync_file_range)>(dlsym(RTLD_NEXT, "sync_file_range"));
    return theirs(file, at, size, flags);
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags)
{
    holdAt(CallFaults::Call::Rename);
    if (current != nullptr && flags != 0 && !current.load()->knowsNoReplace)
        return failed<int>(EINVAL);
    if (current != nullptr && current.load()->separatesFolders && from != to)
        return failed<int>(EXDEV);
    if (current != nullptr && flags == 0 && current.load()->beforeReplacing)
        current.load()->beforeReplacing();
    if (current != nullptr && current.load()->renames == 0)
        return failed<int>(current.load()->renameError);
    if (current != nullptr && current.load()->renames > 0)
        --current.load()->renames;
    return int(syscall(SYS_renameat2, from, name, to, newName, flags));
}

int renameat(int from, const char* name, int to, const char* newName)
{
    return renameat2(from, name, to, newName, 0);
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags)
{
    if (current != nullptr && !current.load()->unsettable.isEmpty() &&
        QByteArrayView(name).startsWith(current.load()->unsettable))
        return failed<int>(current.load()->settingError);
    return int(syscall(SYS_fsetxattr, file, name, value, size, flags));
}

ssize_t flistxattr(int file, char* names, size_t size)
{
    if (current == nullptr || current.load()->attribute.isEmpty())
        return syscall(SYS_flistxattr, file, names, size);
    // With the zero at its end.
    const auto length = size_t(current.load()->attribute.size() + 1);
    if (size >= length)
        std::memcpy(names, current.load()->attribute.constData(), length);
    return ssize_t(length);
}

ssize_t fgetxattr(int file, const char* name, void* value, size_t size)
{
    if (current == nullptr || current.load()->attribute != name)
        return syscall(SYS_fgetxattr, file, name, value, size);
    if (size > 0)
        std::memcpy(value, "x", 1);
    return 1;
}

int fchown(int file, uid_t user, gid_t group)
{
    if (current != nullptr && current.load()->ownError != 0)
        return failed<int>(current.load()->ownError);
    return fchownat(file, "", user, group, AT_EMPTY_PATH);
}

int fchmod(int file, mode_t mode)
{
    if (current == nullptr || !current.load()->permitError)
        return int(syscall(SYS_fchmod, file, mode));
    return *current.load()->permitError == 0 ? 0 : failed<int>(*current.load()->permitError);
}

int linkat(int from, const char* name, int to, const char* newName, int flags)
{
    if (current != nullptr && current.load()->linkError != 0)
        return failed<int>(current.load()->linkError);
    return int(syscall(SYS_linkat, from, name, to, newName, flags));
}

int ioctl(int file, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    if (current == nullptr || request != FICLONE)
        return int(syscall(SYS_ioctl, file, request, argument));
    struct stat info = {};
    if (!current.load()->canShare || fstat(int(argument), &info) != 0)
        return failed<int>(EOPNOTSUPP);
    ++current.load()->shared;
    // As far as anybody can see it is the same.
    off64_t from = 0;
    off64_t to = 0;
    while (to < info.st_size) {
        if (syscall(SYS_copy_file_range, argument, &from, file, &to, info.st_size, 0) <= 0)
            return failed<int>(EOPNOTSUPP);
    }
    return 0;
}

int unlinkat(int folder, const char* name, int flags)
{
    holdAt(CallFaults::Call::Remove);
    return int(syscall(SYS_unlinkat, folder, name, flags));
}

int ftruncate(int file, off_t size)
{
    // How the system takes the number differs between processors.
    static const auto theirs = reinterpret_cast<decltype(&ftruncate)>(
        dlsym(RTLD_NEXT, sizeof(long) < sizeof(off_t) ? "ftruncate64" : "ftruncate"));
    holdAt(CallFaults::Call::Cut);
    return theirs(file, size);
}

int fstat(int file, struct stat* info)
{
    const int result = fstatat(file, "", info, AT_EMPTY_PATH);
    if (current != nullptr && current.load()->hidesSizes && S_ISREG(info->st_mode))
        info->st_size = 0;
    return result;
}

int fstatfs(int file, struct statfs* info)
{
    const int result = int(syscall(SYS_fstatfs, file, info));
    if (current != nullptr && current.load()->kind)
        info->f_type = decltype(info->f_type)(*current.load()->kind);
    return result;
}

int fstatvfs(int file, struct statvfs* info)
{
    // Where numbers of 32 bits are usual it has another name.
    static const auto theirs = reinterpret_cast<decltype(&fstatvfs)>(
        dlsym(RTLD_NEXT, sizeof(long) < sizeof(off_t) ? "fstatvfs64" : "fstatvfs"));
    const int result = theirs(file, info);
    if (current != nullptr && current.load()->blockBytes > 0) {
        info->f_bsize = info->f_frsize = decltype(info->f_frsize)(current.load()->blockBytes);
        info->f_bavail = decltype(info->f_bavail)(current.load()->freeBlocks);
    }
    return result;
}
}
