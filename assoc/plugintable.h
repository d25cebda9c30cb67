#pragma once

#include <QString>

#include <vector>

/// One program that files can be opened with.
struct plugin_struct {
    QString name; ///< kind 0: folder and executable in the plugins folder; kind 1: the command
    int plugin_num = 0;
    int kind = 0; ///< 0 plugin of ours, 1 program given by its path; others are never shown
};

/// The table in file order, filled once at start, and its size.
extern std::vector<plugin_struct> plugins;
extern int plug_nums;

/// One line of the file: columns 0-1 the plugin number, 3 the kind, 5-104 the name. What a short
/// line lacks is 0 or empty.
plugin_struct parsePluginLine(const QString& line);

/// Appends the lines of a file to the table. Lines whose name is missing or blank are skipped; a
/// file that is missing or unreadable adds nothing.
void loadPlugins(const QString& file);

/// Where the executable of a kind-0 plugin lies.
QString pluginExecutable(const QString& workFolder, const QString& name);
/// Whether it lies there now.
bool pluginIsInstalled(const QString& workFolder, const QString& name);
/// The folder with icon and label of a kind-1 plugin, with a "/" at its end.
QString fullPathPluginFolder(const QString& workFolder, int pluginNumber);
/// The menu label of a plugin: its name, or for kind 1 the first line of "desktop.ini" in its
/// folder, "Unknown" if that cannot be read.
QString pluginLabel(const QString& workFolder, const plugin_struct& plugin);
