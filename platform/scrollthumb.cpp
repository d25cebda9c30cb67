#include "platform/scrollthumb.h"

#include "platform/zskinservice.h"

#include <QPainter>

#include <algorithm>

ScrollThumb ScrollThumb::of(int track, qint64 shown, qint64 all, qint64 first)
{
    // In floating point: the bytes of a large file times pixels may be more than a number holds.
    const int length = std::min(track, std::max(int(double(track) * double(shown) / double(all)),
                                                ZSkinService::ScrollThumbLength));
    const qint64 furthest = all - shown;
    const double way = double(std::clamp<qint64>(first, 0, furthest)) * (track - length);
    return {int(way / double(furthest)), length};
}

void ScrollThumb::paint(QPainter& painter, QPoint track, const QColor& colour) const
{
    painter.fillRect(track.x(), track.y() + top, ZSkinService::ScrollThumbWidth, length, colour);
}
