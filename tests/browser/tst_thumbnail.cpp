#include "browser/thumbnail.h"
#include "tests/browser/picturefiles.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <QElapsedTimer>
#include <QImageWriter>

#include <cstdlib>

namespace
{

bool near(QRgb left, QRgb right)
{
    return std::abs(qRed(left) - qRed(right)) < 24 && std::abs(qGreen(left) - qGreen(right)) < 24 &&
           std::abs(qBlue(left) - qBlue(right)) < 24;
}

} // namespace

class tst_Thumbnail : public QObject
{
    Q_OBJECT

private slots:
    void sizeKeepsProportionsAndNeverGrows_data();
    void sizeKeepsProportionsAndNeverGrows();

    void pictureIsScaledToItsThumbnail_data();
    void pictureIsScaledToItsThumbnail();
    void contentAndNotTheNameTellsTheFormat();
    void pictureOfOneBitIsSmooth();
    void orientationOfThePictureIsApplied();
    void denseScreenGetsMorePixelsOfTheSameSize_data();
    void denseScreenGetsMorePixelsOfTheSameSize();

    void whatIsNoPictureGivesNone_data();
    void whatIsNoPictureGivesNone();
    void whatIsNoFileGivesNone_data();
    void whatIsNoFileGivesNone();
    void cutPictureDoesNoHarm_data();
    void cutPictureDoesNoHarm();
    void hugePictureTakesLittleTimeAndMemory_data();
    void hugePictureTakesLittleTimeAndMemory();
    void hugeFileTakesLittleTime_data();
    void hugeFileTakesLittleTime();
};

void tst_Thumbnail::sizeKeepsProportionsAndNeverGrows_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("size");
    QTest::newRow("wide") << QSize(64, 48) << QSize(32, 24);
    QTest::newRow("high") << QSize(48, 64) << QSize(24, 32);
    QTest::newRow("square") << QSize(100, 100) << QSize(32, 32);
    QTest::newRow("small") << QSize(20, 10) << QSize(20, 10);
    QTest::newRow("just fits") << QSize(32, 32) << QSize(32, 32);
    QTest::newRow("one too wide") << QSize(33, 32) << QSize(32, 31);
    QTest::newRow("one too high") << QSize(1, 33) << QSize(1, 32);
    QTest::newRow("cut, not rounded") << QSize(100, 99) << QSize(32, 31);
    QTest::newRow("a line") << QSize(10000, 1) << QSize(32, 1);
    QTest::newRow("a pole") << QSize(1, 10000) << QSize(1, 32);
    QTest::newRow("most") << QSize(2147483647, 2147483646) << QSize(32, 31);
}

void tst_Thumbnail::sizeKeepsProportionsAndNeverGrows()
{
    QFETCH(QSize, picture);
    QTEST(thumbnailSize(picture, ThumbnailSide), "size");
}

void tst_Thumbnail::pictureIsScaledToItsThumbnail_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("size");
    for (const char* format : {"png", "jpg", "bmp", "ppm", "xpm"}) {
        QTest::addRow("wide %s", format) << QByteArray(format) << QSize(64, 48) << QSize(32, 24);
        QTest::addRow("high %s", format) << QByteArray(format) << QSize(48, 64) << QSize(24, 32);
        QTest::addRow("square %s", format)
            << QByteArray(format) << QSize(100, 100) << QSize(32, 32);
        QTest::addRow("small %s", format) << QByteArray(format) << QSize(20, 10) << QSize(20, 10);
        QTest::addRow("line %s", format) << QByteArray(format) << QSize(400, 1) << QSize(32, 1);
        QTest::addRow("photo %s", format) << QByteArray(format) << QSize(600, 450) << QSize(32, 24);
    }
}

void tst_Thumbnail::pictureIsScaledToItsThumbnail()
{
    QFETCH(QByteArray, format);
    QFETCH(QSize, picture);
    const QColor colour(200, 40, 90);
    const ScratchFolder folder;
    folder.write(QStringLiteral("picture"), pictureFile(picture, format.constData(), colour));
    const QImage image = readThumbnail(folder.path(QStringLiteral("picture")), 1);
    QTEST(image.size(), "size");
    QCOMPARE(image.devicePixelRatio(), 1.0);
    QVERIFY(near(image.pixel(0, 0), colour.rgb()));
    QVERIFY(near(image.pixel(image.width() - 1, image.height() - 1), colour.rgb()));
}

void tst_Thumbnail::contentAndNotTheNameTellsTheFormat()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("x.jpg"), pictureFile({64, 48}, "png", Qt::green));
    QCOMPARE(readThumbnail(folder.path(QStringLiteral("x.jpg")), 1).size(), QSize(32, 24));
}

