#include "plugins/lyraplayer/tags.h"
#include "tests/plugins/lyraplayer/taggedfiles.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <QFile>

#include <ctime>

/// What files of music hold besides the music.
class tst_Tags : public QObject
{
    Q_OBJECT

private slots:
    void titleAndPictureAreRead();
    void pictureOfAFlacFileIsRead();
    void theFrontCoverIsChosen();
    void pictureIsOnlyReadWhenItIsWanted();
    void titlesAreOneLine_data();
    void titlesAreOneLine();
    void tenThousandLinesOfTagsAreReadQuickly();
    void brokenTagsGiveNothing_data();
    void brokenTagsGiveNothing();
    void unusableFilesGiveNothing_data();
    void unusableFilesGiveNothing();
    void filesWithoutTagsAreNotSearchedThrough();
    void cancelledReadingGivesUp();

private:
    static TrackTags read(const ScratchFolder& folder, const QString& name, bool picture = true);
};

namespace
{

/// Seconds of work that no tag takes.
constexpr double Long = 5;

double secondsSince(std::clock_t start)
{
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

} // namespace

TrackTags tst_Tags::read(const ScratchFolder& folder, const QString& name, bool picture)
{
    const std::atomic<bool> cancelled = false;
    return readTags(QFile::encodeName(folder.path(name)), picture, cancelled);
}

void tst_Tags::titleAndPictureAreRead()
{
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Text("TIT2", "\u00dcber uns") + id3Picture("a picture")));
    const TrackTags tags = read(folder, "a.mp3");
    QCOMPARE(tags.title, QString::fromUtf8("\u00dcber uns"));
    QCOMPARE(tags.picture, QByteArray("a picture"));
}

void tst_Tags::pictureOfAFlacFileIsRead()
{
    const ScratchFolder folder;
    folder.write("a.flac", flacWith("a picture"));
    QCOMPARE(read(folder, "a.flac").picture, QByteArray("a picture"));
}

void tst_Tags::theFrontCoverIsChosen()
{
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Picture("back", BackCover) + id3Picture("front") +
                                  id3Picture("other", OtherPicture)));
    folder.write("b.mp3",
                 mp3With(id3Picture("back", BackCover) + id3Picture("other", OtherPicture)));
    QCOMPARE(read(folder, "a.mp3").picture, QByteArray("front"));
    QCOMPARE(read(folder, "b.mp3").picture, QByteArray("back"));
}

void tst_Tags::pictureIsOnlyReadWhenItIsWanted()
{
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Text("TIT2", "title") + id3Picture("a picture")));
    const TrackTags tags = read(folder, "a.mp3", false);
    QCOMPARE(tags.title, QString("title"));
    QCOMPARE(tags.picture, QByteArray());
}

void tst_Tags::titlesAreOneLine_data()
{
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<QString>("title");
    QTest::newRow("lines") << QByteArray(" one\n two\r\n\tthree ") << "one two three";
    QTest::newRow("blanks alone") << QByteArray(" \n ") << "";
    QTest::newRow("ten thousand lines")
        << QByteArray("line\n").repeated(10000) << QString("line ").repeated(60);
    QTest::newRow("no UTF-8") << QByteArray("M\xfcller") << QString("M") + QChar(0xfffd) + "ller";
}

void tst_Tags::titlesAreOneLine()
{
    QFETCH(QByteArray, tag);
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Text("TIT2", tag)));
    QTEST(tagLine(QString::fromUtf8(tag)), "title");
    const QString title = read(folder, "a.mp3").title;
    QVERIFY(title.size() <= 300);
    QVERIFY(!title.contains('\n'));
}

void tst_Tags::tenThousandLinesOfTagsAreReadQuickly()
{
    QByteArray frames;
    for (int i = 0; i < 10000; ++i)
        frames += id3Text("TXXX", "key" + QByteArray::number(i) + '\0' + "value");
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(frames + id3Text("TIT2", "title")));
    const std::clock_t start = std::clock();
    QCOMPARE(read(folder, "a.mp3").title, QString("title"));
    QVERIFY(secondsSince(start) < Long);
}

void tst_Tags::brokenTagsGiveNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    const QByteArray whole = mp3With(id3Picture(QByteArray(1000, 'p')));
    QTest::newRow("cut off") << "a.mp3" << whole.left(200);
    QTest::newRow("only a beginning") << "a.mp3" << whole.left(10);
    QTest::newRow("larger than the file")
        << "a.mp3" << QByteArray("ID3\x04\0\0\x7f\x7f\x7f\x7f", 10) + QByteArray(100, 'x');
    QTest::newRow("a frame larger than the tag")
        << "a.mp3" << mp3With("APIC" + QByteArray("\x7f\x7f\x7f\x7f\0\0", 6) + "\x03image/png");
    QTest::newRow("a picture without its end")
        << "a.mp3" << mp3With(id3Frame("APIC", QByteArray("\x03image/png", 10)));
    QTest::newRow("a FLAC picture larger than the file")
        << "a.flac" << flacWith("x").replace(bigEndian(1) + "x", bigEndian(0x7fffffff) + "x");
    QTest::newRow("FLAC, cut off") << "a.flac" << flacWith(QByteArray(1000, 'x')).left(100);
    QTest::newRow("MP4 with a size that never ends")
        << "a.m4a"
        << QByteArray("\0\0\0\x10"
                      "ftypM4A \0\0\0\0\xff\xff\xff\xffmoov",
                      24);
    QTest::newRow("Ogg, zeros") << "a.ogg"
                                << "OggS" + QByteArray(1000, '\0');
}

void tst_Tags::brokenTagsGiveNothing()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    const ScratchFolder folder;
    folder.write(name, content);
    const PeakMemory memory;
    const std::clock_t start = std::clock();
    const TrackTags tags = read(folder, name);
    QVERIFY(tags.picture.size() <= content.size());
    QCOMPARE(tags.title, QString());
    QVERIFY(secondsSince(start) < Long);
    QVERIFY(memory.growth() < PeakMemory::Bound);
}

void tst_Tags::unusableFilesGiveNothing_data()
{
    addUnusableKinds();
}

void tst_Tags::unusableFilesGiveNothing()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "a.mp3", kind);
    const PeakMemory memory;
    const TrackTags tags = read(folder, "a.mp3");
    QCOMPARE(tags.title, QString());
    QCOMPARE(tags.picture, QByteArray());
    QVERIFY(memory.growth() < PeakMemory::Bound);
}

void tst_Tags::filesWithoutTagsAreNotSearchedThrough()
{
    constexpr qint64 Bytes = 64LL * 1024 * 1024 * 1024;
    const ScratchFolder folder;
    for (const char* name : {"a.mp3", "a.flac", "a.ogg", "a.m4a", "a.wav", "a.ape", "a.wma"}) {
        folder.writeSparse(name, Bytes);
        const std::clock_t start = std::clock();
        QCOMPARE(read(folder, name).title, QString());
        const double seconds = secondsSince(start);
        QVERIFY2(seconds < Long, qPrintable(QString("%1: %2").arg(name).arg(seconds)));
    }
}

void tst_Tags::cancelledReadingGivesUp()
{
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Text("TIT2", "title")));
    const std::atomic<bool> cancelled = true;
    QCOMPARE(readTags(QFile::encodeName(folder.path("a.mp3")), true, cancelled).title, QString());
}

QUARN_TEST_MAIN(tst_Tags)
#include "tst_tags.moc"
