// Sources that change, vanish, have no size of their own or may not be read.

#include "extras/operation.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/rootpowers.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// How large what is in a folder has become.
qint64 readSize(const QByteArray& folder)
{
    qint64 size = 0;
    for (const QByteArray& name : namesIn(folder)) {
        struct stat info = {};
        size += lstat((folder + '/' + name).constData(), &info) == 0 ? info.st_size : 0;
    }
    return size;
}

} // namespace

class tst_OperationSources : public QObject
{
    Q_OBJECT

private slots:
    void whatDoesNotKnowItsSizeIsReadToItsEnd()
    {
        constexpr qint64 Bytes = 70 * 1024 * 1024;
        const OperationPlaces places;
        writeFile(places.source("made up"), "begin");
        QCOMPARE(truncate(places.source("made up").constData(), Bytes - 3), 0);
        const int file =
            open(places.source("made up").constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
        QCOMPARE(write(file, "end", 3), ssize_t(3));
        close(file);
        const QByteArray whole = readFile(places.source("made up"));
        CallFaults faults;
        faults.hideSizes();
        runWell(places.request(OperationKind::Copy, {"made up"}));
        QCOMPARE(whole.size(), qsizetype(Bytes));
        QVERIFY(readFile(places.target("made up")) == whole);
    }

    void whatNeverEndsCanBeCancelled()
    {
        const OperationPlaces places;
        writeFile(places.source("endless"), "begin");
        CallFaults faults;
        faults.hideSizes();
        faults.beforeReading([&places](int) {
            const int file =
                open(places.source("endless").constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
            const QByteArray more(4096, 'm');
            QCOMPARE(write(file, more.constData(), size_t(more.size())), ssize_t(more.size()));
            close(file);
        });
        Operation operation(places.request(OperationKind::Copy, {"endless"}));
        while (operation.step(100) == Operation::State::Surveying) {
        }
        operation.begin();
        while (readSize(places.target()) < 3 * 1024 * 1024)
            QCOMPARE(operation.step(0), Operation::State::Working);
        operation.cancel();
        runToEnd(operation);
        QCOMPARE(operation.state(), Operation::State::Cancelled);
        QCOMPARE(namesIn(places.target()), QList<QByteArray>());
    }

    void aSourceThatChangesIsReadAgain()
    {
        const OperationPlaces places;
        const QByteArray path = places.source("file");
        writeFile(path, QByteArray(600000, 'a'));
        CallFaults faults;
        faults.beforeReading([&path](int number) {
            if (number == 1)
                QCOMPARE(truncate(path.constData(), 500000), 0);
        });
        runWell(places.request(OperationKind::Copy, {"file"}));
        QCOMPARE(readFile(places.target("file")), QByteArray(500000, 'a'));
    }

    void aSourceThatKeepsChangingIsTold()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        const QByteArray path = places.source("file");
        writeFile(path, QByteArray(600000, 'a'));
        Operation operation(places.request(OperationKind::Move, {"file"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        operation.begin();
        {
            CallFaults faults;
            faults.beforeReading(
                [&path](int number) { QCOMPARE(truncate(path.constData(), 600001 + number), 0); });
            runToEnd(operation);
        }
        QCOMPARE(toldLines(operation), QByteArrayList{toldLine("file", Trouble::SourceChanged, 0)});
        QVERIFY(namesIn(places.target()).isEmpty());
        QVERIFY(isThere(path));
    }

    void aSourceThatVanishesIsTold()
    {
        const OperationPlaces places;
        writeFile(places.source("first"), QByteArray(600000, 'a'));
        making::folder(places.source("gone"));
        writeFile(places.source("gone/in"), "in");
        Operation operation(places.request(OperationKind::Copy, {"first", "gone"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        operation.begin();
        {
            CallFaults faults;
            faults.beforeReading([&places](int number) {
                if (number == 0) {
                    QCOMPARE(unlink(places.source("gone/in").constData()), 0);
                    QCOMPARE(rmdir(places.source("gone").constData()), 0);
                }
            });
            runToEnd(operation);
        }
        QCOMPARE(toldLines(operation), QByteArrayList{toldLine("gone", Trouble::Missing, ENOENT)});
        QCOMPARE(namesIn(places.target()), QList<QByteArray>{"first"});
    }

    void aFileThatVanishesWhileItIsReadIsWholeAllTheSame()
    {
        const OperationPlaces places;
        writeFile(places.source("file"), QByteArray(600000, 'a'));
        CallFaults faults;
        faults.beforeReading([&places](int number) {
            if (number == 1)
                QCOMPARE(unlink(places.source("file").constData()), 0);
        });
        runWell(places.request(OperationKind::Copy, {"file"}));
        QCOMPARE(readFile(places.target("file")), QByteArray(600000, 'a'));
    }

    void whatMayNotBeReadIsToldAndTheRestIsDone()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        making::folder(places.source("tree/closed"));
        writeFile(places.source("tree/closed/in"), "in");
        writeFile(places.source("tree/secret"), "secret");
        writeFile(places.source("tree/open"), "open");
        QCOMPARE(chmod(places.source("tree/closed").constData(), 0), 0);
        QCOMPARE(chmod(places.source("tree/secret").constData(), 0), 0);
        Operation operation(places.request(OperationKind::Move, {"tree"}));
        runToEnd(operation);
        QByteArrayList lines = toldLines(operation);
        std::sort(lines.begin(), lines.end());
        QCOMPARE(lines, (QByteArrayList{toldLine("closed", Trouble::CannotRead, EACCES),
                                        toldLine("secret", Trouble::CannotRead, EACCES)}));
        QCOMPARE(readFile(places.target("tree/open")), QByteArray("open"));
        QCOMPARE(namesIn(places.source("tree")), (QList<QByteArray>{"closed", "secret"}));
    }
};

int main(int argc, char** argv)
{
    giveUpRootPowers(argv);
    tst_OperationSources test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_operationsources.moc"
