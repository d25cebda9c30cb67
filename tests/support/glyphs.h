#pragma once

#include <QFont>
#include <QString>

/// Of a text, how many pictures of characters are the one that a font has for those it does not
/// have: neither this font nor any that takes its place has them.
int missingGlyphs(const QFont& font, const QString& text);
