#pragma once

#include <QAccessible>
#include <QStringList>

class QObject;

// What programs that read the screen know of widgets, and what they are told.

/// Hears what ZAccessible tells while it lives. Only one at a time.
class Listeners
{
public:
    Listeners();
    ~Listeners();
    Listeners(const Listeners&) = delete;
    Listeners& operator=(const Listeners&) = delete;

    /// Of all events of a kind since the last clear(), the names of what they were about.
    QStringList names(QAccessible::Event what) const;
    void clear();
};

/// What speaks for a widget; nullptr if nothing does.
QAccessibleInterface* spoken(QObject* widget);
QStringList childNames(const QAccessibleInterface& parent);
/// Asks for an action as such a program does. False if it is not on offer.
bool act(QAccessibleInterface* interface, const QString& action);
