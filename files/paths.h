#pragma once

#include <QString>

/// A path up to and including its last "/"; empty if it has none.
QString folderPart(const QString& path);
/// What follows the last "/" of a path; empty if it has none.
QString namePart(const QString& path);
/// What follows the last "/" of a path; all of one that has none.
QString lastPart(const QString& path);
/// What follows the last "." of the last part of a path; empty if it has none.
QString suffixOf(const QString& path);
