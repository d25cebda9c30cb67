#include "platform/zoptionsmenu.h"

#include "platform/keymap.h"
#include "platform/zglide.h"
#include "platform/zlift.h"
#include "platform/zmotion.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"

#include <QMetaMethod>
#include <QMouseEvent>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <algorithm>

namespace
{

constexpr int FontSize = 14;

std::array<QString, 2>& menuKeys()
{
    static std::array<QString, 2> texts{QStringLiteral("Select"), QStringLiteral("Back")};
    return texts;
}

/// A slot as the meta object knows it, from "slot_Copy()" or from what the SLOT macro makes of it.
QByteArray slotSignature(const char* slot)
{
    QByteArray signature(slot);
    if (signature.startsWith('1'))
        signature.remove(0, 1);
    return QMetaObject::normalizedSignature(signature.constData());
}

} // namespace

void ZOptionsMenu::setSoftKeyTexts(const QString& select, const QString& back)
{
    menuKeys() = {select, back};
}

std::array<QString, 2> ZOptionsMenu::softKeyTexts()
{
    return menuKeys();
}

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
    const auto& look = ZSkinService::look(widgetClass);
    new ZLift(this, look.background, look.border);
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
    noteTabs(text);
    items_.insert(position, {text, submenu, icon, enabled, id, {}});
    update();
}

bool ZOptionsMenu::changeItem(int id, const QString& text, const ZPicture& icon)
{
    Item* item = itemOf(id);
    if (item == nullptr)
        return false;
    noteTabs(text);
    item->text = text;
    item->icon = icon;
    restartGlide();
    update();
    return true;
}

void ZOptionsMenu::setItemEnabled(int id, bool enabled)
{
    if (Item* item = itemOf(id)) {
        item->enabled = enabled;
        tellSoftKeys();
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

bool ZOptionsMenu::isItemConnected(int id, QObject* receiver, const char* slot) const
{
    const Item* item = itemOf(id);
    return item != nullptr && item->connections.contains({receiver, slotSignature(slot)});
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

bool ZOptionsMenu::canChoose(int position) const
{
    return position >= 0 && position < count() && items_.at(position).enabled;
}

void ZOptionsMenu::showEvent(QShowEvent* /*event*/)
{
    current_ = items_.isEmpty() ? -1 : 0;
    first_ = 0;
    finger_.cancel();
    place_ = placeFor(contentSize());
    setGeometry(place_);
    tellSoftKeys();
    ZAccessible::tellMenu(this, true);
    if (ZMotion::isEnabled())
        rise();
}

void ZOptionsMenu::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    restartGlide();
    ZAccessible::tellFocusSoon(this);
}

void ZOptionsMenu::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    if (glide_ != nullptr)
        glide_->stop();
}

/// Its top goes up; what is not up yet is cut off at its bottom.
void ZOptionsMenu::rise()
{
    constexpr int Pixels = 8;
    constexpr int Milliseconds = 100;
    if (rise_ == nullptr) {
        rise_ = new QVariantAnimation(this);
        rise_->setDuration(Milliseconds);
        rise_->setStartValue(Pixels);
        rise_->setEndValue(0);
        rise_->setEasingCurve(QEasingCurve::OutCubic);
        connect(rise_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
            setGeometry(place_.adjusted(0, value.toInt(), 0, 0));
        });
    }
    setGeometry(place_.adjusted(0, Pixels, 0, 0));
    rise_->start();
}

void ZOptionsMenu::restartGlide()
{
    if (!ZMotion::isEnabled() || !hasFocus() || current_ < 0)
        return;
    if (glide_ == nullptr) {
        glide_ = new ZGlide(this);
        connect(glide_, &ZGlide::moved, this, [this] { update(rowRect(current_)); });
    }
    glide_->start(fontMetrics().horizontalAdvance(shownText(current_)) -
                  textRect(current_).width());
}

void ZOptionsMenu::hideEvent(QHideEvent* /*event*/)
{
    if (rise_ != nullptr)
        rise_->stop();
    // It shows its digits and arrows again.
    if (opener_)
        opener_->update();
    opener_ = nullptr;
    ZAccessible::tellMenu(this, false);
}

void ZOptionsMenu::moveTo(int position)
{
    current_ = position;
    if (current_ < first_)
        scrollTo(current_);
    else if (current_ >= first_ + visibleRows())
        scrollTo(current_ - visibleRows() + 1);
    restartGlide();
    tellSoftKeys();
    ZAccessible::tellFocus(this, current_);
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
    update();
}

void ZOptionsMenu::tellSoftKeys()
{
    std::array<QString, 2> texts = softKeyTexts();
    if (!canChoose(current_))
        texts[0].clear();
    const auto tapped = [this](int key) {
        if (key == ZSoftKey::Left)
            choose(current_);
        else
            hide();
    };
    ZScreen::instance()->setSoftKeys(this, {texts, tapped});
}

void ZOptionsMenu::chooseByDigit(int digit)
{
    const int position = digit - 1;
    if (!canChoose(position))
        return;
    moveTo(position);
    choose(position);
}

void ZOptionsMenu::choose(int position)
{
    if (!canChoose(position))
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
    } else if (code >= '1' && code < '1' + DigitCount) {
        chooseByDigit(code - '0');
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
    if (const auto first =
            finger_.move(event->position().toPoint().y(), ZSkinService::MenuRowHeight))
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
