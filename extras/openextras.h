#pragma once

#include "extras/extrasmodule.h"

/// The module "extras", opened when it is first asked for. nullptr if it is missing or does not
/// fit, which a line on stderr says.
ExtrasModule* openExtras();

/// Whether openExtras() fails since the program was upgraded while it runs.
bool extrasNeedRestart();

/// Whether there may be something for ExtrasModule::offerUnfinished(): one look at one folder,
/// without the module.
bool hasUnfinished();
