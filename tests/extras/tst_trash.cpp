#include "extras/trashsizes.h"
#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/oddnames.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QDateTime>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using Outcome = Trash::Outcome;

class tst_Trash : public QObject
{
    Q_OBJECT

private slots:
    void init() { places_.emplace(); }
    void cleanup() { places_.reset(); }

    void anEntryGoesIntoTheTrashOfTheHomeFolder()
    {
        making::variety(top("tree"));
        const QByteArrayList before = treeText(top("tree"));
        const qint64 start = QDateTime::currentSecsSinceEpoch();
        const Trash::Result result = put("tree");
        QCOMPARE(result.outcome, Outcome::Done);
        QCOMPARE(result.path, home("files/tree"));
        QVERIFY(!isThere(top("tree")));
        QCOMPARE(treeText(home("files/tree")), before);
        const TrashEntry entry = places_->entry(top("tree"));
        QCOMPARE(entry.name, QByteArray("tree"));
        QVERIFY(S_ISDIR(entry.mode));
        QVERIFY(entry.deleted >= start && entry.deleted <= start + 60);
        QVERIFY(readFile(home("info/tree.trashinfo")).startsWith("[Trash Info]\nPath=/"));
        QVERIFY(namesOf(top()).isEmpty());
    }

    void onlyTheUserMayLookIntoTheTrash()
    {
        throwAway("a");
        for (const char* folder : {"", "files", "info"}) {
            struct stat about = {};
            QCOMPARE(stat(home(folder).constData(), &about), 0);
            QCOMPARE(about.st_mode & 07777U, 0700U);
        }
    }

    void whatALinkLeadsToStays()
    {
        making::file(top("target"), "t");
        making::symbolicLink(top("link"), "target");
        making::symbolicLink(top("broken"), "none");
        QCOMPARE(put("link").outcome, Outcome::Done);
        QCOMPARE(put("broken").outcome, Outcome::Done);
        QCOMPARE(readFile(top("target")), QByteArray("t"));
        QVERIFY(S_ISLNK(places_->entry(top("link")).mode));
        QVERIFY(S_ISLNK(places_->entry(top("broken")).mode));
    }

    void theOriginHasNoLinkInIt()
    {
        making::folder(top("real"));
        making::symbolicLink(top("way"), "real");
        making::file(top("real/a"), "a");
        QCOMPARE(put("way/a").outcome, Outcome::Done);
        QCOMPARE(places_->entry(top("real/a")).name, QByteArray("a"));
    }

    void namesThatAreTakenGetANumber()
    {
        for (const char* folder : {"1", "2", "3"}) {
            making::folder(top(folder));
            making::file(top(folder) + "/a.txt", folder);
            QCOMPARE(put(QByteArray(folder) + "/a.txt").outcome, Outcome::Done);
        }
        QCOMPARE(namesOf(home("files")), QByteArrayList({"a (2).txt", "a (3).txt", "a.txt"}));
        for (const char* folder : {"1", "2", "3"}) {
            const QByteArray path = top(folder) + "/a.txt";
            QCOMPARE(restore(path), Outcome::Done);
            QCOMPARE(readFile(path), QByteArray(folder));
        }
    }

    void everyNameComesBack_data() { addOddKinds(); }
    void everyNameComesBack()
    {
        QFETCH(int, kind);
        for (const QByteArray& name : thinnedOddKinds().at(kind).names) {
            making::file(top(name), name);
            QCOMPARE(put(name).outcome, Outcome::Done);
            QVERIFY(!isThere(top(name)));
            QCOMPARE(places_->entry(top(name)).formerName(), name);
            QCOMPARE(restore(top(name)), Outcome::Done);
            QCOMPARE(readFile(top(name)), name);
        }
        QVERIFY(namesOf(home("info")).isEmpty());
    }

    void theLongestNameComesBack()
    {
        const QByteArray name = QByteArray("\xc3\xa4").repeated(127) + 'x';
        making::file(top(name), "long");
        QCOMPARE(put(name).outcome, Outcome::Done);
        QCOMPARE(restore(top(name)), Outcome::Done);
        QCOMPARE(readFile(top(name)), QByteArray("long"));
    }

    void aTrashIsRefusedWithAllThatHoldsIt()
    {
        throwAway("a");
        making::folder(top("within"));
        making::folder(top("within/data"));
        Trash::Places within = places_->places();
        within.dataHome = top("within/data");
        const Trash trash(within);
        making::file(top("b"), "b");
        QCOMPARE(trash.put(top("b")).outcome, Outcome::Done);
        for (const char* path : {"within", "within/data", "within/data/Trash",
                                 "within/data/Trash/files", "within/data/Trash/info"})
            QCOMPARE(trash.put(top(path)).outcome, Outcome::Refused);
        QVERIFY(isThere(top("within/data/Trash/files/b")));
    }

