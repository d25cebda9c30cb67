#include "extras/trashfolder.h"

#include <QByteArrayList>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <utility>

namespace
{

constexpr mode_t Private = 0700;
constexpr int FolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr char OwnStart[] = ".Trash-";

/// What somebody has set up for all users.
QByteArray commonPath(const QByteArray& top)
{
    return (top == "/" ? QByteArray() : top) + "/.Trash";
}

/// A folder in another one, not through a link.
FileHandle subfolder(int parent, const QByteArray& name, TrashFolder::Missing missing)
{
    FileHandle folder(::openat(parent, name.constData(), FolderFlags | O_NOFOLLOW));
    if (!folder.isOpen() && errno == ENOENT && missing == TrashFolder::Missing::Make &&
        (::mkdirat(parent, name.constData(), Private) == 0 || errno == EEXIST))
        folder.reset(::openat(parent, name.constData(), FolderFlags | O_NOFOLLOW));
    return folder;
}

bool isOwnedBy(const FileHandle& folder, uid_t user)
{
    struct stat about = {};
    if (::fstat(folder.get(), &about) != 0)
        return false;
    errno = EPERM;
    return about.st_uid == user;
}

/// Makes a path of folders, the user's alone. False with errno set.
bool makeFolders(const QByteArray& path)
{
    for (qsizetype end = 0; end >= 0;) {
        end = path.indexOf('/', end + 1);
        const QByteArray part = end < 0 ? path : path.first(end);
        if (::mkdir(part.constData(), Private) != 0 && errno != EEXIST)
            return false;
    }
    return true;
}

} // namespace

TrashFolder::TrashFolder(QByteArray path, QByteArray base, bool isHome)
    : path_(std::move(path)), base_(std::move(base)), isHome_(isHome)
{
}

std::optional<TrashFolder> TrashFolder::in(FileHandle folder, const QByteArray& path,
                                           const QByteArray& base, bool isHome, Missing missing)
{
    struct stat about = {};
    if (!folder.isOpen() || ::fstat(folder.get(), &about) != 0)
        return std::nullopt;
    TrashFolder trash(path, base, isHome);
    trash.id_ = {about.st_dev, about.st_ino};
    trash.files_ = subfolder(folder.get(), "files", missing);
    trash.info_ = subfolder(folder.get(), "info", missing);
    trash.folder_ = std::move(folder);
    if (!trash.files_.isOpen() || !trash.info_.isOpen())
        return std::nullopt;
    return trash;
}

QByteArray TrashFolder::homePath(const QByteArray& dataHome)
{
    return dataHome + "/Trash";
}

QByteArray TrashFolder::sharedPath(const QByteArray& top, uid_t user)
{
    return commonPath(top) + '/' + QByteArray::number(user);
}

QByteArray TrashFolder::ownPath(const QByteArray& top, uid_t user)
{
    return (top == "/" ? QByteArray() : top) + '/' + OwnStart + QByteArray::number(user);
}

std::optional<TrashFolder> TrashFolder::inHome(const QByteArray& dataHome, Missing missing)
{
    if (dataHome.isEmpty()) {
        errno = ENOENT;
        return std::nullopt;
    }
    const QByteArray path = homePath(dataHome);
    if (missing == Missing::Make && !makeFolders(path))
        return std::nullopt;
    return in(FileHandle(::open(path.constData(), FolderFlags)), path, dataHome, true, missing);
}

std::optional<TrashFolder> TrashFolder::shared(const QByteArray& top, uid_t user, Missing missing)
{
    const FileHandle all(::open(commonPath(top).constData(), FolderFlags | O_NOFOLLOW));
    struct stat about = {};
    if (!all.isOpen() || ::fstat(all.get(), &about) != 0)
        return std::nullopt;
    if ((about.st_mode & S_ISVTX) == 0) {
        errno = EPERM;
        return std::nullopt;
    }
    const QByteArray name = QByteArray::number(user);
    FileHandle folder = subfolder(all.get(), name, missing);
    if (!folder.isOpen() || !isOwnedBy(folder, user))
        return std::nullopt;
    return in(std::move(folder), sharedPath(top, user), top, false, missing);
}

std::optional<TrashFolder> TrashFolder::own(const QByteArray& top, uid_t user, Missing missing)
{
    const FileHandle topFolder(::open(top.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!topFolder.isOpen())
        return std::nullopt;
    const QByteArray name = OwnStart + QByteArray::number(user);
    FileHandle folder = subfolder(topFolder.get(), name, missing);
    if (!folder.isOpen() || !isOwnedBy(folder, user))
        return std::nullopt;
    return in(std::move(folder), ownPath(top, user), top, false, missing);
}

FileHandle TrashFolder::expunged(Missing missing) const
{
    return subfolder(folder(), "expunged", missing);
}

QByteArray infoNameOf(const QByteArray& name)
{
    return name + ".trashinfo";
}

QByteArrayList namesIn(int folder)
{
    QByteArrayList names;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(
        ::fdopendir(::openat(folder, ".", FolderFlags)), ::closedir);
    if (entries == nullptr)
        return names;
    while (const dirent* entry = ::readdir(entries.get())) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    return names;
}
