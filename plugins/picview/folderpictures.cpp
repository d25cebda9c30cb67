#include "plugins/picview/folderpictures.h"

#include "browser/folderscan.h"

#include <QDir>
#include <QFileInfo>
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
    const QFileInfo file(path);
    folder_ = file.absolutePath();
    if (!folder_.endsWith(QLatin1Char('/')))
        folder_ += QLatin1Char('/');
    const QString own = file.fileName();
    const QSet<QByteArray> extensions = pictureExtensions();
    const auto scan = FolderScan::read(folder_, false);
    if (scan) {
        for (const FolderEntry& entry : scan->others()) {
            const QString name = scan->name(entry);
            const bool isFile = entry.kind == EntryKind::File || entry.kind == EntryKind::FileLink;
            if (name == own ||
                (isFile && extensions.contains(QFileInfo(name).suffix().toLower().toUtf8())))
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
