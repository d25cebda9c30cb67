#include "platform/keymap.h"
#include "plugins/picview/picturearea.h"
#include "plugins/picview/picturewindow.h"
#include "tests/browser/picturefiles.h"
#include "tests/plugins/movinggif.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QPainter>

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
    void fullScreenGivesThePictureMoreRoom();
    void tapsOnTheSidesTurn();
};

namespace
{

/// The viewer on the screen, showing a file.
class Viewer
{
public:
    explicit Viewer(const QString& path) : window(path)
    {
        window.show();
        [this] { QVERIFY(QTest::qWaitFor([this] { return keyReceiver() == &window; })); }();
        awaitPicture();
    }
    void awaitPicture()
    {
        QVERIFY(QTest::qWaitFor([this] { return !window.area()->isLoading(); }));
    }
    void press(int key)
    {
        pressKey(key);
        awaitPicture();
    }
    const PicturePlace& place() const { return window.area()->place(); }
    QString title() const { return window.mainWidgetTitle(); }
    QImage picture() const
    {
        auto* area = window.area();
        return area->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    PictureWindow window;
};

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

} // namespace

void tst_PicView::pictureIsShownInTheMiddle()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({40, 20}, "png", Qt::red));
    const Viewer viewer(folder.path("a.png"));
    const QImage picture = viewer.picture();
    QCOMPARE(boundsOf(picture, Qt::red),
             QRect((picture.width() - 40) / 2, (picture.height() - 20) / 2, 40, 20));
    QCOMPARE(viewer.title(), QString("a.png  1/1"));
}

void tst_PicView::keysGoToTheNeighbours_data()
{
    QTest::addColumn<QList<int>>("keys");
    QTest::addColumn<QString>("title");
    QTest::newRow("Right") << QList<int>{PhoneKey::Right} << "c.png  3/3";
    QTest::newRow("Left") << QList<int>{PhoneKey::Left} << "a.png  1/3";
    QTest::newRow("PageDown") << QList<int>{PhoneKey::PageDown} << "c.png  3/3";
    QTest::newRow("PageUp") << QList<int>{PhoneKey::PageUp} << "a.png  1/3";
    QTest::newRow("4") << QList<int>{'4'} << "a.png  1/3";
    QTest::newRow("6") << QList<int>{'6'} << "c.png  3/3";
    QTest::newRow("past the end") << QList<int>{'6', '6'} << "a.png  1/3";
    QTest::newRow("Up and Down do not") << QList<int>{PhoneKey::Up, PhoneKey::Down} << "b.png  2/3";
    QTest::newRow("from an enlarged one") << QList<int>{'3', '6'} << "c.png  3/3";
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
    QCOMPARE(viewer.title(), QString("a.png  1/2"));
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
    QCOMPARE(viewer.title(), QString("a.png  1/3"));
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

void tst_PicView::fullScreenGivesThePictureMoreRoom()
{
    const ScratchFolder folder;
    // As high as the screen without its title.
    QVERIFY(stripes(QSize(100, 300)).save(folder.path("a.png")));
    const Viewer viewer(folder.path("a.png"));
    QVERIFY(boundsOf(viewer.picture(), Qt::red).isEmpty());
    pressKey('*');
    QTRY_COMPARE(boundsOf(viewer.picture(), Qt::red).height(), 300);
}

void tst_PicView::tapsOnTheSidesTurn()
{
    const ScratchFolder folder;
    for (const char* name : {"a.png", "b.png"})
        folder.write(name, pictureFile({40, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    auto* area = viewer.window.area();
    QTest::mouseClick(area, Qt::LeftButton, {}, QPoint(area->width() - 10, 100));
    QCOMPARE(viewer.title(), QString("b.png  2/2"));
    QTest::mouseClick(area, Qt::LeftButton, {}, QPoint(10, 100));
    QCOMPARE(viewer.title(), QString("a.png  1/2"));
}

QUARN_TEST_MAIN(tst_PicView)
#include "tst_picview.moc"
