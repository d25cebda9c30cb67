#pragma once

#include "extras/metadata.h"
#include "extras/operationtypes.h"
#include "extras/pace.h"
#include "files/filehandle.h"

#include <QByteArray>

#include <memory>
#include <sys/stat.h>

/// Copies one regular file to a new name, with all that it has: holes, owner, permissions, times,
/// extended attributes. Piece by piece; what is large is written out as it goes. When it is done it
/// is whole, but the last of it may still wait in memory.
class FileCopy
{
public:
    enum class Step { More, Done, Failed };

    /// The source is the entry `name` of a folder that was seen with `info`. The folder's
    /// descriptor is used by start() alone. `pace` outlives it.
    FileCopy(const QByteArray& name, const struct stat& info, Pace& pace);
    ~FileCopy();

    /// Opens the source and makes the new file. Failed if one of them cannot be.
    Step start(int sourceFolder, int targetFolder, const QByteArray& newName);
    Step step();

    /// Bytes of the source that have been written out; those that wait in memory do not count.
    qint64 flushed() const { return flushed_; }
    /// Bytes that wait in memory for sure.
    qint64 waiting() const { return at_ - flushed_; }
    /// Bytes that have been copied; of what does not know its size no other number tells.
    qint64 copied() const { return at_; }
    /// What went wrong, after Failed. The new file, if there is one, is the caller's to remove.
    Trouble trouble() const { return trouble_; }
    int error() const { return error_; }
    /// After Done: what of it could not be kept.
    const Kept& kept() const { return kept_; }
    bool hasMade() const { return to_.isOpen(); }
    /// What the system said about the source when it was opened, and about the new file when it was
    /// made; after Done when it was whole.
    const struct stat& source() const { return info_; }
    const struct stat& made() const { return made_; }

private:
    enum class State { Cloning, Data, Ending };
    enum class Means { Range, Blocks };

    Step failed(Trouble trouble, int error);
    Step clone();
    Step copyPiece();
    bool mayHaveHoles() const;
    bool findData(qint64& end);
    qint64 expectedBytes() const;
    qint64 copyBytes(qint64 size);
    qint64 copyByBlocks(qint64 size);
    bool writeOut(qint64 bytes);
    Step end();
    Step again();

    QByteArray name_;
    struct stat info_ = {};
    struct stat made_ = {};
    Pace& pace_;
    FileHandle from_;
    FileHandle to_;
    State state_ = State::Cloning;
    Means means_ = Means::Range;
    bool keepsHoles_ = true; ///< where it is made
    bool hasHoles_ = false;
    bool isSecondTry_ = false;
    qint64 at_ = 0;      ///< copied so far
    qint64 begun_ = 0;   ///< from where on the medium has been told to write, not yet waited for
    qint64 flushed_ = 0; ///< written out so far
    Trouble trouble_ = Trouble::CannotRead;
    int error_ = 0;
    Kept kept_;
    std::unique_ptr<char[]> block_;
};
