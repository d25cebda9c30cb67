#include "platform/zlistbox.h"
#include "tests/platform/listfixture.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>
#include <QWheelEvent>
#include <QWindow>

namespace
{

void tap(QPoint point)
{
    QTest::mouseClick(screenWindow(), Qt::LeftButton, Qt::NoModifier, point);
}

void drag(QPoint from, QPoint to)
{
    QTest::mousePress(screenWindow(), Qt::LeftButton, Qt::NoModifier, from);
    for (int step = 1; step <= 10; ++step)
        QTest::mouseMove(screenWindow(), from + (to - from) * step / 10);
    QTest::mouseRelease(screenWindow(), Qt::LeftButton, Qt::NoModifier, to);
}

QImage pictureOf(const ListFixture& list)
{
    return list.box->grab().toImage();
}

const ZSkinService::Look& look()
{
    return ZSkinService::look(ZSkinService::clsListBox);
}

/// How many pixels of a region have a colour.
int count(const QImage& picture, const QRect& region, QColor colour)
{
    int found = 0;
    for (int y = region.top(); y <= region.bottom(); ++y) {
        for (int x = region.left(); x <= region.right(); ++x)
            found += picture.pixelColor(x, y) == colour ? 1 : 0;
    }
    return found;
}

} // namespace

/// What is in view, what it looks like and what fingers do to it.
class tst_ZListBoxView : public QObject
{
    Q_OBJECT

private slots:
    void onlyWholeRowsAreShown_data()
    {
        QTest::addColumn<int>("height");
        for (const int height : {40, 99, 100, 101, 250, 277, 300})
            QTest::addRow("%d", height) << height;
    }

    void onlyWholeRowsAreShown()
    {
        QFETCH(int, height);
        ListFixture list(height);
        list.fill(100);
        list.box->setCurrentItem(0);
        const int whole = height / list.box->rowHeight();
        QCOMPARE(list.box->visibleItems(), whole);
        QVERIFY(list.box->itemVisible(whole - 1));
        QVERIFY(!list.box->itemVisible(whole));
        list.box->setCurrentItem(whole);
        QCOMPARE(list.box->topItem(), 1);
        const QImage picture = pictureOf(list);
        const int bottom = whole * list.box->rowHeight();
        QCOMPARE(picture.pixelColor(30, bottom - 1), look().highlight);
        if (bottom < height)
            QCOMPARE(picture.pixelColor(30, bottom), look().background);
    }

    void shortListIsAllInView()
    {
        ListFixture list;
        list.fill(3);
        QCOMPARE(list.box->visibleItems(), 3);
        QCOMPARE(list.box->topItem(), 0);
        QVERIFY(list.box->itemVisible(2));
        QVERIFY(!list.box->itemVisible(3));
        QVERIFY(!list.box->itemVisible(-1));
    }

