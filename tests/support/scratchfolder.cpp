#include "tests/support/scratchfolder.h"

#include "files/entry.h"
#include "files/names.h"
#include "files/paths.h"
#include "files/regularfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

#include <fcntl.h>
#include <filesystem>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace
{

constexpr char MemoryFolder[] = "/dev/shm";
constexpr quint64 EnoughBytes = 64 * 1024 * 1024;
constexpr quint64 EnoughEntries = 50'000;

/// Whether the folder is a writable file system in memory that takes what a test makes.
bool memoryHasRoom()
{
    struct statfs info = {};
    if (statfs(MemoryFolder, &info) != 0 || info.f_type != TMPFS_MAGIC ||
        access(MemoryFolder, W_OK | X_OK) != 0)
        return false;
    const bool counted = info.f_files > 0; // no number means no limit
    return quint64(info.f_bavail) * quint64(info.f_bsize) >= EnoughBytes &&
           (!counted || info.f_ffree >= EnoughEntries);
}

QString templateIn(const QString& folder)
{
    return folder + QStringLiteral("/%1-XXXXXX").arg(QCoreApplication::applicationName());
}

/// Lets everything below a folder be listed and removed.
void unlock(const std::filesystem::path& folder)
{
    using std::filesystem::perms;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        if (!entry.is_directory(ignored) || entry.is_symlink(ignored))
            continue;
        std::filesystem::permissions(entry, perms::owner_all, std::filesystem::perm_options::add,
                                     ignored);
        unlock(entry);
    }
}

/// Makes a folder and those above it that are missing. True if it is there in the end.
bool makeFolders(const QString& path)
{
    std::error_code ignored;
    const std::filesystem::path folder(encodedPath(path).toStdString());
    std::filesystem::create_directories(folder, ignored);
    return std::filesystem::is_directory(folder, ignored);
}

} // namespace

ScratchFolder::ScratchFolder(Medium medium)
    : folder_(templateIn(medium == Memory && memoryHasRoom() ? QString::fromLatin1(MemoryFolder)
                                                             : QDir::tempPath())),
      path_(canonicalPath(folder_.path()))
{
}

ScratchFolder::~ScratchFolder()
{
    const std::filesystem::path own(encodedPath(path_).toStdString());
    std::error_code ignored;
    unlock(own);
    std::filesystem::remove_all(own, ignored);
}

QString ScratchFolder::path(const QString& name) const
{
    return path_ + QLatin1Char('/') + name;
}

void ScratchFolder::write(const QString& name, const QByteArray& content) const
{
    const QString file = path(name);
    QString folder = folderPart(file);
    folder.chop(1);
    QVERIFY(makeFolders(folder));
    const FileHandle output(
        open(encodedPath(file).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    QVERIFY2(output.isOpen(), qPrintable(qt_error_string()));
    QCOMPARE(::write(output.get(), content.constData(), size_t(content.size())), content.size());
}

void ScratchFolder::writeSparse(const QString& name, qint64 bytes) const
{
    write(name);
    QCOMPARE(truncate(encodedPath(path(name)).constData(), bytes), 0);
}

QByteArray ScratchFolder::read(const QString& name) const
{
    QFile input;
    return openRegular(input, path(name)) ? input.readAll() : QByteArray();
}

void ScratchFolder::makeFolder(const QString& name) const
{
    QVERIFY(makeFolders(path(name)));
}

void ScratchFolder::makeLink(const QString& name, const QString& target) const
{
    QCOMPARE(symlink(encodedPath(target).constData(), encodedPath(path(name)).constData()), 0);
}

void ScratchFolder::makeFifo(const QString& name) const
{
    QCOMPARE(mkfifo(encodedPath(path(name)).constData(), 0600), 0);
}

void ScratchFolder::setMode(const QString& name, unsigned mode) const
{
    QCOMPARE(chmod(encodedPath(path(name)).constData(), mode), 0);
}

void ScratchFolder::setModified(const QString& name, qint64 seconds) const
{
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    QCOMPARE(utimensat(AT_FDCWD, encodedPath(path(name)).constData(), times, 0), 0);
}

bool ScratchFolder::exists(const QString& name) const
{
    return isTaken(path(name));
}
