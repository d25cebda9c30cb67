#include "assoc/plugintable.h"

#include "assoc/tablefile.h"
#include "files/entry.h"
#include "files/regularfile.h"
#include "files/textlines.h"

std::vector<plugin_struct> plugins;
int plug_nums = 0;

plugin_struct parsePluginLine(const QString& line)
{
    return {line.mid(5, 100), columnNumber(line, 0, 2), columnNumber(line, 3, 1)};
}

void loadPlugins(const QString& file)
{
    for (const QString& line : readTableLines(file)) {
        const plugin_struct plugin = parsePluginLine(line);
        // A command line without a command would run the file that is to be opened.
        if (QStringView(plugin.name).trimmed().isEmpty())
            continue;
        plugins.push_back(plugin);
        ++plug_nums;
    }
}

QString pluginExecutable(const QString& workFolder, const QString& name)
{
    return workFolder + QStringLiteral("/plugins/") + name + QLatin1Char('/') + name;
}

bool pluginIsInstalled(const QString& workFolder, const QString& name)
{
    return entryExists(pluginExecutable(workFolder, name));
}

QString fullPathPluginFolder(const QString& workFolder, int pluginNumber)
{
    return workFolder + QStringLiteral("/plugins/full_path/") + QString::number(pluginNumber) +
           QLatin1Char('/');
}

QString pluginLabel(const QString& workFolder, const plugin_struct& plugin)
{
    if (plugin.kind == 0)
        return plugin.name;
    const QString file =
        fullPathPluginFolder(workFolder, plugin.plugin_num) + QStringLiteral("desktop.ini");
    const auto bytes = readRegular(file, MaxTableLine);
    return bytes ? TextLines(*bytes).next() : QStringLiteral("Unknown");
}
