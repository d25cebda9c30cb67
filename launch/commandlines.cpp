#include "launch/commandlines.h"

#include "assoc/plugintable.h"
#include "files/programnames.h"
#include "shell/settings.h"

#include <optional>

namespace
{

const QLatin1String Player(ProgramNames::Player);

/// A path of the program's own, quoted only if nothing in any path is to mean anything.
ShellBytes ownPath(const QString& path)
{
    return extras.safe ? quotedForShell(path) : shellBytes(path);
}

ShellBytes executable(const QString& workFolder, const QString& name)
{
    return ownPath(pluginExecutable(workFolder, name));
}

/// A list has a line for each file, so with exact names those with a line break cannot be in it.
ShellBytes musicBelow(const QString& folder)
{
    return joined({"find ", quotedForShell(folder), " -type f -name ",
                   extras.safe ? "'*.mp3' ! -path '*\n*'" : "*.mp3", " -print | sort"});
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
    return joined({executable(workFolder, Player), " -d ", ownPath(playlist(workFolder)), " &"});
}

ShellBytes CommandLine::listFolder(const QString& workFolder, const QString& folder)
{
    return joined({musicBelow(folder), " > ", ownPath(playlist(workFolder))});
}

ShellBytes CommandLine::addFolder(const QString& workFolder, const QString& folder)
{
    return joined({musicBelow(folder), " >> ", ownPath(playlist(workFolder))});
}

ShellBytes CommandLine::addFile(const QString& workFolder, const QString& file)
{
    if (extras.safe) {
        if (file.contains(QLatin1Char('\n')))
            return std::nullopt;
        return joined(
            {"printf '%s\\n' ", quotedForShell(file), " >> ", ownPath(playlist(workFolder))});
    }
    // Some shells' echo reads backslashes, which would name another file.
    if (!file.isValidUtf16() && file.contains(QLatin1Char('\\')))
        return std::nullopt;
    return joined({"echo ", quotedForShell(file), " >> ", shellBytes(playlist(workFolder))});
}
