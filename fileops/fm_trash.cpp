// Delete into the trash, and the trash itself, by the module "extras", if the settings say so.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "extras/openextras.h"
#include "lang/texts.h"
#include "platform/zscreen.h"
#include "shell/settings.h"
#include "widgets/errorbox.h"

void FM::deleteToTrash()
{
    FileBrowserFtab* active = activePanel();
    if (active == nullptr)
        return;
    const bool marked = active->isMultiSelect();
    const QStringList entries = marked ? active->getChkFileList() : QStringList{active->curFile};
    const ZScreen::MainInputPause pause;
    ExtrasModule* module = extrasOrError();
    if (module == nullptr)
        return;
    const ExtrasModule::Thrown thrown = module->throwAway(entries);
    if (!thrown.begun)
        return;
    const QStringList left = thrown.left + deleteForGood(module, thrown.forGood);
    for (const Page page : {Panel1, Panel2})
        panel(page)->relistByName(marked ? left : QStringList());
}

/// What is still there then.
QStringList FM::deleteForGood(ExtrasModule* module, const QStringList& entries)
{
    if (extras.safe && !entries.isEmpty())
        return module->run(ExtrasModule::Kind::DeleteForGood, entries, QString()).left;
    QStringList left;
    for (const QString& entry : entries) {
        if (!DeleteFile(entry))
            showError(LANG_UNABLE_DELETE);
        if (isTaken(entry))
            left.append(entry);
    }
    return left;
}

void FM::slot_Trash()
{
    const FileBrowserFtab* active = activePanel();
    const QString folder = active != nullptr ? active->curPath : QString();
    const ZScreen::MainInputPause pause;
    ExtrasModule* module = extrasOrError();
    if (module != nullptr && module->showTrash(folder)) {
        for (const Page page : {Panel1, Panel2})
            panel(page)->relistByName({});
    }
}
