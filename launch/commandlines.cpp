#include "launch/commandlines.h"

#include "assoc/plugintable.h"
#include "files/programnames.h"

#include <optional>

namespace
{

const QLatin1String Player(ProgramNames::Player);

ShellBytes executable(const QString& workFolder, const QString& name)
{
    return shellBytes(pluginExecutable(workFolder, name));
}

ShellBytes musicBelow(const QString& folder)
{
    return joined({"find ", quotedForShell(folder), " -type f -name *.mp3 -print | sort"});
}

} // namespace

ShellBytes CommandLine::pluginOfFolder(const QString& workFolder, const QString& name,
                                       const QString& file)
{
    return joined({executable(workFolder, name), " -d ", quotedForShell(file), "&"});
}

ShellBytes CommandLine::pluginOfPath(const QString& command, const QString& file)
{
    return joined({shellBytes(command), " ", quotedForShell(file), "&"});
}

QString CommandLine::playlist(const QString& workFolder)
{
    return workFolder + QStringLiteral("/plugins/LyraPlayer/TempList.m3u");
}

ShellBytes CommandLine::playFile(const QString& workFolder, const QString& file)
{
    return pluginOfFolder(workFolder, Player, file);
}

ShellBytes CommandLine::playList(const QString& workFolder)
{
    return joined({executable(workFolder, Player), " -d ", shellBytes(playlist(workFolder)), " &"});
}

ShellBytes CommandLine::listFolder(const QString& workFolder, const QString& folder)
{
    return joined({musicBelow(folder), " > ", shellBytes(playlist(workFolder))});
}

ShellBytes CommandLine::addFolder(const QString& workFolder, const QString& folder)
{
    return joined({musicBelow(folder), " >> ", shellBytes(playlist(workFolder))});
}

ShellBytes CommandLine::addFile(const QString& workFolder, const QString& file)
{
    // Some shells' echo reads backslashes, which would name another file.
    if (!file.isValidUtf16() && file.contains(QLatin1Char('\\')))
        return std::nullopt;
    return joined({"echo ", quotedForShell(file), " >> ", shellBytes(playlist(workFolder))});
}
