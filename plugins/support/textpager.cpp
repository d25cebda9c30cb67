#include "plugins/support/textpager.h"

#include "files/names.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace
{

/// How far before a multiple of the block size a blank is looked for, bytes.
constexpr qint64 BlankSearch = 64;

bool isBlank(char32_t code)
{
    return code == ' ' || code == '\t';
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80;
}

/// The length of a character of valid UTF-8 by its first byte.
int lengthOf(unsigned char lead)
{
    return lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
}

char32_t codeOf(const char* bytes, int length)
{
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (length == 1)
        return lead;
    char32_t code = lead & (0x7fU >> static_cast<unsigned>(length));
    for (int i = 1; i < length; ++i)
        code = (code << 6U) | (static_cast<unsigned char>(bytes[i]) & 0x3fU);
    return code;
}

/// What is shown for a character: control characters, the line breaks that Unicode has beside those
/// of ASCII included, must neither act nor hide.
char32_t visible(char32_t code)
{
    constexpr char32_t MiddleDot = 0xb7;
    constexpr char32_t Delete = 0x7f;
    constexpr char32_t LastControl = 0x9f;
    if (code == '\t' || (code >= 0x20 && code < Delete))
        return code;
    const bool isBreak = code == QChar::LineSeparator || code == QChar::ParagraphSeparator;
    return code <= LastControl || isBreak ? MiddleDot : code;
}

/// Whether a character is of a script that has a direction, and of which.
std::optional<bool> isRightToLeft(char32_t code)
{
    switch (QChar::direction(code)) {
    case QChar::DirL:
        return false;
    case QChar::DirR:
    case QChar::DirAL:
        return true;
    default:
        return std::nullopt;
    }
}

} // namespace

/// The bytes around a place.
class TextPager::Window
{
public:
    Window(const TextSource& source, qint64 from, qint64 to)
        : begin_(source.begin()), end_(source.end()), base_(std::max(from, begin_))
    {
        to = std::min(to, end_);
        if (to > base_)
            bytes_ = source.read(base_, to - base_);
        // What cannot be read is not there.
        if (base_ + bytes_.size() < to)
            end_ = base_ + bytes_.size();
    }

    qint64 begin() const { return begin_; }
    qint64 end() const { return end_; }

    /// The offset behind the last line break before `offset`, or the beginning of the window.
    qint64 lineStart(qint64 offset) const
    {
        if (offset <= base_ || bytes_.isEmpty())
            return base_;
        return base_ + bytes_.lastIndexOf('\n', offset - 1 - base_) + 1;
    }

    /// The offset behind the first line break from `offset` on; the end if there is none.
    qint64 lineEnd(qint64 offset) const
    {
        const qsizetype at = bytes_.indexOf('\n', offset - base_);
        return at < 0 ? end_ : base_ + at + 1;
    }

    /// Whether the line that a multiple of the block size is in began a block before, so that a
    /// new piece begins there.
    bool breaksAt(qint64 multiple) const
    {
        const qint64 before = multiple - BlockBytes;
        return before >= base_ && multiple < end_ && lineEnd(before) > multiple;
    }

    /// Where near that multiple the piece begins.
    qint64 breakNear(qint64 multiple) const
    {
        for (qint64 at = multiple; at > multiple - BlankSearch; --at) {
            if (isBlank(char32_t(bytes_.at(at - 1 - base_))))
                return at;
        }
        qint64 at = multiple;
        while (at > multiple - 3 && isContinuation(bytes_.at(at - base_)))
            --at;
        return isContinuation(bytes_.at(at - base_)) ? multiple : at;
    }

private:
    qint64 begin_;
    qint64 end_;
    qint64 base_;
    QByteArray bytes_;
};

TextPager::TextPager(const TextSource& source, std::function<int(char32_t)> advance)
    : source_(source), advance_(std::move(advance))
{
}

TextPager::Piece TextPager::pieceAt(qint64 offset) const
{
    const qint64 first = source_.begin();
    offset = std::clamp(offset, first, std::max(first, source_.end() - 1));
    const qint64 multiple = offset / BlockBytes * BlockBytes;
    // The last break that matters is that before the next multiple but one.
    const Window window(source_, multiple - BlockBytes, multiple + 2 * BlockBytes + 1);
    Piece piece{window.lineStart(offset), window.lineEnd(offset)};
    for (const qint64 at : {multiple, multiple + BlockBytes, multiple + 2 * BlockBytes}) {
        if (!window.breaksAt(at))
            continue;
        const qint64 start = window.breakNear(at);
        if (start <= offset)
            piece.start = std::max(piece.start, start);
        else
            piece.end = std::min(piece.end, start);
    }
    return piece;
}

