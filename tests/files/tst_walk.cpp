#include "files/walk.h"
#include "tests/browser/socketfile.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <filesystem>
#include <memory>

namespace
{

constexpr qint64 GiB = 1024LL * 1024 * 1024;

/// A walk that counts, and how often it let events run.
struct Count {
    explicit Count(const QString& folder, FolderCount start = {}) : result(start)
    {
        const auto step = [this] { ++steps; };
        countFolder(folder, result, step, [] { return false; });
    }

    FolderCount result;
    int steps = 0;
};

/// A walk that is cancelled while it handles a file, counted from 1.
struct CancelledCount {
    CancelledCount(const QString& folder, int atFile)
    {
        int files = 0;
        bool cancelled = false;
        countFolder(
            folder, result, [&] { cancelled = ++files >= atFile; }, [&] { return cancelled; });
    }

    FolderCount result;
};

} // namespace

class tst_Walk : public QObject
{
    Q_OBJECT

private slots:
    void init() { folder_ = std::make_unique<ScratchFolder>(); }
    void cleanup() { folder_.reset(); }

    void sizesOfAllFilesAreAdded()
    {
        makeTree();
        const Count count(folder_->path());
        QCOMPARE(count.result.bytes, 1U + 20 + 300 + 4000 + 50000);
        QCOMPARE(count.result.files, 5);
        QCOMPARE(count.result.folders, 6);
        QCOMPARE(count.steps, 5);
    }

    void countsGoOnFromWhereTheyWere()
    {
        makeTree();
        const Count count(folder_->path(), {-1, 100, 7});
        QCOMPARE(count.result.folders, 5);
        QCOMPARE(count.result.files, 105);
        QCOMPARE(count.result.bytes, 54328U);
    }

    void emptyFolderCountsItself()
    {
        const Count count(folder_->path());
        QCOMPARE(count.result.folders, 1);
        QCOMPARE(count.result.files, 0);
        QCOMPARE(count.result.bytes, 0U);
        QCOMPARE(count.steps, 0);
    }

