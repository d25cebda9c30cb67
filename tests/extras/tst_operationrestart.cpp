// What an interrupted operation finds at another start: places and entries that are not what they
// were.

#include "extras/journals.h"
#include "extras/operation.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <cerrno>
#include <fcntl.h>
#include <linux/magic.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

struct Told {
    QByteArray path;
    Trouble trouble = Trouble::Missing;
    int error = 0;

    friend bool operator==(const Told&, const Told&) = default;
};

QList<Told> toldBy(const Operation& operation)
{
    QList<Told> all;
    for (const Failure& failure : operation.failures().first)
        all.append({failure.path, failure.trouble, failure.error});
    return all;
}

void beginWork(Operation& operation)
{
    while (operation.step(100) == Operation::State::Surveying) {
    }
    operation.begin();
}

/// Runs one to its end, and leaves the journal that a power cut would have left just before it.
void runAndKeepJournal(const OperationPlaces& places, const OperationRequest& request)
{
    Operation operation(request);
    beginWork(operation);
    const QByteArray path = operation.journal();
    const QByteArray kept = places.state() + "/kept";
    QCOMPARE(link(path.constData(), kept.constData()), 0);
    runToEnd(operation);
    QVERIFY(operation.failures().isEmpty());
    QCOMPARE(rename(kept.constData(), path.constData()), 0);
}

/// Moves, and is cut short when the new entry is there and the old one has not gone yet.
void cutBeforeSourcesGo(const OperationRequest& request, const QByteArray& waitedFor,
                        std::optional<quint64> kind = {})
{
    CallFaults faults;
    if (kind)
        faults.pretendKind(*kind);
    Operation operation(request);
    beginWork(operation);
    while (!isThere(waitedFor))
        operation.step(0);
    faults.holdFlushing();
    while (!faults.isFlushing())
        operation.step(0);
    operation.interrupt();
    runToEnd(operation);
}

/// The one that there is. Whoever flushed it may still be about to let it go.
QByteArray onlyJournal()
{
    QList<InterruptedOperation> found;
    static_cast<void>(QTest::qWaitFor([&found] {
        found = findJournals();
        return !found.isEmpty();
    }));
    return found.size() == 1 ? found.first().journal : QByteArray();
}

/// Gives all files of a folder other numbers, as a file system that makes them up does with the
/// next mount.
void renumber(const QByteArray& folder)
{
    for (const QByteArray& name : namesIn(folder)) {
        const QByteArray path = folder + '/' + name;
        struct stat info = {};
        QCOMPARE(lstat(path.constData(), &info), 0);
        writeFile(path + ".new", readFile(path));
        const timespec times[] = {info.st_atim, info.st_mtim};
        QCOMPARE(utimensat(AT_FDCWD, (path + ".new").constData(), times, 0), 0);
        QCOMPARE(rename((path + ".new").constData(), path.constData()), 0);
        struct stat now = {};
        QCOMPARE(lstat(path.constData(), &now), 0);
        QVERIFY(now.st_ino != info.st_ino);
    }
}

} // namespace

