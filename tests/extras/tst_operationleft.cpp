// Cancelled operations that the medium keeps, and what becomes of them when the program ends.

#include "extras/journal.h"
#include "extras/journalreader.h"
#include "extras/journals.h"
#include "extras/operation.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QElapsedTimer>
#include <QTest>

#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

class tst_OperationLeft : public QObject
{
    Q_OBJECT

private slots:
    void theJournalTellsThatItWasCancelled_data()
    {
        QTest::addColumn<bool>("isForGood");
        QTest::newRow("cancelled") << true;
        QTest::newRow("interrupted") << false;
    }
    void theJournalTellsThatItWasCancelled()
    {
        QFETCH(bool, isForGood);
        const OperationPlaces places;
        makeFiles(places);
        Operation operation(places.request(OperationKind::Copy, {"tree"}));
        QByteArray notes;
        {
            CallFaults faults;
            workUntilHeld(operation, faults);
            if (isForGood)
                operation.cancel();
            else
                operation.interrupt();
            endsSoon(operation);
            QCOMPARE(places.journals().size(), qsizetype(1));
            notes = readFile(journalOf(places));
        }
        if (isForGood)
            QTRY_VERIFY(places.journals().isEmpty());
        else
            QTRY_COMPARE(findJournals().size(), qsizetype(1));
        // As if the program had been killed then.
        const QByteArray path = journalFolder() + "/left.journal";
        writeFile(path, notes);
        const QList<InterruptedOperation> found = findJournals();
        QVERIFY(!found.isEmpty());
        for (const InterruptedOperation& one : found) {
            if (one.journal == path)
                QCOMPARE(one.wasCancelled, isForGood);
        }
        // Who goes on has not cancelled it any more.
        QVERIFY(Journal::resume(path) != nullptr);
        for (const InterruptedOperation& one : findJournals())
            QVERIFY(!one.wasCancelled && !one.isDamagedInPart);
    }

    void aTakingBackThatIsCancelledIsNotTheOperation()
    {
        const OperationPlaces places;
        makeFiles(places);
        auto journal = Journal::begin(places.request(OperationKind::Copy, {"tree"}), {});
        const QByteArray path = journal->path();
        writeFile(places.target(journal->temporaryPrefix() + "1"), "half");
        journal.reset();
        const auto back = Operation::takeBack(path);
        {
            CallFaults faults;
            faults.hold(CallFaults::Call::Remove);
            while (!faults.isHolding())
                back->step(0);
            back->cancel();
            endsSoon(*back);
        }
        QTRY_COMPARE(findJournals().size(), qsizetype(1));
        QVERIFY(!findJournals().first().wasCancelled);
    }

    /// Whatever comes after a cancel.
    void anInterruptBehindACancelLosesNothing()
    {
        const OperationPlaces places;
        makeFiles(places);
        const QByteArrayList before = withoutFolderTimes(wholeText(places.source()));
        {
            Operation operation(places.request(OperationKind::Copy, {"tree"}));
            CallFaults faults;
            workUntilHeld(operation, faults);
            operation.cancel();
            operation.interrupt();
            endsSoon(operation);
            operation.interrupt();
            operation.cancel();
            QCOMPARE(operation.step(0), Operation::State::Cancelled);
            QCOMPARE(places.journals().size(), qsizetype(1));
        }
        QTRY_VERIFY(places.journals().isEmpty());
        QCOMPARE(withoutFolderTimes(wholeText(places.source())), before);
        QCOMPARE(readFile(places.target("tree/0")), QByteArray("0"));
    }

