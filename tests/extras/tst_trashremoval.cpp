#include "extras/trashremoval.h"
#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

class tst_TrashRemoval : public QObject
{
    Q_OBJECT

private slots:
    void init() { places_.emplace(); }
    void cleanup() { places_.reset(); }

    void aFileIsGoneAtOnce()
    {
        making::file(top("a"), "a");
        expunge("a");
        QVERIFY(namesOf(home("files")).isEmpty());
        QVERIFY(namesOf(home("info")).isEmpty());
        QVERIFY(!removal().isNeeded());
    }

    void aFolderLeavesTheListAtOnceAndIsTakenApart()
    {
        making::file(top("kept"), "k");
        making::variety(top("tree"));
        making::symbolicLink(top("tree/out"), top("kept"));
        making::symbolicLink(top("tree/up"), top());
        const qint64 count = treeText(top("tree")).size();
        expunge("tree");
        QVERIFY(places_->trash().entries().isEmpty());
        QVERIFY(namesOf(home("info")).isEmpty());
        TrashRemoval work = removal();
        QVERIFY(work.isNeeded());
        while (work.step(50)) {
        }
        QCOMPARE(work.removed(), count);
        QCOMPARE(work.failures(), 0);
        QVERIFY(namesOf(home("expunged")).isEmpty());
        QVERIFY(!removal().isNeeded());
        QCOMPARE(readFile(top("kept")), QByteArray("k"));
    }

    void theShortestPiecesComeToTheEnd()
    {
        making::variety(top("tree"));
        expunge("tree");
        TrashRemoval work = removal();
        qint64 before = -1;
        while (work.step(0)) {
            QVERIFY(work.removed() > before || work.removed() == 0);
            before = qMax<qint64>(before, work.removed() - 1);
        }
        QVERIFY(namesOf(home("expunged")).isEmpty());
    }

    void whatAnotherTimeLeftIsTakenApart()
    {
        making::variety(top("tree"));
        expunge("tree");
        {
            TrashRemoval cut = removal();
            QVERIFY(cut.step(0));
        }
        TrashRemoval work = removal();
        while (work.step(50)) {
        }
        QVERIFY(namesOf(home("expunged")).isEmpty());
    }

    void aFolderDeeperThanAPathIsTakenApart()
    {
        makeDeep();
        expunge("deep");
        TrashRemoval work = removal();
        while (work.step(50)) {
        }
        QCOMPARE(work.failures(), 0);
        QVERIFY(namesOf(home("expunged")).isEmpty());
    }

    void permissionsKeepNothing()
    {
        making::folder(top("tree"));
        making::folder(top("tree/locked"));
        making::file(top("tree/locked/a"), "a", 0400);
        making::folder(top("tree/locked/secret"));
        making::file(top("tree/locked/secret/b"), "b");
        chmod(top("tree/locked/secret").constData(), 0);
        chmod(top("tree/locked").constData(), 0500);
        expunge("tree");
        TrashRemoval work = removal();
        while (work.step(50)) {
        }
        QCOMPARE(work.failures(), 0);
        QVERIFY(namesOf(home("expunged")).isEmpty());
    }

    void whatCannotBeRemovedIsCounted()
    {
        making::folder(top("tree"));
        expunge("tree");
        making::file(home("expunged/a"), "a");
        chmod(home("expunged").constData(), 0500);
        TrashRemoval work = removal();
        while (work.step(50)) {
        }
        QCOMPARE(work.failures(), 2);
        QCOMPARE(work.firstError(), EACCES);
        QCOMPARE(work.removed(), 0);
        chmod(home("expunged").constData(), 0700);
        QCOMPARE(namesOf(home("expunged")).size(), 2);
    }

private:
    QByteArray top(const QByteArray& name) const { return places_->top(name); }
    QByteArray top() const { return places_->top(); }
    QByteArray home(const QByteArray& name) const { return places_->home() + "/Trash/" + name; }
    TrashRemoval removal() const { return TrashRemoval(places_->trash().existing()); }

    void expunge(const QByteArray& name)
    {
        QCOMPARE(places_->trash().put(top(name)).outcome, Trash::Outcome::Done);
        QCOMPARE(places_->trash().expunge(places_->entry(top(name))).outcome, Trash::Outcome::Done);
    }

    /// Names that no system call takes all at once.
    void makeDeep() const
    {
        const QByteArray name(200, 'd');
        making::folder(top("deep"));
        FileHandle current(open(top("deep").constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        for (int depth = 0; depth < 60; ++depth) {
            QCOMPARE(mkdirat(current.get(), name.constData(), 0755), 0);
            current.reset(
                openat(current.get(), name.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        }
    }

    std::optional<TrashPlaces> places_;
};

QUARN_TEST_MAIN(tst_TrashRemoval)
#include "tst_trashremoval.moc"
