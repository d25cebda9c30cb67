#include "extras/entrychanges.h"

#include <QHashFunctions>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr qint64 Billion = 1000000000;

} // namespace

bool renameToFree(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to)
{
    if (renameat2(fromFolder, from.constData(), toFolder, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return false;
    struct stat info = {};
    if (lookAt(toFolder, to, info)) {
        errno = EEXIST;
        return false;
    }
    return renameat(fromFolder, from.constData(), toFolder, to.constData()) == 0;
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
