#pragma once

#include <QByteArray>
#include <QString>

/// Reads the lines of a text file: what ends them, "\n" or "\r\n", is left out, and so is a
/// byte-order mark at the start of the file. Bytes that are no UTF-8 are as decodeName() gives
/// them.
class TextLines
{
public:
    explicit TextLines(const QByteArray& content);

    bool atEnd() const { return position_ >= content_.size(); }
    /// The next line; null at the end.
    QString next();

private:
    QByteArray content_;
    qsizetype position_ = 0;
};