    void bottomRowIsTheLowestInView_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("bottom");
        QTest::newRow("somewhere") << 50 << 50;
        QTest::newRow("last") << 99 << 99;
        QTest::newRow("past the end") << 1000 << 99;
        QTest::newRow("too early") << 2 << -1;
        QTest::newRow("negative") << -7 << -1;
    }

    void bottomRowIsTheLowestInView()
    {
        QFETCH(int, row);
        QFETCH(int, bottom);
        ListFixture list;
        list.fill(100);
        list.box->setCurrentItem(40);
        list.box->setBottomItem(row);
        const int shown = list.box->visibleItems();
        QCOMPARE(list.box->topItem(), bottom < 0 ? 0 : bottom - shown + 1);
        QCOMPARE(list.box->currentItem(), 40);
    }

    void rebuiltListBeginsAtTheTop()
    {
        ListFixture list;
        list.fill(100);
        list.box->setCurrentItem(99);
        list.box->clear();
        list.fill(100);
        list.box->setCurrentItem(0);
        QCOMPARE(list.box->topItem(), 0);
    }

    void currentRowStaysInViewWhenTheRoomShrinks()
    {
        ListFixture list;
        list.fill(100);
        const int last = list.box->visibleItems() - 1;
        list.box->setCurrentItem(last);
        list.box->resize(240, 100);
        QTRY_VERIFY(list.box->itemVisible(last));
    }

    void fontsAreListWideByState()
    {
        ListFixture list;
        list.fill(3);
        const int before = list.box->rowHeight();
        list.box->setItemFont(1, ZSkinService::font("any", 40), false);
        QCOMPARE(list.box->rowHeight(), before);
        list.box->setItemFont(2, ZSkinService::font("any", 40), false);
        const int normal = list.box->rowHeight();
        QVERIFY(normal >= 40);
        list.box->setItemFont(2, ZSkinService::font("any", 60), true);
        QVERIFY(list.box->rowHeight() > normal);
        list.box->setItemFont(2, ZSkinService::font("any", 15), true);
        QCOMPARE(list.box->rowHeight(), normal);
    }

    void changedFontIsPainted()
    {
        ListFixture list;
        list.add("WWWWWWWW", -1);
        list.add("WWWWWWWW", -1);
        list.box->setItemFont(2, ZSkinService::font("any", 15, 50), false);
        list.box->setCurrentItem(0);
        const QImage before = pictureOf(list);
        list.box->setItemFont(2, ZSkinService::font("any", 15, 50, true), false);
        QTRY_VERIFY(pictureOf(list) != before);
        const QRect first(0, 0, 240, list.box->rowHeight());
        QCOMPARE(pictureOf(list).copy(first), before.copy(first));
    }

    void detailLineMakesRowsHigher()
    {
        ListFixture list;
        list.add("name", -1);
        const int plain = list.box->rowHeight();
        list.add("name", -1, "1 Kb\t\t\t01/03/2008");
        QVERIFY(list.box->rowHeight() > plain);
        list.box->clear();
        list.add("name", -1);
        QTRY_COMPARE(list.box->rowHeight(), plain);
    }

    void detailIsBelowTheNameWithItsDateAtTheRight()
    {
        ListFixture list;
        list.add(" ", -1, "i\t\t\ti");
        list.add(" ", -1);
        list.box->setCurrentItem(1);
        const QImage picture = pictureOf(list);
        const int height = list.box->rowHeight();
        const auto ink = [&](const QRect& area) {
            return area.width() * area.height() - count(picture, area, look().background);
        };
        QCOMPARE(ink({0, 0, 240, height / 2}), 0);
        QVERIFY(ink({0, height / 2, 40, height / 2 - 1}) > 0);
        // Below it is the hairline to the next row.
        QCOMPARE(ink({40, height / 2, 150, height / 2 - 1}), 0);
        QVERIFY(ink({190, height / 2, 50, height / 2 - 1}) > 0);
    }

    void iconIsDrawnAndMayChange()
    {
        ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(0);
        for (int row = 0; row < 3; ++row)
            list.box->item(row)->setPixmap(0, coloured(Qt::blue));
        const QRect second(0, list.box->rowHeight(), 40, list.box->rowHeight());
        QCOMPARE(count(pictureOf(list), second, Qt::blue), 16 * 16);
        list.box->item(1)->setPixmap(0, coloured(Qt::green));
        QCOMPARE(count(pictureOf(list), second, Qt::blue), 0);
        QCOMPARE(count(pictureOf(list), second, Qt::green), 16 * 16);
    }

    void largeIconMakesRowsHigher()
    {
        ListFixture list;
        list.fill(50);
        list.box->setCurrentItem(0);
        list.box->item(0)->setPixmap(0, coloured(Qt::blue, {32, 48}));
        QVERIFY(list.box->rowHeight() >= 48);
        QCOMPARE(list.box->visibleItems(), 250 / list.box->rowHeight());
        QVERIFY(pictureOf(list).pixelColor(10, 10) == QColor(Qt::blue));
    }

    void disabledRowIsGrey()
    {
        ListFixture list;
        list.add("WWWWWWWW", -1);
        list.add("WWWWWWWW", -1);
        list.box->setCurrentItem(0);
        const QRect second(0, list.box->rowHeight(), 240, list.box->rowHeight());
        QVERIFY(count(pictureOf(list), second, look().text) > 0);
        list.box->item(1)->setEnabled(false);
        QCOMPARE(count(pictureOf(list), second, look().text), 0);
        QVERIFY(count(pictureOf(list), second, look().disabledText) > 0);
    }

    void textKeepsToItsWidthAndTheBoxIsAtTheRight()
    {
        ListFixture list;
        list.layout = "%M100%C";
        list.add(QString(200, 'W'), -1);
        list.add(QString(200, 'W'), -1);
        list.box->setCurrentItem(1);
        const int height = list.box->rowHeight();
        const QImage unchecked = pictureOf(list);
        QVERIFY(count(unchecked, {0, 0, 100, height}, look().text) > 0);
        const QRect gap(104, 0, 100, height - 1);
        QCOMPARE(count(unchecked, gap, look().background), 100 * (height - 1));
        list.box->item(0)->setChecked(true);
        const QImage checked = pictureOf(list);
        QVERIFY(checked.copy(210, 0, 30, height) != unchecked.copy(210, 0, 30, height));
        QCOMPARE(checked.copy(0, 0, 210, height), unchecked.copy(0, 0, 210, height));
    }

    void lineBreakInANameKeepsTheRowWhole_data()
    {
        QTest::addColumn<int>("character");
        for (const int character : {0x0a, 0x0b, 0x0d, 0x85, 0x2028, 0x2029})
            QTest::addRow("%x", unsigned(character)) << character;
    }

    void lineBreakInANameKeepsTheRowWhole()
    {
        QFETCH(int, character);
        const auto inkRight = [](const QString& name) {
            ListFixture list;
            list.add(name, -1);
            list.add("", -1);
            list.box->setCurrentItem(1);
            const QRect area(70, 0, 60, list.box->rowHeight() - 1);
            return area.width() * area.height() - count(pictureOf(list), area, look().background);
        };
        QVERIFY(inkRight(QString("xxxxxxxxxxxx") + QChar(character) + "xxxxxxxx") > 0);
        QCOMPARE(inkRight("xx"), 0);
    }

    void scrollMarkIsThereOnlyWhenNeeded()
    {
        ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(0);
        const QRect track(236, 30, 4, 220);
        QCOMPARE(count(pictureOf(list), track, look().thumb), 0);
        list.fill(300);
        list.box->setCurrentItem(290);
        QVERIFY(count(pictureOf(list), track, look().thumb) > 0);
    }

    void tapMakesARowCurrentAndTheNextSelectsIt()
    {
        ListFixture list;
        list.fill(100);
        list.box->setCurrentItem(0);
        QSignalSpy selected(list.box, &ZListBox::selected);
        tap(list.rowPoint(3));
        QCOMPARE(list.box->currentItem(), 3);
        QCOMPARE(selected.count(), 0);
        tap(list.rowPoint(3));
        QCOMPARE(selected.count(), 1);
        QCOMPARE(selected.at(0).at(0).toInt(), 3);
    }

    void tapHitsTheRowThatIsSeen()
    {
        ListFixture list;
        list.fill(100);
        list.box->setCurrentItem(99);
        tap(list.rowPoint(0));
        QCOMPARE(list.box->currentItem(), 100 - list.box->visibleItems());
    }

    void tapOnARowWithACheckBoxChecksIt()
    {
        ListFixture list;
        list.layout = "%I%M170%C";
        list.fill(10);
        list.box->setCurrentItem(0);
        tap(list.rowPoint(3));
        QCOMPARE(list.box->currentItem(), 3);
        QVERIFY(list.box->itemChecked(3));
        tap(list.rowPoint(3));
        QVERIFY(!list.box->itemChecked(3));
    }

    void tapBelowTheRowsDoesNothing()
    {
        ListFixture list;
        list.fill(2);
        list.box->setCurrentItem(0);
        QSignalSpy selected(list.box, &ZListBox::selected);
        tap(list.rowPoint(4));
        tap({60, 249});
        QCOMPARE(list.box->currentItem(), 0);
        QCOMPARE(selected.count(), 0);
        list.box->clear();
        tap(list.rowPoint(0));
        QCOMPARE(list.box->currentItem(), -1);
    }

    void tapMayRebuildTheList()
    {
        ListFixture list;
        list.fill(50);
        list.box->setCurrentItem(2);
        connect(list.box, &ZListBox::selected, this, [&list] {
            list.box->clear();
            list.fill(1);
            list.box->setCurrentItem(0);
        });
        tap(list.rowPoint(2));
        QCOMPARE(list.box->count(), 1);
        QCOMPARE(list.box->currentItem(), 0);
    }

    void dragScrollsAndSelectsNothing()
    {
        ListFixture list;
        list.fill(100);
        list.box->setCurrentItem(3);
        QSignalSpy selected(list.box, &ZListBox::selected);
        const int height = list.box->rowHeight();
        drag(list.rowPoint(8), list.rowPoint(8) - QPoint(0, 5 * height));
        QCOMPARE(list.box->topItem(), 5);
        drag(list.rowPoint(2), list.rowPoint(2) + QPoint(0, 2 * height));
        QCOMPARE(list.box->topItem(), 3);
        QCOMPARE(list.box->currentItem(), 3);
        QCOMPARE(selected.count(), 0);
    }

    void dragEndsAtTheEnds()
    {
        ListFixture list;
        list.fill(30);
        list.box->setCurrentItem(0);
        drag({60, 20}, {60, 200});
        QCOMPARE(list.box->topItem(), 0);
        for (int i = 0; i < 5; ++i)
            drag({60, 200}, {60, 5});
        QCOMPARE(list.box->topItem(), 30 - list.box->visibleItems());
    }

    void wheelScrolls()
    {
        ListFixture list;
        list.fill(100);
        list.box->setCurrentItem(0);
        const auto turn = [&list](int angle) {
            QWheelEvent event(QPointF(50, 50), QPointF(50, 50), {}, {0, angle}, Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(list.box->viewport(), &event);
        };
        turn(-120);
        const int after = list.box->topItem();
        QVERIFY(after > 0 && after < 10);
        QCOMPARE(list.box->currentItem(), 0);
        turn(120);
        QCOMPARE(list.box->topItem(), 0);
    }
};

QUARN_TEST_MAIN(tst_ZListBoxView)
#include "tst_zlistboxview.moc"
