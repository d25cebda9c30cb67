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
        if (stat(QFile::encodeName(folder).constData(), &info) != 0)
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
        const QDir here(folder, QString(), QDir::Name | QDir::IgnoreCase);
        const QString prefix = withSeparator(folder);
        for (const QFileInfo& file : here.entryInfoList(QDir::Files)) {
            // The toolkit's files include links to pipes and devices.
            if (file.isFile())
                paths_.append(prefix + file.fileName());
        }
        for (const QString& name : here.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
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
    return FileLister().filesBelow(folder);
}
