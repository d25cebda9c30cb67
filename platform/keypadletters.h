#pragma once

#include <QString>

#include <array>

/// Which characters the digit keys of a keypad stand for, in a language.
///
/// A language that is written in Latin letters has its own ones behind those that are printed on
/// the key ("abcä2"), so that these take as many presses as everywhere. One with a script of its
/// own begins with that, and has the Latin letters behind it, which names of files need.
class KeypadLetters
{
public:
    static constexpr int Keys = 10;

    /// `language` is its English name ("polish") or its code of two letters ("pl"), in any case. Of
    /// one that is not known, or an empty text, English letters.
    explicit KeypadLetters(const QString& language = QString());

    /// The letters of the language that the user reads; English ones before it is told.
    static const KeypadLetters& current();
    static void setLanguage(const QString& language);

    /// What presses of the key of a digit (0 to 9) give, one after the other: small letters, at the
    /// end the digit. On 0 is a blank, on 1 is punctuation.
    const QString& of(int digit) const { return small_[size_t(digit)]; }
    /// The same in capitals. Letters with the same capital are one.
    QString capitalsOf(int digit) const;
    /// A letter's capital as this language writes it; the character itself if it has none.
    QChar capital(QChar letter) const;

private:
    std::array<QString, Keys> small_;
    bool hasDottedCapital_ = false; ///< whether the capital of "i" keeps its dot
};
