#include "tools/sys_gui/filehandle.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

FileHandle::~FileHandle()
{
    reset();
}

void FileHandle::reset(int descriptor)
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = descriptor;
}

bool FileHandle::close()
{
    // After a signal the descriptor is closed all the same.
    return ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR;
}