std::vector<TextPager::Character> TextPager::charactersOf(const Piece& piece) const
{
    QByteArray bytes = source_.read(piece.start, piece.end - piece.start);
    if (bytes.endsWith('\n'))
        bytes.chop(bytes.endsWith("\r\n") ? 2 : 1);
    const bool isUtf8 = bytes.isValidUtf8();
    qsizetype at = piece.start == 0 && bytes.startsWith(ByteOrderMark) ? ByteOrderMark.size() : 0;
    std::vector<Character> characters;
    characters.reserve(size_t(bytes.size()));
    while (at < bytes.size()) {
        const auto lead = static_cast<unsigned char>(bytes.at(at));
        const int length = isUtf8 ? lengthOf(lead) : 1;
        const char32_t code = isUtf8 ? codeOf(bytes.constData() + at, length) : lead;
        characters.push_back({visible(code), piece.start + at});
        at += length;
    }
    return characters;
}

int TextPager::advance(char32_t character, int x) const
{
    if (character != '\t')
        return advance_(character);
    const int stop = std::max(advance_(' ') * TabColumns, 1);
    return stop - x % stop;
}

size_t TextPager::rowEnd(const std::vector<Character>& characters, size_t first) const
{
    size_t wordStart = first;
    bool inText = false;
    int x = 0;
    for (size_t i = first; i < characters.size(); ++i) {
        const char32_t code = characters[i].code;
        x += advance(code, x);
        if (isBlank(code)) {
            // Blanks may stand out; an indent is no place to break at.
            if (inText)
                wordStart = i + 1;
            continue;
        }
        inText = true;
        if (x > width_ && i > first)
            return wordStart > first ? wordStart : i;
    }
    return characters.size();
}

/// As the first letter says, signs and digits being of both kinds.
bool TextPager::beginsAtTheRight(const std::vector<Character>& characters)
{
    for (const Character& character : characters) {
        if (const std::optional<bool> direction = isRightToLeft(character.code))
            return *direction;
    }
    return false;
}

std::vector<TextRow> TextPager::rowsOf(const Piece& piece) const
{
    const std::vector<Character> characters = charactersOf(piece);
    const bool rightToLeft = beginsAtTheRight(characters);
    std::vector<TextRow> rows;
    size_t first = 0;
    do {
        const size_t last = width_ > 0 ? rowEnd(characters, first) : characters.size();
        TextRow row;
        row.rightToLeft = rightToLeft;
        row.start = first == 0 ? piece.start : characters[first].offset;
        row.end = last == characters.size() ? piece.end : characters[last].offset;
        row.text.reserve(qsizetype(last - first));
        for (size_t i = first; i < last; ++i)
            row.text += QChar::fromUcs4(characters[i].code);
        rows.push_back(std::move(row));
        first = last;
    } while (first < characters.size());
    return rows;
}

QList<TextRow> TextPager::rows(qint64 offset, int count) const
{
    QList<TextRow> result;
    offset = std::clamp(offset, source_.begin(), std::max(source_.begin(), source_.end() - 1));
    while (result.size() < count && offset < source_.end()) {
        const Piece piece = pieceAt(offset);
        if (piece.end <= offset)
            break; // cannot be read
        for (TextRow& row : rowsOf(piece)) {
            if (row.end > offset && result.size() < count)
                result.append(std::move(row));
        }
        offset = piece.end;
    }
    return result;
}

qint64 TextPager::rowStart(qint64 offset) const
{
    const QList<TextRow> row = rows(offset, 1);
    return row.isEmpty() ? source_.begin() : row.front().start;
}

qint64 TextPager::moved(qint64 offset, int count) const
{
    if (count >= 0) {
        const QList<TextRow> below = rows(offset, count + 1);
        return below.isEmpty() ? source_.begin() : below.back().start;
    }
    qint64 start = rowStart(offset);
    for (int missing = -count; missing > 0 && start > source_.begin();) {
        const Piece piece = pieceAt(start - 1);
        if (piece.end <= piece.start || piece.start >= start)
            break;
        std::vector<TextRow> above = rowsOf(piece);
        while (missing > 0 && !above.empty()) {
            if (above.back().start < start) {
                start = above.back().start;
                --missing;
            }
            above.pop_back();
        }
    }
    return start;
}

qint64 TextPager::lastPage(int count) const
{
    return moved(source_.end(), 1 - count);
}
