#include "platform/keymap.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "tests/browser/picturefiles.h"
#include "tests/plugins/movinggif.h"
#include "tests/plugins/pictureviewer.h"
#include "tests/support/contrast.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QPainter>

#include <algorithm>

/// The picture viewer, driven by keys.
class tst_PicView : public QObject
{
    Q_OBJECT

private slots:
    void pictureIsShownInTheMiddle();
    void keysGoToTheNeighbours_data();
    void keysGoToTheNeighbours();
    void keysZoom();
    void softKeyShowsTheOriginalSizeAndBack();
    void arrowsMoveAnEnlargedPicture();
    void zoomingBringsDetail();
    void brokenPictureIsToldAndLeft();
    void movingPictureIsPlayed();
    void messageWithoutAFile();
    void starFillsTheScreen_data();
    void starFillsTheScreen();
    void rightSoftKeyLeavesTheFilledScreenFirst();
    void arrowsMoveAFillingPictureAndGoOn();
    void digitsTurnThePicture();
    void turningWhileItLoadsIsNotLost();
    void nextPictureIsNotTurned();
    void movingPictureIsTurned();
    void pictureOfOneBitIsSmooth();
    void tapsOnTheSidesTurn();
    void wordsOverAPictureCanBeRead_data();
    void wordsOverAPictureCanBeRead();
};

namespace
{

/// A picture whose left half is red and whose right half is blue.
QImage halves(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    QPainter(&image).fillRect(size.width() / 2, 0, size.width(), size.height(), Qt::blue);
    return image;
}

const QRect WholeScreen(0, 0, ZScreen::Width, ZScreen::Height);
/// A picture of red and blue stripes, which cannot be told apart when it is scaled down.
QImage stripes(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    QPainter painter(&image);
    for (int x = 0; x < image.width(); x += 2)
        painter.fillRect(x, 0, 1, image.height(), Qt::blue);
    return image;
}

/// But for what the toolkit makes of the edge of a reduced picture.
bool isNearly(const QRect& one, const QRect& other)
{
    const QMargins edge(1, 1, 1, 1);
    return (one + edge).contains(other) && (other + edge).contains(one);
}

} // namespace

