#pragma once

#include <QDateTime>
#include <QString>

// The texts of a row and of a size, free of any window.

/// A number of bytes as "512 b", "1.5 Kb" or "12.34 Mb": cut, not rounded, to two decimals, six
/// significant digits at most, no trailing zeros. There is no larger unit.
QString sizeText(double bytes);
/// The same in units as large as it takes: "5 Gb", "1.5 Tb".
QString wideSizeText(qint64 bytes);

/// "05/03/2008": day, month, year.
QString dateText(int day, int month, int year);
/// The date of a time in seconds since 1970, in local time. Empty if its year is out of range.
QString dateText(qint64 seconds);

/// What follows the last "." of a file name, in upper case; "quarn_execute" if it has none.
QString extensionOf(const QString& name);
