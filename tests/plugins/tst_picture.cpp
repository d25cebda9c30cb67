#include "plugins/picview/pictureloader.h"
#include "plugins/support/picture.h"
#include "tests/browser/picturefiles.h"
#include "tests/plugins/movinggif.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

/// Decoding picture files.
class tst_Picture : public QObject
{
    Q_OBJECT

private slots:
    void sizesAreFitted_data();
    void sizesAreFitted();
    void pictureIsScaledDownToTheBox_data();
    void pictureIsScaledDownToTheBox();
    void pictureIsScaledDownToFillTheBox_data();
    void pictureIsScaledDownToFillTheBox();
    void picturesOfOneBitAreSmooth_data();
    void picturesOfOneBitAreSmooth();
    void pictureIsTurned_data();
    void pictureIsTurned();
    void orientationIsApplied();
    void withoutABoxItIsDecodedUpToALimit();
    void hugePicturesAreRefused();
    void unusableFilesHaveAProblem_data();
    void unusableFilesHaveAProblem();
    void brokenPicturesHaveAProblem_data();
    void brokenPicturesHaveAProblem();
    void movingPicturesAreKnown();
    void cancelledReadingGivesUp();
    void loaderTellsOfTheLastRequest();
    void loaderMayGoWhileItWorks();

private:
    static Picture read(const QString& path, const PictureWish& wish = {QSize(240, 280)});
};

namespace
{

/// A picture 40 wide and 20 high which says that its top is at the right.
QByteArray turnedJpeg()
{
    QByteArray bytes = pictureFile({40, 20}, "jpg", Qt::red);
    const QByteArray orientation =
        QByteArray::fromHex("ffe10022457869660000"       // a segment for a camera's notes
                            "4d4d002a00000008"           // high bytes first
                            "00010112000300000001000600" // one note, the orientation
                            "0000000000");
    return bytes.insert(2, orientation);
}

} // namespace

Picture tst_Picture::read(const QString& path, const PictureWish& wish)
{
    const std::atomic<bool> cancelled = false;
    return readPicture(path, wish, cancelled);
}

void tst_Picture::sizesAreFitted_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("fitted");
    QTest::newRow("smaller") << QSize(10, 20) << QSize(10, 20);
    QTest::newRow("as large") << QSize(240, 280) << QSize(240, 280);
    QTest::newRow("wide") << QSize(480, 280) << QSize(240, 140);
    QTest::newRow("high") << QSize(240, 560) << QSize(120, 280);
    QTest::newRow("a line") << QSize(100000, 1) << QSize(240, 1);
}

void tst_Picture::sizesAreFitted()
{
    QFETCH(QSize, picture);
    QTEST(fittingSize(picture, QSize(240, 280)), "fitted");
}

void tst_Picture::pictureIsScaledDownToTheBox_data()
{
    QTest::addColumn<QByteArray>("format");
    for (const char* format : {"png", "jpg", "bmp", "ppm"})
        QTest::newRow(format) << QByteArray(format);
}

void tst_Picture::pictureIsScaledDownToTheBox()
{
    QFETCH(QByteArray, format);
    const ScratchFolder folder;
    folder.write("large", pictureFile({960, 400}, format, Qt::blue));
    folder.write("small", pictureFile({20, 10}, format, Qt::blue));
    const Picture large = read(folder.path("large"));
    QCOMPARE(large.problem, QString());
    QCOMPARE(large.size, QSize(960, 400));
    QCOMPARE(large.image.size(), QSize(240, 100));
    QVERIFY(large.image.pixelColor(120, 50).blue() > 200);
    QVERIFY(!large.animated);
    const Picture small = read(folder.path("small"));
    QCOMPARE(small.size, QSize(20, 10));
    QCOMPARE(small.image.size(), QSize(20, 10));
}

void tst_Picture::pictureIsScaledDownToFillTheBox_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("image");
    QTest::newRow("wide") << QSize(960, 400) << QSize(672, 280);
    QTest::newRow("high") << QSize(480, 1000) << QSize(240, 500);
    QTest::newRow("no larger than it is") << QSize(960, 200) << QSize(960, 200);
    QTest::newRow("small") << QSize(20, 10) << QSize(20, 10);
}

