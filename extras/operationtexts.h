#pragma once

#include "extras/operationtypes.h"

#include <QString>

// The words of an operation, free of any window.

/// Seconds as "45 s", "2:05" or "1:02:05".
QString durationText(int seconds);
/// "%1" replaced by a number or a text. A "%1" in what is put in stays as it is.
QString filledText(const QString& text, const QString& first);
QString filledText(const QString& text, const QString& first, const QString& second);
/// What a kind of operation is called while it goes on.
QString titleOf(OperationKind kind);
/// The last part of a path, as it is shown: in one line, its control characters visible.
QString shownNameOf(const QByteArray& path);
/// The folder of a path, shown the same way, without a "/" at its end but for the root.
QString shownFolderOf(const QByteArray& path);

/// The path of an entry, or the names of several, as many as leave a box on the screen.
QString namesText(const QList<QByteArray>& paths);

/// Why something could not be done: what was tried, and what the system said to that.
QString troubleText(Trouble trouble);
/// In the user's language where there is a text for it, else the system's own. Empty for 0.
QString errorText(int error);
/// The one of these two that tells more.
QString reasonText(const Failure& failure);

/// What an operation could not keep on a drive: each Lack, in words.
QString lacksText(unsigned lacks);

QString answerText(Answer answer);
/// "1.2 Mb, 05/03/2008"; of a folder or link what it is, and the date.
QString factsText(const EntryFacts& facts);

/// "Entries: 12, 3.4 Mb".
QString amountText(qint64 entries, qint64 bytes);
/// "1.2 Mb / 3.4 Gb", of bytes that are written, or "12 / 340", of entries.
QString doneText(const OperationProgress& progress);
/// "12 Mb/s   2:05 left", as far as that is known.
QString paceText(const OperationProgress& progress);
