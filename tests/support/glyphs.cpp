#include "tests/support/glyphs.h"

#include <QGlyphRun>
#include <QTextLayout>

#include <algorithm>

int missingGlyphs(const QFont& font, const QString& text)
{
    QTextLayout layout(text, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    qsizetype missing = 0;
    for (const QGlyphRun& run : layout.glyphRuns()) {
        const QList<quint32> glyphs = run.glyphIndexes();
        missing += std::count(glyphs.begin(), glyphs.end(), 0U);
    }
    return int(missing);
}
