// Copies and moves when the system or the medium fails.

#include "extras/filecopy.h"
#include "extras/journals.h"
#include "extras/operation.h"
#include "extras/targetlimits.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/rootpowers.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <cerrno>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr quint64 ExfatKind = 0x2011bab0;

} // namespace

class tst_OperationFaults : public QObject
{
    Q_OBJECT

private slots:
    void whatCannotBeWrittenIsToldAndNothingIsLost_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("isMove");
        for (const bool isMove : {false, true}) {
            QTest::addRow("full disk, %d", isMove) << ENOSPC << isMove;
            QTest::addRow("quota, %d", isMove) << EDQUOT << isMove;
            QTest::addRow("broken medium, %d", isMove) << EIO << isMove;
            QTest::addRow("pulled medium, %d", isMove) << ENODEV << isMove;
            QTest::addRow("made read-only, %d", isMove) << EROFS << isMove;
        }
    }
    void whatCannotBeWrittenIsToldAndNothingIsLost()
    {
        QFETCH(int, error);
        QFETCH(bool, isMove);
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        writeFile(places.source("tree/large"), QByteArray(3000000, 'l'));
        writeFile(places.source("tree/small"), "small");
        makeLink(places.source("tree/link"), "small");
        making::folder(places.target("tree"));
        writeFile(places.target("tree/large"), "old");
        writeFile(places.target("tree/small"), "old");
        const QByteArrayList before = withoutFolderTimes(wholeText(places.source("tree")));
        Operation operation(
            places.request(isMove ? OperationKind::Move : OperationKind::Copy, {"tree"}));
        {
            CallFaults faults;
            faults.failWriting(1000000, error);
            runToEnd(operation);
        }
        QCOMPARE(operation.state(), Operation::State::Finished);
        QVERIFY(toldLines(operation).contains(toldLine("large", Trouble::CannotWrite, error)));
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::Failed});
        QCOMPARE(readFile(places.target("tree/large")), QByteArray("old"));
        // What is in the target is whole, and nothing temporary stays.
        for (const QByteArray& name : namesIn(places.target("tree")))
            QVERIFY2(name == "large" || name == "small" || name == "link", name.constData());
        QCOMPARE(readFile(places.source("tree/large")).size(), qsizetype(3000000));
        if (!isMove)
            QCOMPARE(withoutFolderTimes(wholeText(places.source("tree"))), before);
        QVERIFY(places.journals().isEmpty());
    }

    void aPulledMediumLosesNothing_data()
    {
        QTest::addColumn<int>("error");
        QTest::newRow("gone") << ENODEV;
        QTest::newRow("read-only") << EROFS;
        QTest::newRow("broken") << EIO;
    }
    /// From some moment on nothing gets there, be it content, a flush or a name.
    void aPulledMediumLosesNothing()
    {
        QFETCH(int, error);
        const OperationPlaces places(OperationPlaces::Apart);
        constexpr int Files = 40;
        making::folder(places.source("tree"));
        for (int i = 0; i < Files; ++i)
            writeFile(places.source("tree/" + QByteArray::number(i)), QByteArray(10000, 'x'));
        Operation operation(places.request(OperationKind::Move, {"tree"}));
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.begin();
        {
            CallFaults faults;
            faults.failWriting(qint64(10000) * Files / 2, error);
            faults.failFlushing(error, true);
            faults.failRenaming(0, error);
            runToEnd(operation);
        }
        QCOMPARE(operation.state(), Operation::State::Finished);
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::Failed});
        QVERIFY(operation.failures().count > 0);
        for (const Failure& failure : operation.failures().first)
            QCOMPARE(failure.error, error);
        QCOMPARE(namesIn(places.source("tree")).size(), qsizetype(Files));
        QVERIFY(!isThere(places.target("tree")));
    }

    void aSmallFileSystemGetsFull()
    {
        const SmallFileSystem small;
        const OperationPlaces places;
        writeFile(places.source("first"), QByteArray(600 * 1024, 'f'));
        writeFile(places.source("second"), QByteArray(900 * 1024, 's'));
        OperationRequest request = places.request(OperationKind::Move, {"first", "second"});
        request.target = small.path();
        Operation operation(request);
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        // Who may not mount has no such file system, and room for both.
        QCOMPARE(operation.survey().hasRoom, !small.isMounted());
        runToEnd(operation);
        if (small.isMounted()) {
            QCOMPARE(toldLines(operation),
                     QByteArrayList{toldLine("second", Trouble::CannotWrite, ENOSPC)});
            QCOMPARE(namesIn(small.path()), QList<QByteArray>{"first"});
            QCOMPARE(readFile(places.source("second")).size(), qsizetype(900 * 1024));
        } else {
            QVERIFY(operation.failures().isEmpty());
        }
    }

    void whatCannotBeReadIsTold()
    {
        const OperationPlaces apart(OperationPlaces::Apart);
        writeFile(apart.source("bad"), QByteArray(2000000, 'b'));
        Operation across(apart.request(OperationKind::Move, {"bad"}));
        while (across.step(1000) == Operation::State::Surveying) {
        }
        across.begin();
        {
            CallFaults faults;
            faults.failReading(1000000, EIO);
            runToEnd(across);
        }
        QCOMPARE(toldLines(across), QByteArrayList{toldLine("bad", Trouble::CannotRead, EIO)});
        QVERIFY(namesIn(apart.target()).isEmpty());
        QCOMPARE(readFile(apart.source("bad")).size(), qsizetype(2000000));
    }

    void onlyWhatWasNotFlushedFails_data()
    {
        QTest::addColumn<bool>("ofEach");
        QTest::newRow("all together, for others' sake") << false;
        QTest::newRow("each") << true;
    }
    void onlyWhatWasNotFlushedFails()
    {
        QFETCH(bool, ofEach);
        const OperationPlaces places(OperationPlaces::Apart);
        QList<QByteArray> names;
        for (char name = 'a'; name <= 't'; ++name) {
            names.append(QByteArray(1, name));
            writeFile(places.source(names.last()), names.last());
        }
        Operation operation(places.request(OperationKind::Move, names));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        operation.begin();
        {
            CallFaults faults;
            faults.failFlushing(EIO, ofEach);
            runToEnd(operation);
        }
        // What did not reach the medium for sure stays where it was.
        QCOMPARE(operation.failures().count, qint64(ofEach ? names.size() : 0));
        QCOMPARE(namesIn(places.target()), ofEach ? QList<QByteArray>{} : names);
        QCOMPARE(namesIn(places.source()), ofEach ? names : QList<QByteArray>{});
    }

    void whatCannotBeWrittenOutIsToldThoughTheFileCanBeFlushed_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("isTold");
        QTest::newRow("broken medium") << EIO << true;
        QTest::newRow("full disk behind it") << ENOSPC << true;
        QTest::newRow("broken block") << ENODATA << true;
        QTest::newRow("no medium") << ENODEV << true;
        QTest::newRow("not in parts") << EINVAL << false;
    }
    void whatCannotBeWrittenOutIsToldThoughTheFileCanBeFlushed()
    {
        QFETCH(int, error);
        QFETCH(bool, isTold);
        const OperationPlaces places(OperationPlaces::Apart);
        const QByteArray content(qsizetype(40) * 1024 * 1024, 'l');
        writeFile(places.source("large"), content);
        Operation operation(places.request(OperationKind::Move, {"large"}));
        {
            CallFaults faults;
            faults.failWritingOut(error);
            runToEnd(operation);
        }
        QCOMPARE(toldLines(operation),
                 isTold ? QByteArrayList{toldLine("large", Trouble::CannotWrite, error)}
                        : QByteArrayList());
        QCOMPARE(isThere(places.source("large")), isTold);
        QCOMPARE(readFile(isTold ? places.source("large") : places.target("large")), content);
        QCOMPARE(isThere(places.target("large")), !isTold);
    }

    void whatCannotBeRenamedIsTold()
    {
        const OperationPlaces places;
        writeFile(places.source("one"), "one");
        writeFile(places.source("two"), "two");
        for (const OperationKind kind : {OperationKind::Copy, OperationKind::Move}) {
            Operation operation(places.request(kind, {"one", "two"}));
            while (operation.step(1000) == Operation::State::Surveying) {
            }
            operation.begin();
            {
                CallFaults faults;
                faults.failRenaming(0, EPERM);
                runToEnd(operation);
            }
            QCOMPARE(toldLines(operation),
                     (QByteArrayList{toldLine("one", Trouble::CannotRename, EPERM),
                                     toldLine("two", Trouble::CannotRename, EPERM)}));
            QCOMPARE(namesIn(places.source()), (QList<QByteArray>{"one", "two"}));
            QVERIFY(namesIn(places.target()).isEmpty());
        }
    }

    void aFolderThatCannotGetItsNameIsToldOnce_data()
    {
        QTest::addColumn<bool>("isMove");
        QTest::newRow("copy") << false;
        QTest::newRow("move to another disk") << true;
    }
    void aFolderThatCannotGetItsNameIsToldOnce()
    {
        QFETCH(bool, isMove);
        const OperationPlaces places(isMove ? OperationPlaces::Apart : OperationPlaces::Together);
        making::folder(places.source("tree"));
        writeFile(places.source("tree/in"), "in");
        making::folder(places.source("tree/sub"));
        writeFile(places.source("tree/sub/deep"), "deep");
        const QByteArrayList before = wholeText(places.source("tree"));
        Operation operation(
            places.request(isMove ? OperationKind::Move : OperationKind::Copy, {"tree"}));
        {
            CallFaults faults;
            faults.failRenaming(0, EPERM);
            runToEnd(operation);
        }
        // What was to come into it is neither told of nor counted as still to be done.
        QCOMPARE(toldLines(operation),
                 QByteArrayList{toldLine("tree", Trouble::CannotRename, EPERM)});
        QCOMPARE(operation.progress().entriesDone, operation.progress().entriesTotal);
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::Failed});
        QCOMPARE(withoutFolderTimes(wholeText(places.source("tree"))), withoutFolderTimes(before));
        QVERIFY(namesIn(places.target()).isEmpty());
    }

    void worksWithoutRenamingToFreeNames()
    {
        const OperationPlaces places;
        makeEveryKind(places.source("tree"));
        const QByteArrayList before = wholeText(places.source("tree"));
        writeFile(places.source("other"), "other");
        writeFile(places.target("other"), "old");
        CallFaults faults;
        faults.forgetNoReplace();
        runWell(places.request(OperationKind::Copy, {"tree", "other"}));
        QCOMPARE(wholeText(places.target("tree")), before);
        QCOMPARE(readFile(places.target("other")), QByteArray("other"));
    }

    void whatTakesTheNameMeanwhileIsNotReplaced()
    {
        const OperationPlaces places;
        writeFile(places.source("file"), "file");
        bool hasCome = false;
        CallFaults faults;
        faults.forgetNoReplace();
        faults.beforeReplacing([&places, &hasCome] {
            const int file = open(places.target("file").constData(),
                                  O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
            hasCome = hasCome || (file >= 0 && write(file, "other", 5) == 5);
            close(file);
        });
        Operation operation(places.request(OperationKind::Copy, {"file"}));
        runToEnd(operation, Answer::KeepBoth);
        QCOMPARE(readFile(places.target("file")), QByteArray(hasCome ? "other" : "file"));
    }

    void whatCannotBeRenamedToAFreeNameLeavesNothingThere()
    {
        const OperationPlaces places;
        writeFile(places.source("file"), "file");
        CallFaults faults;
        faults.forgetNoReplace();
        faults.failRenaming(0, EIO);
        Operation operation(places.request(OperationKind::Copy, {"file"}));
        runToEnd(operation);
        QCOMPARE(toldLines(operation),
                 QByteArrayList{toldLine("file", Trouble::CannotRename, EIO)});
        QCOMPARE(namesIn(places.target()), QList<QByteArray>());
    }

    void aFolderIsFlushedBeforeItsSourceGoes()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        making::folder(places.source("tree/empty"));
        Operation operation(places.request(OperationKind::Move, {"tree"}));
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.begin();
        CallFaults faults;
        while (!isThere(places.target("tree/empty")))
            operation.step(0);
        struct stat info = {};
        QCOMPARE(stat(places.target("tree/empty").constData(), &info), 0);
        faults.failFlushingOf(info.st_ino, EIO);
        runToEnd(operation);
        QVERIFY(toldLines(operation).contains(toldLine("empty", Trouble::CannotWrite, EIO)));
        QVERIFY(isThere(places.source("tree/empty")));
    }

    void namesOfOneFileBecomeFilesWhereThereAreNoLinks_data()
    {
        QTest::addColumn<int>("error");
        QTest::newRow("has none") << EPERM;
        QTest::newRow("does not know them") << EOPNOTSUPP;
        QTest::newRow("no more") << EMLINK;
    }
    void namesOfOneFileBecomeFilesWhereThereAreNoLinks()
    {
        QFETCH(int, error);
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("one"), "linked");
        QCOMPARE(link(places.source("one").constData(), places.source("two").constData()), 0);
        Operation operation(places.request(OperationKind::Move, {"one", "two"}));
        {
            CallFaults faults;
            faults.failLinking(error);
            runToEnd(operation);
        }
        QCOMPARE(toldLines(operation), QByteArrayList());
        struct stat one = {};
        struct stat two = {};
        QCOMPARE(lstat(places.target("one").constData(), &one), 0);
        QCOMPARE(lstat(places.target("two").constData(), &two), 0);
        QVERIFY(one.st_ino != two.st_ino);
        QCOMPARE(readFile(places.target("one")), QByteArray("linked"));
        QCOMPARE(readFile(places.target("two")), QByteArray("linked"));
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    void contentIsSharedOrCopiedWithinTheSystem_data()
    {
        QTest::addColumn<bool>("canShare");
        QTest::newRow("shared") << true;
        QTest::newRow("copied") << false;
    }
    void contentIsSharedOrCopiedWithinTheSystem()
    {
        QFETCH(bool, canShare);
        const OperationPlaces places;
        const QByteArray content(3000000, 'c');
        writeFile(places.source("file"), content);
        CallFaults faults;
        faults.letCopy(canShare);
        runWell(places.request(OperationKind::Copy, {"file"}));
        QCOMPARE(faults.shared(), canShare ? 1 : 0);
        QCOMPARE(faults.copied() > 0, !canShare);
        QCOMPARE(faults.written(), 0);
        QVERIFY(readFile(places.target("file")) == content);
    }

    void whatCannotBeRenamedAcrossIsCopied()
    {
        const OperationPlaces places;
        makeEveryKind(places.source("tree"));
        QCOMPARE(chmod(places.source("tree/locked").constData(), 0755), 0);
        const QByteArrayList before = wholeText(places.source("tree"));
        CallFaults faults;
        faults.separateFolders();
        runWell(places.request(OperationKind::Move, {"tree"}));
        QCOMPARE(wholeText(places.target("tree")), before);
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    void whatCannotBeRenamedOutOfAJoinedFolderIsCopied()
    {
        const OperationPlaces places;
        for (const QByteArray& folder : {places.source("f"), places.target("f")})
            making::folder(folder);
        making::folder(places.source("f/sub"));
        writeFile(places.source("f/sub/in"), "in");
        CallFaults faults;
        faults.separateFolders();
        runWell(places.request(OperationKind::Move, {"f"}));
        QCOMPARE(readFile(places.target("f/sub/in")), QByteArray("in"));
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    void whatFatCannotHoldIsToldBefore()
    {
        const OperationPlaces places;
        making::folder(places.source("tree"));
        for (const char* name :
             {"a:b", "what?", "end.", "end ", "\xff", "back\\slash", "Case", "case", "fine"})
            writeFile(places.source(QByteArray("tree/") + name), "x");
        writeFile(places.source("tree/huge"), {});
        QCOMPARE(truncate(places.source("tree/huge").constData(), qint64(1) << 32), 0);
        CallFaults faults;
        faults.pretendKind(MSDOS_SUPER_MAGIC);
        Operation operation(places.request(OperationKind::Copy, {"tree"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        QHash<Trouble, int> counts;
        for (const Failure& failure : operation.survey().troubles.first)
            ++counts[failure.trouble];
        QCOMPARE(counts,
                 (QHash<Trouble, int>{
                     {Trouble::BadName, 6}, {Trouble::TooLarge, 1}, {Trouble::NameCollision, 1}}));
        runToEnd(operation, Answer::KeepBoth);
        QCOMPARE(operation.failures().count, qint64(7));
        QCOMPARE(namesIn(places.target("tree")).size(), qsizetype(3));
    }

    void exfatHoldsLargeFiles()
    {
        const TargetLimits limits = TargetLimits::ofKind(ExfatKind, 1530);
        QVERIFY(limits.mostFileBytes > (qint64(1) << 40));
        QVERIFY(!limits.takesName("a|b"));
        QVERIFY(limits.takesName(QByteArray("\xd0\xbf").repeated(255)));
        QVERIFY(!limits.takesName(QByteArray("\xd0\xbf").repeated(256)));
        QCOMPARE(limits.nameKey("\xd0\x9f"), limits.nameKey("\xd0\xbf"));
        const TargetLimits plain = TargetLimits::ofKind(EXT4_SUPER_MAGIC, 255);
        QVERIFY(plain.takesName(QByteArray(255, 'x')) && !plain.takesName(QByteArray(256, 'x')));
        QVERIFY(plain.takesName("a:b\xff ") && plain.nameKey("A") != plain.nameKey("a"));
        QVERIFY(!TargetLimits::ofKind(0x61756673, 143).takesName(QByteArray(144, 'x')));
    }

    void aTargetThatCannotBeWrittenIsTold()
    {
        const OperationPlaces places;
        writeFile(places.source("file"), "content");
        QCOMPARE(chmod(places.target().constData(), 0555), 0);
        Operation operation(places.request(OperationKind::Move, {"file"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        QCOMPARE(operation.survey().troubles.first.first().trouble, Trouble::TargetUnusable);
        runToEnd(operation);
        QCOMPARE(toldLines(operation),
                 QByteArrayList{toldLine("file", Trouble::CannotRename, EACCES)});
        QCOMPARE(readFile(places.source("file")), QByteArray("content"));
        OperationRequest nowhere = places.request(OperationKind::Copy, {"file"});
        nowhere.target = places.target("missing");
        Operation lost(nowhere);
        runToEnd(lost);
        QCOMPARE(lost.failures().first.first().trouble, Trouble::TargetUnusable);
        QCOMPARE(lost.failures().first.first().error, ENOENT);
    }

    void worksWithoutAJournal()
    {
        const OperationPlaces places;
        writeFile(places.source("file"), "content");
        writeFile(places.source("no folder"), {});
        qputenv("XDG_STATE_HOME", places.source("no folder"));
        Operation operation(places.request(OperationKind::Move, {"file"}));
        runToEnd(operation);
        QCOMPARE(operation.journalError(), ENOTDIR);
        QVERIFY(operation.failures().isEmpty());
        QCOMPARE(readFile(places.target("file")), QByteArray("content"));
    }
};

int main(int argc, char** argv)
{
    giveUpRootPowers(argv);
    enterOwnMounts();
    tst_OperationFaults test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_operationfaults.moc"
