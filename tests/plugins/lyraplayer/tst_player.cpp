#include "plugins/lyraplayer/player.h"
#include "tests/plugins/lyraplayer/music.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

#include <cmath>
#include <memory>

class tst_Player : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void aListIsPlayedToItsEndAndThenStops();
    void anEmptyListTakesEveryCommand();
    void nothingIsPlayedBeforeTheFirstCommand();
    void tagsAreShownElseTheName();
    void nextAndPreviousStepThroughTheList();
    void theFirstTrackBeginsAnew();
    void theLastTrackGoesOn();
    void whatCannotBePlayedIsSkippedWithAMessage_data();
    void whatCannotBePlayedIsSkippedWithAMessage();
    void aListOfNothingPlayableStops();
    void previousSkipsBackwards();
    void manySkippedTracksAreCounted();
    void pauseAndPlay();
    void aPauseWhileATrackIsOpenedHolds_data();
    void aPauseWhileATrackIsOpenedHolds();
    void aChosenTrackPlaysAlthoughPaused();
    void thePositionIsSoughtInParts();
    void aTrackThatIsBeingOpenedBeginsWhereItWasSoughtTo();
    void thePositionFollowsWhileWatched();
    void theVolumeStaysInBounds();
    void theVolumeOutlivesMpv();
    void aMissingMpvIsSaidAndCanBeTriedAgain();
    void anMpvThatDiesStopsAndPlayGoesOn();
    void aMissingSoundOutputDoesNotSkip();
    void twentyThousandMissingTracksAreSkipped();

private:
    struct Fixture {
        explicit Fixture(const Tracks& tracks, const MpvEngine::Settings& settings = silentMpv())
            : player(settings)
        {
            player.setTracks(tracks);
            current.clear();
        }
        bool plays(int track) const
        {
            return player.state() == Player::Playing && player.current() == track;
        }

        Player player;
        QSignalSpy ended{&player, &Player::listEnded};
        QSignalSpy current{&player, &Player::currentChanged};
    };

    std::unique_ptr<ScratchFolder> folder_;
    QByteArray long_, other_, short_, junk_;
};

void tst_Player::initTestCase()
{
    folder_ = std::make_unique<ScratchFolder>();
    folder_->write("long.wav", wav(60, "Long One"));
    folder_->write("other.wav", wav(60));
    folder_->write("short.wav", wav(0.2));
    folder_->write("junk.mp3", "junk");
    long_ = trackIn(*folder_, "long.wav");
    other_ = trackIn(*folder_, "other.wav");
    short_ = trackIn(*folder_, "short.wav");
    junk_ = trackIn(*folder_, "junk.mp3");
}

void tst_Player::cleanupTestCase()
{
    folder_.reset();
}

void tst_Player::aListIsPlayedToItsEndAndThenStops()
{
    Fixture f({short_, short_, short_});
    f.player.play(0);
    QTRY_COMPARE_WITH_TIMEOUT(f.ended.size(), 1, Patience);
    QCOMPARE(f.player.state(), Player::Stopped);
    // Through all, and back to the first, with which "play" begins anew.
    QCOMPARE(f.current.size(), 3);
    QCOMPARE(f.current.at(1).at(0).toInt(), 2);
    QCOMPARE(f.player.current(), 0);
    QVERIFY(f.player.engine().isRunning());
    f.player.toggle();
    QTRY_COMPARE_WITH_TIMEOUT(f.ended.size(), 2, Patience);
}

void tst_Player::anEmptyListTakesEveryCommand()
{
    Fixture f({});
    f.player.play(0);
    f.player.toggle();
    f.player.next();
    f.player.previous();
    f.player.seek(0.5);
    f.player.setWatched(true);
    QCOMPARE(f.player.current(), -1);
    QCOMPARE(f.player.state(), Player::Stopped);
    QVERIFY(!f.player.engine().isRunning());
}

void tst_Player::nothingIsPlayedBeforeTheFirstCommand()
{
    Fixture f({long_});
    f.player.play(1);
    f.player.play(-1);
    QCoreApplication::processEvents();
    QVERIFY(!f.player.engine().isRunning());
    f.player.toggle();
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
}

void tst_Player::tagsAreShownElseTheName()
{
    Fixture f({long_, other_});
    QCOMPARE(f.player.title(), QString("long"));
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    QCOMPARE(f.player.title(), QString("Long One"));
    QCOMPARE(f.player.track().length, 60.0);
    f.player.next();
    QCOMPARE(f.player.title(), QString("other"));
    QCOMPARE(f.player.track().length, 0.0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QCOMPARE(f.player.title(), QString("other"));
}

void tst_Player::nextAndPreviousStepThroughTheList()
{
    Fixture f({long_, other_, long_});
    f.player.play(0);
    f.player.next();
    f.player.next();
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(2), Patience);
    f.player.previous();
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QCOMPARE(f.player.message(), QString());
}

