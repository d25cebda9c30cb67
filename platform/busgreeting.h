#pragma once

#include <QByteArray>
#include <QDeadlineTimer>

/// Whether a message bus behind a local socket lets us in: connects, introduces the user and says
/// hello, as every client does. Blocks until the deadline at most.
///
/// The toolkit waits half a minute for a bus that does not answer, and the program with it; one
/// that answers "no" (too many clients) even ends the process. So we knock first.
bool busGreets(const QByteArray& socketName, bool abstract, const QDeadlineTimer& deadline);