void tst_Thumbnail::pictureOfOneBitIsSmooth()
{
    // Lines of one pixel, eight pixels apart: from afar a light grey.
    QImage lines(800, 600, QImage::Format_Mono);
    lines.fill(1);
    for (int y = 0; y < lines.height(); ++y) {
        for (int x = 0; x < lines.width(); x += 8)
            lines.setPixel(x, y, 0);
    }
    const ScratchFolder folder;
    QVERIFY(lines.save(folder.path(QStringLiteral("lines.png"))));
    const QImage image = readThumbnail(folder.path(QStringLiteral("lines.png")), 1);
    QCOMPARE(image.size(), QSize(32, 24));
    for (int x = 1; x < 31; ++x) {
        const int grey = qGray(image.pixel(x, 12));
        QVERIFY2(grey > 200 && grey < 245, qPrintable(QString::number(grey)));
    }
}

void tst_Thumbnail::orientationOfThePictureIsApplied()
{
    const ScratchFolder folder;
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::black);
    QImageWriter writer(folder.path(QStringLiteral("turned.jpg")), "jpg");
    writer.setTransformation(QImageIOHandler::TransformationRotate90);
    QVERIFY(writer.write(picture));
    QCOMPARE(readThumbnail(folder.path(QStringLiteral("turned.jpg")), 1).size(), QSize(24, 32));
}

void tst_Thumbnail::denseScreenGetsMorePixelsOfTheSameSize_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<double>("density");
    QTest::addColumn<QSize>("pixels");
    QTest::addColumn<QSize>("size");
    QTest::newRow("double") << QSize(640, 480) << 2.0 << QSize(64, 48) << QSize(32, 24);
    QTest::newRow("triple") << QSize(480, 640) << 3.0 << QSize(72, 96) << QSize(24, 32);
    QTest::newRow("no more than it has") << QSize(48, 36) << 2.0 << QSize(48, 36) << QSize(32, 24);
    QTest::newRow("small stays small") << QSize(20, 10) << 2.0 << QSize(20, 10) << QSize(20, 10);
}

void tst_Thumbnail::denseScreenGetsMorePixelsOfTheSameSize()
{
    QFETCH(QSize, picture);
    QFETCH(double, density);
    const ScratchFolder folder;
    folder.write(QStringLiteral("picture"), pictureFile(picture, "png", Qt::blue));
    const QImage image = readThumbnail(folder.path(QStringLiteral("picture")), density);
    QTEST(image.size(), "pixels");
    QTEST(image.deviceIndependentSize().toSize(), "size");
}

void tst_Thumbnail::whatIsNoPictureGivesNone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no bytes") << QByteArray();
    QTest::newRow("one byte") << QByteArray("\xff");
    QTest::newRow("text") << QByteArray("A letter to nobody.\n");
    QTest::newRow("zeros") << QByteArray(4096, '\0');
    QTest::newRow("signature only") << QByteArray("\x89PNG\r\n\x1a\n", 8);
    QTest::newRow("header only") << pngHeader({64, 48});
    QTest::newRow("no pixels") << blackPng({0, 0});
    QTest::newRow("negative") << pngHeader({-1, -1});
    QTest::newRow("start of a photo") << QByteArray("\xff\xd8\xff\xe0", 4);
    QTest::newRow("wrong check sum") << blackPng({64, 48}).replace("IDAT", "IDAX");
}

void tst_Thumbnail::whatIsNoPictureGivesNone()
{
    QFETCH(QByteArray, content);
    const ScratchFolder folder;
    folder.write(QStringLiteral("x.jpg"), content);
    QVERIFY(readThumbnail(folder.path(QStringLiteral("x.jpg")), 1).isNull());
}

void tst_Thumbnail::whatIsNoFileGivesNone_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"fifo.jpg", "to-fifo.jpg", "folder.jpg", "dangling.jpg", "loop.jpg", "zero.jpg",
          "random.jpg", "kernel.jpg", "locked.jpg", "missing.jpg", ""})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_Thumbnail::whatIsNoFileGivesNone()
{
    const ScratchFolder folder;
    folder.makeFifo(QStringLiteral("fifo.jpg"));
    folder.makeLink(QStringLiteral("to-fifo.jpg"), QStringLiteral("fifo.jpg"));
    folder.makeFolder(QStringLiteral("folder.jpg"));
    folder.makeLink(QStringLiteral("dangling.jpg"), QStringLiteral("nowhere"));
    folder.makeLink(QStringLiteral("loop.jpg"), QStringLiteral("loop.jpg"));
    folder.makeLink(QStringLiteral("zero.jpg"), QStringLiteral("/dev/zero"));
    folder.makeLink(QStringLiteral("random.jpg"), QStringLiteral("/dev/urandom"));
    folder.makeLink(QStringLiteral("kernel.jpg"), QStringLiteral("/proc/self/status"));
    folder.write(QStringLiteral("locked.jpg"), pictureFile({64, 48}, "jpg", Qt::red));
    folder.setMode(QStringLiteral("locked.jpg"), 0);
    QFETCH(QString, name);
    QVERIFY(readThumbnail(folder.path(name), 1).isNull());
}

