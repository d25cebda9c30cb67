#include "widgets/boxfont.h"

#include "files/programnames.h"
#include "platform/shownname.h"
#include "platform/zskinservice.h"
#include "widgets/wordwrap.h"

#include <QFontMetrics>
#include <QGlyphRun>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace
{

// Marks go where the character before them is, and in other scripts shapes depend on neighbours.
constexpr char32_t FirstOfOtherScripts = 0x0590;

/// Whether a character is drawn the same way wherever it stands.
bool standsAlone(char32_t code)
{
    return code < FirstOfOtherScripts && QChar::isPrint(code) && !QChar::isMark(code);
}

} // namespace

BoxFont::BoxFont(int size, int weight)
    : font_(ZSkinService::font(ProgramNames::Font, size, weight)),
      glyphs_(QRawFont::fromFont(font_))
{
    const QFontMetrics metrics(font_);
    ascent_ = metrics.ascent();
    lineHeight_ = metrics.height();
    widest_ = metrics.maxWidth();
}

BoxFont::Lines BoxFont::wrapped(const QString& text, int width)
{
    Lines lines;
    lines.texts = wrapWords(withMarks(text), width - widest_, [this, &lines](char32_t code) {
        const Character& each = character(code);
        lines.contained = lines.contained && each.contained;
        return each.advance;
    });
    return lines;
}

/// Measuring a character lays out a text; progress texts come many times a second.
const BoxFont::Character& BoxFont::character(char32_t code)
{
    const auto known = characters_.constFind(code);
    if (known != characters_.constEnd())
        return *known;
    const QFontMetrics metrics(font_);
    const QString text = QString::fromUcs4(&code, 1);
    const QRect ink = metrics.tightBoundingRect(text);
    Character measured;
    measured.advance = metrics.horizontalAdvance(text);
    measured.contained =
        standsAlone(code) && ink.top() > -ascent_ && ink.bottom() < metrics.descent() + LineGap - 1;
    const QList<quint32> glyphs = glyphs_.glyphIndexesForString(text);
    if (standsAlone(code) && glyphs.size() == 1) {
        measured.glyph = glyphs.constFirst();
        measured.step = glyphs_.advancesForGlyphIndexes(glyphs).constFirst().x();
        // What is smoothed reaches a pixel further than what is measured.
        overhang_ = std::max({overhang_, 1 - ink.left(), ink.right() + 2 - measured.advance});
    }
    return *characters_.insert(code, measured);
}

std::optional<BoxFont::Glyphs> BoxFont::glyphsOf(const QRect& area, int align,
                                                 const QString& line) const
{
    Glyphs glyphs;
    glyphs.indexes.reserve(line.size());
    glyphs.places.reserve(line.size());
    qreal x = 0;
    for (const QChar character : line) {
        const auto known = characters_.constFind(character.unicode());
        if (known == characters_.constEnd() || known->glyph == 0)
            return std::nullopt;
        glyphs.indexes.append(known->glyph);
        glyphs.places.append(QPointF(x, area.top() + ascent_));
        x += known->step;
    }
    qreal left = area.left();
    if ((align & Qt::AlignHCenter) != 0)
        left += std::floor((area.width() - x) / 2);
    else if ((align & Qt::AlignRight) != 0)
        left += std::floor(area.width() - x);
    for (QPointF& place : glyphs.places)
        place.rx() += left;
    glyphs.end = left + x;
    return glyphs;
}

void BoxFont::drawGlyphs(QPainter& painter, const Glyphs& glyphs, qsizetype first,
                         qsizetype count) const
{
    QGlyphRun run;
    run.setRawFont(glyphs_);
    run.setRawData(glyphs.indexes.constData() + first, glyphs.places.constData() + first,
                   int(count));
    painter.drawGlyphRun(QPointF(), run);
}

void BoxFont::drawLine(QPainter& painter, const QRect& area, int align, const QString& line) const
{
    painter.setFont(font_);
    if (const auto glyphs = glyphsOf(area, align, line))
        drawGlyphs(painter, *glyphs, 0, glyphs->indexes.size());
    else
        painter.drawText(area.left(), area.top(), area.width(), lineHeight_, align, line);
}

QRect BoxFont::redrawLine(QPainter& painter, const QRect& place, const QRect& area, int align,
                          const QString& before, const QString& line) const
{
    const auto old = glyphsOf(area, align, before);
    const auto now = glyphsOf(area, align, line);
    if (!old || !now) {
        painter.fillRect(place, Qt::white);
        drawLine(painter, area, align, line);
        return place;
    }
    const qsizetype shorter = std::min(old->indexes.size(), now->indexes.size());
    const auto alike = [&](qsizetype i, qsizetype j) {
        return old->indexes.at(i) == now->indexes.at(j) && old->places.at(i) == now->places.at(j);
    };
    qsizetype head = 0;
    while (head < shorter && alike(head, head))
        ++head;
    qsizetype tail = 0;
    while (tail < shorter - head &&
           alike(old->indexes.size() - 1 - tail, now->indexes.size() - 1 - tail))
        ++tail;
    const auto leftOf = [head](const Glyphs& glyphs) {
        return head < glyphs.places.size() ? glyphs.places.at(head).x() : glyphs.end;
    };
    const auto rightOf = [tail](const Glyphs& glyphs) {
        return tail == 0 ? glyphs.end : glyphs.places.at(glyphs.places.size() - tail).x();
    };
    const int left = int(std::floor(std::min(leftOf(*old), leftOf(*now)))) - overhang_;
    const int right = int(std::ceil(std::max(rightOf(*old), rightOf(*now)))) + overhang_;
    const QRect changed = place & QRect(left, place.top(), right - left, place.height());
    painter.save();
    painter.setClipRect(changed);
    painter.fillRect(changed, Qt::white);
    // Those beside it reach into it.
    const qsizetype first = std::max(head - 1 - overhang_, qsizetype(0));
    const qsizetype last =
        std::min(now->indexes.size() - tail + 1 + overhang_, now->indexes.size());
    drawGlyphs(painter, *now, first, last - first);
    painter.restore();
    return changed;
}
