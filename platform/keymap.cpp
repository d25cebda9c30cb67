#include "platform/keymap.h"

#include "platform/regularfile.h"

#include <QKeySequence>

#include <algorithm>
#include <iterator>
#include <optional>

namespace
{

/// The toolkit's special keys start here; their low byte is the phone's.
constexpr int SpecialKey = 0x01000000;
constexpr int PhoneSpecialKey = 0x1000;
constexpr int NoCode = 0;

/// The symbols of a keypad's own digits, "*" and "#" in this order. The toolkit has no keys for
/// them.
constexpr quint32 FirstKeypadSymbol = 0x10081200;
constexpr char KeypadCharacters[] = "0123456789*#";

/// Keys of the toolkit that phones have and keyboards have not.
constexpr int KeypadOnlyKeys[] = {
    Qt::Key_Select,
    Qt::Key_Yes,
    Qt::Key_No,
    Qt::Key_Context1,
    Qt::Key_Context2,
    Qt::Key_Context3,
    Qt::Key_Context4,
    Qt::Key_Call,
    Qt::Key_Hangup,
    Qt::Key_Flip,
    Qt::Key_ToggleCallHangup,
    Qt::Key_VoiceDial,
    Qt::Key_LastNumberRedial,
};

/// The character of a keypad's own key; NoCode for any other key.
int keypadCharacter(const QKeyEvent& event)
{
    const quint32 place = event.nativeVirtualKey() - FirstKeypadSymbol;
    return place < sizeof KeypadCharacters - 1 ? KeypadCharacters[place] : NoCode;
}

bool isLetter(const QKeyEvent& event)
{
    return event.text().size() == 1 && event.text().at(0).isLetter();
}

/// The two values that a switch in a text has; nothing for another text.
std::optional<bool> parseSwitch(const QString& text)
{
    if (text == QLatin1String("1"))
        return true;
    return text == QLatin1String("0") ? std::optional<bool>(false) : std::nullopt;
}

std::optional<int> parseNumber(const QString& text)
{
    bool ok = false;
    const int number = text.toInt(&ok, 0);
    return ok && number >= 0 ? std::optional<int>(number) : std::nullopt;
}

std::optional<int> parseCode(const QString& text)
{
    if (text == QLatin1String("none"))
        return NoCode;
    if (text.size() == 1)
        return text.at(0).toUpper().unicode();
    return parseNumber(text);
}

std::optional<int> parseKey(const QString& text)
{
    if (text.startsWith(QLatin1String("0x")))
        return parseNumber(text);
    const QKeySequence sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (sequence.count() != 1 || sequence[0].key() == Qt::Key_unknown || sequence[0].key() == 0 ||
        sequence[0].keyboardModifiers() != Qt::NoModifier)
        return std::nullopt;
    return sequence[0].key();
}

bool isComment(const QString& line)
{
    return line.isEmpty() || line.startsWith(QLatin1Char(';')) || line == QLatin1String("#") ||
           line.startsWith(QLatin1String("# "));
}

} // namespace

int PhoneKey::code(const QKeyEvent& event)
{
    return KeyMap::instance().code(event);
}

bool PhoneKey::isArrow(int code)
{
    return code >= Left && code <= Down;
}

bool PhoneKey::isSelect(int code)
{
    return code == Return || code == Enter;
}

KeyMap& KeyMap::instance()
{
    static KeyMap map;
    return map;
}

KeyMap::KeyMap()
    : byKey_{{Qt::Key_Menu, PhoneKey::SoftLeft},
             {Qt::Key_Escape, PhoneKey::SoftRight},
             {Qt::Key_Backspace, PhoneKey::FolderUp},
             {Qt::Key_Select, PhoneKey::Return},
             {Qt::Key_MediaPlay, PhoneKey::Music},
             {Qt::Key_MediaTogglePlayPause, PhoneKey::Music},
             {Qt::Key_MediaPrevious, PhoneKey::MusicPrevious},
             {Qt::Key_MediaNext, PhoneKey::MusicNext},
             // On the way to another key or window these must not dismiss a message.
             {Qt::Key_Shift, NoCode},
             {Qt::Key_Control, NoCode},
             {Qt::Key_Meta, NoCode},
             {Qt::Key_Alt, NoCode},
             {Qt::Key_CapsLock, NoCode},
             {Qt::Key_NumLock, NoCode},
             {Qt::Key_ScrollLock, NoCode}}
{
}

void KeyMap::load(const QString& file)
{
    const auto bytes = readRegularFile(file, MaxFileBytes);
    if (!bytes)
        return;
    const QList<QByteArray> lines = bytes->split('\n');
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = QString::fromUtf8(lines.at(i)).trimmed();
        if (!isComment(line) && !parseLine(line)) {
            qWarning("%s:%d: not a key setting: %s", qUtf8Printable(file), int(i + 1),
                     qUtf8Printable(line.left(80)));
        }
    }
}

bool KeyMap::parseLine(const QString& line)
{
    // The last "=" divides, so that the key "=" itself can be named.
    const qsizetype equals = line.lastIndexOf(QLatin1Char('='));
    if (equals < 1)
        return false;
    const QString name = line.left(equals).trimmed();
    if (name.compare(QLatin1String("Keypad"), Qt::CaseInsensitive) == 0)
        return parseKeypad(line.mid(equals + 1).trimmed());
    const auto code = parseCode(line.mid(equals + 1).trimmed());
    if (!code)
        return false;
    if (name.startsWith(QLatin1String("scan:"))) {
        const auto scan = parseNumber(name.mid(5));
        if (scan)
            byScanCode_.insert(quint32(*scan), *code);
        return scan.has_value();
    }
    const auto key = parseKey(name);
    if (key)
        byKey_.insert(*key, *code);
    return key.has_value();
}

bool KeyMap::parseKeypad(const QString& value)
{
    const auto wanted = parseSwitch(value);
    keypadIsSet_ = wanted.value_or(false);
    return wanted.has_value();
}

void KeyMap::loadKeypadVariable(const char* name)
{
    if (!qEnvironmentVariableIsSet(name))
        return;
    const auto wanted = parseSwitch(qEnvironmentVariable(name));
    if (!wanted)
        qWarning("%s: neither 0 nor 1: %s", name, qgetenv(name).left(80).constData());
    keypadIsSet_ = keypadIsSet_ || wanted.value_or(false);
}

void KeyMap::notice(const QKeyEvent& event)
{
    const bool isOfKeypad = keypadCharacter(event) != NoCode ||
                            std::find(std::begin(KeypadOnlyKeys), std::end(KeypadOnlyKeys),
                                      event.key()) != std::end(KeypadOnlyKeys);
    if (isOfKeypad)
        keypadIsSeen_ = true;
    else if (isLetter(event))
        keypadIsSeen_ = false;
}

int KeyMap::code(const QKeyEvent& event) const
{
    if (!byScanCode_.isEmpty()) {
        const auto scanned = byScanCode_.constFind(event.nativeScanCode());
        if (scanned != byScanCode_.constEnd())
            return *scanned;
    }
    if (const int character = keypadCharacter(event); character != NoCode)
        return character;
    const auto mapped = byKey_.constFind(event.key());
    if (mapped != byKey_.constEnd())
        return *mapped;
    if ((event.key() & SpecialKey) != 0)
        return event.key() < SpecialKey + 0x100 ? PhoneSpecialKey + (event.key() & 0xff) : NoCode;
    return event.key();
}
