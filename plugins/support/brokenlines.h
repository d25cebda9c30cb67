#pragma once

#include <QStringList>

class QFont;
class QPainter;
class QRect;

/// Breaks a text into lines of at most `width` pixels in a font: between its words, and in the
/// midst of one that has no room on a line. What `most` lines do not hold is cut off the last one,
/// which ends in an ellipsis then. Line breaks of the text are blanks, and characters that cannot
/// be seen have marks.
QStringList brokenLines(const QString& text, const QFont& font, int width, int most);

/// Draws lines in the painter's font and pen, one below the other from the top of an area, each in
/// its middle. Returns where the next one would begin.
int paintLines(QPainter& painter, const QRect& area, const QStringList& lines);
