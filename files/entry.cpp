#include "files/entry.h"

#include "files/names.h"

#include <QStringList>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr mode_t EverybodysFolder = 0777;

struct FreeMemory {
    void operator()(char* memory) const { std::free(memory); } // NOLINT(*-no-malloc)
};
using SystemText = std::unique_ptr<char, FreeMemory>;

} // namespace

EntryInfo::EntryInfo(const QString& path)
{
    const QByteArray encoded = encodedPath(path);
    struct stat info = {};
    if (::lstat(encoded.constData(), &info) != 0)
        return;
    isLink_ = S_ISLNK(info.st_mode);
    if (isLink_ && ::stat(encoded.constData(), &info) != 0)
        return;
    exists_ = true;
    mode_ = info.st_mode;
    size_ = info.st_size;
    owner_ = info.st_uid;
}

bool EntryInfo::isFolder() const
{
    return S_ISDIR(mode_);
}

bool EntryInfo::isFile() const
{
    return S_ISREG(mode_);
}

QString EntryInfo::owner() const
{
    if (!exists_)
        return {};
    constexpr size_t Room = 16 * 1024;
    std::vector<char> texts(Room);
    passwd user = {};
    passwd* found = nullptr;
    if (::getpwuid_r(owner_, &user, texts.data(), texts.size(), &found) != 0 || found == nullptr)
        return {};
    return decodeName(found->pw_name);
}

std::optional<EntryId> entryId(const QString& path)
{
    struct statx info = {};
    if (::statx(AT_FDCWD, encodedPath(path).constData(), AT_SYMLINK_NOFOLLOW,
                STATX_TYPE | STATX_INO | STATX_BTIME, &info) != 0)
        return std::nullopt;
    return EntryId{info.stx_dev_major,    info.stx_dev_minor,
                   info.stx_ino,          unsigned(info.stx_mode) & S_IFMT,
                   info.stx_btime.tv_sec, info.stx_btime.tv_nsec};
}

bool entryExists(const QString& path)
{
    struct stat info = {};
    return ::stat(encodedPath(path).constData(), &info) == 0;
}

bool isTaken(const QString& path)
{
    struct stat info = {};
    return ::lstat(encodedPath(path).constData(), &info) == 0;
}

bool removeFile(const QString& path)
{
    return ::unlink(encodedPath(path).constData()) == 0;
}

bool makeFolder(const QString& path)
{
    return ::mkdir(encodedPath(path).constData(), EverybodysFolder) == 0;
}

bool renameEntry(const QString& from, const QString& to)
{
    const QByteArray source = encodedPath(from);
    const QByteArray target = encodedPath(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0)
        return true;
    // Some file systems do not know the flag.
    return (errno == EINVAL || errno == ENOSYS) && !isTaken(to) &&
           std::rename(source.constData(), target.constData()) == 0;
}

QString canonicalPath(const QString& path)
{
    const QByteArray encoded = path.isEmpty() ? QByteArrayLiteral(".") : encodedPath(path);
    const SystemText found(::realpath(encoded.constData(), nullptr));
    return found ? decodeName(found.get()) : QString();
}

QString absolutePath(const QString& path)
{
    const bool relative = !path.startsWith(QLatin1Char('/'));
    QString result;
    if (relative) {
        result = canonicalPath(QString());
        if (result == QLatin1String("/"))
            result.clear();
    }
    for (const QString& part : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part != QLatin1String("."))
            result += QLatin1Char('/') + part;
    }
    return result.isEmpty() ? QStringLiteral("/") : result;
}
