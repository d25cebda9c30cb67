#pragma once

#include "platform/keypadletters.h"

/// What presses of a keypad's digits write, without the field in which they do.
class KeypadTyping
{
public:
    /// In this order the "#" key goes round them. Sentence: a capital at the start, then small.
    enum class Mode { Small, Sentence, Capital, Digits };
    static constexpr int Modes = 4;

    explicit KeypadTyping(const KeypadLetters& letters = KeypadLetters::current());

    Mode mode() const { return mode_; }
    void nextMode();
    /// What stands for a mode where the user sees it: the first letters of the key 2 in it
    /// ("Abc"), or "123".
    QString nameOf(Mode mode) const;

    /// The character that a press of the key of `digit` (0 to 9) writes; `before` is what stands
    /// before it. With `goesOn` it takes the place of the last one, whose key was pressed just now.
    QChar press(int digit, bool goesOn, const QString& before);
    /// The digit whose character the next press may replace; -1 for none.
    int openDigit() const { return digit_; }
    /// The next press of the same key begins a new character.
    void end() { digit_ = -1; }

private:
    KeypadLetters letters_;
    Mode mode_ = Mode::Small;
    int digit_ = -1;
    int presses_ = 0; ///< of the same key, for one character
    bool isCapital_ = false;
};
