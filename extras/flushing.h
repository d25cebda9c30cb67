#pragma once

#include "files/filehandle.h"

#include <QtGlobal>

#include <memory>

/// Waits in a thread of its own until files are on their medium, which on a slow one, or beside
/// others who write there, may take long. Whoever has lost interest destroys this and waits for
/// nothing: the thread ends with the call that it is in, and touches nothing of its owner's.
class Flushing
{
public:
    enum class What {
        Data,      ///< a file's content
        File,      ///< a file, or the names in a folder
        FileSystem ///< all of the file system that the descriptor is on
    };

    Flushing();
    ~Flushing();
    Flushing(const Flushing&) = delete;
    Flushing& operator=(const Flushing&) = delete;

    /// Adds one to be flushed after those before it. Of a handle that is not open errno tells why.
    void add(FileHandle file, What what);
    /// Begins; nothing is added any more. Where there is no thread to be had it does all at once.
    void start();
    /// Whether all is done. Waits for that, but not longer.
    bool isDone(int milliseconds);
    /// Of the one that was added as that number, when all is done: an errno, or 0. Folders that
    /// their file system does not flush by themselves have no error.
    int error(size_t number) const;
    size_t count() const;

private:
    struct Shared;

    static void run(Shared& shared);

    std::shared_ptr<Shared> shared_;
};

/// The same open file by another descriptor; not open, with errno set, if there is none.
FileHandle sameFile(int descriptor);
