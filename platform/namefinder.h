#pragma once

#include "platform/foldedcharacters.h"

#include <QByteArrayView>
#include <QStringList>

#include <array>
#include <functional>
#include <vector>

/// Finds names by the keys that one presses for their first letters: letters, and digits from 1 to
/// 9, each of which stands for any letter on its key. Case and accents do not count; with digits
/// blanks, zeros and symbols, which no such key has, need not be pressed.
///
/// Names are in UTF-8; a byte that is no part of it is like a symbol.
class NameFinder
{
public:
    /// The name of a row; what it points to need not outlive the next call. A row whose name is
    /// empty is never found.
    using NameOf = std::function<QByteArrayView(int row)>;

    struct Found {
        int row = -1; ///< -1: there is none
        qsizetype from = 0;
        qsizetype length = 0; ///< the bytes of the name that stand for what was pressed
    };

    explicit NameFinder(const KeypadLetters& letters = KeypadLetters::current());

    /// Begins anew.
    void clear();
    bool isEmpty() const { return presses_.isEmpty(); }
    /// Adds the character of a key, which may be a digit from 1 to 9. What has no letter of its own
    /// (an accent) adds nothing.
    void press(const QString& character);
    /// What is looked for, as it was pressed. The same key again and again, with which no name
    /// begins, is one press of it as long as no other key follows.
    QString asked() const;

    /// The first row, from `current` on and around, whose name begins with what was pressed; if
    /// there is none, the first in whose name a later word does. `current` itself is the first; it
    /// may be -1 for none. When the same key was pressed again and no name begins with it as often,
    /// the next row of that key is found: `current` is the last.
    Found find(int rows, int current, const NameOf& nameOf);

private:
    bool isSameAgain() const;
    Found findName(int rows, int first, qsizetype keys, const NameOf& nameOf);
    Found findWord(int rows, int first, qsizetype keys, const NameOf& nameOf);
    quint8 glanceAt(char32_t character);
    quint8 learnGlance(char32_t character);
    qsizetype matchAtStart(QByteArrayView text, qsizetype keys);
    Found matchOfWord(QByteArrayView name, qsizetype keys);
    qsizetype afterNoWord(QByteArrayView name, qsizetype from) const;
    bool mayBeginWordAt(QByteArrayView name, qsizetype at);
    bool endsInWord(QByteArrayView text);
    bool fits(char16_t unit, char16_t key) const;

    FoldedCharacters characters_;
    QStringList presses_;      ///< as they were pressed
    QString keys_;             ///< all of them, folded
    qsizetype firstPress_ = 0; ///< how much of keys_ the first one is
    bool same_ = true;         ///< all presses are alike
    /// What a search asks of each character of a hundred thousand names; filled as it goes.
    std::array<quint8, FoldedCharacters::CommonCharacters> glances_{};
    /// 1 for two bytes, the first of them times 256, where no word begins that is looked for;
    /// filled as the search goes.
    std::vector<quint8> noWordAt_;
};
