#pragma once

#include <QString>

/// A sentence that tells a user why a file cannot be opened, for a number of the system (errno).
QString fileProblem(int error);

/// Why something could not be done, for a number of the system: a few words in the language in use,
/// or what the system says if there is no text for it.
QString systemProblem(int error);

/// What the toolkit says of a failure, with the system's words at its end in the language in use.
QString withSystemProblem(const QString& problem);
