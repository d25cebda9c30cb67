#pragma once

#include "platform/zapplication.h"
#include "plugins/support/pluginsettings.h"

#include <QString>

class PluginWindow;

/// A plugin's application object. The file manager starts a plugin as "NAME -d FILE"; from a
/// shell "NAME FILE" does too.
///
/// The work folder is found from the path that the executable was started by, if there is a work
/// folder above it, and else from where the executable lies (<work folder>/plugins/NAME/NAME). Its
/// font, key map, language and theme serve the plugin as they serve the file manager.
class PluginApp : public ZApplication
{
    Q_OBJECT

public:
    /// `title` names the program to the user and to the window system. `workFolder`, which ends
    /// with "/", is for a program that lies elsewhere.
    PluginApp(int argc, char** argv, const QString& title, const QString& workFolder = {});

    /// The path that a plugin started with these arguments is to open; empty if there is none.
    static QString fileOf(int argc, char** argv);

    /// The path that the plugin is to open; empty if none was given.
    const QString& file() const { return file_; }
    /// Ends with "/".
    const QString& workFolder() const { return workFolder_; }
    /// Those of the work folder.
    const PluginSettings& settings() const { return settings_; }

    /// Shows the window and runs until it is ended or closed. Returns the exit status.
    int run(PluginWindow& window);

private:
    QString file_;
    QString workFolder_;
    PluginSettings settings_;
};
