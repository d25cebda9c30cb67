#include "extras/metadata.h"

#include "extras/entrychanges.h"
#include "extras/targetlimits.h"
#include "files/filehandle.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

constexpr const char* AccessList = "system.posix_acl_access";
constexpr const char* AccessLists = "system.posix_acl_";
constexpr const char* OfUser = "user.";

/// What a user may not set.
bool isRefusal(int error)
{
    return error == EPERM || error == EACCES || error == EINVAL;
}

/// There is nothing of that kind on the whole file system.
bool isLack(int error)
{
    return error == EOPNOTSUPP || error == ENOSYS;
}

bool beginsWith(const char* name, const char* start)
{
    return std::strncmp(name, start, std::strlen(start)) == 0;
}

/// Whether this process may give files to others.
bool mayGiveAway()
{
    __user_cap_header_struct head = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    return syscall(SYS_capget, &head, data) == 0 && (data[0].effective & (1U << CAP_CHOWN)) != 0;
}

/// An entry whose extended attributes are asked for: an open one, or one that cannot be opened for
/// that, by a path that leads to it.
class Attributed
{
public:
    explicit Attributed(int file) : file_(file) {}
    explicit Attributed(const FileHandle& place)
        : path_("/proc/self/fd/" + QByteArray::number(place.get()))
    {
    }

    ssize_t list(char* names, size_t size) const
    {
        return path_.isEmpty() ? flistxattr(file_, names, size)
                               : listxattr(path_.constData(), names, size);
    }
    ssize_t get(const char* name, char* value, size_t size) const
    {
        return path_.isEmpty() ? fgetxattr(file_, name, value, size)
                               : getxattr(path_.constData(), name, value, size);
    }
    bool set(const char* name, const QByteArray& value) const
    {
        const auto size = size_t(value.size());
        return (path_.isEmpty()
                    ? fsetxattr(file_, name, value.constData(), size, 0)
                    : setxattr(path_.constData(), name, value.constData(), size, 0)) == 0;
    }
    bool remove(const char* name) const
    {
        return (path_.isEmpty() ? fremovexattr(file_, name)
                                : removexattr(path_.constData(), name)) == 0;
    }

private:
    int file_ = -1;
    QByteArray path_;
};

/// What a call that says how much there is gives. What grows between two questions is asked again.
/// False, with errno set, if it fails.
template<typename Ask>
bool askWhole(const Ask& ask, QByteArray& answer)
{
    char few[512];
    ssize_t size = ask(few, sizeof few);
    if (size >= 0) {
        answer = QByteArray(few, qsizetype(size));
        return true;
    }
    while (errno == ERANGE) {
        size = ask(nullptr, 0);
        if (size < 0)
            break;
        answer.resize(qsizetype(size));
        size = ask(answer.data(), size_t(answer.size()));
        if (size >= 0) {
            answer.truncate(qsizetype(size));
            return true;
        }
    }
    answer.clear();
    return false;
}

