#include "platform/zaccessible.h"

#include "platform/zaccessibleparts.h"

#include <QWidget>

namespace
{

void (*theListener)(QAccessibleEvent& event) = nullptr;

bool isHeard()
{
    return theListener != nullptr || QAccessible::isActive();
}

/// The toolkit asks with each class of an object, the most special one first, and answers by itself
/// for those that it knows.
QAccessibleInterface* interfaceOf(const QString& className, QObject* object)
{
    if (auto* source = dynamic_cast<ZAccessibleSource*>(object))
        return source->makeAccessible();
    auto* widget = qobject_cast<QWidget*>(object);
    const bool isPlain = widget != nullptr && className == QLatin1String("QWidget");
    return isPlain ? new ZAccessibleWidget(widget) : nullptr;
}

void send(QAccessibleEvent& event)
{
    if (theListener != nullptr)
        theListener(event);
    if (QAccessible::isActive())
        QAccessible::updateAccessibility(&event);
}

/// Tells an event of a widget, or of one of its parts if that is not negative.
void tell(QWidget* widget, QAccessible::Event what, int part = -1)
{
    if (!isHeard())
        return;
    QAccessibleEvent event(widget, what);
    if (part >= 0)
        event.setChild(part);
    send(event);
}

} // namespace

void ZAccessible::install()
{
    QAccessible::installFactory(interfaceOf);
}

void ZAccessible::setListener(void (*listener)(QAccessibleEvent& event))
{
    theListener = listener;
}

void ZAccessible::tellFocus(QWidget* widget, int part)
{
    if (part >= 0)
        tell(widget, QAccessible::Focus, part);
}

void ZAccessible::tellFocusSoon(QWidget* widget)
{
    if (!isHeard())
        return;
    const auto tellNow = [widget] {
        QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(widget);
        QAccessibleInterface* part = spoken != nullptr ? spoken->focusChild() : nullptr;
        if (part == nullptr || part == spoken || part->parent() != spoken)
            return;
        tell(widget, QAccessible::Focus, spoken->indexOfChild(part));
    };
    QMetaObject::invokeMethod(widget, tellNow, Qt::QueuedConnection);
}

void ZAccessible::tellSelection(QWidget* widget, int part)
{
    if (part >= 0)
        tell(widget, QAccessible::Selection, part);
}

void ZAccessible::tellName(QWidget* widget, int part)
{
    tell(widget, QAccessible::NameChanged, part);
}

void ZAccessible::tellValue(QWidget* widget, int part, int percent)
{
    if (!isHeard())
        return;
    QAccessibleValueChangeEvent event(widget, percent);
    event.setChild(part);
    send(event);
}

void ZAccessible::tellContent(QWidget* widget)
{
    tell(widget, QAccessible::NameChanged);
    tell(widget, QAccessible::DescriptionChanged);
}

void ZAccessible::tellParts(QWidget* widget)
{
    if (!isHeard())
        return;
    auto* spoken = dynamic_cast<ZAccessibleParts*>(QAccessible::queryAccessibleInterface(widget));
    if (spoken != nullptr)
        spoken->forgetParts();
}

void ZAccessible::tellAlert(QWidget* widget)
{
    tell(widget, QAccessible::Alert);
}

void ZAccessible::tellMenu(QWidget* widget, bool isOpen)
{
    tell(widget, isOpen ? QAccessible::PopupMenuStart : QAccessible::PopupMenuEnd);
}
