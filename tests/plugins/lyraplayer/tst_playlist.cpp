#include "plugins/lyraplayer/playlist.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFile>

class tst_Playlist : public QObject
{
    Q_OBJECT

private slots:
    void linesOfAnM3uAreTracks_data();
    void linesOfAnM3uAreTracks();
    void numberedFilesOfAPlsAreTracks_data();
    void numberedFilesOfAPlsAreTracks();
    void listsAreKnownByTheirExtension_data();
    void listsAreKnownByTheirExtension();
    void aFileThatIsNoListIsTheOnlyTrack();
    void relativePathsStartAtTheFolderOfTheList();
    void aListThatCannotBeReadGivesNothing();
    void anEmptyListGivesNoTracks();
    void aListOfTwentyThousandIsReadWhole();
    void tracksAreCalledByTheirFileName_data();
    void tracksAreCalledByTheirFileName();
};

void tst_Playlist::linesOfAnM3uAreTracks_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<Tracks>("tracks");
    QTest::newRow("nothing") << QByteArray() << Tracks();
    QTest::newRow("absolute") << QByteArray("/a/1.mp3\n/b/2.mp3\n")
                              << Tracks{"/a/1.mp3", "/b/2.mp3"};
    QTest::newRow("no end of line at the end") << QByteArray("/1.mp3") << Tracks{"/1.mp3"};
    QTest::newRow("relative") << QByteArray("1.mp3\nsub/2.mp3\n../3.mp3\n")
                              << Tracks{"/list/1.mp3", "/list/sub/2.mp3", "/list/../3.mp3"};
    QTest::newRow("blank lines") << QByteArray("\n/1.mp3\n\n  \t\n/2.mp3\n\n")
                                 << Tracks{"/1.mp3", "/2.mp3"};
    QTest::newRow("comments") << QByteArray("#EXTM3U\n#EXTINF:12,A - B\n/1.mp3\n# /2.mp3\n")
                              << Tracks{"/1.mp3"};
    QTest::newRow("line ends of other systems")
        << QByteArray("/1.mp3\r\n\r\n/2.mp3\r\n") << Tracks{"/1.mp3", "/2.mp3"};
    QTest::newRow("mark of UTF-8")
        << QByteArray("\xef\xbb\xbf#EXTM3U\n/1.mp3\n") << Tracks{"/1.mp3"};
    QTest::newRow("mark of UTF-8 before a track")
        << QByteArray("\xef\xbb\xbf/1.mp3\n") << Tracks{"/1.mp3"};
    QTest::newRow("blanks belong to the name")
        << QByteArray("/a b .mp3 \n c.mp3\n") << Tracks{"/a b .mp3 ", "/list/ c.mp3"};
    QTest::newRow("bytes that are no UTF-8")
        << QByteArray("/M\xfcller.mp3\n") << Tracks{"/M\xfcller.mp3"};
    QTest::newRow("number sign inside") << QByteArray("/No #1.mp3\n") << Tracks{"/No #1.mp3"};
    QTest::newRow("streams") << QByteArray("http://h/x\nhttps://h/y\n")
                             << Tracks{"http://h/x", "https://h/y"};
    QTest::newRow("file addresses") << QByteArray("file:///a%20b/1.mp3\n") << Tracks{"/a b/1.mp3"};
    QTest::newRow("file addresses of names that are no line")
        << QByteArray("file:///a%0Ab%25%23%3F/\xff.mp3\n") << Tracks{"/a\nb%#?/\xff.mp3"};
    QTest::newRow("other addresses are names")
        << QByteArray("memory://x\n") << Tracks{"/list/memory://x"};
    QTest::newRow("zero bytes") << QByteArray("/a\0b.mp3\n/2.mp3\n", 17) << Tracks{"/2.mp3"};
}

void tst_Playlist::linesOfAnM3uAreTracks()
{
    QFETCH(QByteArray, content);
    QFETCH(Tracks, tracks);
    QCOMPARE(parseM3u(content, "/list"), tracks);
}

void tst_Playlist::numberedFilesOfAPlsAreTracks_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<Tracks>("tracks");
    QTest::newRow("nothing") << QByteArray() << Tracks();
    QTest::newRow("usual") << QByteArray("[playlist]\nNumberOfEntries=2\nFile1=/1.mp3\nTitle1=One\n"
                                         "Length1=12\nFile2=2.mp3\nVersion=2\n")
                           << Tracks{"/1.mp3", "/list/2.mp3"};
    QTest::newRow("small letters") << QByteArray("file1=/1.mp3\r\n") << Tracks{"/1.mp3"};
    QTest::newRow("equals sign in the name") << QByteArray("File1=/a=b.mp3") << Tracks{"/a=b.mp3"};
    QTest::newRow("no number") << QByteArray("File=/1.mp3\nFilex=/2.mp3\n") << Tracks();
    QTest::newRow("no name") << QByteArray("File1=\nFile2\n") << Tracks();
}

