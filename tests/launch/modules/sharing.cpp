#include "tests/launch/shareservice.h"

extern "C" Q_DECL_EXPORT bool sharing_module(const SHARE_Tool::OBJECT_INFO& info,
                                             const QString& path)
{
    return ShareService::share(info, path);
}
