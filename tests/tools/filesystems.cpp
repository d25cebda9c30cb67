#include "tests/tools/filesystems.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace fs = std::filesystem;

namespace
{

bool mountMemory(const QByteArray& folder, const char* options)
{
    return mount("tmpfs", folder.constData(), "tmpfs", MS_NOSUID, options) == 0;
}

dev_t deviceOf(const QByteArray& path)
{
    struct stat info = {};
    return stat(path.constData(), &info) == 0 ? info.st_dev : 0;
}

/// A mounted file system for the rest of the process; its mount is the process's own.
QByteArray mountedPlace()
{
    static const OwnFolder folder(usualPlace());
    static const bool mounted = mountMemory(folder.path(), "size=64m");
    return mounted ? folder.path() : QByteArray();
}

} // namespace

void enterOwnMounts()
{
    if (unshare(CLONE_NEWNS) == 0)
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
}

OwnFolder::OwnFolder(const QByteArray& parent) : path_(parent + "/tst_move-XXXXXX")
{
    if (mkdtemp(path_.data()) == nullptr)
        qFatal("no folder can be made in \"%s\"", parent.constData());
}

OwnFolder::~OwnFolder()
{
    // What a test locked must be opened before it can be emptied.
    std::error_code error;
    const auto all = fs::perms::owner_all;
    const fs::path top(path_.toStdString());
    const auto options = fs::directory_options::skip_permission_denied;
    for (auto it = fs::recursive_directory_iterator(top, options, error);
         it != fs::recursive_directory_iterator(); it.increment(error)) {
        if (it->symlink_status(error).type() == fs::file_type::directory)
            fs::permissions(it->path(), all, fs::perm_options::add, error);
    }
    fs::permissions(top, all, fs::perm_options::add, error);
    fs::remove_all(top, error);
}

QList<QByteArray> OwnFolder::names() const
{
    QList<QByteArray> result;
    for (const auto& entry : fs::directory_iterator(path_.toStdString()))
        result.append(QByteArray::fromStdString(entry.path().filename().string()));
    std::sort(result.begin(), result.end());
    return result;
}

QByteArray usualPlace()
{
    return QFile::encodeName(QDir(QDir::tempPath()).canonicalPath());
}

QByteArray otherPlace()
{
    const QList<QByteArray> candidates{"/dev/shm", "/tmp", "/var/tmp",
                                       QFile::encodeName(QDir::homePath()),
                                       QFile::encodeName(QDir::currentPath())};
    for (const QByteArray& candidate : candidates) {
        if (access(candidate.constData(), W_OK | X_OK) == 0 &&
            deviceOf(candidate) != deviceOf(usualPlace()))
            return candidate;
    }
    const QByteArray mounted = mountedPlace();
    if (mounted.isEmpty())
        qFatal("there is one file system only: start the test as root, or with another TMPDIR");
    return mounted;
}

SmallFileSystem::SmallFileSystem()
    : place_(usualPlace()), isMounted_(mountMemory(place_.path(), "size=1m"))
{
}

SmallFileSystem::~SmallFileSystem()
{
    if (isMounted_)
        umount2(place_.path().constData(), MNT_DETACH);
}
