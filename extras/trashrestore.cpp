// How entries get out of the trash: back to a place, or away for good.

#include "extras/trash.h"

#include "extras/entrychanges.h"

#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

namespace
{

constexpr qint64 LongestName = 255;
constexpr int MostNumbers = 100000;
constexpr mode_t UsualMode = 0777;

Trash::Result failed()
{
    return {Trash::Outcome::Failed, errno, {}};
}

/// Whether an entry is still the one that was listed.
bool isStillThere(const std::optional<TrashFolder>& trash, const TrashEntry& entry)
{
    struct stat about = {};
    return trash &&
           ::fstatat(trash->files(), entry.name.constData(), &about, AT_SYMLINK_NOFOLLOW) == 0 &&
           TrashedId{about.st_dev, about.st_ino} == entry.id;
}

/// The folder of a path, made with those above it where they are missing. Not open, with errno
/// set, if that cannot be.
FileHandle folderFor(const QByteArray& path)
{
    constexpr int Flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const QByteArray folder = path.first(path.lastIndexOf('/') + 1);
    FileHandle result(::open(folder.constData(), Flags));
    if (result.isOpen() || errno != ENOENT)
        return result;
    for (qsizetype end = folder.indexOf('/', 1); end >= 0; end = folder.indexOf('/', end + 1)) {
        if (::mkdir(folder.left(end).constData(), UsualMode) != 0 && errno != EEXIST)
            return result;
    }
    result.reset(::open(folder.constData(), Flags));
    return result;
}

/// Moves the entry to the first name in a row that is free; the name, or nothing with errno set.
QByteArray moveToFree(const TrashFolder& trash, const TrashEntry& entry, int folder,
                      const QByteArray& name, bool anyNumber)
{
    for (int number = 1; number <= (anyNumber ? MostNumbers : 1); ++number) {
        const QByteArray candidate =
            number == 1 ? name : NameParts::of(name).numbered(number, LongestName);
        if (renameToFree(trash.files(), entry.name, folder, candidate))
            return candidate;
        if (errno != EEXIST)
            break;
    }
    return {};
}

/// The first name in a row that is free, for what cannot be renamed there; or nothing.
QByteArray freeName(int folder, const QByteArray& name, bool anyNumber)
{
    struct stat about = {};
    if (!lookAt(folder, name, about))
        return name;
    const auto isPending = [](const QByteArray&) { return false; };
    return anyNumber ? freeNameIn(folder, name, LongestName, isPending) : QByteArray();
}

} // namespace

Trash::Result Trash::restore(const TrashEntry& entry, const QByteArray& path,
                             WhenTaken whenTaken) const
{
    const std::optional<TrashFolder> trash = at(entry.trash);
    if (!isStillThere(trash, entry))
        return {Trash::Outcome::Gone, 0, {}};
    const FileHandle folder = folderFor(path);
    if (!folder.isOpen())
        return failed();
    const QByteArray name = path.sliced(path.lastIndexOf('/') + 1);
    const bool anyNumber = whenTaken == WhenTaken::KeepBoth;
    bool isElsewhere = false;
    const auto place = [&] {
        QByteArray given = moveToFree(*trash, entry, folder.get(), name, anyNumber);
        isElsewhere = given.isEmpty() && errno == EXDEV;
        if (!isElsewhere)
            return given;
        given = freeName(folder.get(), name, anyNumber);
        errno = EEXIST;
        return given;
    };
    QByteArray given = place();
    if (given.isEmpty() && errno == EEXIST && whenTaken == WhenTaken::Replace) {
        const Trash::Result replaced = put(path);
        if (replaced.outcome != Trash::Outcome::Done && replaced.outcome != Trash::Outcome::Gone)
            return replaced;
        given = place();
    }
    if (given.isEmpty())
        return errno == EEXIST ? Result{Trash::Outcome::Taken, 0, path} : failed();
    const QByteArray where = path.first(path.size() - name.size()) + given;
    if (isElsewhere)
        return {Trash::Outcome::Elsewhere, EXDEV, where};
    // Whatever happens now, the entry must not be where nobody knows of it.
    ::fsync(folder.get());
    ::unlinkat(trash->info(), infoNameOf(entry.name).constData(), 0);
    return {Trash::Outcome::Done, 0, where};
}

bool Trash::forget(const TrashEntry& entry) const
{
    const std::optional<TrashFolder> trash = at(entry.trash);
    struct stat about = {};
    if (!trash || lookAt(trash->files(), entry.name, about) || errno != ENOENT)
        return false;
    ::unlinkat(trash->info(), infoNameOf(entry.name).constData(), 0);
    return true;
}

Trash::Result Trash::expunge(const TrashEntry& entry, const std::atomic<bool>& isStopped) const
{
    const std::optional<TrashFolder> trash = at(entry.trash);
    if (!isStillThere(trash, entry))
        return {Trash::Outcome::Gone, 0, {}};
    if (isStopped)
        return {Trash::Outcome::Failed, ECANCELED, {}};
    if (!S_ISDIR(entry.mode)) {
        if (::unlinkat(trash->files(), entry.name.constData(), 0) != 0)
            return failed();
    } else {
        const FileHandle expunged = trash->expunged(TrashFolder::Missing::Make);
        if (!expunged.isOpen())
            return failed();
        const QByteArray name = QByteArray::number(QRandomGenerator::global()->generate64(), 36);
        if (!renameToFree(trash->files(), entry.name, expunged.get(), name))
            return failed();
    }
    ::unlinkat(trash->info(), infoNameOf(entry.name).constData(), 0);
    return {};
}
