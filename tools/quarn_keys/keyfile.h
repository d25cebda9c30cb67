#pragma once

#include "tools/quarn_keys/keyquestions.h"

#include <QByteArray>
#include <QList>
#include <QString>

// The file of keys (KeyMap), as it becomes when keys are given.

/// The content of a file that has `old` and gets these answers. Its other lines stay byte by byte;
/// those that give a code of an answer to another key, or its key another code, go. A key that has
/// its code without a line gets none.
QByteArray keyFileWith(const QByteArray& old, const QList<KeyAnswer>& answers);

/// Reads what there is under a path, writes the new content beside it, and puts that in its place:
/// there is the old file or the new one, whatever happens. A link's file is meant, not the link;
/// the permissions stay. Returns 0 or the system's number of an error.
int writeKeyFile(const QString& path, const QList<KeyAnswer>& answers);

/// The content of the file that writeKeyFile() would change; empty if it is not there or cannot be
/// read.
QByteArray readKeyFile(const QString& path);
