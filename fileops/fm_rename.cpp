// Renaming an entry and making a folder.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "files/entry.h"
#include "files/paths.h"
#include "lang/texts.h"
#include "widgets/errorbox.h"
#include "widgets/textinput.h"

void FM::slot_Rename()
{
    FileBrowserFtab* active = activePanel();
    if (active == nullptr || active->curFile.isEmpty())
        return;
    const QString old = active->curFile;
    const QString name = namePart(old);
    const QString folder = folderPart(old);
    const auto asked = entryId(old);
    textInput->inputText = name;
    const QString prompt = LANG_RENAME + QStringLiteral(" \"") + name + QStringLiteral("\":");
    if (textInput->showText(LANG_RENAME, prompt, QStringLiteral("res/img/rename.png")) == 0)
        return;
    const QString renamed = folder + textInput->inputText;
    if (isTaken(renamed)) {
        showError(LANG_RENAME_EXISTS);
    } else if (entryId(old) != asked || !renameEntry(old, renamed)) {
        showError(LANG_RENAME_ERROR);
    } else {
        active->setDir(folder, active->curIndex);
        relist(active == panel(Panel1) ? panel(Panel2) : panel(Panel1));
    }
}

void FM::slot_MkDir()
{
    FileBrowserFtab* active = activePanel();
    const QString folder = active != nullptr ? active->curPath : QString();
    textInput->inputText = QString();
    if (textInput->showText(LANG_MKDIR, LANG_ENTER_DIRNAME, QStringLiteral("res/img/mkdir.png")) ==
        0)
        return;
    const QString name = textInput->inputText;
    if (name.isEmpty())
        return;
    if (active != nullptr && FileBrowserFtab::makedir(folder, name))
        active->setDir(folder, active->curIndex);
    else
        showError(LANG_RENAME_DIREXISTS);
}
