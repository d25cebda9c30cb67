// How a menu is laid out and drawn.

#include "platform/zoptionsmenu.h"

#include "platform/glidingtext.h"
#include "platform/scrollthumb.h"
#include "platform/shownname.h"
#include "platform/zglide.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>

namespace
{

constexpr int RowHeight = ZSkinService::MenuRowHeight;
constexpr int Border = 1;
constexpr int TextLeft = 6;
constexpr int IconLeft = 6;
constexpr int IconWidth = 20;
/// From the right: the edge, the arrow where there are submenus, the digit, the gap to the text.
constexpr int EndMargin = 6;
constexpr int ArrowRoom = 10;
constexpr int DigitRoom = 8;
constexpr int EndGap = 6;
constexpr int SmallestWidth = 110;
constexpr int LargestWidth = 236;
/// Past the icons, and before the texts that are to be hidden.
constexpr int SubmenuShift = Border + IconLeft + IconWidth + 4;
constexpr int DigitFontSize = 11;
/// Widths are sums of rounded ones; without this a text that fits is cut.
constexpr int RoundingSlack = 2;

int leadingTabs(const QString& text)
{
    const auto other = std::find_if(text.begin(), text.end(),
                                    [](QChar character) { return character != QLatin1Char('\t'); });
    return int(other - text.begin());
}

void drawArrow(QPainter& painter, QPointF centre, QPointF towards)
{
    const QPointF side(towards.y(), towards.x());
    const QPointF points[3] = {centre + towards, centre - towards + side * 2,
                               centre - towards - side * 2};
    painter.drawPolygon(points, 3);
}

} // namespace

QRect ZOptionsMenu::room() const
{
    const QRect screen(0, 0, ZScreen::Width, ZScreen::Height - ZSkinService::SoftKeyHeight);
    if (limit_.isNull())
        return screen;
    if (limit_.isValid())
        return limit_.intersected(QRect(0, 0, ZScreen::Width, ZScreen::Height));
    return QRect(limit_.topLeft(), screen.bottomRight());
}

int ZOptionsMenu::visibleRows() const
{
    const int fitting = (room().height() - 2 * Border) / RowHeight;
    return std::clamp(count(), 1, std::max(fitting, 1));
}

bool ZOptionsMenu::hasSubmenus() const
{
    return std::any_of(items_.begin(), items_.end(),
                       [](const Item& item) { return !item.submenu.isNull(); });
}

bool ZOptionsMenu::isSubmenuOpen() const
{
    return std::any_of(items_.begin(), items_.end(), [this](const Item& item) {
        return item.submenu && item.submenu->isVisible() && item.submenu->opener_ == this;
    });
}

/// What is kept free of texts. It is the same in all rows, so that the digits form a column.
int ZOptionsMenu::roomAtRight() const
{
    return EndMargin + (scrolls() ? ZSkinService::ScrollBarWidth : 0) +
           (hasSubmenus() ? ArrowRoom : 0) + DigitRoom + EndGap;
}

QSize ZOptionsMenu::contentSize() const
{
    const QFontMetrics metrics(font());
    const int beside = TextLeft + indent() + roomAtRight() + RoundingSlack;
    int widest = SmallestWidth;
    for (int position = 0; position < count(); ++position)
        widest = std::max(widest, beside + metrics.horizontalAdvance(shownText(position)));
    return {std::min({widest + 2 * Border, LargestWidth, room().width()}),
            visibleRows() * RowHeight + 2 * Border};
}

QRect ZOptionsMenu::placeFor(QSize content) const
{
    const QRect area = room();
    if (!limit_.isNull())
        return {area.topLeft(), content};
    if (opener_)
        return placeBeside(content);
    return {QPoint(area.left(), area.bottom() + 1 - content.height()), content};
}

/// Beside the icons of the opener, over all that is at their right; over all of it where that
/// leaves too little room.
QRect ZOptionsMenu::placeBeside(QSize content) const
{
    const QRect opener = opener_->place_;
    int left = opener.left() + SubmenuShift;
    int top = opener.top() + opener_->rowRect(opener_->current_).top();
    QSize size(std::max(content.width(), opener.right() + 1 - left), content.height());
    if (ZScreen::Width - left < SmallestWidth) {
        size = content.expandedTo(opener.size());
        left = std::min(opener.left(), ZScreen::Width - size.width());
        top = opener.top();
    }
    const int lowest = std::max(room().bottom() + 1 - size.height(), 0);
    return {left, std::clamp(top, 0, lowest), std::min(size.width(), ZScreen::Width - left),
            size.height()};
}

