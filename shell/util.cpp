#include "shell/util.h"

#include "files/entry.h"
#include "files/names.h"
#include "platform/zapplication.h"

#include <QDebug>

util* u = nullptr;

QString util::getProgramDir() const
{
    const QByteArray program = ZApplication::programName();
    const QByteArray folder = program.left(program.lastIndexOf('/') + 1);
    qDebug().noquote() << decodeName(program);
    qDebug().noquote() << decodeName(folder);
    return decodeName(folder);
}

bool util::fExist(const QString& path) const
{
    return entryExists(path);
}
