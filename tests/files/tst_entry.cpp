#include "files/entry.h"
#include "files/folderscan.h"
#include "files/names.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace
{

/// Texts of names that are no UTF-8 or begin with a mark.
QStringList oddNames()
{
    QStringList names{QString(QChar(0xfeff)), QChar(0xfeff) + QStringLiteral("a"),
                      QString(2, QChar(0xfeff))};
    for (const char* bytes : {"\xff", "a\xff", "\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xe2\x82"})
        names.append(decodeName(bytes));
    return names;
}

} // namespace

class tst_Entry : public QObject
{
    Q_OBJECT

private slots:
    void infoIsThatOfTheToolkit_data();
    void infoIsThatOfTheToolkit();
    void oddNamesAreEntriesOfTheirOwn();
    void changesReachOddNames();
    void textsThatStandForNothingAreNothing();
    void whatIsThereIsNotReplaced();
    void anotherEntryOfTheSameNameIsAnother();
    void entryMadeAnewIsAnotherOne();
    void canonicalPathsKeepAllBytes();
    void absolutePathsKeepLinks();
};

void tst_Entry::infoIsThatOfTheToolkit_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"file", "empty", "folder", "fifo", "toFile", "toFolder", "toFifo",
                             "nowhere", "loop", "missing", "file/x", "folder/", "secret"})
        QTest::newRow(name) << QString(name);
}

void tst_Entry::infoIsThatOfTheToolkit()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write("file", "content");
    folder.write("empty");
    folder.write("secret");
    folder.setMode("secret", 0);
    folder.makeFolder("folder");
    folder.makeFifo("fifo");
    folder.makeLink("toFile", "file");
    folder.makeLink("toFolder", "folder");
    folder.makeLink("toFifo", "fifo");
    folder.makeLink("nowhere", "gone");
    folder.makeLink("loop", "loop");
    const QFileInfo theirs(folder.path(name));
    const EntryInfo ours(folder.path(name));
    QCOMPARE(ours.exists(), theirs.exists());
    QCOMPARE(entryExists(folder.path(name)), theirs.exists());
    QCOMPARE(ours.isLink(), theirs.isSymLink());
    QCOMPARE(ours.isFolder(), theirs.isDir());
    QCOMPARE(ours.isFile(), theirs.isFile());
    QCOMPARE(ours.size(), theirs.size());
    QCOMPARE(ours.owner(), theirs.owner());
    const auto granted = QFileDevice::Permissions::fromInt(
        int((ours.mode() & 0700U) << 6U | (ours.mode() & 0070U) << 1U | (ours.mode() & 0007U)));
    const auto users = QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser;
    QCOMPARE(granted, theirs.permissions() & ~users);
}

void tst_Entry::oddNamesAreEntriesOfTheirOwn()
{
    const ScratchFolder folder;
    const QStringList names = oddNames();
    for (const QString& name : names) {
        QVERIFY(!isTaken(folder.path(name)));
        folder.write(name, encodedPath(name));
    }
    for (const QString& name : names)
        QCOMPARE(EntryInfo(folder.path(name)).size(), encodedPath(name).size());
    const auto listed = FolderScan::read(folder.path(), false);
    QVERIFY(listed);
    QCOMPARE(listed->others().size(), size_t(names.size()));
}

void tst_Entry::changesReachOddNames()
{
    for (const QString& name : oddNames()) {
        const ScratchFolder folder;
        const QString renamed = folder.path(name + QLatin1Char('x'));
        folder.write("a", "content");
        QVERIFY(renameEntry(folder.path("a"), folder.path(name)));
        QVERIFY(isTaken(folder.path(name)));
        QVERIFY(renameEntry(folder.path(name), renamed));
        QVERIFY(removeFile(renamed));
        QVERIFY(makeFolder(folder.path(name)));
        QVERIFY(!makeFolder(folder.path(name)));
        QVERIFY(EntryInfo(folder.path(name)).isFolder());
    }
}

