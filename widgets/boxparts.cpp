#include "widgets/boxparts.h"

#include <QPainter>

namespace Box
{

BoxFont titleFont()
{
    return {15, 87};
}

BoxFont textFont()
{
    return {13, 25};
}

void drawGround(QPainter& painter, int top, int height)
{
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawRect(0, top, Width - 1, height - 1);
}

QRect lineArea(const BoxFont& font, int top)
{
    return {TextLeft, top, TextWidth, font.lineHeight()};
}

int drawLines(QPainter& painter, const BoxFont& font, const QStringList& lines, int top, int align)
{
    for (const QString& line : lines) {
        font.drawLine(painter, lineArea(font, top), align, line);
        top += font.pitch();
    }
    return top;
}

} // namespace Box