    void whatIsNoFolderCountsAsOneWithNothingInIt_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << "missing";
        QTest::newRow("a file") << "file";
        QTest::newRow("unreadable") << "locked";
    }

    void whatIsNoFolderCountsAsOneWithNothingInIt()
    {
        QFETCH(QString, name);
        folder_->write("file", "content");
        folder_->write("locked/file", "content");
        folder_->setMode("locked", 0);
        const Count count(folder_->path(name));
        QCOMPARE(count.result.folders, 1);
        QCOMPARE(count.result.files, 0);
        QCOMPARE(filesBelow(folder_->path(name)), QStringList());
    }

    void unreadableSubfolderIsPassedOver()
    {
        folder_->write("a/file", "1");
        folder_->write("b/file", "22");
        folder_->write("c/file", "333");
        folder_->setMode("b", 0);
        const Count count(folder_->path());
        QCOMPARE(count.result.folders, 4);
        QCOMPARE(count.result.files, 2);
        QCOMPARE(count.result.bytes, 4U);
        QCOMPARE(filesBelow(folder_->path()), paths({"a/file", "c/file"}));
    }

    void linksAreNeitherCountedNorEntered()
    {
        const ScratchFolder elsewhere;
        elsewhere.write("far/file", "content");
        folder_->write("file", "12345");
        folder_->makeLink("to file", folder_->path("file"));
        folder_->makeLink("to folder", elsewhere.path("far"));
        folder_->makeLink("to nothing", folder_->path("gone"));
        folder_->makeLink("to itself", ".");
        const Count count(folder_->path());
        QCOMPARE(count.result.folders, 1);
        QCOMPARE(count.result.files, 1);
        QCOMPARE(count.result.bytes, 5U);
        QCOMPARE(count.steps, 1);
    }

    void linkToAFolderIsWalkedWhenItIsTheStart()
    {
        folder_->write("real/file", "12345");
        folder_->makeLink("link", "real");
        const Count count(folder_->path("link"));
        QCOMPARE(count.result.files, 1);
        QCOMPARE(count.result.bytes, 5U);
        QCOMPARE(filesBelow(folder_->path("link")), paths({"link/file"}));
    }

    void hiddenEntriesAreNotSeen()
    {
        folder_->write("seen", "1");
        folder_->write(".hidden", "22");
        folder_->write(".folder/file", "333");
        folder_->write("folder/.hidden", "4444");
        const Count count(folder_->path());
        QCOMPARE(count.result.folders, 2);
        QCOMPARE(count.result.files, 1);
        QCOMPARE(count.result.bytes, 1U);
        QCOMPARE(filesBelow(folder_->path()), paths({"seen"}));
    }

    void hiddenFolderIsWalkedWhenItIsTheStart()
    {
        folder_->write(".folder/file", "333");
        QCOMPARE(Count(folder_->path(".folder")).result.bytes, 3U);
        QCOMPARE(filesBelow(folder_->path(".folder")), paths({".folder/file"}));
    }

    void pipesDevicesAndSocketsAreNoFiles()
    {
        folder_->write("file", "1");
        folder_->makeFifo("pipe");
        makeSocket(folder_->path("socket"));
        folder_->makeLink("device", "/dev/zero");
        folder_->makeLink("link to pipe", "pipe");
        const Count count(folder_->path());
        QCOMPARE(count.result.files, 1);
        QCOMPARE(count.result.folders, 1);
        QCOMPARE(filesBelow(folder_->path()), paths({"file"}));
    }

    void sizesAreTakenInThirtyTwoBitsAndTheirSumWraps_data()
    {
        QTest::addColumn<QList<qint64>>("sizes");
        QTest::addColumn<quint32>("bytes");
        QTest::newRow("just positive") << QList<qint64>{2 * GiB - 1} << 2147483647U;
        QTest::newRow("just negative") << QList<qint64>{2 * GiB - 1, 1} << 2147483648U;
        QTest::newRow("a large file") << QList<qint64>{3 * GiB} << 3221225472U;
        QTest::newRow("a file that wraps") << QList<qint64>{4 * GiB + 5} << 5U;
        QTest::newRow("a sum that wraps") << QList<qint64>{3 * GiB, GiB, 7} << 7U;
        QTest::newRow("both") << QList<qint64>{5 * GiB, 7 * GiB, 9} << 9U;
    }

    void sizesAreTakenInThirtyTwoBitsAndTheirSumWraps()
    {
        QFETCH(QList<qint64>, sizes);
        for (qsizetype i = 0; i < sizes.size(); ++i) {
            // In different folders, since the sums of folders wrap likewise.
            const QString name = QStringLiteral("%1/file").arg(i);
            folder_->writeSparse(name, sizes.at(i));
        }
        const Count count(folder_->path());
        QTEST(count.result.bytes, "bytes");
        QCOMPARE(count.result.files, int(sizes.size()));
    }

    void wholeTreeIsCountedHiddenEntriesIncluded()
    {
        folder_->writeSparse("a/big", 5 * GiB);
        folder_->writeSparse("a/.hidden/.big", 5 * GiB + 7);
        folder_->write(".file", "123");
        folder_->makeFolder("empty");
        folder_->makeLink("link", "a");
        TreeCount count;
        int steps = 0;
        countTree(folder_->path(), count, [&steps] { ++steps; }, [] { return false; });
        QCOMPARE(count.bytes, 10 * GiB + 10);
        QCOMPARE(count.files, 3);
        QCOMPARE(count.folders, 3);
        QCOMPARE(steps, 3);
    }

    void countOfAWholeTreeCanBeCancelled()
    {
        for (const char* name : {"a/1", "b/2", "c/3"})
            folder_->write(name, "x");
        TreeCount count;
        bool cancelled = false;
        countTree(
            folder_->path(), count, [&cancelled] { cancelled = true; },
            [&cancelled] { return cancelled; });
        QCOMPARE(count.files, 1);
    }

    void cancelledWalkStopsAtEveryLevel()
    {
        for (const char* name : {"a/a/1", "a/a/2", "a/b/3", "a/4", "a/5", "b/6", "7", "8"})
            folder_->write(name, "xx");
        // Files come before subfolders; the first subfolder is still entered, and its first file
        // counted, before the cancelling is seen there.
        QCOMPARE(CancelledCount(folder_->path(), 1).result.files, 3);
        QCOMPARE(CancelledCount(folder_->path(), 1).result.folders, 3);
        QCOMPARE(CancelledCount(folder_->path(), 1).result.bytes, 6U);
        QCOMPARE(CancelledCount(folder_->path(), 5).result.files, 5);
        QCOMPARE(CancelledCount(folder_->path(), 5).result.folders, 3);
        QCOMPARE(CancelledCount(folder_->path(), 100).result.files, 8);
        QCOMPARE(CancelledCount(folder_->path(), 100).result.folders, 5);
    }

    void walkIsCancelledByEntriesThatAreNotCounted()
    {
        for (int i = 0; i < 10; ++i)
            folder_->makeLink(QString::number(i), "/dev/null");
        FolderCount count;
        int asked = 0;
        const auto noStep = [] {};
        countFolder(folder_->path(), count, noStep, [&asked] { return ++asked == 3; });
        QCOMPARE(asked, 3);
    }

    void everyEntryIsAChanceToCancel()
    {
        makeTree();
        folder_->makeLink("link", "/dev/null");
        FolderCount count;
        int asked = 0;
        countFolder(
            folder_->path(), count, [] {},
            [&asked] {
                ++asked;
                return false;
            });
        QVERIFY2(asked >= 5 + 1 + 5, qPrintable(QString::number(asked)));
    }

    void filesComeBeforeThoseOfSubfoldersByNameWithoutRegardToCase()
    {
        for (const char* name : {"b", "A", "c", "a folder/z", "B folder/Y", "B folder/x", "Z/z/z",
                                 "Z/a", "c folder/d/e/f"})
            folder_->write(name);
        QCOMPARE(filesBelow(folder_->path()),
                 paths({"A", "b", "c", "a folder/z", "B folder/x", "B folder/Y", "c folder/d/e/f",
                        "Z/a", "Z/z/z"}));
    }

    void onlyFilesAreListed()
    {
        folder_->makeFolder("empty");
        folder_->makeFolder("outer/inner");
        QCOMPARE(filesBelow(folder_->path()), QStringList());
    }

    void pathsAreListedWithoutDoubledSeparators_data()
    {
        QTest::addColumn<QString>("end");
        QTest::newRow("none") << QString();
        QTest::newRow("one") << "/";
        QTest::newRow("several") << "//";
    }

    void pathsAreListedWithoutDoubledSeparators()
    {
        QFETCH(QString, end);
        folder_->write("file");
        folder_->write("folder/file");
        QCOMPARE(filesBelow(folder_->path() + end), paths({"file", "folder/file"}));
    }

    void pathsBeginAsTheFolderWasGiven()
    {
        // As that of an entry of the root does.
        folder_->write("folder/file");
        folder_->write("folder/sub/file");
        const QString start = '/' + folder_->path("folder");
        QCOMPARE(filesBelow(start), (QStringList{start + "/file", start + "/sub/file"}));
    }

    void noFolderHasNoFiles() { QCOMPARE(filesBelow(QString()), QStringList()); }

    void linksAreFollowedWhenFilesAreListed()
    {
        const ScratchFolder elsewhere;
        elsewhere.write("far/inner/file");
        folder_->write("file");
        folder_->makeLink("link", "file");
        folder_->makeLink("to far", elsewhere.path("far"));
        folder_->makeLink("to nothing", "gone");
        QCOMPARE(filesBelow(folder_->path()), paths({"file", "link", "to far/inner/file"}));
    }

    void folderThatIsLinkedTwiceIsListedTwice()
    {
        folder_->write("real/file");
        folder_->makeLink("link 1", "real");
        folder_->makeLink("link 2", "real");
        QCOMPARE(filesBelow(folder_->path()), paths({"link 1/file", "link 2/file", "real/file"}));
    }

    void loopOfLinksEnds_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("to itself") << "loop" << QStringList{"a/file", "b/file"};
        QTest::newRow("to its folder") << "." << QStringList{"a/file", "b/file"};
        QTest::newRow("to the folder above") << ".." << QStringList{"a/file", "b/file"};
        QTest::newRow("to the next") << "../b" << QStringList{"a/file", "a/loop/file", "b/file"};
    }

    void loopOfLinksEnds()
    {
        QFETCH(QString, target);
        QFETCH(QStringList, names);
        folder_->write("a/file");
        folder_->write("b/file");
        folder_->makeLink("a/loop", target);
        QCOMPARE(filesBelow(folder_->path()), paths(names));
    }

    void linksToEachOtherEnd()
    {
        folder_->write("a/file");
        folder_->write("b/file");
        folder_->makeLink("a/to b", "../b");
        folder_->makeLink("b/to a", "../a");
        QCOMPARE(filesBelow(folder_->path()),
                 paths({"a/file", "a/to b/file", "b/file", "b/to a/file"}));
    }

    void foldersThatAllLinkToEachOtherEnd()
    {
        constexpr int Folders = 12;
        for (int from = 0; from < Folders; ++from) {
            const QString name = QString::number(from);
            folder_->write(name + "/file");
            for (int to = 0; to < Folders; ++to)
                folder_->makeLink(name + "/to " + QString::number(to), "../" + QString::number(to));
        }
        // In every order there would be more than a thousand million.
        const QStringList found = filesBelow(folder_->path());
        QVERIFY2(found.size() < 25000, qPrintable(QString::number(found.size())));
        // None is left out altogether.
        QSet<QString> originals;
        for (const QString& file : found)
            originals.insert(QFileInfo(file).canonicalFilePath());
        QCOMPARE(originals.size(), Folders);
    }

    void namesAreListedByTheLetter()
    {
        const QStringList names{"%1",
                                "&",
                                "\"quoted\"",
                                "line\nbreak",
                                "\\",
                                " ",
                                QString::fromUtf8("\xC3\xA4\xE2\x82\xAC"),
                                "*",
                                "[a]",
                                QString(255, QLatin1Char('n'))};
        qsizetype bytes = 0;
        for (const QString& name : names) {
            folder_->write(name + '/' + name, name.toUtf8());
            bytes += name.toUtf8().size();
        }
        const QStringList listed = filesBelow(folder_->path());
        QCOMPARE(listed.size(), names.size());
        for (const QString& name : names)
            QVERIFY2(listed.contains(folder_->path(name + '/' + name)), qPrintable(name));
        QCOMPARE(Count(folder_->path()).result.bytes, quint32(bytes));
    }

    void veryDeepTreeIsWalkedAsFarAsPathsGo()
    {
        // Deeper than a path can say.
        const QString here = QDir::currentPath();
        const QString name(200, QLatin1Char('d'));
        QVERIFY(QDir::setCurrent(folder_->path()));
        constexpr int Levels = 30;
        for (int i = 0; i < Levels; ++i) {
            QFile file(QStringLiteral("file"));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.write("x") == 1);
            QVERIFY(QDir().mkdir(name) && QDir::setCurrent(name));
        }
        QVERIFY(QDir::setCurrent(here));
        const int files = Count(folder_->path()).result.files;
        QVERIFY2(files >= 18 && files < Levels, qPrintable(QString::number(files)));
        QCOMPARE(filesBelow(folder_->path()).size(), files);
        std::filesystem::remove_all(folder_->path(name).toStdString());
    }

    void folderThatVanishesDuringTheWalkIsPassedOver()
    {
        for (const char* name : {"a", "b/file", "c/file"})
            folder_->write(name, "xx");
        FolderCount count;
        countFolder(
            folder_->path(), count, [this] { QDir(folder_->path("b")).removeRecursively(); },
            [] { return false; });
        QCOMPARE(count.files, 2);
        QCOMPARE(count.bytes, 4U);
    }

private:
    /// Five files of 1 to 50000 bytes in six folders, the start included.
    void makeTree() const
    {
        folder_->write("a", QByteArray(1, 'x'));
        folder_->write("one/b", QByteArray(20, 'x'));
        folder_->write("one/two/c", QByteArray(300, 'x'));
        folder_->write("three/d", QByteArray(4000, 'x'));
        folder_->write("three/e", QByteArray(50000, 'x'));
        folder_->makeFolder("four/five");
    }

    QStringList paths(const QStringList& names) const
    {
        QStringList result;
        for (const QString& name : names)
            result.append(folder_->path(name));
        return result;
    }

    std::unique_ptr<ScratchFolder> folder_;
};

QUARN_TEST_MAIN(tst_Walk)
#include "tst_walk.moc"
