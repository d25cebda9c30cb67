#include "files/names.h"

namespace
{

constexpr char16_t FirstEscape = 0xdc80;
constexpr char16_t LastEscape = 0xdcff;
constexpr char16_t EscapeBase = 0xdc00;
/// Of UTF-8 for a unit of UTF-16.
constexpr qsizetype MostBytes = 3;

/// The lengths of sequences with a first byte, and the range of the second byte, which is what
/// rules out overlong forms, surrogates and what is beyond U+10FFFF.
struct Lead {
    uchar first;
    uchar last;
    qsizetype length;
    uchar lowestSecond;
    uchar highestSecond;
};

constexpr Lead Leads[] = {
    {0x00, 0x7f, 1, 0x00, 0x00}, {0xc2, 0xdf, 2, 0x80, 0xbf}, {0xe0, 0xe0, 3, 0xa0, 0xbf},
    {0xe1, 0xec, 3, 0x80, 0xbf}, {0xed, 0xed, 3, 0x80, 0x9f}, {0xee, 0xef, 3, 0x80, 0xbf},
    {0xf0, 0xf0, 4, 0x90, 0xbf}, {0xf1, 0xf3, 4, 0x80, 0xbf}, {0xf4, 0xf4, 4, 0x80, 0x8f},
};

uchar byteAt(QByteArrayView bytes, qsizetype position)
{
    return static_cast<uchar>(bytes.at(position));
}

bool isWithin(uchar byte, uchar lowest, uchar highest)
{
    return byte >= lowest && byte <= highest;
}

bool isSequence(QByteArrayView bytes, const Lead& lead)
{
    if (lead.length > bytes.size() || !isWithin(byteAt(bytes, 0), lead.first, lead.last))
        return false;
    if (lead.length > 1 && !isWithin(byteAt(bytes, 1), lead.lowestSecond, lead.highestSecond))
        return false;
    for (qsizetype i = 2; i < lead.length; ++i) {
        if (!isWithin(byteAt(bytes, i), 0x80, 0xbf))
            return false;
    }
    return true;
}

/// How many bytes the character at the start has; 0 if there is no whole one.
qsizetype sequenceLength(QByteArrayView bytes)
{
    for (const Lead& lead : Leads) {
        if (isSequence(bytes, lead))
            return lead.length;
    }
    return 0;
}

/// The toolkit leaves out a mark at the start.
void appendUtf8(QString& text, QByteArrayView bytes)
{
    while (bytes.startsWith(ByteOrderMark)) {
        text += QChar(QChar::ByteOrderMark);
        bytes = bytes.sliced(ByteOrderMark.size());
    }
    text += QString::fromUtf8(bytes);
}

QString decodeBytewise(QByteArrayView name)
{
    QString text;
    text.reserve(name.size());
    qsizetype validFrom = 0;
    for (qsizetype i = 0; i < name.size();) {
        if (const qsizetype length = sequenceLength(name.sliced(i))) {
            i += length;
            continue;
        }
        appendUtf8(text, name.sliced(validFrom, i - validFrom));
        text += QChar(char16_t(EscapeBase + byteAt(name, i)));
        validFrom = ++i;
    }
    appendUtf8(text, name.sliced(validFrom));
    return text;
}

std::optional<QByteArray> encodeEscapes(QStringView text)
{
    QByteArray name;
    name.reserve(text.size() * MostBytes);
    qsizetype validFrom = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (!character.isSurrogate())
            continue;
        if (character.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            ++i;
            continue;
        }
        if (character < QChar(FirstEscape) || character > QChar(LastEscape))
            return std::nullopt;
        name += text.sliced(validFrom, i - validFrom).toUtf8();
        name += char(character.unicode() - EscapeBase);
        validFrom = i + 1;
    }
    name += text.sliced(validFrom).toUtf8();
    // Bytes that are valid together have another text, which is the one that names them.
    if (decodeName(name) != text)
        return std::nullopt;
    return name;
}

} // namespace

QString decodeName(QByteArrayView name)
{
    if (!name.isValidUtf8())
        return decodeBytewise(name);
    if (!name.startsWith(ByteOrderMark))
        return QString::fromUtf8(name);
    QString text;
    appendUtf8(text, name);
    return text;
}

std::optional<QByteArray> encodeName(QStringView text)
{
    if (text.contains(QChar::Null))
        return std::nullopt;
    return text.isValidUtf16() ? text.toUtf8() : encodeEscapes(text);
}

QByteArray encodedPath(QStringView path)
{
    return encodeName(path).value_or(QByteArray());
}
