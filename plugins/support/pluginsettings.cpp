#include "plugins/support/pluginsettings.h"

#include "platform/zconfig.h"

PluginSettings readPluginSettings(const QString& file)
{
    const ZConfig config(file, true);
    PluginSettings settings;
    settings.language =
        config.readEntry(QStringLiteral("Setting"), QStringLiteral("Language"), QString());
    // The file manager says what is wrong with another value.
    const auto isOn = [&config](const char* key) {
        return config.readEntry(QStringLiteral("Extras"), QString::fromLatin1(key), QString())
                   .toInt() == 1;
    };
    settings.theme = isOn("Theme") ? 1 : 0;
    settings.motion = isOn("Motion");
    return settings;
}
