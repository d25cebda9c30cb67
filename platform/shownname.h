#pragma once

#include <QString>

/// Characters without a picture that a text can hold and still be one: the byte-order mark, and
/// those that turn the direction of what follows, with which "gpj.exe" can look like "exe.jpg".
inline constexpr char16_t InvisibleCharacters[] = {0xfeff, 0x061c, 0x200e, 0x200f, 0x202a,
                                                   0x202b, 0x202c, 0x202d, 0x202e, 0x2066,
                                                   0x2067, 0x2068, 0x2069};

/// Whether a character is one of them.
bool isInvisible(QChar character);

/// A text as it is drawn: what has no picture, an invisible character or a half of a pair of
/// surrogates that stands alone (a byte of a name that is no text), is one U+FFFD. It keeps its
/// length.
QString withMarks(const QString& text);
