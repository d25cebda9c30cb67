// The delete command of the main window.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "launch/shellcommand.h"
#include "platform/zscreen.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"

#include <QFileInfo>

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
    const ZScreen::MainInputPause pause;
    const QStringList entries = getActiveEntries();
    for (const QString& entry : entries) {
        if (entry.isEmpty())
            return;
        const QFileInfo info(entry);
        // What is neither, a link that leads nowhere for one, is passed over.
        if (!info.isDir() && !info.isFile())
            continue;
        if (!confirm(info.isDir() ? LANG_DELETE_DIR : LANG_DELETE_FILE, entry))
            continue;
        if (!DeleteFile(entry))
            showError(LANG_UNABLE_DELETE);
        else if (FileBrowserFtab* active = activePanel())
            relist(active);
    }
}

bool FM::DeleteFile(const QString& path)
{
    if (QFileInfo(path).isFile()) {
        if (!QFile::exists(path))
            return false;
        QFile::remove(path);
    } else {
        if (!QFile::exists(path))
            return false;
        runShell(QStringLiteral("rm -f -r ") + ExecFormat(path));
    }
    if (QFile::exists(path))
        showError(LANG_UNABLE_DELETE);
    return true;
}
