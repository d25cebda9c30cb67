// Journals: what is in them, what is left of damaged ones, and whose they are.

#include "extras/journal.h"
#include "extras/journalreader.h"
#include "extras/journals.h"
#include "extras/operation.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

OperationRequest oddRequest(const OperationPlaces& places)
{
    OperationRequest request =
        places.request(OperationKind::Move, {"a\nb", "\xff\xfe", "$(c) 'd'", "-e"});
    request.newName = "\x80";
    return request;
}

JournalRecord made(const QByteArray& name)
{
    JournalRecord record;
    record.source = 1;
    record.from = name;
    record.to = "to " + name;
    record.identity = {3, 4};
    record.replaces = true;
    record.modified = -5;
    return record;
}

/// The path of a journal that nobody works with: a request and two records.
QByteArray abandoned(const OperationPlaces& places)
{
    const auto journal = Journal::begin(oddRequest(places), {});
    journal->add(made("one"));
    journal->add(made("two"));
    journal->flush();
    return journal->path();
}

} // namespace

class tst_Journal : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhatWasWritten()
    {
        const OperationPlaces places;
        const OperationRequest request = oddRequest(places);
        const QByteArray path = abandoned(places);
        QVERIFY(hasJournals());
        const auto found = findJournals();
        QCOMPARE(found.size(), qsizetype(1));
        QCOMPARE(found[0].journal, path);
        QVERIFY(!found[0].isDamaged);
        QCOMPARE(found[0].request.kind, request.kind);
        QCOMPARE(found[0].request.sources, request.sources);
        QCOMPARE(found[0].request.target, request.target);
        QCOMPARE(found[0].request.newName, request.newName);
        QCOMPARE(found[0].entriesMade, qint64(2));
        QCOMPARE(found[0].replaced, qint64(2));
        QVERIFY(found[0].canTakeBack);
        const int file = open(path.constData(), O_RDONLY | O_CLOEXEC);
        JournalReader reader(file);
        JournalRecord record;
        QVERIFY(reader.next(record) && reader.next(record) && reader.next(record));
        QCOMPARE(record.toBytes(), made("two").toBytes());
        QCOMPARE(record.modified, qint64(-5));
        QVERIFY(!reader.next(record));
        close(file);
    }

    void liesInTheStateFolder()
    {
        qputenv("XDG_STATE_HOME", "/some/where");
        QCOMPARE(journalFolder(), QByteArray("/some/where/quarn/journals"));
        qputenv("XDG_STATE_HOME", "no/path");
        qputenv("HOME", "/home/somebody");
        QCOMPARE(journalFolder(), QByteArray("/home/somebody/.local/state/quarn/journals"));
        qunsetenv("XDG_STATE_HOME");
        QCOMPARE(journalFolder(), QByteArray("/home/somebody/.local/state/quarn/journals"));
        QVERIFY(!hasJournals());
        QVERIFY(findJournals().isEmpty());
    }

    void nobodyElseMayReadIt()
    {
        const OperationPlaces places;
        const QByteArray path = abandoned(places);
        struct stat info = {};
        QCOMPARE(stat(path.constData(), &info), 0);
        QCOMPARE(info.st_mode & 07777, mode_t(0600));
        QCOMPARE(stat((places.state() + "/quarn").constData(), &info), 0);
        QCOMPARE(info.st_mode & 07777, mode_t(0700));
    }

    void aTornEndIsLeftOut()
    {
        const OperationPlaces places;
        const QByteArray path = abandoned(places);
        const QByteArray whole = readFile(path);
        const qsizetype record = JournalReader::framed(made("two").toBytes()).size();
        const qsizetype request = whole.size() - 2 * record;
        for (qsizetype size = 0; size < whole.size(); ++size) {
            writeFile(path, whole.left(size));
            const auto found = findJournals();
            QCOMPARE(found.size(), qsizetype(1));
            QCOMPARE(found[0].isDamaged, size < request);
            const qint64 records = size < request ? 0 : (size - request) / record;
            QCOMPARE(found[0].entriesMade, records);
            QVERIFY(!found[0].isDamagedInPart);
        }
    }

    void nothingBehindADamageIsBelievedAndThatIsTold()
    {
        const OperationPlaces places;
        const QByteArray path = abandoned(places);
        const QByteArray whole = readFile(path);
        const qsizetype record = JournalReader::framed(made("two").toBytes()).size();
        const qsizetype request = whole.size() - 2 * record;
        for (qsizetype at = 0; at < whole.size(); ++at) {
            QByteArray damaged = whole;
            damaged[at] = char(damaged[at] ^ 0x41);
            writeFile(path, damaged);
            const auto found = findJournals();
            QCOMPARE(found[0].isDamaged, at < request);
            QCOMPARE(found[0].entriesMade, at < request ? 0 : (at - request) / record);
            // A damaged size of the last one may be like a record that was cut short.
            const bool isSizeOfLast = at >= request + record && at < request + record + 4;
            if (!isSizeOfLast)
                QCOMPARE(found[0].isDamagedInPart, at >= request);
            if (!found[0].isDamaged)
                continue;
            QVERIFY(Operation::finish(path) == nullptr);
            QCOMPARE(errno, EBADMSG);
            QVERIFY(Operation::takeBack(path) == nullptr);
            QCOMPARE(errno, EBADMSG);
        }
        QVERIFY(discardJournal(path));
        QVERIFY(!hasJournals());
    }

    void whatAnOlderVersionWroteIsNotCalledDamaged()
    {
        const OperationPlaces places;
        const QByteArray path = abandoned(places);
        QVERIFY(!findJournals().first().isOlder);
        QByteArray older = readFile(path);
        older.replace("quarn journal 2\n", "quarn journal 1\n");
        writeFile(path, older);
        QVERIFY(findJournals().first().isDamaged && findJournals().first().isOlder);
        older[3] = '?';
        writeFile(path, older);
        QVERIFY(findJournals().first().isDamaged && !findJournals().first().isOlder);
    }

    void aLengthWithoutItsContentIsNoDamage()
    {
        const OperationPlaces places;
        const QByteArray path = abandoned(places);
        const QByteArray whole = readFile(path);
        for (qsizetype size = 1; size < 100; ++size) {
            writeFile(path, whole.chopped(size) + QByteArray(4096, '\0'));
            QVERIFY(!findJournals().first().isDamagedInPart);
        }
    }

    void aDamageIsToldWhenItIsGoneOnWith_data()
    {
        QTest::addColumn<bool>("isFinished");
        QTest::newRow("finish") << true;
        QTest::newRow("take back") << false;
    }
    void aDamageIsToldWhenItIsGoneOnWith()
    {
        QFETCH(bool, isFinished);
        const OperationPlaces places;
        writeFile(places.source("x"), "x");
        auto journal = Journal::begin(places.request(OperationKind::Copy, {"x"}), {});
        const QByteArray path = journal->path();
        for (const char* name : {"a", "b", "c"})
            journal->add(made(name));
        QVERIFY(journal->flush());
        journal.reset();
        QByteArray damaged = readFile(path);
        const qsizetype record = JournalReader::framed(made("a").toBytes()).size();
        damaged[damaged.size() - 2 * record - 20] ^= 1;
        writeFile(path, damaged);
        const auto resume = [&path, isFinished] {
            return isFinished ? Operation::finish(path) : Operation::takeBack(path);
        };
        // That is not forgotten when it is cut short again.
        auto cut = resume();
        QVERIFY(cut != nullptr);
        cut->interrupt();
        runToEnd(*cut);
        QVERIFY(findJournals().first().isDamagedInPart);
        const auto rest = resume();
        runToEnd(*rest);
        const Failure told = rest->failures().first.first();
        QCOMPARE(told.path, places.target());
        QCOMPARE(told.trouble, Trouble::NotesDamaged);
        QVERIFY(places.journals().isEmpty());
    }

    void anythingMayLieInTheFolder()
    {
        const OperationPlaces places;
        abandoned(places);
        const QByteArray folder = places.state() + "/quarn/journals/";
        making::folder(folder + "folder.journal");
        making::fifo(folder + "fifo.journal");
        makeLink(folder + "link.journal", "/etc/passwd");
        writeFile(folder + "empty.journal", {});
        writeFile(folder + "else", "x");
        writeFile(folder + "unbegun.new", "x");
        const auto found = findJournals();
        QCOMPARE(found.size(), qsizetype(2));
        QCOMPARE(int(found[0].isDamaged) + int(found[1].isDamaged), 1);
        // What never came to say anything has gone, what is not ours stays.
        QVERIFY(!isThere(folder + "unbegun.new"));
        QVERIFY(isThere(folder + "else"));
    }

    void isNotTakenFromWhoWorksWithIt()
    {
        const OperationPlaces places;
        writeFile(places.source("one"), "one");
        writeFile(places.source("two"), "two");
        writeFile(places.target("one"), "old");
        Operation operation(places.request(OperationKind::Copy, {"one", "two"}));
        while (operation.step(1000) == Operation::State::Surveying) {
        }
        operation.begin();
        QCOMPARE(operation.journalError(), 0);
        while (operation.step(1000) == Operation::State::Working) {
        }
        QCOMPARE(operation.state(), Operation::State::Asking);
        // The lock is of this process, but each one that is opened has its own.
        QVERIFY(hasJournals());
        QVERIFY(findJournals().isEmpty());
        QVERIFY(Operation::finish(operation.journal()) == nullptr);
        QCOMPARE(errno, EWOULDBLOCK);
        QVERIFY(!discardJournal(operation.journal()));
        runToEnd(operation, Answer::Replace);
        QCOMPARE(readFile(places.target("one")), QByteArray("one"));
        QVERIFY(!hasJournals());
    }

    void twoInstancesWorkSideBySide()
    {
        const OperationPlaces places;
        writeFile(places.source("one"), "one");
        writeFile(places.source("two"), "two");
        Operation first(places.request(OperationKind::Copy, {"one"}));
        Operation second(places.request(OperationKind::Copy, {"two"}));
        while (!first.hasEnded() || !second.hasEnded()) {
            for (Operation* operation : {&first, &second}) {
                if (operation->step(0) == Operation::State::Surveyed)
                    operation->begin();
            }
        }
        QCOMPARE(namesIn(places.target()), (QList<QByteArray>{"one", "two"}));
        QVERIFY(!hasJournals());
    }

    void whatIsDiscardedLeavesNothingTemporary()
    {
        const OperationPlaces places;
        auto journal = Journal::begin(places.request(OperationKind::Copy, {"x"}), {});
        const QByteArray path = journal->path();
        const QByteArray prefix = journal->temporaryPrefix();
        making::folder(places.target("joined"));
        JournalRecord record;
        record.type = JournalRecord::Type::Joined;
        record.to = "joined";
        record.mode = S_IFDIR | 0755;
        journal->add(record);
        QVERIFY(journal->flush());
        writeFile(places.target(prefix + "1"), "half");
        making::folder(places.target(prefix + "2"));
        writeFile(places.target(prefix + "2/in"), "half");
        writeFile(places.target("joined/" + prefix + "3"), "half");
        writeFile(places.target(".quarn-another-1"), "not ours");
        writeFile(places.target("joined/kept"), "kept");
        journal.reset();
        QVERIFY(discardJournal(path));
        QCOMPARE(namesIn(places.target()), (QList<QByteArray>{".quarn-another-1", "joined"}));
        QCOMPARE(namesIn(places.target("joined")), QList<QByteArray>{"kept"});
        QVERIFY(!hasJournals());
    }

    void whatHasTakenASourcesNameSinceIsNotMeant()
    {
        const OperationPlaces places;
        writeFile(places.source("file"), "meant");
        auto operation =
            std::make_unique<Operation>(places.request(OperationKind::Delete, {"file"}));
        while (operation->step(1000) == Operation::State::Surveying) {
        }
        operation->begin();
        const QByteArray path = operation->journal();
        QCOMPARE(link(path.constData(), places.source("journal").constData()), 0);
        runToEnd(*operation);
        operation.reset();
        QVERIFY(!isThere(places.source("file")));
        QCOMPARE(rename(places.source("journal").constData(), path.constData()), 0);
        // Made first, so that it cannot get the number of the one that went.
        writeFile(places.source("before"), "x");
        writeFile(places.source("file"), "not meant");
        const auto again = Operation::finish(path);
        QVERIFY(again != nullptr);
        runToEnd(*again);
        QCOMPARE(readFile(places.source("file")), QByteArray("not meant"));
        QCOMPARE(again->failures().first.first().trouble, Trouble::SourceChanged);
    }

    void whatWasPutAsideComesBack()
    {
        const OperationPlaces places;
        auto journal = Journal::begin(places.request(OperationKind::Copy, {"x"}), {});
        const QByteArray aside = journal->temporaryPrefix() + "7";
        JournalRecord record;
        record.type = JournalRecord::Type::Aside;
        record.to = "folder";
        record.temporary = aside;
        journal->add(record);
        QVERIFY(journal->flush());
        making::folder(places.target(aside));
        writeFile(places.target(aside + "/in"), "in");
        const QByteArray path = journal->path();
        journal.reset();
        QVERIFY(discardJournal(path));
        QCOMPARE(readFile(places.target("folder/in")), QByteArray("in"));
    }

    void whatSomebodyChangedIsNotTakenBack()
    {
        const OperationPlaces places;
        writeFile(places.source("kept"), "kept");
        writeFile(places.source("changed"), "changed");
        writeFile(places.target("stop"), "old");
        writeFile(places.source("stop"), "new");
        auto operation = std::make_unique<Operation>(
            places.request(OperationKind::Copy, {"kept", "changed", "stop"}));
        while (operation->step(1000) == Operation::State::Surveying) {
        }
        operation->begin();
        while (operation->step(1000) == Operation::State::Working) {
        }
        // Its journal, as a power cut would leave it when the names are given.
        const QByteArray path = operation->journal();
        QCOMPARE(link(path.constData(), places.source("journal").constData()), 0);
        operation->answer(Answer::LeaveOut, false);
        runToEnd(*operation);
        operation.reset();
        QCOMPARE(rename(places.source("journal").constData(), path.constData()), 0);
        writeFile(places.target("changed"), "by somebody");
        const auto back = Operation::takeBack(path);
        QVERIFY(back != nullptr);
        runToEnd(*back);
        QCOMPARE(back->failures().count, qint64(1));
        QCOMPARE(back->failures().first.first().trouble, Trouble::ChangedSince);
        QCOMPARE(namesIn(places.target()), (QList<QByteArray>{"changed", "stop"}));
        QCOMPARE(readFile(places.target("changed")), QByteArray("by somebody"));
    }
};

QUARN_TEST_MAIN(tst_Journal)
#include "tst_journal.moc"
