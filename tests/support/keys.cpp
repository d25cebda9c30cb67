#include "tests/support/keys.h"

#include "platform/zscreen.h"

#include <QApplication>
#include <QTest>
#include <QWindow>

namespace
{

void send(QEvent::Type type, int phoneCode, bool repeated)
{
    QWidget* receiver = keyReceiver();
    QVERIFY2(receiver != nullptr, "nothing is shown that could get a key");
    const bool character = phoneCode < 0x1000;
    QKeyEvent event(type, toolkitKey(phoneCode), Qt::NoModifier,
                    character ? QString(QChar(char16_t(phoneCode))) : QString(), repeated);
    QApplication::sendEvent(receiver, &event);
}

} // namespace

int toolkitKey(int phoneCode)
{
    return phoneCode >= 0x1000 ? Qt::Key_Escape + (phoneCode & 0xff) : phoneCode;
}

QWidget* keyReceiver()
{
    QWidget* top = ZScreen::instance()->active();
    if (top == nullptr)
        return nullptr;
    QWidget* focused = QApplication::focusWidget();
    if (focused != nullptr && ZScreen::instance()->isActive(focused))
        return focused;
    return top->focusWidget() != nullptr ? top->focusWidget() : top;
}

void pressKey(int phoneCode)
{
    holdKey(phoneCode);
    releaseKey(phoneCode);
}

void holdKey(int phoneCode)
{
    send(QEvent::KeyPress, phoneCode, false);
}

void releaseKey(int phoneCode)
{
    // A key may have hidden everything there is.
    if (keyReceiver() != nullptr)
        send(QEvent::KeyRelease, phoneCode, false);
}

void repeatKey(int phoneCode)
{
    send(QEvent::KeyRelease, phoneCode, true);
    send(QEvent::KeyPress, phoneCode, true);
}

QWindow* screenWindow()
{
    return ZScreen::instance()->window()->windowHandle();
}

void tapScreen(QPoint point)
{
    QTest::mouseClick(screenWindow(), Qt::LeftButton, Qt::NoModifier, point);
}

void requestClose()
{
    ZScreen* const screen = ZScreen::instance();
    emit screen->closeRequested();
}

void activate(QWidget& window)
{
    window.activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), &window);
}

void takeForActive(QWidget* window)
{
    QT_WARNING_PUSH
    // Newer toolkits would have it asked for instead, which is what does nothing then.
    QT_WARNING_DISABLE_DEPRECATED
    QApplication::setActiveWindow(window);
    QT_WARNING_POP
}
