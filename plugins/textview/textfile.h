#pragma once

#include "plugins/support/textsource.h"

#include <QFile>
#include <QString>

/// The text of a file, read where it is asked for. It may change meanwhile, and go on being read
/// when its name is gone.
class TextFile : public TextSource
{
public:
    /// Of what the kernel makes up as it is read, and so has no size, this much is kept, bytes.
    static constexpr qsizetype MaxMadeUpBytes = 4 * 1024 * 1024;

    /// False when the path is no regular file that can be read; `problem` then says why.
    bool open(const QString& path, QString& problem);

    qint64 end() const override;
    QByteArray read(qint64 offset, qsizetype count) const override;

private:
    QByteArray fromFile(qint64 offset, qsizetype count) const;

    QFile file_;
    QByteArray madeUp_;
};
