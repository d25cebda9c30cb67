#include "platform/shownname.h"

#include <algorithm>
#include <iterator>

bool isInvisible(QChar character)
{
    constexpr char16_t First = 0x061c;
    return character.unicode() >= First &&
           std::find(std::begin(InvisibleCharacters), std::end(InvisibleCharacters),
                     character.unicode()) != std::end(InvisibleCharacters);
}

QString withMarks(const QString& text)
{
    if (text.isValidUtf16() && std::none_of(text.begin(), text.end(), isInvisible))
        return text;
    QString shown = text;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        const QChar character = shown.at(i);
        const bool isPair =
            character.isHighSurrogate() && i + 1 < shown.size() && shown.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (character.isSurrogate() || isInvisible(character))
            shown[i] = QChar(QChar::ReplacementCharacter);
    }
    return shown;
}
