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

int runShell(const QString& command)
{
    return std::system(command.toLatin1().constData());
}
