#pragma once

#include <QString>

/// A text as it is drawn: what has no picture, a half of a pair of surrogates that stands alone (a
/// byte of a name that is no text) or a byte-order mark, is one U+FFFD. It keeps its length.
QString withMarks(const QString& text);