void tst_Player::theFirstTrackBeginsAnew()
{
    Fixture f({long_, other_});
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    f.player.seek(0.5);
    QCOMPARE(std::lround(f.player.position()), 30);
    f.player.previous();
    QCOMPARE(f.player.position(), 0.0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    QVERIFY(f.current.isEmpty());
}

void tst_Player::theLastTrackGoesOn()
{
    Fixture f({other_, long_});
    f.player.play(1);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    f.player.next();
    QVERIFY(f.plays(1));
    QVERIFY(f.player.message().contains("last track"));
    f.player.toggle();
    QVERIFY(f.player.message().isEmpty());
}

void tst_Player::whatCannotBePlayedIsSkippedWithAMessage_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("junk") << "junk.mp3";
    QTest::newRow("missing") << "missing.mp3";
    QTest::newRow("folder") << "folder.mp3";
    QTest::newRow("FIFO") << "fifo.mp3";
    QTest::newRow("link to a device") << "link.mp3";
    QTest::newRow("locked") << "locked.mp3";
}

void tst_Player::whatCannotBePlayedIsSkippedWithAMessage()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write("junk.mp3", "junk");
    folder.makeFolder("folder.mp3");
    folder.makeFifo("fifo.mp3");
    folder.makeLink("link.mp3", "/dev/zero");
    folder.write("locked.mp3", wav(1));
    folder.setMode("locked.mp3", 0);
    Fixture f({trackIn(folder, name), long_});
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QVERIFY2(f.player.message().startsWith("Skipped " + name + ": "),
             qUtf8Printable(f.player.message()));
    f.player.next();
    QVERIFY(!f.player.message().contains(name));
}

void tst_Player::aListOfNothingPlayableStops()
{
    Fixture f({junk_, "/no/such.mp3", junk_});
    f.player.play(0);
    QTRY_COMPARE_WITH_TIMEOUT(f.ended.size(), 1, Patience);
    QCOMPARE(f.player.state(), Player::Stopped);
    QVERIFY(f.player.message().startsWith("Skipped 3 tracks: junk.mp3: "));
}

void tst_Player::previousSkipsBackwards()
{
    Fixture f({long_, junk_, "/no/such.mp3", other_});
    f.player.play(3);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(3), Patience);
    f.player.previous();
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    Fixture g({junk_, long_});
    g.player.play(1);
    QTRY_VERIFY_WITH_TIMEOUT(g.plays(1), Patience);
    g.player.previous();
    QTRY_COMPARE_WITH_TIMEOUT(g.player.state(), Player::Stopped, Patience);
    QVERIFY(g.ended.isEmpty());
    QVERIFY(g.player.message().startsWith("Skipped junk.mp3: "));
}

void tst_Player::manySkippedTracksAreCounted()
{
    const QByteArray name(200, 'x');
    Fixture f({junk_, '/' + name + ".mp3", long_, short_});
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(2), Patience);
    QVERIFY(f.player.message().startsWith("Skipped 2 tracks: xxx"));
    QVERIFY2(f.player.message().size() < 100, "a long name leaves room for the reason");
    f.player.next();
    QVERIFY(f.player.message().isEmpty());
}

void tst_Player::pauseAndPlay()
{
    Fixture f({long_});
    f.player.play(0);
    QCOMPARE(f.player.state(), Player::Opening);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    f.player.toggle();
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    f.player.toggle();
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Playing, Patience);
}

void tst_Player::aPauseWhileATrackIsOpenedHolds_data()
{
    QTest::addColumn<bool>("loading");
    QTest::addColumn<int>("presses");
    QTest::newRow("before mpv has it") << false << 1;
    QTest::newRow("while mpv opens it") << true << 1;
    QTest::newRow("and taken back") << false << 2;
    QTest::newRow("and taken back while mpv opens it") << true << 2;
}

void tst_Player::aPauseWhileATrackIsOpenedHolds()
{
    QFETCH(bool, loading);
    QFETCH(int, presses);
    Fixture f({long_, other_});
    QSignalSpy moved(&f.player.engine(), &MpvEngine::moved);
    QSignalSpy position(&f.player.engine(), &MpvEngine::position);
    f.player.play(0);
    if (loading)
        QTRY_VERIFY_WITH_TIMEOUT(f.player.engine().isRunning(), Patience);
    for (int press = 1; press <= presses; ++press) {
        f.player.toggle();
        QCOMPARE(f.player.isPlaying(), press % 2 == 0);
    }
    QCOMPARE(f.player.state(), Player::Opening);
    QTRY_VERIFY_WITH_TIMEOUT(!moved.isEmpty(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), presses == 1 ? Player::Paused : Player::Playing,
                              Patience);
    f.player.setWatched(true);
    QTRY_VERIFY_WITH_TIMEOUT(!position.isEmpty(), Patience);
    if (presses == 1)
        QVERIFY(position.last().at(0).toDouble() < 0.5);
    else
        QTRY_VERIFY_WITH_TIMEOUT(f.player.position() >= 1, Patience);
}

