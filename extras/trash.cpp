#include "extras/trash.h"

#include "extras/mounts.h"
#include "extras/trashinfo.h"
#include "extras/trashsizes.h"

#include <QByteArrayList>
#include <QDateTime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace
{

constexpr QByteArrayView InfoSuffix = ".trashinfo";
/// More than the longest path takes with each byte as three.
constexpr qsizetype MostInfoBytes = 64L * 1024;

struct InfoFile {
    QByteArray text;
    qint64 modified = 0;
};

std::optional<InfoFile> readInfo(const TrashFolder& trash, const QByteArray& infoName)
{
    const FileHandle file(::openat(trash.info(), infoName.constData(),
                                   O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat about = {};
    if (!file.isOpen() || ::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode))
        return std::nullopt;
    InfoFile info{QByteArray(MostInfoBytes, Qt::Uninitialized), about.st_mtime};
    info.text.truncate(
        std::max<ssize_t>(0, ::pread(file.get(), info.text.data(), size_t(MostInfoBytes), 0)));
    return info;
}

/// A path of an info file from the root on; empty for one that this trash must not tell of. A disk
/// from elsewhere does not say where things belong on others.
QByteArray whole(const QByteArray& path, const TrashFolder& trash)
{
    const QByteArray below = trash.base().endsWith('/') ? trash.base() : trash.base() + '/';
    const QByteArray result = path.startsWith('/') ? path : below + path;
    return trash.isHome() || result.startsWith(below) ? result : QByteArray();
}

/// What is in "files" under a name; an entry without a name if nothing is.
TrashEntry entryNamed(const TrashFolder& trash, const QByteArray& name, const TrashedSizes& sizes)
{
    struct stat about = {};
    if (::fstatat(trash.files(), name.constData(), &about, AT_SYMLINK_NOFOLLOW) != 0)
        return {};
    TrashEntry entry;
    entry.trash = trash.path();
    entry.name = name;
    entry.mode = about.st_mode;
    entry.id = {about.st_dev, about.st_ino};
    if (!S_ISDIR(about.st_mode))
        entry.bytes = about.st_size;
    const auto info = readInfo(trash, infoNameOf(name));
    const auto told = info ? parseTrashInfo(info->text) : std::nullopt;
    if (told) {
        entry.path = whole(told->path, trash);
        entry.deleted = told->deleted;
    }
    const auto size = sizes.find(name);
    if (S_ISDIR(about.st_mode) && info && size != sizes.end() && size->infoTime == info->modified)
        entry.bytes = size->bytes;
    return entry;
}

bool isThere(int folder, const QByteArray& name)
{
    struct stat about = {};
    return ::fstatat(folder, name.constData(), &about, AT_SYMLINK_NOFOLLOW) == 0;
}

/// Info files of nothing, which another program may be about to make something of if they are new.
void removeStaleInfos(const TrashFolder& trash, qint64 settledBefore)
{
    for (const QByteArray& infoName : namesIn(trash.info())) {
        struct stat about = {};
        if (infoName.endsWith(InfoSuffix) &&
            !isThere(trash.files(), infoName.chopped(InfoSuffix.size())) &&
            ::fstatat(trash.info(), infoName.constData(), &about, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(about.st_mode) && about.st_mtime <= settledBefore)
            ::unlinkat(trash.info(), infoName.constData(), 0);
    }
}

void forgetStaleSizes(const TrashFolder& trash)
{
    tidyTrashedSizes(trash.folder());
    const TrashedSizes before = readTrashedSizes(trash.folder());
    TrashedSizes after = before;
    after.removeIf([&trash](const auto& size) { return !isThere(trash.files(), size.key()); });
    if (after != before)
        writeTrashedSizes(trash.folder(), after);
}

QList<TrashEntry> entriesOf(const std::vector<TrashFolder>& trashes,
                            const Trash::GoesOn& goesOn = {})
{
    QList<TrashEntry> result;
    for (const TrashFolder& trash : trashes) {
        const TrashedSizes sizes = readTrashedSizes(trash.folder());
        for (const QByteArray& name : namesIn(trash.files())) {
            if (goesOn && !goesOn(result.size()))
                return result;
            const TrashEntry entry = entryNamed(trash, name, sizes);
            if (!entry.name.isEmpty())
                result.append(entry);
        }
    }
    return result;
}

void tidyAll(const std::vector<TrashFolder>& trashes, qint64 settledAfter)
{
    const qint64 settledBefore = QDateTime::currentSecsSinceEpoch() - settledAfter;
    for (const TrashFolder& trash : trashes) {
        removeStaleInfos(trash, settledBefore);
        forgetStaleSizes(trash);
    }
}

} // namespace

QByteArray TrashEntry::formerName() const
{
    const QByteArray former = path.sliced(path.lastIndexOf('/') + 1);
    return former.isEmpty() ? name : former;
}

Trash::Places Trash::placesOfUser()
{
    Places places;
    const QByteArray home = qgetenv("HOME");
    places.dataHome = qgetenv("XDG_DATA_HOME");
    if (!places.dataHome.startsWith('/'))
        places.dataHome = home.startsWith('/') ? home + "/.local/share" : QByteArray();
    places.mounts = "/proc/self/mountinfo";
    places.user = ::geteuid();
    return places;
}

/// Of the file systems that answer at once.
std::vector<QByteArray> Trash::tops() const
{
    std::vector<QByteArray> result;
    for (const Mount& mount : readMounts(places_.mounts)) {
        if (keepsEntries(mount) && !isFar(mount))
            result.push_back(mount.point);
    }
    return result;
}

QByteArrayList Trash::farTops() const
{
    QByteArrayList result;
    for (const Mount& mount : readMounts(places_.mounts)) {
        if (keepsEntries(mount) && isFar(mount) && !result.contains(mount.point))
            result.append(mount.point);
    }
    return result;
}

std::vector<TrashFolder> Trash::existingAt(const QByteArray& top) const
{
    std::vector<TrashFolder> result;
    for (auto* open : {&TrashFolder::shared, &TrashFolder::own}) {
        if (auto trash = open(top, places_.user, TrashFolder::Missing::Leave))
            result.push_back(std::move(*trash));
    }
    return result;
}

std::vector<TrashFolder> Trash::existing() const
{
    std::vector<TrashFolder> result;
    // The same place may be mounted several times.
    const auto add = [&result](TrashFolder trash) {
        if (std::none_of(result.begin(), result.end(),
                         [&trash](const TrashFolder& other) { return other.id() == trash.id(); }))
            result.push_back(std::move(trash));
    };
    if (auto home = TrashFolder::inHome(places_.dataHome, TrashFolder::Missing::Leave))
        add(std::move(*home));
    for (const QByteArray& top : tops()) {
        for (TrashFolder& trash : existingAt(top))
            add(std::move(trash));
    }
    return result;
}

std::optional<TrashFolder> Trash::at(const QByteArray& path) const
{
    if (path == TrashFolder::homePath(places_.dataHome))
        return TrashFolder::inHome(places_.dataHome, TrashFolder::Missing::Leave);
    for (const Mount& mount : readMounts(places_.mounts)) {
        if (path == TrashFolder::sharedPath(mount.point, places_.user))
            return TrashFolder::shared(mount.point, places_.user, TrashFolder::Missing::Leave);
        if (path == TrashFolder::ownPath(mount.point, places_.user))
            return TrashFolder::own(mount.point, places_.user, TrashFolder::Missing::Leave);
    }
    return std::nullopt;
}

QList<TrashEntry> Trash::entries(const GoesOn& goesOn) const
{
    return entriesOf(existing(), goesOn);
}

QList<TrashEntry> Trash::entriesAt(const QByteArray& top) const
{
    return entriesOf(existingAt(top));
}

void Trash::tidy() const
{
    tidyAll(existing(), places_.settledAfter);
}

void Trash::tidyAt(const QByteArray& top) const
{
    tidyAll(existingAt(top), places_.settledAfter);
}
