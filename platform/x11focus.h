#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>

class QWidget;
struct xcb_connection_t;

/// Whether the display is one of X without a window manager. Asks the server.
bool isX11WithoutManager();

/// Sees to it that a window has the keyboard on an X display without a window manager. There nobody
/// hands it on: when the window that had it goes, no other has it.
///
/// Where there is a window manager, and on other displays, it does nothing.
class X11Focus : public QAbstractNativeEventFilter
{
public:
    /// `window` must live as long as this does.
    explicit X11Focus(QWidget& window);
    ~X11Focus() override;

    /// Gives the keyboard to the window, which must be shown.
    void take();

    /// From now on the window also gets the keyboard when nobody has it, if no window of another
    /// program lies above it. To be called once, when it is shown.
    void watch();

protected:
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

private:
    bool isTopmost() const;

    QWidget& window_;
    xcb_connection_t* connection_ = nullptr; ///< the toolkit's; nullptr on other displays
    unsigned root_ = 0;                      ///< what all windows lie in; 0 before watch()
};
