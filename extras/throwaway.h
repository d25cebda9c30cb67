#pragma once

#include "extras/extrasmodule.h"

#include <QByteArray>
#include <QList>

/// Moves entries to the trash, or deletes them where there is none, with the questions before and
/// lists of what could not be done after; see ExtrasModule::throwAway().
ExtrasModule::Outcome throwAwayEntries(const QList<QByteArray>& paths);
