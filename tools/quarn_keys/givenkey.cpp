#include "tools/quarn_keys/givenkey.h"

#include <QKeySequence>

GivenKey GivenKey::of(const QKeyEvent& event)
{
    return {event.key(), event.nativeScanCode(), event.nativeVirtualKey()};
}

bool GivenKey::isKnown() const
{
    return key > 0 && key != Qt::Key_unknown;
}

QString GivenKey::shown() const
{
    if (!isKnown())
        return QString::number(scan);
    const QString name = QKeySequence(key).toString(QKeySequence::PortableText);
    // The toolkit has numbers without names.
    return name.isEmpty() ? QString::number(scan) : name;
}

QKeyEvent GivenKey::press() const
{
    return {QEvent::KeyPress, key, Qt::NoModifier, scan, symbol, 0};
}
