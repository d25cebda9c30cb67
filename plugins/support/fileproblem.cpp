#include "plugins/support/fileproblem.h"

#include "plugins/support/plugintexts.h"

#include <cerrno>

QString fileProblem(int error)
{
    const PluginTexts& texts = pluginTexts();
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return texts.noSuchFile;
    case EISDIR:
        return texts.isFolder;
    // A socket, a FIFO or a device.
    case ENXIO:
        return texts.notRegular;
    case EACCES:
    case EPERM:
        return texts.mayNotRead;
    default:
        return texts.cannotOpen.arg(qt_error_string(error));
    }
}
