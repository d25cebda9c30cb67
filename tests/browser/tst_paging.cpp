#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <algorithm>

namespace
{

/// The page as a user counts it: the rows in view but for the list's last row, less one.
int page(const PanelFixture& panel)
{
    int visible = 0;
    for (int row = 0; row <= panel->count() - 2; ++row)
        visible += panel->itemVisible(row) ? 1 : 0;
    return visible - 1;
}

} // namespace

class tst_Paging : public QObject
{
    Q_OBJECT

private slots:
    void pageDownMovesByAPage_data();
    void pageDownMovesByAPage();
    void pageUpMovesByAPage_data();
    void pageUpMovesByAPage();
    void pagingThroughAListAndBackSeesEveryRow();
    void pagingInListsShorterThanAPage_data();
    void pagingInListsShorterThanAPage();
    void arrowsStopAtTheEnds();
};

void tst_Paging::pageDownMovesByAPage_data()
{
    QTest::addColumn<bool>("fullInfo");
    QTest::newRow("compact") << false;
    QTest::newRow("full information") << true;
}

void tst_Paging::pageDownMovesByAPage()
{
    QFETCH(bool, fullInfo);
    const PanelFixture panel(fullInfo);
    panel.makeFiles(60);
    panel->setDir(panel.files().path(), 0);
    QVERIFY(page(panel) > 2);
    int presses = 0;
    while (panel->currentItem() < panel->count() - 1 && ++presses < 60) {
        const int before = panel->currentItem();
        const int length = page(panel);
        pressKey(PhoneKey::PageDown);
        const bool within = before < panel->count() - length - 1;
        QCOMPARE(panel->currentItem(), within ? before + length : panel->count() - 1);
        QVERIFY(panel->itemVisible(panel->currentItem()));
        // The row moved to is the lowest in view.
        if (within)
            QVERIFY(!panel->itemVisible(panel->currentItem() + 1));
        QVERIFY(panel.fieldsFollow());
    }
    QVERIFY(presses > 3);
}

void tst_Paging::pageUpMovesByAPage_data()
{
    pageDownMovesByAPage_data();
}

void tst_Paging::pageUpMovesByAPage()
{
    QFETCH(bool, fullInfo);
    const PanelFixture panel(fullInfo);
    panel.makeFiles(60);
    panel->setDir(panel.files().path(), 60);
    int presses = 0;
    while (panel->currentItem() > 0 && ++presses < 60) {
        const int before = panel->currentItem();
        const int length = page(panel);
        pressKey(PhoneKey::PageUp);
        QCOMPARE(panel->currentItem(), before > length - 1 ? before - length : 0);
        QVERIFY(panel->itemVisible(panel->currentItem()));
        QVERIFY(panel.fieldsFollow());
    }
    QVERIFY(presses > 3);
}

void tst_Paging::pagingThroughAListAndBackSeesEveryRow()
{
    const PanelFixture panel;
    panel.makeFiles(45);
    panel->setDir(panel.files().path(), 0);
    for (const int key : {PhoneKey::PageDown, PhoneKey::PageUp}) {
        QList<bool> seen(panel->count(), false);
        for (int press = 0; press < 45; ++press) {
            for (int row = 0; row < panel->count(); ++row)
                seen[row] = seen[row] || panel->itemVisible(row);
            pressKey(key);
        }
        QCOMPARE(seen.count(false), 0);
        QCOMPARE(panel->currentItem(), key == PhoneKey::PageDown ? 45 : 0);
    }
}

void tst_Paging::pagingInListsShorterThanAPage_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<int>("row");
    for (const int files : {0, 1, 2, 5}) {
        for (int row = 0; row <= files; ++row)
            QTest::addRow("%d files, row %d", files, row) << files << row;
    }
}

void tst_Paging::pagingInListsShorterThanAPage()
{
    QFETCH(int, files);
    QFETCH(int, row);
    const PanelFixture panel;
    panel.makeFiles(files);
    for (const int key : {PhoneKey::PageUp, PhoneKey::PageDown}) {
        panel->setDir(panel.files().path(), row);
        const int length = page(panel);
        const int last = files;
        int expected = row > length - 1 ? std::min(row - length, last) : 0;
        if (key == PhoneKey::PageDown)
            expected = row < panel->count() - length - 1 ? row + length : last;
        // A list of one row has a page of less than none: it stays where it is.
        expected = std::max(expected, 0);
        pressKey(key);
        QCOMPARE(panel->currentItem(), expected);
        QVERIFY(panel.fieldsFollow());
    }
}

void tst_Paging::arrowsStopAtTheEnds()
{
    const PanelFixture panel;
    panel.makeFiles(2);
    panel->setDir(panel.files().path(), 0);
    pressKey(PhoneKey::Up);
    QCOMPARE(panel->currentItem(), 0);
    for (int press = 0; press < 5; ++press)
        pressKey(PhoneKey::Down);
    QCOMPARE(panel->currentItem(), 2);
}

QUARN_TEST_MAIN(tst_Paging)
#include "tst_paging.moc"
