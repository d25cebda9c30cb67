#include "platform/glidingtext.h"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

void fadeEdges(QPainter& painter, const QRect& line, const QColor& ground, bool left, bool right)
{
    constexpr int Width = 8;
    QColor clear = ground;
    clear.setAlpha(0);
    const auto fade = [&](int from, int to) {
        QLinearGradient gradient(from, 0, to, 0);
        gradient.setColorAt(0, ground);
        gradient.setColorAt(1, clear);
        painter.fillRect(std::min(from, to), line.top(), Width, line.height(), gradient);
    };
    if (left)
        fade(line.left(), line.left() + Width);
    if (right)
        fade(line.right() + 1, line.right() + 1 - Width);
}

void paintGlidingText(QPainter& painter, const QRect& place, int baseline, const QString& text,
                      qreal glide, const QColor& ground)
{
    const QFontMetrics metrics = painter.fontMetrics();
    // What is written from the right begins there.
    const qreal wider = metrics.horizontalAdvance(text) - place.width();
    const qreal shift = text.isRightToLeft() ? wider - glide : glide;
    painter.save();
    painter.setClipRect(place, Qt::IntersectClip);
    painter.drawText(QPointF(place.left() - shift, baseline), text);
    painter.restore();
    const QRect line(place.left(), baseline - metrics.ascent(), place.width(), metrics.height());
    fadeEdges(painter, line, ground, shift > 0, shift < wider);
}
