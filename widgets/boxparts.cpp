#include "widgets/boxparts.h"

#include "platform/zskinservice.h"

#include <QPainter>

namespace
{

// What has room on the screen below the title, however long the name in a message is.
constexpr qsizetype MaxLines = 10;
constexpr int BarHeight = 10;
constexpr int Percent = 100;

} // namespace

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

QStringList linesOf(const QString& text, BoxFont& font)
{
    return font.wrapped(text, TextWidth).texts.mid(0, MaxLines);
}

int blockHeight(const QStringList& lines, const BoxFont& font)
{
    return Gap + int(lines.size()) * font.pitch();
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

void drawProgress(QPainter& painter, const BoxFont& font, int top, int percent, const QString& text)
{
    // One block with the text above it: no line between them.
    drawGround(painter, top - 1, ProgressHeight + 1);
    painter.fillRect(1, top - 1, Width - 2, 1, Qt::white);
    painter.drawRect(TextLeft, top, TextWidth - 1, BarHeight - 1);
    const int filled = (TextWidth - 2) * percent / Percent;
    painter.fillRect(TextLeft + 1, top + 1, filled, BarHeight - 2,
                     ZSkinService::look(ZSkinService::clsListBox).mark);
    painter.setFont(font.font());
    painter.drawText(TextLeft, top + BarHeight, TextWidth, ProgressHeight - BarHeight,
                     Qt::AlignCenter, text);
}

void drawKeyBar(QPainter& painter, const BoxFont& font, int top, const QStringList& words)
{
    painter.fillRect(0, top, Width, KeyBarHeight, Qt::black);
    painter.setFont(font.font());
    painter.setPen(Qt::white);
    const int share = Width / int(words.size());
    const QFontMetrics metrics = painter.fontMetrics();
    for (int i = 0; i < int(words.size()); ++i)
        painter.drawText(i * share, top, share, KeyBarHeight, Qt::AlignCenter,
                         metrics.elidedText(words.at(i), Qt::ElideRight, share));
}

} // namespace Box
