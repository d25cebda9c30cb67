// What a menu tells programs that read the screen.

#include "platform/shownname.h"
#include "platform/zaccessibleparts.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"

/// Its parts are the items, by their positions.
class ZOptionsMenu::Accessible final : public ZAccessibleParts
{
public:
    explicit Accessible(ZOptionsMenu* menu) : ZAccessibleParts(menu, QAccessible::PopupMenu) {}

    int partCount() const override
    {
        const auto* menu = as<ZOptionsMenu>();
        return menu != nullptr ? menu->count() : 0;
    }

    QAccessible::Role partRole(int /*part*/) const override { return QAccessible::MenuItem; }

    QString partText(int part, QAccessible::Text kind) const override
    {
        const auto* menu = as<ZOptionsMenu>();
        if (menu == nullptr)
            return {};
        // The tabs move a text past the icons.
        if (kind == QAccessible::Name)
            return withMarks(menu->textAt(part).trimmed());
        const bool hasDigit = kind == QAccessible::Accelerator && part < DigitCount;
        return hasDigit ? QString::number(part + 1) : QString();
    }

    QAccessible::State partState(int part) const override
    {
        QAccessible::State state;
        const auto* menu = as<ZOptionsMenu>();
        if (menu == nullptr)
            return state;
        state.focusable = true;
        state.selectable = true;
        state.selected = menu->isVisible() && part == menu->current_;
        state.disabled = !menu->items_.at(part).enabled;
        state.hasPopup = menu->items_.at(part).submenu != nullptr;
        state.offscreen = part < menu->first_ || part >= menu->first_ + menu->visibleRows();
        return state;
    }

    QRect partRect(int part) const override
    {
        const auto* menu = as<ZOptionsMenu>();
        return menu != nullptr ? menu->rowRect(part) : QRect();
    }

    QStringList partActions(int part) const override
    {
        const auto* menu = as<ZOptionsMenu>();
        if (menu == nullptr || ZScreen::instance()->active() != menu)
            return {};
        if (!menu->canChoose(part))
            return {setFocusAction()};
        const bool opens = menu->items_.at(part).submenu != nullptr;
        return {opens ? showMenuAction() : pressAction(), setFocusAction()};
    }

    void actOn(int part, const QString& action) override
    {
        auto* menu = as<ZOptionsMenu>();
        menu->moveTo(part);
        if (action != setFocusAction())
            menu->choose(part);
    }

    int partAt(QPoint point) const override
    {
        const auto* menu = as<ZOptionsMenu>();
        return menu != nullptr ? menu->positionAt(point) : -1;
    }

    int currentPart() const override
    {
        const auto* menu = as<ZOptionsMenu>();
        return menu != nullptr ? menu->current_ : -1;
    }

    /// A submenu is called what the item is that opened it.
    QString text(QAccessible::Text kind) const override
    {
        const auto* menu = as<ZOptionsMenu>();
        if (kind != QAccessible::Name || menu == nullptr || menu->opener_ == nullptr)
            return ZAccessibleParts::text(kind);
        return withMarks(menu->opener_->textAt(menu->opener_->current_).trimmed());
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = ZAccessibleParts::state();
        state.modal = true;
        return state;
    }
};

QAccessibleInterface* ZOptionsMenu::makeAccessible()
{
    return new Accessible(this);
}
