#pragma once

#include <QString>

/// The texts that a user sees. All are null until loadTexts() has run and fixed afterwards.
#define TEXT(name, key, english) extern QString name;
#include "lang/extratextlist.inc"
#include "lang/textlist.inc"
#undef TEXT

/// The version of the language files that this program expects under the key "VER".
inline constexpr int LanguageVersion = 102;

/// The language file of a language: the folder's "lang" folder, by plain concatenation.
QString languageFile(const QString& workFolder, const QString& language);

/// The file that the texts were loaded from last, for what has texts of its own in it; null before.
const QString& languageFileInUse();

/// Fills all texts from the group "Language" of an INI file; what the file does not give takes its
/// English default. A file older than LanguageVersion is named on the debug stream and used all the
/// same; a missing one counts as version 0.
void loadTexts(const QString& file);

/// A text with a number in the place of its "%1"; without one it stays as it is.
QString withNumber(const QString& text, int number);
