#pragma once

#include <QString>

/// What the plugins take from the file manager's settings.
struct PluginSettings {
    QString language;    ///< a file of lang/ without its ".lang"
    int theme = 0;       ///< 0 light, 1 dark
    bool motion = false; ///< long names glide
};

/// Reads a settings file. What it does not give, and a theme that there is not, is as above.
PluginSettings readPluginSettings(const QString& file);
