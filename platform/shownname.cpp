#include "platform/shownname.h"

QString withMarks(const QString& text)
{
    if (text.isValidUtf16() && !text.contains(QChar(QChar::ByteOrderMark)))
        return text;
    QString shown = text;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        const QChar character = shown.at(i);
        const bool isPair =
            character.isHighSurrogate() && i + 1 < shown.size() && shown.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (character.isSurrogate() || character == QChar(QChar::ByteOrderMark))
            shown[i] = QChar(QChar::ReplacementCharacter);
    }
    return shown;
}
