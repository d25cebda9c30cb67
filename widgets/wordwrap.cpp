#include "widgets/wordwrap.h"

namespace
{

/// Breaks one paragraph; positions are in UTF-16 units.
class ParagraphWrapper
{
public:
    ParagraphWrapper(const QString& text, int usableWidth,
                     const std::function<int(char32_t)>& advance, QStringList& lines)
        : text_(text), usableWidth_(usableWidth), advance_(advance), lines_(lines)
    {
    }

    void wrap()
    {
        qsizetype next = 0;
        while (next < text_.size())
            next = take(next);
        if (start_ < text_.size())
            lines_.append(text_.mid(start_));
    }

private:
    /// Adds the character at a position to the line and returns the position behind it.
    qsizetype take(qsizetype position)
    {
        char32_t character = text_.at(position).unicode();
        qsizetype behind = position + 1;
        if (text_.at(position).isHighSurrogate() && behind < text_.size() &&
            text_.at(behind).isLowSurrogate()) {
            character = QChar::surrogateToUcs4(text_.at(position), text_.at(behind));
            ++behind;
        }
        width_ += advance_(character);
        // A line is not broken before its first word.
        if (character == U' ' && position > start_) {
            space_ = position;
            widthToSpace_ = width_;
        }
        if (width_ > usableWidth_)
            breakLine(behind);
        return behind;
    }

    void breakLine(qsizetype behind)
    {
        const bool atSpace = space_ >= 0;
        const qsizetype end = atSpace ? space_ : behind;
        lines_.append(text_.mid(start_, end - start_));
        start_ = atSpace ? space_ + 1 : behind;
        width_ = atSpace ? width_ - widthToSpace_ : 0;
        space_ = -1;
    }

    const QString& text_;
    int usableWidth_;
    const std::function<int(char32_t)>& advance_;
    QStringList& lines_;
    qsizetype start_ = 0;
    qsizetype space_ = -1;
    int width_ = 0;
    int widthToSpace_ = 0;
};

} // namespace

QStringList wrapWords(const QString& text, int usableWidth,
                      const std::function<int(char32_t)>& advance)
{
    QStringList lines;
    const QStringList paragraphs = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& paragraph : paragraphs)
        ParagraphWrapper(paragraph, usableWidth, advance, lines).wrap();
    return lines;
}
