#include <QtGlobal>

/// Nobody defines it.
int functionOfAnotherVersion();

extern "C" Q_DECL_EXPORT int lacking_module()
{
    return functionOfAnotherVersion();
}
