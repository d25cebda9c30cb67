#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <functional>
#include <memory>

/// Lets calls of the system go wrong in this process while it lives, for whatever links this; one
/// at a time. Files are told by nothing: a test has only those of the operation open.
class CallFaults
{
public:
    CallFaults();
    ~CallFaults();
    CallFaults(const CallFaults&) = delete;
    CallFaults& operator=(const CallFaults&) = delete;

    /// Writing to files of the target fails so, as soon as that many bytes have been written.
    void failWriting(qint64 afterBytes, int error);
    /// Reading fails so, as soon as that many bytes have been read.
    void failReading(qint64 afterBytes, int error);
    /// Flushing fails so: of all files together and, if that is meant, of each.
    void failFlushing(int error, bool ofEach);
    /// Parts of a file cannot be written out, though the file can be flushed.
    void failWritingOut(int error);
    /// Flushing does not come to an end, of whatever, before this is destroyed.
    void holdFlushing();
    /// Whether something is being flushed, while flushing is held.
    bool isFlushing() const;
    enum class Call { WriteOut, Cut, Remove, Rename, Read };
    /// The same for another call.
    void hold(Call call);
    bool isHolding() const { return isFlushing(); }
    /// rename() and its like fail so, when `after` of them have worked.
    void failRenaming(int after, int error);
    /// Nothing can say that a name must be free.
    void forgetNoReplace();
    /// Runs before each rename() that may replace what has the name.
    void beforeReplacing(std::function<void()> work);
    /// Open files do not know how large they are.
    void hideSizes();
    /// Flushing a file or folder with that number fails so.
    void failFlushingOf(quint64 inode, int error);
    /// Every file system is of that kind.
    void pretendKind(quint64 kind);
    /// Every file system has that many free blocks of that size.
    void pretendRoom(qint64 blockBytes, qint64 blocks);
    /// Extended attributes whose names begin so cannot be set.
    void failSetting(const QByteArray& start, int error);
    /// Open files have that extended attribute alone, whatever else they have.
    void pretendAttribute(const QByteArray& name);
    /// Owners cannot be set.
    void failOwning(int error);
    /// Permissions of open files cannot be set; they stay what they are without an error if that is
    /// 0.
    void failPermitting(int error);
    /// A file cannot get another name.
    void failLinking(int error);
    /// Copying within the system works while this lives, and files can share their content if that
    /// is meant; how often that was done, and how often bytes were written.
    void letCopy(bool canShare);
    int shared() const;
    int copied() const;
    int written() const;
    /// Runs before each read of a file, with the number of such calls before it.
    void beforeReading(std::function<void(int)> work);
    /// Moves and links from one folder to another seem to leave the file system.
    void separateFolders();
};