/// The names of extended attributes, each ended by a zero.
bool attributeNames(const Attributed& entry, QByteArray& names)
{
    return askWhole([&entry](char* into, size_t size) { return entry.list(into, size); }, names) ||
           isLack(errno);
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

/// What it means that an attribute could not be read or written. What belongs to the machine and
/// its administrator, such as a label of its policy, gets there what suits it, or nothing.
Kept withoutAttribute(const char* name, int error)
{
    const bool isList = beginsWith(name, AccessLists);
    const bool isOfMachine = !isList && !beginsWith(name, OfUser);
    if (isOfMachine && (isRefusal(error) || isLack(error)))
        return {};
    if (isLack(error))
        return {0, isList ? LacksRights : LacksAttributes};
    return {error, 0};
}

Kept copyAttribute(const Attributed& from, const Attributed& to, const char* name)
{
    QByteArray value;
    const auto ask = [&from, name](char* into, size_t size) { return from.get(name, into, size); };
    // Who has taken it away meanwhile did not want it.
    if (!askWhole(ask, value))
        return errno == ENODATA ? Kept() : withoutAttribute(name, errno);
    return to.set(name, value) ? Kept() : withoutAttribute(name, errno);
}

Kept copyAttributes(const Attributed& from, const Attributed& to, bool isFolder)
{
    Kept kept;
    QByteArray names;
    QByteArray inherited;
    if (!attributeNames(from, names) || !attributeNames(to, inherited))
        return {errno, 0};
    // The target's folder may give what is new in it an access list that the source has not.
    forEachName(inherited, [&](const char* name) {
        if (beginsWith(name, AccessLists) && !contains(names, name) && !to.remove(name) &&
            errno != ENODATA)
            kept += {errno, 0};
    });
    forEachName(names, [&](const char* name) {
        if (!isFolder || std::strcmp(name, AccessList) != 0)
            kept += copyAttribute(from, to, name);
    });
    return kept;
}

/// Gives an entry, which is in the state `now`, its owner. `change` is a call that does it.
template<typename Change>
Kept setOwner(const struct stat& wanted, const struct stat& now, const Change& change)
{
    if (now.st_uid == wanted.st_uid && now.st_gid == wanted.st_gid)
        return {};
    if (change(wanted.st_uid, wanted.st_gid))
        return {};
    // Whoever may give it away is stopped by a file system that has no owners alone. Numbers that
    // this process does not know cannot be given by it.
    if (isLack(errno) || (errno == EPERM && mayGiveAway()))
        return {0, LacksOwner};
    if (!isRefusal(errno))
        return {errno, 0};
    // Who may not give it away may still belong to the group.
    if (change(uid_t(-1), wanted.st_gid) || isRefusal(errno))
        return {};
    return {errno, 0};
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

/// What a failed change of permissions or times means. `folder` is on that file system.
Kept withoutFact(unsigned lack, int error, int folder)
{
    if (isLack(error) || (isRefusal(error) && !TargetLimits::of(folder).keepsRights))
        return {0, lack};
    return {error, 0};
}

/// What some file systems do not hold they drop without a word.
unsigned droppedOf(const struct stat& wanted, const struct stat& now)
{
    constexpr mode_t Permissions = 0777;
    constexpr qint64 LongestStep = 2000000000;
    unsigned dropped = 0;
    if (!S_ISLNK(wanted.st_mode) && (now.st_mode & Permissions) != (wanted.st_mode & Permissions))
        dropped |= LacksRights;
    if (std::abs(nanoseconds(now.st_mtim) - nanoseconds(wanted.st_mtim)) >= LongestStep)
        dropped |= LacksTime;
    return dropped;
}

} // namespace

Kept& Kept::operator+=(const Kept& more)
{
    if (error == 0)
        error = more.error;
    lacks |= more.lacks;
    return *this;
}

Kept copyOwnerAndAttributes(int from, int to, const struct stat& info)
{
    struct stat now = {};
    if (fstat(to, &now) != 0)
        return {errno, 0};
    Kept kept =
        setOwner(info, now, [to](uid_t user, gid_t group) { return fchown(to, user, group) == 0; });
    kept += copyAttributes(Attributed(from), Attributed(to), S_ISDIR(info.st_mode));
    return kept;
}

QByteArray accessListOf(int folder)
{
    QByteArray list;
    const auto ask = [folder](char* into, size_t size) {
        return fgetxattr(folder, AccessList, into, size);
    };
    askWhole(ask, list);
    return list;
}

Kept setAccessList(int folder, const QByteArray& list)
{
    if (list.isEmpty() || Attributed(folder).set(AccessList, list))
        return {};
    return withoutAttribute(AccessList, errno);
}

Kept setModeAndTimes(int to, const struct stat& info)
{
    struct stat now = {};
    if (fstat(to, &now) != 0)
        return {errno, 0};
    Kept kept;
    if (fchmod(to, modeFor(info, now)) != 0)
        kept += withoutFact(LacksRights, errno, to);
    const timespec times[] = {info.st_atim, info.st_mtim};
    if (futimens(to, times) != 0)
        kept += withoutFact(LacksTime, errno, to);
    if (fstat(to, &now) != 0)
        return {errno, 0};
    if (kept.error == 0)
        kept.lacks |= droppedOf(info, now);
    return kept;
}

Kept copyMetadata(const EntryPlace& from, const EntryPlace& to, const struct stat& info)
{
    const char* name = to.name.constData();
    struct stat now = {};
    if (!lookAt(to.folder, to.name, now))
        return {errno, 0};
    Kept kept = setOwner(info, now, [&to, name](uid_t user, gid_t group) {
        return fchownat(to.folder, name, user, group, AT_SYMLINK_NOFOLLOW) == 0;
    });
    // A link has no permissions of its own, nor what a user may set.
    if (!S_ISLNK(info.st_mode)) {
        const int flags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
        const FileHandle source(openat(from.folder, from.name.constData(), flags));
        const FileHandle made(source.isOpen() ? openat(to.folder, name, flags) : -1);
        if (!made.isOpen() || !lookAt(to.folder, to.name, now))
            return {errno, 0};
        kept += copyAttributes(Attributed(source), Attributed(made), false);
        if (fchmodat(to.folder, name, modeFor(info, now), 0) != 0)
            kept += withoutFact(LacksRights, errno, to.folder);
    }
    const timespec times[] = {info.st_atim, info.st_mtim};
    if (utimensat(to.folder, name, times, AT_SYMLINK_NOFOLLOW) != 0)
        kept += withoutFact(LacksTime, errno, to.folder);
    if (!lookAt(to.folder, to.name, now))
        return {errno, 0};
    if (kept.error == 0)
        kept.lacks |= droppedOf(info, now);
    return kept;
}
