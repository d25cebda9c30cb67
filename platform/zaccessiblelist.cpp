// What a list tells programs that read the screen.

#include "platform/zaccessibleparts.h"
#include "platform/zbubble.h"
#include "platform/zlistbox.h"
#include "platform/zlistrowpainter.h"
#include "platform/zscreen.h"

#include <QAbstractItemModel>

namespace
{

/// Tabs only move what follows to the right.
QString spokenDetail(QString text)
{
    text.replace(QLatin1Char('\t'), QLatin1Char(' '));
    return ZListRowPainter::visibleText(text.simplified());
}

} // namespace

/// Its parts are the rows. One that has not been made yet is made when its text or state is asked
/// for, and no other with it.
class ZListBox::Accessible final : public ZAccessibleParts
{
public:
    explicit Accessible(ZListBox* list)
        : ZAccessibleParts(list, QAccessible::List),
          filledAnew_(QObject::connect(list->model(), &QAbstractItemModel::modelReset, list,
                                       [this] { forgetParts(); }))
    {
    }

    int partCount() const override
    {
        auto* list = as<ZListBox>();
        if (list == nullptr)
            return 0;
        // Rows that were inserted last would otherwise become part of the list, and all of them
        // others, once they are known.
        list->commitRows();
        return list->count();
    }

    QAccessible::Role partRole(int /*part*/) const override { return QAccessible::ListItem; }

    QString partText(int part, QAccessible::Text kind) const override
    {
        const ZListBoxItem* row = item(part);
        if (row == nullptr)
            return {};
        if (kind == QAccessible::Name)
            return ZListRowPainter::visibleText(row->getSubItemText(1, 0));
        if (kind != QAccessible::Description)
            return {};
        const auto* list = as<ZListBox>();
        const QString notes = list->spokenNotes_ ? list->spokenNotes_(part) : QString();
        return spokenDetail(row->getSubItemText(1, 1) + QLatin1Char(' ') + notes);
    }

    QAccessible::State partState(int part) const override
    {
        QAccessible::State state;
        const ZListBoxItem* row = item(part);
        if (row == nullptr)
            return state;
        auto* list = as<ZListBox>();
        state.selectable = true;
        state.focusable = true;
        state.selected = part == list->currentItem();
        state.disabled = !row->isEnabled();
        state.checkable = row->layout().checkBox;
        state.checked = row->isChecked();
        state.offscreen = !list->itemVisible(part);
        return state;
    }

    QRect partRect(int part) const override
    {
        auto* list = as<ZListBox>();
        return list != nullptr ? list->rowRect(part) : QRect();
    }

    QStringList partActions(int part) const override
    {
        const ZListBoxItem* row = item(part);
        if (row == nullptr || !ZScreen::instance()->takesInput(as<ZListBox>()))
            return {};
        return {row->layout().checkBox ? toggleAction() : pressAction(), setFocusAction()};
    }

    void actOn(int part, const QString& action) override
    {
        auto* list = as<ZListBox>();
        list->setFocus(Qt::OtherFocusReason);
        list->setCurrentItem(part);
        if (action != setFocusAction())
            list->selectRow(part);
    }

    int partAt(QPoint point) const override
    {
        auto* list = as<ZListBox>();
        return list != nullptr ? list->rowAt(point) : -1;
    }

    int currentPart() const override
    {
        const auto* list = as<ZListBox>();
        return list != nullptr ? list->currentItem() : -1;
    }

    /// Of an empty list, why it is.
    QString text(QAccessible::Text kind) const override
    {
        const auto* list = as<ZListBox>();
        if (kind == QAccessible::Name)
            return ZListRowPainter::visibleText(ZAccessibleParts::text(kind));
        const bool saysWhy = kind == QAccessible::Description && list != nullptr;
        return saysWhy && !list->emptyText().isEmpty() ? list->emptyText()
                                                       : ZAccessibleParts::text(kind);
    }

protected:
    ~Accessible() override { QObject::disconnect(filledAnew_); }

    QWidgetList otherChildren() const override
    {
        QWidgetList bubbles;
        for (ZBubble* bubble : object()->findChildren<ZBubble*>(Qt::FindDirectChildrenOnly))
            bubbles.append(bubble);
        return bubbles;
    }

private:
    const ZListBoxItem* item(int part) const
    {
        const auto* list = as<ZListBox>();
        return list != nullptr ? list->item(part) : nullptr;
    }

    QMetaObject::Connection filledAnew_;
};

QAccessibleInterface* ZListBox::makeAccessible()
{
    return new Accessible(this);
}
