#include "plugins/lyraplayer/mpvengine.h"
#include "tests/plugins/lyraplayer/music.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

#include <cmath>
#include <cstdio>
#include <unistd.h>

Q_DECLARE_METATYPE(TrackInfo)

namespace
{

/// Finds the descriptor of the connection among the arguments.
const QByteArray FindConnection =
    "for each; do case $each in *fd://*) fd=${each##*/};; esac; done\n";

/// Answers every request with a success; each track gets the next number and fails at once, with
/// what a test wants said before that. Ends once it was asked for the tags.
QByteArray failingMpv(const QByteArray& before = {})
{
    return FindConnection +
           "n=0\nwhile read -r line <&$fd; do id=${line##*:}; id=${id%\\}}\n"
           "case $line in *loadfile*) n=$((n + 1));; esac\n"
           "echo '{\"request_id\":'$id',\"error\":\"success\","
           "\"data\":{\"playlist_entry_id\":'$n'}}' >&$fd\n"
           "case $line in *loadfile*)\n" +
           before +
           "echo '{\"event\":\"end-file\",\"reason\":\"error\",\"playlist_entry_id\":'$n'}' "
           ">&$fd;;\n*metadata*) exit;; esac\ndone";
}

} // namespace

class tst_MpvEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tagsAndLengthAreToldWhenATrackIsOpened();
    void brokenTagsDoNotKeepATrackFromPlaying_data();
    void brokenTagsDoNotKeepATrackFromPlaying();
    void namesOfEveryKindArePlayed_data();
    void namesOfEveryKindArePlayed();
    void theEndOfATrackIsTold();
    void aPauseHoldsThePosition();
    void aLoadedTrackPlaysAlthoughTheLastWasPaused();
    void seekingLeadsToThePosition();
    void whatCannotBePlayedIsToldWithItsReason_data();
    void whatCannotBePlayedIsToldWithItsReason();
    void aMissingSoundOutputIsNotTheTracksFault();
    void onlyTheLastLoadedTrackIsReported();
    void aStoppedTrackIsNotReported();
    void anErrorOfATrackThatWasReplacedIsNotTheNextOnes();
    void aTrackThatIsOverIsNotReportedAsOpened();
    void aMissingProgramIsReported();
    void aProgramThatEndsIsReported_data();
    void aProgramThatEndsIsReported();
    void aProgramThatDoesNotAnswerIsGivenUp();
    void anMpvThatDiesIsReportedAndStartedAgain();
    void mpvEndsWithTheEngine();
    void mpvThatHangsEndsWithTheEngine();
    void theEnvironmentGivesOptions();
};

void tst_MpvEngine::initTestCase()
{
    qRegisterMetaType<TrackInfo>();
}

