#include "plugins/support/brokenlines.h"

#include "platform/shownname.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>

namespace
{

/// Blanks that keep words together stay.
QString onOneLine(QString text)
{
    constexpr char16_t NarrowNoBreakSpace = 0x202f;
    for (QChar& character : text) {
        if (character.isSpace() && character != QChar(QChar::Nbsp) &&
            character != QChar(NarrowNoBreakSpace))
            character = QLatin1Char(' ');
    }
    return text.trimmed();
}

} // namespace

QStringList brokenLines(const QString& text, const QFont& font, int width, int most)
{
    const QString whole = onOneLine(withMarks(text));
    if (whole.isEmpty())
        return {};
    QTextLayout layout(whole, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QStringList lines;
    for (QTextLine line = layout.createLine(); line.isValid() && lines.size() < most;
         line = layout.createLine()) {
        line.setLineWidth(std::max(width, 1));
        const bool isLast = lines.size() + 1 == most;
        const QString rest = whole.mid(line.textStart(), isLast ? -1 : line.textLength()).trimmed();
        lines.append(isLast ? QFontMetrics(font).elidedText(rest, Qt::ElideRight, width) : rest);
    }
    layout.endLayout();
    return lines;
}

int paintLines(QPainter& painter, const QRect& area, const QStringList& lines)
{
    const int height = painter.fontMetrics().height();
    int y = area.top();
    for (const QString& line : lines) {
        painter.drawText(QRect(area.left(), y, area.width(), height),
                         int(Qt::AlignCenter) | Qt::TextSingleLine, line);
        y += height;
    }
    return y;
}
