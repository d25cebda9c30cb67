#pragma once

#include "extras/journalrecord.h"
#include "files/filehandle.h"

#include <QByteArray>
#include <QList>

#include <memory>

/// The journal of an operation that is at work: a file that tells what is about to be done, so that
/// the next start can finish it or take it back. It is locked as long as this lives. What is added
/// is on the medium after flush(), not before.
class Journal
{
public:
    /// Begins one with a request and what was answered before. Null, with errno set, if that cannot
    /// be written.
    static std::unique_ptr<Journal> begin(const OperationRequest& request,
                                          const QList<JournalRecord>& decisions);
    /// Goes on with one. Null, with errno set, if it is gone or another instance's (EWOULDBLOCK).
    /// What cannot be read at its end is cut off; a damage leaves a record of itself, and so does
    /// that what was cancelled goes on.
    static std::unique_ptr<Journal> resume(const QByteArray& path);
    /// Adds a record to one that somebody else is at work with, in this process, and does not wait
    /// for the medium. Nothing if it is gone, or there is no room.
    static void note(const QByteArray& path, JournalRecord::Type type);

    /// Full path.
    const QByteArray& path() const { return path_; }
    /// What the names of all temporary entries of this operation begin with.
    const QByteArray& temporaryPrefix() const { return prefix_; }
    quint64 device() const { return device_; }
    int descriptor() const { return file_.get(); }

    void add(const JournalRecord& record);
    /// Hands what was added to the system, without waiting for the medium. False, with errno set,
    /// if that fails; what was added is kept then.
    bool write();
    /// The same, and waits.
    bool flush();
    /// Whether all that write() has handed over is on the medium; somebody else may see to that.
    bool isFlushed() const { return isFlushed_; }
    void setFlushed() { isFlushed_ = true; }
    /// Removes the file. `isLasting`: waits until that is on the medium.
    void remove(bool isLasting = true);

private:
    Journal(const QByteArray& path, FileHandle file);

    QByteArray path_;
    QByteArray prefix_;
    FileHandle file_;
    quint64 device_ = 0;
    QByteArray waiting_;
    bool isFlushed_ = true;
};

/// The name that every temporary entry of any operation begins with.
inline constexpr const char* TemporaryStart = ".quarn-";
