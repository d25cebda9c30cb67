#include "platform/zaccessiblewidget.h"

#include "platform/zscreenframe.h"

#include <QWidget>

namespace
{

const ZScreenFrame* frameOf(const QWidget* widget)
{
    return qobject_cast<const ZScreenFrame*>(widget->window());
}

} // namespace

ZAccessibleWidget::ZAccessibleWidget(QWidget* widget, QAccessible::Role role, const QString& name)
    : QAccessibleWidget(widget, role, name)
{
}

QRect ZAccessibleWidget::rect() const
{
    return onDisplay(widget()->rect());
}

QAccessibleInterface* ZAccessibleWidget::childAt(int x, int y) const
{
    if (!rect().contains(x, y))
        return nullptr;
    for (int i = childCount() - 1; i >= 0; --i) {
        QAccessibleInterface* inside = child(i);
        if (inside != nullptr && !inside->state().invisible && inside->rect().contains(x, y))
            return inside;
    }
    return nullptr;
}

QRect ZAccessibleWidget::onDisplay(const QRect& part) const
{
    const ZScreenFrame* frame = frameOf(widget());
    return frame != nullptr ? frame->seenAt(*widget(), part)
                            : QRect(widget()->mapToGlobal(part.topLeft()), part.size());
}

QPoint ZAccessibleWidget::inWidget(QPoint point) const
{
    const ZScreenFrame* frame = frameOf(widget());
    return frame != nullptr ? frame->pointSeenAt(*widget(), point) : widget()->mapFromGlobal(point);
}
