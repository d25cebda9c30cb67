#pragma once

#include <QStringView>

/// A line of a file of keys, understood (KeyMap tells what lines there are).
struct KeyLine {
    enum Kind {
        Comment, ///< or blank
        Key,     ///< a key of the toolkit gets a code
        Scan,    ///< a keyboard's own number of a key gets a code
        Keypad,  ///< says whether there is a keypad
        Unclear, ///< none of these
    };

    Kind kind = Unclear;
    int number = 0; ///< of the toolkit's key, or the keyboard's own
    int code = 0;   ///< the phone's code, 0 for "none"; with Keypad 1 or 0

    /// An unclear one of Keypad's own name is Keypad's with the code -1.
    static KeyLine of(QStringView line);
};
