#include "platform/keymap.h"
#include "plugins/picview/slideshow.h"
#include "tests/browser/picturefiles.h"
#include "tests/plugins/pictureviewer.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

/// Pictures one after the other, by keys.
class tst_SlideShow : public QObject
{
    Q_OBJECT

private slots:
    void slideShowGoesRound();
    void anyKeyEndsTheSlideShow_data();
    void anyKeyEndsTheSlideShow();
    void slideShowPassesOverWhatIsBroken();
    void slideShowOfBrokenPicturesEnds();
    void slideShowOfOnePictureIsDeclined();
};

namespace
{

/// A slide show that need not be waited for.
constexpr int Short = 20;
/// And one whose first picture stays.
constexpr int Endless = 1000000;

} // namespace

void tst_SlideShow::slideShowGoesRound()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({40, 20}, "png", Qt::red));
    folder.write("b.png", pictureFile({40, 20}, "png", Qt::green));
    Viewer viewer(folder.path("a.png"));
    viewer.window.slideShow()->setInterval(Short);
    pressKey('#');
    QVERIFY(!viewer.hasBar());
    for (const QColor& colour : {QColor(Qt::green), QColor(Qt::red), QColor(Qt::green)})
        QTRY_COMPARE(boundsOf(viewer.picture(), colour).size(), QSize(40, 20));
}

void tst_SlideShow::anyKeyEndsTheSlideShow_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("title");
    QTest::newRow("#") << int('#') << "a.png · 1/3";
    QTest::newRow("left soft key") << int(PhoneKey::SoftLeft) << "a.png · 1/3";
    QTest::newRow("right soft key") << int(PhoneKey::SoftRight) << "a.png · 1/3";
    QTest::newRow("unknown") << int(PhoneKey::Hide) << "a.png · 1/3";
    QTest::newRow("next") << int('6') << "b.png · 2/3";
    QTest::newRow("Left") << int(PhoneKey::Left) << "c.png · 3/3";
}

void tst_SlideShow::anyKeyEndsTheSlideShow()
{
    QFETCH(int, key);
    const ScratchFolder folder;
    for (const char* name : {"a.png", "b.png", "c.png"})
        folder.write(name, pictureFile({40, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    viewer.window.slideShow()->setInterval(Endless);
    pressKey('#');
    QVERIFY(viewer.window.slideShow()->isRunning());
    QCOMPARE(viewer.window.area()->words(), QString("Slide show"));
    viewer.press(key);
    QVERIFY(!viewer.window.slideShow()->isRunning());
    QVERIFY(viewer.hasBar());
    QCOMPARE(viewer.window.area()->words(), QString());
    QTEST(viewer.title(), "title");
    QVERIFY(viewer.place().isFitted());
    QVERIFY(!ZApplication::isQuitting());
}

void tst_SlideShow::slideShowPassesOverWhatIsBroken()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({40, 20}, "png", Qt::red));
    folder.write("b.png", "no picture");
    folder.write("c.png", pictureFile({40, 20}, "png", Qt::green));
    Viewer viewer(folder.path("a.png"));
    // Only the first picture goes by itself.
    SlideShow* show = viewer.window.slideShow();
    connect(show, &SlideShow::nextWanted, this, [show] { show->setInterval(Endless); });
    show->setInterval(Short);
    pressKey('#');
    QTRY_COMPARE(viewer.title(), QString("c.png · 3/3"));
    QTRY_COMPARE(boundsOf(viewer.picture(), Qt::green).size(), QSize(40, 20));
    QVERIFY(show->isRunning());
}

void tst_SlideShow::slideShowOfBrokenPicturesEnds()
{
    const ScratchFolder folder;
    for (const char* name : {"a.png", "b.png", "c.png"})
        folder.write(name, "no picture");
    Viewer viewer(folder.path("a.png"));
    viewer.window.slideShow()->setInterval(Short);
    pressKey('#');
    QTRY_VERIFY(!viewer.window.slideShow()->isRunning());
    QTRY_VERIFY(viewer.hasBar());
    QVERIFY(!viewer.window.area()->problem().isEmpty());
}

void tst_SlideShow::slideShowOfOnePictureIsDeclined()
{
    const ScratchFolder folder;
    folder.write("a.png", pictureFile({40, 20}, "png", Qt::red));
    Viewer viewer(folder.path("a.png"));
    const QImage before = viewer.picture();
    pressKey('#');
    QVERIFY(!viewer.window.slideShow()->isRunning());
    QVERIFY(viewer.hasBar());
    QVERIFY(viewer.picture() != before);
    // What it says goes by itself.
    QTRY_COMPARE(viewer.picture(), before);
}

QUARN_TEST_MAIN(tst_SlideShow)
#include "tst_slideshow.moc"
