#include "platform/foldedcharacters.h"

#include <algorithm>

namespace
{

/// Letters whose stroke or ligature is a part of them, so that no decomposition takes it away.
struct Plain {
    char16_t letter;
    const char16_t* plain;
};

constexpr Plain PlainLetters[] = {
    {u'ß', u"ss"}, {u'æ', u"ae"}, {u'ð', u"d"}, {u'ø', u"o"}, {u'þ', u"th"},
    {u'đ', u"d"},  {u'ħ', u"h"},  {u'ı', u"i"}, {u'ł', u"l"}, {u'ŋ', u"n"},
    {u'œ', u"oe"}, {u'ŧ', u"t"},  {u'ґ', u"г"},
};

/// Whose keys have the letters that the user's language does not.
constexpr const char16_t* OtherScripts[] = {u"russian", u"ukrainian", u"greek",
                                            u"hebrew",  u"arabic",    u"serbian"};

bool isAccent(QChar character)
{
    if (character.category() == QChar::Other_Format)
        return true;
    if (character.category() != QChar::Mark_NonSpacing)
        return false;
    // In other scripts such a mark is a vowel, which tells words apart.
    const QChar::Script script = character.script();
    return script == QChar::Script_Inherited || script == QChar::Script_Hebrew ||
           script == QChar::Script_Arabic || script == QChar::Script_Cyrillic;
}

QString foldedText(char32_t character)
{
    const QString decomposed = QString::fromUcs4(&character, 1)
                                   .toCaseFolded()
                                   .normalized(QString::NormalizationForm_KD)
                                   .toCaseFolded();
    QString text;
    for (const QChar each : decomposed) {
        const auto plain =
            std::find_if(std::begin(PlainLetters), std::end(PlainLetters),
                         [each](const Plain& row) { return QChar(row.letter) == each; });
        if (plain != std::end(PlainLetters))
            text += QString::fromUtf16(plain->plain);
        else if (!isAccent(each))
            text += each;
    }
    return text;
}

bool isApostrophe(char32_t character)
{
    return character == U'\'' || character == U'’' || character == U'ʼ';
}

bool isIdeograph(char32_t character)
{
    switch (QChar::script(character)) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
        return true;
    default:
        return false;
    }
}

FoldedCharacters::Kind kindOf(char32_t character, bool counts)
{
    using Kind = FoldedCharacters::Kind;
    if (!counts || isApostrophe(character))
        return Kind::Joint;
    if (isIdeograph(character))
        return Kind::Ideograph;
    return QChar::isLetterOrNumber(character) || QChar::isMark(character) ? Kind::Letter
                                                                          : Kind::Between;
}

} // namespace

FoldedCharacters::FoldedCharacters(const KeypadLetters& letters)
    : common_(CommonCharacters), isKnown_(CommonCharacters)
{
    addKeys(letters);
    for (const char16_t* language : OtherScripts)
        addKeys(KeypadLetters(QString::fromUtf16(language)));
}

void FoldedCharacters::addKeys(const KeypadLetters& letters)
{
    const QHash<char16_t, quint16> before = digits_;
    for (int digit = 1; digit < KeypadLetters::Keys; ++digit) {
        for (const QChar letter : letters.of(digit)) {
            if (!before.contains(letter.unicode()))
                digits_[letter.unicode()] |= quint16(1U << unsigned(digit));
        }
    }
}

const FoldedCharacters::Folded& FoldedCharacters::learn(char32_t character)
{
    if (character < CommonCharacters) {
        isKnown_[character] = true;
        return common_[character] = fold(character);
    }
    const auto known = others_.constFind(character);
    return known != others_.constEnd() ? *known : *others_.insert(character, fold(character));
}

FoldedCharacters::Folded FoldedCharacters::fold(char32_t character) const
{
    const QString text = foldedText(character);
    Folded folded;
    folded.length = quint8(std::min(size_t(text.size()), Folded::Units));
    for (size_t unit = 0; unit < folded.length; ++unit)
        folded.units.at(unit) = text.at(qsizetype(unit)).unicode();
    folded.kind = kindOf(character, !text.isEmpty());
    folded.digits = digitsOf(character, text);
    folded.isPassedOver = folded.digits == 0 && (folded.kind == Kind::Between || character == U'0');
    return folded;
}

quint16 FoldedCharacters::digitsOf(char32_t character, const QString& folded) const
{
    const char32_t small = QChar::toLower(character);
    quint16 digits = small <= 0xffff ? digitsOf(char16_t(small)) : quint16(0);
    if (folded.size() == 1)
        digits |= digitsOf(folded.at(0).unicode());
    return digits;
}
