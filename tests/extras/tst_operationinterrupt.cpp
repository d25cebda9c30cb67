// Operations that the end of the program cuts short.

#include "extras/journals.h"
#include "extras/operation.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QRandomGenerator>
#include <QTest>

#include <sys/stat.h>

#include <algorithm>

class tst_OperationInterrupt : public QObject
{
    Q_OBJECT

private slots:
    void whatWasInterruptedCanBeFinished_data() { addKinds(); }
    void whatWasInterruptedCanBeFinished()
    {
        QFETCH(OperationKind, kind);
        QRandomGenerator random(11);
        int cut = 0;
        for (int round = 0; round < 20; ++round) {
            const OperationPlaces places(OperationPlaces::Apart);
            make(places);
            const QByteArrayList before = wholeText(places.source());
            interrupt(places, kind, int(random.bounded(120)));
            const QList<InterruptedOperation> found = findJournals();
            if (found.isEmpty())
                continue;
            ++cut;
            QVERIFY(isTidy(places.source()) && isTidy(places.target()));
            const auto rest = Operation::finish(found.first().journal);
            QVERIFY(rest != nullptr);
            runToEnd(*rest);
            QCOMPARE(rest->state(), Operation::State::Finished);
            QCOMPARE(rest->failures().count, qint64(0));
            QVERIFY(places.journals().isEmpty());
            if (kind != OperationKind::Delete)
                QCOMPARE(differences(withoutTop(before), withoutTop(wholeText(places.target()))),
                         QByteArray());
            QCOMPARE(isThere(places.source("tree")), kind == OperationKind::Copy);
        }
        QVERIFY(cut > 5);
    }

    void whatWasInterruptedCanBeTakenBack()
    {
        QRandomGenerator random(12);
        int cut = 0;
        for (int round = 0; round < 20; ++round) {
            const OperationPlaces places(OperationPlaces::Apart);
            make(places);
            const QByteArrayList before = withoutFolderTimes(wholeText(places.source()));
            interrupt(places, OperationKind::Move, int(random.bounded(120)));
            const QList<InterruptedOperation> found = findJournals();
            if (found.isEmpty())
                continue;
            ++cut;
            const auto back = Operation::takeBack(found.first().journal);
            QVERIFY(back != nullptr);
            runToEnd(*back);
            QCOMPARE(differences(before, withoutFolderTimes(wholeText(places.source()))),
                     QByteArray());
            QCOMPARE(withoutTop(wholeText(places.target())), QByteArrayList());
        }
        QVERIFY(cut > 5);
    }

    /// What the user has called off is over, whatever comes then.
    void whatWasCancelledIsNotOfferedAgain()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        make(places);
        Operation operation(places.request(OperationKind::Copy, {"large", "tree"}));
        begin(operation);
        operation.step(0);
        operation.cancel();
        operation.interrupt();
        runToEnd(operation);
        QCOMPARE(operation.state(), Operation::State::Cancelled);
        QVERIFY(places.journals().isEmpty());
    }

    void whatIsInterruptedBeforeAnythingIsDoneLeavesNothing()
    {
        const OperationPlaces places;
        make(places);
        for (const int steps : {0, 1, 10000}) {
            Operation operation(places.request(OperationKind::Move, {"large", "tree"}));
            for (int i = 0; i < steps && operation.state() == Operation::State::Surveying; ++i)
                operation.step(0);
            operation.interrupt();
            operation.step(0);
            QCOMPARE(operation.state(), Operation::State::Cancelled);
        }
        QVERIFY(places.journals().isEmpty());
        QVERIFY(isThere(places.source("tree/sub/in")));
    }

private:
    static void addKinds()
    {
        QTest::addColumn<OperationKind>("kind");
        QTest::newRow("copy") << OperationKind::Copy;
        QTest::newRow("move") << OperationKind::Move;
        QTest::newRow("delete") << OperationKind::Delete;
    }

    static void make(const OperationPlaces& places)
    {
        makeEveryKind(places.source("tree"));
        writeFile(places.source("large"), QByteArray(2000000, 'l'));
        for (int i = 0; i < 30; ++i)
            writeFile(places.source("tree/sub/deep/" + QByteArray::number(i)), "small");
        // For whom root's powers do not count what cannot be written cannot go.
        if (chmod(places.source("tree/locked").constData(), 0755) == 0)
            ageAll(places.source());
    }

    static void begin(Operation& operation)
    {
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.begin();
    }

    static void interrupt(const OperationPlaces& places, OperationKind kind, int steps)
    {
        Operation operation(places.request(kind, {"large", "tree"}));
        begin(operation);
        for (int i = 0; i < steps && !operation.hasEnded(); ++i)
            operation.step(0);
        operation.interrupt();
        runToEnd(operation);
    }

    static bool isTidy(const QByteArray& path)
    {
        const QByteArrayList lines = wholeText(path);
        return std::none_of(lines.begin(), lines.end(),
                            [](const QByteArray& line) { return line.contains(".quarn-"); });
    }

    /// Without what the folder itself is, which gets other times.
    static QByteArrayList withoutTop(QByteArrayList lines)
    {
        lines.removeIf([](const QByteArray& line) { return !line.startsWith('/'); });
        return lines;
    }
};

QUARN_TEST_MAIN(tst_OperationInterrupt)
#include "tst_operationinterrupt.moc"
