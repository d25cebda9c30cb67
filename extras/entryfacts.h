#pragma once

#include "extras/operationtypes.h"

#include <sys/stat.h>

/// What the system says about an entry, as a user knows it.
EntryFacts factsOf(const struct stat& info);