void tst_Picture::pictureIsScaledDownToFillTheBox()
{
    QFETCH(QSize, picture);
    const ScratchFolder folder;
    folder.write("a.png", pictureFile(picture, "png", Qt::blue));
    const Picture filling = read(folder.path("a.png"), {QSize(240, 280), true});
    QCOMPARE(filling.size, picture);
    QTEST(filling.image.size(), "image");
}

void tst_Picture::picturesOfOneBitAreSmooth_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QByteArray>("format");
    for (const char* format : {"png", "bmp", "xbm"}) {
        QTest::newRow(format) << QSize(960, 400) << QByteArray(format);
        QTest::addRow("%s, odd size", format) << QSize(1013, 507) << QByteArray(format);
        QTest::addRow("%s, a little too large", format) << QSize(300, 300) << QByteArray(format);
    }
}

void tst_Picture::picturesOfOneBitAreSmooth()
{
    QFETCH(QSize, picture);
    QFETCH(QByteArray, format);
    // Every second pixel is black, so that all of it is grey from afar.
    QImage dots(picture, QImage::Format_Mono);
    dots.fill(1);
    for (int y = 0; y < dots.height(); ++y) {
        for (int x = y % 2; x < dots.width(); x += 2)
            dots.setPixel(x, y, 0);
    }
    const ScratchFolder folder;
    QVERIFY(dots.save(folder.path("a"), format.constData()));
    const Picture read = tst_Picture::read(folder.path("a"));
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.image.size(), fittingSize(picture, {240, 280}));
    for (int y = 2; y < read.image.height() - 2; y += 7) {
        for (int x = 2; x < read.image.width() - 2; x += 7) {
            const int grey = qGray(read.image.pixel(x, y));
            QVERIFY2(grey > 64 && grey < 192,
                     qPrintable(QString("%1 at %2, %3").arg(grey).arg(x).arg(y)));
        }
    }
}

void tst_Picture::pictureIsTurned_data()
{
    QTest::addColumn<int>("quarterTurns");
    QTest::addColumn<QSize>("image");
    QTest::addColumn<QPoint>("corner"); // in hundredths of the picture
    QTest::newRow("not") << 0 << QSize(240, 120) << QPoint(5, 5);
    QTest::newRow("to the right") << 1 << QSize(140, 280) << QPoint(95, 5);
    QTest::newRow("upside down") << 2 << QSize(240, 120) << QPoint(95, 95);
    QTest::newRow("to the left") << 3 << QSize(140, 280) << QPoint(5, 95);
}

void tst_Picture::pictureIsTurned()
{
    QFETCH(int, quarterTurns);
    QFETCH(QPoint, corner);
    QImage image(800, 400, QImage::Format_RGB32);
    image.fill(Qt::blue);
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 100; ++x)
            image.setPixelColor(x, y, Qt::red);
    }
    const ScratchFolder folder;
    QVERIFY(image.save(folder.path("a.png")));
    const Picture picture = read(folder.path("a.png"), {QSize(240, 280), false, quarterTurns});
    QTEST(picture.image.size(), "image");
    QCOMPARE(picture.size, quarterTurns % 2 == 0 ? QSize(800, 400) : QSize(400, 800));
    const QPoint place(picture.image.width() * corner.x() / 100,
                       picture.image.height() * corner.y() / 100);
    QCOMPARE(picture.image.pixelColor(place), QColor(Qt::red));
}

void tst_Picture::orientationIsApplied()
{
    const ScratchFolder folder;
    folder.write("a.jpg", turnedJpeg());
    const Picture whole = read(folder.path("a.jpg"));
    QCOMPARE(whole.size, QSize(20, 40));
    QCOMPARE(whole.image.size(), QSize(20, 40));
    const Picture fitted = read(folder.path("a.jpg"), {QSize(10, 10)});
    QCOMPARE(fitted.size, QSize(20, 40));
    QCOMPARE(fitted.image.size(), QSize(5, 10));
}

void tst_Picture::withoutABoxItIsDecodedUpToALimit()
{
    const ScratchFolder folder;
    folder.write("large.png", blackPng({6000, 4000}));
    folder.write("small.png", blackPng({600, 400}));
    const Picture large = read(folder.path("large.png"), {});
    QCOMPARE(large.problem, QString());
    QCOMPARE(large.size, QSize(6000, 4000));
    const qint64 pixels = qint64(large.image.width()) * large.image.height();
    QVERIFY(pixels <= MaxDecodedPixels);
    QVERIFY(pixels > MaxDecodedPixels * 9 / 10);
    QCOMPARE(read(folder.path("small.png"), {}).image.size(), QSize(600, 400));
}