    void theFolderOfATrashToBeIsRefused()
    {
        making::folder(top("within"));
        Trash::Places within = places_->places();
        within.dataHome = top("within/data");
        QCOMPARE(Trash(within).put(top("within")).outcome, Outcome::Refused);
        QVERIFY(isThere(top("within")));
    }

    void whatLiesInATrashHasNone()
    {
        throwAway("a");
        QCOMPARE(trash().put(home("files/a")).outcome, Outcome::NoTrash);
        QVERIFY(isThere(home("files/a")));
    }

    void noPathOfAnEntryIsRefused()
    {
        making::folder(top("a"));
        for (const char* path : {"a/", "a/.", "a/.."})
            QCOMPARE(put(path).outcome, Outcome::Refused);
        QCOMPARE(trash().put("a").outcome, Outcome::Refused);
        QVERIFY(isThere(top("a")));
    }

    void whatIsGoneIsToldAsGone()
    {
        QCOMPARE(put("none").outcome, Outcome::Gone);
        QCOMPARE(put("no/where").outcome, Outcome::Gone);
    }

    void whatCannotBeMovedLeavesNothingBehind()
    {
        making::folder(top("locked"));
        making::file(top("locked/a"), "a");
        chmod(top("locked").constData(), 0555);
        const Trash::Result result = put("locked/a");
        QCOMPARE(result.outcome, Outcome::Failed);
        QCOMPARE(result.error, EACCES);
        QVERIFY(isThere(top("locked/a")));
        QVERIFY(namesOf(home("info")).isEmpty());
    }

    void aTrashThatCannotBeWrittenIsNone()
    {
        throwAway("a");
        places_->tellMount("ext4", "ro");
        chmod(home("info").constData(), 0555);
        making::file(top("b"), "b");
        const Trash::Result result = put("b");
        QCOMPARE(result.outcome, Outcome::NoTrash);
        QCOMPARE(result.error, EACCES);
        QVERIFY(isThere(top("b")));
    }

    void whatHasNoInfoFileIsInTheList_data()
    {
        QTest::addColumn<QByteArray>("info");
        QTest::newRow("none") << QByteArray();
        QTest::newRow("broken") << QByteArray("[Trash Info]\nPath=/ho");
        QTest::newRow("other") << QByteArray("words");
    }
    void whatHasNoInfoFileIsInTheList()
    {
        QFETCH(QByteArray, info);
        throwAway("first");
        making::file(home("files/lost"), "lost");
        if (!info.isEmpty())
            making::file(home("info/lost.trashinfo"), info);
        const TrashEntry entry = places_->entry({});
        QCOMPARE(entry.name, QByteArray("lost"));
        QCOMPARE(entry.formerName(), QByteArray("lost"));
        QCOMPARE(entry.deleted, qint64(0));
        QCOMPARE(entry.bytes, qint64(4));
        QCOMPARE(trash().restore(entry, top("found"), Trash::WhenTaken::Tell).outcome,
                 Outcome::Done);
        QCOMPARE(readFile(top("found")), QByteArray("lost"));
        QVERIFY(!isThere(home("info/lost.trashinfo")));
    }

    void anInfoFileOfNothingIsNotInTheList()
    {
        throwAway("first");
        making::file(home("info/none.trashinfo"), "[Trash Info]\nPath=/none\n");
        QCOMPARE(trash().entries().size(), 1);
    }

    void anInfoFileThatIsNoneIsNotReadForEver()
    {
        throwAway("first");
        making::file(home("files/pipe"), "pipe");
        making::fifo(home("info/pipe.trashinfo"));
        QCOMPARE(places_->entry({}).name, QByteArray("pipe"));
    }

    void theSizeOfAFolderIsRemembered()
    {
        making::folder(top("tree"));
        making::file(top("tree/a"), QByteArray(100000, 'a'));
        QCOMPARE(put("tree").outcome, Outcome::Done);
        const qint64 bytes = places_->entry(top("tree")).bytes;
        QVERIFY(bytes >= 100000 && bytes < 200000);
        QVERIFY(readFile(home("directorysizes")).endsWith(" tree\n"));
        // Another folder of that name, by an info file of another time.
        making::age(home("info/tree.trashinfo"), 1200000000);
        QCOMPARE(places_->entry(top("tree")).bytes, qint64(-1));
    }

    void anEntryComesBackToItsPlace()
    {
        making::folder(top("sub"));
        making::variety(top("sub/tree"));
        const QByteArrayList before = treeText(top("sub/tree"));
        QCOMPARE(put("sub/tree").outcome, Outcome::Done);
        rmdir(top("sub").constData());
        QCOMPARE(restore(top("sub/tree")), Outcome::Done);
        QCOMPARE(treeText(top("sub/tree")), before);
        QVERIFY(trash().entries().isEmpty());
        QVERIFY(namesOf(home("info")).isEmpty());
    }

