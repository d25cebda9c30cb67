#include "extras/inodeset.h"
#include "tests/support/testmain.h"

class tst_InodeSet : public QObject
{
    Q_OBJECT

private slots:
    void eachEntryIsNewOnce()
    {
        InodeSet set;
        for (const EntryIdentity entry :
             {EntryIdentity{1, 1}, EntryIdentity{1, 2}, EntryIdentity{2, 1}, EntryIdentity{1, 65},
              EntryIdentity{1, quint64(1) << 63}, EntryIdentity{0, 0}}) {
            QVERIFY(!set.contains(entry));
            QVERIFY(set.insert(entry));
            QVERIFY(!set.insert(entry));
            QVERIFY(set.contains(entry));
        }
        QVERIFY(set.insert({2, 2}));
    }

    void neighboursShareTheirPlace()
    {
        constexpr quint64 Many = 1000000;
        InodeSet set;
        for (quint64 number = 1; number <= Many; ++number)
            QVERIFY(set.insert({7, number}));
        QVERIFY(set.places() <= qsizetype(Many / 64 + 1));
    }
};

QUARN_TEST_MAIN(tst_InodeSet)
#include "tst_inodeset.moc"
