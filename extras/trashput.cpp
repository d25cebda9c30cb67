// How entries get into the trash.

#include "extras/trash.h"

#include "extras/entrychanges.h"
#include "extras/mounts.h"
#include "extras/trashinfo.h"
#include "extras/trashsizes.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <utility>

namespace
{

/// As long as an entry's name may be there so that the name of its info file is possible.
constexpr qsizetype LongestTrashedName = 255 - 10;
/// After so many that are taken, a number is drawn.
constexpr int MostInRow = 20;
constexpr int MostTries = 1000;
/// To measure a folder that is thrown away.
constexpr int MeasureMs = 200;

/// An entry by the folder that it is in.
struct Place {
    FileHandle folder;
    QByteArray name;
    QByteArray path; ///< with no link but, perhaps, itself
};

bool openPlace(const QByteArray& path, Place& place)
{
    const qsizetype slash = path.lastIndexOf('/');
    place.name = path.sliced(slash + 1);
    place.folder.reset(::open(path.first(slash + 1).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!place.folder.isOpen())
        return false;
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(place.folder.get());
    std::array<char, PATH_MAX> folder{};
    const ssize_t length = ::readlink(link.constData(), folder.data(), folder.size());
    if (length <= 0 || length == PATH_MAX) {
        errno = ENAMETOOLONG;
        return false;
    }
    place.path = QByteArray(folder.data(), length);
    if (!place.path.endsWith('/'))
        place.path += '/';
    place.path += place.name;
    return true;
}

TrashedId idOf(const struct stat& about)
{
    return {about.st_dev, about.st_ino};
}

/// Whether a folder is `sought` or lies somewhere below it.
bool isBelow(int folder, const TrashedId& sought)
{
    FileHandle current(::openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat about = {};
    TrashedId last;
    while (current.isOpen() && ::fstat(current.get(), &about) == 0 && idOf(about) != last) {
        if (idOf(about) == sought)
            return true;
        last = idOf(about);
        current.reset(::openat(current.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return false;
}

dev_t deviceOf(int folder)
{
    struct stat about = {};
    return ::fstat(folder, &about) == 0 ? about.st_dev : 0;
}

/// The device of what there is of a path, were it only the root.
dev_t deviceThatHolds(const QByteArray& path)
{
    struct stat about = {};
    for (QByteArray part = path; part.startsWith('/'); part.truncate(part.lastIndexOf('/'))) {
        if (::stat(part.constData(), &about) == 0)
            return about.st_dev;
    }
    return !path.isEmpty() && ::stat("/", &about) == 0 ? about.st_dev : 0;
}

bool writeInfo(const TrashFolder& trash, const QByteArray& infoName, const QByteArray& text)
{
    FileHandle file(::openat(trash.info(), infoName.constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.isOpen())
        return false;
    const bool written =
        ::write(file.get(), text.constData(), size_t(text.size())) == ssize_t(text.size());
    if (written && ::fsync(file.get()) == 0 && file.close() && ::fsync(trash.info()) == 0)
        return true;
    const int error = written ? errno : ENOSPC;
    ::unlinkat(trash.info(), infoName.constData(), 0);
    errno = error;
    return false;
}

void rememberSize(const TrashFolder& trash, const QByteArray& name)
{
    struct stat info = {};
    const auto bytes = sizeOnDisk(trash.files(), name, MeasureMs);
    if (!bytes || ::fstatat(trash.info(), infoNameOf(name).constData(), &info, 0) != 0)
        return;
    TrashedSizes sizes = readTrashedSizes(trash.folder());
    sizes.insert(name, {*bytes, info.st_mtime});
    writeTrashedSizes(trash.folder(), sizes);
}

/// The path as the info file has it: below the top of a file system it must not tell where that is
/// mounted.
QByteArray toldPath(const TrashFolder& trash, const QByteArray& path)
{
    const QByteArray below = trash.base() == "/" ? trash.base() : trash.base() + '/';
    return !trash.isHome() && path.startsWith(below) ? path.sliced(below.size()) : path;
}

/// The name itself if it may be that long, else, and for numbers from 2 on, one with a number.
QByteArray trashedName(const QByteArray& name, int number)
{
    if (number == 1 && name.size() <= LongestTrashedName)
        return name;
    return NameParts::of(name).numbered(number, LongestTrashedName);
}

/// Whether an error says that a file system has no such renaming, rather than that it failed.
bool isUnable(int error)
{
    return error == EXDEV || error == ENOSYS || error == EOPNOTSUPP;
}

/// Tries one trash, under the first name that is free there. The info file is on the disk before
/// the entry moves: nothing is ever in the trash without its origin.
Trash::Result putInto(const TrashFolder& trash, const Place& place,
                      const std::atomic<bool>& isStopped)
{
    const QByteArray text =
        trashInfoText({toldPath(trash, place.path), QDateTime::currentSecsSinceEpoch()});
    for (int attempt = 1; attempt <= MostTries; ++attempt) {
        const int number = attempt <= MostInRow
                               ? attempt
                               : int(QRandomGenerator::global()->bounded(MostInRow, INT_MAX));
        const QByteArray name = trashedName(place.name, number);
        if (!writeInfo(trash, infoNameOf(name), text)) {
            if (errno == EEXIST)
                continue;
            return {Trash::Outcome::NoTrash, errno, {}};
        }
        errno = ECANCELED;
        if (!isStopped && renameToFree(place.folder.get(), place.name, trash.files(), name)) {
            ::fsync(trash.files());
            return {Trash::Outcome::Done, 0, trash.path() + "/files/" + name};
        }
        const int error = errno;
        ::unlinkat(trash.info(), infoNameOf(name).constData(), 0);
        if (error != EEXIST)
            return {isUnable(error) ? Trash::Outcome::NoTrash : Trash::Outcome::Failed, error, {}};
    }
    return {Trash::Outcome::NoTrash, EEXIST, {}};
}

/// What a trash has to do with an entry that is to be thrown away, if it lies in one or one in it.
std::optional<Trash::Result> refusedBy(const TrashFolder& trash, const Place& place,
                                       const struct stat& entry)
{
    if (isBelow(trash.files(), idOf(entry)) || isBelow(trash.info(), idOf(entry)))
        return Trash::Result{Trash::Outcome::Refused, 0, {}};
    if (isBelow(place.folder.get(), trash.id()))
        return Trash::Result{Trash::Outcome::NoTrash, 0, {}};
    return std::nullopt;
}

} // namespace

/// Those that may take what is in a folder, the best one first. Each is made when it is asked for
/// and missing.
std::vector<Trash::Candidate> Trash::candidates(int folder) const
{
    constexpr auto Make = TrashFolder::Missing::Make;
    std::vector<Candidate> result;
    if (deviceThatHolds(places_.dataHome) == deviceOf(folder))
        result.emplace_back([this] { return TrashFolder::inHome(places_.dataHome, Make); });
    const QList<Mount> mounts = readMounts(places_.mounts);
    const quint64 id = mountOf(folder);
    const auto mount = std::find_if(mounts.begin(), mounts.end(),
                                    [id](const Mount& other) { return other.id == id; });
    if (mount != mounts.end() && keepsEntries(*mount)) {
        const QByteArray top = mount->point;
        result.emplace_back([this, top] { return TrashFolder::shared(top, places_.user, Make); });
        result.emplace_back([this, top] { return TrashFolder::own(top, places_.user, Make); });
    }
    return result;
}

Trash::Result Trash::put(const QByteArray& path, const std::atomic<bool>& isStopped) const
{
    Place place;
    if (!path.startsWith('/') || path.endsWith('/') || path.endsWith("/.") || path.endsWith("/.."))
        return {Trash::Outcome::Refused, 0, {}};
    struct stat about = {};
    if (!openPlace(path, place) ||
        ::fstatat(place.folder.get(), place.name.constData(), &about, AT_SYMLINK_NOFOLLOW) != 0)
        return {errno == ENOENT ? Trash::Outcome::Gone : Trash::Outcome::Failed, errno, {}};
    for (const TrashFolder& trash : existing()) {
        if (const auto refused = refusedBy(trash, place, about))
            return *refused;
    }
    Trash::Result result{Trash::Outcome::NoTrash, 0, {}};
    for (const Candidate& candidate : candidates(place.folder.get())) {
        const auto trash = candidate();
        if (!trash) {
            result.error = errno;
            continue;
        }
        // It may have been made just now, or be far.
        if (const auto refused = refusedBy(*trash, place, about))
            return *refused;
        result = putInto(*trash, place, isStopped);
        if (result.outcome == Trash::Outcome::Done && S_ISDIR(about.st_mode))
            rememberSize(*trash, result.path.sliced(result.path.lastIndexOf('/') + 1));
        if (result.outcome != Trash::Outcome::NoTrash)
            break;
    }
    return result;
}
