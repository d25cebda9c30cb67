#include "platform/keymap.h"

#include "platform/keyline.h"
#include "platform/regularfile.h"

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
        if (!add(KeyLine::of(line))) {
            qWarning("%s:%d: not a key setting: %s", qUtf8Printable(file), int(i + 1),
                     qUtf8Printable(line.left(80)));
        }
    }
}

bool KeyMap::add(const KeyLine& line)
{
    switch (line.kind) {
    case KeyLine::Key:
        byKey_.insert(line.number, line.code);
        return true;
    case KeyLine::Scan:
        byScanCode_.insert(quint32(line.number), line.code);
        return true;
    case KeyLine::Keypad:
        keypadIsSet_ = line.code == 1;
        return line.code >= 0;
    case KeyLine::Comment:
        return true;
    case KeyLine::Unclear:
        break;
    }
    return false;
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
