#include "extras/metadata.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr const char* AccessList = "system.posix_acl_access";

/// What a user may not set, or a file system does not have.
bool isRefusal(int error)
{
    return error == EPERM || error == EACCES || error == EOPNOTSUPP || error == ENOSYS ||
           error == EINVAL;
}

int important(int error)
{
    return isRefusal(error) ? 0 : error;
}

/// The names of extended attributes, each ended by a zero; empty if there are none. What grows
/// between the two questions is asked again.
QByteArray attributeNames(int file)
{
    char few[512];
    ssize_t size = flistxattr(file, few, sizeof few);
    if (size >= 0)
        return {few, qsizetype(size)};
    QByteArray names;
    while (errno == ERANGE) {
        names.resize(qsizetype(std::max<ssize_t>(flistxattr(file, nullptr, 0), 0)));
        size = flistxattr(file, names.data(), size_t(names.size()));
        if (size >= 0)
            return names.left(qsizetype(size));
    }
    return {};
}

int copyAttribute(int from, int to, const char* name)
{
    QByteArray value;
    for (;;) {
        const ssize_t size = fgetxattr(from, name, nullptr, 0);
        if (size < 0)
            return errno == ENODATA ? 0 : important(errno);
        value.resize(qsizetype(size));
        const ssize_t got = fgetxattr(from, name, value.data(), size_t(value.size()));
        if (got >= 0) {
            value.truncate(qsizetype(got));
            break;
        }
        if (errno != ERANGE)
            return errno == ENODATA ? 0 : important(errno);
    }
    return fsetxattr(to, name, value.constData(), size_t(value.size()), 0) == 0 ? 0
                                                                                : important(errno);
}

template<typename Work>
void forEachName(const QByteArray& names, const Work& work)
{
    for (qsizetype at = 0; at < names.size();) {
        const char* name = names.constData() + at;
        work(name);
        at += qsizetype(std::strlen(name)) + 1;
    }
}

bool contains(const QByteArray& names, const char* wanted)
{
    bool found = false;
    forEachName(names, [&](const char* name) { found = found || std::strcmp(name, wanted) == 0; });
    return found;
}

int copyAttributes(int from, int to, bool isFolder)
{
    const QByteArray names = attributeNames(from);
    const QByteArray inherited = attributeNames(to);
    // The target's folder may give what is new in it an access list that the source has not.
    forEachName(inherited, [&](const char* name) {
        if (std::strncmp(name, "system.posix_acl_", 17) == 0 && !contains(names, name))
            fremovexattr(to, name);
    });
    int error = 0;
    forEachName(names, [&](const char* name) {
        if (isFolder && std::strcmp(name, AccessList) == 0)
            return;
        const int failed = copyAttribute(from, to, name);
        error = error != 0 ? error : failed;
    });
    return error;
}

/// The permissions that suit who owns it now: another owner does not lend his powers.
mode_t modeFor(const struct stat& wanted, const struct stat& now)
{
    mode_t mode = wanted.st_mode & 07777;
    if (now.st_uid != wanted.st_uid)
        mode &= ~mode_t(S_ISUID);
    if (now.st_gid != wanted.st_gid)
        mode &= ~mode_t(S_ISGID);
    return mode;
}

} // namespace

int copyOwnerAndAttributes(int from, int to, const struct stat& info)
{
    struct stat now = {};
    if (fstat(to, &now) != 0)
        return errno;
    if (now.st_uid != info.st_uid || now.st_gid != info.st_gid) {
        // Who may not give it away may still belong to the group.
        if (fchown(to, info.st_uid, info.st_gid) != 0 &&
            (!isRefusal(errno) || (fchown(to, uid_t(-1), info.st_gid) != 0 && !isRefusal(errno))))
            return errno;
    }
    return copyAttributes(from, to, S_ISDIR(info.st_mode));
}

QByteArray accessListOf(int folder)
{
    QByteArray list;
    ssize_t size = fgetxattr(folder, AccessList, nullptr, 0);
    while (size > 0) {
        list.resize(qsizetype(size));
        size = fgetxattr(folder, AccessList, list.data(), size_t(list.size()));
        if (size >= 0)
            return list.left(qsizetype(size));
        // It may have grown between the two questions.
        size = errno == ERANGE ? fgetxattr(folder, AccessList, nullptr, 0) : 0;
    }
    return {};
}

int setAccessList(int folder, const QByteArray& list)
{
    if (list.isEmpty() ||
        fsetxattr(folder, AccessList, list.constData(), size_t(list.size()), 0) == 0)
        return 0;
    return important(errno);
}

int setModeAndTimes(int to, const struct stat& info)
{
    struct stat now = {};
    if (fstat(to, &now) != 0)
        return errno;
    if (fchmod(to, modeFor(info, now)) != 0 && !isRefusal(errno))
        return errno;
    const timespec times[] = {info.st_atim, info.st_mtim};
    return futimens(to, times) == 0 ? 0 : important(errno);
}

int setMetadataOf(int folder, const QByteArray& name, const struct stat& info)
{
    struct stat now = {};
    if (fstatat(folder, name.constData(), &now, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    if (now.st_uid != info.st_uid || now.st_gid != info.st_gid) {
        if (fchownat(folder, name.constData(), info.st_uid, info.st_gid, AT_SYMLINK_NOFOLLOW) !=
                0 &&
            (!isRefusal(errno) || (fchownat(folder, name.constData(), uid_t(-1), info.st_gid,
                                            AT_SYMLINK_NOFOLLOW) != 0 &&
                                   !isRefusal(errno))))
            return errno;
        fstatat(folder, name.constData(), &now, AT_SYMLINK_NOFOLLOW);
    }
    // A link has no permissions of its own.
    if (!S_ISLNK(info.st_mode) && fchmodat(folder, name.constData(), modeFor(info, now), 0) != 0 &&
        !isRefusal(errno))
        return errno;
    const timespec times[] = {info.st_atim, info.st_mtim};
    return utimensat(folder, name.constData(), times, AT_SYMLINK_NOFOLLOW) == 0 ? 0
                                                                                : important(errno);
}
