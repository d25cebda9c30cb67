#pragma once

#include <QFont>
#include <QHash>
#include <QStringList>

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

private:
    static constexpr int LineGap = 4;

    struct Character {
        int advance = 0;
        bool contained = false;
    };
    const Character& character(char32_t code);

    QFont font_;
    int lineHeight_;
    int widest_; ///< the advance of the widest character
    QHash<char32_t, Character> characters_;
};
