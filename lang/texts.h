#pragma once

#include <QString>

/// The texts that a user sees. All are null until loadTexts() has run and fixed afterwards.
extern QString LANG_OPEN_WITH;
extern QString LANG_DELETE;
extern QString LANG_COPY_MENU;
extern QString LANG_RENAME;
extern QString LANG_MKDIR;
extern QString LANG_BOOKMARK;
extern QString LANG_ADD_BOOKMARK;
extern QString LANG_BT;
extern QString LANG_PROPERTIES;
extern QString LANG_COPY;
extern QString LANG_MOVE;
extern QString LANG_PASTE;
extern QString LANG_PASTE_AS;
extern QString LANG_OPTIONS;
extern QString LANG_CANCEL;
extern QString LANG_YES;
extern QString LANG_NO;
extern QString LANG_TYPE;
extern QString LANG_NAME;
extern QString LANG_PATH;
extern QString LANG_FOLDER;
extern QString LANG_FILE;
extern QString LANG_DIRS;
extern QString LANG_FILES;
extern QString LANG_SYMLINK;
extern QString LANG_UNK;
extern QString LANG_SIZE;
extern QString LANG_OWNER;
extern QString LANG_PERM;
extern QString LANG_EXIT;
extern QString LANG_ERROR;
extern QString LANG_WARNING;
extern QString LANG_COPYING;
extern QString LANG_MOVING;
extern QString LANG_PLEASE_WAIT;
extern QString LANG_NOT_EXEC;
extern QString LANG_DELETE_DIR;
extern QString LANG_DELETE_FILE;
extern QString LANG_UNABLE_DELETE;
extern QString LANG_MOVE_SURE;
extern QString LANG_COPY_EXISTS;
extern QString LANG_DON_TRY_COPY;
extern QString LANG_DON_TRY_MOVE;
extern QString LANG_ERRORMOVE_HALF;
extern QString LANG_RENAME_ERROR;
extern QString LANG_RENAME_EXISTS;
extern QString LANG_ENTER_DIRNAME;
extern QString LANG_RENAME_DIREXISTS;
extern QString LANG_EXIT_SURE;

/// The version of the language files that this program expects under the key "VER".
inline constexpr int LanguageVersion = 102;

/// The language file of a language: the folder's "lang" folder, by plain concatenation.
QString languageFile(const QString& workFolder, const QString& language);

/// Fills all texts from the group "Language" of an INI file; what the file does not give takes its
/// English default. A file older than LanguageVersion is named on the debug stream and used all the
/// same; a missing one counts as version 0.
void loadTexts(const QString& file);
