#pragma once

#include <QKeyEvent>
#include <QPoint>

class QWidget;
class QWindow;

/// Keys as a user presses them: to whatever has the focus in the topmost widget of the screen.

/// The toolkit's key for a phone's code (0x1030 gives F1); characters are themselves.
int toolkitKey(int phoneCode);
/// The widget that a key would go to now; nullptr if nothing is shown.
QWidget* keyReceiver();
void pressKey(int phoneCode);
void holdKey(int phoneCode);
void releaseKey(int phoneCode);
/// The press that the keyboard repeats while a key is held, with or without the release before it.
void repeatKey(int phoneCode);
/// The window of the screen, as the toolkit gives it what comes from the display.
QWindow* screenWindow();
/// Taps where a user's finger goes: on the window, wherever the toolkit takes it from there.
void tapScreen(QPoint point);
/// Asks the screen to close, as a desktop's window manager does.
void requestClose();
/// Gives the keyboard to a window, and waits until it has it.
void activate(QWidget& window);
/// Tells the toolkit that a window has the keyboard. The display without a screen does not, of one
/// that was hidden.
void takeForActive(QWidget* window);
