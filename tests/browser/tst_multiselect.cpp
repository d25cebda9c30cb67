#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "platform/zskinservice.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

namespace
{

void relist(const PanelFixture& panel)
{
    panel->setDir(panel->curPath, panel->curIndex);
}

/// A folder, two files and a dangling link, listed in multi-selection mode.
void listSome(const PanelFixture& panel)
{
    panel.files().write(QStringLiteral("folder/in"));
    panel.files().write(QStringLiteral("one"));
    panel.files().write(QStringLiteral("two"));
    panel.files().makeLink(QStringLiteral("zz"), QStringLiteral("nowhere"));
    panel->switchMultiSelect();
    panel->setDir(panel.files().path(), 0);
}

void check(const PanelFixture& panel, const QString& name)
{
    panel->setCurrentItem(panel.row(name));
    pressKey(PhoneKey::Return);
}

/// Whether a row is painted with a check box: its frame's colour near the right edge.
bool hasCheckBox(const PanelFixture& panel, int row)
{
    const QImage picture = panel->grab().toImage();
    const QRgb frame = ZSkinService::look(ZSkinService::clsListBox).border.rgb();
    const int top = (row - panel->topItem()) * panel->rowHeight();
    for (int y = top; y < top + panel->rowHeight(); ++y) {
        for (int x = picture.width() - 30; x < picture.width(); ++x) {
            if (picture.pixel(x, y) == frame)
                return true;
        }
    }
    return false;
}

} // namespace

class tst_MultiSelect : public QObject
{
    Q_OBJECT

private slots:
    void modeIsSwitchedOnAndOff();
    void rowsHaveCheckBoxesOfTheModesLayout_data();
    void rowsHaveCheckBoxesOfTheModesLayout();
    void layoutFollowsFullInformation_data();
    void layoutFollowsFullInformation();
    void switchingLeavesTheRowsUntilTheNextListing();
    void backEntryCannotBeChecked();
    void backEntryIsEnabledWithoutTheMode();

    void selectChecksAndUnchecksAndTellsNothing();
    void goUpStillWorks();
    void nothingCheckedGivesNoPaths();
    void checkedPathsComeInRowOrder();
    void allRowsCanBeChecked();
    void pathsAtTheRootHaveTwoSlashes();
    void checksGoWithTheNextListing();
    void checksGoWhenTheModeIsLeft();
    void oddNamesCanBeChecked();
    void vanishedEntriesStayChecked();
};

void tst_MultiSelect::modeIsSwitchedOnAndOff()
{
    const PanelFixture panel;
    QVERIFY(!panel->isMultiSelect());
    panel->switchMultiSelect();
    QVERIFY(panel->isMultiSelect());
    panel->switchMultiSelect();
    QVERIFY(!panel->isMultiSelect());
}

void tst_MultiSelect::rowsHaveCheckBoxesOfTheModesLayout_data()
{
    QTest::addColumn<bool>("fullInfo");
    QTest::addColumn<int>("textWidth");
    QTest::newRow("compact") << false << 186;
    QTest::newRow("full information") << true << 170;
}

void tst_MultiSelect::rowsHaveCheckBoxesOfTheModesLayout()
{
    QFETCH(bool, fullInfo);
    const PanelFixture panel(fullInfo);
    listSome(panel);
    for (int row = 1; row < panel->count(); ++row) {
        QVERIFY(panel->item(row)->layout().icon);
        QVERIFY(panel->item(row)->layout().text);
        QVERIFY(panel->item(row)->layout().checkBox);
        QTEST(panel->item(row)->layout().textWidth, "textWidth");
        QVERIFY(hasCheckBox(panel, row));
    }
    QVERIFY(!panel->item(0)->layout().checkBox);
    QCOMPARE(panel->item(0)->layout().textWidth, 0);
    QVERIFY(!hasCheckBox(panel, 0));
}

void tst_MultiSelect::layoutFollowsFullInformation_data()
{
    QTest::addColumn<bool>("fullInfo");
    QTest::addColumn<int>("textWidth");
    QTest::newRow("to full") << false << 170;
    QTest::newRow("to compact") << true << 186;
}

void tst_MultiSelect::layoutFollowsFullInformation()
{
    QFETCH(bool, fullInfo);
    const PanelFixture panel(fullInfo);
    listSome(panel);
    panel->setFullInf();
    relist(panel);
    QTEST(panel->item(1)->layout().textWidth, "textWidth");
    QVERIFY(panel->item(1)->layout().checkBox);
    panel->switchMultiSelect();
    panel->setFullInf();
    relist(panel);
    QCOMPARE(panel->item(1)->layout().textWidth, 0);
    QVERIFY(!panel->item(1)->layout().checkBox);
}

void tst_MultiSelect::switchingLeavesTheRowsUntilTheNextListing()
{
    const PanelFixture panel;
    listSome(panel);
    check(panel, QStringLiteral("one"));
    panel->switchMultiSelect();
    QCOMPARE(panel->getChkFileList(), QStringList(panel.files().path(QStringLiteral("one"))));
    QVERIFY(hasCheckBox(panel, 1));
    relist(panel);
    QVERIFY(!hasCheckBox(panel, 1));
}

void tst_MultiSelect::backEntryCannotBeChecked()
{
    const PanelFixture panel;
    listSome(panel);
    QVERIFY(!panel->item(0)->isEnabled());
    const PanelSignals told(panel);
    pressKey(PhoneKey::Return);
    QVERIFY(!panel->itemChecked(0));
    QCOMPARE(panel->getChkFileList(), QStringList());
    QCOMPARE(told.all(), QStringList());
    QCOMPARE(panel->curPath, panel.files().path());
}

