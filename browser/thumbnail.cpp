#include "browser/thumbnail.h"

#include "files/regularfile.h"
#include "platform/smoothpicture.h"

#include <QFile>
#include <QImageReader>

#include <algorithm>
#include <cmath>

QSize thumbnailSize(QSize picture, int side)
{
    const int width = picture.width();
    const int height = picture.height();
    if (width <= side && height <= side)
        return picture;
    if (width == height)
        return {side, side};
    if (width > height)
        return {side, std::max(int(qint64(height) * side / width), 1)};
    return {std::max(int(qint64(width) * side / height), 1), side};
}

QImage readThumbnail(const QString& path, qreal density)
{
    // Reading what the kernel makes up might never end; it gives itself away by having no size.
    QFile file;
    if (!openRegular(file, path) || file.size() <= 0 || file.size() > MaxThumbnailBytes)
        return {};
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = sizeToBe(reader);
    const QSize inScreen = thumbnailSize(size, ThumbnailSide);
    if (size.isValid() && qint64(size.width()) * size.height() > MaxThumbnailPixels)
        return {};
    const bool shrinks = size.isValid() && inScreen != size;
    const int side = shrinks ? int(std::ceil(ThumbnailSide * density)) : ThumbnailSide;
    QImage image = readSmooth(reader, shrinks ? thumbnailSize(size, side) : QSize());
    if (image.isNull())
        return image;
    // Some formats do not tell their size before, and some files lie about it.
    if (image.width() > side || image.height() > side) {
        image = image.scaled(thumbnailSize(image.size(), side), Qt::IgnoreAspectRatio,
                             Qt::SmoothTransformation);
    }
    if (shrinks) {
        const int longest = std::max(image.width(), image.height());
        image.setDevicePixelRatio(std::max(qreal(longest) / ThumbnailSide, 1.0));
    }
    return image;
}
