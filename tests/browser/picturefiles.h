#pragma once

#include <QByteArray>
#include <QSize>

class QColor;

/// What looking at a picture file may take, however large it says that it is, bytes.
constexpr qint64 MostMemory = 64 * 1024 * 1024;

/// A picture of one colour in a format of the toolkit ("png", "jpg", "bmp", "ppm").
QByteArray pictureFile(QSize size, const char* format, const QColor& colour);

/// A whole PNG picture of one bit a pixel, all black: few bytes for many pixels.
QByteArray blackPng(QSize size);
/// The first bytes of a PNG picture: all that tells its size, no picture data.
QByteArray pngHeader(QSize size);
/// A JPEG picture that says it has another size than it has.
QByteArray jpegThatClaims(QSize size);
/// An icon file whose directory gives one size and whose only picture is a PNG of another.
QByteArray iconThatClaims(QSize claimed, const QByteArray& png);
