#include "tools/sys_gui/tree.h"

#include "files/filehandle.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <system_error>

namespace
{

constexpr size_t BlockBytes = 256 * 1024;
// So much is on its way to the medium at a time, so that the progress is that of the medium.
constexpr qint64 WindowBytes = 8 * 1024 * 1024;
constexpr mode_t PrivateFile = 0600;
constexpr mode_t PrivateFolder = 0700;
constexpr mode_t PermissionBits = 07777;
constexpr mode_t RaisingBits = 07000;

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// The names in an open folder; false, with errno set, if they cannot be read.
bool readNames(int folder, std::vector<QByteArray>& names)
{
    const int own = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (own < 0)
        return false;
    const std::unique_ptr<DIR, FolderCloser> reader(fdopendir(own));
    for (;;) {
        errno = 0;
        const dirent* found = readdir(reader.get());
        if (found == nullptr)
            return errno == 0;
        if (std::strcmp(found->d_name, ".") != 0 && std::strcmp(found->d_name, "..") != 0)
            names.emplace_back(found->d_name);
    }
}

int openFolder(int parent, const QByteArray& name)
{
    return openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Gives a copy the owner, mode and times. Not all file systems know them and not all users may
/// give them; the content counts, so none of it fails the move.
void giveAttributes(int file, const struct stat& info)
{
    mode_t mode = info.st_mode & PermissionBits;
    if (fchown(file, info.st_uid, info.st_gid) != 0) {
        // Bits that let a program act as its owner would now be for another one.
        mode &= ~RaisingBits;
        static_cast<void>(fchown(file, static_cast<uid_t>(-1), info.st_gid) == 0);
    }
    static_cast<void>(fchmod(file, mode) == 0);
    const std::array<timespec, 2> times{info.st_atim, info.st_mtim};
    static_cast<void>(futimens(file, times.data()) == 0);
}

/// The same for what cannot be opened: links and devices.
void giveAttributes(int folder, const QByteArray& name, const struct stat& info)
{
    const char* path = name.constData();
    mode_t mode = info.st_mode & PermissionBits;
    if (fchownat(folder, path, info.st_uid, info.st_gid, AT_SYMLINK_NOFOLLOW) != 0)
        mode &= ~RaisingBits;
    if (!S_ISLNK(info.st_mode))
        static_cast<void>(fchmodat(folder, path, mode, 0) == 0);
    const std::array<timespec, 2> times{info.st_atim, info.st_mtim};
    static_cast<void>(utimensat(folder, path, times.data(), AT_SYMLINK_NOFOLLOW) == 0);
}

/// Keeps the last windows of a file that is being written on their way to the medium.
void passOn(int file, qint64 before, qint64 now)
{
    const qint64 window = now / WindowBytes;
    if (window == before / WindowBytes)
        return;
    const qint64 start = (window - 1) * WindowBytes;
    sync_file_range(file, start, WindowBytes, SYNC_FILE_RANGE_WRITE);
    if (window > 1)
        sync_file_range(file, start - WindowBytes, WindowBytes,
                        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                            SYNC_FILE_RANGE_WAIT_AFTER);
}

} // namespace

Tree::Tree(int folder, const QByteArray& name, const MoveWatcher& watcher)
    : folder_(folder), watcher_(watcher), path_(name)
{
    root_.name = name;
}

bool Tree::list()
{
    return listEntry(folder_, root_);
}

bool Tree::copy(int folder, const QByteArray& name)
{
    block_.resize(BlockBytes);
    return copyEntry(folder_, root_, folder, name);
}

bool Tree::remove()
{
    return removeEntry(folder_, root_);
}

bool Tree::goOn()
{
    if (!watcher_ || watcher_(progress_))
        return true;
    result_ = {MoveResult::Interrupted, "interrupted"};
    return false;
}

bool Tree::fail(const char* attempt, int error)
{
    return fail(attempt, QByteArray::fromStdString(std::generic_category().message(error)));
}

bool Tree::fail(const char* attempt, const QByteArray& reason)
{
    if (result_.state != MoveResult::Interrupted)
        result_ = {MoveResult::Failed, attempt + (" '" + path_ + "': ") + reason};
    return false;
}

/// Calls `action` for each entry of a folder, `path_` being that of the entry.
template<typename Entries, typename Action>
bool Tree::forEach(Entries& entries, Action action)
{
    const qsizetype length = path_.size();
    for (auto& entry : entries) {
        path_.append('/').append(entry.name);
        if (!action(entry))
            return false;
        path_.truncate(length);
    }
    return true;
}

/// The result of a system call that is repeated when a signal that is not meant for us breaks it.
template<typename Call>
auto Tree::finish(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR && goOn())
        result = call();
    return result;
}

