#pragma once

#include "platform/zbubble.h"
#include "platform/zlistfind.h"
#include "tests/platform/listfixture.h"
#include "tests/support/keys.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>

/// Milliseconds.
inline constexpr int LongerThanATest = 1000000;

/// A list with names that can be found, but for the first row.
struct FindList : ListFixture {
    explicit FindList(const QStringList& rows, int height = 250) : ListFixture(height)
    {
        for (const QString& row : rows) {
            bytes.append(row.toUtf8());
            add(row, -1);
        }
        start();
        box->setCurrentItem(0);
    }

    void start()
    {
        find = new ZListFind(box, [this](int row) { return QByteArrayView(bytes.at(row)); });
        find->setSilenceTime(LongerThanATest);
    }

    QString current() const { return QString::fromUtf8(bytes.value(box->currentItem())); }
    const ZBubble* bubble() const { return find->bubble(); }
    bool isBubbleShown() const { return bubble() != nullptr && bubble()->isVisible(); }
    /// What the bubble says, "!" before it if it warns; empty if there is none.
    QString said() const
    {
        return isBubbleShown() ? (bubble()->isWarning() ? "!" : "") + bubble()->text() : QString();
    }
    bool isTicking() const
    {
        const auto timers = find->findChildren<QTimer*>();
        return std::any_of(timers.begin(), timers.end(),
                           [](const QTimer* timer) { return timer->isActive(); });
    }

    QByteArrayList bytes;
    ZListFind* find = nullptr;
};

inline QStringList someNames()
{
    return {"Albums", "Documents", "Downloads", "Music", "My Pictures", "alpha", "dates"};
}

inline void sendFindKey(QEvent::Type type, int key, const QString& text, quint64 time = 0,
                        Qt::KeyboardModifiers modifiers = {}, bool repeated = false)
{
    QKeyEvent event(type, key, modifiers, text, repeated);
    event.setTimestamp(time);
    QApplication::sendEvent(keyReceiver(), &event);
}

/// Presses the keys of characters.
inline void typeKeys(const QString& characters)
{
    for (const QChar character : characters) {
        for (const auto what : {QEvent::KeyPress, QEvent::KeyRelease})
            sendFindKey(what, character.toUpper().unicode(), character);
    }
}

inline void typeKeyAt(QChar character, quint64 time)
{
    for (const auto what : {QEvent::KeyPress, QEvent::KeyRelease})
        sendFindKey(what, character.toUpper().unicode(), character, time);
}

inline void turnPageAt(quint64 time, int key = Qt::Key_PageDown)
{
    for (const auto what : {QEvent::KeyPress, QEvent::KeyRelease})
        sendFindKey(what, key, QString(), time);
}
