#include "extras/leftovers.h"

#include "extras/entrychanges.h"
#include "extras/removal.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>

namespace
{

struct CloseListed {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// The names in a folder that begin so.
QList<QByteArray> namesWith(const QByteArray& prefix, int folder)
{
    QList<QByteArray> names;
    FileHandle listed(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseListed> reader(listed.isOpen() ? fdopendir(listed.get())
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

/// Clears folders, and tells what could not be removed.
class Clearing
{
public:
    explicit Clearing(const QByteArray& prefix) : prefix_(prefix) {}

    void clear(FolderCursor& cursor, const QByteArray& path)
    {
        if (!cursor.go(path))
            return;
        for (const QByteArray& name : namesWith(prefix_, cursor.folder())) {
            Removal removal(cursor, below(path, name),
                            [this](const QByteArray&, int failed) { error_ = failed; });
            while (removal.step()) {
            }
        }
    }
    int error() const { return error_; }

private:
    QByteArray prefix_;
    int error_ = 0;
};

/// What was on its way back to where it had been moved from.
void clearSources(JournalIndex& earlier, Clearing& clearing)
{
    SourceFolders sources(earlier.request());
    int lastSource = -1;
    QByteArray last;
    for (const qint64 place : earlier.places()) {
        const JournalRecord record = earlier.at(place);
        const QByteArray parent = parentOf(record.from);
        if (record.type != JournalRecord::Type::Made ||
            (parent == last && record.source == lastSource))
            continue;
        last = parent;
        lastSource = record.source;
        clearing.clear(sources.of(record.source), parent);
    }
}

void clearTarget(JournalIndex& earlier, FolderCursor& cursor, Clearing& clearing)
{
    clearing.clear(cursor, {});
    QByteArray last;
    for (const qint64 place : earlier.places()) {
        const JournalRecord record = earlier.at(place);
        const QByteArray parent = parentOf(record.to);
        if (parent != last && !parent.isEmpty())
            clearing.clear(cursor, parent);
        last = parent;
        // Nothing in it may have come as far as to a record.
        if (S_ISDIR(record.mode) && record.type != JournalRecord::Type::Moved)
            clearing.clear(cursor, record.to);
    }
}

} // namespace

bool clearLeftovers(JournalIndex& earlier, TargetFolder& target, const QByteArray& prefix)
{
    for (const JournalRecord& aside : earlier.asides())
        putBack(aside, target);
    Clearing clearing(prefix);
    clearTarget(earlier, target.cursor(), clearing);
    if (earlier.request().kind == OperationKind::Move)
        clearSources(earlier, clearing);
    errno = clearing.error();
    return clearing.error() == 0;
}