void tst_Playlist::numberedFilesOfAPlsAreTracks()
{
    QFETCH(QByteArray, content);
    QFETCH(Tracks, tracks);
    QCOMPARE(parsePls(content, "/list"), tracks);
}

void tst_Playlist::listsAreKnownByTheirExtension_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("list");
    QTest::newRow("m3u") << "/a/TempList.m3u" << true;
    QTest::newRow("capitals") << "/a/LIST.M3U" << true;
    QTest::newRow("m3u8") << "/a/x.m3u8" << true;
    QTest::newRow("pls") << "/a/x.Pls" << true;
    QTest::newRow("music") << "/a/x.mp3" << false;
    QTest::newRow("none") << "/a/m3u" << false;
    QTest::newRow("folder") << "/a.m3u/x" << false;
}

void tst_Playlist::listsAreKnownByTheirExtension()
{
    QFETCH(QString, path);
    QFETCH(bool, list);
    QCOMPARE(isPlaylist(path), list);
}

void tst_Playlist::aFileThatIsNoListIsTheOnlyTrack()
{
    QCOMPARE(tracksOf("/no/such/song.mp3"), Tracks{"/no/such/song.mp3"});
    const ScratchFolder folder;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const auto tracks = tracksOf("song.mp3");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(tracks, Tracks{QFile::encodeName(folder.path("song.mp3"))});
}

void tst_Playlist::relativePathsStartAtTheFolderOfTheList()
{
    const ScratchFolder folder;
    folder.write("lists/my.m3u", "song.mp3\n/2.mp3\n");
    folder.write("lists/my.PLS", "File1=song.mp3\n");
    const QByteArray song = QFile::encodeName(folder.path("lists/song.mp3"));
    QCOMPARE(tracksOf(folder.path("lists/my.m3u")), (Tracks{song, "/2.mp3"}));
    QCOMPARE(tracksOf(folder.path("lists/my.PLS")), Tracks{song});
}

void tst_Playlist::aListThatCannotBeReadGivesNothing()
{
    const ScratchFolder folder;
    folder.makeFolder("folder.m3u");
    folder.makeFifo("fifo.m3u");
    folder.write("locked.m3u", "/1.mp3\n");
    folder.setMode("locked.m3u", 0);
    for (const char* name : {"missing.m3u", "folder.m3u", "fifo.m3u", "locked.m3u"})
        QVERIFY2(!tracksOf(folder.path(name)), name);
}

void tst_Playlist::anEmptyListGivesNoTracks()
{
    const ScratchFolder folder;
    folder.write("empty.m3u");
    folder.write("blank.m3u", "\n");
    QCOMPARE(tracksOf(folder.path("empty.m3u")), Tracks());
    QCOMPARE(tracksOf(folder.path("blank.m3u")), Tracks());
}

void tst_Playlist::aListOfTwentyThousandIsReadWhole()
{
    constexpr int Count = 20000;
    const ScratchFolder folder;
    QByteArray content;
    for (int i = 0; i < Count; ++i)
        content += "/music/album " + QByteArray::number(i) + "/song.mp3\n";
    folder.write("long.m3u", content);
    const Tracks tracks = tracksOf(folder.path("long.m3u")).value_or(Tracks());
    QCOMPARE(tracks.size(), Count);
    QCOMPARE(tracks.last(), QByteArray("/music/album 19999/song.mp3"));
}

void tst_Playlist::tracksAreCalledByTheirFileName_data()
{
    QTest::addColumn<QByteArray>("track");
    QTest::addColumn<QString>("name");
    QTest::newRow("file") << QByteArray("/a/b/song.mp3") << "song.mp3";
    QTest::newRow("in the root") << QByteArray("/song.mp3") << "song.mp3";
    QTest::newRow("Cyrillic") << QByteArray("/\xd0\xaf.mp3") << QString::fromUtf8("Я.mp3");
    QTest::newRow("stream") << QByteArray("http://host/x") << "http://host/x";
}

void tst_Playlist::tracksAreCalledByTheirFileName()
{
    QFETCH(QByteArray, track);
    QFETCH(QString, name);
    QCOMPARE(trackName(track), name);
}

QUARN_TEST_MAIN(tst_Playlist)
#include "tst_playlist.moc"
