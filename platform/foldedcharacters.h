#pragma once

#include "platform/keypadletters.h"

#include <QHash>

#include <array>
#include <vector>

/// How characters count where names are looked for: without case and accents, and as the digits on
/// whose keys they are. What was asked once is remembered.
///
/// The keys are those of a language; letters that it does not have are where languages of their
/// script have them.
class FoldedCharacters
{
public:
    /// What a character does to the words around it.
    enum class Kind : quint8 {
        Letter,    ///< a letter or digit: part of a word
        Ideograph, ///< a word by itself
        Joint,     ///< accents and apostrophes: neither begins nor ends a word
        Between,   ///< blanks, punctuation and all else: ends a word
    };

    struct Folded {
        static constexpr size_t Units = 4;
        std::array<char16_t, Units> units{}; ///< small, without accents; a longer text is cut
        quint8 length = 0;                   ///< of these; 0: counts as if it were not there
        Kind kind = Kind::Between;
        bool isPassedOver = false; ///< digits go on behind it: no key from 1 to 9 has it
        quint16 digits = 0;        ///< bit n: the key of the digit n, 1 to 9, has it
    };

    explicit FoldedCharacters(const KeypadLetters& letters);

    /// Valid until the next call.
    const Folded& of(char32_t character)
    {
        const bool isKnown = character < CommonCharacters && isKnown_[character];
        return isKnown ? common_[character] : learn(character);
    }
    /// The keys that have a folded unit, as in Folded::digits.
    quint16 digitsOf(char16_t unit) const { return digits_.value(unit); }

private:
    void addKeys(const KeypadLetters& letters);
    const Folded& learn(char32_t character);
    Folded fold(char32_t character) const;
    quint16 digitsOf(char32_t character, const QString& folded) const;

    QHash<char16_t, quint16> digits_;
    /// The characters that names are mostly made of: what is two bytes in UTF-8.
    static constexpr char32_t CommonCharacters = 0x800;
    std::vector<Folded> common_;
    std::vector<bool> isKnown_; ///< of these
    QHash<char32_t, Folded> others_;
};
