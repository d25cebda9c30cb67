#pragma once

#include <QString>

/// What the screens of operations on files say, beside the texts of the main window. "%1" and "%2"
/// stand for numbers, sizes, times and names.
struct SafeTexts {
#define TEXT(name, key, english) QString name = QStringLiteral(english);
#include "extras/safetextlist.inc"
#undef TEXT

    /// The texts in use, in English until others are loaded.
    static const SafeTexts& instance();
    /// Takes the texts from the group "Language" of a language file; what that does not give is
    /// English.
    static void load(const QString& file);
};
