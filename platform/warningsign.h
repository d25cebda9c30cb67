#pragma once

#include <QRect>

class QColor;
class QPainter;

/// The side of the square that a warning sign is made for, pixels.
inline constexpr int WarningSignSize = 14;

/// Draws a triangle with a mark of exclamation into such a square, beside a warning's words.
void paintWarningSign(QPainter& painter, QPoint corner, const QColor& sign, const QColor& mark);
