#include "launch/shellcommand.h"

#include "files/names.h"

#include <cstdlib>

ShellBytes shellBytes(const QString& path)
{
    return encodeName(path);
}

ShellBytes quotedForShell(const QString& path)
{
    return joined({"\"", shellBytes(path), "\""});
}

ShellBytes joined(std::initializer_list<ShellBytes> pieces)
{
    QByteArray line;
    for (const ShellBytes& piece : pieces) {
        if (!piece)
            return std::nullopt;
        line += *piece;
    }
    return line;
}

int runShell(const ShellBytes& command)
{
    return command ? std::system(command->constData()) : -1;
}

int runShellInByteOrder(const ShellBytes& command)
{
    const char* const Locale = "LC_ALL";
    const bool wasSet = qEnvironmentVariableIsSet(Locale);
    const QByteArray before = qgetenv(Locale);
    qputenv(Locale, "C");
    const int status = runShell(command);
    if (wasSet)
        qputenv(Locale, before);
    else
        qunsetenv(Locale);
    return status;
}
