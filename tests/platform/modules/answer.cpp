#include "platform/keymap.h"

#include <QtGlobal>

/// Answers with what there must be one of in a process.
extern "C" Q_DECL_EXPORT const KeyMap* answer_module()
{
    return &KeyMap::instance();
}
