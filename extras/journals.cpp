#include "extras/journals.h"

#include "extras/journal.h"
#include "extras/journalindex.h"
#include "extras/leftovers.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

QByteArray homeFolder()
{
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/')
        return home;
    const passwd* user = getpwuid(getuid());
    return user != nullptr ? QByteArray(user->pw_dir) : QByteArray("/");
}

/// The names in the folder of journals with such an ending, until one is found or all.
QList<QByteArray> namesEnding(const char* ending, bool oneIsEnough)
{
    QList<QByteArray> names;
    const std::unique_ptr<DIR, CloseFolder> reader(opendir(journalFolder().constData()));
    while (const dirent* entry = reader != nullptr ? readdir(reader.get()) : nullptr) {
        const QByteArray name(entry->d_name);
        if (name.endsWith(ending))
            names.append(name);
        if (oneIsEnough && !names.isEmpty())
            break;
    }
    return names;
}

/// Opens a journal that no instance works with. Not open if one does.
FileHandle openUnused(const QByteArray& path)
{
    FileHandle file(open(path.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat info = {};
    if (file.isOpen() &&
        (flock(file.get(), LOCK_EX | LOCK_NB) != 0 || fstat(file.get(), &info) != 0 ||
         !S_ISREG(info.st_mode) || info.st_nlink == 0))
        file.reset();
    return file;
}

InterruptedOperation look(const QByteArray& path, int file)
{
    InterruptedOperation found;
    found.journal = path;
    JournalReader reader(file);
    JournalRecord record;
    found.isDamaged = !reader.next(record) || record.type != JournalRecord::Type::Request;
    found.isOlder = reader.isOlder();
    if (found.isDamaged)
        return found;
    found.request = record.request;
    found.started = record.started;
    found.canTakeBack = record.request.kind != OperationKind::Delete;
    while (reader.next(record)) {
        const bool isEntry =
            record.type == JournalRecord::Type::Made || record.type == JournalRecord::Type::Moved;
        found.entriesMade += isEntry ? 1 : 0;
        found.replaced += isEntry && record.replaces ? 1 : 0;
        found.isDamagedInPart = found.isDamagedInPart || record.type == JournalRecord::Type::Damage;
        if (record.type == JournalRecord::Type::Cancelled)
            found.wasCancelled = true;
        else if (record.type == JournalRecord::Type::Resumed)
            found.wasCancelled = false;
    }
    found.isDamagedInPart = found.isDamagedInPart || reader.isDamaged();
    return found;
}

/// What was begun and never came to say anything.
void removeUnbegun()
{
    for (const QByteArray& name : namesEnding(".new", false)) {
        const QByteArray path = journalFolder() + '/' + name;
        if (openUnused(path).isOpen())
            unlink(path.constData());
    }
}

} // namespace

QByteArray journalFolder()
{
    const char* state = std::getenv("XDG_STATE_HOME");
    const QByteArray base =
        state != nullptr && state[0] == '/' ? QByteArray(state) : homeFolder() + "/.local/state";
    return base + "/quarn/journals";
}

bool hasJournals()
{
    return !namesEnding(".journal", true).isEmpty();
}

QList<InterruptedOperation> findJournals()
{
    removeUnbegun();
    QList<InterruptedOperation> found;
    for (const QByteArray& name : namesEnding(".journal", false)) {
        const QByteArray path = journalFolder() + '/' + name;
        const FileHandle file = openUnused(path);
        if (file.isOpen())
            found.append(look(path, file.get()));
    }
    std::sort(found.begin(), found.end(),
              [](const InterruptedOperation& one, const InterruptedOperation& other) {
                  return one.started < other.started;
              });
    return found;
}

std::optional<OperationRequest> requestOf(const QByteArray& journal)
{
    const FileHandle file(open(journal.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file.isOpen())
        return std::nullopt;
    JournalReader reader(file.get());
    JournalRecord record;
    if (!reader.next(record) || record.type != JournalRecord::Type::Request) {
        errno = EBADMSG;
        return std::nullopt;
    }
    return record.request;
}

bool discardJournal(const QByteArray& journal)
{
    const FileHandle file = openUnused(journal);
    if (!file.isOpen())
        return false;
    if (const auto request = requestOf(journal);
        request && request->kind != OperationKind::Delete) {
        const QByteArray name = nameOf(journal);
        const QByteArray prefix = TemporaryStart + name.left(name.indexOf('.')) + '-';
        JournalIndex earlier(file.get());
        TargetFolder target(request->target, prefix);
        if (target.isOpen())
            clearLeftovers(earlier, target, prefix);
    }
    return unlink(journal.constData()) == 0;
}
