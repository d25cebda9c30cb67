// Who may do what with what was copied or moved, as a user without root's powers does it.

#include "extras/journals.h"
#include "extras/operation.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/rootpowers.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <array>
#include <cerrno>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

constexpr const char* Access = "system.posix_acl_access";
constexpr const char* Default = "system.posix_acl_default";

/// An access list as the system stores it: its version, then kind, permissions and number of each
/// entry. The user of that number may do what the owner may.
QByteArray listFor(quint32 user, quint16 owners)
{
    struct Entry {
        quint16 kind;
        quint16 permissions;
        quint32 number;
    };
    const std::array<Entry, 5> entries{
        {{1, owners, ~0U}, {2, owners, user}, {4, 0, ~0U}, {16, owners, ~0U}, {32, 0, ~0U}}};
    constexpr quint32 Version = 2;
    return QByteArray(reinterpret_cast<const char*>(&Version), sizeof Version) +
           QByteArray(reinterpret_cast<const char*>(entries.data()), sizeof entries);
}

void setList(const QByteArray& path, const char* name, const QByteArray& list)
{
    QCOMPARE(setxattr(path.constData(), name, list.constData(), size_t(list.size()), 0), 0);
}

QByteArray listOf(const QByteArray& path, const char* name)
{
    std::array<char, 256> value{};
    const ssize_t size = getxattr(path.constData(), name, value.data(), value.size());
    return {value.data(), qsizetype(std::max<ssize_t>(size, 0))};
}

void beginWork(Operation& operation)
{
    while (operation.step(100) == Operation::State::Surveying) {
    }
    operation.begin();
}

} // namespace

class tst_OperationRights : public QObject
{
    Q_OBJECT

private slots:
    void aFolderThatForbidsWritingTakesInWhatIsInIt_data()
    {
        QTest::addColumn<bool>("isCutShort");
        QTest::newRow("in one go") << false;
        QTest::newRow("cut short and gone on with") << true;
    }
    void aFolderThatForbidsWritingTakesInWhatIsInIt()
    {
        QFETCH(bool, isCutShort);
        const OperationPlaces places;
        constexpr quint16 ReadAndEnter = 5;
        const QByteArray list = listFor(1234, ReadAndEnter);
        making::folder(places.source("tree"));
        // More than one batch, so that the folder has its name before all is in it.
        for (int i = 0; i < 600; ++i)
            writeFile(places.source("tree/" + QByteArray::number(i)), "in");
        setList(places.source("tree"), Access, list);
        ageAll(places.source());
        const QByteArrayList before = wholeText(places.source("tree"));
        Operation operation(places.request(OperationKind::Copy, {"tree"}));
        beginWork(operation);
        while (isCutShort && !isThere(places.target("tree")))
            operation.step(0);
        if (isCutShort)
            operation.interrupt();
        runToEnd(operation);
        QCOMPARE(operation.failures().count, qint64(0));
        if (isCutShort) {
            QCOMPARE(operation.state(), Operation::State::Cancelled);
            // Whoever flushed the journal may still be about to let it go.
            QTRY_COMPARE(findJournals().size(), qsizetype(1));
            const auto rest = Operation::finish(findJournals().first().journal);
            QVERIFY(rest != nullptr);
            runToEnd(*rest);
            QCOMPARE(rest->failures().count, qint64(0));
        }
        QCOMPARE(differences(before, wholeText(places.target("tree"))), QByteArray());
        QCOMPARE(listOf(places.target("tree"), Access), list);
        QCOMPARE(chmod(places.source("tree").constData(), 0755), 0);
        QCOMPARE(chmod(places.target("tree").constData(), 0755), 0);
    }

    void attributesAndListsOfFoldersAreKept()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        constexpr quint16 All = 7;
        making::folder(places.source("tree"));
        setList(places.source("tree"), Default, listFor(77, All));
        setList(places.source("tree"), Access, listFor(78, All));
        making::folder(places.source("tree/plain"));
        writeFile(places.source("tree/file"), "file");
        setList(places.source("tree/file"), Access, listFor(79, All));
        ageAll(places.source());
        const QByteArray inherited = listOf(places.source("tree/plain"), Access);
        QVERIFY(!inherited.isEmpty());
        runWell(places.request(OperationKind::Copy, {"tree"}));
        QCOMPARE(listOf(places.target("tree"), Default), listFor(77, All));
        QCOMPARE(listOf(places.target("tree"), Access), listFor(78, All));
        QCOMPARE(listOf(places.target("tree/file"), Access), listFor(79, All));
        QCOMPARE(listOf(places.target("tree/plain"), Access), inherited);
    }

    /// As of a file of somebody else's that others may read.
    void aCopyThatItsOwnerMayNotReadIsWrittenOutAllTheSame_data()
    {
        QTest::addColumn<int>("flushError");
        QTest::newRow("well") << 0;
        QTest::newRow("broken medium") << EIO;
    }
    void aCopyThatItsOwnerMayNotReadIsWrittenOutAllTheSame()
    {
        QFETCH(int, flushError);
        const OperationPlaces places(OperationPlaces::Apart);
        constexpr mode_t OthersRead = 0044;
        writeFile(places.source("theirs"), "theirs");
        Operation operation(places.request(OperationKind::Copy, {"theirs"}));
        beginWork(operation);
        {
            CallFaults faults;
            // It is open for reading by then, as one that belongs to somebody else could be.
            faults.beforeReading([&places](int number) {
                if (number == 0)
                    QCOMPARE(chmod(places.source("theirs").constData(), OthersRead), 0);
            });
            if (flushError != 0)
                faults.failFlushing(flushError, false);
            runToEnd(operation);
        }
        struct stat made = {};
        const bool isMade = lstat(places.target("theirs").constData(), &made) == 0;
        QCOMPARE(isMade, flushError == 0);
        if (!isMade) {
            QCOMPARE(toldLines(operation),
                     QByteArrayList{toldLine("theirs", Trouble::CannotWrite, flushError)});
            return;
        }
        QCOMPARE(toldLines(operation), QByteArrayList());
        QCOMPARE(made.st_mode & 07777, OthersRead);
        QCOMPARE(chmod(places.target("theirs").constData(), 0600), 0);
        QCOMPARE(readFile(places.target("theirs")), QByteArray("theirs"));
    }

    void listsOfPipesAreKept()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        constexpr quint16 All = 7;
        making::fifo(places.source("pipe"));
        making::fifo(places.source("plain"));
        setList(places.source("pipe"), Access, listFor(80, All));
        setList(places.target(), Default, listFor(77, All));
        runWell(places.request(OperationKind::Move, {"pipe", "plain"}));
        QCOMPARE(listOf(places.target("pipe"), Access), listFor(80, All));
        QCOMPARE(listOf(places.target("plain"), Access), QByteArray());
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    /// What the target's folder gives to what is new in it the source has not.
    void whatATargetGivesToNewEntriesIsTakenAway()
    {
        const OperationPlaces places;
        constexpr quint16 All = 7;
        making::folder(places.source("tree"));
        writeFile(places.source("tree/file"), "file");
        setList(places.target(), Default, listFor(77, All));
        runWell(places.request(OperationKind::Copy, {"tree"}));
        QCOMPARE(listOf(places.target("tree"), Default), QByteArray());
        QCOMPARE(listOf(places.target("tree"), Access), QByteArray());
        QCOMPARE(listOf(places.target("tree/file"), Access), QByteArray());
    }
};

int main(int argc, char** argv)
{
    giveUpRootPowers(argv);
    tst_OperationRights test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_operationrights.moc"
