#include "plugins/picview/pictureplace.h"
#include "tests/support/testmain.h"

/// Where a picture lies in an area of 200 x 100 pixels.
class tst_PicturePlace : public QObject
{
    Q_OBJECT

private slots:
    void pictureIsFitted_data();
    void pictureIsFitted();
    void zoomingKeepsTheMiddle();
    void zoomingEndsSomewhere();
    void zoomingOutEndsFitted();
    void scrollingStopsAtTheEdges();
    void narrowPictureIsNotScrolledSideways();
    void originalSizeOfASmallPictureIsFitted();
    void pictureFillsTheArea_data();
    void pictureFillsTheArea();
    void fillingGoesOnWithTheNextPicture();
    void nothingIsLeftAlone();
    void largerAreaShowsMore();
};

namespace
{

PicturePlace placeOf(QSize picture)
{
    PicturePlace place;
    place.setArea(QSize(200, 100));
    place.setPicture(picture);
    return place;
}

} // namespace

void tst_PicturePlace::pictureIsFitted_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QRectF>("target");
    QTest::newRow("as large") << QSize(200, 100) << QRectF(0, 0, 200, 100);
    QTest::newRow("small ones are not enlarged") << QSize(20, 10) << QRectF(90, 45, 20, 10);
    QTest::newRow("wide") << QSize(800, 200) << QRectF(0, 25, 200, 50);
    QTest::newRow("high") << QSize(100, 400) << QRectF(88, 0, 25, 100);
    QTest::newRow("nothing") << QSize() << QRectF(101, 51, -1, -1);
}

void tst_PicturePlace::pictureIsFitted()
{
    QFETCH(QSize, picture);
    const PicturePlace place = placeOf(picture);
    QVERIFY(place.isFitted());
    QTEST(place.target(), "target");
}

void tst_PicturePlace::zoomingKeepsTheMiddle()
{
    PicturePlace place = placeOf({800, 400});
    QVERIFY(place.zoomIn());
    QCOMPARE(place.target(), QRectF(-100, -50, 400, 200));
    QVERIFY(place.scroll(60, 30));
    QCOMPARE(place.target(), QRectF(-160, -80, 400, 200));
    QVERIFY(place.zoomIn());
    QCOMPARE(place.target(), QRectF(-420, -210, 800, 400));
    QVERIFY(place.zoomOut());
    QCOMPARE(place.target(), QRectF(-160, -80, 400, 200));
}

void tst_PicturePlace::zoomingEndsSomewhere()
{
    PicturePlace place = placeOf({30, 10});
    while (place.zoomIn()) {
    }
    QCOMPARE(place.scale(), PicturePlace::LargestScale);
    QCOMPARE(place.target().size(), QSizeF(240, 80));
}

void tst_PicturePlace::zoomingOutEndsFitted()
{
    PicturePlace place = placeOf({700, 300});
    QVERIFY(!place.zoomOut());
    for (int i = 0; i < 3; ++i)
        QVERIFY(place.zoomIn());
    for (int i = 0; i < 3; ++i)
        QVERIFY(place.zoomOut());
    QVERIFY(place.isFitted());
    QVERIFY(!place.zoomOut());
}

void tst_PicturePlace::scrollingStopsAtTheEdges()
{
    PicturePlace place = placeOf({400, 200});
    place.showOriginalSize();
    QVERIFY(place.scroll(-1000, -1000));
    QCOMPARE(place.target().topLeft(), QPointF(0, 0));
    QVERIFY(!place.scroll(-1, 0));
    QVERIFY(place.scroll(1000, 1000));
    QCOMPARE(place.target().bottomRight(), QPointF(200, 100));
    QVERIFY(!place.scroll(0, 1));
}

void tst_PicturePlace::narrowPictureIsNotScrolledSideways()
{
    PicturePlace place = placeOf({50, 400});
    QVERIFY(!place.scroll(0, 10));
    place.showOriginalSize();
    QVERIFY(!place.scroll(10, 0));
    QCOMPARE(place.target().left(), 75);
    QVERIFY(place.scroll(0, 10));
}

void tst_PicturePlace::originalSizeOfASmallPictureIsFitted()
{
    PicturePlace place = placeOf({50, 40});
    place.showOriginalSize();
    QVERIFY(place.isFitted());
    QCOMPARE(place.scale(), 1.0);
}

void tst_PicturePlace::pictureFillsTheArea_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QRectF>("target");
    QTest::newRow("as large") << QSize(200, 100) << QRectF(0, 0, 200, 100);
    QTest::newRow("small") << QSize(10, 10) << QRectF(0, -50, 200, 200);
    QTest::newRow("wide") << QSize(800, 200) << QRectF(-100, 0, 400, 100);
    QTest::newRow("high") << QSize(100, 400) << QRectF(0, -350, 200, 800);
}

void tst_PicturePlace::pictureFillsTheArea()
{
    QFETCH(QSize, picture);
    PicturePlace place = placeOf(picture);
    place.fill();
    QVERIFY(place.isFilling() && !place.isFitted());
    QTEST(place.target(), "target");
    // What does not fit can be looked at, and no more than that.
    place.scroll(10000, 10000);
    QCOMPARE(place.target().bottomRight(), QPointF(200, 100));
    place.setArea({100, 200});
    QVERIFY(place.isFilling());
    QVERIFY(place.target().contains(QRectF(0, 0, 100, 200)));
    place.fit();
    QVERIFY(place.isFitted() && !place.isFilling());
}

void tst_PicturePlace::fillingGoesOnWithTheNextPicture()
{
    PicturePlace place = placeOf({800, 200});
    place.fill();
    place.setPicture({200, 400});
    QCOMPARE(place.target(), QRectF(0, -150, 200, 400));
    QVERIFY(place.zoomIn());
    QVERIFY(!place.isFilling());
    place.setPicture({800, 200});
    QVERIFY(place.isFitted());
}

void tst_PicturePlace::nothingIsLeftAlone()
{
    PicturePlace place = placeOf({});
    QVERIFY(!place.zoomIn());
    QVERIFY(!place.zoomOut());
    QVERIFY(!place.scroll(1, 1));
    place.showOriginalSize();
    QVERIFY(place.isFitted());
}

void tst_PicturePlace::largerAreaShowsMore()
{
    PicturePlace place = placeOf({400, 200});
    place.showOriginalSize();
    place.scroll(-1000, -1000);
    place.setArea({300, 150});
    QCOMPARE(place.target(), QRectF(0, 0, 400, 200));
    place.setArea({400, 200});
    QVERIFY(place.isFitted());
    QCOMPARE(place.target(), QRectF(0, 0, 400, 200));
}

QUARN_TEST_MAIN(tst_PicturePlace)
#include "tst_pictureplace.moc"
