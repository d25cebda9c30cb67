#include "extras/mounts.h"

#include "files/names.h"
#include "files/regularfile.h"

#include <QByteArrayList>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>

namespace
{

constexpr qsizetype MostMountBytes = 16L * 1024 * 1024;
constexpr qsizetype MostNoteBytes = 1024L * 1024;

/// What stores nothing: the kernel's own, what is only to be read, and what shows what lies
/// elsewhere.
constexpr std::array Unsuitable{
    "autofs",     "binfmt_misc", "bpf",           "cgroup",
    "cgroup2",    "configfs",    "cramfs",        "debugfs",
    "devpts",     "devtmpfs",    "efivarfs",      "fuse.gvfsd-fuse",
    "fuse.lxcfs", "fuse.portal", "fuse.snapfuse", "fuse.squashfuse",
    "fusectl",    "hugetlbfs",   "iso9660",       "mqueue",
    "nfsd",       "nsfs",        "proc",          "pstore",
    "ramfs",      "rpc_pipefs",  "securityfs",    "selinuxfs",
    "squashfs",   "sysfs",       "tracefs",
};

/// What waits for a server, beside all that begins with "fuse".
constexpr std::array OfServers{
    "9p", "afs", "ceph", "cifs", "coda", "ncpfs", "nfs", "nfs4", "smb3", "smbfs", "virtiofs",
};

template<typename Names>
bool isAmong(const Names& names, const QByteArray& type)
{
    return std::find(names.begin(), names.end(), type) != names.end();
}

bool isOctal(char digit)
{
    return digit >= '0' && digit <= '7';
}

/// Spaces and the like stand as a backslash and three octal digits.
QByteArray unescaped(const QByteArray& text)
{
    QByteArray result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == '\\' && i + 3 < text.size() && isOctal(text.at(i + 1)) &&
            isOctal(text.at(i + 2)) && isOctal(text.at(i + 3))) {
            result.append(char((text.at(i + 1) - '0') * 64 + (text.at(i + 2) - '0') * 8 +
                               (text.at(i + 3) - '0')));
            i += 3;
        } else {
            result.append(text.at(i));
        }
    }
    return result;
}

bool isReadOnly(const QByteArray& options)
{
    return options.split(',').contains("ro");
}

} // namespace

QList<Mount> parseMounts(QByteArrayView text)
{
    // Number, parent, device, root, mount point, options, any number of others, "-", type, source,
    // options of the file system.
    constexpr qsizetype Device = 2;
    constexpr qsizetype Point = 4;
    constexpr qsizetype Options = 5;
    QList<Mount> result;
    for (const QByteArray& line : text.toByteArray().split('\n')) {
        const QByteArrayList fields = line.split(' ');
        const qsizetype separator = fields.indexOf("-", Options + 1);
        if (separator < 0 || fields.size() < separator + 4)
            continue;
        bool isNumber = false;
        Mount mount;
        mount.id = fields.at(0).toULongLong(&isNumber);
        mount.device = fields.at(Device);
        mount.point = unescaped(fields.at(Point));
        mount.type = fields.at(separator + 1);
        mount.readOnly = isReadOnly(fields.at(Options)) || isReadOnly(fields.at(separator + 3));
        if (isNumber && mount.point.startsWith('/'))
            result.append(mount);
    }
    return result;
}

QList<Mount> readMounts(const QByteArray& file)
{
    const auto text = readRegular(decodeName(file), MostMountBytes);
    return text ? parseMounts(*text) : QList<Mount>();
}

quint64 mountOf(int folder)
{
    struct statx about = {};
    const bool known = ::statx(folder, "", AT_EMPTY_PATH, STATX_MNT_ID, &about) == 0 &&
                       (about.stx_mask & STATX_MNT_ID) != 0;
    return known ? about.stx_mnt_id : 0;
}

QByteArray fileSystemName(const Mount& mount, const QByteArray& devices)
{
    constexpr QByteArrayView Found = "E:ID_FS_TYPE=";
    if (!mount.type.startsWith("fuse"))
        return mount.type;
    if (const qsizetype dot = mount.type.indexOf('.'); dot >= 0)
        return mount.type.sliced(dot + 1);
    if (mount.type != "fuseblk")
        return {};
    const auto notes = readRegular(decodeName(devices + "/b" + mount.device), MostNoteBytes);
    for (const QByteArray& line : notes.value_or(QByteArray()).split('\n')) {
        if (line.startsWith(Found))
            return line.sliced(Found.size());
    }
    return {};
}

QByteArray fileSystemName(int folder)
{
    const quint64 id = mountOf(folder);
    for (const Mount& mount : readMounts("/proc/self/mountinfo")) {
        if (mount.id == id)
            return fileSystemName(mount, "/run/udev/data");
    }
    return {};
}

bool keepsEntries(const Mount& mount)
{
    return !mount.readOnly && !isAmong(Unsuitable, mount.type);
}

bool isFar(const Mount& mount)
{
    return mount.type.startsWith("fuse") || isAmong(OfServers, mount.type);
}