    void damagedNotesOfACancelAreTold()
    {
        const OperationPlaces places;
        makeFiles(places);
        auto journal = Journal::begin(places.request(OperationKind::Copy, {"tree"}), {});
        const QByteArray path = journal->path();
        journal.reset();
        const qsizetype size = readFile(path).size();
        Journal::note(path, JournalRecord::Type::Cancelled);
        const QByteArray whole = readFile(path);
        QVERIFY(whole.size() > size);
        QVERIFY(findJournals().first().wasCancelled);
        QVERIFY(!findJournals().first().isDamagedInPart);
        QByteArray damaged = whole;
        damaged[whole.size() - 1] = char(damaged[whole.size() - 1] ^ 1);
        writeFile(path, damaged);
        QVERIFY(!findJournals().first().wasCancelled);
        QVERIFY(findJournals().first().isDamagedInPart);
        // What was cut short is as if it had not been noted.
        writeFile(path, whole.chopped(1));
        QVERIFY(!findJournals().first().wasCancelled);
        QVERIFY(!findJournals().first().isDamagedInPart);
        // There is nothing to be noted of what is gone.
        QVERIFY(discardJournal(path));
        Journal::note(path, JournalRecord::Type::Cancelled);
        QVERIFY(!hasJournals());
    }

    void aProgramThatEndsMeanwhileLeavesAllForTheNextStart()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        makeFiles(places);
        QCOMPARE(runDriver(places, "stays"), 0);
        const QList<InterruptedOperation> found = findJournals();
        QCOMPARE(found.size(), qsizetype(1));
        QVERIFY(found.first().wasCancelled && !found.first().isDamagedInPart);
        const auto rest = Operation::finish(found.first().journal);
        QVERIFY(rest != nullptr);
        runToEnd(*rest);
        QCOMPARE(rest->state(), Operation::State::Finished);
        QVERIFY(rest->failures().isEmpty() && places.journals().isEmpty());
        QCOMPARE(wholeText(places.target("tree")), wholeText(places.source("tree")));
    }

    void aMediumThatAnswersWhileTheProgramEndsDoesNoHarm()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        makeFiles(places);
        QCOMPARE(runDriver(places, "answers"), 0);
        QVERIFY(places.journals().isEmpty());
        QCOMPARE(readFile(places.target("tree/0")), QByteArray("0"));
    }

private:
    static void makeFiles(const OperationPlaces& places)
    {
        making::folder(places.source("tree"));
        for (const char* name : {"0", "1", "2"})
            writeFile(places.source("tree/" + QByteArray(name)), name);
        ageAll(places.source());
    }

    static QByteArray journalOf(const OperationPlaces& places)
    {
        return journalFolder() + '/' + places.journals().value(0);
    }

    static void workUntilHeld(Operation& operation, CallFaults& faults)
    {
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.begin();
        faults.hold(CallFaults::Call::Rename);
        while (!faults.isHolding())
            operation.step(0);
    }

    static void endsSoon(Operation& operation)
    {
        QElapsedTimer timer;
        timer.start();
        while (!operation.hasEnded())
            operation.step(30);
        // It takes less than a second; a machine that has more to do may take some more.
        QVERIFY2(timer.elapsed() < 3000, QByteArray::number(timer.elapsed()).constData());
        QCOMPARE(operation.state(), Operation::State::Cancelled);
    }

    /// Its exit status; -1 if it did not get that far.
    static int runDriver(const OperationPlaces& places, const char* how)
    {
        const std::string program = LEAVING_DRIVER;
        const QByteArray target = places.target();
        const QByteArray source = places.source("tree");
        const QByteArray state = "XDG_STATE_HOME=" + places.state();
        std::vector<char*> arguments{const_cast<char*>(program.c_str()), const_cast<char*>(how),
                                     const_cast<char*>(target.constData()),
                                     const_cast<char*>(source.constData()), nullptr};
        std::vector<char*> environment{const_cast<char*>(state.constData()), nullptr};
        pid_t child = 0;
        int status = 0;
        if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments.data(),
                        environment.data()) != 0 ||
            waitpid(child, &status, 0) != child || !WIFEXITED(status))
            return -1;
        return WEXITSTATUS(status);
    }
};

QUARN_TEST_MAIN(tst_OperationLeft)
#include "tst_operationleft.moc"
