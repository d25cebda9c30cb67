#include "extras/trashremoval.h"

#include "extras/entrychanges.h"

#include <QRandomGenerator>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace
{

constexpr int MostFailures = 64;
constexpr int OpenFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

using Entries = std::unique_ptr<DIR, int (*)(DIR*)>;

Entries entriesOf(int folder)
{
    return {::fdopendir(::openat(folder, ".", OpenFlags)), ::closedir};
}

const char* nextName(const Entries& entries)
{
    while (const dirent* entry = entries != nullptr ? ::readdir(entries.get()) : nullptr) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            return entry->d_name;
    }
    return nullptr;
}

/// A folder, opened with what its permissions lack: what is to go must not be kept by them.
FileHandle openWritable(int parent, const char* name)
{
    const FileHandle place(::openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!place.isOpen())
        return {};
    struct stat about = {};
    if (::fstat(place.get(), &about) == 0 && (about.st_mode & S_IRWXU) != S_IRWXU) {
        const QByteArray link = "/proc/self/fd/" + QByteArray::number(place.get());
        ::chmod(link.constData(), (about.st_mode & 07777U) | S_IRWXU);
    }
    return FileHandle(::openat(parent, name, OpenFlags));
}

} // namespace

TrashRemoval::TrashRemoval(const std::vector<TrashFolder>& trashes)
{
    for (const TrashFolder& trash : trashes) {
        FileHandle expunged = trash.expunged(TrashFolder::Missing::Leave);
        if (expunged.isOpen())
            expunged_.push_back(std::move(expunged));
    }
}

bool TrashRemoval::isNeeded() const
{
    for (const FileHandle& expunged : expunged_) {
        if (nextName(entriesOf(expunged.get())) != nullptr)
            return true;
    }
    return false;
}

bool TrashRemoval::step(int milliseconds)
{
    began_.start();
    allowedMs_ = milliseconds;
    while (current_ < expunged_.size() && clear(expunged_[current_].get())) {
        ++current_;
        left_.clear();
    }
    return current_ < expunged_.size();
}

/// True when nothing is left that can be removed, false when the time is over.
bool TrashRemoval::clear(int expunged)
{
    bool found = true;
    while (found) {
        found = false;
        const Entries entries = entriesOf(expunged);
        while (const char* name = nextName(entries)) {
            if (left_.contains(name))
                continue;
            found = true;
            if (::unlinkat(expunged, name, 0) == 0)
                ++removed_;
            else if (errno != EISDIR)
                fail(name);
            else if (!removeFolder(expunged, name))
                return false;
            if (timeIsUp())
                return false;
        }
    }
    return true;
}

/// False when the time is over before the folder is gone.
bool TrashRemoval::removeFolder(int expunged, const QByteArray& name)
{
    const FileHandle folder = openWritable(expunged, name.constData());
    const Entries entries = entriesOf(folder.get());
    int error = folder.isOpen() ? 0 : errno;
    // Where so many stay, the others do, too.
    for (int failures = 0; failures < MostFailures;) {
        const char* entry = nextName(entries);
        if (entry == nullptr)
            break;
        if (::unlinkat(folder.get(), entry, 0) == 0) {
            ++removed_;
        } else if (errno != EISDIR || !raise(expunged, folder.get(), entry)) {
            error = errno;
            ++failures;
        }
        if (timeIsUp() && failures == 0)
            return false;
    }
    if (error == 0 && ::unlinkat(expunged, name.constData(), AT_REMOVEDIR) == 0) {
        ++removed_;
        return true;
    }
    errno = error != 0 ? error : errno;
    fail(name);
    return true;
}

/// Brings a folder below another one to the top. One that is empty goes at once.
bool TrashRemoval::raise(int expunged, int folder, const char* name)
{
    if (::unlinkat(folder, name, AT_REMOVEDIR) == 0) {
        ++removed_;
        return true;
    }
    // To get another parent a folder must be writable itself.
    openWritable(folder, name);
    const QByteArray top = QByteArray::number(QRandomGenerator::global()->generate64(), 36);
    return renameToFree(folder, name, expunged, top);
}

void TrashRemoval::fail(const QByteArray& name)
{
    if (firstError_ == 0)
        firstError_ = errno;
    ++failures_;
    left_.insert(name);
}
