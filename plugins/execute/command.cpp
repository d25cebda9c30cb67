#include "plugins/execute/command.h"

#include "files/entry.h"
#include "files/names.h"
#include "files/paths.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/regularopen.h"

#include <QFile>

#include <algorithm>
#include <unistd.h>

namespace
{

struct Interpreter {
    const char* extension;
    const char* program;
    const char* option; ///< nullptr for none
};

/// Python keeps what a script prints to itself for long unless it is told not to.
constexpr Interpreter Interpreters[] = {
    {"sh", "sh", nullptr},   {"bash", "bash", nullptr}, {"zsh", "zsh", nullptr},
    {"py", "python3", "-u"}, {"pl", "perl", nullptr},   {"rb", "ruby", nullptr},
    {"lua", "lua", nullptr}, {"tcl", "tclsh", nullptr}, {"awk", "awk", "-f"},
    {"js", "node", nullptr},
};

const Interpreter* interpreterOf(const QString& path)
{
    const QString extension = suffixOf(path).toLower();
    const auto* found = std::find_if(std::begin(Interpreters), std::end(Interpreters),
                                     [&extension](const Interpreter& known) {
                                         return extension == QLatin1String(known.extension);
                                     });
    return found == std::end(Interpreters) ? nullptr : found;
}

bool mayExecute(const QByteArray& path)
{
    return ::access(path.constData(), X_OK) == 0;
}

/// Whether the system itself knows how to run what begins with these bytes. A script without "#!"
/// it leaves to shells.
bool isForTheSystem(const QByteArray& head)
{
    return head.isEmpty() || head.startsWith("#!") || head.contains('\0');
}

QByteArray headOf(const QString& path)
{
    constexpr qint64 HeadBytes = 256;
    QFile file;
    QString problem;
    // A program need not be readable to be run.
    return openWithProblem(file, path, problem) ? file.read(HeadBytes) : QByteArray();
}

QString problemOf(const QString& path)
{
    const EntryInfo info(path);
    if (path.isEmpty())
        return pluginTexts().noFile;
    if (!info.exists())
        return pluginTexts().noSuchFile;
    if (info.isFolder())
        return pluginTexts().isFolder;
    return info.isFile() ? QString() : pluginTexts().notRegular;
}

QString folderOf(const QString& file)
{
    QString folder = folderPart(file);
    if (folder.size() > 1)
        folder.chop(1);
    return folder;
}

} // namespace

Command Command::forFile(const QString& path)
{
    Command command;
    command.problem = problemOf(path);
    if (!command.problem.isEmpty())
        return command;
    // Absolute, so that no interpreter takes it for an option.
    const QString file = absolutePath(path);
    command.folder = folderOf(file);
    const bool executable = mayExecute(encodedPath(path));
    const Interpreter* interpreter = interpreterOf(file);
    if (executable && isForTheSystem(headOf(file))) {
        command.program = file;
    } else if (interpreter != nullptr) {
        command.program = QString::fromLatin1(interpreter->program);
        if (interpreter->option != nullptr)
            command.arguments.append(QString::fromLatin1(interpreter->option));
        command.arguments.append(file);
    } else if (executable) {
        command.program = QStringLiteral("sh");
        command.arguments.append(file);
    } else {
        command.problem = pluginTexts().notExecutable;
    }
    return command;
}
