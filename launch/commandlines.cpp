#include "launch/commandlines.h"

#include "launch/shellcommand.h"

namespace
{

const QLatin1String Player("LyraPlayer");

/// Folder and executable have the same name.
QString executable(const QString& workFolder, const QString& name)
{
    return shellBytes(workFolder + QStringLiteral("/plugins/") + name + QLatin1Char('/') + name);
}

QString musicBelow(const QString& folder)
{
    return QStringLiteral("find ") + quotedForShell(folder) +
           QStringLiteral(" -type f -name *.mp3 -print | sort");
}

} // namespace

QString CommandLine::pluginOfFolder(const QString& workFolder, const QString& name,
                                    const QString& file)
{
    return executable(workFolder, name) + QStringLiteral(" -d ") + quotedForShell(file) +
           QLatin1Char('&');
}

QString CommandLine::pluginOfPath(const QString& command, const QString& file)
{
    return shellBytes(command) + QLatin1Char(' ') + quotedForShell(file) + QLatin1Char('&');
}

QString CommandLine::playlist(const QString& workFolder)
{
    return workFolder + QStringLiteral("/plugins/LyraPlayer/TempList.m3u");
}

QString CommandLine::playFile(const QString& workFolder, const QString& file)
{
    return pluginOfFolder(workFolder, Player, file);
}

QString CommandLine::playList(const QString& workFolder)
{
    return executable(workFolder, Player) + QStringLiteral(" -d ") +
           shellBytes(playlist(workFolder)) + QStringLiteral(" &");
}

QString CommandLine::listFolder(const QString& workFolder, const QString& folder)
{
    return musicBelow(folder) + QStringLiteral(" > ") + shellBytes(playlist(workFolder));
}

QString CommandLine::addFolder(const QString& workFolder, const QString& folder)
{
    return musicBelow(folder) + QStringLiteral(" >> ") + shellBytes(playlist(workFolder));
}

QString CommandLine::addFile(const QString& workFolder, const QString& file)
{
    return QStringLiteral("echo ") + quotedForShell(file) + QStringLiteral(" >> ") +
           shellBytes(playlist(workFolder));
}
