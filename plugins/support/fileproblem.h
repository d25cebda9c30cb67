#pragma once

#include <QString>

/// A sentence that tells a user why a file cannot be opened, for a number of the system (errno).
QString fileProblem(int error);
