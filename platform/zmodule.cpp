#include "platform/zmodule.h"

#include <QDebug>

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

/// The file itself, whatever the process was called; names that are no text stay as they are.
QByteArray executablePath()
{
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return QByteArray(path.data(), std::max<ssize_t>(length, 0));
}

QByteArray folderOfExecutable()
{
    const QByteArray path = executablePath();
    return path.left(path.lastIndexOf('/'));
}

/// Whether a newer package was installed since this program started, or it was removed: modules fit
/// the program that they came with alone.
bool isReplaced()
{
    // So the system names a file that runs but has no name any more.
    const QByteArray path = executablePath();
    return path.endsWith(" (deleted)") && access(path.constData(), F_OK) != 0;
}

} // namespace

QFunctionPointer ZModule::open(const char* name)
{
    if (chosenFolder().isEmpty() && isReplaced()) {
        qWarning("module %s: the program was replaced while it runs; start it anew", name);
        return nullptr;
    }
    const QByteArray path = folder() + '/' + name + ".so";
    // A module that lacks anything shall fail here and not at a call. It keeps objects and types
    // that outlive any use, so it never goes.
    void* module = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* function =
        module != nullptr ? dlsym(module, (QByteArray(name) + "_module").constData()) : nullptr;
    if (function == nullptr)
        qWarning("module %s: %s", name, dlerror());
    return reinterpret_cast<QFunctionPointer>(function);
}

QByteArray ZModule::folder()
{
    return chosenFolder().isEmpty() ? folderOfExecutable() + "/modules" : chosenFolder();
}

void ZModule::setFolder(const QByteArray& folder)
{
    chosenFolder() = folder;
}
