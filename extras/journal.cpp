#include "extras/journal.h"

#include "extras/foldercursor.h"
#include "extras/journalreader.h"
#include "extras/journals.h"

#include <QRandomGenerator>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <mutex>
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

/// Who writes to a journal: a record must not come into the midst of another one.
std::mutex& writing()
{
    static std::mutex mutex;
    return mutex;
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

/// All or nothing: what follows must not stand behind half a record.
bool append(int file, const QByteArray& bytes)
{
    const off_t before = lseek(file, 0, SEEK_END);
    if (writeAll(file, bytes))
        return true;
    const int error = errno;
    static_cast<void>(!ftruncate(file, before));
    errno = error;
    return false;
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
    bool isCancelled = false;
    while (reader.next(record)) {
        if (record.type == JournalRecord::Type::Cancelled)
            isCancelled = true;
        else if (record.type == JournalRecord::Type::Resumed)
            isCancelled = false;
    }
    const bool isDamaged = reader.isDamaged();
    if (ftruncate(file.get(), reader.offset()) != 0)
        return nullptr;
    std::unique_ptr<Journal> journal(new Journal(path, std::move(file)));
    const auto add = [&journal](JournalRecord::Type type) {
        JournalRecord note;
        note.type = type;
        journal->add(note);
    };
    if (isDamaged)
        add(JournalRecord::Type::Damage);
    if (isCancelled)
        add(JournalRecord::Type::Resumed);
    return journal->flush() ? std::move(journal) : nullptr;
}

void Journal::note(const QByteArray& path, JournalRecord::Type type)
{
    const FileHandle file(open(path.constData(), O_WRONLY | O_CLOEXEC | O_APPEND | O_NOFOLLOW));
    if (!file.isOpen())
        return;
    JournalRecord record;
    record.type = type;
    const std::lock_guard lock(writing());
    static_cast<void>(append(file.get(), JournalReader::framed(record.toBytes())));
}

void Journal::add(const JournalRecord& record)
{
    waiting_ += JournalReader::framed(record.toBytes());
}

bool Journal::write()
{
    if (waiting_.isEmpty())
        return true;
    const std::lock_guard lock(writing());
    if (!append(file_.get(), waiting_))
        return false;
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
