#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

/// A file system that is mounted.
struct Mount {
    quint64 id = 0;
    QByteArray point; ///< where: an absolute path
    QByteArray type;
    bool readOnly = false;
    QByteArray device = {}; ///< the numbers of its device: "8:17"
    friend bool operator==(const Mount&, const Mount&) = default;
};

/// The mounts that the text of "/proc/self/mountinfo" tells. Lines that say nothing are left out.
QList<Mount> parseMounts(QByteArrayView text);

/// The mounts that a file of that form tells; none if it cannot be read. Asks none of the file
/// systems anything.
QList<Mount> readMounts(const QByteArray& file);

/// The number of the mount that an open folder is on; 0 if the system does not tell.
quint64 mountOf(int folder);

/// What kind of file system a mount has, "exfat", where its type tells only that a program provides
/// it: what the type names behind "fuse.", or what the file of its device in `devices`, where the
/// system notes what it has found on each, says. Empty if nobody knows.
QByteArray fileSystemName(const Mount& mount, const QByteArray& devices);
/// Of the file system that an open folder is on.
QByteArray fileSystemName(int folder);

/// Whether entries may be kept on a file system: it stores what it is given, and may be written.
bool keepsEntries(const Mount& mount);
/// Whether somebody else answers for it, a server or a program, who may be gone: a question may
/// never come back.
bool isFar(const Mount& mount);
