#include "platform/keymap.h"
#include "platform/zglide.h"
#include "platform/zlistbox.h"
#include "platform/zmotion.h"
#include "tests/platform/listfixture.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

namespace
{

/// Milliseconds; for what takes a few seconds.
constexpr int RowPatience = 60000;

const ZSkinService::Look& listLook()
{
    return ZSkinService::look(ZSkinService::clsListBox);
}

QImage listPicture(const ListFixture& list)
{
    return list.box->grab().toImage();
}

void setFonts(const ListFixture& list, int pixels)
{
    for (const bool highlighted : {false, true})
        list.box->setItemFont(2, ZSkinService::font("any", pixels), highlighted);
}

void setIcons(const ListFixture& list, int side)
{
    for (int row = 0; row < list.box->count(); ++row)
        list.box->item(row)->setPixmap(0, coloured(Qt::blue, {side, side}));
}

/// What is inked of the texts in a part of a list with icons of 32 pixels.
QRect inkBetween(const QImage& picture, int top, int bottom)
{
    return inkBounds(picture, {40, top, 190, bottom - top}, listLook().background);
}

/// A name that is so much wider than the list. It is inked everywhere.
QString longName(const ListFixture& list, int wider)
{
    const QFontMetrics metrics(ZSkinService::font("any", 13));
    QString name("_");
    while (metrics.horizontalAdvance(name) < list.box->width() + wider)
        name += '_';
    return name;
}

} // namespace

