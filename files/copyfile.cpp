#include "files/copyfile.h"

#include "files/filehandle.h"
#include "files/names.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <unistd.h>
#include <utility>

namespace
{

/// Never waits, be it for a FIFO's other end or for a device.
FileHandle opened(const QString& path, int flags)
{
    return FileHandle(open(encodedPath(path).constData(), flags | O_CLOEXEC | O_NONBLOCK, 0666));
}

/// Fills a block as far as the file goes; -1 when reading fails.
ssize_t readBlock(int file, char* block)
{
    ssize_t filled = 0;
    while (filled < CopyBlockBytes) {
        const ssize_t got = read(file, block + filled, size_t(CopyBlockBytes - filled));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        filled += got;
    }
    return filled;
}

bool writeBlock(int file, const char* block, ssize_t size)
{
    for (ssize_t written = 0; written < size;) {
        const ssize_t put = write(file, block + written, size_t(size - written));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        written += put;
    }
    return true;
}

/// A new file, or one that is there, emptied. Not one that a link in its place would make
/// elsewhere.
FileHandle openedToWrite(const QString& path)
{
    FileHandle made = opened(path, O_WRONLY | O_CREAT | O_EXCL);
    return made.isOpen() || errno != EEXIST ? std::move(made) : opened(path, O_WRONLY | O_TRUNC);
}

} // namespace

bool copyFileBlocks(const QString& source, const QString& destination,
                    const std::function<void(quint32 done)>& progress,
                    const std::function<void()>& pause)
{
    pause();
    const FileHandle from = opened(source, O_RDONLY);
    if (!from.isOpen()) {
        pause();
        return true;
    }
    const auto block = std::make_unique_for_overwrite<char[]>(size_t(CopyBlockBytes));
    const FileHandle to = openedToWrite(destination);
    quint32 done = 0;
    ssize_t size = CopyBlockBytes;
    while (size == CopyBlockBytes) {
        size = readBlock(from.get(), block.get());
        if (size < 0 || !to.isOpen() || !writeBlock(to.get(), block.get(), size))
            return false;
        progress(done);
        done += quint32(size);
        pause();
    }
    pause();
    return true;
}

int copiedPercent(quint32 done, quint32 total)
{
    if (total == 0)
        return 0;
    constexpr double Most = std::numeric_limits<int>::max();
    return int(std::min(double(done) * 100 / double(total), Most));
}
