// What a cancel leaves, progress, and how pieces are sized.

#include "extras/operation.h"
#include "extras/pace.h"
#include "tests/extras/opengate.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr int LargeBytes = 30 * 1000 * 1000;

/// Whether the names in a tree have none of ours among them.
bool isTidy(const QByteArrayList& lines)
{
    return std::none_of(lines.begin(), lines.end(),
                        [](const QByteArray& line) { return line.contains(".quarn-"); });
}

} // namespace

class tst_OperationCancel : public QObject
{
    Q_OBJECT

private slots:
    void nothingHalfIsLeftWheneverItIsCancelled_data()
    {
        QTest::addColumn<bool>("isMove");
        QTest::newRow("copy") << false;
        QTest::newRow("move") << true;
    }
    void nothingHalfIsLeftWheneverItIsCancelled()
    {
        QFETCH(bool, isMove);
        QRandomGenerator random(7);
        int cut = 0;
        for (int round = 0; round < 25; ++round) {
            const OperationPlaces places(OperationPlaces::Apart);
            makeEveryKind(places.source("tree"));
            QCOMPARE(chmod(places.source("tree/locked").constData(), 0755), 0);
            writeFile(places.source("large"), QByteArray(2000000, 'l'));
            making::age(places.source("large"), 1300000000);
            const QByteArrayList before = withoutFolderTimes(wholeText(places.source()));
            Operation operation(places.request(isMove ? OperationKind::Move : OperationKind::Copy,
                                               {"large", "tree"}));
            const int steps = int(random.bounded(60));
            for (int step = 0; step < steps && !operation.hasEnded(); ++step) {
                if (operation.step(0) == Operation::State::Surveyed)
                    operation.begin();
            }
            operation.cancel();
            runToEnd(operation);
            cut += operation.state() == Operation::State::Cancelled ? 1 : 0;
            const QByteArrayList source = wholeText(places.source());
            const QByteArrayList target = wholeText(places.target());
            QVERIFY(isTidy(source) && isTidy(target));
            QVERIFY(places.journals().isEmpty());
            // Each entry is in its old place or in its new one, and whole.
            for (const QByteArray& line : before) {
                if (!line.contains(" mode ") || line.contains(" mode 40"))
                    continue;
                const int found = int(source.contains(line)) + int(target.contains(line));
                QVERIFY2(isMove ? found == 1 : source.contains(line), line.constData());
            }
            for (const QByteArray& line : target)
                QVERIFY2(!line.contains(" mode 10") || before.contains(line), line.constData());
        }
        QVERIFY(cut > 10);
    }

    void aCancelledSurveyChangesNothing()
    {
        const OperationPlaces places;
        makeEveryKind(places.source("tree"));
        Operation operation(places.request(OperationKind::Delete, {"tree"}));
        operation.step(0);
        QCOMPARE(operation.state(), Operation::State::Surveying);
        operation.cancel();
        QCOMPARE(operation.step(0), Operation::State::Cancelled);
        Operation surveyed(places.request(OperationKind::Delete, {"tree"}));
        while (surveyed.step(1000) == Operation::State::Surveying) {
        }
        surveyed.cancel();
        QCOMPARE(surveyed.state(), Operation::State::Cancelled);
        QVERIFY(isThere(places.source("tree/sub/in")));
    }

