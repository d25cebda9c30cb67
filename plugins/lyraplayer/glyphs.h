#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

/// The signs of a music player, drawn to fill a square.
namespace Glyph
{
void play(QPainter& painter, const QRectF& square, const QColor& colour);
void pause(QPainter& painter, const QRectF& square, const QColor& colour);
void previous(QPainter& painter, const QRectF& square, const QColor& colour);
void next(QPainter& painter, const QRectF& square, const QColor& colour);
void speaker(QPainter& painter, const QRectF& square, const QColor& colour);
/// The note that stands for the music where there is no picture of it.
void note(QPainter& painter, const QRectF& square, const QColor& colour);
} // namespace Glyph