void tst_Picture::hugePicturesAreRefused()
{
    const ScratchFolder folder;
    folder.write("a.png", blackPng({20000, 10000}));
    const PeakMemory memory;
    const Picture picture = read(folder.path("a.png"));
    QVERIFY(picture.image.isNull());
    QCOMPARE(picture.problem, QString("The picture is too large: 20000 x 10000 pixels."));
    QVERIFY(memory.growth() < PeakMemory::Bound);
}

void tst_Picture::unusableFilesHaveAProblem_data()
{
    addUnusableKinds();
}

void tst_Picture::unusableFilesHaveAProblem()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "a.png", kind);
    const PeakMemory memory;
    const Picture picture = read(folder.path("a.png"));
    QVERIFY(picture.image.isNull());
    QVERIFY(picture.problem.endsWith('.'));
    QVERIFY(memory.growth() < PeakMemory::Bound);
}

void tst_Picture::brokenPicturesHaveAProblem_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("only a beginning") << pngHeader({100, 100});
    QTest::newRow("first bytes") << pictureFile({100, 100}, "jpg", Qt::red).left(20);
    QTest::newRow("text") << QByteArray("just a text");
}

void tst_Picture::brokenPicturesHaveAProblem()
{
    QFETCH(QByteArray, bytes);
    const ScratchFolder folder;
    folder.write("a.png", bytes);
    const Picture picture = read(folder.path("a.png"));
    QVERIFY(picture.image.isNull());
    QVERIFY(picture.problem.endsWith('.'));
}

void tst_Picture::movingPicturesAreKnown()
{
    const ScratchFolder folder;
    folder.write("a.gif", movingGif());
    const Picture picture = read(folder.path("a.gif"));
    QCOMPARE(picture.problem, QString());
    QCOMPARE(picture.size, QSize(4, 4));
    QVERIFY(picture.animated);
}

void tst_Picture::cancelledReadingGivesUp()
{
    const ScratchFolder folder;
    folder.write("a.bmp", pictureFile({1000, 1000}, "bmp", Qt::red));
    const std::atomic<bool> cancelled = true;
    QVERIFY(readPicture(folder.path("a.bmp"), {QSize(240, 280)}, cancelled).image.isNull());
}

void tst_Picture::loaderTellsOfTheLastRequest()
{
    const ScratchFolder folder;
    folder.write("large.png", blackPng({7000, 7000}));
    folder.write("a.png", pictureFile({20, 10}, "png", Qt::red));
    folder.write("b.png", pictureFile({600, 600}, "png", Qt::red));
    PictureLoader loader(nullptr);
    QList<QSize> loaded;
    connect(&loader, &PictureLoader::loaded, this,
            [&loaded](const Picture& picture) { loaded.append(picture.size); });
    for (int i = 0; i < 20; ++i)
        loader.load(folder.path("large.png"), {QSize(240, 280)});
    for (int i = 0; i < 20; ++i) {
        loader.load(folder.path("b.png"), {QSize(240, 280)});
        // It has the time to be done with that before it hears of the next.
        read(folder.path("b.png"));
    }
    loader.load(folder.path("a.png"), {QSize(240, 280)});
    QTRY_COMPARE(loaded, QList<QSize>({QSize(20, 10)}));
    loader.load(folder.path("missing"), {QSize(240, 280)});
    QTRY_COMPARE(loaded, QList<QSize>({QSize(20, 10), QSize()}));
}

void tst_Picture::loaderMayGoWhileItWorks()
{
    const ScratchFolder folder;
    folder.write("large.png", blackPng({7000, 7000}));
    int told = 0;
    {
        PictureLoader loader(nullptr);
        connect(&loader, &PictureLoader::loaded, this, [&told] { ++told; });
        loader.load(folder.path("large.png"), {QSize(240, 280)});
    }
    QCoreApplication::processEvents();
    QCOMPARE(told, 0);
}

QUARN_TEST_MAIN(tst_Picture)
#include "tst_picture.moc"
