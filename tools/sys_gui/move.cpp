#include "tools/sys_gui/move.h"

#include "files/filehandle.h"
#include "tools/sys_gui/tree.h"

#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace
{

// The bytes of a name that a temporary name shows; every file system has room for so many.
constexpr qsizetype ShownBytes = 100;

/// What is moved, and where to.
struct Places {
    QByteArray name;
    FileHandle from; ///< the folder that holds it
    FileHandle to;
    FileHandle storage; ///< the target's file system, not open where the target cannot be read
    struct stat source = {};
};

MoveResult failed(const QByteArray& attempt, const QByteArray& name, int error)
{
    const auto reason = QByteArray::fromStdString(std::generic_category().message(error));
    return {MoveResult::Failed, attempt + " '" + name + "': " + reason};
}

int openPlace(const QByteArray& path)
{
    return open(path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
}

/// Opens both folders; returns the error, or 0.
int openPlaces(Places& places, QByteArray source, const QByteArray& folder)
{
    while (source.size() > 1 && source.endsWith('/'))
        source.chop(1);
    const qsizetype slash = source.lastIndexOf('/');
    places.name = source.mid(slash + 1);
    if (places.name == "." || places.name == ".." || source == "/")
        return EBUSY;
    if (places.name.isEmpty())
        return ENOENT;
    places.from.reset(openPlace(slash < 0 ? QByteArray(".") : source.left(slash + 1)));
    if (!places.from.isOpen() || fstatat(places.from.get(), places.name.constData(), &places.source,
                                         AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    places.to.reset(openPlace(folder));
    if (!places.to.isOpen())
        return errno;
    places.storage.reset(openat(places.to.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return 0;
}

bool isSame(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Whether the target is the source or within it, as far as folders above it can be looked at.
bool isWithinSource(const Places& places)
{
    FileHandle folder(openat(places.to.get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat info = {};
    struct stat below = {};
    while (folder.isOpen() && fstat(folder.get(), &info) == 0 && !isSame(info, below)) {
        if (isSame(info, places.source))
            return true;
        below = info;
        folder.reset(openat(folder.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return false;
}

bool exists(int folder, const QByteArray& name)
{
    struct stat info = {};
    return fstatat(folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

/// Renames and never replaces anything; returns the error, or 0.
int renameOnly(int from, const QByteArray& name, int to, const QByteArray& newName)
{
    if (renameat2(from, name.constData(), to, newName.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // The file system does not know that flag.
    if (exists(to, newName))
        return EEXIST;
    return renameat(from, name.constData(), to, newName.constData()) == 0 ? 0 : errno;
}

/// Whether the source may be taken out of its folder; returns the error, or 0.
int removalError(const Places& places)
{
    if (faccessat(places.from.get(), ".", W_OK | X_OK, AT_EACCESS) != 0)
        return errno;
    struct stat folder = {};
    if (fstat(places.from.get(), &folder) != 0)
        return errno;
    const uid_t user = geteuid();
    const bool isOwner = user == 0 || user == folder.st_uid || user == places.source.st_uid;
    return (folder.st_mode & S_ISVTX) != 0 && !isOwner ? EPERM : 0;
}

/// A hidden name that nothing in the target has.
QByteArray temporaryName(const Places& places)
{
    static constexpr char Letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QByteArray shown = places.name.left(ShownBytes);
    // Not within a character of UTF-8, which some file systems insist on.
    constexpr unsigned char Continuation = 0x80;
    constexpr unsigned char LeadingBits = 0xc0;
    if (shown.size() < places.name.size()) {
        while ((static_cast<unsigned char>(places.name.at(shown.size())) & LeadingBits) ==
                   Continuation &&
               !shown.isEmpty())
            shown.chop(1);
    }
    QByteArray name;
    do {
        name = '.' + shown + ".part-";
        for (int i = 0; i < 6; ++i)
            name += Letters[QRandomGenerator::system()->bounded(int(sizeof(Letters) - 1))];
    } while (exists(places.to.get(), name));
    return name;
}

/// Waits until all of the copy is on the medium; false, with errno set, if some never will be.
bool store(const Places& places, const Tree& tree)
{
    if (!tree.isLarge())
        return true;
    if (places.storage.isOpen())
        return syncfs(places.storage.get()) == 0;
    sync();
    return true;
}

/// Makes a whole and stored copy in the target under its final name.
MoveResult copyInto(const Places& places, Tree& tree)
{
    const QByteArray temporary = temporaryName(places);
    const auto giveUp = [&](const MoveResult& result) {
        if (tree.hasCopy())
            Tree::discard(places.to.get(), temporary);
        return result;
    };
    if (!tree.copy(places.to.get(), temporary))
        return giveUp(tree.result());
    if (!store(places, tree))
        return giveUp(failed("cannot copy", places.name, errno));
    if (!tree.goOn())
        return giveUp(tree.result());
    if (const int error = renameOnly(places.to.get(), temporary, places.to.get(), places.name))
        return giveUp(failed("cannot move", places.name, error));
    if (places.storage.isOpen())
        fsync(places.storage.get());
    return {};
}

MoveResult copyAndRemove(const Places& places, const MoveWatcher& watcher)
{
    if (const int error = removalError(places))
        return failed("cannot move", places.name, error);
    Tree tree(places.from.get(), places.name, watcher);
    if (!tree.list())
        return tree.result();
    if (const MoveResult result = copyInto(places, tree); result.state != MoveResult::Moved)
        return result;
    tree.remove();
    return tree.result();
}

} // namespace

MoveResult moveInto(const QByteArray& source, const QByteArray& folder, const MoveWatcher& watcher)
{
    Places places;
    if (const int error = openPlaces(places, source, folder)) {
        const bool targetIsWrong = places.from.isOpen() && places.source.st_mode != 0;
        return targetIsWrong ? failed("cannot move to", folder, error)
                             : failed("cannot move", source, error);
    }
    if (S_ISDIR(places.source.st_mode) && isWithinSource(places))
        return {MoveResult::Failed, "cannot move '" + places.name + "' into itself"};
    // Before the file systems are compared, so that it is not found out after the copying.
    if (exists(places.to.get(), places.name))
        return failed("cannot move", places.name, EEXIST);
    const int error = renameOnly(places.from.get(), places.name, places.to.get(), places.name);
    if (error == EXDEV)
        return copyAndRemove(places, watcher);
    return error == 0 ? MoveResult() : failed("cannot move", places.name, error);
}
