#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <atomic>

/// What a picture file holds, upright and in a size that suits the screen.
struct Picture {
    QImage image;          ///< possibly smaller than the picture; null if there is a problem
    QSize size;            ///< of the picture itself, in its own pixels
    bool animated = false; ///< small enough to be played, too
    QString problem;       ///< why there is nothing to show, a sentence
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

/// Decodes a picture file scaled down to fit into `box`, or with an empty box as large as sensible.
/// The orientation that the file asks for is applied. Once `cancelled` is set, by another thread,
/// it gives up soon.
Picture readPicture(const QString& path, QSize box, const std::atomic<bool>& cancelled);
