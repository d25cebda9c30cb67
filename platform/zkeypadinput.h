#pragma once

#include "platform/keypadtyping.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QKeyEvent;
class QLineEdit;
class QTimer;
class QWidget;
class ZSymbolSheet;

/// Lets a field be written in with the keys of a keypad; it sees the field's keys first.
///
/// Digits write letters, a further press within LetterTime the next letter of the key, which is
/// underlined as long as it may still change; a digit that is held writes itself. "#" goes round
/// the modes, "*" opens the sheet of symbols. A badge at the right of the field says the mode. All
/// that only while the device has a keypad (KeyMap::hasKeypad()).
///
/// The clear key deletes before the cursor, and what there is when it is held. It does so with a
/// keyboard too, which has Backspace besides.
class ZKeypadInput : public QObject
{
    Q_OBJECT

public:
    static constexpr int LetterTime = 900; ///< milliseconds
    static constexpr int HoldTime = 700;   ///< milliseconds
    static constexpr int BadgeHeight = 14;

    /// It is the field's, and takes the right margin of its text.
    explicit ZKeypadInput(QLineEdit* field);

    /// How long a letter may change, and how long a held key takes, in milliseconds. Keys that say
    /// when they were pressed are compared by that; the time that they take to arrive is no matter.
    void setTimes(int letterTime, int holdTime);
    /// Forgets all that belongs to a text which is about to be replaced.
    void begin();
    /// Makes the letter that may still change a part of the text.
    void settle();
    /// That letter, which is not a part of the field's text; empty for none.
    const QString& openLetter() const { return open_; }
    KeypadTyping::Mode mode() const { return typing_.mode(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static constexpr int HeldClear = -1;

    void takeRelease(const QKeyEvent& event);
    bool isRepetition(const QKeyEvent& event) const;
    void goOnHolding();
    bool takeKey(const QKeyEvent& event);
    bool takeKeypadKey(const QKeyEvent& event, int code);
    void takeDigit(const QKeyEvent& event, int digit);
    void takeClear();
    bool goesOn(const QKeyEvent& event, int digit) const;
    bool isSoonAfter(const QKeyEvent& event) const;
    void write(const QString& open, const QString& settled);
    void letterTimeIsOver();
    void holdTimeIsOver();
    void openSheet();
    void showBadge();

    QLineEdit* field_;
    QWidget* badge_ = nullptr;
    QPointer<ZSymbolSheet> sheet_;
    QTimer* letterTimer_;
    QTimer* holdTimer_;
    KeypadTyping typing_;
    QString open_;
    QString settledText_; ///< the text with the letter that ended by time; null if none did
    int settledAt_ = 0;   ///< the cursor behind that letter
    quint64 pressedAt_ = 0;
    quint64 releasedAt_ = 0;
    quint32 releasedKey_ = 0; ///< its scan code
    int holdTime_ = 0;
    int heldLeft_ = -1;    ///< how long a key that was released had to be held on; -1 if it was not
    int held_ = HeldClear; ///< what the hold timer is about: the clear key or a digit
};
