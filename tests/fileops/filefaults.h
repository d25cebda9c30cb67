#pragma once

#include <QByteArray>
#include <QString>

/// Lets the use of one file go wrong in this process, while it lives. It stands between the program
/// and the system's read() and write(); one at a time.
class FileFaults
{
public:
    /// `path` is the file's canonical path; it need not be there yet.
    explicit FileFaults(const QString& path);
    ~FileFaults();
    FileFaults(const FileFaults&) = delete;
    FileFaults& operator=(const FileFaults&) = delete;

    /// Fails with `error` (an errno) as soon as that many bytes have been read or written. What
    /// comes before it works.
    void failAfter(qint64 bytes, int error);
    /// Handles no more than that many bytes in one call.
    void limitCalls(qint64 bytes) { callLimit_ = bytes; }
    /// Lets every other call be interrupted by a signal.
    void interruptCalls() { interrupts_ = true; }
    /// Lets the calls work without moving any byte, as if the file had that size: so that it can
    /// be larger than there is room.
    void pretend(qint64 size) { pretendedSize_ = size; }

    /// Bytes read and written so far.
    qint64 done() const { return done_; }

    // For what stands in between.
    static FileFaults* of(int descriptor);
    using Call = qint64 (*)(int descriptor, char* bytes, qint64 size);
    qint64 handle(const Call& call, int descriptor, char* bytes, qint64 size);

private:
    QByteArray path_;
    qint64 failAt_ = -1;
    int error_ = 0;
    qint64 callLimit_ = -1;
    bool interrupts_ = false;
    bool interruptNext_ = true;
    qint64 pretendedSize_ = -1;
    qint64 done_ = 0;
};
