#pragma once

#include "plugins/support/textsource.h"

/// A text in memory that may have lost its beginning.
class MemoryText : public TextSource
{
public:
    explicit MemoryText(const QByteArray& bytes, qint64 lost = 0) : bytes_(bytes), lost_(lost) {}

    qint64 begin() const override { return lost_; }
    qint64 end() const override { return bytes_.size(); }
    QByteArray read(qint64 offset, qsizetype count) const override
    {
        return bytes_.mid(offset, count);
    }
    void setBytes(const QByteArray& bytes) { bytes_ = bytes; }

private:
    QByteArray bytes_;
    qint64 lost_;
};
