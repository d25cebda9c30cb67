#include "plugins/lyraplayer/tracknames.h"
#include "tests/support/testmain.h"

/// What tracks are called.
class tst_TrackNames : public QObject
{
    Q_OBJECT

private slots:
    void songsHaveOneNumberAtMost_data();
    void songsHaveOneNumberAtMost();
    void numbersOfTheFilesBesideTellWhoseItIs_data();
    void numbersOfTheFilesBesideTellWhoseItIs();
    void rowsHaveOneNumber();
};

namespace
{

/// A list with a track at a place, among ones of another folder.
Tracks listWith(const QByteArray& track, int place)
{
    Tracks tracks(place + 2, "/other/Song.mp3");
    tracks[place] = track;
    return tracks;
}

} // namespace

void tst_TrackNames::songsHaveOneNumberAtMost_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QByteArray>("track");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* what, const char* title, const char* track, int number,
                        const char* name) {
        QTest::newRow(what) << QString::fromUtf8(title) << QByteArray(track) << number
                            << QString::fromUtf8(name);
    };
    row("the title", "First Light", "/x/01 other.mp3", 1, "First Light");
    row("the file's name", "", "/x/First Light.mp3", 1, "First Light");
    row("without an extension", "", "/x/First Light", 1, "First Light");
    row("a dot at the start", "", "/x/.hidden", 1, ".hidden");
    row("a zero", "", "/x/07 Seventh.mp3", 2, "Seventh");
    row("a dash", "", "/x/7 - Seventh.mp3", 2, "Seventh");
    row("a dot", "", "/x/7. Seventh.mp3", 2, "Seventh");
    row("an underline", "", "/x/12_Twelfth.mp3", 2, "Twelfth");
    row("its place", "", "/x/7 Seventh.mp3", 7, "Seventh");
    row("in a title, too", "03. Third", "/x/a.mp3", 9, "Third");
    row("a number that belongs to the name", "99 Luftballons", "/x/a.mp3", 3, "99 Luftballons");
    row("one that is its place", "7 Years", "/x/a.mp3", 7, "7 Years");
    row("a number before a dash", "1-800-273-8255", "/x/a.mp3", 1, "1-800-273-8255");
    row("a time", "4.48 Psychosis", "/x/a.mp3", 4, "4.48 Psychosis");
    row("its place with a dash", "4 - Fourth", "/x/a.mp3", 4, "Fourth");
    row("its disc", "", "/x/1-03 Third.mp3", 3, "Third");
    row("its disc in another place", "", "/x/2-03 - Third.mp3", 15, "Third");
    row("its disc without a zero", "", "/x/2-11 Eleventh.mp3", 11, "Eleventh");
    row("its disc in a title", "1-03 Third", "/x/a.mp3", 3, "Third");
    row("a disc that is none", "", "/x/4.48 Psychosis.mp3", 4, "4.48 Psychosis");
    row("a dash and digits in a file's name", "", "/x/1-800-273-8255.mp3", 1, "1-800-273-8255");
    row("a name of digits behind its number", "", "/x/01-99 Luftballons.mp3", 1, "99 Luftballons");
    row("a number of a file's name", "", "/x/99 Luftballons.mp3", 3, "99 Luftballons");
    row("its file's", "12. Twelfth", "/x/12 Twelfth.mp3", 11, "Twelfth");
    row("its file's with a disc", "12 - Twelfth", "/x/1-12 a.mp3", 11, "Twelfth");
    row("not its file's", "9. Symphonie", "/x/12 a.mp3", 11, "9. Symphonie");
    row("a year", "", "/x/1979 - Song.mp3", 3, "1979 - Song");
    row("nothing but a number", "", "/x/05.mp3", 5, "05");
    row("a stream", "", "http://host/7.mp3", 7, "http://host/7.mp3");
    row("a stream with a title", "Radio", "http://host/7.mp3", 7, "Radio");
}

void tst_TrackNames::songsHaveOneNumberAtMost()
{
    QFETCH(QString, title);
    QFETCH(QByteArray, track);
    QFETCH(int, number);
    QTEST(songName(title, listWith(track, number - 1), number - 1), "name");
}

void tst_TrackNames::numbersOfTheFilesBesideTellWhoseItIs_data()
{
    QTest::addColumn<QList<QByteArray>>("files");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("one is missing") << QList<QByteArray>{"10 Tenth", "12 Twelfth", "14 Last"}
                                    << QStringList{"Tenth", "Twelfth", "Last"};
    QTest::newRow("discs") << QList<QByteArray>{"1-10 Tenth", "1-12 Twelfth"}
                           << QStringList{"Tenth", "Twelfth"};
    QTest::newRow("one has none") << QList<QByteArray>{"21 Guns", "99 Luftballons", "Alone"}
                                  << QStringList{"21 Guns", "99 Luftballons", "Alone"};
    QTest::newRow("alone") << QList<QByteArray>{"99 Luftballons"} << QStringList{"99 Luftballons"};
    QTest::newRow("another folder") << QList<QByteArray>{"99 Luftballons", "b/12 Twelfth"}
                                    << QStringList{"99 Luftballons", "12 Twelfth"};
}

void tst_TrackNames::numbersOfTheFilesBesideTellWhoseItIs()
{
    QFETCH(QList<QByteArray>, files);
    QFETCH(QStringList, names);
    Tracks tracks;
    for (const QByteArray& file : files)
        tracks.append("/x/" + file + ".mp3");
    for (int i = 0; i < tracks.size(); ++i)
        QCOMPARE(songName(QString(), tracks, i), names.at(i));
}

void tst_TrackNames::rowsHaveOneNumber()
{
    const auto row = [](const char* title, const QByteArray& track, int number) {
        return trackRow(title, listWith(track, number - 1), number - 1);
    };
    QCOMPARE(row("", "/x/01 First.mp3", 1), QString("1. First"));
    QCOMPARE(row("", "/x/1-03 Third.mp3", 3), QString("3. Third"));
    QCOMPARE(row("100 %1", "/x/01 First.mp3", 12), QString("12. 100 %1"));
    QCOMPARE(row("99 Luftballons", "/x/a.mp3", 3), QString("3. 99 Luftballons"));
    QCOMPARE(row("9. Symphonie", "/x/a.mp3", 3), QString("9. Symphonie"));
    QCOMPARE(row("12. Twelfth", "/x/a.mp3", 11), QString("12. Twelfth"));
}

QUARN_TEST_MAIN(tst_TrackNames)
#include "tst_tracknames.moc"
