#include "tests/support/listeners.h"

#include "platform/zaccessible.h"

#include <utility>

namespace
{

struct Heard {
    QAccessible::Event what;
    QString name;
};

QList<Heard>& heard()
{
    static QList<Heard> all;
    return all;
}

void hear(QAccessibleEvent& event)
{
    const QAccessibleInterface* about = event.accessibleInterface();
    heard().append({event.type(), about != nullptr ? about->text(QAccessible::Name) : QString()});
}

} // namespace

Listeners::Listeners()
{
    clear();
    ZAccessible::setListener(hear);
}

Listeners::~Listeners()
{
    ZAccessible::setListener(nullptr);
}

QStringList Listeners::names(QAccessible::Event what) const
{
    QStringList result;
    for (const Heard& each : std::as_const(heard())) {
        if (each.what == what)
            result.append(each.name);
    }
    return result;
}

void Listeners::clear()
{
    heard().clear();
}

QAccessibleInterface* spoken(QObject* widget)
{
    return QAccessible::queryAccessibleInterface(widget);
}

QStringList childNames(const QAccessibleInterface& parent)
{
    QStringList names;
    for (int i = 0; i < parent.childCount(); ++i)
        names.append(parent.child(i)->text(QAccessible::Name));
    return names;
}

bool act(QAccessibleInterface* interface, const QString& action)
{
    QAccessibleActionInterface* actions = interface->actionInterface();
    if (actions == nullptr || !actions->actionNames().contains(action))
        return false;
    actions->doAction(action);
    return true;
}
