#pragma once

#include "extras/trash.h"
#include "extras/trashamount.h"
#include "extras/trashwords.h"

#include <QByteArrayList>
#include <QList>

#include <memory>
#include <optional>

// What may take long with trashes, each in a thread of its own while the event loop goes on; see
// runAside(). The user can stop it, as does the end of the program.

/// What is in the trashes that are near; nullopt if that was stopped.
std::optional<QList<TrashEntry>> listAside(const Trash& trash);

/// How much there is in entries, with all below them; null if counting was stopped.
std::shared_ptr<const TrashAmount> countAside(const Trash& trash, const QList<TrashEntry>& entries);

/// Moves an entry to a place; see Trash::restore(). What was stopped is as if it had been done.
Trash::Result restoreAside(const Trash& trash, const TrashEntry& entry, const QByteArray& path,
                           Trash::WhenTaken whenTaken);

/// Has the trash forget an entry that was brought to its place; see Trash::forget(). False, too, if
/// nobody waited for its end.
bool forgetAside(const Trash& trash, const TrashEntry& entry);

struct Expunged {
    QList<TrashEntry> gone;              ///< from their trashes
    std::optional<TrashFailure> failure; ///< the last one
    bool isWhole = false;                ///< it was not stopped
};
/// Deletes entries, in their order; when it is stopped, those that it has come to. One that is no
/// longer there is a failure only where it is the only one.
Expunged expungeAside(const Trash& trash, const QList<TrashEntry>& entries);

/// Takes folders apart that are to go, from another time too: of the trashes that are near and of
/// those with these paths. Tells what could not be removed.
void removeAside(const Trash& trash, const QByteArrayList& paths);

/// Tidies the trashes that are near.
void tidyAside(const Trash& trash);
