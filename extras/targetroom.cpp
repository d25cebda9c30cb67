#include "extras/targetroom.h"

#include <sys/statvfs.h>

#include <algorithm>

namespace
{

/// What is told as larger blocks is how much a server takes at once, but for what is known to be
/// made of clusters.
constexpr qint64 MostBlockBytes = 64L * 1024;
/// The unit of stat(2).
constexpr qint64 StoredUnit = 512;

} // namespace

TargetRoom::TargetRoom(int folder, const TargetLimits& limits) : keepsHoles_(limits.keepsHoles)
{
    struct statvfs room = {};
    if (fstatvfs(folder, &room) != 0)
        return;
    const auto block = qint64(room.f_frsize);
    freeBytes_ = qint64(room.f_bavail) * block;
    if (limits.hasClusters || block <= MostBlockBytes)
        blockBytes_ = std::max<qint64>(block, 1);
}

qint64 TargetRoom::ofFile(const struct stat& file) const
{
    const auto size = qint64(file.st_size);
    // What is short may be stored where no block is counted.
    const qint64 stored = std::max(qint64(file.st_blocks) * StoredUnit, qint64(1));
    const qint64 bytes = keepsHoles_ ? std::min(stored, size) : size;
    return (bytes + blockBytes_ - 1) / blockBytes_ * blockBytes_;
}
