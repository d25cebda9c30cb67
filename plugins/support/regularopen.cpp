#include "plugins/support/regularopen.h"

#include "files/regularfile.h"

#include <QFile>

#include <cerrno>

namespace
{

QString problemOf(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return QStringLiteral("There is no such file.");
    case EISDIR:
        return QStringLiteral("This is a folder.");
    // A socket, a FIFO or a device.
    case ENXIO:
        return QStringLiteral("This is not a regular file.");
    case EACCES:
    case EPERM:
        return QStringLiteral("You may not read this file.");
    default:
        return QStringLiteral("Cannot open the file: %1.").arg(qt_error_string(error));
    }
}

} // namespace

bool openWithProblem(QFile& file, const QString& path, QString& problem)
{
    if (path.isEmpty()) {
        problem = QStringLiteral("No file was given.");
        return false;
    }
    if (openRegular(file, path, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return true;
    problem = problemOf(errno);
    return false;
}
