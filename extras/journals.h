#pragma once

#include "extras/operationtypes.h"

#include <QByteArray>
#include <QList>

#include <optional>

/// Where the journals of operations lie: "quarn/journals" in the user's state folder
/// ($XDG_STATE_HOME if that is absolute, else ~/.local/state). Absolute; need not be there.
QByteArray journalFolder();

/// What the journal of an operation that never came to its end tells.
struct InterruptedOperation {
    QByteArray journal; ///< the full path of the journal
    /// The part that tells what was asked for cannot be read. The rest of this is empty then:
    /// nothing can be finished or taken back, only discardJournal() helps.
    bool isDamaged = false;
    bool isOlder = false; ///< because an older version has written it in its own way
    /// Or a part behind that: what it told there is not known.
    bool isDamagedInPart = false;
    /// The user had called it off, and the program ended before it was at its end.
    bool wasCancelled = false;
    OperationRequest request;
    qint64 started = 0;     ///< nanoseconds since 1970
    qint64 entriesMade = 0; ///< how many entries it had made, renamed or was about to
    qint64 replaced = 0;    ///< how many of them took the place of others, which cannot come back
    /// Copies and moves can be taken back, deleted entries cannot.
    bool canTakeBack = false;
};

/// Whether there may be an interrupted operation: one cheap look into one folder.
bool hasJournals();

/// The operations that a power cut or a crash left, oldest first. Those that another instance is at
/// work with are not among them. Never fails: without a readable folder there are none.
QList<InterruptedOperation> findJournals();

/// What the operation of a journal was asked for. nullopt, with errno set, if it cannot be read;
/// EBADMSG if it is damaged at its beginning.
std::optional<OperationRequest> requestOf(const QByteArray& journal);

/// Forgets an interrupted operation: removes the temporary files that it left, which are of no use
/// to anybody, and the journal. False, with errno set, if the journal is another instance's by now
/// or cannot be removed.
bool discardJournal(const QByteArray& journal);
