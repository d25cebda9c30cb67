#include "plugins/picview/folderpictures.h"

#include "files/entry.h"
#include "files/folderscan.h"
#include "files/paths.h"

#include <QImageReader>
#include <QSet>

#include <algorithm>

namespace
{

QSet<QByteArray> pictureExtensions()
{
    const QList<QByteArray> known = QImageReader::supportedImageFormats();
    QSet<QByteArray> extensions(known.begin(), known.end());
    // Further names of those formats.
    if (extensions.contains("jpeg"))
        extensions.unite({"jpe", "jfif"});
    if (extensions.contains("bmp"))
        extensions.insert("dib");
    if (extensions.contains("ppm"))
        extensions.insert("pnm");
    return extensions;
}

} // namespace

FolderPictures::FolderPictures(const QString& path)
{
    const QString file = absolutePath(path);
    folder_ = folderPart(file);
    const QString own = namePart(file);
    const QSet<QByteArray> extensions = pictureExtensions();
    const auto scan = FolderScan::read(folder_, false);
    if (scan) {
        for (const FolderEntry& entry : scan->others()) {
            const QString name = scan->name(entry);
            const bool isFile = entry.kind == EntryKind::File || entry.kind == EntryKind::FileLink;
            if (name == own || (isFile && extensions.contains(suffixOf(name).toLower().toUtf8())))
                names_.append(name);
        }
    }
    position_ = int(names_.indexOf(own));
    if (position_ < 0) {
        // It is gone, or the folder cannot be read.
        names_.prepend(own);
        position_ = 0;
    }
}

bool FolderPictures::move(int steps)
{
    if (count() < 2)
        return false;
    position_ = ((position_ + steps) % count() + count()) % count();
    return true;
}
