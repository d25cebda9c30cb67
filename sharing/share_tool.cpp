#include "sharing/share_tool.h"

#include "platform/zmodule.h"
#include "sharing/sharingmodule.h"

bool SHARE_Tool::shareByBt(const OBJECT_INFO& info, const QString& path, [[maybe_unused]] bool flag)
{
    // Bytes of a name that are no text stand in the path as halves of surrogate pairs.
    if (!path.isValidUtf16() || path.contains(QChar(0)))
        return false;
    const auto share = reinterpret_cast<SharingModule>(ZModule::open("sharing"));
    return share != nullptr && share(info, path);
}

bool SHARE_Tool::needsRestart()
{
    return ZModule::needsRestart("sharing");
}
