#pragma once

#include "platform/zaccessible.h"

#include <QStringList>

class QWidget;

/// What a box draws, in words.
struct ZBoxWords {
    QString title;
    QStringList texts;   ///< what it says, from top to bottom
    QStringList answers; ///< what can be chosen at its foot, from left to right
    bool isBusy = false; ///< it stays until some work is done
    bool closes = false; ///< without answers: its user can take it away
    int percent = -1;    ///< how far the work is, 0 to 100; less than 0 if it does not say
};

/// A box, drawn as a picture, of which programs that read the screen are to know. Its texts and
/// answers are parts of it, with how far it is between them; the widgets in it follow.
class ZSpokenBox : public ZAccessibleSource
{
public:
    virtual ZBoxWords boxWords() const = 0;
    /// Does what a user does who chooses that answer; of a box that has none, what closes it.
    virtual void chooseAnswer(int answer) = 0;
    /// Says that the percentage of a box, a widget, is another one.
    static void tellPercent(QWidget* box);

    QAccessibleInterface* makeAccessible() override;

protected:
    ~ZSpokenBox() = default;
};
