#include "extras/targetfolder.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{

/// An open folder and those that it lies in, up to the root of the system.
std::vector<EntryIdentity> foldersAbove(int folder)
{
    std::vector<EntryIdentity> above;
    struct stat info = {};
    FileHandle current;
    while (fstat(folder, &info) == 0) {
        const EntryIdentity identity = EntryIdentity::of(info);
        if (!above.empty() && above.back() == identity)
            break;
        above.push_back(identity);
        FileHandle next(openat(folder, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!next.isOpen())
            break;
        current = std::move(next);
        folder = current.get();
    }
    return above;
}

} // namespace

TargetFolder::TargetFolder(const QByteArray& path, const QByteArray& prefix)
    : cursor_(FolderCursor::openTop(path)), prefix_(prefix)
{
    struct stat info = {};
    if (!isOpen() || fstat(cursor_.top(), &info) != 0) {
        error_ = errno;
        return;
    }
    device_ = info.st_dev;
    limits_ = TargetLimits::of(cursor_.top());
    above_ = foldersAbove(cursor_.top());
}

bool TargetFolder::isBelow(const struct stat& folder) const
{
    return std::find(above_.begin(), above_.end(), EntryIdentity::of(folder)) != above_.end();
}

QByteArray TargetFolder::temporaryName()
{
    return prefix_ + QByteArray::number(++count_, 36);
}
