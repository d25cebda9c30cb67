// Trashes at the top of file systems other than the home folder's.

#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

class tst_TrashTops : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        places_.emplace(TrashPlaces::Elsewhere);
        making::folder(top("sub"));
        making::file(top("sub/a b"), "a");
    }
    void cleanup() { places_.reset(); }

    void anEntryStaysOnItsFileSystem()
    {
        const Trash::Result result = put("sub/a b");
        QCOMPARE(result.outcome, Trash::Outcome::Done);
        QCOMPARE(result.path, own("files/a b"));
        const QByteArray info = readFile(own("info/a b.trashinfo"));
        QVERIFY2(info.startsWith("[Trash Info]\nPath=sub/a%20b\n"), info.constData());
        const TrashEntry entry = places_->entry(top("sub/a b"));
        QCOMPARE(entry.trash, places_->ownTrash());
        QCOMPARE(trash().restore(entry, entry.path, Trash::WhenTaken::Tell).outcome,
                 Trash::Outcome::Done);
        QCOMPARE(readFile(top("sub/a b")), QByteArray("a"));
        QVERIFY(!isThere(places_->home()));
    }

    void onlyTheUserMayLookIntoIt()
    {
        put("sub/a b");
        struct stat about = {};
        QCOMPARE(stat(places_->ownTrash().constData(), &about), 0);
        QCOMPARE(about.st_mode & 07777U, 0700U);
    }

    void entriesOfAllTrashesAreListed()
    {
        put("sub/a b");
        const OwnFolder homeFolder(QByteArray(places_->home()).chopped(5));
        making::file(homeFolder.path("c"), "c");
        QCOMPARE(trash().put(homeFolder.path("c")).outcome, Trash::Outcome::Done);
        QCOMPARE(trash().entries().size(), 2);
        QCOMPARE(places_->entry(homeFolder.path("c")).trash, places_->home() + "/Trash");
    }

    void aFileSystemThatIsMountedTwiceIsListedOnce()
    {
        put("sub/a b");
        making::symbolicLink(places_->beside("again"), "top");
        places_->tellMount("ext4", "rw",
                           "99999 1 8:1 / " + places_->beside("again") +
                               " rw - ext4 /dev/sdz1 rw\n");
        QCOMPARE(trash().entries().size(), 1);
    }

    void whatTheAdministratorHasSetUpIsUsed()
    {
        making::folder(top(".Trash"), 01777);
        QCOMPARE(put("sub/a b").path, shared("files/a b"));
        QCOMPARE(places_->entry(top("sub/a b")).trash,
                 top(".Trash/") + QByteArray::number(geteuid()));
    }

    void aCommonTrashThatOthersCouldExchangeIsNotUsed()
    {
        making::folder(top(".Trash"), 0777);
        QCOMPARE(put("sub/a b").path, own("files/a b"));
    }

    void aCommonTrashThatIsALinkIsNotUsed()
    {
        making::folder(top("real"), 01777);
        making::symbolicLink(top(".Trash"), "real");
        QCOMPARE(put("sub/a b").path, own("files/a b"));
        QVERIFY(namesOf(top("real")).isEmpty());
    }

    void aTrashThatIsALinkIsNotUsed_data()
    {
        QTest::addColumn<QByteArray>("link");
        QTest::newRow("itself") << QByteArray();
        QTest::newRow("files") << QByteArray("/files");
        QTest::newRow("info") << QByteArray("/info");
    }
    void aTrashThatIsALinkIsNotUsed()
    {
        QFETCH(QByteArray, link);
        making::folder(top("real"));
        if (!link.isEmpty())
            making::folder(places_->ownTrash());
        making::symbolicLink(places_->ownTrash() + link, top("real"));
        QCOMPARE(put("sub/a b").outcome, Trash::Outcome::NoTrash);
        QVERIFY(isThere(top("sub/a b")));
        QVERIFY(namesOf(top("real")).isEmpty());
        QVERIFY(trash().entries().isEmpty());
    }

    void whereNothingIsKeptIsNoTrash_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("options");
        QTest::newRow("only to be read") << QByteArray("vfat") << QByteArray("ro,nosuid");
        QTest::newRow("not stored") << QByteArray("autofs") << QByteArray("rw");
        QTest::newRow("of other places") << QByteArray("fuse.portal") << QByteArray("rw");
    }
    void whereNothingIsKeptIsNoTrash()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, options);
        places_->tellMount(type, options);
        QCOMPARE(put("sub/a b").outcome, Trash::Outcome::NoTrash);
        QCOMPARE(namesOf(top()), QByteArrayList({"sub"}));
    }

    void whatIsFarHasATrashThatIsListedAlone_data()
    {
        QTest::addColumn<QByteArray>("type");
        for (const char* type : {"nfs4", "fuse.sshfs", "fuseblk"})
            QTest::newRow(type) << QByteArray(type);
    }
    void whatIsFarHasATrashThatIsListedAlone()
    {
        QFETCH(QByteArray, type);
        places_->tellMount(type, "rw");
        QCOMPARE(put("sub/a b").path, own("files/a b"));
        // Nobody is asked who may not answer.
        QVERIFY(trash().entries().isEmpty());
        QVERIFY(trash().existing().empty());
        QCOMPARE(trash().farTops(), QByteArrayList{top()});
        const QList<TrashEntry> entries = trash().entriesAt(top());
        QCOMPARE(entries.size(), 1);
        // What lies in it cannot be thrown away again, and it not into itself.
        QCOMPARE(trash().put(own("files/a b")).outcome, Trash::Outcome::NoTrash);
        QCOMPARE(trash().put(places_->ownTrash()).outcome, Trash::Outcome::Refused);
        QCOMPARE(
            trash().restore(entries.first(), entries.first().path, Trash::WhenTaken::Tell).outcome,
            Trash::Outcome::Done);
        QCOMPARE(readFile(top("sub/a b")), QByteArray("a"));
        QVERIFY(trash().entriesAt(top()).isEmpty());
    }

    void anUnknownMountHasNoTrash()
    {
        unlink(places_->places().mounts.constData());
        QCOMPARE(put("sub/a b").outcome, Trash::Outcome::NoTrash);
        QVERIFY(isThere(top("sub/a b")));
    }

    void aTopThatMayNotBeWrittenHasNoTrash()
    {
        chmod(top().constData(), 0555);
        const Trash::Result result = put("sub/a b");
        QCOMPARE(result.outcome, Trash::Outcome::NoTrash);
        QVERIFY(isThere(top("sub/a b")));
    }

    void aDiskDoesNotTellOfPathsElsewhere_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("absolute") << QByteArray("/etc/passwd");
        QTest::newRow("up") << QByteArray("../../etc/passwd");
    }
    void aDiskDoesNotTellOfPathsElsewhere()
    {
        QFETCH(QByteArray, path);
        put("sub/a b");
        unlink(own("info/a b.trashinfo").constData());
        making::file(own("info/a b.trashinfo"),
                     "[Trash Info]\nPath=" + path + "\nDeletionDate=2026-01-01T00:00:00\n");
        QCOMPARE(places_->entry({}).name, QByteArray("a b"));
    }

    void whatIsToGoToAnotherFileSystemIsToldWhere_data()
    {
        QTest::addColumn<bool>("isTaken");
        QTest::addColumn<int>("whenTaken");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QByteArray>("name");
        const auto row = [](const char* name, bool isTaken, Trash::WhenTaken when,
                            Trash::Outcome outcome, const char* place) {
            QTest::newRow(name) << isTaken << int(when) << int(outcome) << QByteArray(place);
        };
        row("free", false, Trash::WhenTaken::Tell, Trash::Outcome::Elsewhere, "a.b");
        row("taken", true, Trash::WhenTaken::Tell, Trash::Outcome::Taken, "a.b");
        row("both", true, Trash::WhenTaken::KeepBoth, Trash::Outcome::Elsewhere, "a (2).b");
    }
    void whatIsToGoToAnotherFileSystemIsToldWhere()
    {
        QFETCH(bool, isTaken);
        QFETCH(int, whenTaken);
        put("sub/a b");
        const OwnFolder there(places_->home().chopped(5));
        if (isTaken)
            making::file(there.path("a.b"), "other");
        const Trash::Result result = trash().restore(
            places_->entry(top("sub/a b")), there.path("a.b"), Trash::WhenTaken(whenTaken));
        QTEST(int(result.outcome), "outcome");
        QFETCH(QByteArray, name);
        QCOMPARE(result.path, there.path(name));
        // Nothing is copied, and it stays listed.
        QCOMPARE(isThere(there.path("a.b")), isTaken);
        QCOMPARE(trash().entries().size(), 1);
    }

    void whatHasLeftTheTrashIsForgotten()
    {
        put("sub/a b");
        const TrashEntry entry = places_->entry(top("sub/a b"));
        QVERIFY(!trash().forget(entry));
        QVERIFY(isThere(own("info/a b.trashinfo")));
        QCOMPARE(rename(own("files/a b").constData(), top("out").constData()), 0);
        QVERIFY(trash().forget(entry));
        QVERIFY(!isThere(own("info/a b.trashinfo")));
    }

    void withoutAHomeThereIsStillTheTrashOfTheFileSystem()
    {
        Trash::Places homeless = places_->places();
        homeless.dataHome.clear();
        QCOMPARE(Trash(homeless).put(top("sub/a b")).path, own("files/a b"));
    }

    void theUsersPlacesAreTheDesktops()
    {
        const auto restored = qScopeGuard([data = qgetenv("XDG_DATA_HOME"), home = qgetenv("HOME"),
                                           had = qEnvironmentVariableIsSet("XDG_DATA_HOME")] {
            qputenv("HOME", home);
            if (had)
                qputenv("XDG_DATA_HOME", data);
            else
                qunsetenv("XDG_DATA_HOME");
        });
        qputenv("HOME", "/home/u");
        qunsetenv("XDG_DATA_HOME");
        QCOMPARE(Trash::placesOfUser().dataHome, QByteArray("/home/u/.local/share"));
        qputenv("XDG_DATA_HOME", "relative");
        QCOMPARE(Trash::placesOfUser().dataHome, QByteArray("/home/u/.local/share"));
        qputenv("XDG_DATA_HOME", "/data");
        QCOMPARE(Trash::placesOfUser().dataHome, QByteArray("/data"));
        qputenv("HOME", "");
        qunsetenv("XDG_DATA_HOME");
        QVERIFY(Trash::placesOfUser().dataHome.isEmpty());
    }

private:
    QByteArray top(const QByteArray& name) const { return places_->top(name); }
    QByteArray top() const { return places_->top(); }
    QByteArray own(const QByteArray& name) const { return places_->ownTrash() + '/' + name; }
    QByteArray shared(const QByteArray& name) const
    {
        return top(".Trash/") + QByteArray::number(geteuid()) + '/' + name;
    }
    Trash trash() const { return places_->trash(); }
    Trash::Result put(const QByteArray& name) { return trash().put(top(name)); }

    std::optional<TrashPlaces> places_;
};

QUARN_TEST_MAIN(tst_TrashTops)
#include "tst_trashtops.moc"
