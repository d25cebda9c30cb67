#pragma once

#include "launch/shellcommand.h"

/// The command lines with which other programs are started, as runShell() takes them. Paths come as
/// they are; a work folder ends with "/". Only the file or folder that a command works on is
/// quoted.
namespace CommandLine
{

/// Opens a file with a plugin of the plugins folder, in the background.
ShellBytes pluginOfFolder(const QString& workFolder, const QString& name, const QString& file);
/// Opens a file with a command that is given whole, arguments of its own included, in the
/// background.
ShellBytes pluginOfPath(const QString& command, const QString& file);

/// The list that the music player is started on.
QString playlist(const QString& workFolder);
/// Starts the music player on one file, or on the list; in the background.
ShellBytes playFile(const QString& workFolder, const QString& file);
ShellBytes playList(const QString& workFolder);
/// Makes the list the music of one folder and what is below it, or adds that to the list.
ShellBytes listFolder(const QString& workFolder, const QString& folder);
ShellBytes addFolder(const QString& workFolder, const QString& folder);
/// Adds one line, a file, to the list.
ShellBytes addFile(const QString& workFolder, const QString& file);

} // namespace CommandLine
