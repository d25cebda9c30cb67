#pragma once

#include <QString>

/// What the sharing screens say. "%1" stands for the name of the file and "%2" for that of the
/// device, where both are known.
struct ShareTexts {
#define TEXT(name, key, english) QString name = QStringLiteral(english);
#include "sharing/sharetextlist.inc"
#undef TEXT

    /// The texts in use, in English until others are loaded.
    static const ShareTexts& instance();
    /// Takes the texts from the group "Language" of a language file; what that does not give is
    /// English.
    static void load(const QString& file);
};
