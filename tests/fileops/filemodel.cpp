#include "tests/fileops/filemodel.h"

#include "files/paths.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <algorithm>

namespace
{

QString folderOf(const QString& path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

/// Whether something below a folder has a name that begins with a dot, or is in such a folder.
bool isHiddenIn(const QString& folder, const QString& path)
{
    return path.mid(folder.size()).contains(QStringLiteral("/."));
}

QString line(const QString& name, bool folder, const QByteArray& content)
{
    return name + (folder ? QStringLiteral(" is a folder")
                          : QStringLiteral(" holds ") + QString::fromUtf8(content));
}

} // namespace

bool FileModel::exists(const QString& path) const
{
    return entries_.count(QDir::cleanPath(path)) > 0;
}

bool FileModel::isFolder(const QString& path) const
{
    const auto found = entries_.find(path);
    return found != entries_.end() && found->second.folder;
}

QStringList FileModel::rows(const QString& folder) const
{
    QByteArrayList folders;
    QByteArrayList files;
    for (const auto& [path, entry] : entries_) {
        if (folderOf(path) == folder)
            (entry.folder ? folders : files).append(namePart(path).toUtf8());
    }
    std::sort(folders.begin(), folders.end());
    std::sort(files.begin(), files.end());
    QStringList rows{QStringLiteral("..")};
    for (const QByteArray& name : folders + files)
        rows.append(QString::fromUtf8(name));
    return rows;
}

void FileModel::write(const QString& path, const QByteArray& content)
{
    entries_[path] = {false, content};
}

void FileModel::makeFolder(const QString& path)
{
    entries_[path] = {true, {}};
}

std::map<QString, FileModel::Entry> FileModel::treeOf(const QString& path) const
{
    std::map<QString, Entry> tree;
    for (const auto& [each, entry] : entries_) {
        if (each == path || each.startsWith(path + QLatin1Char('/')))
            tree[each] = entry;
    }
    return tree;
}

void FileModel::remove(const QString& path)
{
    for (const auto& each : treeOf(path))
        entries_.erase(each.first);
}

bool FileModel::rename(const QString& from, const QString& to)
{
    if (!exists(from) || !isFolder(folderOf(to)) || to.startsWith(from + QLatin1Char('/')))
        return false;
    const auto tree = treeOf(from);
    remove(from);
    for (const auto& [path, entry] : tree)
        entries_[to + path.mid(from.size())] = entry;
    return true;
}

void FileModel::copy(const QString& path, const QString& folder)
{
    const qsizetype parentLength = folderOf(path).size();
    for (const auto& [each, entry] : treeOf(path))
        entries_[folder + each.mid(parentLength)] = entry;
}

void FileModel::copyBuiltIn(const QString& path, const QString& folder)
{
    auto files = treeOf(path);
    std::erase_if(files, [&path](const auto& each) {
        return each.second.folder || isHiddenIn(path, each.first);
    });
    if (files.empty())
        return copy(path, folder);
    const qsizetype parentLength = folderOf(path).size();
    for (const auto& [each, entry] : files) {
        const QString target = folder + each.mid(parentLength);
        entries_[target] = entry;
        for (QString above = folderOf(target); above != folder; above = folderOf(above))
            makeFolder(above);
    }
}

QStringList FileModel::lines(const QString& top) const
{
    QStringList lines;
    for (const auto& [path, entry] : treeOf(top)) {
        if (path != top)
            lines.append(line(path.mid(top.size()), entry.folder, entry.content));
    }
    lines.sort();
    return lines;
}

QStringList FileModel::linesOnDisk(const QString& top)
{
    QStringList lines;
    QDirIterator walk(top, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        const bool folder = walk.fileInfo().isDir();
        QFile file(path);
        lines.append(
            line(path.mid(top.size()), folder,
                 !folder && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray()));
    }
    lines.sort();
    return lines;
}
