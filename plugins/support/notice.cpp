#include "plugins/support/notice.h"

#include "platform/shownname.h"

#include <QPainter>
#include <QTextOption>

void paintNotice(QPainter& painter, const QRect& area, const QString& text)
{
    constexpr int Margin = 12;
    QTextOption option(Qt::AlignCenter);
    // File names are long words.
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    painter.drawText(QRectF(area.adjusted(Margin, Margin, -Margin, -Margin)), withMarks(text),
                     option);
}
