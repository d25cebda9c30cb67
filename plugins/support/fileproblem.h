#pragma once

#include <QString>

/// A sentence that tells a user why a file cannot be opened, for a number of the system (errno).
QString fileProblem(int error);

/// Why something could not be done, for a number of the system: a few words in the language in use,
/// or what the system says if there is no text for it.
QString systemProblem(int error);

/// The same for what the toolkit says of a failure, which ends with what the system says: these
/// words alone, or all of it if there is no text for them.
QString systemProblem(const QString& said);
