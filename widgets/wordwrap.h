#pragma once

#include <QStringList>

#include <functional>

/// Breaks a text into lines of at most `usableWidth`, measured by `advance`, the width of one
/// character (a code point). A "\n" ends a paragraph; empty paragraphs give no line. A line breaks
/// at the last space before the character that overflows, the space being dropped; one without a
/// space breaks behind that character.
QStringList wrapWords(const QString& text, int usableWidth,
                      const std::function<int(char32_t)>& advance);