/// How rows are spaced, what stands below them, and how a long name glides.
class tst_ZListBoxLook : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ZMotion::setEnabled(false); }

    void rowsAreAsHighAsTheirFontSays_data()
    {
        QTest::addColumn<int>("pixels");
        QTest::addColumn<bool>("detailed");
        QTest::addColumn<int>("icon");
        QTest::addColumn<int>("height");
        QTest::newRow("full information") << 13 << true << 32 << 32;
        QTest::newRow("names alone") << 15 << false << 16 << 20;
        QTest::newRow("two lines without an icon") << 14 << true << 0 << 34;
        QTest::newRow("high icons") << 13 << true << 48 << 48;
    }

    void rowsAreAsHighAsTheirFontSays()
    {
        QFETCH(int, pixels);
        QFETCH(bool, detailed);
        QFETCH(int, icon);
        ListFixture list;
        list.add("name", -1, detailed ? QString("1 Kb") : QString());
        setFonts(list, pixels);
        if (icon > 0)
            setIcons(list, icon);
        QTEST(list.box->rowHeight(), "height");
    }

    void nameAndDetailAreOneGroup()
    {
        ListFixture list;
        for (int row = 0; row < 4; ++row)
            list.add("HHH", -1, "HHH");
        setFonts(list, 13);
        setIcons(list, 32);
        list.box->setCurrentItem(3);
        const QImage picture = listPicture(list);
        const QRect name = inkBetween(picture, 0, 15);
        const QRect detail = inkBetween(picture, name.bottom() + 2, 31);
        const QRect next = inkBetween(picture, 32, 32 + 15);
        QCOMPARE(detail.top() - name.bottom() - 1, 5);
        QVERIFY(next.top() - detail.bottom() - 1 >= 8);
        QCOMPARE(next.top() - name.top(), 32);
        // In the middle of the row, one pixel up or down.
        QVERIFY(std::abs(name.top() - (31 - detail.bottom())) <= 1);
    }

    void thumbIsLongEnoughToBeSeen()
    {
        ListFixture list;
        list.fill(5000);
        list.box->setCurrentItem(0);
        const QRect thumb = boundsOf(listPicture(list), listLook().thumb);
        QCOMPARE(thumb, QRect(237, 0, 3, 16));
        list.box->setCurrentItem(4999);
        QCOMPARE(boundsOf(listPicture(list), listLook().thumb).bottom(),
                 list.box->visibleItems() * list.box->rowHeight() - 1);
    }

    void emptyTextStandsBelowTheRows()
    {
        ListFixture list;
        list.fill(2);
        list.box->setCurrentItem(0);
        const QImage before = listPicture(list);
        list.box->setEmptyText("No entries");
        const QImage picture = listPicture(list);
        const int below = 2 * list.box->rowHeight();
        const QRect ink = inkBounds(picture, {0, below, 240, 250 - below}, listLook().background);
        QVERIFY(ink.width() > 30 && ink.height() < 20);
        QVERIFY(std::abs(ink.center().x() - 120) <= 2);
        QVERIFY(std::abs(ink.center().y() - (below + 250) / 2) <= 3);
        QCOMPARE(picture.copy(0, 0, 240, below), before.copy(0, 0, 240, below));
        list.box->setEmptyText(QString());
        QVERIFY(listPicture(list) == before);
    }

    void emptyTextIsShownInAListWithoutRows()
    {
        ListFixture list;
        list.box->setEmptyText("Cannot be read");
        const QRect ink = inkBounds(listPicture(list), {0, 0, 240, 250}, listLook().background);
        QVERIFY(std::abs(ink.center().y() - 125) <= 3);
    }

    void emptyTextThatFindsNoRoomIsLeftOut_data()
    {
        QTest::addColumn<int>("more");
        QTest::newRow("room for less than a row") << 0;
        QTest::newRow("room for a row") << -1;
        QTest::newRow("rows out of view") << 1;
        QTest::newRow("many rows out of view") << 100;
    }

    void emptyTextThatFindsNoRoomIsLeftOut()
    {
        QFETCH(int, more);
        ListFixture list;
        list.fill(list.box->viewport()->height() / list.box->rowHeight() + more);
        list.box->setCurrentItem(0);
        QCOMPARE(list.box->count() > list.box->visibleItems(), more > 0);
        const QImage before = listPicture(list);
        list.box->setEmptyText("No entries");
        QVERIFY(listPicture(list) == before);
    }

    void emptyTextThatIsTooLongIsCut()
    {
        ListFixture list;
        list.box->setEmptyText(QString(300, 'W'));
        const QRect ink = inkBounds(listPicture(list), {0, 0, 240, 250}, listLook().background);
        QVERIFY(ink.height() < 20);
        QVERIFY(ink.left() >= 0 && ink.width() > 200);
    }

    void longNameGlidesAndRests()
    {
        ListFixture list;
        setFonts(list, 13);
        list.add(longName(list, 5), -1);
        list.add("short", -1);
        takeForActive(list.box->window());
        list.box->setCurrentItem(0);
        const QImage resting = listPicture(list);
        ZMotion::setEnabled(true);
        list.box->setCurrentItem(1);
        list.box->setCurrentItem(0);
        QVERIFY(listPicture(list) == resting);
        const auto* glide = list.box->findChild<ZGlide*>();
        QTRY_VERIFY_WITH_TIMEOUT(glide->offset() > 1, RowPatience);
        const QImage gliding = listPicture(list);
        QVERIFY(gliding != resting);
        // Nothing but the row moves, and of it only the text.
        const int height = list.box->rowHeight();
        QCOMPARE(gliding.copy(0, height, 240, 250 - height),
                 resting.copy(0, height, 240, 250 - height));
        QCOMPARE(gliding.copy(234, 0, 6, height), resting.copy(234, 0, 6, height));
        QCOMPARE(gliding.copy(0, 0, 5, height), resting.copy(0, 0, 5, height));
        // Letters that are cut off fade away.
        const int first = ZSkinService::MarkWidth + 4;
        QVERIFY(inkBounds(gliding, {first, 0, 1, height}, listLook().highlight).isEmpty());
        QVERIFY(!inkBounds(gliding, {first + 6, 0, 10, height}, listLook().highlight).isEmpty());
        pressKey(PhoneKey::Down);
        pressKey(PhoneKey::Up);
        QVERIFY(listPicture(list) == resting);
    }

    void nameGlidesFromItsBeginningToItsEnd_data()
    {
        QTest::addColumn<QString>("letters");
        QTest::addColumn<bool>("fromTheRight");
        QTest::newRow("Latin") << "mm" << false;
        QTest::newRow("Hebrew") << QString::fromUtf8("שש") << true;
        QTest::newRow("Arabic") << QString::fromUtf8("سس") << true;
    }

    void nameGlidesFromItsBeginningToItsEnd()
    {
        QFETCH(QString, letters);
        QFETCH(bool, fromTheRight);
        ListFixture list;
        setFonts(list, 13);
        // Between the letters at its ends is a gap that is wider than half of the list.
        const QFontMetrics metrics(ZSkinService::font("any", 13));
        constexpr int Wider = 20;
        QString gap;
        while (metrics.horizontalAdvance(letters + gap + letters) < list.box->width() + Wider)
            gap += QChar(QChar::Nbsp);
        list.add(letters + gap + letters, -1);
        ZMotion::setEnabled(true);
        takeForActive(list.box->window());
        list.box->setCurrentItem(0);
        const auto* glide = list.box->findChild<ZGlide*>();
        // Of one way the pictures at its beginning and at its end.
        QList<QImage> pictures;
        connect(glide, &ZGlide::moved, list.box, [&] {
            const QImage picture = listPicture(list);
            if (pictures.size() < 2)
                pictures.append(picture);
            else if (glide->offset() > 0)
                pictures.last() = picture;
        });
        QTRY_VERIFY_WITH_TIMEOUT(pictures.size() > 1 && glide->offset() < 0, RowPatience);
        const QRect row(ZSkinService::MarkWidth, 0, 230, list.box->rowHeight());
        const QRect begin = inkBounds(pictures.first(), row, listLook().highlight);
        const QRect end = inkBounds(pictures.last(), row, listLook().highlight);
        QVERIFY(!begin.isEmpty() && !end.isEmpty());
        QVERIFY(fromTheRight ? begin.left() > 120 : begin.right() < 120);
        QVERIFY(fromTheRight ? end.right() < 120 : end.left() > 120);
    }

    void nothingMovesWhereNothingShould_data()
    {
        QTest::addColumn<bool>("motion");
        QTest::addColumn<bool>("focus");
        QTest::addColumn<bool>("fits");
        QTest::newRow("without motion") << false << true << false;
        QTest::newRow("without the focus") << true << false << false;
        QTest::newRow("name that fits") << true << true << true;
    }

    void nothingMovesWhereNothingShould()
    {
        QFETCH(bool, motion);
        QFETCH(bool, focus);
        QFETCH(bool, fits);
        ZMotion::setEnabled(motion);
        ListFixture list;
        setFonts(list, 13);
        list.add(fits ? QString("short") : longName(list, 5), -1);
        if (!focus)
            list.main.setFocus();
        takeForActive(list.box->window());
        QCOMPARE(list.box->hasFocus(), focus);
        list.box->setCurrentItem(0);
        const auto* glide = list.box->findChild<ZGlide*>();
        QVERIFY(!glide->isRunning());
    }

    void boxOverTheListEndsTheGlide()
    {
        ZMotion::setEnabled(true);
        ListFixture list;
        setFonts(list, 13);
        list.add(longName(list, 5), -1);
        list.box->setCurrentItem(0);
        takeForActive(list.box->window());
        const auto* glide = list.box->findChild<ZGlide*>();
        QVERIFY(glide->isRunning());
        QWidget box(ZScreen::instance());
        box.hide();
        ZScreen::instance()->place(&box, ZScreen::Layer::Box);
        box.show();
        QVERIFY(!glide->isRunning());
        box.hide();
        QVERIFY(glide->isRunning());
        list.box->clear();
        QVERIFY(!glide->isRunning());
    }
};

QUARN_TEST_MAIN(tst_ZListBoxLook)
#include "tst_zlistboxlook.moc"
