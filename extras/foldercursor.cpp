#include "extras/foldercursor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{

constexpr int FolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;

/// The length of what two paths have in common, whole names only.
qsizetype commonLength(const QByteArray& one, const QByteArray& other)
{
    const qsizetype most = std::min(one.size(), other.size());
    qsizetype same = 0;
    qsizetype names = 0;
    while (same < most && one[same] == other[same]) {
        if (one[same] == '/')
            names = same;
        ++same;
    }
    const bool oneEnds = same == one.size() && (same == other.size() || other[same] == '/');
    const bool otherEnds = same == other.size() && (same == one.size() || one[same] == '/');
    return oneEnds || otherEnds ? same : names;
}

} // namespace

FileHandle FolderCursor::openTop(const QByteArray& path)
{
    return FileHandle(open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool FolderCursor::go(const QByteArray& path)
{
    const qsizetype common = commonLength(path_, path);
    while (!steps_.empty() && steps_.back().end > common) {
        if (!up())
            forget();
    }
    qsizetype begin = steps_.empty() ? 0 : steps_.back().end + 1;
    while (begin < path.size()) {
        qsizetype end = path.indexOf('/', begin);
        if (end < 0)
            end = path.size();
        if (!down(path, begin, end))
            return false;
        begin = end + 1;
    }
    return top_.isOpen();
}

void FolderCursor::forget()
{
    steps_.clear();
    path_.clear();
}

bool FolderCursor::down(const QByteArray& path, qsizetype begin, qsizetype end)
{
    const QByteArray name = path.mid(begin, end - begin);
    FileHandle opened(openat(folder(), name.constData(), FolderFlags));
    struct stat info = {};
    if (!opened.isOpen() || fstat(opened.get(), &info) != 0)
        return false;
    steps_.push_back({end, info.st_dev, info.st_ino, std::move(opened)});
    path_ = path.left(end);
    if (steps_.size() > MostOpen)
        steps_[steps_.size() - 1 - MostOpen].folder.reset();
    return true;
}

/// False if the way back does not lead where it came from.
bool FolderCursor::up()
{
    const size_t count = steps_.size();
    if (count > 1 && !steps_[count - 2].folder.isOpen()) {
        Step& above = steps_[count - 2];
        FileHandle opened(openat(folder(), "..", FolderFlags));
        struct stat info = {};
        if (!opened.isOpen() || fstat(opened.get(), &info) != 0 || info.st_dev != above.device ||
            info.st_ino != above.inode)
            return false;
        above.folder = std::move(opened);
    }
    steps_.pop_back();
    path_.truncate(steps_.empty() ? 0 : steps_.back().end);
    return true;
}

QByteArray below(const QByteArray& folder, const QByteArray& name)
{
    if (folder.isEmpty())
        return name;
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

QByteArray parentOf(const QByteArray& path)
{
    return path.left(std::max<qsizetype>(path.lastIndexOf('/'), 0));
}

QByteArray nameOf(const QByteArray& path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}