void tst_Thumbnail::cutPictureDoesNoHarm_data()
{
    QTest::addColumn<QByteArray>("format");
    for (const char* format : {"png", "jpg", "bmp", "ppm", "xpm"})
        QTest::newRow(format) << QByteArray(format);
}

void tst_Thumbnail::cutPictureDoesNoHarm()
{
    QFETCH(QByteArray, format);
    const QByteArray whole = pictureFile({64, 48}, format.constData(), Qt::red);
    const ScratchFolder folder;
    const qsizetype step = std::max<qsizetype>(whole.size() / 60, 1);
    for (qsizetype length = 0; length < whole.size(); length += step) {
        folder.write(QStringLiteral("x.jpg"), whole.left(length));
        const QSize size = readThumbnail(folder.path(QStringLiteral("x.jpg")), 1).size();
        QVERIFY(size.isEmpty() ||
                (size.width() <= ThumbnailSide && size.height() <= ThumbnailSide));
    }
}

void tst_Thumbnail::hugePictureTakesLittleTimeAndMemory_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray huge = blackPng({20000, 20000});
    QTest::newRow("whole") << huge;
    QTest::newRow("header") << pngHeader({20000, 20000});
    QTest::newRow("largest header") << pngHeader({0x7fffffff, 0x7fffffff});
    QTest::newRow("long line") << pngHeader({0x7fffffff, 1});
    QTest::newRow("photo") << jpegThatClaims({20000, 20000});
    QTest::newRow("largest photo") << jpegThatClaims({65500, 65500});
    QTest::newRow("portable map") << QByteArray("P6\n60000 60000\n255\n");
    QTest::newRow("text picture") << QByteArray(
        "/* XPM */\nstatic char *x[]={\n\"60000 60000 1 1\",\n\"a c #000000\",\n");
    QTest::newRow("text bits") << QByteArray(
        "#define x_width 30000\n#define x_height 30000\nstatic char x_bits[] = {\n");
    QTest::newRow("icon of a smaller size") << iconThatClaims({16, 16}, huge);
    QTest::newRow("icon of a slightly smaller size")
        << iconThatClaims({16, 16}, blackPng({300, 300}));
    QTest::newRow("icon of a small size") << iconThatClaims({64, 64}, huge);
}

void tst_Thumbnail::hugePictureTakesLittleTimeAndMemory()
{
    QFETCH(QByteArray, content);
    const ScratchFolder folder;
    folder.write(QStringLiteral("x.jpg"), content);
    const PeakMemory memory;
    QElapsedTimer time;
    time.start();
    const QSize size = readThumbnail(folder.path(QStringLiteral("x.jpg")), 1).size();
    QVERIFY2(time.elapsed() < 5000, qPrintable(QString::number(time.elapsed())));
    QVERIFY2(memory.growth() < MostMemory, qPrintable(QString::number(memory.growth())));
    QVERIFY(size.isEmpty() || (size.width() <= ThumbnailSide && size.height() <= ThumbnailSide));
}

void tst_Thumbnail::hugeFileTakesLittleTime_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("zeros") << QByteArray();
    QTest::newRow("photo") << QByteArray("\xff\xd8\xff", 3);
    QTest::newRow("animation") << QByteArray("GIF89a\x40\x00\x30\x00\x00\x00\x00", 13);
    QTest::newRow("long comment") << QByteArray("P6\n#");
    QTest::newRow("text picture") << QByteArray("/* XPM */");
    QTest::newRow("text bits") << QByteArray("#define x_width ");
    QTest::newRow("bit map") << pictureFile({64, 48}, "bmp", Qt::red);
}

void tst_Thumbnail::hugeFileTakesLittleTime()
{
    QFETCH(QByteArray, start);
    const ScratchFolder folder;
    folder.write(QStringLiteral("x.jpg"), start);
    QVERIFY(QFile::resize(folder.path(QStringLiteral("x.jpg")), qint64(5) << 30));
    QElapsedTimer time;
    time.start();
    const QSize size = readThumbnail(folder.path(QStringLiteral("x.jpg")), 1).size();
    QVERIFY2(time.elapsed() < 2000, qPrintable(QString::number(time.elapsed())));
    QVERIFY(size.isEmpty() || (size.width() <= ThumbnailSide && size.height() <= ThumbnailSide));
}

QUARN_TEST_MAIN(tst_Thumbnail)
#include "tst_thumbnail.moc"
