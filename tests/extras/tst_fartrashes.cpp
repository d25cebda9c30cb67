// Trashes of file systems that may never answer.

#include "extras/fartrashes.h"
#include "tests/extras/opengate.h"
#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <memory>

class tst_FarTrashes : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        places_.emplace(TrashPlaces::Elsewhere);
        places_->tellMount("fuse.sshfs", "rw");
        making::file(places_->top("a"), "a");
        QCOMPARE(places_->trash().put(places_->top("a")).outcome, Trash::Outcome::Done);
    }
    void cleanup()
    {
        gate_.open();
        QTRY_COMPARE(gate_.waiting(), 0);
        places_.reset();
    }

    void whatIsFarIsListedWhenItAnswers()
    {
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        QVERIFY(far.entries().isEmpty());
        far.ask();
        QTRY_COMPARE(answers, 1);
        QCOMPARE(far.entries().size(), 1);
        QCOMPARE(far.entries().first().path, places_->top("a"));
        // Each asking has an answer, and what is new is in it.
        making::file(places_->top("b"), "b");
        QCOMPARE(places_->trash().put(places_->top("b")).outcome, Trash::Outcome::Done);
        far.ask();
        QTRY_COMPARE(answers, 2);
        QCOMPARE(far.entries().size(), 2);
        far.drop(far.entries().first());
        QCOMPARE(far.entries().size(), 1);
    }

    void nobodyWaitsForWhatDoesNotAnswer()
    {
        gate_.shut(places_->top());
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        far.ask();
        QTRY_COMPARE(gate_.waiting(), 1);
        QVERIFY(far.entries().isEmpty());
        QVERIFY(places_->trash().entries().isEmpty());
        // What is being asked is not asked once more.
        far.ask();
        QCOMPARE(gate_.waiting(), 1);
        gate_.open();
        QTRY_COMPARE(answers, 1);
        QCOMPARE(far.entries().size(), 1);
    }

    /// An answer that was on its way when something changed is not the last word.
    void whatIsAskedMeanwhileIsAskedAfterwards()
    {
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        gate_.watch(places_->top());
        far.ask();
        QTRY_COMPARE(answers, 1);
        const int once = gate_.passes();
        gate_.shut(places_->top());
        far.ask();
        QTRY_COMPARE(gate_.waiting(), 1);
        far.ask();
        gate_.open();
        QTRY_COMPARE(answers, 2);
        QCOMPARE(gate_.passes(), 2 * once);
        gate_.shut(places_->top());
        far.ask();
        QTRY_COMPARE(gate_.waiting(), 1);
        far.drop(far.entries().first());
        QVERIFY(far.entries().isEmpty());
        gate_.open();
        QTRY_COMPARE(answers, 3);
        QCOMPARE(gate_.passes(), 2 * once);
        QCOMPARE(far.entries().size(), 1);
    }

    void whoHasLostInterestWaitsForNothing()
    {
        gate_.shut(places_->top());
        auto far = std::make_unique<FarTrashes>(places_->trash(), [] { QFAIL("nobody asks"); });
        far->ask();
        QTRY_COMPARE(gate_.waiting(), 1);
        far.reset();
        QCOMPARE(gate_.waiting(), 1);
        gate_.open();
        QTRY_COMPARE(gate_.waiting(), 0);
        QCoreApplication::processEvents();
    }

    void whatOthersHaveLeftHalfIsTidied()
    {
        const QByteArray stale = places_->ownTrash() + "/info/gone.trashinfo";
        making::file(stale, "[Trash Info]\nPath=gone\n");
        making::age(stale, 1300000000);
        int answers = 0;
        FarTrashes far(places_->trash(), [&answers] { ++answers; });
        far.ask();
        QTRY_COMPARE(answers, 1);
        QVERIFY(!isThere(stale));
    }

private:
    OpenGate gate_;
    std::optional<TrashPlaces> places_;
};

QUARN_TEST_MAIN(tst_FarTrashes)
#include "tst_fartrashes.moc"
