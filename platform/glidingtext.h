#pragma once

#include <QRect>
#include <QString>

class QColor;
class QPainter;

/// Lets a text that is cut at the left or the right of its line end in the ground there.
void fadeEdges(QPainter& painter, const QRect& line, const QColor& ground, bool left, bool right);

/// Draws a line of text that is wider than `place` as far as it has glided, with the painter's font
/// and pen. `glide` is what ZGlide::offset() says, from 0 on, in pixels; text that is written from
/// the right begins at its right end. What lies beyond the place is left out, and where the text is
/// cut off it fades into the ground.
void paintGlidingText(QPainter& painter, const QRect& place, int baseline, const QString& text,
                      qreal glide, const QColor& ground);
