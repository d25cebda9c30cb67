#include "plugins/support/notice.h"

#include "plugins/support/brokenlines.h"

#include <QPainter>

void paintNotice(QPainter& painter, const QRect& area, const QString& text)
{
    constexpr int Margin = 12;
    const QRect room = area.adjusted(Margin, Margin, -Margin, -Margin);
    const int height = painter.fontMetrics().height();
    const QStringList lines =
        brokenLines(text, painter.font(), room.width(), room.height() / height);
    const int free = room.height() - int(lines.size()) * height;
    paintLines(painter, room.adjusted(0, free / 2, 0, 0), lines);
}
