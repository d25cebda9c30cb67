#include "extras/entrychanges.h"

#include "files/filehandle.h"

#include <QHashFunctions>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr qint64 Billion = 1000000000;

/// Takes the name with an empty file or folder, so that nothing but that can be replaced then.
bool takeName(int folder, const QByteArray& name, bool byFolder)
{
    if (byFolder)
        return mkdirat(folder, name.constData(), 0700) == 0;
    return FileHandle(openat(folder, name.constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600))
        .isOpen();
}

} // namespace

bool renameToFree(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to)
{
    if (renameat2(fromFolder, from.constData(), toFolder, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return false;
    struct stat info = {};
    if (!lookAt(fromFolder, from, info) || !takeName(toFolder, to, S_ISDIR(info.st_mode)))
        return false;
    if (renameat(fromFolder, from.constData(), toFolder, to.constData()) == 0)
        return true;
    const int error = errno;
    unlinkat(toFolder, to.constData(), S_ISDIR(info.st_mode) ? AT_REMOVEDIR : 0);
    errno = error;
    return false;
}

bool lookAt(int folder, const QByteArray& name, struct stat& info)
{
    return fstatat(folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

bool flushAll(int folder)
{
    return syncfs(folder) == 0;
}

qint64 nanoseconds(const timespec& time)
{
    return qint64(time.tv_sec) * Billion + time.tv_nsec;
}

timespec timeOf(qint64 nanoseconds)
{
    qint64 seconds = nanoseconds / Billion;
    qint64 rest = nanoseconds % Billion;
    if (rest < 0) {
        rest += Billion;
        --seconds;
    }
    return {time_t(seconds), long(rest)};
}

size_t qHash(const EntryIdentity& identity, size_t seed)
{
    return qHashMulti(seed, identity.device, identity.inode);
}

NameParts NameParts::of(const QByteArray& name)
{
    // What is longer tells of no kind of file, and would leave no room for the number.
    constexpr qsizetype LongestExtension = 32;
    const qsizetype dot = name.lastIndexOf('.');
    if (dot <= 0 || dot == name.size() - 1 || name.size() - dot > LongestExtension)
        return {name, {}};
    return {name.left(dot), name.mid(dot)};
}

QByteArray NameParts::numbered(int number, qint64 mostBytes) const
{
    const QByteArray tail = " (" + QByteArray::number(number) + ")" + extension;
    QByteArray start = stem;
    if (start.size() + tail.size() > mostBytes) {
        qsizetype cut = qsizetype(std::max<qint64>(mostBytes - tail.size(), 0));
        while (cut > 0 && (uchar(start[cut]) & 0xc0) == 0x80)
            --cut;
        start.truncate(cut);
    }
    return start + tail;
}
