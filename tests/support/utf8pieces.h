#pragma once

#include <QByteArray>
#include <QList>

/// A part of a name: a character in UTF-8, or one byte that belongs to none.
struct Utf8Piece {
    bool valid;
    char32_t character; ///< or the byte
    qsizetype length;   ///< in bytes
};

/// The parts of a name. Overlong forms, surrogates and what lies beyond U+10FFFF are no characters.
QList<Utf8Piece> utf8Pieces(const QByteArray& name);
