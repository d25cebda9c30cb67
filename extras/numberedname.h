#pragma once

#include <QByteArray>

/// The most bytes that a name may have where nothing is known of the file system.
inline constexpr qsizetype LongestName = 255;

/// A name as it is for number 1, else with the number before its suffix: "a (2).txt". If it got
/// longer than `longest` bytes, which is at least 64, what is before the number and the suffix is
/// cut, between characters if it is UTF-8.
QByteArray numberedName(const QByteArray& name, int number, qsizetype longest = LongestName);
