// Operations on a medium that takes its time to write.

#include "extras/journal.h"
#include "extras/journals.h"
#include "extras/operation.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <linux/magic.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

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
        const auto ends = std::make_shared<std::atomic<int>>(0);
        operation.setLateEnd([ends] { ++*ends; });
        begin(operation);
        QByteArrayList copied;
        {
            CallFaults faults;
            faults.holdFlushing();
            while (!faults.isFlushing())
                operation.step(0);
            cancelQuickly(operation, faults);
            if (kind == OperationKind::Delete)
                return;
            // What is not on the medium has no name, and no source has gone for it.
            QCOMPARE(withoutFolderTimes(wholeText(places.source())), before);
            QVERIFY(!isThere(places.target("tree")));
            QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::NotReached});
            // Until then a power cut finds a journal, which is nobody else's.
            QCOMPARE(places.journals().size(), qsizetype(1));
            QVERIFY(findJournals().isEmpty());
            QCOMPARE(*ends, 0);
            copied = names(places.target());
        }
        // What was copied whole is kept when the medium is ready, whoever still looks, and is told
        // of.
        QTRY_COMPARE(*ends, 1);
        QCOMPARE(places.journals(), QByteArrayList());
        QCOMPARE(names(places.target()).size(), copied.size());
        QCOMPARE(readFile(places.target("tree/0")), QByteArray("0"));
        QVERIFY(isTidy(places));
        if (kind == OperationKind::Copy)
            QCOMPARE(withoutFolderTimes(wholeText(places.source())), before);
        else
            QCOMPARE(names(places.source()).size() + copied.size(),
                     qsizetype(files) + (files < 300 ? 1 : 2));
    }

    void cancelDoesNotWaitForAnyCall_data()
    {
        QTest::addColumn<CallFaults::Call>("call");
        QTest::newRow("a part is written out") << CallFaults::Call::WriteOut;
        QTest::newRow("a file is cut or made longer") << CallFaults::Call::Cut;
        QTest::newRow("something is read") << CallFaults::Call::Read;
        QTest::newRow("a name is given") << CallFaults::Call::Rename;
        QTest::newRow("something goes") << CallFaults::Call::Remove;
    }
    void cancelDoesNotWaitForAnyCall()
    {
        QFETCH(CallFaults::Call, call);
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("large"), QByteArray(qsizetype(20) * 1024 * 1024, 'l'));
        writeFile(places.source("holes"), "holes");
        QCOMPARE(truncate(places.source("holes").constData(), 1000000), 0);
        making::folder(places.target("holes"));
        writeFile(places.target("holes/in"), "replaced");
        Operation operation(places.request(OperationKind::Move, {"large", "holes"}));
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.decideForAll(Answer::Replace);
        operation.begin();
        {
            CallFaults faults;
            faults.hold(call);
            while (!faults.isHolding())
                operation.step(0);
            stepsQuickly(operation);
            cancelQuickly(operation, faults);
        }
        QTRY_COMPARE(places.journals(), QByteArrayList());
        QVERIFY(isTidy(places));
        for (const char* name : {"large", "holes"})
            QVERIFY(isThere(places.source(name)) != isFile(places.target(name)));
    }

    void aJournalThatCannotBeWrittenYetIsNotWaitedFor()
    {
        const OperationPlaces places;
        makeFiles(places, 5);
        Operation operation(places.request(OperationKind::Copy, {"tree"}));
        while (operation.step(100) == Operation::State::Surveying) {
        }
        {
            CallFaults faults;
            faults.holdFlushing();
            QElapsedTimer timer;
            timer.start();
            operation.begin();
            QVERIFY2(timer.elapsed() < 2000, QByteArray::number(timer.elapsed()).constData());
            QVERIFY(faults.isFlushing());
            QCOMPARE(operation.state(), Operation::State::Working);
            stepsQuickly(operation);
            cancelQuickly(operation, faults);
            QCOMPARE(names(places.target()), QByteArrayList());
        }
        QTRY_COMPARE(places.journals(), QByteArrayList());
        QCOMPARE(names(places.target()), QByteArrayList());
    }

    void whatAnEarlierRunLeftIsNotWaitedFor_data()
    {
        QTest::addColumn<bool>("isFinished");
        QTest::newRow("finish") << true;
        QTest::newRow("take back") << false;
    }
    void whatAnEarlierRunLeftIsNotWaitedFor()
    {
        QFETCH(bool, isFinished);
        const OperationPlaces places(OperationPlaces::Apart);
        makeFiles(places, 5);
        auto journal = Journal::begin(places.request(OperationKind::Copy, {"tree"}), {});
        const QByteArray path = journal->path();
        writeFile(places.target(journal->temporaryPrefix() + "1"), "half");
        journal.reset();
        auto rest = isFinished ? Operation::finish(path) : Operation::takeBack(path);
        QVERIFY(rest != nullptr);
        {
            CallFaults faults;
            faults.hold(CallFaults::Call::Remove);
            while (!faults.isHolding())
                rest->step(0);
            stepsQuickly(*rest);
            cancelQuickly(*rest, faults);
        }
        // What is taken back in part can be taken back further.
        if (isFinished)
            QTRY_COMPARE(places.journals(), QByteArrayList());
        else
            QTRY_COMPARE(findJournals().size(), qsizetype(1));
        QCOMPARE(names(places.target()), QByteArrayList());
    }

    /// A file system that fills holes would do each in one go.
    void holesAreFilledInPiecesWhereThereCanBeNone()
    {
        constexpr qint64 Bytes = 40 * 1024 * 1024;
        const OperationPlaces places;
        writeFile(places.source("holes"), "begin");
        QCOMPARE(truncate(places.source("holes").constData(), Bytes), 0);
        Operation operation(places.request(OperationKind::Copy, {"holes"}));
        begin(operation);
        CallFaults faults;
        faults.pretendKind(MSDOS_SUPER_MAGIC);
        qint64 mostGrown = 0;
        for (qint64 before = 0; !operation.hasEnded();) {
            operation.step(0);
            struct stat info = {};
            const QList<QByteArray> there = namesIn(places.target());
            if (there.isEmpty() || lstat(places.target(there.first()).constData(), &info) != 0)
                continue;
            mostGrown = std::max(mostGrown, qint64(info.st_size) - before);
            before = info.st_size;
        }
        QVERIFY(mostGrown > 0 && mostGrown <= Bytes / 2);
        struct stat made = {};
        QCOMPARE(lstat(places.target("holes").constData(), &made), 0);
        QCOMPARE(qint64(made.st_size), Bytes);
        QVERIFY(qint64(made.st_blocks) * 512 >= Bytes);
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
        // Something of the run before may still be flushed, too.
        while (isThere(places.target("tree")) || !faults.isFlushing())
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

    static bool isFile(const QByteArray& path)
    {
        struct stat info = {};
        return lstat(path.constData(), &info) == 0 && S_ISREG(info.st_mode);
    }

    static bool isTidy(const OperationPlaces& places)
    {
        const QByteArrayList lines = treeText(places.source()) + treeText(places.target());
        return std::none_of(lines.begin(), lines.end(),
                            [](const QByteArray& line) { return line.contains(".quarn-"); });
    }

    /// Whoever steps has the turn back soon, to hear keys.
    static void stepsQuickly(Operation& operation)
    {
        constexpr int Steps = 3;
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < Steps; ++i)
            QCOMPARE(operation.step(30), Operation::State::Working);
        QVERIFY2(timer.elapsed() < Steps * 1000, QByteArray::number(timer.elapsed()).constData());
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
