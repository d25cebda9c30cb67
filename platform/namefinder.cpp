#include "platform/namefinder.h"

#include <algorithm>

namespace
{

using Kind = FoldedCharacters::Kind;

/// What stands for a byte that is no part of UTF-8.
constexpr char32_t NoCharacter = U'\uFFFD';

bool isContinuation(char byte)
{
    return (uchar(byte) & 0xc0U) == 0x80;
}

/// The length of a character's bytes by the first of them; 0 if none begins so.
qsizetype lengthFrom(uchar lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xc2 || lead > 0xf4)
        return 0;
    return lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
}

char32_t takeLongCharacter(QByteArrayView& text)
{
    const uchar lead = uchar(text.front());
    const qsizetype length = lengthFrom(lead);
    const bool isWhole = length > 0 && length <= text.size() &&
                         std::all_of(text.begin() + 1, text.begin() + length, isContinuation);
    if (!isWhole) {
        text = text.sliced(1);
        return NoCharacter;
    }
    char32_t character = lead & (0x7fU >> unsigned(length));
    for (qsizetype i = 1; i < length; ++i)
        character = character << 6U | (uchar(text.at(i)) & 0x3fU);
    text = text.sliced(length);
    return character <= QChar::LastValidCodePoint ? character : NoCharacter;
}

/// Takes one character off the front of `text`, which must not be empty.
inline char32_t takeCharacter(QByteArrayView& text)
{
    const uchar lead = uchar(text.front());
    if (lead < 0x80) {
        text = text.sliced(1);
        return lead;
    }
    if (lead >= 0xc2 && lead < 0xe0 && text.size() > 1 && isContinuation(text[1])) {
        const char32_t character = (lead & 0x1fU) << 6U | (uchar(text[1]) & 0x3fU);
        text = text.sliced(2);
        return character;
    }
    return takeLongCharacter(text);
}

// A glance at a character: whether what is looked for may begin with it, and what it does to words.
constexpr quint8 Known = 1;
constexpr quint8 MayBegin = 2;
constexpr quint8 InWord = 4;
constexpr quint8 IsWord = 8;
constexpr quint8 Joint = 16;

quint8 glanceOf(Kind kind)
{
    switch (kind) {
    case Kind::Letter:
        return InWord;
    case Kind::Ideograph:
        return IsWord;
    case Kind::Joint:
        return Joint;
    default:
        return 0;
    }
}

bool isDigitKey(char16_t key)
{
    return key >= u'1' && key <= u'9';
}

bool hasDigit(const FoldedCharacters::Folded& character, char16_t key)
{
    return (character.digits >> unsigned(key - u'0') & 1U) != 0;
}

} // namespace

NameFinder::NameFinder(const KeypadLetters& letters) : characters_(letters) {}

void NameFinder::clear()
{
    presses_.clear();
    keys_.clear();
    firstPress_ = 0;
    same_ = true;
}

void NameFinder::press(const QString& character)
{
    QString folded;
    for (const char32_t each : character.toUcs4()) {
        const FoldedCharacters::Folded& one = characters_.of(each);
        folded += QStringView(one.units.data(), one.length);
    }
    if (folded.isEmpty())
        return;
    if (presses_.isEmpty())
        firstPress_ = folded.size();
    same_ = same_ && (presses_.isEmpty() || folded == QStringView(keys_).left(firstPress_));
    presses_.append(character);
    keys_ += folded;
}

bool NameFinder::isSameAgain() const
{
    return same_ && presses_.size() > 1;
}

QString NameFinder::asked() const
{
    return isSameAgain() ? presses_.first() : presses_.join(QString());
}

NameFinder::Found NameFinder::find(int rows, int current, const NameOf& nameOf)
{
    if (isEmpty())
        return {};
    glances_.fill(0);
    const qsizetype keys = isSameAgain() ? firstPress_ : keys_.size();
    const int first = isSameAgain() ? current + 1 : std::max(current, 0);
    for (const bool byWords : {false, true}) {
        for (int i = 0; i < rows; ++i) {
            const int row = (first + i) % rows;
            const QByteArrayView name = nameOf(row);
            Found found = byWords ? matchOfWord(name, keys) : Found{0, 0, matchAtStart(name, keys)};
            if (found.length <= 0)
                continue;
            found.row = row;
            return found;
        }
    }
    return {};
}

inline quint8 NameFinder::glanceAt(char32_t character)
{
    const bool isKnown = character < FoldedCharacters::CommonCharacters && glances_[character] != 0;
    return isKnown ? glances_[character] : learnGlance(character);
}

quint8 NameFinder::learnGlance(char32_t character)
{
    const FoldedCharacters::Folded& folded = characters_.of(character);
    const char16_t key = keys_.front().unicode();
    const bool isOnKey = isDigitKey(key) && (folded.isPassedOver || hasDigit(folded, key));
    const bool mayBegin = folded.length == 0 || isOnKey || fits(folded.units.front(), key);
    const auto glance = quint8(Known | (mayBegin ? MayBegin : 0) | glanceOf(folded.kind));
    if (character < FoldedCharacters::CommonCharacters)
        glances_[character] = glance;
    return glance;
}

/// How many bytes at the start of `text` stand for the first `keys` keys; 0 if they do not.
qsizetype NameFinder::matchAtStart(QByteArrayView text, qsizetype keys)
{
    QByteArrayView rest = text;
    if (text.isEmpty() || (glanceAt(takeCharacter(rest)) & MayBegin) == 0)
        return 0;
    rest = text;
    for (qsizetype key = 0; key < keys;) {
        if (rest.isEmpty())
            return 0;
        const FoldedCharacters::Folded& character = characters_.of(takeCharacter(rest));
        const char16_t wanted = keys_.at(key).unicode();
        if (isDigitKey(wanted)) {
            if (character.isPassedOver)
                continue;
            // As a whole it may be on a key, as "ß" is, or only what it consists of.
            if (hasDigit(character, wanted)) {
                ++key;
                continue;
            }
        }
        for (size_t unit = 0; unit < character.length && key < keys; ++unit, ++key) {
            if (!fits(character.units.at(unit), keys_.at(key).unicode()))
                return 0;
        }
    }
    return rest.begin() - text.begin();
}

bool NameFinder::fits(char16_t unit, char16_t key) const
{
    if (isDigitKey(key))
        return (characters_.digitsOf(unit) >> unsigned(key - u'0') & 1U) != 0;
    return unit == key;
}

/// The first word behind the name's beginning that the keys match. Most of the time that a search
/// takes is spent here, so nothing is branched on that changes from letter to letter.
NameFinder::Found NameFinder::matchOfWord(QByteArrayView name, qsizetype keys)
{
    bool inWord = false;
    for (QByteArrayView rest = name; !rest.isEmpty();) {
        const QByteArrayView here = rest;
        const quint8 glance = glanceAt(takeCharacter(rest));
        const bool isLetter = (glance & InWord) != 0;
        const bool begins =
            ((glance & MayBegin) != 0) & (((glance & IsWord) != 0) | (isLetter & !inWord));
        inWord = isLetter | (((glance & Joint) != 0) & inWord);
        if (!begins)
            continue;
        const qsizetype from = here.begin() - name.begin();
        const qsizetype length = from > 0 ? matchAtStart(here, keys) : 0;
        if (length > 0)
            return {0, from, length};
    }
    return {};
}
