#include "tests/launch/shareservice.h"

#include "platform/zmodule.h"

namespace
{

ShareService* theService = nullptr;

} // namespace

ShareService::ShareService()
{
    theService = this;
    ZModule::setFolder(QByteArrayLiteral(QUARN_TEST_MODULES));
}

ShareService::~ShareService()
{
    ZModule::setFolder({});
    theService = nullptr;
}

bool ShareService::share(const SHARE_Tool::OBJECT_INFO& info, const QString& path)
{
    theService->requests.append({info.objectName, info.objectType, path});
    return theService->accepts;
}
