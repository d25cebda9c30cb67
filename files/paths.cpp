#include "files/paths.h"

QString folderPart(const QString& path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString namePart(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QString() : path.mid(slash + 1);
}

QString lastPart(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString suffixOf(const QString& path)
{
    const QString name = lastPart(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}