QRect ZOptionsMenu::rowRect(int position) const
{
    return {Border, Border + (position - first_) * RowHeight, width() - 2 * Border, RowHeight};
}

int ZOptionsMenu::positionAt(QPoint point) const
{
    if (!rect().contains(point))
        return -1;
    const int position = first_ + std::max(point.y() - Border, 0) / RowHeight;
    return position < std::min(count(), first_ + visibleRows()) ? position : -1;
}

QRect ZOptionsMenu::textRect(int position) const
{
    return rowRect(position).adjusted(TextLeft + indent(), 0, -roomAtRight(), 0);
}

int ZOptionsMenu::indent() const
{
    return int(tabs_) * ZSkinService::MenuTabWidth;
}

void ZOptionsMenu::noteTabs(const QString& text)
{
    tabs_ = std::max<qsizetype>(tabs_, leadingTabs(text));
}

QString ZOptionsMenu::shownText(int position) const
{
    const QString& text = items_.at(position).text;
    return withMarks(text.mid(leadingTabs(text)));
}

void ZOptionsMenu::paintEvent(QPaintEvent* event)
{
    const auto& look = ZSkinService::look(widgetClass_);
    QPainter painter(this);
    painter.fillRect(rect(), look.border);
    painter.fillRect(rect().adjusted(Border, Border, -Border, -Border), look.background);
    const int end = std::min(count(), first_ + visibleRows());
    for (int position = first_; position < end; ++position) {
        if (event->rect().intersects(rowRect(position)))
            paintRow(painter, position);
    }
    paintScrollMarks(painter);
}

void ZOptionsMenu::paintRow(QPainter& painter, int position) const
{
    const auto& look = ZSkinService::look(widgetClass_);
    const Item& item = items_.at(position);
    const QRect area = rowRect(position);
    const bool current = position == current_;
    if (current) {
        painter.fillRect(area, look.highlight);
        painter.fillRect(area.left(), area.top(), ZSkinService::MarkWidth, area.height(),
                         look.mark);
    }
    const QPixmap icon = item.icon.pixmap();
    const QSize iconSize = pixmapSize(icon);
    painter.setOpacity(item.enabled ? 1 : 0.4);
    drawPicture(painter,
                {area.left() + IconLeft, area.top() + (area.height() - iconSize.height()) / 2},
                icon);
    painter.setOpacity(1);
    painter.setPen(!item.enabled ? look.disabledText : current ? look.highlightText : look.text);
    paintText(painter, position);
    // Of a menu that gets no keys they would be no use.
    if (!isSubmenuOpen())
        paintRowEnd(painter, position);
}

void ZOptionsMenu::paintText(QPainter& painter, int position) const
{
    const QRect area = textRect(position);
    const QString text = shownText(position);
    const QFontMetrics metrics = painter.fontMetrics();
    if (position != current_ || glide_ == nullptr || glide_->offset() < 0) {
        painter.drawText(area, Qt::AlignVCenter | Qt::TextSingleLine,
                         metrics.elidedText(text, Qt::ElideRight, area.width()));
        return;
    }
    const int top = area.top() + (area.height() - metrics.height()) / 2;
    paintGlidingText(painter, area, top + metrics.ascent(), text, glide_->offset(),
                     ZSkinService::look(widgetClass_).highlight);
}

/// The digit that chooses the item, and the arrow of a submenu.
void ZOptionsMenu::paintRowEnd(QPainter& painter, int position) const
{
    const QRect area = rowRect(position);
    const QColor colour = painter.pen().color();
    int right = area.right() - EndMargin - (scrolls() ? ZSkinService::ScrollBarWidth : 0);
    if (items_.at(position).submenu) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(colour);
        drawArrow(painter, QPointF(right - 2, area.center().y() + 0.5), QPointF(2, 0));
        painter.restore();
    }
    if (position >= DigitCount || !canChoose(position))
        return;
    if (hasSubmenus())
        right -= ArrowRoom;
    painter.save();
    painter.setPen(ZSkinService::look(widgetClass_).secondaryText);
    QFont small = painter.font();
    small.setPixelSize(DigitFontSize);
    painter.setFont(small);
    painter.drawText(QRect(area.left(), area.top(), right + 1 - area.left(), area.height()),
                     Qt::AlignRight | Qt::AlignVCenter, QString::number(position + 1));
    painter.restore();
}

void ZOptionsMenu::paintScrollMarks(QPainter& painter) const
{
    if (!scrolls())
        return;
    ScrollThumb::of(height() - 2 * Border, visibleRows(), count(), first_)
        .paint(painter, {width() - Border - ZSkinService::ScrollThumbWidth, Border},
               ZSkinService::look(widgetClass_).thumb);
}
