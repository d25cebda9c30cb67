#include "extras/filecopy.h"

#include "extras/entrychanges.h"
#include "extras/targetlimits.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

/// What is larger is written out while it is copied, what is smaller with others.
constexpr qint64 LargeFile = 4 * 1024 * 1024;
constexpr qint64 WorthTelling = 64 * 1024;
constexpr qint64 BlockBytes = 256 * 1024;

bool isSame(const struct stat& one, const struct stat& other)
{
    return one.st_size == other.st_size && nanoseconds(one.st_mtim) == nanoseconds(other.st_mtim) &&
           nanoseconds(one.st_ctim) == nanoseconds(other.st_ctim);
}

/// Whether a part of such a file is never written out by itself; anything else has gone wrong. The
/// system tells a trouble once for each opening of a file, so nobody else is told of it later.
bool isWrittenAsAWhole(int error)
{
    return error == EINVAL || error == ESPIPE || error == ENOSYS;
}

} // namespace

FileCopy::FileCopy(const QByteArray& name, const struct stat& info, Pace& pace)
    : name_(name), info_(info), pace_(pace)
{
}

FileCopy::~FileCopy() = default;

FileCopy::Step FileCopy::failed(Trouble trouble, int error)
{
    trouble_ = trouble;
    error_ = error;
    return Step::Failed;
}

