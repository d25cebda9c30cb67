#include "extras/trashamount.h"
#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <sys/stat.h>
#include <unistd.h>

class tst_TrashAmount : public QObject
{
    Q_OBJECT

private slots:
    void init() { places_.emplace(); }
    void cleanup() { places_.reset(); }

    void allThatIsBelowCounts()
    {
        making::file(top("file"), "12345");
        making::folder(top("tree"));
        making::file(top("tree/a"), "12");
        making::folder(top("tree/sub"));
        making::file(top("tree/sub/b"), "123");
        making::file(top("other"), "1234567");
        throwAway({"file", "tree", "other"});
        expectAmount({"file"}, 1, 5);
        expectAmount({"tree"}, 4, 5);
        expectAmount({"file", "tree"}, 5, 10);
    }

    void aLinkCountsAsItself()
    {
        making::file(top("kept"), "12345");
        making::folder(top("tree"));
        making::symbolicLink(top("tree/link"), top("kept"));
        making::symbolicLink(top("tree/up"), top());
        throwAway({"tree"});
        expectAmount({"tree"}, 3, 0);
    }

    void aFileWithSeveralNamesTakesItsRoomOnce()
    {
        making::folder(top("tree"));
        making::file(top("tree/a"), "12345");
        QCOMPARE(link(top("tree/a").constData(), top("tree/b").constData()), 0);
        QCOMPARE(link(top("tree/a").constData(), top("c").constData()), 0);
        throwAway({"tree", "c"});
        expectAmount({"tree", "c"}, 4, 5);
    }

    void whatHasGoneDoesNotCount()
    {
        making::file(top("a"), "12345");
        making::file(top("b"), "123");
        throwAway({"a", "b"});
        const QList<TrashEntry> entries{entry("a"), entry("b")};
        QCOMPARE(places_->trash().expunge(entries.first()).outcome, Trash::Outcome::Done);
        TrashAmount amount;
        amount.add(places_->trash(), entries, false);
        QCOMPARE(amount.entries(), 1);
        QCOMPARE(amount.bytes(), 3);
    }

    void whatCannotBeLookedIntoIsOneEntry()
    {
        making::folder(top("tree"));
        making::file(top("tree/a"), "a");
        throwAway({"tree"});
        const QByteArray inTrash = entry("tree").trash + "/files/tree";
        chmod(inTrash.constData(), 0);
        expectAmount({"tree"}, 1, 0);
        chmod(inTrash.constData(), 0700);
    }

    void nothingIsCountedOnceItIsStopped()
    {
        making::file(top("a"), "12345");
        throwAway({"a"});
        TrashAmount amount;
        amount.add(places_->trash(), {entry("a")}, true);
        QCOMPARE(amount.entries(), 0);
    }

private:
    QByteArray top(const QByteArray& name) const { return places_->top(name); }
    QByteArray top() const { return places_->top(); }
    TrashEntry entry(const QByteArray& name) const { return places_->entry(top(name)); }

    void throwAway(const QByteArrayList& names) const
    {
        for (const QByteArray& name : names)
            QCOMPARE(places_->trash().put(top(name)).outcome, Trash::Outcome::Done);
    }
    void expectAmount(const QByteArrayList& names, qint64 entries, qint64 bytes) const
    {
        QList<TrashEntry> counted;
        for (const QByteArray& name : names)
            counted.append(entry(name));
        TrashAmount amount;
        amount.add(places_->trash(), counted, false);
        QCOMPARE(amount.entries(), entries);
        QCOMPARE(amount.bytes(), bytes);
    }

    std::optional<TrashPlaces> places_;
};

QUARN_TEST_MAIN(tst_TrashAmount)
#include "tst_trashamount.moc"
