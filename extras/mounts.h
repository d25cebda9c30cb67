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
    friend bool operator==(const Mount&, const Mount&) = default;
};

/// The mounts that the text of "/proc/self/mountinfo" tells. Lines that say nothing are left out.
QList<Mount> parseMounts(QByteArrayView text);

/// The mounts that a file of that form tells; none if it cannot be read. Asks none of the file
/// systems anything.
QList<Mount> readMounts(const QByteArray& file);

/// Whether entries may be kept on a file system: it stores what it is given, may be written, and
/// answers without others that may be gone, as network places do.
bool keepsEntries(const Mount& mount);