void tst_MultiSelect::backEntryIsEnabledWithoutTheMode()
{
    const PanelFixture panel;
    listSome(panel);
    panel->switchMultiSelect();
    relist(panel);
    QVERIFY(panel->item(0)->isEnabled());
}

void tst_MultiSelect::selectChecksAndUnchecksAndTellsNothing()
{
    const PanelFixture panel;
    listSome(panel);
    const PanelSignals told(panel);
    for (const char* name : {"folder", "one", "zz"}) {
        const QString path = panel.files().path(QLatin1String(name));
        check(panel, QLatin1String(name));
        QCOMPARE(panel->getChkFileList(), QStringList(path));
        QCOMPARE(panel->curFile, path);
        pressKey(PhoneKey::Return);
        QCOMPARE(panel->getChkFileList(), QStringList());
    }
    QCOMPARE(told.all(), QStringList());
    QCOMPARE(panel->curPath, panel.files().path());
}

void tst_MultiSelect::goUpStillWorks()
{
    const PanelFixture panel;
    listSome(panel);
    panel->setDir(panel.files().path(QStringLiteral("folder")), 0);
    const PanelSignals told(panel);
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, panel.files().path());
    QCOMPARE(told.all().value(0), QStringLiteral("isFilePicked(false)"));
    QVERIFY(panel->isMultiSelect());
    QVERIFY(panel->item(1)->layout().checkBox);
    QVERIFY(!panel->item(0)->isEnabled());
}

void tst_MultiSelect::nothingCheckedGivesNoPaths()
{
    const PanelFixture panel;
    QCOMPARE(panel->getChkFileList(), QStringList());
    listSome(panel);
    QCOMPARE(panel->getChkFileList(), QStringList());
    panel->switchMultiSelect();
    relist(panel);
    QCOMPARE(panel->getChkFileList(), QStringList());
}

void tst_MultiSelect::checkedPathsComeInRowOrder()
{
    const PanelFixture panel;
    listSome(panel);
    for (const char* name : {"two", "folder", "one"})
        check(panel, QLatin1String(name));
    QCOMPARE(panel->getChkFileList(), QStringList({panel.files().path(QStringLiteral("folder")),
                                                   panel.files().path(QStringLiteral("one")),
                                                   panel.files().path(QStringLiteral("two"))}));
}

void tst_MultiSelect::allRowsCanBeChecked()
{
    const PanelFixture panel;
    for (int i = 0; i < 200; ++i)
        panel.files().write(QString::number(1000 + i));
    panel->switchMultiSelect();
    panel->setDir(panel.files().path(), 0);
    for (int row = 0; row < panel->count(); ++row) {
        pressKey(PhoneKey::Return);
        pressKey(PhoneKey::Down);
    }
    QStringList expected;
    for (int i = 0; i < 200; ++i)
        expected.append(panel.files().path(QString::number(1000 + i)));
    QCOMPARE(panel->getChkFileList(), expected);
}

void tst_MultiSelect::pathsAtTheRootHaveTwoSlashes()
{
    const PanelFixture panel;
    panel->switchMultiSelect();
    panel->setDir(QStringLiteral("/"), 0);
    check(panel, QStringLiteral("tmp"));
    QCOMPARE(panel->getChkFileList(), QStringList(QStringLiteral("//tmp")));
}

void tst_MultiSelect::checksGoWithTheNextListing()
{
    const PanelFixture panel;
    listSome(panel);
    check(panel, QStringLiteral("one"));
    relist(panel);
    QCOMPARE(panel->getChkFileList(), QStringList());
    QVERIFY(panel->isMultiSelect());
    QCOMPARE(panel->curFile, panel.files().path(QStringLiteral("one")));
}

void tst_MultiSelect::checksGoWhenTheModeIsLeft()
{
    const PanelFixture panel;
    listSome(panel);
    check(panel, QStringLiteral("one"));
    panel->switchMultiSelect();
    relist(panel);
    panel->switchMultiSelect();
    relist(panel);
    QCOMPARE(panel->getChkFileList(), QStringList());
}

void tst_MultiSelect::oddNamesCanBeChecked()
{
    const PanelFixture panel;
    const QStringList odd = {QStringLiteral("\x01\x7f"), QStringLiteral("%1%2"),
                             QStringLiteral("it's \"x\""), QString(255, QLatin1Char('n')),
                             QStringLiteral("two\nlines")};
    QStringList expected;
    for (const QString& name : odd) {
        panel.files().write(name);
        expected.append(panel.files().path(name));
    }
    panel->switchMultiSelect();
    panel->setDir(panel.files().path(), 0);
    for (const QString& name : odd)
        check(panel, name);
    QCOMPARE(panel->getChkFileList(), expected);
}

void tst_MultiSelect::vanishedEntriesStayChecked()
{
    const PanelFixture panel;
    listSome(panel);
    check(panel, QStringLiteral("one"));
    QVERIFY(QFile::remove(panel.files().path(QStringLiteral("one"))));
    QCOMPARE(panel->getChkFileList(), QStringList(panel.files().path(QStringLiteral("one"))));
    relist(panel);
    QCOMPARE(panel->getChkFileList(), QStringList());
}

QUARN_TEST_MAIN(tst_MultiSelect)
#include "tst_multiselect.moc"