class tst_OperationRestart : public QObject
{
    Q_OBJECT

private slots:
    void anotherOneWithTheNameOfTheSourceIsNoSource()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("file"), "moved");
        making::age(places.source("file"), 1300000000);
        runAndKeepJournal(places, places.request(OperationKind::Move, {"file"}));
        QVERIFY(!isThere(places.source("file")));
        writeFile(places.source("file"), "other");
        const auto back = Operation::takeBack(onlyJournal());
        QVERIFY(back != nullptr);
        runToEnd(*back);
        QCOMPARE(toldBy(*back),
                 (QList<Told>{{places.target("file"), Trouble::CannotRename, EEXIST}}));
        QCOMPARE(readFile(places.target("file")), QByteArray("moved"));
        QCOMPARE(readFile(places.source("file")), QByteArray("other"));
    }

    void aCopyStaysIfItIsTheOnlyOneByNow_data()
    {
        QTest::addColumn<bool>("isWrittenTo");
        QTest::addColumn<Trouble>("trouble");
        QTest::newRow("its source has gone") << false << Trouble::Missing;
        QTest::newRow("its source is another one") << true << Trouble::SourceChanged;
    }
    void aCopyStaysIfItIsTheOnlyOneByNow()
    {
        QFETCH(bool, isWrittenTo);
        QFETCH(Trouble, trouble);
        const OperationPlaces places;
        writeFile(places.source("file"), "copied");
        writeFile(places.source("beside"), "beside");
        ageAll(places.source());
        runAndKeepJournal(places, places.request(OperationKind::Copy, {"file", "beside"}));
        QCOMPARE(unlink(places.source("file").constData()), 0);
        if (isWrittenTo)
            writeFile(places.source("file"), "other ");
        const auto back = Operation::takeBack(onlyJournal());
        QVERIFY(back != nullptr);
        runToEnd(*back);
        QCOMPARE(toldBy(*back), (QList<Told>{{places.source("file"), trouble, 0}}));
        QCOMPARE(namesIn(places.target()), QList<QByteArray>{"file"});
        QCOMPARE(readFile(places.target("file")), QByteArray("copied"));
    }

    void whatHasGoneFromBothPlacesIsTold()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("file"), "moved");
        runAndKeepJournal(places, places.request(OperationKind::Move, {"file"}));
        QCOMPARE(unlink(places.target("file").constData()), 0);
        const auto back = Operation::takeBack(onlyJournal());
        QVERIFY(back != nullptr);
        runToEnd(*back);
        QCOMPARE(toldBy(*back), (QList<Told>{{places.target("file"), Trouble::Missing, ENOENT}}));
    }

    /// The number of an entry that has gone is given to another one soon.
    void anotherOneWithTheNumberOfACopyIsNoCopy()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        writeFile(places.source("tree/file"), "moved");
        ageAll(places.source());
        cutBeforeSourcesGo(places.request(OperationKind::Move, {"tree"}),
                           places.target("tree/file"));
        writeFile(places.target("tree/file"), "other");
        const auto rest = Operation::finish(onlyJournal());
        QVERIFY(rest != nullptr);
        runToEnd(*rest, Answer::KeepBoth);
        QVERIFY(rest->failures().isEmpty());
        QCOMPARE(readFile(places.target("tree/file")), QByteArray("other"));
        QCOMPARE(readFile(places.target("tree/file (2)")), QByteArray("moved"));
        QVERIFY(!isThere(places.source("tree")));
    }

    void aSourceThatWasWrittenToSinceStays()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        writeFile(places.source("tree/file"), "moved");
        ageAll(places.source());
        cutBeforeSourcesGo(places.request(OperationKind::Move, {"tree"}),
                           places.target("tree/file"));
        writeFile(places.source("tree/file"), "later");
        const auto rest = Operation::finish(onlyJournal());
        QVERIFY(rest != nullptr);
        runToEnd(*rest);
        QCOMPARE(toldBy(*rest),
                 (QList<Told>{{places.source("tree/file"), Trouble::SourceChanged, 0}}));
        QCOMPARE(readFile(places.source("tree/file")), QByteArray("later"));
        QCOMPARE(readFile(places.target("tree/file")), QByteArray("moved"));
    }

    /// A name that was to be given and was not is no other name of the same file.
    void onlyWhatWasMadeIsLinkedTo()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        QByteArrayList names{"first"};
        writeFile(places.source("first"), "linked");
        for (int i = 0; i < 600; ++i) {
            names.append("between " + QByteArray::number(i));
            writeFile(places.source(names.last()), "x");
        }
        names.append("second");
        QCOMPARE(link(places.source("first").constData(), places.source("second").constData()), 0);
        Operation operation(places.request(OperationKind::Move, names));
        beginWork(operation);
        while (namesIn(places.target()).isEmpty())
            operation.step(0);
        writeFile(places.target("first"), "other");
        runToEnd(operation, Answer::LeaveOut);
        QVERIFY(operation.failures().isEmpty());
        QCOMPARE(readFile(places.target("first")), QByteArray("other"));
        QCOMPARE(readFile(places.source("first")), QByteArray("linked"));
        QCOMPARE(readFile(places.target("second")), QByteArray("linked"));
        QVERIFY(!isThere(places.source("second")));
    }

    void whatCannotBeReachedIsToldAndCanBeDoneLater_data()
    {
        QTest::addColumn<bool>("isFinished");
        QTest::addColumn<bool>("isTarget");
        QTest::newRow("finish, target") << true << true;
        QTest::newRow("finish, source") << true << false;
        QTest::newRow("take back, target") << false << true;
        QTest::newRow("take back, source") << false << false;
    }
    void whatCannotBeReachedIsToldAndCanBeDoneLater()
    {
        QFETCH(bool, isFinished);
        QFETCH(bool, isTarget);
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        writeFile(places.source("tree/file"), "moved");
        ageAll(places.source());
        cutBeforeSourcesGo(places.request(OperationKind::Move, {"tree"}),
                           places.target("tree/file"));
        const QByteArray place = isTarget ? places.target() : places.source();
        QCOMPARE(rename(place.constData(), (place + " away").constData()), 0);
        const auto resume = [isFinished] {
            auto operation =
                isFinished ? Operation::finish(onlyJournal()) : Operation::takeBack(onlyJournal());
            runToEnd(*operation);
            return operation;
        };
        QCOMPARE(toldBy(*resume()), (QList<Told>{{place, Trouble::CannotRead, ENOENT}}));
        // A folder that a drive is not mounted on.
        making::folder(place);
        QCOMPARE(toldBy(*resume()), (QList<Told>{{place, Trouble::CannotRead, ENODEV}}));
        QVERIFY(namesIn(place).isEmpty());
        QCOMPARE(rmdir(place.constData()), 0);
        QCOMPARE(rename((place + " away").constData(), place.constData()), 0);
        QCOMPARE(toldBy(*resume()), QList<Told>());
        QVERIFY(places.journals().isEmpty());
        const QByteArray end = isFinished ? places.target("tree/file") : places.source("tree/file");
        QCOMPARE(readFile(end), QByteArray("moved"));
        QCOMPARE(isThere(places.target("tree")), isFinished);
        QCOMPARE(isThere(places.source("tree")), !isFinished);
    }

    void numbersThatDoNotLastTellNothing_data()
    {
        QTest::addColumn<bool>("isFinished");
        QTest::newRow("finish") << true;
        QTest::newRow("take back") << false;
    }
    void numbersThatDoNotLastTellNothing()
    {
        QFETCH(bool, isFinished);
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        for (const char* name : {"a", "b", "c"})
            writeFile(places.source(QByteArray("tree/") + name), name);
        ageAll(places.source());
        cutBeforeSourcesGo(places.request(OperationKind::Move, {"tree"}), places.target("tree/c"),
                           MSDOS_SUPER_MAGIC);
        renumber(places.source("tree"));
        renumber(places.target("tree"));
        CallFaults faults;
        faults.pretendKind(MSDOS_SUPER_MAGIC);
        const auto rest =
            isFinished ? Operation::finish(onlyJournal()) : Operation::takeBack(onlyJournal());
        QVERIFY(rest != nullptr);
        while (!rest->hasEnded())
            QVERIFY(rest->step(100) != Operation::State::Asking);
        QCOMPARE(toldBy(*rest), QList<Told>());
        const QByteArray end = isFinished ? places.target() : places.source();
        QCOMPARE(namesIn(end), QList<QByteArray>{"tree"});
        QCOMPARE(namesIn(end + "/tree"), (QList<QByteArray>{"a", "b", "c"}));
        QCOMPARE(namesIn(isFinished ? places.source() : places.target()), QList<QByteArray>());
    }

    /// Of what has been changed there it cannot be told what it is: it stays, and that is said.
    void whatCannotBeToldFromAnotherOneStays()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("tree"));
        writeFile(places.source("tree/file"), "moved");
        ageAll(places.source());
        CallFaults faults;
        faults.pretendKind(MSDOS_SUPER_MAGIC);
        runAndKeepJournal(places, places.request(OperationKind::Move, {"tree"}));
        QCOMPARE(
            rename(places.target("tree/file").constData(), places.target("tree/else").constData()),
            0);
        writeFile(places.target("tree/file"), "other");
        const auto back = Operation::takeBack(onlyJournal());
        runToEnd(*back);
        QVERIFY(toldBy(*back).contains(Told{places.target("tree/file"), Trouble::ChangedSince, 0}));
        QCOMPARE(readFile(places.target("tree/file")), QByteArray("other"));
        QCOMPARE(readFile(places.target("tree/else")), QByteArray("moved"));
    }
};

QUARN_TEST_MAIN(tst_OperationRestart)
#include "tst_operationrestart.moc"
