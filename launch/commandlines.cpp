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

/// A list has a line for each file. One that a line cannot tell stands there as an address, in
/// which the player reads some signs otherwise; so do these two.
constexpr char AddressStart[] = "file://";
constexpr char AsLines[] =
    R"(sed -z '/\n/{s/%/%25/g;s/#/%23/g;s/?/%3F/g;s/\n/%0A/g;s|^|file://|}' | tr '\0' '\n')";

bool isLine(const QString& file)
{
    return !file.contains(QLatin1Char('\n')) && !file.endsWith(QLatin1Char('\r'));
}

ShellBytes addressForShell(const QString& file)
{
    const ShellBytes bytes = shellBytes(file);
    return bytes ? ShellBytes("'" + (AddressStart + bytes->toPercentEncoding("/")) + "'") : bytes;
}

ShellBytes musicBelow(const QString& folder)
{
    if (extras.safe)
        return joined({"find ", quotedForShell(folder),
                       " -type f -name '*.mp3' -print0 | sort -z | ", AsLines});
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
        return joined({"printf '%s\\n' ",
                       isLine(file) ? quotedForShell(file) : addressForShell(file), " >> ",
                       ownPath(playlist(workFolder))});
    }
    // Some shells' echo reads backslashes, which would name another file.
    if (!file.isValidUtf16() && file.contains(QLatin1Char('\\')))
        return std::nullopt;
    return joined({"echo ", quotedForShell(file), " >> ", shellBytes(playlist(workFolder))});
}
