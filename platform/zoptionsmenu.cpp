#include "platform/zoptionsmenu.h"

#include "platform/keymap.h"
#include "platform/shownname.h"
#include "platform/zpixmap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"

#include <QMetaMethod>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace
{

constexpr int RowHeight = ZSkinService::MenuRowHeight;
constexpr int Border = 1;
constexpr int TextLeft = 6;
constexpr int IconLeft = 6;
constexpr int ArrowRoom = 18;
constexpr int SmallestWidth = 110;
constexpr int LargestWidth = 224;
constexpr int SubmenuShift = 14;
constexpr int FontSize = 14;
/// Widths are sums of rounded ones; without this a text that fits is cut.
constexpr int RoundingSlack = 2;

int leadingTabs(const QString& text)
{
    const auto other = std::find_if(text.begin(), text.end(),
                                    [](QChar character) { return character != QLatin1Char('\t'); });
    return int(other - text.begin());
}

/// A slot as the meta object knows it, from "slot_Copy()" or from what the SLOT macro makes of it.
QByteArray slotSignature(const char* slot)
{
    QByteArray signature(slot);
    if (signature.startsWith('1'))
        signature.remove(0, 1);
    return QMetaObject::normalizedSignature(signature.constData());
}

void drawArrow(QPainter& painter, QPointF centre, QPointF towards)
{
    const QPointF side(towards.y(), towards.x());
    const QPointF points[3] = {centre + towards, centre - towards + side * 2,
                               centre - towards - side * 2};
    painter.drawPolygon(points, 3);
}

} // namespace

ZOptionsMenu::ZOptionsMenu(const QRect& rect, QWidget* parent, const char* name,
                           Qt::WindowFlags flags, unsigned widgetClass)
    : QWidget(ZScreen::instance(), flags), limit_(rect), widgetClass_(widgetClass)
{
    hide();
    setObjectName(QLatin1String(name));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    QFont menuFont = font();
    menuFont.setPixelSize(FontSize);
    setFont(menuFont);
    ZScreen::instance()->place(this, ZScreen::Layer::Box);
    connect(ZScreen::instance(), &ZScreen::pressedOutside, this, [this] {
        if (ZScreen::instance()->active() == this)
            closeAll();
    });
    if (parent != nullptr)
        connect(parent, &QObject::destroyed, this, &QObject::deleteLater);
}

ZOptionsMenu::~ZOptionsMenu() = default;

void ZOptionsMenu::insertItem(const QString& text, ZOptionsMenu* submenu, const ZPicture& icon,
                              bool enabled, int id, int index)
{
    const qsizetype end = items_.size();
    const qsizetype position = index < 0 || index > end ? end : index;
    items_.insert(position, {text, submenu, icon, enabled, id, {}});
    update();
}

bool ZOptionsMenu::changeItem(int id, const QString& text, const ZPicture& icon)
{
    Item* item = itemOf(id);
    if (item == nullptr)
        return false;
    item->text = text;
    item->icon = icon;
    update();
    return true;
}

void ZOptionsMenu::setItemEnabled(int id, bool enabled)
{
    if (Item* item = itemOf(id)) {
        item->enabled = enabled;
        update();
    }
}

bool ZOptionsMenu::isItemEnabled(int id) const
{
    const Item* item = itemOf(id);
    return item != nullptr && item->enabled;
}

bool ZOptionsMenu::connectItem(int id, QObject* receiver, const char* slot)
{
    Item* item = itemOf(id);
    const QByteArray signature = slotSignature(slot);
    const QMetaObject* meta = receiver->metaObject();
    const QMetaMethod method = meta->method(meta->indexOfMethod(signature));
    if (item == nullptr || !method.isValid() || method.parameterCount() > 0) {
        qWarning("ZOptionsMenu: cannot connect item %d to %s", id, slot);
        return false;
    }
    const Connection connection{receiver, signature};
    if (!item->connections.contains(connection))
        item->connections.append(connection);
    return true;
}

bool ZOptionsMenu::disconnectItem(int id, QObject* receiver, const char* slot)
{
    Item* item = itemOf(id);
    return item != nullptr && item->connections.removeOne({receiver, slotSignature(slot)});
}

int ZOptionsMenu::count() const
{
    return int(items_.size());
}

int ZOptionsMenu::idAt(int position) const
{
    return items_.at(position).id;
}

