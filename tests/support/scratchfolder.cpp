#include "tests/support/scratchfolder.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>

ScratchFolder::ScratchFolder() : path_(QDir(folder_.path()).canonicalPath()) {}

ScratchFolder::~ScratchFolder()
{
    // A folder that a test locked must be opened before it can be emptied.
    bool opened = true;
    while (opened) {
        opened = false;
        QDirIterator entries(path_,
                             QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QByteArray name = QFile::encodeName(entries.next());
            struct stat info = {};
            if (lstat(name.constData(), &info) == 0 && (info.st_mode & 0700) != 0700)
                opened = chmod(name.constData(), 0700) == 0 || opened;
        }
    }
}

QString ScratchFolder::path(const QString& name) const
{
    return path_ + QLatin1Char('/') + name;
}

void ScratchFolder::write(const QString& name, const QByteArray& content) const
{
    const QString file = path(name);
    QVERIFY(QDir().mkpath(file.left(file.lastIndexOf(QLatin1Char('/')))));
    QFile output(file);
    QVERIFY2(output.open(QIODevice::WriteOnly), qPrintable(output.errorString()));
    QCOMPARE(output.write(content), content.size());
}

void ScratchFolder::writeSparse(const QString& name, qint64 bytes) const
{
    write(name);
    QVERIFY(QFile::resize(path(name), bytes));
}

QByteArray ScratchFolder::read(const QString& name) const
{
    QFile input(path(name));
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray();
}

void ScratchFolder::makeFolder(const QString& name) const
{
    QVERIFY(QDir().mkpath(path(name)));
}

void ScratchFolder::makeLink(const QString& name, const QString& target) const
{
    QVERIFY(QFile::link(target, path(name)));
}

void ScratchFolder::makeFifo(const QString& name) const
{
    QCOMPARE(mkfifo(QFile::encodeName(path(name)).constData(), 0600), 0);
}

void ScratchFolder::setMode(const QString& name, unsigned mode) const
{
    QCOMPARE(chmod(QFile::encodeName(path(name)).constData(), mode), 0);
}

void ScratchFolder::setModified(const QString& name, qint64 seconds) const
{
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    QCOMPARE(utimensat(AT_FDCWD, QFile::encodeName(path(name)).constData(), times, 0), 0);
}

bool ScratchFolder::exists(const QString& name) const
{
    struct stat info = {};
    return lstat(QFile::encodeName(path(name)).constData(), &info) == 0;
}
