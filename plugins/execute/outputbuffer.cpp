#include "plugins/execute/outputbuffer.h"

namespace
{

constexpr char Escape = '\x1b';
constexpr char Bell = '\a';

} // namespace

void OutputBuffer::append(const QByteArray& bytes)
{
    for (const char byte : bytes)
        take(byte);
    dropBeginning();
}

void OutputBuffer::clear()
{
    *this = OutputBuffer();
}

QByteArray OutputBuffer::read(qint64 offset, qsizetype count) const
{
    return offset < begin_ ? QByteArray() : text_.mid(offset - begin_, count);
}

void OutputBuffer::take(char byte)
{
    switch (state_) {
    case State::Text:
        takeText(byte);
        break;
    case State::Return:
        if (byte != '\n' && byte != '\r')
            text_.truncate(text_.lastIndexOf('\n') + 1);
        state_ = State::Text;
        takeText(byte);
        break;
    case State::Escape:
        state_ = byte == '[' ? State::Sequence : byte == ']' ? State::Title : State::Text;
        break;
    case State::Sequence:
        // Parameters come before the letter that says what it is about. What is out of place ends
        // it, so that nothing is swallowed without end.
        if (byte < ' ' || byte >= '@')
            state_ = State::Text;
        if (byte == '\n')
            takeText(byte);
        break;
    case State::Title:
        if (byte == Bell || byte == '\n' || byte == Escape)
            state_ = byte == Escape ? State::Escape : State::Text;
        if (byte == '\n')
            takeText(byte);
        break;
    }
}

void OutputBuffer::takeText(char byte)
{
    if (byte == '\r')
        state_ = State::Return;
    else if (byte == Escape)
        state_ = State::Escape;
    else
        text_ += byte;
}

void OutputBuffer::dropBeginning()
{
    // Not for every byte, and from the start of a line on if that is near.
    constexpr qsizetype Slack = KeptBytes / 4;
    constexpr qsizetype LineSearch = 4 * 1024;
    if (text_.size() <= KeptBytes + Slack)
        return;
    qsizetype drop = text_.size() - KeptBytes;
    const qsizetype line = text_.indexOf('\n', drop - 1);
    if (line >= 0 && line < drop + LineSearch)
        drop = line + 1;
    text_.remove(0, drop);
    begin_ += drop;
}
