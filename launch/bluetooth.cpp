// Sending a file by Bluetooth, which the sharing service does.

#include "shell/fm.h"

#include "sharing/share_tool.h"
#include "widgets/errorbox.h"

#include <QFileInfo>

void FM::slot_SendBt()
{
    const QString path = getActiveFileName();
    if (!QFileInfo(path).isFile()) {
        showError(QStringLiteral("Error can't send ") + path);
        return;
    }
    // From the last "/" on, which is part of the name; without one the whole path.
    const QString name = path.mid(qMax(path.lastIndexOf(QLatin1Char('/')), qsizetype(0)));
    const SHARE_Tool::OBJECT_INFO info = {name, QStringLiteral("media/") + getMime(path)};
    if (!SHARE_Tool::shareByBt(info, path, false))
        showError(QStringLiteral("Error send file ") + path);
}