QString ZOptionsMenu::textAt(int position) const
{
    return items_.at(position).text;
}

QPixmap ZOptionsMenu::iconAt(int position) const
{
    return items_.at(position).icon.pixmap();
}

ZOptionsMenu* ZOptionsMenu::submenuAt(int position) const
{
    return items_.at(position).submenu;
}

int ZOptionsMenu::currentPosition() const
{
    return current_;
}

int ZOptionsMenu::getActiveItemId() const
{
    return activeId_;
}

void ZOptionsMenu::setLimitRect(const QRect& rect)
{
    limit_ = rect;
}

void ZOptionsMenu::closeAll()
{
    const QPointer<ZOptionsMenu> opener = opener_;
    for (const Item& item : std::as_const(items_)) {
        if (item.submenu && item.submenu->isVisible() && item.submenu->opener_ == this)
            item.submenu->hide();
    }
    hide();
    if (opener)
        opener->closeAll();
}

ZOptionsMenu::Item* ZOptionsMenu::itemOf(int id)
{
    return const_cast<Item*>(std::as_const(*this).itemOf(id));
}

const ZOptionsMenu::Item* ZOptionsMenu::itemOf(int id) const
{
    // Mostly an item's id is its position. Without this, filling a long menu takes for ever.
    if (id >= 0 && id < items_.size() && items_.at(id).id == id)
        return &items_.at(id);
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [id](const Item& item) { return item.id == id; });
    return found == items_.end() ? nullptr : &*found;
}

QRect ZOptionsMenu::room() const
{
    const QRect screen(0, 0, ZScreen::Width, ZScreen::Height - ZSkinService::SoftKeyHeight);
    if (limit_.isNull())
        return screen;
    if (limit_.isValid())
        return limit_.intersected(QRect(0, 0, ZScreen::Width, ZScreen::Height));
    return QRect(limit_.topLeft(), screen.bottomRight());
}

int ZOptionsMenu::contentWidth() const
{
    const QFontMetrics metrics(font());
    int widest = SmallestWidth;
    for (const Item& item : items_) {
        const int tabs = leadingTabs(item.text);
        widest =
            std::max(widest, TextLeft + tabs * ZSkinService::MenuTabWidth + ArrowRoom +
                                 RoundingSlack + metrics.horizontalAdvance(item.text.mid(tabs)));
    }
    return std::min({widest + 2 * Border, LargestWidth, room().width()});
}

int ZOptionsMenu::visibleRows() const
{
    const int fitting = (room().height() - 2 * Border) / RowHeight;
    return std::clamp(count(), 1, std::max(fitting, 1));
}

void ZOptionsMenu::showEvent(QShowEvent* /*event*/)
{
    current_ = items_.isEmpty() ? -1 : 0;
    first_ = 0;
    finger_.cancel();
    const QRect area = room();
    const QSize size(contentWidth(), visibleRows() * RowHeight + 2 * Border);
    QPoint corner(area.left(), area.bottom() + 1 - size.height());
    if (limit_.isNull() && opener_) {
        const int row = opener_->y() + opener_->rowRect(opener_->current_).top();
        corner = QPoint(std::min(opener_->x() + SubmenuShift, ZScreen::Width - size.width()),
                        std::clamp(row, 0, corner.y()));
    } else if (!limit_.isNull()) {
        corner = area.topLeft();
    }
    setGeometry(QRect(corner, size));
}