void tst_Entry::textsThatStandForNothingAreNothing()
{
    const ScratchFolder folder;
    folder.write("a");
    for (const QString& end : {QString(QChar(u'\0')), QString(QChar(0xd800)),
                               QString(QChar(0xdcc3)) + QString(QChar(0xdca4))}) {
        const QString path = folder.path("a") + end;
        QVERIFY(!EntryInfo(path).exists());
        QVERIFY(!entryId(path));
        QVERIFY(!isTaken(path));
        QVERIFY(!removeFile(path));
        QVERIFY(!makeFolder(path));
        QVERIFY(!renameEntry(folder.path("a"), path));
        QVERIFY(!renameEntry(path, folder.path("b")));
        QCOMPARE(canonicalPath(path), QString());
    }
    QVERIFY(!entryExists(QString()));
    QVERIFY(folder.exists("a"));
    QCOMPARE(QDir(folder.path()).count(), 3U);
}

void tst_Entry::whatIsThereIsNotReplaced()
{
    const ScratchFolder folder;
    folder.write("a", "a");
    folder.write("b", "b");
    folder.makeLink("nowhere", "gone");
    QVERIFY(!renameEntry(folder.path("a"), folder.path("b")));
    QVERIFY(!renameEntry(folder.path("a"), folder.path("nowhere")));
    QCOMPARE(folder.read("a"), QByteArray("a"));
    QCOMPARE(folder.read("b"), QByteArray("b"));
}

void tst_Entry::anotherEntryOfTheSameNameIsAnother()
{
    const ScratchFolder folder;
    folder.write("a");
    folder.write("b");
    folder.makeLink("link", "a");
    const auto before = entryId(folder.path("a"));
    QVERIFY(before);
    QCOMPARE(entryId(folder.path("a")) == before, true);
    QCOMPARE(entryId(folder.path("b")) == before, false);
    QCOMPARE(entryId(folder.path("link")) == before, false);
    QCOMPARE(std::rename(encodedPath(folder.path("b")).constData(),
                         encodedPath(folder.path("a")).constData()),
             0);
    QCOMPARE(entryId(folder.path("a")) == before, false);
    QVERIFY(!entryId(folder.path("b")));
}

void tst_Entry::entryMadeAnewIsAnotherOne()
{
    const ScratchFolder folder;
    folder.write("a");
    const auto before = entryId(folder.path("a"));
    // File systems use the numbers of files again, and tell births to the tick of the clock.
    const auto tick = [] {
        timespec now{};
        clock_gettime(CLOCK_REALTIME_COARSE, &now);
        return std::pair(now.tv_sec, now.tv_nsec);
    };
    const auto start = tick();
    QTRY_VERIFY(tick() != start);
    QVERIFY(removeFile(folder.path("a")));
    folder.write("a");
    QCOMPARE(entryId(folder.path("a")) == before, false);
}

void tst_Entry::canonicalPathsKeepAllBytes()
{
    for (const QString& name : oddNames()) {
        const ScratchFolder folder;
        folder.makeFolder(name + QStringLiteral("/in"));
        folder.makeLink("link", folder.path(name));
        QCOMPARE(canonicalPath(folder.path("link/in")), folder.path(name + QStringLiteral("/in")));
        QCOMPARE(canonicalPath(folder.path(name + QStringLiteral("/in/.."))), folder.path(name));
    }
    QCOMPARE(canonicalPath(QStringLiteral("/..")), QStringLiteral("/"));
    QCOMPARE(canonicalPath(QString()), QDir::currentPath());
}

void tst_Entry::absolutePathsKeepLinks()
{
    const QString here = QDir::currentPath();
    QCOMPARE(absolutePath("a"), here + "/a");
    QCOMPARE(absolutePath("./a"), here + "/a");
    QCOMPARE(absolutePath("/a//b/./c/../d"), QStringLiteral("/a/b/c/../d"));
    QCOMPARE(absolutePath("/"), QStringLiteral("/"));
    QVERIFY(QDir::setCurrent("/"));
    QCOMPARE(absolutePath("a"), QStringLiteral("/a"));
    QVERIFY(QDir::setCurrent(here));
}

QUARN_TEST_MAIN(tst_Entry)
#include "tst_entry.moc"
