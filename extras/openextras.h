#pragma once

#include "extras/extrasmodule.h"

/// The module "extras", opened when it is first asked for. nullptr if it is missing or does not
/// fit, which a line on stderr says.
ExtrasModule* openExtras();
