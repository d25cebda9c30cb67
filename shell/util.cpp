#include "shell/util.h"

#include "platform/zapplication.h"

#include <QDebug>
#include <QFile>

util* u = nullptr;

QString util::getProgramDir() const
{
    const QByteArray program = ZApplication::programName();
    const QByteArray folder = program.left(program.lastIndexOf('/') + 1);
    qDebug("%s", program.constData());
    qDebug("%s", folder.constData());
    return QFile::decodeName(folder);
}

bool util::fExist(const QString& path) const
{
    return QFile::exists(path);
}
