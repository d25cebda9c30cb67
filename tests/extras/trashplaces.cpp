#include "tests/extras/trashplaces.h"

#include "tests/support/bytefiles.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace
{

QByteArray mountIdOf(const QByteArray& path)
{
    struct statx about = {};
    if (statx(AT_FDCWD, path.constData(), 0, STATX_MNT_ID, &about) != 0)
        qFatal("the system does not tell what is mounted");
    return QByteArray::number(quint64(about.stx_mnt_id));
}

} // namespace

// Where nothing is written to a disk all goes much faster.
TrashPlaces::TrashPlaces(Home home) : folder_(home == Here ? otherPlace() : usualPlace())
{
    making::folder(top());
    if (home == Elsewhere)
        elsewhere_.emplace(otherPlace());
    places_.dataHome = home == Elsewhere ? elsewhere_->path("data") : folder_.path("data");
    places_.mounts = folder_.path("mounts");
    places_.user = geteuid();
    tellMount("ext4", "rw");
}

QByteArray TrashPlaces::ownTrash() const
{
    return top(".Trash-" + QByteArray::number(places_.user));
}

QByteArray TrashPlaces::relative(const QByteArray& path) const
{
    return path.startsWith(folder_.path()) ? path.sliced(folder_.path().size()) : path;
}

void TrashPlaces::tellMount(const QByteArray& type, const QByteArray& options,
                            const QByteArray& more) const
{
    unlink(places_.mounts.constData());
    making::file(places_.mounts, mountIdOf(top()) + " 1 8:1 / " + top() + ' ' + options + " - " +
                                     type + " /dev/sdz1 rw\n" + more);
}

TrashEntry TrashPlaces::entry(const QByteArray& path) const
{
    for (const TrashEntry& entry : trash().entries()) {
        if (entry.path == path)
            return entry;
    }
    qCritical("nothing in the trash was at %s", path.constData());
    QTest::qFail("no such entry", __FILE__, __LINE__);
    return {};
}

QByteArrayList namesOf(const QByteArray& folder)
{
    if (!isThere(folder))
        return {};
    return namesIn(folder);
}
