#include "plugins/support/regularopen.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

QString problemOf(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return QStringLiteral("There is no such file.");
    case EACCES:
    case EPERM:
        return QStringLiteral("You may not read this file.");
    default:
        return QStringLiteral("Cannot open the file: %1.").arg(qt_error_string(error));
    }
}

} // namespace

bool openRegular(QFile& file, const QString& path, QString& problem)
{
    if (path.isEmpty()) {
        problem = QStringLiteral("No file was given.");
        return false;
    }
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    // ENXIO: a socket, or a device without a driver.
    if (descriptor < 0) {
        problem = errno == ENXIO ? QStringLiteral("This is not a regular file.") : problemOf(errno);
        return false;
    }
    struct stat about = {};
    if (::fstat(descriptor, &about) != 0 || !S_ISREG(about.st_mode)) {
        problem = S_ISDIR(about.st_mode) ? QStringLiteral("This is a folder.")
                                         : QStringLiteral("This is not a regular file.");
        ::close(descriptor);
        return false;
    }
    file.setFileName(path);
    if (file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered,
                  QFileDevice::AutoCloseHandle))
        return true;
    problem = QStringLiteral("Cannot open the file: %1.").arg(file.errorString());
    ::close(descriptor);
    return false;
}
