// Renaming an entry and making a folder.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "widgets/errorbox.h"
#include "widgets/textinput.h"

#include <QFile>

#include <cstdio>
#include <sys/stat.h>

namespace
{

/// Whether there is anything of that path, a link that leads nowhere included.
bool isTaken(const QString& path)
{
    struct stat info = {};
    return lstat(QFile::encodeName(path).constData(), &info) == 0;
}

/// By the system's call: the toolkit would copy what the file system refuses to rename, through
/// links and from pipes too, and would not touch a link that leads nowhere.
bool renameEntry(const QString& from, const QString& to)
{
    // A zero, which only the clipboard can give, would end the path.
    return !to.contains(QChar(u'\0')) &&
           std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

} // namespace

void FM::slot_Rename()
{
    FileBrowserFtab* active = activePanel();
    if (active == nullptr || active->curFile.isEmpty())
        return;
    const QString old = active->curFile;
    const QString name = getFileName(old);
    const QString folder = getFilePath(old);
    textInput->inputText = name;
    const QString prompt = LANG_RENAME + QStringLiteral(" \"") + name + QStringLiteral("\":");
    if (textInput->showText(LANG_RENAME, prompt, QStringLiteral("res/img/rename.png")) == 0)
        return;
    const QString renamed = folder + textInput->inputText;
    if (isTaken(renamed)) {
        showError(LANG_RENAME_EXISTS);
    } else if (!renameEntry(old, renamed)) {
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
