#include "extras/workplaces.h"

#include "extras/foldercursor.h"

#include <cerrno>
#include <optional>
#include <sys/statfs.h>

namespace
{

QByteArray folderOf(const OperationRequest& request, int source)
{
    if (source == JournalRecord::TargetPlace)
        return request.target;
    const QByteArray& path = request.sources[source];
    return path.left(path.lastIndexOf('/') + 1);
}

/// The first source of each folder, and the target if there is one.
QList<int> numbersOf(const OperationRequest& request)
{
    QList<int> numbers;
    if (request.kind != OperationKind::Delete)
        numbers.append(JournalRecord::TargetPlace);
    for (int source = 0; source < int(request.sources.size()); ++source) {
        const bool isUsable = request.sources[source].startsWith('/');
        if (isUsable && (source == 0 || folderOf(request, source) != folderOf(request, source - 1)))
            numbers.append(source);
    }
    return numbers;
}

std::optional<JournalRecord> placeOf(int folder)
{
    struct stat info = {};
    struct statfs system = {};
    if (folder < 0 || fstat(folder, &info) != 0 || fstatfs(folder, &system) != 0)
        return std::nullopt;
    JournalRecord record;
    record.type = JournalRecord::Type::Place;
    record.setMark(EntryMark::withBirth(folder, {}, info));
    record.fileSystem = quint64(system.f_type);
    return record;
}

bool isSamePlace(const JournalRecord& before, const JournalRecord& now, int folder)
{
    const bool knowsBirth = before.born != 0 && now.born != 0;
    return before.fileSystem == now.fileSystem && (!knowsBirth || before.born == now.born) &&
           (before.identity.inode == now.identity.inode || !hasLastingNumbers(folder));
}

} // namespace

QList<JournalRecord> placesOf(const OperationRequest& request)
{
    QList<JournalRecord> places;
    for (const int number : numbersOf(request)) {
        const FileHandle folder = FolderCursor::openTop(folderOf(request, number));
        if (auto place = placeOf(folder.get())) {
            place->source = number;
            places.append(*place);
        }
    }
    return places;
}

QList<Failure> missingPlaces(const JournalIndex& earlier)
{
    const OperationRequest& request = earlier.request();
    QList<Failure> missing;
    for (const int number : numbersOf(request)) {
        const QByteArray path = folderOf(request, number);
        const FileHandle folder = FolderCursor::openTop(path);
        const auto now = placeOf(folder.get());
        int error = now ? 0 : errno;
        for (const JournalRecord& before : earlier.folders()) {
            if (now && before.source == number && !isSamePlace(before, *now, folder.get()))
                error = ENODEV;
        }
        if (error != 0)
            missing.append({path.size() > 1 && path.endsWith('/') ? path.chopped(1) : path,
                            Trouble::CannotRead, error});
    }
    return missing;
}
