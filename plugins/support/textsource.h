#pragma once

#include <QByteArray>

/// The bytes of a text, found by their offsets. Between two calls it may grow, shrink or lose its
/// beginning, as files and the output of programs do.
class TextSource
{
public:
    virtual ~TextSource() = default;

    /// The offset of the first byte that is there.
    virtual qint64 begin() const { return 0; }
    /// The offset behind the last byte.
    virtual qint64 end() const = 0;
    /// Up to `count` bytes from an offset between begin() and end(); fewer at the end or when
    /// reading fails.
    virtual QByteArray read(qint64 offset, qsizetype count) const = 0;
};
