#pragma once

#include <QString>

/// A path up to and including its last "/"; empty if it has none.
QString folderPart(const QString& path);
/// What follows the last "/" of a path; empty if it has none.
QString namePart(const QString& path);
