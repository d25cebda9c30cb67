// The size of a folder and the properties of an entry.

#include "shell/fm.h"

#include "files/entry.h"
#include "files/entrytexts.h"
#include "files/linktext.h"
#include "files/paths.h"
#include "files/permissiontext.h"
#include "files/walk.h"
#include "lang/texts.h"
#include "platform/zapplication.h"
#include "platform/zscreen.h"
#include "shell/settings.h"
#include "widgets/kwidget.h"

#include <QElapsedTimer>

namespace
{

const QLatin1String Icon("res/img/props.png");

QString typeText(const EntryInfo& info)
{
    if (info.isLink())
        return LANG_SYMLINK;
    if (info.isFolder())
        return LANG_FOLDER;
    return info.isFile() ? LANG_FILE : LANG_UNK;
}

/// The first section: what it is and where.
QString identityText(const QString& path, const EntryInfo& info)
{
    QString text = QLatin1Char(' ') + LANG_TYPE + QStringLiteral(": ") + typeText(info);
    text += QStringLiteral("\n ") + LANG_NAME + QStringLiteral(": ") + namePart(path);
    text += QStringLiteral("\n ") + LANG_PATH + QStringLiteral(": ") + path;
    if (info.isLink())
        text += QStringLiteral("\n LinkPath: ") + linkText(path);
    return text;
}

/// "1.5 Kb (1536 b)"; up to a kilobyte the exact number would only repeat the first.
QString sizeWithBytes(qint64 bytes, const QString& mark)
{
    constexpr qint64 Kilobyte = 1024;
    QString text = mark + (extras.safe ? wideSizeText(bytes) : sizeText(double(bytes)));
    if (bytes > Kilobyte)
        text += QStringLiteral(" (") + mark + QString::number(bytes) + QStringLiteral(" b)");
    return text;
}

/// Dirs: 3 | Files: 12
QString countsText(qint64 folders, qint64 files, const QString& mark)
{
    return QStringLiteral("\n ") + LANG_DIRS + QStringLiteral(": ") + mark +
           QString::number(folders) + QStringLiteral(" | ") + LANG_FILES + QStringLiteral(": ") +
           mark + QString::number(files);
}

} // namespace

qint32 FM::GetDirSize(const QString& folder)
{
    FolderCount count{dirCount, fileCount, 0};
    const auto publish = [this, &count] {
        dirCount = count.folders;
        fileCount = count.files;
    };
    countFolder(
        folder, count,
        [&publish] {
            publish();
            ZApplication::processEvents();
        },
        [] { return processView->isClosed() || ZApplication::isQuitting(); });
    publish();
    return qint32(count.bytes);
}

QStringList FM::GetFilesInFolder(const QString& folder)
{
    return filesBelow(folder);
}

QString FM::folderSizeText(const QString& path, const QString& textSoFar)
{
    dirCount = -1;
    fileCount = 0;
    processView->init();
    processView->showProcess(LANG_PROPERTIES, textSoFar + QStringLiteral("..."), Qt::AlignLeft,
                             QString(), 0, Icon, kWidget::Message);
    const auto total = quint32(GetDirSize(path));
    const bool cancelled = processView->isClosed();
    processView->init();
    const QString mark = cancelled ? QStringLiteral(">") : QString();
    return sizeWithBytes(total, mark) + countsText(dirCount, fileCount, mark);
}

/// The numbers of all that is in it, however much, instead of those that the phone had.
QString FM::wideFolderSizeText(const QString& path, const QString& textSoFar)
{
    processView->init();
    processView->showProcess(LANG_PROPERTIES, textSoFar + QStringLiteral("..."), Qt::AlignLeft,
                             QString(), 0, Icon, kWidget::Message);
    TreeCount count;
    QElapsedTimer sinceEvents;
    sinceEvents.start();
    countTree(
        path, count,
        [&sinceEvents] {
            constexpr int SliceMilliseconds = 20;
            if (sinceEvents.elapsed() < SliceMilliseconds)
                return;
            ZApplication::processEvents();
            sinceEvents.start();
        },
        [] { return processView->isClosed() || ZApplication::isQuitting(); });
    const bool cancelled = processView->isClosed();
    processView->init();
    const QString mark = cancelled ? QStringLiteral(">") : QString();
    return sizeWithBytes(count.bytes, mark) + countsText(count.folders, count.files, mark);
}

void FM::slot_Properties()
{
    const QString path = getActiveFileName();
    // In a panel the folder above ends a path. Without any entry there is a box all the same.
    if (path == QLatin1String("..") || namePart(path) == QLatin1String(".."))
        return;
    const ZScreen::MainInputPause pause;
    const EntryInfo info(path);
    QString text = identityText(path, info);
    text += QStringLiteral("<hr> ") + LANG_SIZE + QStringLiteral(": ");
    if (extras.safe)
        text += info.isFolder() ? wideFolderSizeText(path, text)
                                : sizeWithBytes(info.size(), QString());
    else
        text += info.isFolder() ? folderSizeText(path, text)
                                : sizeWithBytes(quint32(info.size()), QString());
    text += QStringLiteral("<hr> ") + LANG_OWNER + QStringLiteral(": ") + info.owner();
    text += QStringLiteral("\n ") + LANG_PERM + QStringLiteral(": ") + permissionText(info.mode());
    textView->showText(LANG_PROPERTIES, text, Qt::AlignLeft, Icon, kWidget::Message);
}