void tst_Player::aChosenTrackPlaysAlthoughPaused()
{
    Fixture f({long_, other_});
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(0), Patience);
    f.player.toggle();
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    f.player.play(1);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
}

void tst_Player::thePositionIsSoughtInParts()
{
    Fixture f({long_});
    QSignalSpy moved(&f.player.engine(), &MpvEngine::moved);
    QSignalSpy position(&f.player.engine(), &MpvEngine::position);
    f.player.seek(0.5);
    QCOMPARE(f.player.position(), 0.0);
    f.player.play(0);
    QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 1, Patience);
    f.player.toggle();
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    f.player.setWatched(true);
    f.player.seek(0.5);
    QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 2, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(
        !position.isEmpty() && std::lround(position.last().at(0).toDouble()) == 30, Patience);
    QCOMPARE(std::lround(f.player.position()), 30);
    f.player.seek(7);
    QCOMPARE(f.player.position(), 60.0);
    f.player.seek(-7);
    QCOMPARE(f.player.position(), 0.0);
}

void tst_Player::aTrackThatIsBeingOpenedBeginsWhereItWasSoughtTo()
{
    Fixture f({long_, other_});
    QSignalSpy position(&f.player.engine(), &MpvEngine::position);
    f.player.play(0);
    f.player.seek(0.5);
    f.player.toggle();
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Paused, Patience);
    QCOMPARE(std::lround(f.player.position()), 30);
    f.player.setWatched(true);
    QTRY_VERIFY_WITH_TIMEOUT(
        !position.isEmpty() && std::lround(position.last().at(0).toDouble()) == 30, Patience);

    f.player.play(0);
    f.player.seek(0.5);
    f.player.play(1);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QVERIFY(f.player.position() < 15);
}

void tst_Player::thePositionFollowsWhileWatched()
{
    Fixture f({long_});
    f.player.setWatched(true);
    f.player.play(0);
    // More than one: each leads to the next.
    QTRY_VERIFY_WITH_TIMEOUT(f.player.position() >= 1, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(f.player.position() >= 2, Patience);
    f.player.next();
    QVERIFY(f.player.position() >= 2);
}

void tst_Player::theVolumeStaysInBounds()
{
    Fixture f({long_});
    QCOMPARE(f.player.volume(), 100);
    f.player.changeVolume(1);
    QCOMPARE(f.player.volume(), 100);
    f.player.changeVolume(-1);
    QCOMPARE(f.player.volume(), 100 - Player::VolumeStep);
    f.player.changeVolume(-1000);
    QCOMPARE(f.player.volume(), 0);
}

void tst_Player::theVolumeOutlivesMpv()
{
    // Only what mpv is started with is looked at.
    const ScratchFolder folder;
    const QByteArray noted = folder.path("arguments").toUtf8();
    Fixture f({long_}, insteadOfMpv(folder, "echo \"$@\" > " + noted));
    f.player.changeVolume(-6);
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(!f.player.message().isEmpty(), Patience);
    QVERIFY(folder.read("arguments").contains("--volume=70 "));
}

void tst_Player::aMissingMpvIsSaidAndCanBeTriedAgain()
{
    MpvEngine::Settings settings;
    settings.program = folder_->path("no such program");
    Fixture f({long_, other_}, settings);
    for (int round = 0; round < 2; ++round) {
        f.player.toggle();
        QTRY_VERIFY_WITH_TIMEOUT(f.player.message().contains("cannot be started"), Patience);
        QCOMPARE(f.player.state(), Player::Stopped);
        QCOMPARE(f.player.current(), 0);
    }
}

void tst_Player::anMpvThatDiesStopsAndPlayGoesOn()
{
    Fixture f({other_, long_});
    f.player.play(1);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QCOMPARE(::kill(pid_t(f.player.engine().processId()), SIGKILL), 0);
    QTRY_COMPARE_WITH_TIMEOUT(f.player.state(), Player::Stopped, Patience);
    QVERIFY(f.player.message().contains("ended"));
    f.player.toggle();
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(1), Patience);
    QVERIFY(f.player.message().isEmpty());
}

void tst_Player::aMissingSoundOutputDoesNotSkip()
{
    MpvEngine::Settings settings;
    settings.options = QStringList{"--ao=pcm", "--ao-pcm-file=" + folder_->path("no/such")};
    Fixture f({long_, other_}, settings);
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(f.player.message().startsWith("No sound"), Patience);
    QCOMPARE(f.player.state(), Player::Stopped);
    QCOMPARE(f.player.current(), 0);
}

void tst_Player::twentyThousandMissingTracksAreSkipped()
{
    Tracks tracks(20000, "/no/such.mp3");
    tracks.append(long_);
    Fixture f(tracks);
    f.player.play(0);
    QTRY_VERIFY_WITH_TIMEOUT(f.plays(20000), Patience);
}

QUARN_TEST_MAIN(tst_Player)
#include "tst_player.moc"
