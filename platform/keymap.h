#pragma once

#include <QHash>
#include <QKeyEvent>
#include <QString>

struct KeyLine;

/// The phone's key codes. Characters (digits, letters, "*", "#") are their own codes.
namespace PhoneKey
{
enum Code : int {
    Return = 0x1004,
    Enter = 0x1005,
    Left = 0x1012,
    Up = 0x1013,
    Right = 0x1014,
    Down = 0x1015,
    PageUp = 0x1016,
    PageDown = 0x1017,
    Modifier = 0x1030,
    Hide = 0x1031,
    FolderUp = 0x1032,
    Clear = FolderUp, ///< what the same key is to a field
    SoftLeft = 0x1038,
    SoftRight = 0x103A,
    Music = 0x1049,
    MusicPrevious = 0x104B,
    MusicNext = 0x104C,
};

/// The phone's code of a key event: what the key map says, else for the toolkit's special keys
/// 0x1000 plus their low byte, else the key itself. 0 for a key that has none.
int code(const QKeyEvent& event);

/// Whether a code is one of the four arrow keys.
bool isArrow(int code);
/// Whether a code chooses the current row of a list or menu (Return or Enter).
bool isSelect(int code);
} // namespace PhoneKey

/// Which keys of today's keyboards give which codes. One map serves the process; it starts with
/// the defaults and a file may change it.
///
/// A line of the file reads "KEY = CODE": KEY is the toolkit's name of the key ("F5", "Media Play",
/// "Home", "A"), its number ("0x01000034") or "scan:N" with the keyboard's own scan code; CODE is a
/// phone's code ("0x1031"), a single character, or "none" for a key that shall do nothing. The line
/// "Keypad = 1" says that the device has a keypad, on whose digits letters are typed; "Keypad = 0"
/// leaves it to be found out. Blank lines and those beginning with ";" or "#" followed by a blank
/// are skipped.
class KeyMap
{
public:
    static constexpr qsizetype MaxFileBytes = 64 * 1024;

    /// The process's map.
    static KeyMap& instance();

    KeyMap();
    /// Adds what a file says. A missing or unreadable file changes nothing; a line that cannot be
    /// understood is named on stderr and skipped.
    void load(const QString& file);
    /// Adds what one line says. False if that is nothing.
    bool add(const KeyLine& line);
    int code(const QKeyEvent& event) const;

    /// Whether letters are typed with the keys of a keypad: so the file or the environment says, or
    /// what was pressed last that tells a keypad from a keyboard.
    bool hasKeypad() const { return keypadIsSet_ || keypadIsSeen_; }
    /// Has the environment variable `name` say it: 1, or 0 as if it were not set. Anything else is
    /// named on stderr and counts as 0.
    void loadKeypadVariable(const char* name);
    /// Learns from a key that only keypads have that there is one, and from a letter that there is
    /// a keyboard.
    void notice(const QKeyEvent& event);

private:
    QHash<int, int> byKey_;
    QHash<quint32, int> byScanCode_;
    bool keypadIsSet_ = false;
    bool keypadIsSeen_ = false;
};
