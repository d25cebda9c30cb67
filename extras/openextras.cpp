#include "extras/openextras.h"

#include "platform/zmodule.h"

ExtrasModule* openExtras()
{
    const auto module = reinterpret_cast<ExtrasModuleFunction>(ZModule::open("extras"));
    return module != nullptr ? module() : nullptr;
}
