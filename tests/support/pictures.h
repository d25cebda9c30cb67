#pragma once

#include <QImage>
#include <QPixmap>

/// The smallest rectangle around the pixels of an area that differ from its ground; empty if there
/// are none. A difference that no eye sees does not count.
QRect inkBounds(const QImage& picture, const QRect& area, const QColor& ground);
/// Whether every pixel of an area has one colour.
bool isPlain(const QImage& picture, const QRect& area, const QColor& colour);
/// The smallest rectangle around the pixels of one colour.
QRect boundsOf(const QImage& picture, const QColor& colour);
/// A picture of one colour, as large as the icons of rows unless said otherwise.
QPixmap coloured(const QColor& colour, QSize size = {16, 16});
/// A picture of one colour as the bytes of a PNG file.
QByteArray plainPng(int width, int height, const QColor& colour);
/// Whether two rectangles have all edges within `slack` pixels of each other.
bool isNear(const QRect& one, const QRect& other, int slack = 1);
