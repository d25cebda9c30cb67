// Copy, move and paste in two steps, through a clipboard of paths.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "files/entry.h"
#include "files/paths.h"
#include "lang/texts.h"
#include "launch/shellcommand.h"
#include "platform/zapplication.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"
#include "shell/settings.h"
#include "shell/util.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"
#include "widgets/menuitems.h"

namespace
{

constexpr int Centred = Qt::AlignHCenter;

bool ask(const QString& title, const QString& text)
{
    return textView->showText(title, text, Centred, QStringLiteral("res/img/warning.png"),
                              kWidget::Question) == 1;
}

bool askToReplace(const QString& name)
{
    return ask(LANG_WARNING, QLatin1Char('"') + name + QStringLiteral("\" ") + LANG_COPY_EXISTS);
}

/// False for the folder of a panel that could list none, and for one that is gone: of an entry that
/// is copied or moved there the tools would make one of that name.
bool isFolder(const QString& path)
{
    return EntryInfo(path).isFolder();
}

/// Whether a path leads to the entry that it led to when a question came up.
bool isStill(const QString& path, const std::optional<EntryId>& asked)
{
    return asked && entryId(path) == asked;
}

} // namespace

void FM::slot_Copy()
{
    armPaste("slot_CopyTo()", "slot_MoveTo()");
}

void FM::slot_Move()
{
    armPaste("slot_MoveTo()", "slot_CopyTo()");
}

void FM::armPaste(const char* slot, const char* otherSlot)
{
    copyMenu->disconnectItem(CopyItem::Paste, this, otherSlot);
    copyMenu->connectItem(CopyItem::Paste, this, slot);
    copyMenu->setItemEnabled(CopyItem::Paste, true);
    clipboardList = getActiveEntries();
}

void FM::slot_CopyTo()
{
    paste(&FM::ChkCopy);
}

void FM::slot_MoveTo()
{
    paste(&FM::ChkMove);
}

void FM::paste(void (FM::*pasteOne)(const QString& src, const QString& dstDir))
{
    if (activePage() == Panel1)
        createSoftKeysFtab();
    else if (activePage() == Panel2)
        createSoftKeysStab();
    const FileBrowserFtab* active = activePanel();
    const QString destination = active != nullptr ? active->curPath : QString();
    copyMenu->setItemEnabled(CopyItem::Paste, false);
    softKey->setOptMenu(ZSoftKey::Left, optionsMenu);
    const ZScreen::MainInputPause pause;
    // The clipboard may change while a question is open.
    const QStringList entries = clipboardList;
    if (extras.safe) {
        pasteSafely(pasteOne == &FM::ChkMove ? ExtrasModule::Kind::Move : ExtrasModule::Kind::Copy,
                    entries, destination);
        return;
    }
    for (const QString& entry : entries) {
        if (!entry.isEmpty())
            (this->*pasteOne)(entry, destination);
    }
}

void FM::relistBoth()
{
    for (const Page page : {Panel1, Panel2})
        relist(panel(page));
}

void FM::ChkCopy(const QString& src, const QString& dstDir)
{
    const QString name = namePart(src);
    const QString target = dstDir + QLatin1Char('/') + name;
    const auto source = entryId(src);
    const auto folder = entryId(dstDir);
    if (src == dstDir || !isFolder(dstDir)) {
        showError(LANG_DON_TRY_COPY);
    } else if (!entryExists(target)) {
        copy(src, dstDir);
    } else if (const auto asked = entryId(target); askToReplace(name)) {
        if (isStill(src, source) && isStill(dstDir, folder) && removeIfStill(target, asked))
            copy(src, dstDir);
        else
            showError(LANG_DON_TRY_COPY);
    }
    relistBoth();
}

/// Deletes what is in the way, unless something else has taken its name since the question. True if
/// the name is free then.
bool FM::removeIfStill(const QString& path, const std::optional<EntryId>& asked)
{
    if (isStill(path, asked))
        DeleteFile(path);
    return !isTaken(path);
}

void FM::ChkMove(const QString& src, const QString& dstDir)
{
    if (src == dstDir) {
        showError(LANG_DON_TRY_MOVE);
    } else {
        const bool refused = !moveAfterQuestions(src, dstDir);
        ZApplication::processEvents();
        // The message of a refusal stays until the user closes it.
        if (!refused)
            textView->init();
    }
    relistBoth();
}

/// False when what is in the way could not be removed or there is nowhere to move to, which a
/// message then says.
bool FM::moveAfterQuestions(const QString& src, const QString& dstDir)
{
    const QString name = namePart(src);
    const QString target = dstDir + QLatin1Char('/') + name;
    const auto source = entryId(src);
    const auto folder = entryId(dstDir);
    if (!ask(LANG_MOVE_SURE, name + QStringLiteral(" to ") + dstDir))
        return true;
    bool possible = isFolder(dstDir) && isStill(dstDir, folder);
    if (possible && entryExists(target)) {
        const auto asked = entryId(target);
        if (!askToReplace(name))
            return true;
        // With nothing to take its place what is in the way stays.
        possible = isStill(src, source) && isStill(dstDir, folder) && removeIfStill(target, asked);
    }
    // What has taken the name of the source meanwhile stays where it is.
    if (!possible || (isTaken(src) && entryId(src) != source)) {
        showError(LANG_DON_TRY_MOVE);
        return false;
    }
    moveByTool(src, dstDir);
    return true;
}

void FM::moveByTool(const QString& src, const QString& dstDir)
{
    ZApplication::processEvents();
    if (u->fExist(programDir + QStringLiteral("/bin/sys_gui"))) {
        runShell(joined({shellBytes(programDir), "bin/sys_gui mv ", quotedForShell(src), " ",
                         quotedForShell(dstDir), " \"Moving\" \"Please wait..\" ",
                         quotedForShell(work_folder + QStringLiteral("res/img/copy.png"))}));
        return;
    }
    textView->showText(LANG_MOVING, LANG_PLEASE_WAIT, Centred, QStringLiteral("res/img/copy.png"),
                       kWidget::Plain);
    textView->paintNow();
    ZApplication::processEvents();
    runShell(joined({"mv ", quotedForShell(src), " ", quotedForShell(dstDir)}));
}
