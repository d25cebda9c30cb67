#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>

/// Files and folders as they should be: what commands must make of a tree, without a disk. Paths
/// are full.
class FileModel
{
public:
    bool exists(const QString& path) const;
    bool isFolder(const QString& path) const;
    qsizetype count() const { return qsizetype(entries_.size()); }
    /// The rows of a panel that shows the folder.
    QStringList rows(const QString& folder) const;

    void write(const QString& path, const QByteArray& content);
    void makeFolder(const QString& path);
    /// With all that is in it; nothing if there is none.
    void remove(const QString& path);
    /// False, with nothing done, where the system refuses: a source that is not there, a target
    /// without a folder to be in or inside of the source.
    bool rename(const QString& from, const QString& to);
    /// Into a folder that holds nothing of that name, or merged into a folder of that name. Nothing
    /// if there is no such source.
    void copy(const QString& path, const QString& folder);
    /// As the built-in copy does: what is hidden in a folder is left out, and so are folders
    /// without files, unless there are no files at all.
    void copyBuiltIn(const QString& path, const QString& folder);

    /// A line for each entry below a folder, sorted; of the model, and of the disk.
    QStringList lines(const QString& top) const;
    static QStringList linesOnDisk(const QString& top);

private:
    struct Entry {
        bool folder = false;
        QByteArray content;
    };

    /// The entries of a path and below it.
    std::map<QString, Entry> treeOf(const QString& path) const;

    std::map<QString, Entry> entries_;
};
