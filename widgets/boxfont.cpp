#include "widgets/boxfont.h"

#include "files/programnames.h"
#include "platform/shownname.h"
#include "platform/zskinservice.h"
#include "widgets/wordwrap.h"

#include <QFontMetrics>

BoxFont::BoxFont(int size, int weight) : font_(ZSkinService::font(ProgramNames::Font, size, weight))
{
    const QFontMetrics metrics(font_);
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
    // Marks go where the character before them is, and in other scripts shapes depend on
    // neighbours.
    constexpr char32_t FirstOfOtherScripts = 0x0590;
    Character measured;
    measured.advance = metrics.horizontalAdvance(text);
    measured.contained = code < FirstOfOtherScripts && !QChar::isMark(code) &&
                         ink.top() > -metrics.ascent() &&
                         ink.bottom() < metrics.descent() + LineGap - 1;
    return *characters_.insert(code, measured);
}
