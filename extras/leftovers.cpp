#include "extras/leftovers.h"

#include "extras/entrychanges.h"
#include "extras/removal.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>

namespace
{

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// The names in a folder that begin so.
QList<QByteArray> namesWith(const QByteArray& prefix, int folder)
{
    QList<QByteArray> names;
    FileHandle listed(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseFolder> reader(listed.isOpen() ? fdopendir(listed.get())
                                                                   : nullptr);
    if (reader == nullptr)
        return names;
    static_cast<void>(listed.release());
    while (const dirent* entry = readdir(reader.get())) {
        const QByteArray name(entry->d_name);
        if (name.startsWith(prefix))
            names.append(name);
    }
    return names;
}

void putBack(const JournalRecord& aside, TargetFolder& target)
{
    const int folder = target.folder(parentOf(aside.to));
    // If its successor has the name it is a temporary entry like others.
    if (folder >= 0)
        renameToFree(folder, aside.temporary, folder, nameOf(aside.to));
}

/// The errno of what could not be removed; 0 if all is gone.
int clearFolder(const QByteArray& path, TargetFolder& target, const QByteArray& prefix)
{
    int error = 0;
    const int folder = target.folder(path);
    if (folder < 0)
        return 0;
    for (const QByteArray& name : namesWith(prefix, folder)) {
        Removal removal(target.cursor(), below(path, name),
                        [&error](const QByteArray&, int failed) { error = failed; });
        while (removal.step()) {
        }
    }
    return error;
}

} // namespace

bool clearLeftovers(JournalIndex& earlier, TargetFolder& target, const QByteArray& prefix)
{
    for (const JournalRecord& aside : earlier.asides())
        putBack(aside, target);
    int error = clearFolder({}, target, prefix);
    QByteArray last;
    for (const qint64 place : earlier.places()) {
        const JournalRecord record = earlier.at(place);
        // A folder's own temporary entries come with the records of what is in it, too.
        const QByteArray parent =
            record.type == JournalRecord::Type::Joined ? record.to : parentOf(record.to);
        if (parent == last || parent.isEmpty())
            continue;
        last = parent;
        const int failed = clearFolder(parent, target, prefix);
        error = error != 0 ? error : failed;
    }
    // The folder that was made last may have none yet.
    if (!earlier.places().empty()) {
        for (auto place = earlier.places().rbegin(); place != earlier.places().rend(); ++place) {
            const JournalRecord record = earlier.at(*place);
            if (!S_ISDIR(record.mode))
                continue;
            const int failed = clearFolder(record.to, target, prefix);
            error = error != 0 ? error : failed;
        }
    }
    errno = error;
    return error == 0;
}
