#include "extras/extrasmodule.h"

namespace
{

class Module final : public ExtrasModule
{
public:
    Outcome run(Kind /*kind*/, const QStringList& sources, const QString& /*folder*/) override
    {
        return {false, sources};
    }
    bool offerUnfinished() override { return false; }
};

} // namespace

extern "C" Q_DECL_EXPORT ExtrasModule* extras_module()
{
    static Module module;
    return &module;
}
