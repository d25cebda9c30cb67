#pragma once

class QAccessibleEvent;
class QAccessibleInterface;
class QWidget;

/// A widget that tells what it shows to programs which read the screen to its user, in the words
/// of QAccessible. A widget that the toolkit can describe by itself needs none of this.
class ZAccessibleSource
{
public:
    /// Makes what speaks for the widget; the caller owns it. Called once at most, and only if there
    /// is such a program.
    virtual QAccessibleInterface* makeAccessible() = 0;

protected:
    ~ZAccessibleSource() = default;
};

/// What such programs are told. All of it does nothing while there are none.
namespace ZAccessible
{

/// Lets the toolkit find the sources; at the start.
void install();
/// Who is told besides, also when there is no such program; nullptr for nobody.
void setListener(void (*listener)(QAccessibleEvent& event));

/// Says that of a widget whose parts are numbered (ZAccessibleParts) this one is where one is.
void tellFocus(QWidget* widget, int part);
/// The same for a widget that is just getting the focus: said after the toolkit has said that. If
/// it has no current part by then nothing is said.
void tellFocusSoon(QWidget* widget);
/// A part became the selected one, or is no more.
void tellSelection(QWidget* widget, int part);
/// A part has another name.
void tellName(QWidget* widget, int part);
/// The value of a part, a progress, is now that percentage.
void tellValue(QWidget* widget, int part, int percent);
/// What the widget as a whole is called, or says, is new.
void tellContent(QWidget* widget);
/// There are other parts than before: those that were asked for are invalid from now on.
void tellParts(QWidget* widget);
/// The widget has come up with something that its user must know at once.
void tellAlert(QWidget* widget);
/// A menu has come up or gone.
void tellMenu(QWidget* widget, bool isOpen);

} // namespace ZAccessible
