#pragma once

#include <QFont>
#include <QHash>
#include <QList>
#include <QPointF>
#include <QRawFont>
#include <QRect>
#include <QStringList>

#include <optional>

class QPainter;

/// A font of the boxes and what is measured of it again and again. Lengths are pixels of the
/// screen.
class BoxFont
{
public:
    /// The lines of a text. `contained`: none reaches into the place of the one above or below, so
    /// that each can be drawn anew by itself.
    struct Lines {
        QStringList texts;
        bool contained = true;
    };

    /// A size in pixels and a weight of 0 to 99.
    BoxFont(int size, int weight);

    const QFont& font() const { return font_; }
    int lineHeight() const { return lineHeight_; }
    /// From the top of a line to the top of the next.
    int pitch() const { return lineHeight_ + LineGap; }
    /// Breaks a text into lines of a width.
    Lines wrapped(const QString& text, int width);

    /// Draws a line that wrapped() gave, in the painter's pen: at the top of `area`, aligned in its
    /// width. The painter's font is this one then.
    void drawLine(QPainter& painter, const QRect& area, int align, const QString& line) const;
    /// Draws a line in the place of another, which drawLine() drew with the same area, on a white
    /// ground within `place`. Returns the part of that place in which they differ.
    QRect redrawLine(QPainter& painter, const QRect& place, const QRect& area, int align,
                     const QString& before, const QString& line) const;

private:
    static constexpr int LineGap = 4;

    struct Character {
        int advance = 0;
        bool contained = false;
        quint32 glyph = 0; ///< 0: to be laid out by the toolkit
        qreal step = 0;    ///< to the next glyph
    };

    /// A line of which each character is one glyph behind the other.
    struct Glyphs {
        QList<quint32> indexes;
        QList<QPointF> places; ///< on the base line
        qreal end = 0;
    };

    const Character& character(char32_t code);
    std::optional<Glyphs> glyphsOf(const QRect& area, int align, const QString& line) const;
    void drawGlyphs(QPainter& painter, const Glyphs& glyphs, qsizetype first,
                    qsizetype count) const;

    QFont font_;
    QRawFont glyphs_;
    int ascent_;
    int lineHeight_;
    int widest_;       ///< the advance of the widest character
    int overhang_ = 1; ///< of what is inked beside a character's own width, at most
    QHash<char32_t, Character> characters_;
};
