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

/// Of the file itself, whatever the process was called; names that are no text stay as they are.
QByteArray folderOfExecutable()
{
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const QByteArray executable(path.data(), std::max<ssize_t>(length, 0));
    return executable.left(executable.lastIndexOf('/'));
}

} // namespace

QFunctionPointer ZModule::open(const char* name)
{
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