    void aQuestionCanBeCancelled()
    {
        const OperationPlaces places;
        writeFile(places.source("a"), "new");
        writeFile(places.source("b"), "new");
        writeFile(places.target("b"), "old");
        Operation operation(places.request(OperationKind::Copy, {"a", "b"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        operation.begin();
        while (operation.step(1000) == Operation::State::Working) {
        }
        QCOMPARE(operation.state(), Operation::State::Asking);
        operation.cancel();
        runToEnd(operation);
        QCOMPARE(operation.state(), Operation::State::Cancelled);
        QCOMPARE(readFile(places.target("a")), QByteArray("new"));
        QCOMPARE(readFile(places.target("b")), QByteArray("old"));
        QCOMPARE(operation.outcomes(),
                 (QList<SourceOutcome>{SourceOutcome::Done, SourceOutcome::NotReached}));
    }

    void whatIsDestroyedIsLeftTidy()
    {
        const OperationPlaces places;
        writeFile(places.source("large"), QByteArray(LargeBytes, 'l'));
        {
            Operation operation(places.request(OperationKind::Copy, {"large"}));
            while (operation.step(1000) == Operation::State::Surveying) {
            }
            operation.begin();
            operation.step(0);
            operation.step(0);
        }
        QTRY_VERIFY(places.journals().isEmpty());
        QVERIFY(isTidy(wholeText(places.target())));
    }

    void aDeleteShowsHowFarItIsAndCanBeCancelled()
    {
        const OperationPlaces places;
        making::folder(places.source("tree"));
        for (int i = 0; i < 200; ++i)
            writeFile(places.source("tree/" + QByteArray::number(i)), "x");
        Operation operation(places.request(OperationKind::Delete, {"tree"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        QCOMPARE(operation.survey().entries, qint64(201));
        QCOMPARE(operation.survey().bytes, qint64(200));
        operation.begin();
        while (operation.progress().entriesDone < 100)
            operation.step(0);
        QVERIFY(operation.progress().percent() >= 49 && operation.progress().percent() < 60);
        operation.cancel();
        runToEnd(operation);
        QCOMPARE(operation.state(), Operation::State::Cancelled);
        QCOMPARE(namesIn(places.source("tree")).size(), qsizetype(100));
        QVERIFY(places.journals().isEmpty());
    }

    void progressOnlyGrowsAndEndsWithAll()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("large"), QByteArray(LargeBytes, 'l'));
        makeEveryKind(places.source("tree"));
        Operation operation(places.request(OperationKind::Copy, {"tree", "large"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        operation.begin();
        OperationProgress before;
        int between = 0;
        while (!operation.hasEnded()) {
            operation.step(0);
            const OperationProgress now = operation.progress();
            QVERIFY(now.bytesDone >= before.bytesDone && now.entriesDone >= before.entriesDone);
            QVERIFY(now.percent() >= before.percent() && now.percent() <= 100);
            QVERIFY(now.percent() < 100 || operation.hasEnded() ||
                    now.entriesDone == now.entriesTotal);
            between += now.percent() > 0 && now.percent() < 100 ? 1 : 0;
            before = now;
        }
        QVERIFY(between > 2);
        QCOMPARE(before.percent(), 100);
        QCOMPARE(before.bytesDone, operation.survey().bytes);
        QCOMPARE(before.entriesDone, operation.survey().entries);
    }

    void whatWaitsInMemoryIsNotCountedAsDone()
    {
        const OperationPlaces places;
        writeFile(places.source("small"), QByteArray(100000, 's'));
        writeFile(places.source("other"), QByteArray(100000, 'o'));
        Operation operation(places.request(OperationKind::Copy, {"small", "other"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        operation.begin();
        // Copied, but not flushed and without its name.
        bool wasWaiting = false;
        while (!operation.hasEnded()) {
            const qint64 named =
                qint64(isThere(places.target("small"))) + qint64(isThere(places.target("other")));
            QVERIFY(operation.progress().bytesDone <= named * 100000);
            wasWaiting = wasWaiting || !isTidy(wholeText(places.target()));
            operation.step(0);
        }
        QVERIFY(wasWaiting);
    }

    void whoHasCancelledIsAskedNothing_data()
    {
        QTest::addColumn<bool>("isForGood");
        QTest::newRow("cancelled") << true;
        QTest::newRow("interrupted") << false;
    }
    /// The medium answers when the user waits no more, and what it tells is a reason to ask.
    void whoHasCancelledIsAskedNothing()
    {
        QFETCH(bool, isForGood);
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("new"), "new");
        Operation operation(places.request(OperationKind::Copy, {"new"}));
        while (operation.step(100) == Operation::State::Surveying) {
        }
        writeFile(places.target("new"), "old");
        OpenGate gate;
        // The journal looks there first.
        gate.shut(places.source(), 1);
        operation.begin();
        while (gate.waiting() == 0)
            operation.step(0);
        QVERIFY(stopsWhenOpened(operation, gate, isForGood));
        QCOMPARE(readFile(places.target("new")), QByteArray("old"));
        QCOMPARE(places.journals().size(), qsizetype(isForGood ? 0 : 1));
    }

    void whoHasCancelledTheCountIsNotAskedToBegin()
    {
        const OperationPlaces places;
        OperationRequest request = places.request(OperationKind::Copy, {"new"});
        // There is nothing to count, so that it is over as soon as the target answers.
        request.sources = {"no full path"};
        Operation operation(request);
        OpenGate gate;
        gate.shut(places.target());
        while (gate.waiting() == 0)
            operation.step(0);
        QVERIFY(stopsWhenOpened(operation, gate, true));
    }

    void piecesSuitTheMedium_data()
    {
        QTest::addColumn<qint64>("bytesPerSecond");
        QTest::newRow("an old card") << qint64(1000 * 1000);
        QTest::newRow("a slow stick") << qint64(8 * 1000 * 1000);
        QTest::newRow("a disk") << qint64(150 * 1000 * 1000);
        QTest::newRow("a fast disk") << qint64(2000) * 1000 * 1000;
    }
    void piecesSuitTheMedium()
    {
        QFETCH(qint64, bytesPerSecond);
        Pace pace;
        const auto timeOf = [bytesPerSecond](qint64 bytes) {
            return bytes * 1000000 / bytesPerSecond;
        };
        for (int i = 0; i < 20; ++i) {
            pace.notePiece(pace.pieceBytes(), timeOf(pace.pieceBytes()));
            pace.noteFlush(pace.batchBytes(), pace.batchEntries(), timeOf(pace.batchBytes()));
        }
        // A cancel is heard after a piece and a flush at most.
        QVERIFY(timeOf(pace.pieceBytes()) + timeOf(pace.batchBytes()) < 500 * 1000);
        // And the medium is not kept from work by questions.
        QVERIFY(pace.pieceBytes() >= std::min<qint64>(bytesPerSecond / 20, 16 * 1024 * 1024));
    }

    void manyEntriesTakeNoLongToBeFlushedOnASlowMedium()
    {
        Pace pace;
        for (int i = 0; i < 20; ++i)
            pace.noteFlush(1000, pace.batchEntries(), pace.batchEntries() * 5000);
        QVERIFY(pace.batchEntries() * 5000 <= 300 * 1000);
        for (int i = 0; i < 20; ++i)
            pace.noteFlush(1000, pace.batchEntries(), pace.batchEntries() * 10);
        QVERIFY(pace.batchEntries() >= 1000);
    }

private:
    static bool stopsWhenOpened(Operation& operation, OpenGate& gate, bool isForGood)
    {
        if (isForGood)
            operation.cancel();
        else
            operation.interrupt();
        gate.open();
        constexpr int LongestMs = 20000;
        QElapsedTimer timer;
        timer.start();
        while (!operation.hasEnded() && timer.elapsed() < LongestMs)
            operation.step(30);
        return operation.state() == Operation::State::Cancelled;
    }
};

QUARN_TEST_MAIN(tst_OperationCancel)
#include "tst_operationcancel.moc"
