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

/// Takes one character off the front of `text`, which must not be empty.
char32_t takeCharacter(QByteArrayView& text)
{
    const uchar lead = uchar(text.front());
    const qsizetype length = lead < 0x80   ? 1
                             : lead < 0xc2 ? 0
                             : lead < 0xe0 ? 2
                             : lead < 0xf0 ? 3
                             : lead < 0xf5 ? 4
                                           : 0;
    const bool isWhole = length > 0 && length <= text.size() &&
                         std::all_of(text.begin() + 1, text.begin() + length, isContinuation);
    if (!isWhole) {
        text = text.sliced(1);
        return NoCharacter;
    }
    char32_t character = length == 1 ? lead : lead & (0x7fU >> unsigned(length));
    for (qsizetype i = 1; i < length; ++i)
        character = character << 6U | (uchar(text.at(i)) & 0x3fU);
    text = text.sliced(length);
    return character <= QChar::LastValidCodePoint ? character : NoCharacter;
}

bool isDigitKey(char16_t key)
{
    return key >= u'1' && key <= u'9';
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
    const size_t keys = size_t(isSameAgain() ? firstPress_ : keys_.size());
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

/// How many bytes at the start of `text` stand for the first `keys` keys; 0 if they do not.
qsizetype NameFinder::matchAtStart(QByteArrayView text, size_t keys)
{
    const char* const start = text.begin();
    for (size_t key = 0; key < keys;) {
        if (text.isEmpty())
            return 0;
        const FoldedCharacters::Folded& character = characters_.of(takeCharacter(text));
        const char16_t wanted = keys_.at(qsizetype(key)).unicode();
        if (isDigitKey(wanted)) {
            if (character.isPassedOver)
                continue;
            // As a whole it may be on a key, as "ß" is, or only what it consists of.
            if ((character.digits >> unsigned(wanted - u'0') & 1U) != 0) {
                ++key;
                continue;
            }
        }
        for (size_t unit = 0; unit < character.length && key < keys; ++unit, ++key) {
            if (!fits(character.units.at(unit), keys_.at(qsizetype(key)).unicode()))
                return 0;
        }
    }
    return text.begin() - start;
}

bool NameFinder::fits(char16_t unit, char16_t key) const
{
    if (isDigitKey(key))
        return (characters_.digitsOf(unit) >> unsigned(key - u'0') & 1U) != 0;
    return unit == key;
}

/// The first word behind the name's beginning that the keys match.
NameFinder::Found NameFinder::matchOfWord(QByteArrayView name, size_t keys)
{
    bool inWord = false;
    for (QByteArrayView rest = name; !rest.isEmpty();) {
        const QByteArrayView here = rest;
        const Kind kind = characters_.of(takeCharacter(rest)).kind;
        if (kind == Kind::Joint)
            continue;
        const bool begins = kind == Kind::Ideograph || (kind == Kind::Letter && !inWord);
        inWord = kind == Kind::Letter;
        const qsizetype from = here.begin() - name.begin();
        if (!begins || from == 0)
            continue;
        if (const qsizetype length = matchAtStart(here, keys); length > 0)
            return {0, from, length};
    }
    return {};
}
