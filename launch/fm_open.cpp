// Opening files: with the plugins that their extension names, or with a chosen one.

#include "shell/fm.h"

#include "assoc/mimetable.h"
#include "assoc/plugintable.h"
#include "files/entry.h"
#include "launch/busynotice.h"
#include "launch/commandlines.h"
#include "launch/pluginstart.h"
#include "platform/zoptionsmenu.h"
#include "shell/settings.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"

namespace
{

// Ticks of the busy box after the plugin was started.
constexpr int LingerTicks = 25;

void showNotExecutable(const QString& path)
{
    showError(path + QStringLiteral(" not executable"));
}

/// Starts every plugin of a number in both ways; normally only one of the two names a program that
/// exists.
void startPluginsOf(int number, const QString& path)
{
    for (const plugin_struct& plugin : plugins) {
        if (plugin.plugin_num != number)
            continue;
        startPlugin(CommandLine::pluginOfFolder(work_folder, plugin.name, path));
        startPlugin(CommandLine::pluginOfPath(plugin.name, path));
    }
}

/// Whether the extension is known at all, be it that no plugin has the number it leads to.
bool openByExtension(const QString& path)
{
    const QString extension = mimeOf(path);
    bool known = false;
    for (const mime_struct& mime : mimes) {
        if (mime.ext != extension)
            continue;
        known = true;
        startPluginsOf(mime.plugin_num, path);
    }
    return known;
}

void openWith(int position, const QString& path)
{
    if (position < 0 || position >= plug_nums) {
        showError(QStringLiteral("Can not find plugin %1").arg(position + 1));
        return;
    }
    const plugin_struct& plugin = plugins[size_t(position)];
    if (plugin.kind == 0 && !pluginIsInstalled(work_folder, plugin.name))
        showError(QStringLiteral("Can not find ") + plugin.name);
    else if (plugin.kind == 0)
        startPlugin(CommandLine::pluginOfFolder(work_folder, plugin.name, path));
    else if (plugin.kind == 1)
        startPlugin(CommandLine::pluginOfPath(plugin.name, path));
}

} // namespace

void FM::slot_ClickFile(bool picked)
{
    if (!picked)
        return;
    showBusy();
    const QString path = getActiveFileName();
    if (!EntryInfo(path).isFile()) {
        processView->init();
        showNotExecutable(path);
    } else if (!openByExtension(path)) {
        processView->init();
        showError(QStringLiteral("Don`t known how to open ") + path);
    }
    processView->stop(LingerTicks);
}

void FM::slot_OpenWith()
{
    modKeyHeld = false;
    showBusy();
    const int position = pendingPlugin != 0 ? pendingPlugin - 1 : openWithMenu->getActiveItemId();
    pendingPlugin = 0;
    const QString path = getActiveFileName();
    if (EntryInfo(path).isFile())
        openWith(position, path);
    else
        showNotExecutable(path);
    processView->stop(LingerTicks);
}
