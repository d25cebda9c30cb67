// Delete into the trash, and the trash itself, by the module "extras", if the settings say so.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "extras/openextras.h"
#include "platform/zscreen.h"

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
    const ExtrasModule::Outcome outcome = module->throwAway(entries);
    if (!outcome.begun)
        return;
    for (const Page page : {Panel1, Panel2})
        panel(page)->relistByName(marked ? outcome.left : QStringList());
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
