// What the sheet of symbols tells programs that read the screen.

#include "platform/zaccessibleparts.h"
#include "platform/zscreen.h"
#include "platform/zsymbolsheet.h"

/// Its parts are all symbols, those of other pages too.
class ZSymbolSheet::Accessible final : public ZAccessibleParts
{
public:
    explicit Accessible(ZSymbolSheet* sheet) : ZAccessibleParts(sheet, QAccessible::PopupMenu) {}

    int partCount() const override { return int(symbols().size()); }

    QAccessible::Role partRole(int /*part*/) const override { return QAccessible::MenuItem; }

    QString partText(int part, QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name)
            return symbols().mid(part, 1);
        return kind == QAccessible::Accelerator ? QString::number(part % OnPage + 1) : QString();
    }

    QAccessible::State partState(int part) const override
    {
        QAccessible::State state;
        const auto* sheet = as<ZSymbolSheet>();
        state.focusable = true;
        state.offscreen = sheet == nullptr || part / OnPage != sheet->page();
        return state;
    }

    QRect partRect(int part) const override
    {
        const auto* sheet = as<ZSymbolSheet>();
        return sheet != nullptr ? sheet->cellRect(part % OnPage) : QRect();
    }

    QStringList partActions(int /*part*/) const override
    {
        const bool isActive = ZScreen::instance()->active() == widget();
        return isActive ? QStringList{pressAction(), setFocusAction()} : QStringList();
    }

    void actOn(int part, const QString& action) override
    {
        auto* sheet = as<ZSymbolSheet>();
        sheet->move(part - sheet->current_);
        if (action == pressAction())
            sheet->choose();
    }

    int partAt(QPoint point) const override
    {
        const auto* sheet = as<ZSymbolSheet>();
        const int place = sheet != nullptr ? sheet->placeAt(point) : -1;
        return place < 0 ? -1 : sheet->page() * OnPage + place;
    }

    int currentPart() const override
    {
        const auto* sheet = as<ZSymbolSheet>();
        return sheet != nullptr ? sheet->current_ : -1;
    }
};

QAccessibleInterface* ZSymbolSheet::makeAccessible()
{
    return new Accessible(this);
}
