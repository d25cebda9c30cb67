#include "platform/warningsign.h"

#include <QPainter>

void paintWarningSign(QPainter& painter, QPoint corner, const QColor& sign, const QColor& mark)
{
    const QRect area(corner, QSize(WarningSignSize, WarningSignSize));
    const QPointF corners[] = {{area.left() + area.width() / 2.0, area.top() + 0.5},
                               {area.right() + 0.5, area.bottom() + 0.5},
                               {area.left() + 0.5, area.bottom() + 0.5}};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(sign, 1, Qt::SolidLine, Qt::SquareCap, Qt::RoundJoin));
    painter.setBrush(sign);
    painter.drawPolygon(corners, 3);
    const int middle = area.left() + area.width() / 2 - 1;
    painter.fillRect(middle, area.top() + 4, 2, 5, mark);
    painter.fillRect(middle, area.top() + 10, 2, 2, mark);
    painter.restore();
}
