#pragma once

#include "platform/screensize.h"

#include <QList>
#include <QPointer>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>

class DisplayTurn;
class VncDisplay;
class X11Focus;

class ZBoxPan;
class ZScreenFrame;

/// The phone's display: 240 x 320 pixels at any density, the only thing with a window of its own.
///
/// Whatever a program treats as a top-level widget is a child of the screen at screen coordinates:
/// its constructor passes ZScreen::instance() as parent and calls place(). The window is shown
/// while any of them is shown and hidden with the last.
///
/// The shown ones form a stack, main widgets below boxes, later ones above earlier ones. The
/// topmost has keys and pointer; those below are inert. When it goes, the one below it gets the
/// focus back where it was. Focus given to something inert meanwhile takes effect then.
///
/// A box that is higher than the screen is shown from its top, and Up and Down pan it.
///
/// On a display without a window system nothing is drawn and no key taken while another program of
/// the user's has it (DisplayTurn).
class ZScreen : public QWidget
{
    Q_OBJECT

public:
    static constexpr int Width = ScreenSize::Width;
    static constexpr int Height = ScreenSize::Height;

    enum class Layer { Main, Box };

    /// The screen, made at the first call. Needs the application object.
    static ZScreen* instance();
    static void destroyInstance();

    /// While one lives, main widgets get no keys and no pointer, so that work which handles events
    /// in between is not started a second time by them. Boxes are not affected.
    class MainInputPause
    {
    public:
        MainInputPause();
        ~MainInputPause();
        MainInputPause(const MainInputPause&) = delete;
        MainInputPause& operator=(const MainInputPause&) = delete;

    private:
        QPointer<ZScreen> screen_;
    };

    /// What the two soft keys do in a box or menu (0 left, 1 right): what the soft-key bar below it
    /// says meanwhile, and what a tap there runs. A side without a text does nothing.
    struct SoftKeys {
        std::array<QString, 2> texts;
        std::function<void(int key)> tapped;
    };

    /// Where the window is to open, in the form of placeOnDisplay(); before the screen is made.
    /// Anything else is ignored.
    static void setPlace(const QByteArray& place);
    /// Where the window is on the display: "x,y", its corner with the window manager's frame, and
    /// ",w,h", its size without it, if its scale follows that; in pixels of the display. Empty
    /// while it is not shown.
    static QByteArray placeOnDisplay();

    /// Makes a child one of the stack's. Call it once, before the child is first shown.
    void place(QWidget* widget, Layer layer);
    /// Sets what the soft keys do while `widget`, which has been placed, has the keys. Without this
    /// the bars below it are empty then.
    void setSoftKeys(const QWidget* widget, const SoftKeys& keys);
    /// What they do in the active widget, as it was set.
    SoftKeys softKeys() const;
    /// The widget that has keys and pointer; nullptr while nothing is shown.
    QWidget* active() const;
    /// Whether `widget` is the topmost one or inside it.
    bool isActive(const QWidget* widget) const;
    /// Whether keys and pointer reach `widget` now.
    bool takesInput(const QWidget* widget) const { return !blocksInput(widget); }
    /// Brings the window to the front and asks for the keyboard. Nothing while nothing is shown.
    void raiseWindow();

signals:
    /// The window manager or the user asks to close the window. It stays open.
    void closeRequested();
    /// A press that hit nothing of the topmost widget, nor a soft key of its own.
    void pressedOutside();
    /// A pixel of the screen is drawn with another number of the display's: what is kept drawn
    /// (see ScreenScale::density()) is to be drawn anew.
    void densityChanged();
    /// Over VNC: another program of the user has shown its window, on this port of the machine.
    void guestShown(int port);
    /// Another widget has the keys, or the soft keys do something else in it.
    void softKeysChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Entry {
        QPointer<QWidget> widget;
        Layer layer;
        QPointer<QWidget> focus; ///< what had, or is to get, the focus inside it
        SoftKeys softKeys;
    };

    explicit ZScreen(ZScreenFrame* frame);
    ~ZScreen() override;
    Entry* entryOf(const QWidget* widget);
    void takeTurns();
    void pauseMainInput(int change);
    bool tapSoftKey(QPoint point);
    void widgetShown(QWidget* widget);
    void widgetHidden(QWidget* widget);
    void widgetGone(QObject* widget);
    void updateWindow();
    void takeKeyboard();
    void raiseFrom(QWidget* widget);
    void giveFocus();
    void focusMoved(QWidget* now);
    bool isLent() const;
    bool blocksInput(const QWidget* receiver) const;

    ZScreenFrame* frame_; ///< the window, which owns the screen
    std::unique_ptr<X11Focus> x11Focus_;
    std::unique_ptr<DisplayTurn> turn_; ///< nullptr where windows share the display
    std::unique_ptr<VncDisplay> vnc_;   ///< nullptr on other displays
    QList<Entry> placed_;
    QList<QWidget*> stack_;
    ZBoxPan* pan_;
    bool givingFocus_ = false;
    int mainInputPauses_ = 0;
};
