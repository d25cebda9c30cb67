#include "platform/zlistrowpainter.h"

#include "platform/shownname.h"
#include "platform/zlistboxitem.h"
#include "platform/zpixmap.h"

#include <QPainter>

#include <algorithm>

namespace
{

constexpr int RowIconLeft = 3;
constexpr int IconGap = 5;
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

} // namespace

void ZListRowPainter::paint(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                            const State& state)
{
    painter.fillRect(area, state.highlighted ? state.look->highlight : state.look->background);
    int x = area.left() + RowIconLeft;
    if (item.layout().icon) {
        const QSize size = pixmapSize(item.icon_);
        painter.setOpacity(item.isEnabled() ? 1 : 0.5);
        painter.drawPixmap(x + (state.iconWidth - size.width()) / 2,
                           area.top() + (area.height() - size.height()) / 2, item.icon_);
        painter.setOpacity(1);
        x += state.iconWidth + IconGap;
    }
    const int right = area.right() + 1 - ZSkinService::ScrollBarWidth - 2;
    const int checkRoom = item.layout().checkBox ? ZSkinService::CheckBoxSize + 4 : 0;
    int textWidth = right - x - checkRoom;
    if (item.layout().textWidth > 0)
        textWidth = std::min(textWidth, item.layout().textWidth);
    if (item.layout().text)
        paintTexts(painter, QRect(x, area.top(), textWidth, area.height()), item, state);
    if (item.layout().checkBox) {
        const int size = ZSkinService::CheckBoxSize;
        paintCheckBox(
            painter,
            QRect(right - size, area.top() + (area.height() - size) / 2, size - 1, size - 1), item,
            state);
    }
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
    const QString name = metrics.elidedText(visibleText(item.getSubItemText(1, 0)), Qt::ElideMiddle,
                                            area.width(), Qt::TextSingleLine);
    const bool detailed = item.subItemCount(1) > 1;
    const QRect top(area.left(), area.top(), area.width(), area.height() / 2);
    painter.drawText(detailed ? top : area, Qt::AlignVCenter | Qt::TextSingleLine, name);
    if (!detailed)
        return;
    if (!state.highlighted)
        painter.setPen(look.secondaryText);
    paintDetail(painter, top.translated(0, area.height() / 2), item.getSubItemText(1, 1));
}

void ZListRowPainter::paintDetail(QPainter& painter, const QRect& area, const QString& text)
{
    const qsizetype tab = text.indexOf(QLatin1Char('\t'));
    painter.drawText(area, Qt::AlignVCenter | Qt::TextSingleLine, text.left(tab));
    if (tab < 0)
        return;
    const QString last = text.mid(text.lastIndexOf(QLatin1Char('\t')) + 1);
    painter.drawText(area, Qt::AlignVCenter | Qt::AlignRight | Qt::TextSingleLine, last);
}

void ZListRowPainter::paintCheckBox(QPainter& painter, const QRect& area, const ZListBoxItem& item,
                                    const State& state)
{
    painter.setPen(item.isEnabled() ? state.look->border : state.look->disabledText);
    painter.setBrush(state.look->background);
    painter.drawRect(area);
    if (!item.isChecked())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(state.look->text, 2));
    const QPointF points[3] = {QPointF(area.left() + 3, area.top() + 7),
                               QPointF(area.left() + 6, area.top() + 10),
                               QPointF(area.left() + 11, area.top() + 4)};
    painter.drawPolyline(points, 3);
    painter.restore();
}
