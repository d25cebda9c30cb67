#pragma once

#include "plugins/support/textsource.h"

/// The last part of what a program wrote, as a terminal without colours would show it: escape
/// sequences are left out, and a "\r" lets what follows take the place of the line.
class OutputBuffer : public TextSource
{
public:
    static constexpr qsizetype KeptBytes = 512 * 1024;

    void append(const QByteArray& bytes);
    void clear();

    qint64 begin() const override { return begin_; }
    qint64 end() const override { return begin_ + text_.size(); }
    QByteArray read(qint64 offset, qsizetype count) const override;

private:
    enum class State { Text, Return, Escape, Sequence, Title };

    void take(char byte);
    void takeText(char byte);
    void dropBeginning();

    QByteArray text_;
    qint64 begin_ = 0;
    State state_ = State::Text;
};
