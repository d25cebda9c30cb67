// The keypad shortcuts of the main window.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/settings.h"
#include "widgets/kwidget.h"

#include <QKeyEvent>

/// While the modifier is not held. It only begins to count with the next key.
const FM::KeyAction FM::PlainKeys[] = {
    {PhoneKey::Modifier, &FM::holdModifier},
    {PhoneKey::Hide, &FM::hideWindow},
    {PhoneKey::Music, &FM::playMusic},
    {PhoneKey::MusicPrevious, &FM::previousTrack},
    {PhoneKey::MusicNext, &FM::nextTrack},
    {'*', &FM::toggleFullScreen},
    {'#', &FM::toggleFullInfo},
    {'0', &FM::toggleMultiSelect},
};

/// While it is held. The digits, which all do the same, are not in the table.
const FM::KeyAction FM::ModifiedKeys[] = {
    {'#', &FM::showTestBox},
    {PhoneKey::Hide, &FM::askExit},
    {PhoneKey::Music, &FM::showPlayer},
};

void FM::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    if (event->isAutoRepeat())
        return;
    const int code = PhoneKey::code(*event);
    if (modKeyHeld) {
        if (code >= '1' && code <= '9')
            return openWithDigit(code - '0');
        for (const KeyAction& action : ModifiedKeys) {
            if (action.code == code)
                return (this->*action.run)();
        }
        return;
    }
    for (const KeyAction& action : PlainKeys) {
        if (action.code == code)
            return (this->*action.run)();
    }
}

void FM::keyReleaseEvent(QKeyEvent* event)
{
    event->accept();
    if (event->isAutoRepeat() || PhoneKey::code(*event) != PhoneKey::Modifier)
        return;
    modKeyHeld = false;
    modifierIsDown_ = false;
}

/// Sees the modifier's release when a box or menu has the focus. One that goes to another window
/// nobody sees, so the modifier is not held beyond ours.
bool FM::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::WindowDeactivate && watched == window()) {
        modKeyHeld = false;
        modifierIsDown_ = false;
    }
    if (event->type() == QEvent::KeyRelease && watched->isWidgetType() && watched != this)
        keyReleaseEvent(static_cast<QKeyEvent*>(event));
    return ZKbMainWidget::eventFilter(watched, event);
}

void FM::holdModifier()
{
    modKeyHeld = true;
    modifierIsDown_ = true;
}

/// Opening clears the modifier, and boxes may let it be released meanwhile. If it was not, it goes
/// on counting: several plugins can be started in one hold.
void FM::openWithDigit(int digit)
{
    pendingPlugin = digit;
    slot_OpenWith();
    modKeyHeld = modifierIsDown_;
}

void FM::hideWindow()
{
    hide();
}

void FM::toggleFullScreen()
{
    full_scr = !full_scr;
    fullScreenModeChanged(full_scr);
}

void FM::toggleFullInfo()
{
    for (FileBrowserFtab* each : panels_)
        each->setFullInf();
    for (FileBrowserFtab* each : panels_)
        relist(each);
}

void FM::toggleMultiSelect()
{
    if (FileBrowserFtab* active = activePanel()) {
        active->switchMultiSelect();
        relist(active);
    }
}

/// A display for trying out the progress box; nothing stops it but a key.
void FM::showTestBox()
{
    processView->showProcess(LANG_PROPERTIES, QStringLiteral("Please wait"), Qt::AlignLeft,
                             QStringLiteral("testing..."), 0, QStringLiteral("res/img/props.png"),
                             kWidget::Message);
    modKeyHeld = false;
}

void FM::askExit()
{
    CloseProgramm();
    modKeyHeld = false;
}
