#pragma once

#include <QSize>

/// How many pixels of the display a pixel of the screen has, in each direction.
///
/// Either the scale is settled before the toolkit starts, which then draws everything at it; or it
/// follows the size of the window while the program runs (ZScreenFrame). Below 1 the toolkit leaves
/// parts out: a scale that is settled there is drawn by the frame, too.
namespace ScreenScale
{

/// Names the environment variable that sets the scale; before the application object is made.
void setVariable(const char* name);

/// Settles the scale for the application about to be made: the variable's value (a number from 0.25
/// to 16; anything else is named on stderr and ignored), or on a bare display (no windows) what
/// fits on it. Where neither is, it may follow the window. A value for which a bare display, one of
/// X or one of Wayland has no room is named on stderr, and what fits is taken.
void prepare(int& argc, char** argv);

/// The scale that is settled, but not the toolkit's; 0 if there is none.
double settledBelowOne();

/// Whether the toolkit's platform shows windows that others may move and resize. Needs the
/// application object.
bool hasDesktop();

/// Whether the scale follows the window. Needs the application object.
bool followsWindow();

/// Whether the toolkit's platform shows one full-screen window and has no window manager. Needs the
/// application object.
bool isBareDisplay();

/// The largest scale, in quarter steps up to 6, at which the screen fits into `pixels`; 0.25 if it
/// fits at none. Below 0.75 nothing can be read, but all of it is still there.
double fitting(QSizeF pixels);

/// The size, in pixels, that a window of its own has on a display of that size: the largest whole
/// scale within two thirds of its height, or what fits if that is less.
QSize firstWindow(QSizeF display);

/// The scale now. Needs the application object.
double density();

/// The scale of a pixmap that is painted on: density(), but the toolkit paints on none below 1.
double canvasDensity();

/// The scale of a screen that follows its window, told by that window; 0 when there is none.
void setDensity(double density);

} // namespace ScreenScale
