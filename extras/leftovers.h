#pragma once

#include "extras/journalindex.h"
#include "extras/targetfolder.h"

#include <QByteArray>

/// Takes away what an earlier run of an operation has left half done in its target: what was put
/// aside gets its name back if nothing has it, and all other temporary entries of the operation go.
/// Looks into each folder that the journal knows. False, with errno set, if something is left.
bool clearLeftovers(JournalIndex& earlier, TargetFolder& target, const QByteArray& prefix);
