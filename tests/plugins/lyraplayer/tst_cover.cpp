#include "plugins/lyraplayer/cover.h"
#include "tests/browser/picturefiles.h"
#include "tests/plugins/lyraplayer/taggedfiles.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <QColor>
#include <QFile>

#include <ctime>

/// The pictures of music.
class tst_Cover : public QObject
{
    Q_OBJECT

private slots:
    void theEmbeddedPictureComesFirst();
    void picturesBesideTheFileComeInOrder();
    void otherNamesAreNoCovers_data();
    void otherNamesAreNoCovers();
    void coversFitIntoTheBox();
    void aBrokenPictureLeavesTheOneBeside_data();
    void aBrokenPictureLeavesTheOneBeside();
    void hugeCoversAreLeftOutQuickly();
    void withoutACoverThereIsNone();

private:
    static QImage read(const ScratchFolder& folder, const QString& name);
    static QColor colourOf(const QImage& image);
};

QImage tst_Cover::read(const ScratchFolder& folder, const QString& name)
{
    const std::atomic<bool> cancelled = false;
    return readCover(QFile::encodeName(folder.path(name)), QSize(100, 100), cancelled);
}

QColor tst_Cover::colourOf(const QImage& image)
{
    return image.isNull() ? QColor() : image.pixelColor(0, 0);
}

void tst_Cover::theEmbeddedPictureComesFirst()
{
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Picture(pictureFile({20, 20}, "png", Qt::red))));
    folder.write("b.mp3", mp3With(id3Text("TIT2", "title")));
    folder.write("cover.png", pictureFile({20, 20}, "png", Qt::blue));
    QCOMPARE(colourOf(read(folder, "a.mp3")), QColor(Qt::red));
    QCOMPARE(colourOf(read(folder, "b.mp3")), QColor(Qt::blue));
}

void tst_Cover::picturesBesideTheFileComeInOrder()
{
    const QStringList names{"cover.jpg",  "Cover.PNG", "COVER.webp", "folder.jpg",
                            "Folder.png", "front.jpg", "album.bmp"};
    const ScratchFolder folder;
    for (const QString& name : names)
        folder.write(name, "");
    for (const QString& name : names) {
        QCOMPARE(coverBeside(folder.path("a.mp3")), folder.path(name));
        QVERIFY(QFile::remove(folder.path(name)));
    }
    QCOMPARE(coverBeside(folder.path("a.mp3")), QString());
}

void tst_Cover::otherNamesAreNoCovers_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"cover", "cover.txt", "mycover.jpg", "cover.jpg.part", ".jpg", "cover.jpg/in a folder"})
        QTest::newRow(name) << name;
}

void tst_Cover::otherNamesAreNoCovers()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write(name, "");
    QCOMPARE(coverBeside(folder.path("a.mp3")), QString());
}

void tst_Cover::coversFitIntoTheBox()
{
    const ScratchFolder folder;
    folder.write("cover.jpg", pictureFile({1000, 500}, "jpg", Qt::red));
    QCOMPARE(read(folder, "a.mp3").size(), QSize(100, 50));
}

void tst_Cover::aBrokenPictureLeavesTheOneBeside_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no picture") << QByteArray("no picture");
    QTest::newRow("only a beginning") << pngHeader({100, 100});
    QTest::newRow("too large") << blackPng({10000, 10000});
}

void tst_Cover::aBrokenPictureLeavesTheOneBeside()
{
    QFETCH(QByteArray, picture);
    const ScratchFolder folder;
    folder.write("a.mp3", mp3With(id3Picture(picture)));
    QVERIFY(read(folder, "a.mp3").isNull());
    folder.write("front.png", pictureFile({20, 20}, "png", Qt::blue));
    QCOMPARE(colourOf(read(folder, "a.mp3")), QColor(Qt::blue));
}

void tst_Cover::hugeCoversAreLeftOutQuickly()
{
    const ScratchFolder folder;
    const QByteArray hundredMegapixels = blackPng({10000, 10000});
    folder.write("a.mp3", mp3With(id3Picture(hundredMegapixels)));
    folder.write("cover.png", hundredMegapixels);
    const PeakMemory memory;
    const std::clock_t start = std::clock();
    QVERIFY(read(folder, "a.mp3").isNull());
    QVERIFY(double(std::clock() - start) / CLOCKS_PER_SEC < 1);
    QVERIFY(memory.growth() < MostMemory);
}

void tst_Cover::withoutACoverThereIsNone()
{
    const ScratchFolder folder;
    folder.write("a.mp3", "no music");
    QVERIFY(read(folder, "a.mp3").isNull());
    QVERIFY(read(folder, "missing/a.mp3").isNull());
}

QUARN_TEST_MAIN(tst_Cover)
#include "tst_cover.moc"
