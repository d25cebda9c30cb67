#pragma once

#include <QStringList>

/// Tables are text files of one entry a line in fixed character columns.

/// Only the first 4 MiB and 200,000 lines of a table are read, and of a line the first 1024
/// characters.
inline constexpr qsizetype MaxTableBytes = 4 * 1024 * 1024;
inline constexpr qsizetype MaxTableLines = 200000;
inline constexpr qsizetype MaxTableLine = 1024;

/// The lines of a table, UTF-8, without their line breaks; blank lines are left out. Empty if the
/// file is missing or unreadable.
QStringList readTableLines(const QString& file);

/// The decimal number at the start of a field of `width` columns from column `column`: leading
/// blanks and a sign are allowed, it ends at the first other character. 0 without digits.
int columnNumber(const QString& line, int column, int width);
