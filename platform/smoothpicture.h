#pragma once

#include <QImage>
#include <QImageReader>
#include <QSize>

/// The size of the picture that a reader is about to read, in its own pixels; upright if the reader
/// turns it. Invalid if the file does not tell before it is decoded.
QSize sizeToBe(const QImageReader& reader);

/// Reads a picture at a size that is no larger than sizeToBe(), every pixel of it being the mean of
/// those that it stands for, whatever kind they are of. An invalid size, or the picture's own, is
/// as reader.read(). Null if it fails.
QImage readSmooth(QImageReader& reader, QSize size);
