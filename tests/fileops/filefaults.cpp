#include "tests/fileops/filefaults.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace
{

FileFaults* current = nullptr;

qint64 systemRead(int descriptor, char* bytes, qint64 size)
{
    return syscall(SYS_read, descriptor, bytes, size_t(size));
}

qint64 systemWrite(int descriptor, char* bytes, qint64 size)
{
    return syscall(SYS_write, descriptor, bytes, size_t(size));
}

} // namespace

// In the place of the system's own, for everything in the process.
extern "C" ssize_t read(int descriptor, void* bytes, size_t size)
{
    FileFaults* faults = FileFaults::of(descriptor);
    auto* start = static_cast<char*>(bytes);
    return faults != nullptr ? faults->handle(systemRead, descriptor, start, qint64(size))
                             : systemRead(descriptor, start, qint64(size));
}

extern "C" ssize_t write(int descriptor, const void* bytes, size_t size)
{
    FileFaults* faults = FileFaults::of(descriptor);
    auto* start = static_cast<char*>(const_cast<void*>(bytes));
    return faults != nullptr ? faults->handle(systemWrite, descriptor, start, qint64(size))
                             : systemWrite(descriptor, start, qint64(size));
}

FileFaults::FileFaults(const QString& path) : path_(QFile::encodeName(path))
{
    Q_ASSERT(current == nullptr);
    current = this;
}

FileFaults::~FileFaults()
{
    current = nullptr;
}

void FileFaults::failAfter(qint64 bytes, int error)
{
    failAt_ = bytes;
    error_ = error;
}

FileFaults* FileFaults::of(int descriptor)
{
    if (current == nullptr)
        return nullptr;
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(descriptor);
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlink(link.constData(), target.data(), target.size());
    return QByteArrayView(target.data(), std::max<ssize_t>(length, 0)) == current->path_ ? current
                                                                                         : nullptr;
}

qint64 FileFaults::handle(const Call& call, int descriptor, char* bytes, qint64 size)
{
    if (interrupts_ && std::exchange(interruptNext_, !interruptNext_)) {
        errno = EINTR;
        return -1;
    }
    if (failAt_ >= 0 && done_ >= failAt_) {
        errno = error_;
        return -1;
    }
    if (failAt_ >= 0)
        size = std::min(size, failAt_ - done_);
    if (callLimit_ >= 0)
        size = std::min(size, callLimit_);
    const qint64 handled = pretendedSize_ >= 0 ? std::min(size, pretendedSize_ - done_)
                                               : call(descriptor, bytes, size);
    done_ += std::max<qint64>(handled, 0);
    return handled;
}
