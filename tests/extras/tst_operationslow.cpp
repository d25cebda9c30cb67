// Operations on a medium that takes its time to write.

#include "extras/operation.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

class tst_OperationSlow : public QObject
{
    Q_OBJECT

private slots:
    void cancelDoesNotWaitForTheMedium_data()
    {
        QTest::addColumn<OperationKind>("kind");
        QTest::addColumn<int>("files");
        QTest::newRow("copy, each file is flushed") << OperationKind::Copy << 5;
        QTest::newRow("copy, all are flushed together") << OperationKind::Copy << 300;
        QTest::newRow("move, each file is flushed") << OperationKind::Move << 5;
        QTest::newRow("move, all are flushed together") << OperationKind::Move << 300;
        QTest::newRow("delete") << OperationKind::Delete << 5;
    }
    void cancelDoesNotWaitForTheMedium()
    {
        QFETCH(OperationKind, kind);
        QFETCH(int, files);
        const OperationPlaces places(OperationPlaces::Apart);
        makeFiles(places, files);
        const QByteArrayList before = withoutFolderTimes(wholeText(places.source()));
        Operation operation(places.request(kind, {"tree"}));
        begin(operation);
        CallFaults faults;
        faults.holdFlushing();
        while (!faults.isFlushing())
            operation.step(0);
        cancelQuickly(operation, faults);
        if (kind == OperationKind::Delete)
            return;
        // What is not on the medium has no name, and no source has gone for it.
        QCOMPARE(withoutFolderTimes(wholeText(places.source())), before);
        QCOMPARE(names(places.target()), QByteArrayList());
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::NotReached});
        QCOMPARE(places.journals(), QByteArrayList());
    }

    /// A source goes when the names of its successors are on the medium, and that is cancelled.
    void cancelledMoveKeepsWhatMayHaveNoName()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        makeFiles(places, 5);
        const QByteArrayList before = withoutFolderTimes(wholeText(places.source()));
        Operation operation(places.request(OperationKind::Move, {"tree"}));
        begin(operation);
        while (!isThere(places.target("tree/4")))
            operation.step(0);
        CallFaults faults;
        faults.holdFlushing();
        while (!faults.isFlushing())
            operation.step(0);
        cancelQuickly(operation, faults);
        QCOMPARE(withoutFolderTimes(wholeText(places.source())), before);
        QCOMPARE(readFile(places.target("tree/4")), QByteArray("4"));
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::NotReached});
    }

    void takingBackDoesNotWaitForTheMediumWhenItIsCancelled()
    {
        const OperationPlaces places;
        makeFiles(places, 5);
        QByteArray journal;
        {
            Operation operation(places.request(OperationKind::Copy, {"tree"}));
            begin(operation);
            while (!isThere(places.target("tree/4")))
                operation.step(0);
            journal = operation.journal();
            operation.interrupt();
            runToEnd(operation);
        }
        const auto back = Operation::takeBack(journal);
        QVERIFY(back != nullptr);
        CallFaults faults;
        faults.holdFlushing();
        while (!faults.isFlushing())
            back->step(0);
        cancelQuickly(*back, faults);
        QCOMPARE(names(places.target()), QByteArrayList());
    }

    /// Nothing is done by halves for a medium that is slow, either.
    void whatIsNotCancelledIsWaitedFor()
    {
        const OperationPlaces places;
        makeFiles(places, 300);
        Operation operation(places.request(OperationKind::Copy, {"tree"}));
        begin(operation);
        {
            CallFaults faults;
            faults.holdFlushing();
            while (!faults.isFlushing())
                operation.step(0);
            for (int i = 0; i < 50; ++i)
                QCOMPARE(operation.step(0), Operation::State::Working);
            QVERIFY(!isThere(places.target("tree")));
            QCOMPARE(operation.progress().entriesDone, qint64(0));
        }
        runToEnd(operation);
        QCOMPARE(operation.state(), Operation::State::Finished);
        QVERIFY(operation.failures().isEmpty());
        QCOMPARE(wholeText(places.target("tree")), wholeText(places.source("tree")));
    }

private:
    static void makeFiles(const OperationPlaces& places, int count)
    {
        making::folder(places.source("tree"));
        for (int i = 0; i < count; ++i)
            writeFile(places.source("tree/" + QByteArray::number(i)), QByteArray::number(i));
        ageAll(places.source());
        making::age(places.target(), 1300000000);
    }

    static void begin(Operation& operation)
    {
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.begin();
    }

    static QByteArrayList names(const QByteArray& folder)
    {
        QByteArrayList lines = treeText(folder);
        lines.removeIf([](const QByteArray& line) { return line.startsWith(" mode "); });
        return lines;
    }

    static void cancelQuickly(Operation& operation, const CallFaults& faults)
    {
        QElapsedTimer timer;
        timer.start();
        operation.cancel();
        while (!operation.hasEnded())
            operation.step(30);
        // It takes less than a second; a machine that has more to do may take some more.
        QVERIFY2(timer.elapsed() < 3000, QByteArray::number(timer.elapsed()).constData());
        QCOMPARE(operation.state(), Operation::State::Cancelled);
        QVERIFY(faults.isFlushing());
    }
};

QUARN_TEST_MAIN(tst_OperationSlow)
#include "tst_operationslow.moc"
