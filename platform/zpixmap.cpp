#include "platform/zpixmap.h"

#include "platform/regularfile.h"

#include <QBuffer>
#include <QCache>
#include <QGuiApplication>
#include <QImageReader>

#include <algorithm>
#include <cmath>

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

/// Null when these bytes are no picture, or one whose few bytes unfold to absurdly many pixels.
QPixmap decode(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    if (qint64(size.width()) * size.height() > MaxPicturePixels)
        return {};
    return QPixmap::fromImage(reader.read());
}

bool loadFile(QPixmap& pixmap, const QString& path, qreal density)
{
    const auto bytes = readRegularFile(path, MaxPictureBytes);
    QPixmap loaded = bytes ? decode(*bytes) : QPixmap();
    if (loaded.isNull())
        return false;
    loaded.setDevicePixelRatio(density);
    pixmap = loaded;
    return true;
}

QString densePath(const QString& path, int density)
{
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    return path.left(dot) + QStringLiteral("@%1x").arg(density) + path.mid(dot);
}

qsizetype cost(const QPixmap& pixmap)
{
    const qsizetype bits = qsizetype(pixmap.width()) * pixmap.height() * pixmap.depth();
    return std::max<qsizetype>(bits / 8, 1);
}

} // namespace

bool loadPixmap(QPixmap& pixmap, const QString& path)
{
    const int wanted = int(std::ceil(qGuiApp->devicePixelRatio()));
    if (wanted > 1 && path.lastIndexOf(QLatin1Char('.')) > path.lastIndexOf(QLatin1Char('/'))) {
        const int densest = std::min(wanted, 3);
        for (int density = densest; density > 1; --density) {
            if (loadFile(pixmap, densePath(path, density), density))
                return true;
        }
    }
    return loadFile(pixmap, path, 1);
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
