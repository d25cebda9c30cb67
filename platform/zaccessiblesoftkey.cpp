// What a soft-key bar tells programs that read the screen.

#include "platform/zaccessibleparts.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"

/// Its parts are the two keys, as they are shown, and the status.
class ZSoftKey::Accessible final : public ZAccessibleParts
{
public:
    explicit Accessible(ZSoftKey* bar) : ZAccessibleParts(bar, QAccessible::ToolBar) {}

    int partCount() const override { return StatusPart + 1; }

    QAccessible::Role partRole(int part) const override
    {
        return part == StatusPart ? QAccessible::StatusBar : QAccessible::Button;
    }

    QString partText(int part, QAccessible::Text kind) const override
    {
        const auto* bar = as<ZSoftKey>();
        if (kind != QAccessible::Name || bar == nullptr)
            return {};
        if (part != StatusPart)
            return bar->shownText(part);
        // All of it, though it may be shown cut. While something else has the keys it is not.
        return bar->isInert() ? QString() : bar->accessibleDescription();
    }

    QAccessible::State partState(int part) const override
    {
        QAccessible::State state;
        const auto* bar = as<ZSoftKey>();
        state.invisible = partText(part, QAccessible::Name).isEmpty();
        state.hasPopup =
            bar != nullptr && !bar->isInert() && bar->optMenu(part) != nullptr && !state.invisible;
        return state;
    }

    QRect partRect(int part) const override
    {
        const QRect bar = widget()->rect();
        const QRect left(bar.topLeft(), QSize(bar.width() / 2, bar.height()));
        return part == Left ? left : left.translated(left.width(), 0);
    }

    QStringList partActions(int part) const override
    {
        return part == StatusPart || partText(part, QAccessible::Name).isEmpty()
                   ? QStringList()
                   : QStringList(pressAction());
    }

    void actOn(int part, const QString& /*action*/) override
    {
        auto* bar = as<ZSoftKey>();
        if (!bar->isInert()) {
            bar->activate(part);
            return;
        }
        const ZScreen::SoftKeys keys = ZScreen::instance()->softKeys();
        if (keys.tapped != nullptr)
            keys.tapped(part);
    }

    int partAt(QPoint point) const override
    {
        const int key = partRect(Left).contains(point) ? Left : Right;
        return key == Right && partText(Right, QAccessible::Name).isEmpty() ? StatusPart : key;
    }
};

QAccessibleInterface* ZSoftKey::makeAccessible()
{
    return new Accessible(this);
}
