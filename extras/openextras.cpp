#include "extras/openextras.h"

#include "platform/zmodule.h"

#include <QByteArray>
#include <QByteArrayView>

#include <dirent.h>

namespace
{

/// Where the module keeps what an operation has to remember; see journalFolder().
QByteArray unfinishedFolder()
{
    QByteArray state = qgetenv("XDG_STATE_HOME");
    if (!state.startsWith('/'))
        state = qgetenv("HOME") + "/.local/state";
    return state + "/quarn/journals";
}

} // namespace

ExtrasModule* openExtras()
{
    const auto module = reinterpret_cast<ExtrasModuleFunction>(ZModule::open("extras"));
    return module != nullptr ? module() : nullptr;
}

bool extrasNeedRestart()
{
    return ZModule::needsRestart("extras");
}

bool hasUnfinished()
{
    DIR* folder = opendir(unfinishedFolder().constData());
    if (folder == nullptr)
        return false;
    bool found = false;
    while (const dirent* entry = readdir(folder)) {
        const QByteArrayView name(entry->d_name);
        found = found || name.endsWith(".journal");
    }
    closedir(folder);
    return found;
}
