#include "lang/texts.h"

#include "platform/zconfig.h"

#include <QDebug>

#include <cstdlib>

QString LANG_OPEN_WITH;
QString LANG_DELETE;
QString LANG_COPY_MENU;
QString LANG_RENAME;
QString LANG_MKDIR;
QString LANG_BOOKMARK;
QString LANG_ADD_BOOKMARK;
QString LANG_BT;
QString LANG_PROPERTIES;
QString LANG_COPY;
QString LANG_MOVE;
QString LANG_PASTE;
QString LANG_PASTE_AS;
QString LANG_OPTIONS;
QString LANG_CANCEL;
QString LANG_YES;
QString LANG_NO;
QString LANG_TYPE;
QString LANG_NAME;
QString LANG_PATH;
QString LANG_FOLDER;
QString LANG_FILE;
QString LANG_DIRS;
QString LANG_FILES;
QString LANG_SYMLINK;
QString LANG_UNK;
QString LANG_SIZE;
QString LANG_OWNER;
QString LANG_PERM;
QString LANG_EXIT;
QString LANG_ERROR;
QString LANG_WARNING;
QString LANG_COPYING;
QString LANG_MOVING;
QString LANG_PLEASE_WAIT;
QString LANG_NOT_EXEC;
QString LANG_DELETE_DIR;
QString LANG_DELETE_FILE;
QString LANG_UNABLE_DELETE;
QString LANG_MOVE_SURE;
QString LANG_COPY_EXISTS;
QString LANG_DON_TRY_COPY;
QString LANG_DON_TRY_MOVE;
QString LANG_ERRORMOVE_HALF;
QString LANG_RENAME_ERROR;
QString LANG_RENAME_EXISTS;
QString LANG_ENTER_DIRNAME;
QString LANG_RENAME_DIREXISTS;
QString LANG_EXIT_SURE;

namespace
{

struct TextRow {
    QString* text;
    const char* key;
    const char* fallback;
};

// Spelling included, these are the texts that users know; the key of LANG_RENAME_DIREXISTS has no
// final S.
constexpr TextRow Rows[] = {
    {&LANG_OPEN_WITH, "OPEN_WITH", "Open with.."},
    {&LANG_DELETE, "DELETE", "Delete"},
    {&LANG_COPY_MENU, "COPY_MENU", "Copy menu"},
    {&LANG_RENAME, "RENAME", "Rename"},
    {&LANG_MKDIR, "MKDIR", "Make Dir"},
    {&LANG_BOOKMARK, "BOOKMARK", "Bookmarks"},
    {&LANG_ADD_BOOKMARK, "ADD_BOOKMARK", "Add Bookmark"},
    {&LANG_BT, "BLUETOOTH", "Send by Bluetooth"},
    {&LANG_PROPERTIES, "PROPERTIES", "Properties"},
    {&LANG_COPY, "COPY", "Copy"},
    {&LANG_MOVE, "MOVE", "Move"},
    {&LANG_PASTE, "PASTE", "Paste"},
    {&LANG_PASTE_AS, "PASTE_AS", "Paste as.."},
    {&LANG_OPTIONS, "OPTIONS", "Options"},
    {&LANG_CANCEL, "CANCEL", "Cancel"},
    {&LANG_YES, "YES", "Yes"},
    {&LANG_NO, "NO", "No"},
    {&LANG_TYPE, "TYPE", "Type"},
    {&LANG_NAME, "NAME", "Name"},
    {&LANG_PATH, "PATH", "Path"},
    {&LANG_FOLDER, "FOLDER", "Dir"},
    {&LANG_FILE, "FILE", "File"},
    {&LANG_DIRS, "DIRS", "Dirs"},
    {&LANG_FILES, "FILES", "Files"},
    {&LANG_SYMLINK, "SYMLINK", "Symlink"},
    {&LANG_UNK, "UNK", "Unknown"},
    {&LANG_SIZE, "SIZE", "Size"},
    {&LANG_OWNER, "OWNER", "Owner"},
    {&LANG_PERM, "PERM", "Permissions"},
    {&LANG_EXIT, "EXIT", "Exit"},
    {&LANG_ERROR, "ERROR", "Error"},
    {&LANG_WARNING, "WARNING", "Warning"},
    {&LANG_COPYING, "COPYING", "Copying"},
    {&LANG_MOVING, "MOVING", "Moving"},
    {&LANG_PLEASE_WAIT, "PLEASE_WAIT", "Please wait.."},
    {&LANG_NOT_EXEC, "NOT_EXEC", "File is not executable..or I'v done something wrong.."},
    {&LANG_DELETE_DIR, "DELETE_DIR", "Delete dir?"},
    {&LANG_DELETE_FILE, "DELETE_FILE", "Delete file?"},
    {&LANG_UNABLE_DELETE, "UNABLE_DELETE", "Unable to delete.."},
    {&LANG_MOVE_SURE, "MOVE_SURE", "Move for sure?"},
    {&LANG_COPY_EXISTS, "COPY_EXISTS", "already exists. Change old file?"},
    {&LANG_DON_TRY_COPY, "DON_TRY_COPY",
     "Belive me you don't want to copy a dir in the same dir recursively, couse I'm using "
     "recursive copy.."},
    {&LANG_DON_TRY_MOVE, "DON_TRY_MOVE",
     "Moving a dir in the same dir: is like deleting it. Don't waste time.."},
    {&LANG_ERRORMOVE_HALF, "ERRORMOVE_HALF", "Copyed but not moved.."},
    {&LANG_RENAME_ERROR, "RENAME_ERROR", "Can not rename.."},
    {&LANG_RENAME_EXISTS, "RENAME_EXISTS", "This name already exists."},
    {&LANG_ENTER_DIRNAME, "ENTER_DIRNAME", "Enter Dirname:"},
    {&LANG_RENAME_DIREXISTS, "RENAME_DIREXIST", "A dir with that name already exists.."},
    {&LANG_EXIT_SURE, "EXIT_SURE", "Are you sure want exit Quarn?"},
};

} // namespace

QString languageFile(const QString& workFolder, const QString& language)
{
    return workFolder + QStringLiteral("/lang/") + language + QStringLiteral(".lang");
}

void loadTexts(const QString& file)
{
    const QString group = QStringLiteral("Language");
    qDebug().noquote() << "--- read lang file:" << file;
    const ZConfig config(file, true);
    const QByteArray digits =
        config.readEntry(group, QStringLiteral("VER"), QStringLiteral("")).toLatin1();
    const long version = std::strtol(digits.constData(), nullptr, 10);
    if (version < LanguageVersion) {
        qDebug("WARNING: Version of lang file is %ld - please update it to %d", version,
               LanguageVersion);
    }
    for (const TextRow& row : Rows) {
        *row.text = config.readEntry(group, QString::fromLatin1(row.key),
                                     QString::fromLatin1(row.fallback));
    }
}
