#pragma once

#include "extras/extrasmodule.h"

#include <QByteArray>
#include <QList>

/// Moves entries to the trash, with the questions before and a list of what could not be done
/// after; see ExtrasModule::throwAway().
ExtrasModule::Thrown throwAwayEntries(const QList<QByteArray>& paths);