FileCopy::Step FileCopy::start(int sourceFolder, int targetFolder, const QByteArray& newName)
{
    // Never waits for the other end of what has taken the file's name.
    from_.reset(openat(sourceFolder, name_.constData(),
                       O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!from_.isOpen())
        return failed(errno == ENOENT ? Trouble::Missing : Trouble::CannotRead, errno);
    if (fstat(from_.get(), &info_) != 0)
        return failed(Trouble::CannotRead, errno);
    if (!S_ISREG(info_.st_mode))
        return failed(Trouble::SourceChanged, 0);
    to_.reset(openat(targetFolder, newName.constData(),
                     O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!to_.isOpen() || fstat(to_.get(), &made_) != 0)
        return failed(Trouble::CannotMake, errno);
    // Without holes on it a file system would fill each in one go, however long that takes.
    keepsHoles_ = !mayHaveHoles() || TargetLimits::of(targetFolder).keepsHoles;
    hasHoles_ = keepsHoles_ && mayHaveHoles();
    state_ = info_.st_size > 0 ? State::Cloning : State::Data;
    return Step::More;
}

FileCopy::Step FileCopy::step()
{
    if (state_ == State::Cloning)
        return clone();
    if (state_ == State::Data)
        return copyPiece();
    return end();
}

FileCopy::Step FileCopy::clone()
{
    state_ = State::Data;
    if (info_.st_dev != made_.st_dev || ioctl(to_.get(), FICLONE, from_.get()) != 0)
        return step();
    at_ = info_.st_size;
    state_ = State::Ending;
    return Step::More;
}

bool FileCopy::mayHaveHoles() const
{
    return qint64(info_.st_blocks) * 512 < info_.st_size;
}

/// Goes to the next piece that is no hole. False at the end of the file.
bool FileCopy::findData(qint64& end)
{
    end = std::numeric_limits<qint64>::max();
    if (!hasHoles_)
        return true;
    const off_t data = lseek(from_.get(), at_, SEEK_DATA);
    if (data < 0 && errno == ENXIO)
        return false;
    if (data < 0) {
        hasHoles_ = false;
        return true;
    }
    const off_t hole = lseek(from_.get(), data, SEEK_HOLE);
    at_ = data;
    if (hole > data)
        end = hole;
    return true;
}

FileCopy::Step FileCopy::copyPiece()
{
    qint64 end = 0;
    if (!findData(end)) {
        state_ = State::Ending;
        return this->end();
    }
    const qint64 before = at_;
    const qint64 started = microsecondsNow();
    const qint64 size = std::min({pace_.pieceBytes(), end - at_, expectedBytes() - at_});
    if (size <= 0)
        state_ = State::Ending;
    while (at_ - before < size) {
        const qint64 copied = copyBytes(size - (at_ - before));
        if (copied < 0)
            return Step::Failed;
        if (copied == 0) {
            state_ = State::Ending;
            break;
        }
        at_ += copied;
    }
    if (std::max<qint64>(info_.st_size, at_) >= LargeFile && !writeOut(at_ - before))
        return failed(Trouble::CannotWrite, errno);
    pace_.notePiece(at_ - before, microsecondsNow() - started);
    return state_ == State::Ending ? this->end() : Step::More;
}

/// What grows while it is read is followed no further than it was. Files that are made up while
/// they are read do not know their size, and are read to their end, if they have one.
qint64 FileCopy::expectedBytes() const
{
    return info_.st_size > 0 ? info_.st_size : std::numeric_limits<qint64>::max();
}

/// Copies some bytes from here on. 0 at the end of the file, -1 with the trouble set if it fails.
qint64 FileCopy::copyBytes(qint64 size)
{
    if (means_ == Means::Range) {
        off_t from = at_;
        off_t to = at_;
        const ssize_t copied = copy_file_range(from_.get(), &from, to_.get(), &to, size_t(size), 0);
        if (copied > 0)
            return copied;
        // It does not say which of the two files an error is of, and of some files that there is
        // nothing: block by block it comes out.
        means_ = Means::Blocks;
    }
    return copyByBlocks(size);
}

qint64 FileCopy::copyByBlocks(qint64 size)
{
    if (block_ == nullptr)
        block_ = std::make_unique_for_overwrite<char[]>(size_t(BlockBytes));
    ssize_t got = 0;
    do {
        got = pread(from_.get(), block_.get(), size_t(std::min(size, BlockBytes)), at_);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        failed(Trouble::CannotRead, errno);
        return -1;
    }
    for (ssize_t put = 0; put < got;) {
        const ssize_t written = pwrite(to_.get(), block_.get() + put, size_t(got - put), at_ + put);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            failed(Trouble::CannotWrite, written == 0 ? ENOSPC : errno);
            return -1;
        }
        put += written;
    }
    return got;
}

/// Tells the medium to write the last piece, and waits for the one before, so that it is never
/// idle.
bool FileCopy::writeOut(qint64 bytes)
{
    const qint64 pieceBegin = at_ - bytes;
    if (begun_ < pieceBegin &&
        sync_file_range(to_.get(), begun_, pieceBegin - begun_,
                        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                            SYNC_FILE_RANGE_WAIT_AFTER) != 0 &&
        !isWrittenAsAWhole(errno))
        return false;
    flushed_ = pieceBegin;
    begun_ = pieceBegin;
    return sync_file_range(to_.get(), pieceBegin, bytes, SYNC_FILE_RANGE_WRITE) == 0 ||
           isWrittenAsAWhole(errno);
}

FileCopy::Step FileCopy::end()
{
    struct stat now = {};
    if (fstat(from_.get(), &now) != 0)
        return failed(Trouble::CannotRead, errno);
    if (!isSame(info_, now) || (info_.st_size > 0 && !hasHoles_ && at_ != info_.st_size))
        return again();
    if (hasHoles_ && ftruncate(to_.get(), info_.st_size) != 0)
        return failed(Trouble::CannotWrite, errno);
    at_ = std::max<qint64>(at_, info_.st_size);
    // Its batch is flushed sooner if the medium is at it already.
    if (at_ - begun_ >= WorthTelling)
        sync_file_range(to_.get(), begun_, 0, SYNC_FILE_RANGE_WRITE);
    kept_ = copyOwnerAndAttributes(from_.get(), to_.get(), info_);
    kept_ += setModeAndTimes(to_.get(), info_);
    if (fstat(to_.get(), &made_) != 0)
        return failed(Trouble::CannotWrite, errno);
    return Step::Done;
}

/// It was written to meanwhile: what has been copied is no state that it ever had.
FileCopy::Step FileCopy::again()
{
    if (isSecondTry_)
        return failed(Trouble::SourceChanged, 0);
    isSecondTry_ = true;
    if (ftruncate(to_.get(), 0) != 0)
        return failed(Trouble::CannotWrite, errno);
    if (fstat(from_.get(), &info_) != 0)
        return failed(Trouble::CannotRead, errno);
    hasHoles_ = keepsHoles_ && mayHaveHoles();
    at_ = begun_ = flushed_ = 0;
    state_ = State::Data;
    return Step::More;
}
