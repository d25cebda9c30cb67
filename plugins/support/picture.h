#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <atomic>

class QIODevice;

/// What a picture file holds, upright and in a size that suits the screen.
struct Picture {
    QImage image;          ///< possibly smaller than the picture; null if there is a problem
    QSize size;            ///< of the picture itself, in its own pixels
    bool animated = false; ///< small enough to be played, too
    QString problem;       ///< why there is nothing to show, a sentence
};

/// How a picture is wanted.
struct PictureWish {
    QSize box;            ///< pixels of the display; empty: as large as sensible
    bool fills = false;   ///< to cover the box with it, not to fit it in
    int quarterTurns = 0; ///< clockwise, from 0 to 3
};

/// Pictures with more pixels are not decoded: they would take the memory of all else.
inline constexpr qint64 MaxPicturePixels = 64 * 1000 * 1000;
/// Nor are larger files, whatever they say about their pixels.
inline constexpr qint64 MaxPictureBytes = 512 * 1024 * 1024;
/// A picture is decoded to no more pixels than this, also when it is to be enlarged.
inline constexpr qint64 MaxDecodedPixels = 8 * 1000 * 1000;
/// Moving pictures with more pixels are shown as they begin.
inline constexpr qint64 MaxMovingPixels = 1000 * 1000;

/// The size of a picture scaled down to fit into a box; its own if it does.
QSize fittingSize(QSize picture, QSize box);
/// The size of a picture scaled down as far as it covers a box; its own if it does not.
QSize fillingSize(QSize picture, QSize box);

/// An image turned clockwise.
QImage turnedBy(const QImage& image, int quarterTurns);

/// Decodes a picture file, never enlarged. The orientation that the file asks for is applied; sizes
/// are of the picture as it is turned then. Once `cancelled` is set, by another thread, it gives up
/// soon.
Picture readPicture(const QString& path, const PictureWish& wish,
                    const std::atomic<bool>& cancelled);
/// The same for what an open device holds, which must know its size.
Picture readPicture(QIODevice& device, const PictureWish& wish);
