#include "extras/treewalk.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace
{

bool isDots(const char* name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

mode_t modeOf(unsigned char type)
{
    return type == DT_UNKNOWN ? 0 : DTTOIF(mode_t(type));
}

} // namespace

TreeWalk::TreeWalk(FolderCursor& cursor, const QByteArray& path, Facts facts)
    : cursor_(cursor), facts_(facts), path_(path)
{
}

TreeWalk::~TreeWalk() = default;

TreeWalk::Step TreeWalk::next()
{
    switch (state_) {
    case State::First:
        return first();
    case State::Entered:
        return open();
    case State::Reading:
        return read();
    case State::Descending:
        return nextFolder();
    case State::Left:
        levels_.pop_back();
        state_ = levels_.empty() ? State::Ended : State::Descending;
        return next();
    case State::Ended:
        break;
    }
    return Step::Ended;
}

void TreeWalk::skip()
{
    levels_.pop_back();
    state_ = levels_.empty() ? State::Ended : State::Descending;
}

void TreeWalk::readAgain()
{
    levels_.back().folders.clear();
    levels_.back().nextFolder = 0;
    state_ = State::Entered;
}

int TreeWalk::folder()
{
    return cursor_.go(parentOf(path_)) ? cursor_.folder() : -1;
}

bool TreeWalk::ask(int folder, const char* name)
{
    return fstatat(folder, name, &info_, AT_SYMLINK_NOFOLLOW) == 0;
}

TreeWalk::Step TreeWalk::failed(int error)
{
    error_ = error;
    return Step::Failed;
}

TreeWalk::Step TreeWalk::first()
{
    state_ = State::Ended;
    const int folder = this->folder();
    if (folder < 0 || !ask(folder, nameOf(path_).constData()))
        return failed(errno);
    if (!S_ISDIR(info_.st_mode))
        return Step::Entry;
    levels_.push_back({path_, info_, {}, 0});
    state_ = State::Entered;
    return Step::Enter;
}

TreeWalk::Step TreeWalk::open()
{
    state_ = State::Descending;
    const Level& level = levels_.back();
    path_ = level.path;
    info_ = level.info;
    if (!cursor_.go(level.path))
        return failed(errno);
    FileHandle listed(openat(cursor_.folder(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat now = {};
    if (!listed.isOpen() || fstat(listed.get(), &now) != 0)
        return failed(errno);
    // Another folder that has taken the name meanwhile is not what was meant.
    if (now.st_dev != level.info.st_dev || now.st_ino != level.info.st_ino)
        return failed(ENOENT);
    reader_.reset(fdopendir(listed.get()));
    if (reader_ == nullptr)
        return failed(errno);
    static_cast<void>(listed.release());
    state_ = State::Reading;
    return read();
}

TreeWalk::Step TreeWalk::read()
{
    Level& level = levels_.back();
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(reader_.get());
        if (entry == nullptr) {
            const int error = errno;
            reader_.reset();
            state_ = State::Descending;
            path_ = level.path;
            info_ = level.info;
            return error != 0 ? failed(error) : nextFolder();
        }
        if (isDots(entry->d_name))
            continue;
        info_ = {};
        info_.st_mode = modeOf(entry->d_type);
        const bool known = info_.st_mode != 0;
        if ((!known || (facts_ == Facts::All && !S_ISDIR(info_.st_mode))) &&
            !ask(dirfd(reader_.get()), entry->d_name)) {
            // It has gone since it was listed.
            if (errno == ENOENT)
                continue;
            path_ = below(level.path, entry->d_name);
            return failed(errno);
        }
        if (S_ISDIR(info_.st_mode)) {
            level.folders.append(entry->d_name, qsizetype(std::strlen(entry->d_name)) + 1);
            continue;
        }
        path_ = below(level.path, entry->d_name);
        return Step::Entry;
    }
}

TreeWalk::Step TreeWalk::nextFolder()
{
    Level& level = levels_.back();
    if (level.nextFolder >= level.folders.size())
        return leave();
    const QByteArray name(level.folders.constData() + level.nextFolder);
    level.nextFolder += name.size() + 1;
    path_ = below(level.path, name);
    const int folder = this->folder();
    if (folder < 0 || !ask(folder, name.constData())) {
        if (errno == ENOENT)
            return nextFolder();
        return failed(errno);
    }
    if (!S_ISDIR(info_.st_mode))
        return Step::Entry;
    levels_.push_back({path_, info_, {}, 0});
    state_ = State::Entered;
    return Step::Enter;
}

TreeWalk::Step TreeWalk::leave()
{
    Level& level = levels_.back();
    level.folders = {};
    level.nextFolder = 0;
    path_ = level.path;
    info_ = level.info;
    state_ = State::Left;
    return Step::Leave;
}
