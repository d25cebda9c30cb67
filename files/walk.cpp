#include "files/walk.h"

#include "files/folderscan.h"

#include "files/names.h"

#include <sys/stat.h>

#include <algorithm>
#include <set>
#include <utility>

namespace
{

using FolderId = std::pair<dev_t, ino_t>;

/// What stands before the names in a folder. The folder's own path stays as it is, since callers
/// cut it off again.
QString withSeparator(QString folder)
{
    while (folder.endsWith(QLatin1String("//")))
        folder.chop(1);
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

/// The names of the files and folders among some entries, by name without regard to case.
QStringList shownNames(const FolderScan& scan, const std::vector<FolderEntry>& entries)
{
    std::vector<std::pair<QString, QString>> names;
    for (const FolderEntry& entry : entries) {
        if (entry.kind == EntryKind::Other || scan.isHidden(entry))
            continue;
        const QString name = scan.name(entry);
        names.emplace_back(name.toLower(), name);
    }
    std::stable_sort(names.begin(), names.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    QStringList sorted;
    for (const auto& [key, name] : names)
        sorted.append(name);
    return sorted;
}

/// Lists files, following links to folders. A folder inside itself is left out, so loops end;
/// folders that all link to each other would still be entered in every order.
class FileLister
{
public:
    QStringList filesBelow(const QString& folder)
    {
        enter(folder);
        return paths_;
    }

private:
    static constexpr int MostRepetitions = 10000;

    void enter(const QString& folder)
    {
        struct stat info = {};
        if (stat(encodedPath(folder).constData(), &info) != 0)
            return;
        const FolderId id{info.st_dev, info.st_ino};
        if (!seen_.insert(id).second && ++repetitions_ > MostRepetitions)
            return;
        const auto [entered, isNew] = inside_.insert(id);
        if (!isNew)
            return;
        list(folder);
        inside_.erase(entered);
    }

    void list(const QString& folder)
    {
        const QString prefix = withSeparator(folder);
        QStringList files;
        QStringList folders;
        if (const auto scan = FolderScan::read(folder, false)) {
            files = shownNames(*scan, scan->others());
            folders = shownNames(*scan, scan->folders());
        }
        for (const QString& name : files)
            paths_.append(prefix + name);
        for (const QString& name : folders)
            enter(prefix + name);
    }

    std::set<FolderId> inside_; ///< from the start to here
    std::set<FolderId> seen_;
    int repetitions_ = 0;
    QStringList paths_;
};

} // namespace

void countFolder(const QString& folder, FolderCount& count, const std::function<void()>& step,
                 const std::function<bool()>& cancelled)
{
    count.folders += 1;
    const auto scan = FolderScan::read(folder, true);
    if (!scan)
        return;
    for (const FolderEntry& entry : scan->others()) {
        if (entry.kind == EntryKind::File && !scan->isHidden(entry)) {
            count.bytes += quint32(entry.size);
            count.files += 1;
            step();
        }
        if (cancelled())
            break;
    }
    for (const FolderEntry& entry : scan->folders()) {
        if (entry.kind == EntryKind::Folder && !scan->isHidden(entry))
            countFolder(folder + QLatin1Char('/') + scan->name(entry), count, step, cancelled);
        if (cancelled())
            break;
    }
}

void countTree(const QString& folder, TreeCount& count, const std::function<void()>& step,
               const std::function<bool()>& cancelled)
{
    const auto scan = FolderScan::read(folder, true);
    if (!scan)
        return;
    for (const FolderEntry& entry : scan->others()) {
        if (entry.kind == EntryKind::File) {
            count.bytes += entry.size;
            count.files += 1;
            step();
        }
        if (cancelled())
            return;
    }
    for (const FolderEntry& entry : scan->folders()) {
        if (entry.kind != EntryKind::Folder)
            continue;
        count.folders += 1;
        countTree(folder + QLatin1Char('/') + scan->name(entry), count, step, cancelled);
        if (cancelled())
            return;
    }
}

QStringList filesBelow(const QString& folder)
{
    return FileLister().filesBelow(folder);
}
