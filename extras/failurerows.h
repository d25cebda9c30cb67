#pragma once

#include "extras/entrypage.h"
#include "extras/operationtypes.h"

/// A row for each entry that could not be done, which says why, and one for those that are not in
/// the list any more.
QList<EntryPage::Row> failureRows(const Listed<Failure>& failures);
/// Whether each of these failures is among those that a page has told, in the same words.
bool wereTold(const Listed<Failure>& failures, const Listed<Failure>& told);
