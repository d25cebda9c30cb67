#include "platform/zlistrowpainter.h"

#include "platform/glidingtext.h"
#include "platform/shownname.h"
#include "platform/zlistboxitem.h"
#include "platform/zpixmap.h"

#include <QFontInfo>
#include <QPainter>

#include <algorithm>

namespace
{

/// The icons have a margin of their own.
constexpr int RowIconLeft = ZSkinService::MarkWidth + 1;
constexpr int IconGap = 3;
/// Between the base line of a name and the top of what is below it, and from row to row.
constexpr int LineGap = 5;
constexpr double DisabledOpacity = 0.4;
/// Where the Unicode pictures of the control characters start, and the one of DEL.
constexpr char16_t ControlPictures = 0x2400;
constexpr char16_t DeletePicture = 0x2421;
constexpr char16_t Delete = 0x7f;
constexpr char16_t NewlinePicture = 0x2424;

/// The line breaks that Unicode has beside those of ASCII.
bool isLaterLineBreak(QChar character)
{
    constexpr char16_t NextLine = 0x85;
    return character == QChar(NextLine) || character == QChar(QChar::LineSeparator) ||
           character == QChar(QChar::ParagraphSeparator);
}

int pixelSize(const QFont& font)
{
    return font.pixelSize() > 0 ? font.pixelSize() : QFontInfo(font).pixelSize();
}

/// The base lines of a row's texts, which stand as one block in its middle: capitals decide, what
/// reaches above or below them does not move it.
struct BaseLines {
    BaseLines(const QRect& area, const QFontMetrics& metrics, bool two)
    {
        const int capitals = metrics.capHeight();
        const int block = two ? 2 * capitals + LineGap : capitals;
        first = area.top() + (area.height() - block + 1) / 2 + capitals;
        second = first + LineGap + capitals;
    }

    int first;
    int second;
};

} // namespace

int ZListRowPainter::rowHeight(const QFont& font, int lines, int iconHeight)
{
    // By the size that was asked for and not by what a font wants between lines: fonts differ in
    // that, and the number of rows on the screen must not.
    const int size = pixelSize(font);
    return lines > 1 ? std::max(2 * size + 6, iconHeight) : std::max(size + 5, iconHeight + 4);
}

void ZListRowPainter::paint(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                            const State& state)
{
    if (state.highlighted) {
        painter.fillRect(area, state.look->highlight);
        painter.fillRect(area.left(), area.top(), ZSkinService::MarkWidth, area.height(),
                         state.look->mark);
    } else {
        painter.fillRect(area, state.look->background);
        painter.fillRect(area.left(), area.bottom(), area.width(), 1, state.look->hairline);
    }
    if (item.layout().icon)
        paintIcon(painter, area, item, state);
    if (item.layout().text)
        paintTexts(painter, textRect(area, item, state), item, state);
    if (item.layout().checkBox) {
        const int size = ZSkinService::CheckBoxSize;
        const int right = area.right() + 1 - ZSkinService::ScrollBarWidth - 2;
        paintCheckBox(painter,
                      QRect(right - size, area.top() + (area.height() - size) / 2, size, size),
                      item, state);
    }
}

void ZListRowPainter::paintIcon(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                                const State& state)
{
    const QSize size = pixmapSize(item.icon_);
    painter.setOpacity(item.isEnabled() ? 1 : DisabledOpacity);
    drawPicture(painter,
                {area.left() + RowIconLeft + (state.iconWidth - size.width()) / 2,
                 area.top() + (area.height() - size.height()) / 2},
                item.icon_);
    painter.setOpacity(1);
}

/// The part of a row that its texts have.
QRect ZListRowPainter::textRect(const QRect& area, const ZListBoxItem& item, const State& state)
{
    const ZListRowLayout& layout = item.layout();
    const int left = area.left() + RowIconLeft + (layout.icon ? state.iconWidth + IconGap : 0);
    const int right = area.right() + 1 - ZSkinService::ScrollBarWidth - 2;
    int width = right - left - (layout.checkBox ? ZSkinService::CheckBoxSize + 4 : 0);
    if (layout.textWidth > 0)
        width = std::min(width, layout.textWidth);
    return {left, area.top(), width, area.height()};
}

QRect ZListRowPainter::nameRect(const QRect& area, const ZListBoxItem& item, const State& state)
{
    const QFontMetrics metrics(state.font);
    const QRect text = textRect(area, item, state);
    const BaseLines lines(text, metrics, item.subItemCount(1) > 1);
    return {text.left(), lines.first - metrics.ascent(), text.width(), metrics.height()};
}

int ZListRowPainter::nameWidth(const ZListBoxItem& item, const State& state)
{
    return QFontMetrics(state.font).horizontalAdvance(visibleText(item.getSubItemText(1, 0)));
}

QString ZListRowPainter::visibleText(const QString& text)
{
    QString shown = withMarks(text);
    for (QChar& character : shown) {
        if (character.unicode() < 0x20)
            character = QChar(char16_t(ControlPictures + character.unicode()));
        else if (character.unicode() == Delete)
            character = QChar(DeletePicture);
        else if (isLaterLineBreak(character))
            character = QChar(NewlinePicture);
        else if (character.category() == QChar::Other_Control)
            character = QChar(QChar::ReplacementCharacter);
    }
    return shown;
}

void ZListRowPainter::paintTexts(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                                 const State& state)
{
    const auto& look = *state.look;
    painter.setFont(state.font);
    painter.setPen(!item.isEnabled()   ? look.disabledText
                   : state.highlighted ? look.highlightText
                                       : look.text);
    const QFontMetrics metrics = painter.fontMetrics();
    const bool detailed = item.subItemCount(1) > 1;
    const BaseLines lines(area, metrics, detailed);
    const QString name = visibleText(item.getSubItemText(1, 0));
    if (state.glide < 0) {
        painter.drawText(
            area.left(), lines.first,
            metrics.elidedText(name, Qt::ElideMiddle, area.width(), Qt::TextSingleLine));
    } else {
        paintGlidingText(painter, area, lines.first, name, state.glide, look.highlight);
    }
    if (!detailed)
        return;
    painter.setPen(look.secondaryText);
    paintDetail(painter, area, lines.second, item.getSubItemText(1, 1));
}

void ZListRowPainter::paintDetail(QPainter& painter, const QRect& area, int baseline,
                                  const QString& text)
{
    const qsizetype tab = text.indexOf(QLatin1Char('\t'));
    painter.drawText(area.left(), baseline, text.left(tab));
    if (tab < 0)
        return;
    const QString last = text.mid(text.lastIndexOf(QLatin1Char('\t')) + 1);
    const int width = painter.fontMetrics().horizontalAdvance(last);
    painter.drawText(area.right() + 1 - width, baseline, last);
}

void ZListRowPainter::paintCheckBox(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                                    const State& state)
{
    constexpr qreal Corner = 2;
    const auto& look = *state.look;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (item.isChecked()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.text);
        painter.drawRoundedRect(area, Corner, Corner);
        painter.setPen(QPen(look.background, 2));
        const QPointF points[3] = {QPointF(area.left() + 3, area.top() + 7),
                                   QPointF(area.left() + 6, area.top() + 10),
                                   QPointF(area.left() + 11, area.top() + 4)};
        painter.drawPolyline(points, 3);
    } else {
        // One that cannot be checked is filled, and seen all the same.
        painter.setPen(look.border);
        painter.setBrush(item.isEnabled() ? look.background : look.hairline);
        painter.drawRoundedRect(QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5), Corner, Corner);
    }
    painter.restore();
}
