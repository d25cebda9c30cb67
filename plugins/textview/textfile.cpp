#include "plugins/textview/textfile.h"

#include "plugins/support/regularopen.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

bool TextFile::open(const QString& path, QString& problem)
{
    if (!openWithProblem(file_, path, problem))
        return false;
    if (end() == 0)
        madeUp_ = fromFile(0, MaxMadeUpBytes);
    return true;
}

qint64 TextFile::end() const
{
    if (!madeUp_.isEmpty())
        return madeUp_.size();
    struct stat about = {};
    if (!file_.isOpen() || ::fstat(file_.handle(), &about) != 0)
        return 0;
    return about.st_size;
}

QByteArray TextFile::read(qint64 offset, qsizetype count) const
{
    return madeUp_.isEmpty() ? fromFile(offset, count) : madeUp_.mid(offset, count);
}

QByteArray TextFile::fromFile(qint64 offset, qsizetype count) const
{
    constexpr qsizetype ChunkBytes = 64 * 1024;
    QByteArray bytes;
    while (bytes.size() < count) {
        const qsizetype before = bytes.size();
        const qsizetype wanted = std::min(count - before, ChunkBytes);
        bytes.resize(before + wanted);
        ssize_t got = 0;
        do {
            got = ::pread(file_.handle(), bytes.data() + before, size_t(wanted), offset + before);
        } while (got < 0 && errno == EINTR);
        bytes.resize(before + std::max<ssize_t>(got, 0));
        if (got <= 0)
            break;
    }
    return bytes;
}
