#pragma once

#include "extras/journalrecord.h"

#include <QByteArray>

/// Reads a journal from an open file, record by record, in any order. Ends where a record is torn
/// or damaged: nothing behind that is believed.
class JournalReader
{
public:
    /// Does not own the descriptor and does not move its position.
    explicit JournalReader(int file);

    /// Whether the file begins as a journal does.
    bool isJournal() const { return isJournal_; }
    /// Whether it begins as those of an older version did, which nothing here can read.
    bool isOlder() const { return isOlder_; }
    /// The record at offset(), which then is behind it. False at the end.
    bool next(JournalRecord& record);
    /// After next() was false: whether that is because of a damage, and not because the writing of
    /// the last record was cut short, which loses nothing that has been done.
    bool isDamaged();
    /// Where the next record begins, bytes; after next() was false: where what can be read ends.
    qint64 offset() const { return offset_; }
    void seek(qint64 offset) { offset_ = offset; }

    /// The bytes of a file's beginning, and those of a record with what is around it.
    static QByteArray fileStart();
    static QByteArray framed(const QByteArray& record);

private:
    /// Bytes from a place of the file, fewer at its end; valid until the next call.
    QByteArrayView bytesAt(qint64 offset, qint64 size);
    qint64 sizeAt(qint64 offset);
    bool isIntactAt(qint64 offset);

    int file_;
    bool isJournal_ = false;
    bool isOlder_ = false;
    qint64 offset_ = 0;
    QByteArray buffer_;
    qint64 bufferAt_ = 0;
};
