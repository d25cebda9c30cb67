#include "plugins/lyraplayer/cover.h"

#include "files/folderscan.h"
#include "files/names.h"
#include "files/paths.h"
#include "plugins/lyraplayer/tags.h"
#include "plugins/support/picture.h"

#include <QBuffer>
#include <QStringList>

namespace
{

/// How far down a name stands in the order of covers; -1 for one that is none.
int rankOf(const QString& name)
{
    static const QStringList stems{"cover", "folder", "front", "album"};
    static const QStringList extensions{"jpg", "jpeg", "png", "webp", "gif", "bmp"};
    const QString extension = suffixOf(name).toLower();
    const qsizetype stem = stems.indexOf(name.chopped(extension.size() + 1).toLower());
    const qsizetype kind = extensions.indexOf(extension);
    return stem < 0 || kind < 0 ? -1 : int(stem * extensions.size() + kind);
}

} // namespace

QString coverBeside(const QString& file)
{
    const QString folder = folderPart(file);
    const auto scan = FolderScan::read(folder, false);
    if (!scan)
        return {};
    QString best;
    int bestRank = -1;
    for (const FolderEntry& entry : scan->others()) {
        const QString name = scan->name(entry);
        const int rank = entry.kind == EntryKind::Other ? -1 : rankOf(name);
        if (rank >= 0 && (bestRank < 0 || rank < bestRank)) {
            best = name;
            bestRank = rank;
        }
    }
    return best.isEmpty() ? QString() : folder + best;
}

QImage readCover(const QByteArray& file, QSize box, const std::atomic<bool>& cancelled)
{
    QByteArray embedded = readTags(file, true, cancelled).picture;
    if (!embedded.isEmpty()) {
        QBuffer buffer(&embedded);
        buffer.open(QIODevice::ReadOnly);
        const Picture picture = readPicture(buffer, {box});
        if (!picture.image.isNull())
            return picture.image;
    }
    const QString beside = cancelled ? QString() : coverBeside(decodeName(file));
    return beside.isEmpty() ? QImage() : readPicture(beside, {box}, cancelled).image;
}