    void aPlaceThatIsTakenIsTold()
    {
        throwAway("a.txt");
        making::file(top("a.txt"), "other");
        QCOMPARE(restore(top("a.txt")), Outcome::Taken);
        QCOMPARE(readFile(top("a.txt")), QByteArray("other"));
        QCOMPARE(trash().entries().size(), 1);
    }

    void aPlaceThatIsTakenByALinkToNothingIsTold()
    {
        throwAway("a.txt");
        making::symbolicLink(top("a.txt"), "none");
        QCOMPARE(restore(top("a.txt")), Outcome::Taken);
    }

    void bothAreKept()
    {
        throwAway("a.txt");
        making::file(top("a.txt"), "other");
        making::file(top("a (2).txt"), "third");
        const Trash::Result result =
            trash().restore(places_->entry(top("a.txt")), top("a.txt"), Trash::WhenTaken::KeepBoth);
        QCOMPARE(result.outcome, Outcome::Done);
        QCOMPARE(result.path, top("a (3).txt"));
        QCOMPARE(readFile(top("a (3).txt")), QByteArray("a.txt"));
        QCOMPARE(readFile(top("a.txt")), QByteArray("other"));
    }

    void whatIsReplacedGoesIntoTheTrash()
    {
        throwAway("a.txt");
        making::folder(top("a.txt"));
        making::file(top("a.txt/within"), "other");
        QCOMPARE(trash()
                     .restore(places_->entry(top("a.txt")), top("a.txt"), Trash::WhenTaken::Replace)
                     .outcome,
                 Outcome::Done);
        QCOMPARE(readFile(top("a.txt")), QByteArray("a.txt"));
        const TrashEntry replaced = places_->entry(top("a.txt"));
        QVERIFY(S_ISDIR(replaced.mode));
        QCOMPARE(readFile(home("files/" + replaced.name + "/within")), QByteArray("other"));
        QCOMPARE(trash().entries().size(), 1);
    }

    void anotherOneOfTheNameIsNotRestoredOrDeleted()
    {
        throwAway("a");
        const TrashEntry meant = places_->entry(top("a"));
        making::file(home("files/other"), "other");
        QCOMPARE(rename(home("files/other").constData(), home("files/a").constData()), 0);
        QCOMPARE(trash().restore(meant, top("a"), Trash::WhenTaken::Tell).outcome, Outcome::Gone);
        QCOMPARE(trash().expunge(meant).outcome, Outcome::Gone);
        QCOMPARE(readFile(home("files/a")), QByteArray("other"));
    }

    void aPlaceThatCannotBeMadeFails()
    {
        making::folder(top("sub"));
        making::file(top("sub/a"), "a");
        QCOMPARE(put("sub/a").outcome, Outcome::Done);
        rmdir(top("sub").constData());
        making::file(top("sub"), "in the way");
        const Trash::Result result =
            trash().restore(places_->entry(top("sub/a")), top("sub/a"), Trash::WhenTaken::Tell);
        QCOMPARE(result.outcome, Outcome::Failed);
        QCOMPARE(result.error, ENOTDIR);
        QCOMPARE(trash().entries().size(), 1);
    }

    void leftoversOfOthersAreTidiedOnceTheyAreOld()
    {
        throwAway("kept");
        making::file(home("info/old.trashinfo"), "[Trash Info]\n");
        making::age(home("info/old.trashinfo"), 1200000000);
        making::file(home("info/new.trashinfo"), "[Trash Info]\n");
        making::file(home("info/notes"), "not ours");
        making::age(home("info/notes"), 1200000000);
        making::file(home("directorysizes"), "1 2 gone\n3 4 kept\n");
        trash().tidy();
        QCOMPARE(namesOf(home("info")),
                 QByteArrayList({"kept.trashinfo", "new.trashinfo", "notes"}));
        QCOMPARE(readFile(home("directorysizes")), QByteArray("3 4 kept\n"));
        QCOMPARE(readFile(home("files/kept")), QByteArray("kept"));
    }

private:
    QByteArray top(const QByteArray& name) const { return places_->top(name); }
    QByteArray top() const { return places_->top(); }
    QByteArray home(const QByteArray& name) const { return places_->home() + "/Trash/" + name; }
    Trash trash() const { return places_->trash(); }

    Trash::Result put(const QByteArray& name) { return trash().put(top(name)); }
    /// A file that holds its own name.
    void throwAway(const QByteArray& name)
    {
        making::file(top(name), name);
        QCOMPARE(put(name).outcome, Outcome::Done);
    }
    Outcome restore(const QByteArray& path)
    {
        return trash().restore(places_->entry(path), path, Trash::WhenTaken::Tell).outcome;
    }

    std::optional<TrashPlaces> places_;
};

QUARN_TEST_MAIN(tst_Trash)
#include "tst_trash.moc"
