#include "platform/regularfile.h"

#include <QScopeGuard>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr qsizetype SmallestChunk = 4 * 1024;
constexpr qsizetype LargestChunk = 64 * 1024;

/// Appends up to `count` bytes. Gives what read() gave; an interrupted call is repeated.
qsizetype appendFrom(int file, QByteArray& bytes, qsizetype count)
{
    const qsizetype before = bytes.size();
    bytes.resize(before + count);
    ssize_t got = 0;
    do {
        got = ::read(file, bytes.data() + before, static_cast<size_t>(count));
    } while (got < 0 && errno == EINTR);
    bytes.resize(before + std::max<ssize_t>(got, 0));
    return got;
}

QByteArray utf8Path(QStringView path)
{
    // The system would see only what precedes the zero character: another file.
    return path.contains(QChar::Null) ? QByteArray() : path.toUtf8();
}

PathEncoder pathEncoder = utf8Path;

} // namespace

void setPathEncoder(PathEncoder encoder)
{
    pathEncoder = encoder;
}

std::optional<QByteArray> readRegularFile(const QString& path, qsizetype maxBytes)
{
    const int file =
        ::open(pathEncoder(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file < 0)
        return std::nullopt;
    const auto closing = qScopeGuard([file] { ::close(file); });

    struct stat about = {};
    if (::fstat(file, &about) != 0 || !S_ISREG(about.st_mode))
        return std::nullopt;

    // Read to the end rather than to st_size: files of /proc say 0, and a file may be growing.
    QByteArray bytes("");
    bytes.reserve(qsizetype(std::min<qint64>(about.st_size, maxBytes)) + SmallestChunk + 1);
    while (bytes.size() < maxBytes) {
        const auto chunk = qsizetype(
            std::clamp<qint64>(about.st_size - bytes.size() + 1, SmallestChunk, LargestChunk));
        const qsizetype got = appendFrom(file, bytes, std::min(chunk, maxBytes - bytes.size()));
        if (got < 0)
            return std::nullopt;
        if (got == 0)
            break;
    }
    return bytes;
}
