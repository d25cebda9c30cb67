// Sending a file by Bluetooth, which the sharing service does.

#include "shell/fm.h"

#include "assoc/mimetable.h"
#include "files/entry.h"
#include "lang/texts.h"
#include "sharing/share_tool.h"
#include "widgets/errorbox.h"

void FM::slot_SendBt()
{
    const QString path = getActiveFileName();
    if (!EntryInfo(path).isFile()) {
        showError(QStringLiteral("Error can't send ") + path);
        return;
    }
    // From the last "/" on, which is part of the name; without one the whole path.
    const QString name = path.mid(qMax(path.lastIndexOf(QLatin1Char('/')), qsizetype(0)));
    const SHARE_Tool::OBJECT_INFO info = {name, QStringLiteral("media/") + mimeOf(path)};
    // The service takes texts; a name that is none would become another one on the way.
    if (path.isValidUtf16() && SHARE_Tool::shareByBt(info, path, false))
        return;
    showError(SHARE_Tool::needsRestart() ? LANG_UPGRADED
                                         : QStringLiteral("Error send file ") + path);
}
