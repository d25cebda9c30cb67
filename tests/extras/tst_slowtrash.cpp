// A trash on a medium that takes long to answer.

#include "browser/filebrowserftab.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/opengate.h"
#include "tests/extras/trashcommandtest.h"
#include "tests/support/testmain.h"

#include <QFile>

class tst_SlowTrash : public TrashCommandTest
{
    Q_OBJECT

private slots:
    void init()
    {
        TrashCommandTest::init();
        shown_.clear();
        fixture_->write(1, {"a"});
        fixture_->start();
        throwAway("a");
        log();
    }
    void cleanup()
    {
        gate_.open();
        QTRY_COMPARE(gate_.waiting(), 0);
        TrashCommandTest::cleanup();
    }

    void theUserCanStopTheList()
    {
        gate_.shut(trash());
        follow({{isStuck(), stopAndAnswer()}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(shown_, QStringList("Counting: 0"));
        QVERIFY(entryPage() == nullptr);
        QCOMPARE(log(), QStringList());
    }

    void theUserCanStopTheLookForWhatIsToGo()
    {
        gate_.shut(trash(), 1);
        follow({{isStuck(), stopAndAnswer()}, {rows(1), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(shown_, QStringList("Please wait.."));
    }

    void theUserCanStopTheCount()
    {
        follow({{rows(1),
                 [this] {
                     gate_.shut(trash());
                     choosing('2')();
                 }},
                {isStuck(), stopAndAnswer()},
                {rows(1), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(shown_, QStringList("Counting: 0|0 b"));
        // Nothing was asked, and nothing is gone.
        QCOMPARE(log(), QStringList());
        QCOMPARE(trashed(), QStringList("a"));
    }

    void whatIsStoppedBeforeItIsDeletedStays()
    {
        fixture_->log().expect({[this] {
            gate_.shut(trash());
            yes();
        }});
        // It is known to be stopped when the list is looked for anew.
        follow({{rows(1), choosing('2')},
                {isStuck(), stop()},
                {[this] { return gate_.waiting() > 1; }, [this] { gate_.open(); }},
                {rows(1), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(shown_, QStringList("Entries: 0 / 1"));
        QCOMPARE(trashed(), QStringList("a"));
    }

    /// What the user wants while the list is looked for anew is done when it is there.
    void whatIsAskedForMeanwhileIsDone()
    {
        fixture_->log().expect({[this] {
            gate_.shut(trash());
            no();
        }});
        follow({{rows(1), choosing('2')},
                {[this] { return gate_.waiting() > 0; },
                 [this] {
                     constexpr int Restore = 0;
                     QMetaObject::invokeMethod(entryPage(), "commanded", Q_ARG(int, Restore));
                     gate_.open();
                 }},
                {rows(0), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(files().read("left/a"), QByteArray("a"));
    }

    void nobodyWaitsForARestoreToReachTheMedium()
    {
        CallFaults faults;
        faults.holdFlushing();
        bool isShown = false;
        follow({{rows(1), choosing('1')},
                {[&faults] { return operationBox() != nullptr && faults.isFlushing(); },
                 [&isShown] {
                     isShown = true;
                     leave();
                 }},
                {[] { return pageWithKeys() != nullptr; }, leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QVERIFY(isShown);
        QCOMPARE(files().read("left/a"), QByteArray("a"));
    }

    /// What has been brought to another file system is there, whatever its trash still has to do.
    void nobodyWaitsForATrashToForget()
    {
        const ScratchFolder data(ScratchFolder::Memory);
        const ScratchFolder state;
        qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
        qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
        putFolder(data, fixture_->left("f"));
        follow({{rows(1),
                 [this, &data] {
                     // It is opened once before, to see that it has to be copied.
                     gate_.shut(QFile::encodeName(data.path("Trash")) + '\0', 1);
                     choosing('1')();
                 }},
                {isStuck(), stopAndAnswer()},
                {rows(0), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(shown_, QStringList("f"));
        QCOMPARE(files().read("left/f/in"), QByteArray("content"));
        QVERIFY(!data.exists("Trash/info/f.trashinfo"));
    }

    void whatGoesToTheTrashAtLastIsListedNoMore()
    {
        fixture_->write(1, {"b"});
        fixture_->panel(1)->setDir(fixture_->left(), 0);
        {
            CallFaults faults;
            faults.hold(CallFaults::Call::Rename);
            follow(
                {{[&faults] { return operationBox() != nullptr && faults.isHolding(); }, leave}});
            throwAway("b");
            QVERIFY(faults.isHolding());
            QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "b"}));
        }
        QTRY_COMPARE(fixture_->program().rows(1), QStringList(".."));
        QCOMPARE(trashed(), (QStringList{"a", "b"}));
    }

private:
    QByteArray trash() const { return QFile::encodeName(data_->path("Trash")); }

    /// A box tells of something that does not come to an end.
    std::function<bool()> isStuck()
    {
        return [this] { return operationBox() != nullptr && gate_.waiting() > 0; };
    }
    std::function<void()> stop()
    {
        return [this] {
            shown_.append(operationBox()->property("lines").toStringList().join('|'));
            leave();
        };
    }
    /// Stops it; then the medium answers, be it before the program has heard of the stop.
    std::function<void()> stopAndAnswer()
    {
        return [this] {
            stop()();
            gate_.open();
        };
    }

    OpenGate gate_;
    QStringList shown_; ///< in boxes that were stopped
};

QUARN_TEST_MAIN(tst_SlowTrash)
#include "tst_slowtrash.moc"
