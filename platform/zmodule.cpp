#include "platform/zmodule.h"

#include <QByteArrayView>
#include <QDebug>
#include <QHash>

#include <algorithm>
#include <array>
#include <climits>
#include <dlfcn.h>
#include <unistd.h>

namespace
{

QByteArray& chosenFolder()
{
    static QByteArray folder;
    return folder;
}

QByteArray& chosenExecutable()
{
    static QByteArray path;
    return path;
}

/// The file itself, whatever the process was called; names that are no text stay as they are.
QByteArray executablePath()
{
    if (!chosenExecutable().isEmpty())
        return chosenExecutable();
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return QByteArray(path.data(), std::max<ssize_t>(length, 0));
}

QByteArray folderOfExecutable()
{
    const QByteArray path = executablePath();
    return path.left(path.lastIndexOf('/'));
}

QHash<QByteArray, QFunctionPointer>& openModules()
{
    static QHash<QByteArray, QFunctionPointer> modules;
    return modules;
}

QByteArray pathOf(const char* name)
{
    return ZModule::folder() + '/' + name + ".so";
}

/// What the system adds to the name of a file that runs but has no name any more.
constexpr QByteArrayView withoutName = " (deleted)";

/// Whether a newer package was installed since this program started, or it was removed.
bool isReplaced()
{
    const QByteArray path = executablePath();
    return path.endsWith(withoutName) && access(path.constData(), F_OK) != 0;
}

/// A module that lacks anything shall fail here and not at a call. It keeps objects and types that
/// outlive any use, so it never goes.
QFunctionPointer opened(const QByteArray& path, const char* name)
{
    void* module = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* function =
        module != nullptr ? dlsym(module, (QByteArray(name) + "_module").constData()) : nullptr;
    if (function == nullptr)
        qWarning("module %s: %s", name, dlerror());
    return reinterpret_cast<QFunctionPointer>(function);
}

} // namespace

QFunctionPointer ZModule::open(const char* name)
{
    const QByteArray path = pathOf(name);
    QFunctionPointer function = openModules().value(path);
    if (function != nullptr)
        return function;
    if (chosenFolder().isEmpty() && isReplaced()) {
        qWarning("module %s: the program was replaced while it runs; start it anew", name);
        return nullptr;
    }
    function = opened(path, name);
    if (function != nullptr)
        openModules().insert(path, function);
    return function;
}

bool ZModule::needsRestart(const char* name)
{
    return chosenFolder().isEmpty() && !openModules().contains(pathOf(name)) && isReplaced() &&
           access(executablePath().chopped(withoutName.size()).constData(), F_OK) == 0;
}

QByteArray ZModule::folder()
{
    return chosenFolder().isEmpty() ? folderOfExecutable() + "/modules" : chosenFolder();
}

void ZModule::setFolder(const QByteArray& folder)
{
    chosenFolder() = folder;
}

void ZModule::setExecutable(const QByteArray& path)
{
    chosenExecutable() = path;
}
