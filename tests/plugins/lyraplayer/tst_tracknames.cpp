#include "plugins/lyraplayer/tracknames.h"
#include "tests/support/testmain.h"

/// What tracks are called.
class tst_TrackNames : public QObject
{
    Q_OBJECT

private slots:
    void songsHaveOneNumberAtMost_data();
    void songsHaveOneNumberAtMost();
    void rowsHaveTheirNumber();
};

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
    QTEST(songName(title, track, number), "name");
}

void tst_TrackNames::rowsHaveTheirNumber()
{
    QCOMPARE(trackRow(QString(), "/x/01 First.mp3", 1), QString("1. First"));
    QCOMPARE(trackRow("100 %1", "/x/01 First.mp3", 12), QString("12. 100 %1"));
}

QUARN_TEST_MAIN(tst_TrackNames)
#include "tst_tracknames.moc"
