#include "files/regularfile.h"

#include "files/names.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr qsizetype ChunkBytes = 64 * 1024;

} // namespace

FileHandle openRegular(const QString& path)
{
    FileHandle file(
        ::open(encodedPath(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat about = {};
    if (!file.isOpen() || ::fstat(file.get(), &about) != 0)
        return {};
    if (!S_ISREG(about.st_mode)) {
        errno = S_ISDIR(about.st_mode) ? EISDIR : ENXIO;
        return {};
    }
    return file;
}

bool openRegular(QFile& device, const QString& path, QIODevice::OpenMode mode)
{
    FileHandle file = openRegular(path);
    if (!file.isOpen() || !device.open(file.get(), mode, QFileDevice::AutoCloseHandle))
        return false;
    file.release();
    return true;
}

std::optional<QByteArray> readRegular(const QString& path, qsizetype maxBytes)
{
    QFile file;
    if (!openRegular(file, path, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    // Read to the end rather than to the size: files of /proc say 0, and a file may be growing.
    QByteArray bytes("");
    while (bytes.size() < maxBytes) {
        const QByteArray chunk = file.read(std::min(ChunkBytes, maxBytes - bytes.size()));
        if (chunk.isEmpty())
            break;
        bytes += chunk;
    }
    return file.error() == QFileDevice::NoError ? std::optional(bytes) : std::nullopt;
}
