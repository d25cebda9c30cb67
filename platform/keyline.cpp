#include "platform/keyline.h"

#include <QKeySequence>
#include <QString>

#include <optional>

namespace
{

std::optional<int> parseNumber(QStringView text)
{
    bool ok = false;
    const int number = text.toInt(&ok, 0);
    return ok && number >= 0 ? std::optional<int>(number) : std::nullopt;
}

std::optional<int> parseCode(QStringView text)
{
    if (text == QLatin1String("none"))
        return 0;
    if (text.size() == 1)
        return text.at(0).toUpper().unicode();
    return parseNumber(text);
}

std::optional<int> parseKey(QStringView text)
{
    if (text.startsWith(QLatin1String("0x")))
        return parseNumber(text);
    const QKeySequence sequence =
        QKeySequence::fromString(text.toString(), QKeySequence::PortableText);
    if (sequence.count() != 1 || sequence[0].key() == Qt::Key_unknown || sequence[0].key() == 0 ||
        sequence[0].keyboardModifiers() != Qt::NoModifier)
        return std::nullopt;
    return sequence[0].key();
}

bool isComment(QStringView line)
{
    return line.isEmpty() || line.startsWith(QLatin1Char(';')) || line == QLatin1String("#") ||
           line.startsWith(QLatin1String("# "));
}

KeyLine keypadLine(QStringView value)
{
    if (value == QLatin1String("1"))
        return {KeyLine::Keypad, 0, 1};
    return {KeyLine::Keypad, 0, value == QLatin1String("0") ? 0 : -1};
}

} // namespace

KeyLine KeyLine::of(QStringView line)
{
    const QStringView text = line.trimmed();
    if (isComment(text))
        return {Comment, 0, 0};
    // The last "=" divides, so that the key "=" itself can be named.
    const qsizetype equals = text.lastIndexOf(QLatin1Char('='));
    if (equals < 1)
        return {};
    const QStringView name = text.left(equals).trimmed();
    const QStringView value = text.mid(equals + 1).trimmed();
    if (name.compare(QLatin1String("Keypad"), Qt::CaseInsensitive) == 0)
        return keypadLine(value);
    const bool isScan = name.startsWith(QLatin1String("scan:"));
    const auto number = isScan ? parseNumber(name.mid(5)) : parseKey(name);
    const auto code = parseCode(value);
    if (!number || !code)
        return {};
    return {isScan ? Scan : Key, *number, *code};
}
