#include "files/filehandle.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

FileHandle::~FileHandle()
{
    reset();
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    reset(other.release());
    return *this;
}

void FileHandle::reset(int descriptor)
{
    // Closing is no news to who looks at the error of what went before.
    const int error = errno;
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = descriptor;
    errno = error;
}

int FileHandle::release()
{
    return std::exchange(descriptor_, -1);
}

bool FileHandle::close()
{
    // After a signal the descriptor is closed all the same.
    return ::close(release()) == 0 || errno == EINTR;
}