void tst_PicView::pictureIsShownInTheMiddle()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({40, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    const QImage picture = viewer.picture();
    QCOMPARE(boundsOf(picture, Qt::red),
             QRect((picture.width() - 40) / 2, (picture.height() - 20) / 2, 40, 20));
    QCOMPARE(viewer.title(), QString("a.png · 1/1"));
}

void tst_PicView::keysGoToTheNeighbours_data()
{
    QTest::addColumn<QList<int>>("keys");
    QTest::addColumn<QString>("title");
    QTest::newRow("Right") << QList<int>{PhoneKey::Right} << "c.png · 3/3";
    QTest::newRow("Left") << QList<int>{PhoneKey::Left} << "a.png · 1/3";
    QTest::newRow("PageDown") << QList<int>{PhoneKey::PageDown} << "c.png · 3/3";
    QTest::newRow("PageUp") << QList<int>{PhoneKey::PageUp} << "a.png · 1/3";
    QTest::newRow("4") << QList<int>{'4'} << "a.png · 1/3";
    QTest::newRow("6") << QList<int>{'6'} << "c.png · 3/3";
    QTest::newRow("past the end") << QList<int>{'6', '6'} << "a.png · 1/3";
    QTest::newRow("Up and Down do not")
        << QList<int>{PhoneKey::Up, PhoneKey::Down} << "b.png · 2/3";
    QTest::newRow("from an enlarged one") << QList<int>{'3', '6'} << "c.png · 3/3";
}

void tst_PicView::keysGoToTheNeighbours()
{
    QFETCH(QList<int>, keys);
    const ScratchFolder folder;
    for (const char* name : {"a.png", "b.png", "c.png"})
        folder.write(name, pictureFile({40, 20}, "png", Qt::red));
    Viewer viewer(folder.path("b.png"));
    for (const int key : keys)
        viewer.press(key);
    QTEST(viewer.title(), "title");
    QVERIFY(viewer.place().isFitted());
}

void tst_PicView::keysZoom()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({480, 240}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    QCOMPARE(viewer.place().scale(), 0.5);
    viewer.press('3');
    viewer.press('3');
    QCOMPARE(viewer.place().scale(), 2.0);
    viewer.press('1');
    QCOMPARE(viewer.place().scale(), 1.0);
    viewer.press('0');
    QVERIFY(viewer.place().isFitted());
    viewer.press('5');
    QCOMPARE(viewer.place().scale(), 1.0);
    viewer.press('1');
    QVERIFY(viewer.place().isFitted());
}

void tst_PicView::softKeyShowsTheOriginalSizeAndBack()
{
    const ScratchFolder folder;
    folder.write("large.png", pictureFile({480, 240}, "png", Qt::red));
    folder.write("small.png", pictureFile({20, 20}, "png", Qt::red));
    Viewer viewer(folder.path("large.png"));
    viewer.press(PhoneKey::SoftLeft);
    QCOMPARE(viewer.place().scale(), 1.0);
    viewer.press(PhoneKey::SoftLeft);
    QVERIFY(viewer.place().isFitted());
    viewer.press('6');
    // It is in its original size already.
    viewer.press(PhoneKey::SoftLeft);
    QCOMPARE(viewer.place().scale(), 2.0);
}

void tst_PicView::arrowsMoveAnEnlargedPicture()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({960, 960}, "png", Qt::red));
    folder.write("b.png", pictureFile({20, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    viewer.press('5');
    const QPointF before = viewer.place().target().topLeft();
    viewer.press(PhoneKey::Right);
    QVERIFY(viewer.place().target().left() < before.x());
    viewer.press(PhoneKey::Left);
    viewer.press(PhoneKey::Down);
    QCOMPARE(viewer.place().target().left(), before.x());
    QVERIFY(viewer.place().target().top() < before.y());
    viewer.press(PhoneKey::Up);
    QCOMPARE(viewer.place().target().topLeft(), before);
    QCOMPARE(viewer.title(), QString("a.png · 1/2"));
}

void tst_PicView::zoomingBringsDetail()
{
    const ScratchFolder folder;
    QVERIFY(stripes(QSize(960, 960)).save(folder.path("a.png")));
    Viewer viewer(folder.path("a.png"));
    QVERIFY(boundsOf(viewer.picture(), Qt::red).isEmpty());
    viewer.press('5');
    QCOMPARE(viewer.place().scale(), 1.0);
    const QImage picture = viewer.picture();
    const QRect middle(10, 10, 20, 20);
    QVERIFY(boundsOf(picture, Qt::red).contains(middle));
    QVERIFY(boundsOf(picture, Qt::blue).contains(middle));
}

void tst_PicView::brokenPictureIsToldAndLeft()
{
    const ScratchFolder folder;
    folder.write("a.png", pngHeader({100, 100}));
    folder.write("b.png", QByteArray());
    folder.write("c.png", pictureFile({20, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    QVERIFY(!viewer.window.area()->problem().isEmpty());
    QCOMPARE(viewer.title(), QString("a.png · 1/3"));
    QVERIFY(!inkBounds(viewer.picture(), viewer.picture().rect(), Qt::black).isEmpty());
    for (const int key : {int('3'), int('5'), int('1'), int(PhoneKey::Down)})
        viewer.press(key);
    viewer.press(PhoneKey::Right);
    QCOMPARE(viewer.window.area()->problem(), QString("The file is empty."));
    viewer.press(PhoneKey::Right);
    QCOMPARE(viewer.window.area()->problem(), QString());
    QCOMPARE(boundsOf(viewer.picture(), Qt::red).size(), QSize(20, 20));
    QVERIFY(QFile::remove(folder.path("a.png")));
    viewer.press(PhoneKey::Right);
    QCOMPARE(viewer.window.area()->problem(), QString("There is no such file."));
}

void tst_PicView::movingPictureIsPlayed()
{
    const ScratchFolder folder;
    folder.write("a.gif", movingGif());
    folder.write("b.png", pictureFile({20, 20}, "png", Qt::green));
    Viewer viewer(folder.path("a.gif"));
    const auto shows = [&viewer](const QColor& colour) {
        return boundsOf(viewer.picture(), colour).size() == QSize(4, 4);
    };
    for (int i = 0; i < 2; ++i) {
        QTRY_VERIFY(shows(Qt::red));
        QTRY_VERIFY(shows(Qt::blue));
    }
    // Only as long as it is the one.
    viewer.press(PhoneKey::Right);
    QCOMPARE(boundsOf(viewer.picture(), Qt::green).size(), QSize(20, 20));
}

void tst_PicView::messageWithoutAFile()
{
    Viewer viewer{QString()};
    QCOMPARE(viewer.window.area()->problem(), QString("No file was given."));
    viewer.press('3');
}

void tst_PicView::starFillsTheScreen_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::newRow("wide") << QSize(640, 200);
    QTest::newRow("high") << QSize(200, 900);
    QTest::newRow("small") << QSize(7, 5);
}

void tst_PicView::starFillsTheScreen()
{
    QFETCH(QSize, picture);
    const ScratchFolder folder;
    folder.write("a.png", pictureFile(picture, "png", Qt::red));
    folder.write("b.png", pictureFile(picture, "png", Qt::green));
    Viewer viewer(folder.path("a.png"));
    const QRect before = boundsOf(viewer.screen(), Qt::red);
    pressKey('*');
    QTRY_VERIFY(isPlain(viewer.screen(), WholeScreen, Qt::red));
    pressKey('6');
    QTRY_VERIFY(isPlain(viewer.screen(), WholeScreen, Qt::green));
    pressKey('4');
    QTRY_VERIFY(isPlain(viewer.screen(), WholeScreen, Qt::red));
    pressKey('*');
    QTRY_COMPARE(boundsOf(viewer.screen(), Qt::red), before);
    QVERIFY(viewer.hasBar());
}

void tst_PicView::rightSoftKeyLeavesTheFilledScreenFirst()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({40, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    pressKey('*');
    QVERIFY(!viewer.hasBar());
    pressKey(PhoneKey::SoftRight);
    QVERIFY(viewer.hasBar());
    QVERIFY(viewer.place().isFitted());
    QVERIFY(!ZApplication::isQuitting());
}

void tst_PicView::arrowsMoveAFillingPictureAndGoOn()
{
    const ScratchFolder folder;
    QVERIFY(halves({640, 320}).save(folder.path("a.png")));
    folder.write("b.png", pictureFile({40, 20}, "png", Qt::green));
    Viewer viewer(folder.path("a.png"));
    pressKey('*');
    QTRY_COMPARE(boundsOf(viewer.screen(), Qt::red).width(), 120);
    for (int i = 0; i < 4; ++i)
        viewer.press(PhoneKey::Right);
    QVERIFY(isPlain(viewer.screen(), WholeScreen, Qt::blue));
    QCOMPARE(viewer.title(), QString("a.png · 1/2"));
    viewer.press(PhoneKey::Right);
    QCOMPARE(viewer.title(), QString("b.png · 2/2"));
}

void tst_PicView::digitsTurnThePicture()
{
    const ScratchFolder folder;
    QVERIFY(halves({1000, 600}).save(folder.path("a.png")));
    Viewer viewer(folder.path("a.png"));
    const QRect red = boundsOf(viewer.picture(), Qt::red);
    const QRect blue = boundsOf(viewer.picture(), Qt::blue);
    QVERIFY(red.right() < blue.left());
    viewer.press('9');
    QVERIFY(boundsOf(viewer.picture(), Qt::red).bottom() <
            boundsOf(viewer.picture(), Qt::blue).top());
    QCOMPARE(viewer.place().target().size().toSize(), QSize(168, 280));
    viewer.press('7');
    viewer.press('7');
    QVERIFY(boundsOf(viewer.picture(), Qt::red).top() >
            boundsOf(viewer.picture(), Qt::blue).bottom());
    viewer.press('7');
    QVERIFY(boundsOf(viewer.picture(), Qt::red).left() >
            boundsOf(viewer.picture(), Qt::blue).right());
    viewer.press('7');
    viewer.press('7');
    QVERIFY(isNearly(boundsOf(viewer.picture(), Qt::red), red));
    QVERIFY(isNearly(boundsOf(viewer.picture(), Qt::blue), blue));
}

void tst_PicView::turningWhileItLoadsIsNotLost()
{
    const ScratchFolder folder;
    QVERIFY(halves({1000, 600}).save(folder.path("a.png")));
    folder.write("b.png", pictureFile({40, 20}, "png", Qt::green));
    Viewer viewer(folder.path("b.png"));
    pressKey('4');
    pressKey('9');
    QVERIFY(viewer.window.area()->isLoading());
    viewer.awaitPicture();
    QVERIFY(boundsOf(viewer.picture(), Qt::red).bottom() <
            boundsOf(viewer.picture(), Qt::blue).top());
    // While what is shown gets more of its pixels, too.
    pressKey('5');
    QVERIFY(viewer.window.area()->isLoading());
    pressKey('9');
    viewer.press('0');
    QVERIFY(boundsOf(viewer.picture(), Qt::red).left() >
            boundsOf(viewer.picture(), Qt::blue).right());
}

void tst_PicView::nextPictureIsNotTurned()
{
    const ScratchFolder folder;
    QVERIFY(halves({100, 60}).save(folder.path("a.png")));
    QVERIFY(halves({100, 60}).save(folder.path("b.png")));
    Viewer viewer(folder.path("a.png"));
    viewer.press('9');
    viewer.press('6');
    QCOMPARE(viewer.place().target().size().toSize(), QSize(100, 60));
    viewer.press('4');
    QCOMPARE(viewer.place().target().size().toSize(), QSize(100, 60));
}

void tst_PicView::movingPictureIsTurned()
{
    const ScratchFolder folder;
    folder.write("a.gif", movingGif());
    Viewer viewer(folder.path("a.gif"));
    viewer.press('9');
    for (const QColor& colour : {QColor(Qt::red), QColor(Qt::blue)})
        QTRY_COMPARE(boundsOf(viewer.picture(), colour).size(), QSize(4, 4));
}

void tst_PicView::pictureOfOneBitIsSmooth()
{
    const ScratchFolder folder;
    QImage dots(960, 960, QImage::Format_Mono);
    dots.fill(1);
    for (int y = 0; y < dots.height(); ++y) {
        for (int x = y % 2; x < dots.width(); x += 2)
            dots.setPixel(x, y, 0);
    }
    QVERIFY(dots.save(folder.path("a.png")));
    Viewer viewer(folder.path("a.png"));
    // Enlarged, with all of its pixels at hand, and then small again.
    viewer.press('5');
    viewer.press('0');
    const QImage picture = viewer.picture();
    for (int y = 60; y < 200; y += 7) {
        for (int x = 10; x < 230; x += 7) {
            const int grey = qGray(picture.pixel(x, y));
            QVERIFY2(grey > 64 && grey < 192, qPrintable(QString::number(grey)));
        }
    }
}

void tst_PicView::tapsOnTheSidesTurn()
{
    const ScratchFolder folder;
    for (const char* name : {"a.png", "b.png"})
        folder.write(name, pictureFile({40, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    auto* area = viewer.window.area();
    QTest::mouseClick(area, Qt::LeftButton, {}, QPoint(area->width() - 10, 100));
    QCOMPARE(viewer.title(), QString("b.png · 2/2"));
    QTest::mouseClick(area, Qt::LeftButton, {}, QPoint(10, 100));
    QCOMPARE(viewer.title(), QString("a.png · 1/2"));
}

void tst_PicView::wordsOverAPictureCanBeRead_data()
{
    QTest::addColumn<QColor>("colour");
    QTest::newRow("snow") << QColor(Qt::white);
    QTest::newRow("sand") << QColor(255, 240, 120);
    QTest::newRow("sky") << QColor(120, 200, 255);
    QTest::newRow("night") << QColor(Qt::black);
}

void tst_PicView::wordsOverAPictureCanBeRead()
{
    QFETCH(QColor, colour);
    const ScratchFolder folder;
    folder.write("a.png", pictureFile(WholeScreen.size(), "png", colour));
    Viewer viewer(folder.path("a.png"));
    pressKey('*');
    QTRY_VERIFY(isPlain(viewer.screen(), WholeScreen, colour));
    viewer.window.area()->say("Slide show");
    const QImage said = viewer.screen();
    // Beside the words is what they stand on.
    const QColor ground = said.pixelColor(0, ZScreen::Height - 1);
    double best = 1;
    for (int y = ZScreen::Height - ZSkinService::HeaderHeight; y < ZScreen::Height; ++y) {
        for (int x = 0; x < ZScreen::Width; ++x)
            best = std::max(best, contrast(ground, said.pixelColor(x, y)));
    }
    QVERIFY2(best >= ContrastOfTexts, QByteArray::number(best).constData());
}

QUARN_TEST_MAIN(tst_PicView)
#include "tst_picview.moc"
