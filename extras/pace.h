#pragma once

#include <QtGlobal>

/// Of a clock that never goes back.
qint64 microsecondsNow();

/// How much is written at a time, by the measured speed of a medium: so that each piece takes about
/// as long on a slow card as on a fast disk, and a cancel is never far from being heard.
class Pace
{
public:
    /// Bytes to be copied in one go.
    qint64 pieceBytes() const { return pieceBytes_; }
    /// Bytes that may wait in memory before they are flushed together.
    qint64 batchBytes() const { return batchBytes_; }
    /// And as many entries.
    qint64 batchEntries() const { return batchEntries_; }

    /// How long it took to copy a piece, and to flush a batch.
    void notePiece(qint64 bytes, qint64 microseconds);
    void noteFlush(qint64 bytes, qint64 entries, qint64 microseconds);

private:
    qint64 pieceBytes_ = 1024 * 1024;
    qint64 batchBytes_ = 8 * 1024 * 1024;
    qint64 batchEntries_ = 256;
};
