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

// What the first byte of a character says: those before FirstOfTwo are ASCII or no first ones.
constexpr uchar FirstOfTwo = 0xc2;
constexpr uchar FirstOfThree = 0xe0;
constexpr uchar FirstContinuation = 0x80;
constexpr qsizetype LongestCharacter = 4;

constexpr size_t PairsOfAByte = 256;

size_t pairOf(uchar first, uchar second)
{
    return first * PairsOfAByte + second;
}

/// The table of pairs where only those are known that begin in the midst of a character.
std::vector<quint8> continuationsAlone()
{
    std::vector<quint8> table(PairsOfAByte * PairsOfAByte);
    std::fill_n(table.data() + pairOf(FirstContinuation, 0),
                pairOf(FirstOfTwo - FirstContinuation, 0), quint8(1));
    return table;
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
    noWordAt_.clear();
    Found found = findName(rows, std::max(current, 0), keys_.size(), nameOf);
    if (found.row >= 0)
        return found;
    const qsizetype keys = isSameAgain() ? firstPress_ : keys_.size();
    const int first = isSameAgain() ? current + 1 : std::max(current, 0);
    if (isSameAgain())
        found = findName(rows, first, keys, nameOf);
    return found.row >= 0 ? found : findWord(rows, first, keys, nameOf);
}

NameFinder::Found NameFinder::findName(int rows, int first, qsizetype keys, const NameOf& nameOf)
{
    for (int i = 0; i < rows; ++i) {
        const int row = (first + i) % rows;
        const qsizetype length = matchAtStart(nameOf(row), keys);
        if (length > 0)
            return {row, 0, length};
    }
    return {};
}

NameFinder::Found NameFinder::findWord(int rows, int first, qsizetype keys, const NameOf& nameOf)
{
    for (int i = 0; i < rows; ++i) {
        const int row = (first + i) % rows;
        Found found = matchOfWord(nameOf(row), keys);
        if (found.length > 0) {
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
/// takes is spent here, so what can be told from two bytes is not looked at again.
NameFinder::Found NameFinder::matchOfWord(QByteArrayView name, qsizetype keys)
{
    if (noWordAt_.empty())
        noWordAt_ = continuationsAlone();
    for (qsizetype at = afterNoWord(name, 1); at < name.size(); at = afterNoWord(name, at + 1)) {
        const qsizetype length = mayBeginWordAt(name, at) ? matchAtStart(name.sliced(at), keys) : 0;
        if (length > 0)
            return {0, at, length};
    }
    return {};
}

/// The first byte from one on of which it is not known that no word begins there; the name's size
/// if there is none.
qsizetype NameFinder::afterNoWord(QByteArrayView name, qsizetype from) const
{
    const quint8* const known = noWordAt_.data();
    const auto* const bytes = reinterpret_cast<const uchar*>(name.data());
    const auto isKnown = [known, bytes](qsizetype at) {
        return known[pairOf(bytes[at], bytes[at + 1])];
    };
    const qsizetype last = name.size() - 1;
    qsizetype at = from;
    // Several at once: what decides nothing need not be waited for.
    while (at + 4 <= last &&
           (isKnown(at) & isKnown(at + 1) & isKnown(at + 2) & isKnown(at + 3)) != 0)
        at += 4;
    while (at < last && isKnown(at) != 0)
        ++at;
    return at == last && known[pairOf(bytes[at], 0)] != 0 ? at + 1 : at;
}

/// Whether a word begins at a byte, which is the first of a character, that may be the one.
bool NameFinder::mayBeginWordAt(QByteArrayView name, qsizetype at)
{
    QByteArrayView rest = name.sliced(at);
    const uchar lead = uchar(rest.front());
    const uchar next = rest.size() > 1 ? uchar(rest[1]) : 0;
    const quint8 glance = glanceAt(takeCharacter(rest));
    if ((glance & MayBegin) != 0 && (glance & (InWord | IsWord)) != 0)
        return (glance & IsWord) != 0 || !endsInWord(name.first(at));
    // Of longer characters two bytes do not tell which it is.
    if (lead < FirstOfTwo)
        std::fill_n(noWordAt_.data() + pairOf(lead, 0), PairsOfAByte, quint8(1));
    else if (lead < FirstOfThree)
        noWordAt_[pairOf(lead, next)] = 1;
    return false;
}

/// Whether a letter behind a text goes on with a word. Bytes that are no first ones belong to what
/// is before them, so a text can be read backwards.
bool NameFinder::endsInWord(QByteArrayView text)
{
    while (!text.isEmpty()) {
        qsizetype length = 1;
        while (length < LongestCharacter && length < text.size() &&
               isContinuation(text[text.size() - length]))
            ++length;
        QByteArrayView rest = text.last(length);
        char32_t character = takeCharacter(rest);
        if (!rest.isEmpty()) {
            character = NoCharacter;
            length = 1;
        }
        const quint8 glance = glanceAt(character);
        if ((glance & Joint) == 0)
            return (glance & InWord) != 0;
        text.chop(length);
    }
    return false;
}
