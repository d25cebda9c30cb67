// The main window's tables and what it asks of them.

#include "shell/fm.h"

#include "assoc/bookmarkfile.h"
#include "assoc/mimetable.h"
#include "assoc/plugintable.h"
#include "browser/filebrowserftab.h"
#include "launch/shellcommand.h"
#include "platform/zoptionsmenu.h"
#include "shell/settings.h"
#include "shell/util.h"

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
    const Bookmarks bookmarks = readBookmarks(work_folder + QStringLiteral("/bookmark.cfg"));
    bookmarkList = bookmarks.names;
    bookmarkPaths = bookmarks.paths;
}

QString FM::getMime(const QString& path)
{
    return mimeOf(path);
}

QString FM::ExecFormat(const QString& path)
{
    return quotedForShell(path);
}

bool FM::searchPlugin(const QString& name)
{
    return u->fExist(pluginExecutable(work_folder, name));
}

void FM::slot_BookMark()
{
    FileBrowserFtab* active = activePanel();
    if (active != nullptr)
        active->setDir(bookmarkPaths.value(bookmarkMenu->getActiveItemId()), 0);
}
