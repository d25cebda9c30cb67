#include "launch/shellcommand.h"

#include <cstdlib>

QString shellBytes(const QString& path)
{
    return QString::fromLatin1(path.toUtf8());
}

QString quotedForShell(const QString& path)
{
    return QLatin1Char('"') + shellBytes(path) + QLatin1Char('"');
}

int runShellInByteOrder(const QString& command)
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

int runShell(const QString& command)
{
    return std::system(command.toLatin1().constData());
}
