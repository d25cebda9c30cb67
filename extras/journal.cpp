#include "extras/journal.h"

#include "extras/foldercursor.h"
#include "extras/journalreader.h"
#include "extras/journals.h"

#include <QRandomGenerator>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// Makes a folder with those above it that are missing; nobody else may look into it.
bool makeFolders(const QByteArray& path)
{
    if (mkdir(path.constData(), 0700) == 0 || errno == EEXIST)
        return true;
    return errno == ENOENT && path.size() > 1 && makeFolders(parentOf(path)) &&
           mkdir(path.constData(), 0700) == 0;
}

bool writeAll(int file, const QByteArray& bytes)
{
    for (qsizetype put = 0; put < bytes.size();) {
        const ssize_t written = ::write(file, bytes.constData() + put, size_t(bytes.size() - put));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        put += written;
    }
    return true;
}

qint64 now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

bool flushFolderOf(const QByteArray& path)
{
    const FileHandle folder = FolderCursor::openTop(parentOf(path));
    return folder.isOpen() && fsync(folder.get()) == 0;
}

} // namespace

Journal::Journal(const QByteArray& path, FileHandle file) : path_(path), file_(std::move(file))
{
    const QByteArray name = nameOf(path);
    prefix_ = TemporaryStart + name.left(name.indexOf('.')) + '-';
    struct stat info = {};
    if (fstat(file_.get(), &info) == 0)
        device_ = info.st_dev;
}

std::unique_ptr<Journal> Journal::begin(const OperationRequest& request,
                                        const QList<JournalRecord>& decisions)
{
    const QByteArray folder = journalFolder();
    if (!makeFolders(folder))
        return nullptr;
    const QByteArray id = QByteArray::number(QRandomGenerator::system()->generate64(), 36);
    const QByteArray path = folder + '/' + id + ".journal";
    // Until it says what is asked for, nobody shall take it for a journal.
    const QByteArray beginning = folder + '/' + id + ".new";
    FileHandle file(
        open(beginning.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_APPEND, 0600));
    if (!file.isOpen())
        return nullptr;
    JournalRecord first;
    first.type = JournalRecord::Type::Request;
    first.request = request;
    first.started = now();
    QByteArray bytes = JournalReader::fileStart() + JournalReader::framed(first.toBytes());
    for (const JournalRecord& decision : decisions)
        bytes += JournalReader::framed(decision.toBytes());
    const bool began = flock(file.get(), LOCK_EX | LOCK_NB) == 0 && writeAll(file.get(), bytes) &&
                       fsync(file.get()) == 0 &&
                       rename(beginning.constData(), path.constData()) == 0 && flushFolderOf(path);
    if (!began) {
        const int error = errno;
        unlink(beginning.constData());
        unlink(path.constData());
        errno = error;
        return nullptr;
    }
    return std::unique_ptr<Journal>(new Journal(path, std::move(file)));
}

std::unique_ptr<Journal> Journal::resume(const QByteArray& path)
{
    FileHandle file(open(path.constData(), O_RDWR | O_CLOEXEC | O_APPEND | O_NOFOLLOW));
    if (!file.isOpen() || flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return nullptr;
    // Its owner may have removed it while the lock was waited for.
    struct stat info = {};
    if (fstat(file.get(), &info) != 0 || info.st_nlink == 0) {
        errno = ENOENT;
        return nullptr;
    }
    JournalReader reader(file.get());
    JournalRecord record;
    if (!reader.next(record) || record.type != JournalRecord::Type::Request) {
        errno = EBADMSG;
        return nullptr;
    }
    while (reader.next(record)) {
    }
    const bool isDamaged = reader.isDamaged();
    if (ftruncate(file.get(), reader.offset()) != 0)
        return nullptr;
    std::unique_ptr<Journal> journal(new Journal(path, std::move(file)));
    if (isDamaged) {
        JournalRecord damage;
        damage.type = JournalRecord::Type::Damage;
        journal->add(damage);
        if (!journal->flush())
            return nullptr;
    }
    return journal;
}

void Journal::add(const JournalRecord& record)
{
    waiting_ += JournalReader::framed(record.toBytes());
}

bool Journal::write()
{
    if (waiting_.isEmpty())
        return true;
    const off_t before = lseek(file_.get(), 0, SEEK_END);
    if (!writeAll(file_.get(), waiting_)) {
        // What follows must not stand behind half a record.
        const int error = errno;
        static_cast<void>(!ftruncate(file_.get(), before));
        errno = error;
        return false;
    }
    waiting_.clear();
    isFlushed_ = false;
    return true;
}

bool Journal::flush()
{
    if (!write())
        return false;
    if (!isFlushed_ && fdatasync(file_.get()) != 0)
        return false;
    isFlushed_ = true;
    return true;
}

void Journal::remove(bool isLasting)
{
    unlink(path_.constData());
    // What has come to its end must not be offered again.
    if (isLasting)
        flushFolderOf(path_);
}
