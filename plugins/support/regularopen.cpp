#include "plugins/support/regularopen.h"

#include "files/regularfile.h"
#include "plugins/support/fileproblem.h"
#include "plugins/support/plugintexts.h"

#include <QFile>

#include <cerrno>

bool openWithProblem(QFile& file, const QString& path, QString& problem)
{
    if (path.isEmpty()) {
        problem = pluginTexts().noFile;
        return false;
    }
    if (openRegular(file, path, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return true;
    problem = fileProblem(errno);
    return false;
}
