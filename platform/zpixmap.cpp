#include "platform/zpixmap.h"

#include "platform/regularfile.h"
#include "platform/screenscale.h"

#include <QBuffer>
#include <QCache>
#include <QHash>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <optional>

namespace
{

constexpr qsizetype MaxPictureBytes = 4 * 1024 * 1024;
constexpr qint64 MaxPicturePixels = 32 * 1024 * 1024;
constexpr int BytesPerKilobyte = 1024;

using PixmapStore = QCache<QString, QPixmap>;

PixmapStore& store()
{
    static PixmapStore pixmaps(10240 * BytesPerKilobyte);
    return pixmaps;
}

QString densePath(const QString& path, int density)
{
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    return path.left(dot) + QStringLiteral("@%1x").arg(density) + path.mid(dot);
}

/// The densest variant of a picture file that this screen may use.
int densest(const QString& path)
{
    constexpr int DensestVariant = 3;
    const bool hasVariants =
        path.lastIndexOf(QLatin1Char('.')) > path.lastIndexOf(QLatin1Char('/'));
    return hasVariants ? std::clamp(int(std::ceil(ScreenScale::density())), 1, DensestVariant) : 1;
}

/// Nothing if there is no such file.
std::optional<PictureFile> readVariant(const QString& path, int density)
{
    const auto bytes =
        readRegularFile(density > 1 ? densePath(path, density) : path, MaxPictureBytes);
    return bytes ? std::optional(PictureFile{*bytes, density, path}) : std::nullopt;
}

/// A picture that was loaded, and what is drawn in its place at other scales, by the density.
struct Loaded {
    QString path;
    int density;
    QHash<int, QPixmap> others;
};

/// By the key of the pixmap. Many are loaded again and again; what is not drawn any more goes.
QCache<qint64, Loaded>& loadedPictures()
{
    constexpr int Kept = 500;
    static QCache<qint64, Loaded> pictures(Kept);
    return pictures;
}

QPixmap forDensity(const QPixmap& picture)
{
    Loaded* loaded =
        ScreenScale::followsWindow() ? loadedPictures().object(picture.cacheKey()) : nullptr;
    if (loaded == nullptr)
        return picture;
    const int density = densest(loaded->path);
    if (density == loaded->density)
        return picture;
    const auto kept = loaded->others.constFind(density);
    if (kept != loaded->others.constEnd())
        return *kept;
    QPixmap other = picture;
    loadPixmap(other, loaded->path);
    // One of another size is another picture by now.
    if (pixmapSize(other) != pixmapSize(picture))
        other = picture;
    if ((loaded = loadedPictures().object(picture.cacheKey())) != nullptr)
        loaded->others.insert(density, other);
    return other;
}

qsizetype cost(const QPixmap& pixmap)
{
    const qsizetype bits = qsizetype(pixmap.width()) * pixmap.height() * pixmap.depth();
    return std::max<qsizetype>(bits / 8, 1);
}

} // namespace

bool loadPixmap(QPixmap& pixmap, const QString& path)
{
    for (int density = densest(path); density > 0; --density) {
        const auto file = readVariant(path, density);
        const QPixmap loaded = file ? decoded(*file) : QPixmap();
        if (!loaded.isNull()) {
            pixmap = loaded;
            return true;
        }
    }
    return false;
}

QList<PictureFile> readPictureFiles(const QString& path)
{
    QList<PictureFile> files;
    for (int density = densest(path); density > 0; --density) {
        if (const auto file = readVariant(path, density))
            files.append(*file);
    }
    return files;
}

QPixmap decoded(const PictureFile& file)
{
    QBuffer buffer;
    buffer.setData(file.bytes);
    QImageReader reader(&buffer);
    // Nearly all are. To find a format out, the toolkit loads every decoder of the system.
    if (file.bytes.startsWith("\x89PNG\r\n\x1a\n")) {
        reader.setAutoDetectImageFormat(false);
        reader.setFormat("png");
    }
    const QSize size = reader.size();
    if (qint64(size.width()) * size.height() > MaxPicturePixels)
        return {};
    QPixmap pixmap = QPixmap::fromImage(reader.read());
    if (pixmap.isNull())
        return pixmap;
    pixmap.setDevicePixelRatio(file.density);
    if (!file.path.isEmpty() && ScreenScale::followsWindow())
        loadedPictures().insert(pixmap.cacheKey(), new Loaded{file.path, densest(file.path), {}});
    return pixmap;
}

void drawPicture(QPainter& painter, QPoint corner, const QPixmap& picture)
{
    const QPixmap fitting = forDensity(picture);
    const bool wasSmooth = painter.testRenderHint(QPainter::SmoothPixmapTransform);
    painter.setRenderHint(QPainter::SmoothPixmapTransform,
                          wasSmooth || fitting.devicePixelRatio() != ScreenScale::density());
    painter.drawPixmap(corner, fitting);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, wasSmooth);
}

QSize pixmapSize(const QPixmap& pixmap)
{
    return pixmap.isNull() ? QSize(0, 0) : pixmap.deviceIndependentSize().toSize();
}

bool ZPixmapCache::find(const QString& key, QPixmap& pixmap)
{
    const QPixmap* kept = store().object(key);
    if (kept == nullptr)
        return false;
    pixmap = *kept;
    return true;
}

void ZPixmapCache::insert(const QString& key, const QPixmap& pixmap)
{
    store().insert(key, new QPixmap(pixmap), cost(pixmap));
}

void ZPixmapCache::setCacheLimit(int kilobytes)
{
    store().setMaxCost(qsizetype(std::max(kilobytes, 0)) * BytesPerKilobyte);
}

int ZPixmapCache::cacheLimit()
{
    return int(store().maxCost() / BytesPerKilobyte);
}

void ZPixmapCache::clear()
{
    store().clear();
}
