#pragma once

#include "lang/texts.h"

/// The texts as a user of the English program and a writer of a language file know them.
struct KnownText {
    const char* key;
    QString* text;
    const char* english;
};

inline const KnownText KnownTexts[] = {
    {"OPEN_WITH", &LANG_OPEN_WITH, "Open with.."},
    {"DELETE", &LANG_DELETE, "Delete"},
    {"COPY_MENU", &LANG_COPY_MENU, "Copy menu"},
    {"RENAME", &LANG_RENAME, "Rename"},
    {"MKDIR", &LANG_MKDIR, "Make Dir"},
    {"BOOKMARK", &LANG_BOOKMARK, "Bookmarks"},
    {"ADD_BOOKMARK", &LANG_ADD_BOOKMARK, "Add Bookmark"},
    {"BLUETOOTH", &LANG_BT, "Send by Bluetooth"},
    {"PROPERTIES", &LANG_PROPERTIES, "Properties"},
    {"COPY", &LANG_COPY, "Copy"},
    {"MOVE", &LANG_MOVE, "Move"},
    {"PASTE", &LANG_PASTE, "Paste"},
    {"PASTE_AS", &LANG_PASTE_AS, "Paste as.."},
    {"OPTIONS", &LANG_OPTIONS, "Options"},
    {"SELECT", &LANG_SELECT, "Select"},
    {"BACK", &LANG_BACK, "Back"},
    {"CANCEL", &LANG_CANCEL, "Cancel"},
    {"YES", &LANG_YES, "Yes"},
    {"NO", &LANG_NO, "No"},
    {"TYPE", &LANG_TYPE, "Type"},
    {"NAME", &LANG_NAME, "Name"},
    {"PATH", &LANG_PATH, "Path"},
    {"FOLDER", &LANG_FOLDER, "Dir"},
    {"FILE", &LANG_FILE, "File"},
    {"DIRS", &LANG_DIRS, "Dirs"},
    {"FILES", &LANG_FILES, "Files"},
    {"SYMLINK", &LANG_SYMLINK, "Symlink"},
    {"UNK", &LANG_UNK, "Unknown"},
    {"SIZE", &LANG_SIZE, "Size"},
    {"OWNER", &LANG_OWNER, "Owner"},
    {"PERM", &LANG_PERM, "Permissions"},
    {"EXIT", &LANG_EXIT, "Exit"},
    {"ERROR", &LANG_ERROR, "Error"},
    {"WARNING", &LANG_WARNING, "Warning"},
    {"COPYING", &LANG_COPYING, "Copying"},
    {"MOVING", &LANG_MOVING, "Moving"},
    {"PLEASE_WAIT", &LANG_PLEASE_WAIT, "Please wait.."},
    {"NOT_EXEC", &LANG_NOT_EXEC, "File is not executable..or I'v done something wrong.."},
    {"DELETE_DIR", &LANG_DELETE_DIR, "Delete dir?"},
    {"DELETE_FILE", &LANG_DELETE_FILE, "Delete file?"},
    {"UNABLE_DELETE", &LANG_UNABLE_DELETE, "Unable to delete.."},
    {"MOVE_SURE", &LANG_MOVE_SURE, "Move for sure?"},
    {"COPY_EXISTS", &LANG_COPY_EXISTS, "already exists. Change old file?"},
    {"DON_TRY_COPY", &LANG_DON_TRY_COPY,
     "Belive me you don't want to copy a dir in the same dir recursively, couse I'm using "
     "recursive copy.."},
    {"DON_TRY_MOVE", &LANG_DON_TRY_MOVE,
     "Moving a dir in the same dir: is like deleting it. Don't waste time.."},
    {"ERRORMOVE_HALF", &LANG_ERRORMOVE_HALF, "Copyed but not moved.."},
    {"RENAME_ERROR", &LANG_RENAME_ERROR, "Can not rename.."},
    {"RENAME_EXISTS", &LANG_RENAME_EXISTS, "This name already exists."},
    {"ENTER_DIRNAME", &LANG_ENTER_DIRNAME, "Enter Dirname:"},
    {"RENAME_DIREXIST", &LANG_RENAME_DIREXISTS, "A dir with that name already exists.."},
    {"EXIT_SURE", &LANG_EXIT_SURE, "Are you sure want exit Quarn?"},
    {"MARKED", &LANG_MARKED, "%1 marked"},
    {"TO_COPY", &LANG_TO_COPY, "%1 to copy"},
    {"TO_MOVE", &LANG_TO_MOVE, "%1 to move"},
    {"NO_ENTRIES", &LANG_NO_ENTRIES, "No entries"},
    {"CANNOT_READ", &LANG_CANNOT_READ, "Cannot be read"},
    {"NO_EXTRAS", &LANG_NO_EXTRAS, "Not available: the program's part for this is missing."},
    {"TRASH", &LANG_TRASH, "Trash"},
};
