#pragma once

#include <QImage>
#include <QSize>
#include <QString>

/// The box, in pixels of the screen, into which thumbnails are scaled.
inline constexpr int ThumbnailSide = 32;
/// Pictures with more pixels than this get no thumbnail: decoding one would freeze the panel.
inline constexpr qint64 MaxThumbnailPixels = 64 * 1000 * 1000;
/// Nor do larger files, of any number of pixels: many decoders read a broken one to its end.
inline constexpr qint64 MaxThumbnailBytes = 64 * 1024 * 1024;

/// The size of a picture's thumbnail in a box of `side` by `side`: scaled down to fit with its
/// proportions kept (the shorter side cut, at least 1), never enlarged.
QSize thumbnailSize(QSize picture, int side);

/// Decodes a picture file at the size of its thumbnail for a screen of the given density. Null when
/// the file is no regular file, no picture, broken, or too large to be decoded in bounded time and
/// memory. The picture's own orientation is applied.
QImage readThumbnail(const QString& path, qreal density);
