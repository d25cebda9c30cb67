#include "tests/browser/socketfile.h"
#include "tests/fileops/copytest.h"
#include "tests/fileops/filefaults.h"
#include "tests/support/testmain.h"
#include "tests/tools/filesystems.h"

#include <QDir>

#include <cerrno>
#include <optional>

namespace
{

QString refused()
{
    return Log::message(LANG_COPYING, "IDS_ERROR_NON_FREE_SPACE", "copy");
}

} // namespace

class tst_CopyFailures : public CopyTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void whatIsNoPlainFileIsNotCopiedBlockByBlock_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"pipe", "socket", "device", "missing", "link to nothing"})
            QTest::newRow(kind) << kind;
    }

    void whatIsNoPlainFileIsNotCopiedBlockByBlock()
    {
        QFETCH(QString, kind);
        if (kind == "pipe")
            files().makeFifo("left/a");
        else if (kind == "socket")
            makeSocket(left("a"));
        else if (kind != "missing")
            files().makeLink("left/a", kind == "device" ? "/dev/zero" : "gone");
        copyBuiltIn(left("a"));
        QCOMPARE(taken(), QStringList(Log::cleared()));
        QVERIFY(!QFile::exists(right("a")));
    }

    void pipesInATreeAreLeftOut()
    {
        write("f/a", "x");
        files().makeFifo("left/f/pipe");
        files().makeLink("left/f/device", "/dev/zero");
        copyBuiltIn(left("f"));
        QCOMPARE(QDir(right("f")).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                 QStringList{"a"});
    }

    void unreadableSourceIsPassedOver()
    {
        write("a", "secret");
        files().setMode("left/a", 0);
        copyBuiltIn(left("a"));
        QCOMPARE(taken(),
                 (QStringList{progress(left("a"), right("/a"), "0% (0 b/6 b)"), Log::cleared()}));
        QVERIFY(!QFile::exists(right("a")));
    }

    void largeSourceIsRefused_data()
    {
        QTest::addColumn<QList<qint64>>("sizes");
        QTest::newRow("a file") << QList<qint64>{2 * GiB};
        QTest::newRow("a larger file") << QList<qint64>{4 * GiB - 1};
        QTest::newRow("a file that wraps") << QList<qint64>{7 * GiB};
        QTest::newRow("a tree") << QList<qint64>{2 * GiB - 1, 1};
        QTest::newRow("a larger tree") << QList<qint64>{GiB, GiB, GiB};
        QTest::newRow("a tree that wraps") << QList<qint64>{3 * GiB, 3 * GiB};
    }

    void largeSourceIsRefused()
    {
        QFETCH(QList<qint64>, sizes);
        const bool isTree = sizes.size() > 1;
        for (qsizetype i = 0; i < sizes.size(); ++i) {
            const QString name = isTree ? QStringLiteral("left/a/%1").arg(i) : "left/a";
            files().writeSparse(name, sizes.at(i));
        }
        copyBuiltIn(left("a"));
        QCOMPARE(taken(), QStringList(refused()));
        QCOMPARE(QFileInfo(right("a")).isDir(), isTree);
        QCOMPARE(QFile::exists(right("a")), isTree);
        QVERIFY(QDir(right("a")).isEmpty());
        fixture_->dismissMessage();
    }

    void sizesThatWrapToSmallOnesAreNotRefused()
    {
        // Nothing of the large ones can be read, so that no room is needed.
        write("a/0", "content");
        files().writeSparse("left/a/1", 3 * GiB);
        files().writeSparse("left/a/2", GiB);
        for (const char* name : {"left/a/1", "left/a/2"})
            files().setMode(name, 0);
        copyBuiltIn(left("a"));
        QStringList expected = smallFile(left("a/0"), right("a/0"), "7 b");
        expected += progress(left("a/1"), right("a/1"), "0% (0 b/-1.07374e+09 b)");
        expected += progress(left("a/2"), right("a/2"), "0% (0 b/1024 Mb)");
        expected += Log::cleared();
        QCOMPARE(taken(), expected);
        QCOMPARE(read("a/0"), QByteArray("content"));
    }

    void fileOfMoreThanFourGigabytesGoesByItsWrappedSize()
    {
        files().writeSparse("left/a", 4 * GiB + 5);
        std::optional<FileFaults> faults(std::in_place, left("a"));
        faults->failAfter(2 * Block, EIO);
        copyBuiltIn(left("a"));
        faults.reset();
        const QString last = progressText(left("a"), right("/a"), "10485760% (512 Kb/5 b)");
        QStringList expected = smallFile(left("a"), right("/a"), "5 b");
        expected += Log::notice(LANG_COPYING, last, "copy");
        expected += Log::message(LANG_COPYING, last, "copy");
        QCOMPARE(taken(), expected);
        QCOMPARE(QFileInfo(right("a")).size(), 2 * Block);
        fixture_->dismissMessage();
    }

    void failedReadLeavesThePartAndTheBox()
    {
        write("a", QByteArray(4 * Block, 'c'));
        std::optional<FileFaults> faults(std::in_place, left("a"));
        faults->failAfter(2 * Block + 1000, EIO);
        copyBuiltIn(left("a"));
        faults.reset();
        checkBoxThatStays("25% (512 Kb/2 Mb)", 4);
        QCOMPARE(QFileInfo(right("a")).size(), 2 * Block);
    }

    void failedWriteLeavesThePartAndTheBox()
    {
        write("a", QByteArray(4 * Block, 'c'));
        std::optional<FileFaults> faults(std::in_place, right("a"));
        faults->failAfter(Block + 1000, ENOSPC);
        copyBuiltIn(left("a"));
        faults.reset();
        checkBoxThatStays("0% (0 b/2 Mb)", 3);
        QCOMPARE(QFileInfo(right("a")).size(), Block + 1000);
    }

    void targetThatCannotBeOpenedLeavesTheBox_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"protected folder", "missing folder", "folder in the way",
                                 "pipe in the way", "protected file"})
            QTest::newRow(kind) << kind;
    }

    void targetThatCannotBeOpenedLeavesTheBox()
    {
        QFETCH(QString, kind);
        write("a", QByteArray(4 * Block, 'c'));
        if (kind == "protected file")
            files().write("right/a", "old");
        if (kind == "folder in the way")
            files().makeFolder("right/a");
        if (kind == "pipe in the way")
            files().makeFifo("right/a");
        if (kind == "missing folder")
            QVERIFY(QDir().rmdir(right()));
        if (kind.startsWith("protected"))
            files().setMode(kind == "protected file" ? "right/a" : "right", 0555);
        copyBuiltIn(left("a"));
        checkBoxThatStays("0% (0 b/2 Mb)", 2);
        if (kind == "protected file")
            QCOMPARE(read("a"), QByteArray("old"));
    }

    void fileThatFailsDoesNotEndTheTree()
    {
        for (const char* name : {"f/a", "f/b", "f/c/d"})
            write(name, QByteArray(Block + 5, 'c'));
        std::optional<FileFaults> faults(std::in_place, left("f/a"));
        faults->failAfter(Block, EIO);
        copyBuiltIn(left("f"));
        faults.reset();
        QCOMPARE(QFileInfo(right("f/a")).size(), Block);
        QCOMPARE(QFileInfo(right("f/b")).size(), Block + 5);
        QCOMPARE(QFileInfo(right("f/c/d")).size(), Block + 5);
        QCOMPARE(taken().last(), Log::cleared());
        QVERIFY2(!textView->isUp(), "the tree is done");
    }

    void fullFileSystemEndsEachFileOfATree()
    {
        const SmallFileSystem small;
        QVERIFY2(small.isMounted(), "neither root nor a user namespace could mount");
        const QString place = QFile::decodeName(small.path());
        write("f/a", "small");
        write("f/b", QByteArray(2 * SmallFileSystem::Bytes, 'c'));
        write("f/c/d", QByteArray(Block, 'c'));
        holdKey(PhoneKey::Modifier);
        window_->copy(left("f"), place);
        releaseKey(PhoneKey::Modifier);
        QCOMPARE(QFileInfo(place + "/f/a").size(), 5);
        const qint64 part = QFileInfo(place + "/f/b").size();
        QVERIFY2(part > 0 && part < SmallFileSystem::Bytes, qPrintable(QString::number(part)));
        QVERIFY(QFileInfo(place + "/f/c/d").size() < Block);
        QVERIFY(!textView->isUp());
    }

    void protectedTargetLetsNothingOfATreeThrough()
    {
        write("f/a", "x");
        write("f/b/c", "x");
        files().setMode("right", 0555);
        copyBuiltIn(left("f"));
        QVERIFY(!QFile::exists(right("f")));
        QVERIFY(!textView->isUp());
    }

    void fileThatVanishesFromATreeIsPassedOver()
    {
        for (const char* name : {"f/a", "f/b", "f/c"})
            write(name, "x");
        const DuringWork vanish([this] { return textView->shownText().startsWith(left("f/a")); },
                                [this] { QVERIFY(QFile::remove(left("f/b"))); });
        copyBuiltIn(left("f"));
        QVERIFY(vanish.hasHappened());
        QVERIFY(QFile::exists(right("f/a")) && QFile::exists(right("f/c")));
        QVERIFY(!QFile::exists(right("f/b")));
        QVERIFY(!textView->isUp());
    }

    void folderThatGoesDuringACopyIsNotMadeAnew_data()
    {
        QTest::addColumn<QString>("gone");
        QTest::newRow("the copy") << "right/f";
        QTest::newRow("where it goes") << "right";
    }

    void folderThatGoesDuringACopyIsNotMadeAnew()
    {
        for (const char* name : {"f/a", "f/g/b", "f/g/h/c"})
            write(name, "x");
        QFETCH(QString, gone);
        gone = files().path(gone);
        const DuringWork go([this] { return textView->shownText().startsWith(left("f/a")); },
                            [&gone] { QVERIFY(QDir(gone).removeRecursively()); });
        copyBuiltIn(left("f"));
        QVERIFY(go.hasHappened());
        QVERIFY(!QFile::exists(gone));
    }

    void nothingIsMadeWhereTheCopyCannotBe()
    {
        write("f/a", "x");
        write("f/g/b", "x");
        holdKey(PhoneKey::Modifier);
        window_->copy(left("f"), right("gone/deep"));
        releaseKey(PhoneKey::Modifier);
        QVERIFY(QDir(right()).isEmpty());
    }

    void foldersWithoutFilesOfTheirOwnAreMadeOnTheWay()
    {
        write("f/g/h/a", "x");
        copyBuiltIn(left("f"));
        QCOMPARE(read("f/g/h/a"), QByteArray("x"));
    }

private:
    /// After a copy of "a" that failed: its last box stays and can be closed.
    void checkBoxThatStays(const QString& last, int boxes)
    {
        const QString text = progressText(left("a"), right("/a"), last);
        const QStringList log = taken();
        QCOMPARE(log.size(), boxes);
        QCOMPARE(log.at(boxes - 2), Log::notice(LANG_COPYING, text, "copy"));
        QCOMPARE(log.last(), Log::message(LANG_COPYING, text, "copy"));
        QCOMPARE(textView->shownText(), text);
        fixture_->dismissMessage();
    }
};

int main(int argc, char** argv)
{
    enterOwnMounts();
    return runTest<tst_CopyFailures>(argc, argv);
}

#include "tst_copyfailures.moc"
