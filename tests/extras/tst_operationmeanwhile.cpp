// What comes into an operation's way after it was looked at.

#include "extras/operation.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <sys/stat.h>

#include <algorithm>

namespace
{

bool hasTemporary(const QByteArray& path)
{
    const QByteArrayList lines = treeText(path);
    return std::any_of(lines.begin(), lines.end(),
                       [](const QByteArray& line) { return line.contains(".quarn-"); });
}

} // namespace

class tst_OperationMeanwhile : public QObject
{
    Q_OBJECT

private slots:
    void folderThatAppearsTakesInWhatComes_data() { addKinds(); }
    void folderThatAppearsTakesInWhatComes()
    {
        QFETCH(bool, isMove);
        QFETCH(int, files);
        const OperationPlaces places(OperationPlaces::Apart);
        makeTree(places, files);
        QByteArrayList expected = fileLines(places.source("tree"));
        Operation operation(places.request(kindOf(isMove), {"tree"}));
        makeTemporary(operation, places);
        making::folder(places.target("tree"));
        QCOMPARE(chmod(places.target("tree").constData(), 0710), 0);
        writeFile(places.target("tree/other"), "other");
        making::folder(places.target("tree/sub"));
        writeFile(places.target("tree/sub/other"), "other");
        expected += {places.target("tree/other"), places.target("tree/sub/other")};
        runToEnd(operation);
        QCOMPARE(operation.state(), Operation::State::Finished);
        QCOMPARE(operation.failures().count, qint64(0));
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::Done});
        const QByteArrayList now = fileLines(places.target("tree"));
        QCOMPARE(now.size(), expected.size());
        for (const QByteArray& line : expected.first(expected.size() - 2))
            QVERIFY2(now.contains(line), line.constData());
        QCOMPARE(readFile(places.target("tree/other")), QByteArray("other"));
        QCOMPARE(readFile(places.target("tree/sub/other")), QByteArray("other"));
        // The one that was there stays what it was.
        struct stat info = {};
        QCOMPARE(stat(places.target("tree").constData(), &info), 0);
        QCOMPARE(info.st_mode & 07777, mode_t(0710));
        QCOMPARE(isThere(places.source("tree")), !isMove);
        QVERIFY(!hasTemporary(places.target()));
        QVERIFY(places.journals().isEmpty());
    }

    void whatIsInTheWayInAFolderThatAppearedIsAskedAbout_data() { addKinds(); }
    void whatIsInTheWayInAFolderThatAppearedIsAskedAbout()
    {
        QFETCH(bool, isMove);
        QFETCH(int, files);
        const OperationPlaces places(OperationPlaces::Apart);
        makeTree(places, files);
        Operation operation(places.request(kindOf(isMove), {"tree"}));
        makeTemporary(operation, places);
        making::folder(places.target("tree"));
        writeFile(places.target("tree/0"), "other");
        QCOMPARE(questions(operation, Answer::KeepBoth), QByteArrayList{places.target("tree/0")});
        QCOMPARE(operation.failures().count, qint64(0));
        QCOMPARE(readFile(places.target("tree/0")), QByteArray("other"));
        QCOMPARE(readFile(places.target("tree/0 (2)")), QByteArray("0"));
        QCOMPARE(readFile(places.target("tree/sub/deep/in")), QByteArray("in"));
        QCOMPARE(isThere(places.source("tree")), !isMove);
        QVERIFY(!hasTemporary(places.target()));
    }

    void fileInAFoldersPlaceIsAskedAboutOnce_data() { addKinds(); }
    void fileInAFoldersPlaceIsAskedAboutOnce()
    {
        QFETCH(bool, isMove);
        QFETCH(int, files);
        const OperationPlaces places(OperationPlaces::Apart);
        makeTree(places, files);
        const QByteArrayList expected = fileLines(places.source("tree"));
        Operation operation(places.request(kindOf(isMove), {"tree"}));
        makeTemporary(operation, places);
        writeFile(places.target("tree"), "other");
        QCOMPARE(questions(operation, Answer::KeepBoth), QByteArrayList{places.target("tree")});
        QCOMPARE(operation.failures().count, qint64(0));
        QCOMPARE(readFile(places.target("tree")), QByteArray("other"));
        QCOMPARE(fileLines(places.target("tree (2)")), expected);
        QCOMPARE(isThere(places.source("tree")), !isMove);
        QVERIFY(!hasTemporary(places.target()));
    }

    void renamedOnesAreAskedAboutOrJoined()
    {
        const OperationPlaces places;
        makeTree(places, 3);
        writeFile(places.source("file"), "new");
        Operation operation(places.request(OperationKind::Move, {"tree", "file"}));
        begin(operation);
        // They are collected, and have their places, but not their names.
        while (operation.progress().current != places.source("file"))
            operation.step(0);
        QVERIFY(!isThere(places.target("file")));
        making::folder(places.target("tree"));
        writeFile(places.target("tree/other"), "other");
        writeFile(places.target("file"), "other");
        QCOMPARE(questions(operation, Answer::Replace), QByteArrayList{places.target("file")});
        QCOMPARE(operation.failures().count, qint64(0));
        QCOMPARE(readFile(places.target("file")), QByteArray("new"));
        QCOMPARE(readFile(places.target("tree/other")), QByteArray("other"));
        QCOMPARE(readFile(places.target("tree/sub/deep/in")), QByteArray("in"));
        QVERIFY(!isThere(places.source("tree")) && !isThere(places.source("file")));
    }

    void cancelledBeforeItIsAskedAboutLosesNothing()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        makeTree(places, 20);
        const QByteArrayList expected = fileLines(places.source("tree"));
        Operation operation(places.request(OperationKind::Move, {"tree"}));
        makeTemporary(operation, places);
        writeFile(places.target("tree"), "other");
        while (operation.step(0) == Operation::State::Working) {
        }
        QCOMPARE(operation.state(), Operation::State::Asking);
        operation.cancel();
        runToEnd(operation);
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::NotReached});
        QCOMPARE(fileLines(places.source("tree")), expected);
        QCOMPARE(readFile(places.target("tree")), QByteArray("other"));
        QVERIFY(!hasTemporary(places.target()));
    }

