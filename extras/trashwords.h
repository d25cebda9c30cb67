#pragma once

#include "extras/trash.h"
#include "extras/trashamount.h"

#include <QByteArray>
#include <QString>

// The words of the trash, free of any window.

/// What could not be done with an entry.
struct TrashFailure {
    QByteArray path;
    Trash::Outcome outcome = Trash::Outcome::Failed;
    int error = 0; ///< errno, or 0
};

TrashFailure failureOf(const TrashEntry& entry, const Trash::Result& result);
QString reasonText(const TrashFailure& failure);
/// What an entry was called, as it is shown.
QString formerNameText(const TrashEntry& entry);
/// The folder that it was in, or that this is not known.
QString formerFolderText(const TrashEntry& entry);
/// When it was thrown away; empty if that is not known.
QString deletedText(const TrashEntry& entry);
/// How much goes with an entry: its size and, of a folder, how many entries there are. The second
/// form tells both in any case.
QString amountText(const TrashEntry& entry, const TrashAmount& amount);
QString amountText(const TrashAmount& amount);
/// The properties of an entry, in the form of those of the main window.
QString propertiesText(const TrashEntry& entry);
