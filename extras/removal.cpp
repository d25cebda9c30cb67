#include "extras/removal.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

Removal::Removal(FolderCursor& cursor, const QByteArray& path, Failed failed)
    : walk_(cursor, path, TreeWalk::Facts::Kind), failed_(std::move(failed))
{
}

bool Removal::step()
{
    switch (walk_.next()) {
    case TreeWalk::Step::Entry:
        if (!unlink(0))
            tell(errno);
        break;
    case TreeWalk::Step::Enter:
        enter();
        break;
    case TreeWalk::Step::Leave:
        leave();
        break;
    case TreeWalk::Step::Failed:
        tell(walk_.error());
        break;
    case TreeWalk::Step::Ended:
        return false;
    }
    return true;
}

void Removal::enter()
{
    if (!device_)
        device_ = walk_.info().st_dev;
    if (walk_.info().st_dev != *device_) {
        tell(EBUSY);
        walk_.skip();
    }
}

void Removal::leave()
{
    if (unlink(AT_REMOVEDIR))
        return;
    const int error = errno;
    // Some file systems do not list all when entries go meanwhile, and others may add some.
    if (error == ENOTEMPTY && failures_ == 0 && removed_ != removedBefore_) {
        removedBefore_ = removed_;
        walk_.readAgain();
    } else if (error != ENOTEMPTY || failures_ == 0) {
        tell(error);
    }
}

bool Removal::unlink(int flags)
{
    const QByteArray& path = walk_.path();
    const int folder = walk_.folder();
    if (folder < 0)
        return false;
    // What somebody else has removed is removed.
    if (unlinkat(folder, path.constData() + path.lastIndexOf('/') + 1, flags) != 0 &&
        errno != ENOENT)
        return false;
    ++removed_;
    return true;
}

void Removal::tell(int error)
{
    ++failures_;
    failed_(walk_.path(), error);
}
