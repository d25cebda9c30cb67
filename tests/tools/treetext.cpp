#include "tests/tools/treetext.h"

#include <QCryptographicHash>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace
{

QByteArray contentOf(const QByteArray& path)
{
    QFile file(QFile::decodeName(path));
    // A name that is no text is opened by its descriptor.
    const int descriptor = open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFile::AutoCloseHandle))
        return "unreadable";
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1).toHex();
}

QByteArray targetOf(const QByteArray& path)
{
    return QByteArray::fromStdString(fs::read_symlink(path.toStdString()).string());
}

void addLines(const QByteArray& top, const QByteArray& below, QByteArrayList& lines)
{
    const QByteArray path = top + below;
    struct stat info = {};
    if (lstat(path.constData(), &info) != 0)
        return;
    QByteArray line = below + " mode " + QByteArray::number(info.st_mode, 8) + " owner " +
                      QByteArray::number(info.st_uid) + ':' + QByteArray::number(info.st_gid) +
                      " time " + QByteArray::number(qint64(info.st_mtim.tv_sec)) + '.' +
                      QByteArray::number(qint64(info.st_mtim.tv_nsec));
    if (S_ISREG(info.st_mode))
        line += " content " + QByteArray::number(qint64(info.st_size)) + ' ' + contentOf(path);
    if (S_ISLNK(info.st_mode))
        line += " to " + targetOf(path);
    lines.append(line);
    if (!S_ISDIR(info.st_mode))
        return;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(path.toStdString(), error))
        addLines(top, below + '/' + QByteArray::fromStdString(entry.path().filename().string()),
                 lines);
}

void ageWith(const QByteArray& path, long seconds, long nanoseconds)
{
    const std::array<timespec, 2> times{timespec{seconds - 1000, 0},
                                        timespec{seconds, nanoseconds}};
    QCOMPARE(utimensat(AT_FDCWD, path.constData(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
}

} // namespace

QByteArrayList treeText(const QByteArray& path)
{
    QByteArrayList lines;
    addLines(path, {}, lines);
    std::sort(lines.begin(), lines.end());
    return lines;
}

namespace making
{

void file(const QByteArray& path, const QByteArray& content, unsigned mode)
{
    const int descriptor = open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    QVERIFY(descriptor >= 0);
    QCOMPARE(write(descriptor, content.constData(), size_t(content.size())), content.size());
    QCOMPARE(fchmod(descriptor, mode), 0);
    QCOMPARE(close(descriptor), 0);
}

void folder(const QByteArray& path, unsigned mode)
{
    QCOMPARE(mkdir(path.constData(), 0700), 0);
    QCOMPARE(chmod(path.constData(), mode), 0);
}

void symbolicLink(const QByteArray& path, const QByteArray& target)
{
    QCOMPARE(symlink(target.constData(), path.constData()), 0);
}

void fifo(const QByteArray& path, unsigned mode)
{
    QCOMPARE(mkfifo(path.constData(), 0600), 0);
    QCOMPARE(chmod(path.constData(), mode), 0);
}

void socket(const QByteArray& path)
{
    QCOMPARE(mknod(path.constData(), S_IFSOCK | 0600, 0), 0);
}

void age(const QByteArray& path, long seconds)
{
    ageWith(path, seconds, 123456789);
}

void variety(const QByteArray& path)
{
    folder(path);
    file(path + "/empty", {}, 0600);
    file(path + "/program", "#!/bin/sh\n", 04755);
    file(path + "/large", QByteArray(700 * 1000, 'l'), 0444);
    file(path + "/a \"quoted\" 'name'", "q");
    file(path + "/two\nlines", "t");
    file(path + "/$(exit) `exit` %2 \\", "s");
    file(path + "/-rf", "d");
    file(path + "/\xd0\xbf\xd1\x80\xd0\xb8", "u");
    file(path + "/\xff\xfe not text", "b");
    file(path + '/' + QByteArray(255, 'n'), "long");
    symbolicLink(path + "/link", "large");
    symbolicLink(path + "/broken", "no/where at all");
    fifo(path + "/fifo");
    socket(path + "/socket");
    folder(path + "/.hidden", 0700);
    file(path + "/.hidden/.file", "h");
    folder(path + "/locked", 0555);
    folder(path + "/shared", 02775);
    folder(path + "/shared/deep");
    folder(path + "/shared/deep/er");
    file(path + "/shared/deep/er/one", "1", 0640);
    for (const char* name : {"/program", "/link", "/fifo", "/shared/deep/er", "/shared/deep",
                             "/shared", "/locked", "/.hidden", ""})
        age(path + name, 1200000000);
}

} // namespace making
