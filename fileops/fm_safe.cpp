// Copy, move and delete by the module "extras", if the settings say so.

#include "shell/fm.h"

#include "browser/filebrowserftab.h"
#include "extras/openextras.h"
#include "files/paths.h"
#include "lang/texts.h"
#include "platform/zscreen.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"

#include <algorithm>
#include <utility>

namespace
{

/// The folder above is no entry of a folder.
QStringList withoutBackEntry(QStringList entries)
{
    entries.removeIf([](const QString& entry) { return namePart(entry) == QLatin1String(".."); });
    return entries;
}

/// Moving is asked about first. One entry is named.
bool confirmMove(const QStringList& entries, const QString& folder)
{
    const QString what = entries.size() == 1 ? namePart(entries.first())
                                             : withNumber(LANG_TO_MOVE, int(entries.size()));
    const QString text =
        what + (entries.size() == 1 ? QStringLiteral(" to ") : QStringLiteral("\n")) + folder;
    return textView->showText(LANG_MOVE_SURE, text, Qt::AlignHCenter,
                              QStringLiteral("res/img/warning.png"), kWidget::Question) == 1;
}

} // namespace

/// Without it nothing is done in another way: the user who set it relies on it.
ExtrasModule* FM::extrasOrError()
{
    ExtrasModule* module = openExtras();
    if (module == nullptr)
        showError(extrasNeedRestart() ? LANG_UPGRADED : LANG_NO_EXTRAS);
    else
        hearOf(*module);
    return module;
}

void FM::hearOf(ExtrasModule& module)
{
    module.setReceiver(this, [this](const QStringList& folders) { changedLate(folders); });
    connect(ZScreen::instance(), &ZScreen::softKeysChanged, this, &FM::relistChanged,
            Qt::ConnectionType(Qt::QueuedConnection | Qt::UniqueConnection));
}

/// What the user has cancelled long since has come to its end.
void FM::changedLate(const QStringList& folders)
{
    changedFolders_ += folders;
    relistChanged();
}

/// Not under a question that was asked about the highlighted entry.
void FM::relistChanged()
{
    if (changedFolders_.isEmpty() || !ZScreen::instance()->takesInput(this))
        return;
    const QStringList folders = std::exchange(changedFolders_, {});
    for (const Page page : {Panel1, Panel2}) {
        FileBrowserFtab* shown = panel(page);
        const auto isShown = [shown](const QString& folder) {
            return (shown->curPath + QLatin1Char('/'))
                .startsWith(folder == QLatin1String("/") ? folder : folder + QLatin1Char('/'));
        };
        if (std::any_of(folders.begin(), folders.end(), isShown))
            shown->relistByName({});
    }
}

void FM::deleteSafely()
{
    FileBrowserFtab* active = activePanel();
    if (active == nullptr)
        return;
    const bool marked = active->isMultiSelect();
    runSafely(ExtrasModule::Kind::Delete,
              marked ? active->getChkFileList() : QStringList{active->curFile}, QString(), marked);
}

void FM::pasteSafely(ExtrasModule::Kind kind, const QStringList& entries, const QString& folder)
{
    const QStringList sources = withoutBackEntry(entries);
    if (folder.isEmpty() || sources.isEmpty())
        return;
    if (kind == ExtrasModule::Kind::Move && !confirmMove(sources, folder))
        return;
    runSafely(kind, sources, folder, sources.size() > 1);
}

/// What is left of entries that were marked is marked then, where its folder is listed.
void FM::runSafely(ExtrasModule::Kind kind, const QStringList& entries, const QString& folder,
                   bool wereMarked)
{
    const ZScreen::MainInputPause pause;
    ExtrasModule* module = extrasOrError();
    if (module == nullptr)
        return;
    const ExtrasModule::Outcome outcome = module->run(kind, entries, folder);
    if (!outcome.begun)
        return;
    for (const Page page : {Panel1, Panel2})
        panel(page)->relistByName(wereMarked ? outcome.left : QStringList());
}

void FM::offerUnfinished()
{
    const ZScreen::MainInputPause pause;
    ExtrasModule* module = openExtras();
    if (module == nullptr)
        return;
    hearOf(*module);
    if (!module->offerUnfinished())
        return;
    for (const Page page : {Panel1, Panel2})
        panel(page)->relistByName({});
}