void ZOptionsMenu::hideEvent(QHideEvent* /*event*/)
{
    opener_ = nullptr;
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

void ZOptionsMenu::moveTo(int position)
{
    current_ = position;
    if (current_ < first_)
        scrollTo(current_);
    else if (current_ >= first_ + visibleRows())
        scrollTo(current_ - visibleRows() + 1);
    update();
}

void ZOptionsMenu::scrollTo(int first)
{
    first_ = std::clamp(first, 0, std::max(count() - visibleRows(), 0));
    update();
}

void ZOptionsMenu::openSubmenu(ZOptionsMenu* submenu)
{
    submenu->opener_ = this;
    submenu->show();
}

void ZOptionsMenu::choose(int position)
{
    if (position < 0 || position >= count() || !items_.at(position).enabled)
        return;
    if (ZOptionsMenu* submenu = items_.at(position).submenu) {
        openSubmenu(submenu);
        return;
    }
    activeId_ = items_.at(position).id;
    // A slot may delete this menu, so nothing of it is used from here on.
    const QList<Connection> connections = items_.at(position).connections;
    closeAll();
    for (const Connection& connection : connections) {
        if (connection.receiver) {
            const QMetaObject* meta = connection.receiver->metaObject();
            meta->method(meta->indexOfMethod(connection.slot))
                .invoke(connection.receiver, Qt::DirectConnection);
        }
    }
}

void ZOptionsMenu::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    const int code = PhoneKey::code(*event);
    if (code == PhoneKey::Up || code == PhoneKey::Down) {
        if (count() > 0)
            moveTo((current_ + (code == PhoneKey::Down ? 1 : count() - 1)) % count());
        return;
    }
    // A key still held from opening the menu must not choose or close anything.
    if (event->isAutoRepeat())
        return;
    if (PhoneKey::isSelect(code) || code == PhoneKey::SoftLeft) {
        choose(current_);
    } else if (code == PhoneKey::Right && current_ >= 0) {
        const Item& item = items_.at(current_);
        if (item.enabled && item.submenu)
            openSubmenu(item.submenu);
    } else if (code == PhoneKey::Left || code == PhoneKey::SoftRight) {
        hide();
    }
}

void ZOptionsMenu::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    finger_.press(event->position().toPoint().y(), first_);
    const int position = positionAt(event->position().toPoint());
    if (position >= 0)
        moveTo(position);
}

void ZOptionsMenu::mouseMoveEvent(QMouseEvent* event)
{
    event->accept();
    if (const auto first = finger_.move(event->position().toPoint().y(), RowHeight))
        scrollTo(*first);
}

void ZOptionsMenu::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    if (finger_.release())
        choose(positionAt(event->position().toPoint()));
}

void ZOptionsMenu::wheelEvent(QWheelEvent* event)
{
    event->accept();
    scrollTo(first_ + (event->angleDelta().y() < 0 ? 1 : -1));
}

void ZOptionsMenu::paintEvent(QPaintEvent* /*event*/)
{
    const auto& look = ZSkinService::look(widgetClass_);
    QPainter painter(this);
    painter.fillRect(rect(), look.border);
    painter.fillRect(rect().adjusted(Border, Border, -Border, -Border), look.background);
    const int end = std::min(count(), first_ + visibleRows());
    for (int position = first_; position < end; ++position)
        paintRow(painter, position);
    paintScrollMarks(painter);
}

void ZOptionsMenu::paintRow(QPainter& painter, int position) const
{
    const auto& look = ZSkinService::look(widgetClass_);
    const Item& item = items_.at(position);
    const QRect area = rowRect(position);
    const bool current = position == current_;
    if (current)
        painter.fillRect(area, item.enabled ? look.highlight : look.disabledText.lighter(130));
    const QPixmap icon = item.icon.pixmap();
    const QSize iconSize = pixmapSize(icon);
    painter.setOpacity(item.enabled ? 1 : 0.4);
    painter.drawPixmap(area.left() + IconLeft, area.top() + (area.height() - iconSize.height()) / 2,
                       icon);
    painter.setOpacity(1);
    painter.setPen(!item.enabled ? (current ? look.border : look.disabledText)
                                 : (current ? look.highlightText : look.text));
    const int tabs = leadingTabs(item.text);
    const QRect textArea =
        area.adjusted(TextLeft + tabs * ZSkinService::MenuTabWidth, 0, -ArrowRoom, 0);
    painter.drawText(textArea, Qt::AlignVCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(withMarks(item.text.mid(tabs)),
                                                      Qt::ElideRight, textArea.width()));
    if (item.submenu) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(painter.pen().color());
        drawArrow(painter, QPointF(area.right() - 8, area.center().y() + 0.5), QPointF(2, 0));
    }
}

void ZOptionsMenu::paintScrollMarks(QPainter& painter) const
{
    if (count() <= visibleRows())
        return;
    const auto& look = ZSkinService::look(widgetClass_);
    const int track = height() - 2 * Border;
    const int thumb = std::max(track * visibleRows() / count(), 12);
    const int top = (track - thumb) * first_ / (count() - visibleRows());
    painter.fillRect(width() - Border - ZSkinService::ScrollBarWidth, Border + top,
                     ZSkinService::ScrollBarWidth, thumb, look.border);
}