private:
    static void addKinds()
    {
        QTest::addColumn<bool>("isMove");
        QTest::addColumn<int>("files");
        for (const bool isMove : {false, true}) {
            const char* word = isMove ? "move" : "copy";
            QTest::addRow("%s, in one batch", word) << isMove << 30;
            // More than are given names at once.
            QTest::addRow("%s, in more batches", word) << isMove << 700;
        }
    }

    static OperationKind kindOf(bool isMove)
    {
        return isMove ? OperationKind::Move : OperationKind::Copy;
    }

    static void makeTree(const OperationPlaces& places, int files)
    {
        making::folder(places.source("tree"));
        making::folder(places.source("tree/sub"));
        making::folder(places.source("tree/sub/deep"));
        writeFile(places.source("tree/sub/deep/in"), "in");
        writeFile(places.source("tree/sub/beside"), "beside");
        for (int i = 0; i < files; ++i)
            writeFile(places.source("tree/" + QByteArray::number(i)), QByteArray::number(i));
        ageAll(places.source());
    }

    static void begin(Operation& operation)
    {
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.begin();
    }

    /// Goes on until the folder has been made, and has not got its name.
    static void makeTemporary(Operation& operation, const OperationPlaces& places)
    {
        begin(operation);
        while (!hasTemporary(places.target()))
            operation.step(0);
        QVERIFY(!isThere(places.target("tree")));
    }

    /// Goes on to the end, with this answer to each question, and gives what was asked about.
    static QByteArrayList questions(Operation& operation, Answer answer)
    {
        QByteArrayList asked;
        while (!operation.hasEnded()) {
            if (operation.step(100) != Operation::State::Asking)
                continue;
            asked.append(operation.question().target);
            operation.answer(answer, false);
        }
        return asked;
    }

    /// What is not a folder in a tree, with all that tells it from others.
    static QByteArrayList fileLines(const QByteArray& path)
    {
        QByteArrayList lines = wholeText(path);
        lines.removeIf([](const QByteArray& line) { return line.contains(" mode 40"); });
        return lines;
    }
};

QUARN_TEST_MAIN(tst_OperationMeanwhile)
#include "tst_operationmeanwhile.moc"