bool Tree::isUnchanged(const Entry& entry, const struct stat& info) const
{
    return info.st_mode == entry.mode && info.st_size == entry.size &&
           info.st_mtim.tv_sec == entry.modified.tv_sec &&
           info.st_mtim.tv_nsec == entry.modified.tv_nsec;
}

bool Tree::listEntry(int folder, Entry& entry)
{
    if (!goOn())
        return false;
    struct statx info = {};
    if (statx(folder, entry.name.constData(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &info) != 0)
        return fail("cannot move", errno);
    ++count_;
    entry.mode = info.stx_mode;
    entry.size = qint64(info.stx_size);
    entry.modified = {info.stx_mtime.tv_sec, long(info.stx_mtime.tv_nsec)};
    if (S_ISREG(entry.mode))
        progress_.bytesTotal += entry.size;
    if (!S_ISDIR(entry.mode))
        return true;
    if ((info.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0)
        return fail("cannot move", EBUSY);
    return listContent(folder, entry);
}

bool Tree::listContent(int folder, Entry& entry)
{
    const FileHandle handle(openFolder(folder, entry.name));
    std::vector<QByteArray> names;
    if (!handle.isOpen() || !readNames(handle.get(), names))
        return fail("cannot read", errno);
    if (!names.empty() && faccessat(handle.get(), ".", W_OK | X_OK, AT_EACCESS) != 0)
        return fail("cannot empty", errno);
    entry.content.resize(names.size());
    for (size_t i = 0; i < names.size(); ++i)
        entry.content[i].name = std::move(names[i]);
    return forEach(entry.content, [&](Entry& inner) { return listEntry(handle.get(), inner); });
}

bool Tree::copyEntry(int from, const Entry& entry, int to, const QByteArray& name)
{
    if (!goOn())
        return false;
    struct stat info = {};
    if (fstatat(from, entry.name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return fail("cannot copy", errno);
    if ((info.st_mode & S_IFMT) != (entry.mode & S_IFMT))
        return fail("cannot copy", "it changes meanwhile");
    switch (info.st_mode & S_IFMT) {
    case S_IFREG:
        return copyFile(from, entry, to, name);
    case S_IFDIR:
        return copyFolder(from, entry, to, name);
    case S_IFLNK:
        return copyLink(from, entry, info, to, name);
    default:
        return copySpecial(info, to, name);
    }
}

bool Tree::copyFile(int from, const Entry& entry, int to, const QByteArray& name)
{
    const FileHandle input(finish([&] {
        return openat(from, entry.name.constData(), O_RDONLY | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
    }));
    // The time of last access is taken before the copying changes it.
    struct stat info = {};
    if (!input.isOpen() || fstat(input.get(), &info) != 0)
        return fail("cannot read", errno);
    FileHandle output(
        openat(to, name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, PrivateFile));
    if (!output.isOpen())
        return fail("cannot copy", errno);
    hasCopy_ = true;
    if (!copyBytes(input.get(), output.get()))
        return false;
    struct stat after = {};
    if (fstat(input.get(), &after) != 0 || !isUnchanged(entry, after))
        return fail("cannot copy", "it changes meanwhile");
    giveAttributes(output.get(), info);
    if (!isLarge() && fsync(output.get()) != 0)
        return fail("cannot copy", errno);
    return output.close() || fail("cannot copy", errno);
}

bool Tree::copyBytes(int from, int to)
{
    qint64 total = 0;
    for (;;) {
        const ssize_t got = finish([&] { return read(from, block_.data(), block_.size()); });
        if (got < 0)
            return fail("cannot read", errno);
        if (got == 0)
            return true;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put =
                finish([&] { return write(to, block_.data() + done, size_t(got - done)); });
            if (put < 0)
                return fail("cannot copy", errno);
            done += put;
        }
        passOn(to, total, total + got);
        total += got;
        progress_.bytesDone += got;
        if (!goOn())
            return false;
    }
}

bool Tree::copyFolder(int from, const Entry& entry, int to, const QByteArray& name)
{
    const FileHandle source(openFolder(from, entry.name));
    struct stat info = {};
    if (!source.isOpen() || fstat(source.get(), &info) != 0)
        return fail("cannot read", errno);
    if (mkdirat(to, name.constData(), PrivateFolder) != 0)
        return fail("cannot copy", errno);
    hasCopy_ = true;
    const FileHandle target(openFolder(to, name));
    if (!target.isOpen())
        return fail("cannot copy", errno);
    if (!forEach(entry.content, [&](const Entry& inner) {
            return copyEntry(source.get(), inner, target.get(), inner.name);
        }))
        return false;
    giveAttributes(target.get(), info);
    // Not all file systems can do that with a folder; its files are checked one by one.
    if (!isLarge())
        static_cast<void>(fsync(target.get()) == 0);
    return true;
}

bool Tree::copyLink(int from, const Entry& entry, const struct stat& info, int to,
                    const QByteArray& name)
{
    std::array<char, PATH_MAX> text{};
    if (readlinkat(from, entry.name.constData(), text.data(), text.size() - 1) < 0)
        return fail("cannot read", errno);
    if (symlinkat(text.data(), to, name.constData()) != 0)
        return fail("cannot copy", errno);
    hasCopy_ = true;
    giveAttributes(to, name, info);
    return true;
}

/// Makes another FIFO, socket or device node like the one that was listed.
bool Tree::copySpecial(const struct stat& info, int to, const QByteArray& name)
{
    if (mknodat(to, name.constData(), (info.st_mode & S_IFMT) | PrivateFile, info.st_rdev) != 0)
        return fail("cannot copy", errno);
    hasCopy_ = true;
    giveAttributes(to, name, info);
    return true;
}

bool Tree::removeEntry(int folder, const Entry& entry)
{
    if (watcher_)
        watcher_(progress_);
    if (S_ISDIR(entry.mode))
        return removeFolder(folder, entry);
    struct stat info = {};
    if (S_ISREG(entry.mode) &&
        fstatat(folder, entry.name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
        !isUnchanged(entry, info))
        return fail("copied, but cannot remove", "it has changed meanwhile");
    if (unlinkat(folder, entry.name.constData(), 0) != 0 && errno != ENOENT)
        return fail("copied, but cannot remove", errno);
    return true;
}

bool Tree::removeFolder(int folder, const Entry& entry)
{
    const FileHandle handle(openFolder(folder, entry.name));
    if (!handle.isOpen())
        return errno == ENOENT || fail("copied, but cannot remove", errno);
    if (!forEach(entry.content,
                 [&](const Entry& inner) { return removeEntry(handle.get(), inner); }))
        return false;
    if (unlinkat(folder, entry.name.constData(), AT_REMOVEDIR) != 0 && errno != ENOENT)
        return fail("copied, but cannot remove", errno);
    return true;
}

void Tree::discard(int folder, const QByteArray& name)
{
    if (unlinkat(folder, name.constData(), 0) == 0)
        return;
    fchmodat(folder, name.constData(), PrivateFolder, 0);
    const FileHandle handle(openFolder(folder, name));
    std::vector<QByteArray> names;
    if (handle.isOpen() && readNames(handle.get(), names)) {
        for (const QByteArray& inner : names)
            discard(handle.get(), inner);
    }
    unlinkat(folder, name.constData(), AT_REMOVEDIR);
}
