#pragma once

#include "platform/zaccessible.h"

#include <QLineEdit>

class ZKeypadInput;

/// The framework's entry field, here always of one line. Keys that mean nothing to it (soft keys,
/// function keys, Up, Down and Return) are left to its parent.
///
/// On a device with a keypad its digits write letters. While all of a name is selected, Left puts
/// the cursor before the extension, or behind a name without one.
class ZMultiLineEdit : public QLineEdit, public ZAccessibleSource
{
    Q_OBJECT

public:
    /// `wrap` and `lines` shape a field of several lines and are not used.
    ZMultiLineEdit(QWidget* parent, bool wrap, int lines, const char* name);

    /// The text, whatever it consists of. Invisible characters (shownname.h) and halves of pairs of
    /// surrogates are held, and each is shown as a mark.
    void setText(const QString& text);
    /// A letter that a further press may still change is a part of it.
    QString text() const;
    /// What types with the keys of a keypad. It is the field's.
    ZKeypadInput& keypad() { return *keypad_; }

    QAccessibleInterface* makeAccessible() override;

public slots:
    /// Puts the selection on the clipboard.
    void copy() const;
    void cut();
    /// Puts the clipboard's text in the place of the selection. Line breaks at its end are left
    /// out, others become blanks.
    void paste();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class Accessible;

    ZKeypadInput* keypad_;
};
