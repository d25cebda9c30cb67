#include "plugins/support/pluginsettings.h"

#include "platform/zconfig.h"

PluginSettings readPluginSettings(const QString& file)
{
    const ZConfig config(file, true);
    PluginSettings settings;
    settings.language =
        config.readEntry(QStringLiteral("Setting"), QStringLiteral("Language"), QString());
    // The file manager says what is wrong with another one.
    if (config.readEntry(QStringLiteral("Extras"), QStringLiteral("Theme"), QString()) ==
        QLatin1String("1"))
        settings.theme = 1;
    return settings;
}
