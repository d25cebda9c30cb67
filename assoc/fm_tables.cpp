// The main window's tables and what it asks of them.

#include "shell/fm.h"

#include "assoc/bookmarkfile.h"
#include "assoc/mimetable.h"
#include "assoc/plugintable.h"
#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "launch/shellcommand.h"
#include "platform/zoptionsmenu.h"
#include "platform/zpicture.h"
#include "shell/settings.h"
#include "widgets/textinput.h"

namespace
{

QString bookmarkFile()
{
    return work_folder + QStringLiteral("/bookmark.cfg");
}

} // namespace

void FM::MimeConfig()
{
    loadMimes(work_folder + QStringLiteral("/mime_types.cfg"));
}

void FM::PluginConfig()
{
    loadPlugins(work_folder + QStringLiteral("/fm_plugins.cfg"));
}

void FM::BookmarkConfig()
{
    const Bookmarks bookmarks = readBookmarks(bookmarkFile());
    bookmarkList = bookmarks.names;
    bookmarkPaths = bookmarks.paths;
}

QString FM::getMime(const QString& path)
{
    return mimeOf(path);
}

QString FM::ExecFormat(const QString& path)
{
    // A path that cannot be has no form either.
    return QString::fromLatin1(quotedForShell(path).value_or(QByteArray()));
}

bool FM::searchPlugin(const QString& name)
{
    return pluginIsInstalled(work_folder, name);
}

void FM::slot_BookMark()
{
    FileBrowserFtab* active = activePanel();
    if (active != nullptr)
        active->setDir(bookmarkPaths.value(bookmarkMenu->getActiveItemId()), 0);
}

void FM::slot_AddBookMark()
{
    textInput->inputText = QString();
    if (textInput->showText(LANG_BOOKMARK, LANG_ADD_BOOKMARK + QLatin1Char(':'),
                            QStringLiteral("res/img/bookmark.png")) == 0)
        return;
    QString name = textInput->inputText;
    if (name.isEmpty() || name.startsWith(QLatin1Char(' ')))
        name = QStringLiteral("BookMark");
    const FileBrowserFtab* active = activePanel();
    const QString folder = active != nullptr ? active->curPath : QString();
    // One that cannot be kept lives until the program ends.
    appendBookmark(bookmarkFile(), name, folder);
    bookmarkList.append(name);
    bookmarkPaths.append(folder);
    growBookmarkMenu();
}

/// Turns the item that adds bookmarks into the new bookmark, and adds it anew below.
void FM::growBookmarkMenu()
{
    const int chosen = bookmarkMenu->getActiveItemId();
    bookmarkMenu->changeItem(chosen, bookmarkList.value(chosen), QPixmap());
    bookmarkMenu->disconnectItem(chosen, this, "slot_AddBookMark()");
    bookmarkMenu->connectItem(chosen, this, "slot_BookMark()");
    insertAddBookmark(chosen + 1,
                      ZPicture::fromFile(work_folder + QStringLiteral("res/img/add.png")));
}
