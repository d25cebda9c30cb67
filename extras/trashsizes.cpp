#include "extras/trashsizes.h"

#include "extras/trashinfo.h"
#include "files/filehandle.h"

#include <QByteArrayList>
#include <QElapsedTimer>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

namespace
{

constexpr char SizesFile[] = "directorysizes";
constexpr char NewSizesFile[] = "directorysizes.quarn";
constexpr qsizetype MostSizeBytes = 64L * 1024 * 1024;
/// Folders below that depth are not looked into: each open one takes a descriptor.
constexpr int MostDepth = 64;

class Measure
{
public:
    explicit Measure(int milliseconds) : milliseconds_(milliseconds) { timer_.start(); }

    bool add(int parent, const char* name, int depth)
    {
        struct stat about = {};
        if (::fstatat(parent, name, &about, AT_SYMLINK_NOFOLLOW) != 0)
            return false;
        constexpr qint64 BlockBytes = 512;
        bytes += qint64(about.st_blocks) * BlockBytes;
        return !S_ISDIR(about.st_mode) || addBelow(parent, name, depth + 1);
    }

    qint64 bytes = 0;

private:
    bool addBelow(int parent, const char* name, int depth)
    {
        if (depth > MostDepth || timer_.hasExpired(milliseconds_))
            return false;
        const int folder = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (folder < 0)
            return false;
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(folder), ::closedir);
        if (entries == nullptr)
            return false;
        while (const dirent* entry = ::readdir(entries.get())) {
            const QByteArrayView entryName(entry->d_name);
            if (entryName != "." && entryName != ".." && !add(folder, entry->d_name, depth))
                return false;
        }
        return !timer_.hasExpired(milliseconds_);
    }

    QElapsedTimer timer_;
    int milliseconds_;
};

} // namespace

TrashedSizes parseTrashedSizes(const QByteArray& text)
{
    TrashedSizes sizes;
    for (const QByteArray& line : text.split('\n')) {
        const QByteArrayList fields = line.split(' ');
        if (fields.size() != 3)
            continue;
        bool isSize = false;
        bool isTime = false;
        const TrashedSize size{fields.at(0).toLongLong(&isSize), fields.at(1).toLongLong(&isTime)};
        const auto name = percentDecoded(fields.at(2));
        if (isSize && isTime && size.bytes >= 0 && name)
            sizes.insert(*name, size);
    }
    return sizes;
}

QByteArray trashedSizesText(const TrashedSizes& sizes)
{
    QByteArray text;
    for (auto it = sizes.begin(); it != sizes.end(); ++it)
        text += QByteArray::number(it->bytes) + ' ' + QByteArray::number(it->infoTime) + ' ' +
                percentEncoded(it.key()) + '\n';
    return text;
}

TrashedSizes readTrashedSizes(int trash)
{
    const FileHandle file(
        ::openat(trash, SizesFile, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat about = {};
    if (!file.isOpen() || ::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode) ||
        about.st_size > MostSizeBytes)
        return {};
    QByteArray text(about.st_size, '\0');
    const ssize_t count = ::pread(file.get(), text.data(), size_t(text.size()), 0);
    return count > 0 ? parseTrashedSizes(text.left(count)) : TrashedSizes();
}

void writeTrashedSizes(int trash, const TrashedSizes& sizes)
{
    // Whoever comes second leaves it: what is not remembered is measured again.
    const FileHandle lock(::openat(trash, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock.isOpen() || ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return;
    const QByteArray text = trashedSizesText(sizes);
    ::unlinkat(trash, NewSizesFile, 0);
    FileHandle file(::openat(trash, NewSizesFile, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.isOpen())
        return;
    const bool written =
        ::write(file.get(), text.constData(), size_t(text.size())) == ssize_t(text.size());
    if (!file.close() || !written || ::renameat(trash, NewSizesFile, trash, SizesFile) != 0)
        ::unlinkat(trash, NewSizesFile, 0);
}

void tidyTrashedSizes(int trash)
{
    ::unlinkat(trash, NewSizesFile, 0);
}

std::optional<qint64> sizeOnDisk(int parent, const QByteArray& name, int milliseconds)
{
    Measure measure(milliseconds);
    return measure.add(parent, name.constData(), 0) ? std::optional(measure.bytes) : std::nullopt;
}