void tst_MpvEngine::tagsAndLengthAreToldWhenATrackIsOpened()
{
    const ScratchFolder folder;
    folder.write("a.wav", wav(5, "The Title", "The Artist"));
    folder.write("b.wav", wav(3));
    MpvEngine engine(silentMpv());
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    engine.load(trackIn(folder, "a.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
    const auto first = loaded.at(0).at(0).value<TrackInfo>();
    QCOMPARE(first.title, QString("The Title"));
    QCOMPARE(first.artist, QString("The Artist"));
    QCOMPARE(first.length, 5.0);
    engine.load(trackIn(folder, "b.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 2, Patience);
    const auto second = loaded.at(1).at(0).value<TrackInfo>();
    QCOMPARE(second.title, QString());
    QCOMPARE(second.length, 3.0);
}

void tst_MpvEngine::brokenTagsDoNotKeepATrackFromPlaying_data()
{
    QTest::addColumn<QByteArray>("title");
    QTest::addColumn<QString>("begin");
    QTest::newRow("no UTF-8") << QByteArray("M\xfcller") << "M";
    QTest::newRow("ten thousand lines") << QByteArray("line\n").repeated(10000) << "line line";
    QTest::newRow("longer than any message") << QByteArray(6 * 1024 * 1024, 'x') << "";
}

void tst_MpvEngine::brokenTagsDoNotKeepATrackFromPlaying()
{
    QFETCH(QByteArray, title);
    QFETCH(QString, begin);
    const ScratchFolder folder;
    folder.write("a.wav", wav(60, title, "The Artist"));
    MpvEngine engine(silentMpv());
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    QSignalSpy failed(&engine, &MpvEngine::failed);
    QSignalSpy position(&engine, &MpvEngine::position);
    engine.load(trackIn(folder, "a.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
    const auto track = loaded.at(0).at(0).value<TrackInfo>();
    QVERIFY(begin.isEmpty() ? track.title.isEmpty() : track.title.startsWith(begin));
    QVERIFY(track.title.size() <= 300);
    QCOMPARE(track.artist, QString("The Artist"));
    QCOMPARE(track.length, 60.0);
    engine.askPosition();
    QTRY_COMPARE_WITH_TIMEOUT(position.size(), 1, Patience);
    QVERIFY(failed.isEmpty());
}

void tst_MpvEngine::namesOfEveryKindArePlayed_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("blanks") << QByteArray(" a b .wav ");
    QTest::newRow("quotes and backslashes") << QByteArray("a\"b\\c'd.wav");
    QTest::newRow("control characters") << QByteArray("a\nb\tc\x01.wav");
    QTest::newRow("percent signs") << QByteArray("%1 %20.wav");
    QTest::newRow("Cyrillic") << QByteArray("\xd0\xaf.wav");
    QTest::newRow("four bytes") << QByteArray("\xf0\x9f\x98\x80.wav");
    QTest::newRow("no UTF-8") << QByteArray("M\xfcller.wav");
    QTest::newRow("like an option") << QByteArray("--ao=none.wav");
}

void tst_MpvEngine::namesOfEveryKindArePlayed()
{
    QFETCH(QByteArray, name);
    const ScratchFolder folder;
    folder.write("plain.wav", wav(2));
    const QByteArray track = trackIn(folder, QString()) + name;
    QCOMPARE(::rename(trackIn(folder, "plain.wav").constData(), track.constData()), 0);
    MpvEngine engine(silentMpv());
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    engine.load(track);
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
    QCOMPARE(::unlink(track.constData()), 0);
}

void tst_MpvEngine::theEndOfATrackIsTold()
{
    const ScratchFolder folder;
    folder.write("short.wav", wav(0.2));
    MpvEngine engine(silentMpv());
    QSignalSpy ended(&engine, &MpvEngine::ended);
    for (int round = 1; round <= 2; ++round) {
        engine.load(trackIn(folder, "short.wav"));
        QTRY_COMPARE_WITH_TIMEOUT(ended.size(), round, Patience);
    }
}

void tst_MpvEngine::aPauseHoldsThePosition()
{
    const ScratchFolder folder;
    folder.write("long.wav", wav(60));
    MpvEngine engine(silentMpv());
    QSignalSpy moved(&engine, &MpvEngine::moved);
    QSignalSpy paused(&engine, &MpvEngine::pausedChanged);
    QSignalSpy position(&engine, &MpvEngine::position);
    engine.load(trackIn(folder, "long.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 1, Patience);
    paused.clear();
    engine.setPaused(true);
    QTRY_COMPARE_WITH_TIMEOUT(paused.size(), 1, Patience);
    QCOMPARE(paused.at(0).at(0).toBool(), true);
    engine.askPosition();
    QTRY_COMPARE_WITH_TIMEOUT(position.size(), 1, Patience);
    engine.askPosition();
    QTRY_COMPARE_WITH_TIMEOUT(position.size(), 2, Patience);
    QCOMPARE(position.at(1), position.at(0));
    QCOMPARE(position.at(0).at(1).toDouble(), 60.0);
    engine.setPaused(false);
    QTRY_COMPARE_WITH_TIMEOUT(paused.size(), 2, Patience);
    QCOMPARE(paused.at(1).at(0).toBool(), false);
    const auto moves = [&] {
        engine.askPosition();
        return position.wait(Patience) &&
               position.last().at(0).toDouble() > position.first().at(0).toDouble();
    };
    QTRY_VERIFY_WITH_TIMEOUT(moves(), Patience);
}

void tst_MpvEngine::aLoadedTrackPlaysAlthoughTheLastWasPaused()
{
    const ScratchFolder folder;
    folder.write("long.wav", wav(60));
    folder.write("short.wav", wav(0.2));
    MpvEngine engine(silentMpv());
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    QSignalSpy ended(&engine, &MpvEngine::ended);
    engine.load(trackIn(folder, "long.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
    engine.setPaused(true);
    engine.load(trackIn(folder, "short.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, Patience);
}

void tst_MpvEngine::seekingLeadsToThePosition()
{
    const ScratchFolder folder;
    folder.write("long.wav", wav(60));
    MpvEngine engine(silentMpv());
    QSignalSpy moved(&engine, &MpvEngine::moved);
    QSignalSpy position(&engine, &MpvEngine::position);
    engine.load(trackIn(folder, "long.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 1, Patience);
    engine.setPaused(true);
    engine.seek(30);
    QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 2, Patience);
    engine.askPosition();
    QTRY_COMPARE_WITH_TIMEOUT(position.size(), 1, Patience);
    QCOMPARE(std::lround(position.at(0).at(0).toDouble()), 30);
}

void tst_MpvEngine::whatCannotBePlayedIsToldWithItsReason_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("junk") << QByteArray("this is no music\n");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut off") << wav(1).left(20);
    QTest::newRow("an empty list") << QByteArray("#EXTM3U\n");
}

void tst_MpvEngine::whatCannotBePlayedIsToldWithItsReason()
{
    QFETCH(QByteArray, content);
    const ScratchFolder folder;
    folder.write("a.mp3", content);
    MpvEngine engine(silentMpv());
    QSignalSpy unplayable(&engine, &MpvEngine::unplayable);
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    engine.load(trackIn(folder, "a.mp3"));
    QTRY_COMPARE_WITH_TIMEOUT(unplayable.size(), 1, Patience);
    QVERIFY(!unplayable.at(0).at(0).toString().isEmpty());
    QVERIFY(loaded.isEmpty());
    QVERIFY(engine.isRunning());
}

void tst_MpvEngine::aMissingSoundOutputIsNotTheTracksFault()
{
    const ScratchFolder folder;
    folder.write("a.wav", wav(60));
    MpvEngine::Settings settings;
    settings.options = QStringList{"--ao=pcm", "--ao-pcm-file=" + folder.path("no/such/folder")};
    MpvEngine engine(settings);
    QSignalSpy noOutput(&engine, &MpvEngine::noOutput);
    QSignalSpy unplayable(&engine, &MpvEngine::unplayable);
    engine.load(trackIn(folder, "a.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(noOutput.size(), 1, Patience);
    QVERIFY(unplayable.isEmpty());
}

void tst_MpvEngine::onlyTheLastLoadedTrackIsReported()
{
    const ScratchFolder folder;
    folder.write("junk.mp3", "junk");
    folder.write("a.wav", wav(60, "The Last"));
    MpvEngine engine(silentMpv());
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    QSignalSpy unplayable(&engine, &MpvEngine::unplayable);
    QSignalSpy ended(&engine, &MpvEngine::ended);
    for (int i = 0; i < 20; ++i)
        engine.load(trackIn(folder, "junk.mp3"));
    engine.load(trackIn(folder, "a.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
    QCOMPARE(loaded.at(0).at(0).value<TrackInfo>().title, QString("The Last"));
    QVERIFY(unplayable.isEmpty());
    QVERIFY(ended.isEmpty());
}

void tst_MpvEngine::aStoppedTrackIsNotReported()
{
    const ScratchFolder folder;
    folder.write("junk.mp3", "junk");
    folder.write("a.wav", wav(60));
    MpvEngine engine(silentMpv());
    QSignalSpy unplayable(&engine, &MpvEngine::unplayable);
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    engine.load(trackIn(folder, "junk.mp3"));
    engine.stop();
    // What mpv says of it would come before this.
    engine.load(trackIn(folder, "a.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
    QVERIFY(unplayable.isEmpty());
}

void tst_MpvEngine::anErrorOfATrackThatWasReplacedIsNotTheNextOnes()
{
    const ScratchFolder folder;
    MpvEngine engine(insteadOfMpv(folder, failingMpv()));
    QSignalSpy unplayable(&engine, &MpvEngine::unplayable);
    QSignalSpy failed(&engine, &MpvEngine::failed);
    engine.load("/first.mp3");
    engine.load("/second.mp3");
    engine.askPosition();
    QTRY_COMPARE_WITH_TIMEOUT(unplayable.size(), 1, Patience);
    // Another round, so that all that is on the way has arrived.
    engine.load("/third.mp3");
    QTRY_COMPARE_WITH_TIMEOUT(unplayable.size(), 2, Patience);
    QVERIFY(failed.isEmpty());
}

void tst_MpvEngine::aTrackThatIsOverIsNotReportedAsOpened()
{
    const ScratchFolder folder;
    const QByteArray opened = "echo '{\"event\":\"start-file\",\"playlist_entry_id\":'$n'}' >&$fd\n"
                              "echo '{\"event\":\"file-loaded\"}' >&$fd\n";
    MpvEngine engine(insteadOfMpv(folder, failingMpv(opened)));
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    QSignalSpy unplayable(&engine, &MpvEngine::unplayable);
    QSignalSpy failed(&engine, &MpvEngine::failed);
    engine.load("/a.mp3");
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, Patience);
    QCOMPARE(unplayable.size(), 1);
    QVERIFY(loaded.isEmpty());
}

void tst_MpvEngine::aMissingProgramIsReported()
{
    const ScratchFolder folder;
    MpvEngine::Settings settings;
    settings.program = folder.path("no such program");
    MpvEngine engine(settings);
    QSignalSpy failed(&engine, &MpvEngine::failed);
    for (int round = 1; round <= 2; ++round) {
        engine.load("/a.mp3");
        QTRY_COMPARE_WITH_TIMEOUT(failed.size(), round, Patience);
        QVERIFY(!engine.isRunning());
    }
    QVERIFY(failed.at(0).at(0).toString().contains("cannot be started"));
}

void tst_MpvEngine::aProgramThatEndsIsReported_data()
{
    QTest::addColumn<QByteArray>("script");
    const QByteArray& ours = FindConnection;
    QTest::newRow("at once") << QByteArray("exit 0");
    QTest::newRow("by a signal") << QByteArray("kill -SEGV $$");
    QTest::newRow("after a wrong answer")
        << ours + "echo '{\"request_id\":1,\"error\":\"success\",\"data\":[[]]}' >&$fd";
    QTest::newRow("after junk") << ours + "printf 'junk\\n\\n{\\n[]\\n\"\\0\\n' >&$fd";
    QTest::newRow("after a line without end") << ours + "head -c 20000000 /dev/zero >&$fd";
    QTest::newRow("after it has closed the connection") << ours + "exec {fd}>&-; exec sleep 600";
}

void tst_MpvEngine::aProgramThatEndsIsReported()
{
    QFETCH(QByteArray, script);
    const ScratchFolder folder;
    MpvEngine engine(insteadOfMpv(folder, script));
    QSignalSpy failed(&engine, &MpvEngine::failed);
    engine.load("/a.mp3");
    const qint64 process = engine.processId();
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, Patience);
    QVERIFY(!engine.isRunning());
    QVERIFY(process == 0 || !processExists(process));
}

void tst_MpvEngine::aProgramThatDoesNotAnswerIsGivenUp()
{
    const ScratchFolder folder;
    MpvEngine::Settings settings = insteadOfMpv(folder, "trap '' TERM\nexec sleep 600");
    settings.answerTimeoutMs = 100;
    MpvEngine engine(settings);
    QSignalSpy failed(&engine, &MpvEngine::failed);
    engine.load("/a.mp3");
    const qint64 process = engine.processId();
    QVERIFY(process > 0);
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, Patience);
    QVERIFY(failed.at(0).at(0).toString().contains("does not answer"));
    QVERIFY(!processExists(process));
}

void tst_MpvEngine::anMpvThatDiesIsReportedAndStartedAgain()
{
    const ScratchFolder folder;
    folder.write("a.wav", wav(60));
    MpvEngine engine(silentMpv());
    QSignalSpy loaded(&engine, &MpvEngine::loaded);
    QSignalSpy failed(&engine, &MpvEngine::failed);
    engine.load(trackIn(folder, "a.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
    const qint64 process = engine.processId();
    QCOMPARE(::kill(pid_t(process), SIGKILL), 0);
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, Patience);
    QVERIFY(!processExists(process));
    engine.setPaused(true);
    engine.seek(1);
    engine.askPosition();
    engine.load(trackIn(folder, "a.wav"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 2, Patience);
    QCOMPARE(failed.size(), 1);
}

void tst_MpvEngine::mpvEndsWithTheEngine()
{
    const ScratchFolder folder;
    folder.write("a.wav", wav(60));
    qint64 process = 0;
    {
        MpvEngine engine(silentMpv());
        QSignalSpy loaded(&engine, &MpvEngine::loaded);
        QSignalSpy failed(&engine, &MpvEngine::failed);
        engine.load(trackIn(folder, "a.wav"));
        QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Patience);
        process = engine.processId();
        engine.shutDown();
        QVERIFY(!processExists(process));
        engine.load(trackIn(folder, "a.wav"));
        QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 2, Patience);
        process = engine.processId();
        QVERIFY(processExists(process));
        QVERIFY(failed.isEmpty());
    }
    QVERIFY(!processExists(process));
}

void tst_MpvEngine::mpvThatHangsEndsWithTheEngine()
{
    const ScratchFolder folder;
    qint64 process = 0;
    {
        MpvEngine engine(insteadOfMpv(folder, "trap '' TERM\n: > " + folder.path("up").toUtf8() +
                                                  "\nexec sleep 600"));
        engine.load("/a.mp3");
        QTRY_VERIFY_WITH_TIMEOUT(folder.exists("up"), Patience);
        process = engine.processId();
    }
    QVERIFY(!processExists(process));
}

void tst_MpvEngine::theEnvironmentGivesOptions()
{
    qunsetenv("QUARN_MPV_OPTIONS");
    QCOMPARE(MpvEngine::settingsOfEnvironment().options, QStringList());
    qputenv("QUARN_MPV_OPTIONS", "--ao=null  --log-file=\"/a b\"");
    QCOMPARE(MpvEngine::settingsOfEnvironment().options,
             (QStringList{"--ao=null", "--log-file=/a b"}));
    qunsetenv("QUARN_MPV_OPTIONS");
}

QUARN_TEST_MAIN(tst_MpvEngine)
#include "tst_mpvengine.moc"
