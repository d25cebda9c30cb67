#include "plugins/support/fileproblem.h"

#include "plugins/support/plugintexts.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace
{

struct SystemText {
    int error;
    QString PluginTexts::* text;
};

constexpr SystemText SystemTexts[] = {
    {EACCES, &PluginTexts::noPermission}, {EPERM, &PluginTexts::noPermission},
    {ENOENT, &PluginTexts::notFound},     {EISDIR, &PluginTexts::aFolder},
    {ENOSPC, &PluginTexts::noSpace},      {EROFS, &PluginTexts::readOnly},
    {EIO, &PluginTexts::ioError},
};

} // namespace

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
        return texts.cannotOpen.arg(systemProblem(error));
    }
}

QString systemProblem(int error)
{
    const auto* const found =
        std::find_if(std::begin(SystemTexts), std::end(SystemTexts),
                     [error](const SystemText& each) { return each.error == error; });
    return found != std::end(SystemTexts) ? pluginTexts().*found->text : qt_error_string(error);
}

QString systemProblem(const QString& said)
{
    const auto* const found = std::find_if(
        std::begin(SystemTexts), std::end(SystemTexts),
        [&said](const SystemText& each) { return said.endsWith(qt_error_string(each.error)); });
    return found != std::end(SystemTexts) ? pluginTexts().*found->text : said;
}
