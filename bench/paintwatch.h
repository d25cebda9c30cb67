#pragma once

#include "platform/keymap.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

// What the benchmarks measure from a key press to what is painted for it with.

/// What an answer may take, so that it is seen in the next picture of a display.
inline constexpr double FrameMilliseconds = 16;

/// Notes that a widget has been painted.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget* widget) : widget_(widget) { widget->installEventFilter(this); }
    ~PaintWatch() override { widget_->removeEventFilter(this); }

    void wait()
    {
        while (!painted_)
            QCoreApplication::processEvents();
    }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        painted_ = painted_ || event->type() == QEvent::Paint;
        return false;
    }

private:
    QWidget* widget_;
    bool painted_ = false;
};

/// Presses a key, by the phone's code, in a widget.
inline void pressIn(QWidget* widget, int code)
{
    constexpr int FirstSpecialCode = 0x1000;
    constexpr int KeyOffset = Qt::Key_F1 - int(PhoneKey::Modifier);
    const bool isCharacter = code < FirstSpecialCode;
    QKeyEvent event(QEvent::KeyPress, isCharacter ? code : code + KeyOffset, Qt::NoModifier,
                    isCharacter ? QString(QChar(char16_t(code))) : QString());
    QApplication::sendEvent(widget, &event);
}
