// The delete command of the main window.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "files/entry.h"
#include "lang/texts.h"
#include "launch/shellcommand.h"
#include "platform/zscreen.h"
#include "shell/settings.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"

namespace
{

bool confirm(const QString& title, const QString& path)
{
    return textView->showText(title, path, Qt::AlignHCenter, QStringLiteral("res/img/delete.png"),
                              kWidget::Question) == 1;
}

} // namespace

void FM::slot_Delete()
{
    if (extras.trash) {
        deleteToTrash();
        return;
    }
    if (extras.safe) {
        deleteSafely();
        return;
    }
    const ZScreen::MainInputPause pause;
    const QStringList entries = getActiveEntries();
    for (const QString& entry : entries) {
        if (entry.isEmpty())
            return;
        const EntryInfo info(entry);
        // What is neither, a link that leads nowhere for one, is passed over.
        if (!info.isFolder() && !info.isFile())
            continue;
        const auto asked = entryId(entry);
        if (!confirm(info.isFolder() ? LANG_DELETE_DIR : LANG_DELETE_FILE, entry))
            continue;
        // What has taken its name while the question was open is not what was meant.
        if (entryId(entry) != asked || !DeleteFile(entry))
            showError(LANG_UNABLE_DELETE);
        else if (FileBrowserFtab* active = activePanel())
            relist(active);
    }
}

bool FM::DeleteFile(const QString& path)
{
    const EntryInfo info(path);
    if (!info.exists())
        return false;
    if (info.isFile())
        removeFile(path);
    else
        runShell(joined({"rm -f -r ", quotedForShell(path)}));
    if (entryExists(path))
        showError(LANG_UNABLE_DELETE);
    return true;
}
