#include "extras/entrymark.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/statfs.h>

namespace
{

/// FAT, exFAT, what programs serve (FUSE), those of servers that may make numbers up (SMB, 9p),
/// and layers. Not all of them are in linux/magic.h.
constexpr std::array<quint32, 7> WithoutLastingNumbers{
    0x4d44, 0x2011bab0, 0x65735546, 0xff534d42, 0xfe534d42, 0x01021997, 0x794c7630,
};

/// Steps of time that file systems tell, in nanoseconds.
constexpr std::array<qint64, 5> TimeSteps{100, 1000, 10000000, 1000000000, 2000000000};

bool isCutFrom(qint64 time, qint64 whole)
{
    return time == whole ||
           std::any_of(TimeSteps.begin(), TimeSteps.end(), [time, whole](qint64 step) {
               return time % step == 0 && time <= whole && whole - time < step;
           });
}

qint64 birthOf(int folder, const QByteArray& name)
{
    struct statx info = {};
    constexpr int Flags = AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH;
    if (statx(folder, name.constData(), Flags, STATX_BTIME, &info) != 0 ||
        (info.stx_mask & STATX_BTIME) == 0)
        return 0;
    return nanoseconds({time_t(info.stx_btime.tv_sec), long(info.stx_btime.tv_nsec)});
}

} // namespace

EntryMark EntryMark::of(const struct stat& info)
{
    EntryMark mark;
    mark.identity = EntryIdentity::of(info);
    mark.kind = info.st_mode & S_IFMT;
    mark.size = info.st_size;
    mark.modified = nanoseconds(info.st_mtim);
    return mark;
}

EntryMark EntryMark::withBirth(int folder, const QByteArray& name, const struct stat& info)
{
    EntryMark mark = of(info);
    mark.born = birthOf(folder, name);
    return mark;
}

bool hasLastingNumbers(int file)
{
    struct statfs info = {};
    return fstatfs(file, &info) == 0 &&
           std::find(WithoutLastingNumbers.begin(), WithoutLastingNumbers.end(),
                     quint32(info.f_type)) == WithoutLastingNumbers.end();
}

bool isUnchanged(const EntryMark& mark, const struct stat& now)
{
    return (now.st_mode & S_IFMT) == mark.kind &&
           (S_ISDIR(mark.kind) ||
            (now.st_size == mark.size && isCutFrom(nanoseconds(now.st_mtim), mark.modified)));
}

bool isThat(const EntryMark& mark, const struct stat& now, int folder)
{
    return isUnchanged(mark, now) &&
           (now.st_ino == mark.identity.inode || !hasLastingNumbers(folder));
}

bool isStill(const EntryMark& mark, int folder, const QByteArray& name, const struct stat& now)
{
    const bool knowsDevice = mark.identity.device != 0;
    if ((now.st_mode & S_IFMT) != mark.kind || (knowsDevice && now.st_dev != mark.identity.device))
        return false;
    const bool hasNumber = now.st_ino == mark.identity.inode;
    const qint64 born = mark.born != 0 ? birthOf(folder, name) : 0;
    if (born != 0 && born != mark.born)
        return false;
    // While it stays mounted no other one that is there at the same time has its number.
    if (hasNumber && (knowsDevice || hasLastingNumbers(folder)))
        return true;
    if (!hasNumber && hasLastingNumbers(folder))
        return false;
    return born != 0 || (!S_ISDIR(mark.kind) && isUnchanged(mark, now));
}
