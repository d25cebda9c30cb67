#pragma once

#include "extras/journalindex.h"

#include <QList>

/// What a journal has to know about the folders that entries come from and go into, to find at
/// another start that they are the same: a drive may not be there by then, or another one be
/// mounted in its place. Those that cannot be looked at are left out.
QList<JournalRecord> placesOf(const OperationRequest& request);

/// Of the folders that an interrupted operation worked in those that are not there now; ENODEV
/// tells that something else is in its place.
QList<Failure> missingPlaces(const JournalIndex& earlier);
