#pragma once

/// A text that language files give, by its key, and what is said where one does not.
struct FileText {
    const char* key;
    const char* english;
};

#define TEXT(name, key, english) {key, english},

/// Those of the main window, of the notice after an upgrade, of the sharing screens and of the
/// plugins. Some are in several lists.
inline constexpr FileText FileTexts[] = {
#include "extras/safetextlist.inc"
#include "lang/extratextlist.inc"
#include "lang/textlist.inc"
#include "plugins/support/plugintextlist.inc"
#include "sharing/sharetextlist.inc"
#include "shell/noticetextlist.inc"
};

#undef TEXT
