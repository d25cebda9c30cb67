#pragma once

#include "plugins/support/textsource.h"

#include <QList>
#include <QString>

#include <functional>
#include <vector>

/// A row of a text on the screen.
struct TextRow {
    qint64 start = 0;         ///< offset of its first byte
    qint64 end = 0;           ///< offset of the next row
    QString text;             ///< printable characters and tabs
    bool rightToLeft = false; ///< the line that it is of begins at the right
};

/// Breaks a text of any size into rows where a reader looks at it. It keeps nothing but its
/// settings and reads a few blocks around the place in question, so neither the size of a text nor
/// the length of its lines matters, and a text that changes cannot lead it astray.
///
/// A line ends with "\n" or "\r\n". Lines longer than a block or two are taken in pieces that end
/// at a blank near multiples of the block size, so that the rows are the same from wherever one
/// comes. A piece that is no valid UTF-8 is taken as Latin-1.
class TextPager
{
public:
    static constexpr qint64 BlockBytes = 8 * 1024;
    static constexpr int TabColumns = 8; ///< widths of a space from tab stop to tab stop

    /// `advance` tells the width of a character in pixels. `source` must live as long as the pager.
    TextPager(const TextSource& source, std::function<int(char32_t)> advance);

    /// The width that rows are broken at, in pixels; 0: lines are not broken.
    void setWidth(int width) { width_ = width; }
    int width() const { return width_; }

    /// Up to `count` rows, the first being the one that `offset` lies in.
    QList<TextRow> rows(qint64 offset, int count) const;
    /// The start of the row that `offset` lies in; of the last row for one past the end.
    qint64 rowStart(qint64 offset) const;
    /// The start of the row that is `count` rows further down, or up if negative; of the last or
    /// first row if there are not as many.
    qint64 moved(qint64 offset, int count) const;
    /// Where a page of `count` rows starts that shows the end of the text.
    qint64 lastPage(int count) const;

    /// The pixels that a character takes behind `x` pixels of a row.
    int advance(char32_t character, int x) const;

private:
    struct Piece {
        qint64 start = 0;
        qint64 end = 0;
    };
    struct Character {
        char32_t code = 0;
        qint64 offset = 0;
    };
    class Window;

    static bool beginsAtTheRight(const std::vector<Character>& characters);
    Piece pieceAt(qint64 offset) const;
    std::vector<TextRow> rowsOf(const Piece& piece) const;
    std::vector<Character> charactersOf(const Piece& piece) const;
    size_t rowEnd(const std::vector<Character>& characters, size_t first) const;

    const TextSource& source_;
    std::function<int(char32_t)> advance_;
    int width_ = 0;
};
