#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// What a walk through a folder has counted. The numbers are 32 bits wide and wrap, as the phone's
/// did.
struct FolderCount {
    qint32 folders = 0;
    qint32 files = 0;
    quint32 bytes = 0;
};

/// Adds the sizes of all plain files below `folder`. Links are neither counted nor followed, hidden
/// entries not seen. `count.folders` grows by one for each folder, the start included. After each
/// file `step` runs; the walk ends early, at every level, as soon as `cancelled` says so.
void countFolder(const QString& folder, FolderCount& count, const std::function<void()>& step,
                 const std::function<bool()>& cancelled);

/// What is below a folder, hidden entries included.
struct TreeCount {
    qint64 folders = 0; ///< the start not counted
    qint64 files = 0;
    qint64 bytes = 0;
};

/// Counts as countFolder() does, but all that is there, and in numbers that hold it.
void countTree(const QString& folder, TreeCount& count, const std::function<void()>& step,
               const std::function<bool()>& cancelled);

/// The full paths of all plain files below `folder`, those of a folder before those of its
/// subfolders, by name without regard to case. Links to files are listed and links to folders
/// followed; a folder that the walk is inside of already is not entered again, nor, once 10,000
/// folders have been met a second time, any that was seen before. Hidden entries are not seen.
QStringList filesBelow(const QString& folder);
