// The copy engine of the main window: by the shell, or block by block with a percentage.

#include "shell/fm.h"

#include "files/copyfile.h"
#include "files/entry.h"
#include "files/entrytexts.h"
#include "files/paths.h"
#include "files/walk.h"
#include "lang/texts.h"
#include "launch/shellcommand.h"
#include "platform/zapplication.h"
#include "platform/zscreen.h"
#include "widgets/kwidget.h"

namespace
{

void showCopyBox(const QString& text, int mode)
{
    textView->showText(LANG_COPYING, text, Qt::AlignHCenter, QStringLiteral("res/img/copy.png"),
                       mode);
}

/// A file whose folder is missing gets it, with those above it that hold no files of their own.
/// Only below `top`: if that could not be made, or is gone, nothing is made in its place.
void makeFolderOf(const QString& path, const QString& top)
{
    if (entryExists(folderPart(path)))
        return;
    for (qsizetype end = path.indexOf(QLatin1Char('/'), top.size()); end >= 0;
         end = path.indexOf(QLatin1Char('/'), end + 1)) {
        const QString folder = path.left(end);
        if (!entryExists(folder) && (folder == top || !makeFolder(folder)))
            return;
    }
}

/// Copies one plain file and shows how far it is. The box stays up.
bool copyShown(const QString& src, const QString& dst)
{
    const EntryInfo info(src);
    if (!info.isFile())
        return true;
    const auto total = quint32(info.size());
    const QString totalText = sizeText(qint32(total));
    const QString head = QStringLiteral("%1\nto\n%2").arg(src, dst);
    const auto show = [&head, &totalText](int percent, quint32 done) {
        showCopyBox(head + QStringLiteral("<hr>Completed: %1% (%2/%3)")
                               .arg(QString::number(percent), sizeText(done), totalText),
                    kWidget::Plain);
        // A block may take less time than the box's timer.
        textView->paintNow();
    };
    show(0, 0);
    return copyFileBlocks(
        src, dst, [&show, total](quint32 done) { show(copiedPercent(done, total), done); },
        [] { ZApplication::processEvents(); });
}

} // namespace

QString FM::countSize(double bytes)
{
    return sizeText(bytes);
}

void FM::copy(const QString& src, const QString& dstDir)
{
    const ZScreen::MainInputPause pause;
    if (modKeyHeld && !dstDir.isEmpty())
        copyBuiltIn(src, dstDir + QLatin1Char('/'));
    else
        copyByShell(src, dstDir);
}

void FM::copyByShell(const QString& src, const QString& dstDir)
{
    showCopyBox(LANG_PLEASE_WAIT, kWidget::Plain);
    textView->paintNow();
    ZApplication::processEvents();
    runShell(joined({"cp -R ", quotedForShell(src), " ", quotedForShell(dstDir)}));
    // What was typed meanwhile is for the box, which swallows it, not for what is below.
    ZApplication::processEvents();
    textView->init();
}

/// `dstDir` ends with "/", and what is made from it has the separator twice.
void FM::copyBuiltIn(const QString& src, const QString& dstDir)
{
    const QString target = dstDir + QLatin1Char('/') + namePart(src);
    const EntryInfo info(src);
    qint32 size = 0;
    if (info.isFolder()) {
        if (!entryExists(target))
            makeFolder(target);
        size = GetDirSize(src);
        if (size >= 0)
            copyTree(src, dstDir);
    } else if (info.isFile()) {
        size = qint32(quint32(info.size()));
    }
    if (size < 0)
        showCopyBox(QStringLiteral("IDS_ERROR_NON_FREE_SPACE"), kWidget::Message);
    else if (!CopyFile(src, target) && textView->isUp())
        // No one else takes the box away that tells how far the copy got.
        showCopyBox(textView->shownText(), kWidget::Message);
}

void FM::copyTree(const QString& src, const QString& dstDir)
{
    const QStringList files = filesBelow(src);
    if (files.isEmpty()) {
        copyByShell(src, dstDir);
        return;
    }
    const qsizetype parentLength = folderPart(src).size();
    const QString target = dstDir + namePart(src);
    for (const QString& file : files) {
        const QString destination = dstDir + file.mid(parentLength);
        makeFolderOf(destination, target);
        // One box for the whole tree: taken away after each file it would flicker.
        copyShown(file, destination);
    }
}

bool FM::CopyFile(const QString& src, const QString& dst)
{
    const bool copied = copyShown(src, dst);
    if (copied)
        textView->init();
    return copied;
}
