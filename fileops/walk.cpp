#include "fileops/walk.h"

#include "browser/folderscan.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

#include <set>
#include <utility>

namespace
{

using FolderId = std::pair<dev_t, ino_t>;

QStringList entries(const QString& folder, QDir::Filters filter)
{
    return QDir(folder, QString(), QDir::Name | QDir::IgnoreCase, filter).entryList();
}

QFileInfo infoOf(const QString& folder, const QString& name)
{
    return QFileInfo(folder + QLatin1Char('/') + name);
}

void listFiles(const QString& folder, std::set<FolderId>& inside, QStringList& paths)
{
    struct stat info {
    };
    if (stat(QFile::encodeName(folder).constData(), &info) != 0)
        return;
    const auto [entered, isNew] = inside.insert({info.st_dev, info.st_ino});
    if (!isNew)
        return;
    for (const QString& name : entries(folder, QDir::Files))
        paths.append(infoOf(folder, name).filePath());
    for (const QString& name : entries(folder, QDir::Dirs | QDir::NoDotAndDotDot))
        listFiles(folder + QLatin1Char('/') + name, inside, paths);
    inside.erase(entered);
}

} // namespace

void countFolder(const QString& folder, FolderCount& count, const std::function<void()>& step,
                 const std::function<bool()>& cancelled)
{
    count.folders += 1;
    const auto scan = FolderScan::read(folder, true);
    if (!scan)
        return;
    const auto isHidden = [&scan](const FolderEntry& entry) {
        return scan->name(entry).startsWith(QLatin1Char('.'));
    };
    for (const FolderEntry& entry : scan->others()) {
        if (entry.kind == EntryKind::File && !isHidden(entry)) {
            count.bytes += quint32(entry.size);
            count.files += 1;
            step();
        }
        if (cancelled())
            break;
    }
    for (const FolderEntry& entry : scan->folders()) {
        if (entry.kind == EntryKind::Folder && !isHidden(entry))
            countFolder(folder + QLatin1Char('/') + scan->name(entry), count, step, cancelled);
        if (cancelled())
            break;
    }
}

QStringList filesBelow(const QString& folder)
{
    std::set<FolderId> inside;
    QStringList paths;
    listFiles(folder, inside, paths);
    return paths;
}
