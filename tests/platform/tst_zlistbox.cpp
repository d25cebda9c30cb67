#include "platform/keymap.h"
#include "platform/zlistbox.h"
#include "tests/platform/listfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

#include <string>

class tst_ZListBox : public QObject
{
    Q_OBJECT

private slots:
    void emptyListTakesEverything()
    {
        ListFixture list;
        QSignalSpy highlighted(list.box, &ZListBox::highlighted);
        QSignalSpy selected(list.box, &ZListBox::selected);
        QCOMPARE(list.box->count(), 0);
        QCOMPARE(list.box->currentItem(), -1);
        QCOMPARE(list.box->item(0), nullptr);
        QCOMPARE(list.box->item(-1), nullptr);
        QVERIFY(!list.box->itemChecked(0));
        QVERIFY(!list.box->itemVisible(-1));
        for (const int row : {0, -1, 5})
            list.box->setCurrentItem(row);
        list.box->setBottomItem(3);
        for (const int key : {PhoneKey::Up, PhoneKey::Down, PhoneKey::Return, PhoneKey::Enter})
            pressKey(key);
        list.box->clear();
        QCOMPARE(list.box->currentItem(), -1);
        QCOMPARE(highlighted.count() + selected.count(), 0);
    }

    void rowsAreInsertedWhereAsked()
    {
        ListFixture list;
        list.add("b", -1);
        list.add("c", 100);
        list.add("a", 0);
        list.add("between", 1);
        QCOMPARE(list.names(), QStringList({"a", "between", "b", "c"}));
        QCOMPARE(list.box->count(), 4);
        QCOMPARE(list.box->item(4), nullptr);
        QCOMPARE(list.box->item(-1), nullptr);
    }

    void rowInsertedLaterIsShownToo()
    {
        ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(2);
        QVERIFY(list.box->itemVisible(2));
        list.add("late", -1);
        QCOMPARE(list.box->currentItem(), 2);
        QVERIFY(list.box->itemVisible(3));
        list.box->setCurrentItem(3);
        QCOMPARE(list.box->currentItem(), 3);
    }

    void makingARowCurrentTellsIt()
    {
        ListFixture list;
        list.fill(10);
        QSignalSpy highlighted(list.box, &ZListBox::highlighted);
        list.box->setCurrentItem(4);
        QCOMPARE(list.box->currentItem(), 4);
        QCOMPARE(highlighted.takeFirst().at(0).toInt(), 4);
        list.box->setCurrentItem(4);
        QCOMPARE(highlighted.count(), 0);
        list.box->setCurrentItem(-1);
        QCOMPARE(list.box->currentItem(), 4);
        QCOMPARE(highlighted.count(), 0);
    }

    void rowPastTheEndGivesTheLast()
    {
        ListFixture list;
        list.fill(10);
        QSignalSpy highlighted(list.box, &ZListBox::highlighted);
        list.box->setCurrentItem(1000000);
        QCOMPARE(list.box->currentItem(), 9);
        QCOMPARE(highlighted.takeFirst().at(0).toInt(), 9);
    }

    void rebuildTellsTheSameRowAgain()
    {
        ListFixture list;
        list.fill(5);
        list.box->setCurrentItem(3);
        QSignalSpy highlighted(list.box, &ZListBox::highlighted);
        list.box->clear();
        QCOMPARE(list.box->count(), 0);
        QCOMPARE(list.box->currentItem(), -1);
        QCOMPARE(highlighted.count(), 0);
        list.fill(5);
        list.box->setCurrentItem(3);
        QCOMPARE(highlighted.count(), 1);
        QCOMPARE(highlighted.takeFirst().at(0).toInt(), 3);
    }

    void arrowsMoveWithinTheList_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("start");
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<int>("row");
        const int up = PhoneKey::Up;
        const int down = PhoneKey::Down;
        QTest::newRow("down") << 5 << 0 << QList<int>{down, down} << 2;
        QTest::newRow("up") << 5 << 4 << QList<int>{up} << 3;
        QTest::newRow("up at the first") << 5 << 0 << QList<int>{up, up} << 0;
        QTest::newRow("down at the last") << 5 << 4 << QList<int>{down, down} << 4;
        QTest::newRow("one row") << 1 << 0 << QList<int>{down, up, down} << 0;
        QTest::newRow("out of view") << 100 << 0 << QList<int>(60, down) << 60;
        QTest::newRow("and back") << 100 << 99 << QList<int>(60, up) << 39;
    }

    void arrowsMoveWithinTheList()
    {
        QFETCH(int, count);
        QFETCH(int, start);
        QFETCH(QList<int>, keys);
        QFETCH(int, row);
        ListFixture list;
        list.fill(count);
        list.box->setCurrentItem(start);
        QSignalSpy highlighted(list.box, &ZListBox::highlighted);
        for (const int key : keys)
            pressKey(key);
        QCOMPARE(list.box->currentItem(), row);
        QVERIFY(list.box->itemVisible(row));
        if (row != start)
            QCOMPARE(highlighted.last().at(0).toInt(), row);
        QVERIFY(list.main.keys.isEmpty());
    }

    void heldArrowGoesOn()
    {
        ListFixture list;
        list.fill(10);
        list.box->setCurrentItem(0);
        holdKey(PhoneKey::Down);
        repeatKey(PhoneKey::Down);
        repeatKey(PhoneKey::Down);
        releaseKey(PhoneKey::Down);
        QCOMPARE(list.box->currentItem(), 3);
    }

    void returnSelectsTheCurrentRow()
    {
        ListFixture list;
        list.fill(5);
        list.box->setCurrentItem(2);
        QSignalSpy selected(list.box, &ZListBox::selected);
        pressKey(PhoneKey::Return);
        pressKey(PhoneKey::Enter);
        QCOMPARE(selected.count(), 2);
        QCOMPARE(selected.at(0).at(0).toInt(), 2);
        QCOMPARE(selected.at(1).at(0).toInt(), 2);
        QVERIFY(list.main.keys.isEmpty());
    }

    void heldReturnSelectsOnce()
    {
        ListFixture list;
        list.fill(5);
        list.box->setCurrentItem(2);
        QSignalSpy selected(list.box, &ZListBox::selected);
        holdKey(PhoneKey::Return);
        repeatKey(PhoneKey::Return);
        repeatKey(PhoneKey::Return);
        releaseKey(PhoneKey::Return);
        QCOMPARE(selected.count(), 1);
        QVERIFY(list.main.keys.isEmpty());
    }

    void listMayBeRebuiltBySelecting()
    {
        ListFixture list;
        list.fill(50);
        list.box->setCurrentItem(49);
        connect(list.box, &ZListBox::selected, this, [&list] {
            list.box->clear();
            list.fill(2);
            list.box->setCurrentItem(0);
        });
        pressKey(PhoneKey::Return);
        QCOMPARE(list.box->count(), 2);
        QCOMPARE(list.box->currentItem(), 0);
        QVERIFY(list.box->itemVisible(0));
    }

    void otherKeysAreLeftToTheParent_data()
    {
        QTest::addColumn<int>("key");
        for (const char key : {'0', '1', '9', '*', '#', 'A', 'Z', ' '})
            QTest::newRow(std::string(1, key).c_str()) << int(key);
        QTest::newRow("left") << int(PhoneKey::Left);
        QTest::newRow("right") << int(PhoneKey::Right);
        QTest::newRow("page up") << int(PhoneKey::PageUp);
        QTest::newRow("page down") << int(PhoneKey::PageDown);
        QTest::newRow("modifier") << int(PhoneKey::Modifier);
        QTest::newRow("hide") << int(PhoneKey::Hide);
        QTest::newRow("folder up") << int(PhoneKey::FolderUp);
        QTest::newRow("soft left") << int(PhoneKey::SoftLeft);
        QTest::newRow("soft right") << int(PhoneKey::SoftRight);
        QTest::newRow("music") << int(PhoneKey::Music);
    }

    void otherKeysAreLeftToTheParent()
    {
        QFETCH(int, key);
        ListFixture list;
        for (const char* name : {"0 zero", "abc", "#x", "9"})
            list.add(name, -1);
        list.box->setCurrentItem(1);
        pressKey(key);
        QCOMPARE(list.main.keys, QList<int>{key});
        QCOMPARE(list.main.released, QList<int>{key});
        QCOMPARE(list.box->currentItem(), 1);
    }

    void returnChecksAndUnchecks()
    {
        ListFixture list;
        list.layout = "%I%M170%C";
        list.fill(3);
        list.box->setCurrentItem(1);
        QSignalSpy selected(list.box, &ZListBox::selected);
        pressKey(PhoneKey::Return);
        QVERIFY(list.box->itemChecked(1));
        QVERIFY(!list.box->itemChecked(0));
        QCOMPARE(selected.count(), 1);
        pressKey(PhoneKey::Return);
        QVERIFY(!list.box->itemChecked(1));
        QCOMPARE(selected.count(), 2);
        QVERIFY(!list.box->itemChecked(3));
        QVERIFY(!list.box->itemChecked(-1));
    }

    void checkIsKnownWhenTheSelectionIsTold()
    {
        ListFixture list;
        list.layout = "%I%M170%C";
        list.fill(3);
        list.box->setCurrentItem(1);
        bool seen = false;
        connect(list.box, &ZListBox::selected, this,
                [&](int row) { seen = list.box->itemChecked(row); });
        pressKey(PhoneKey::Return);
        QVERIFY(seen);
    }

    void disabledRowIsHighlightedButNotChecked()
    {
        ListFixture list;
        list.layout = "%I%M170%C";
        list.fill(3);
        list.box->item(1)->setEnabled(false);
        list.box->setCurrentItem(0);
        pressKey(PhoneKey::Down);
        QCOMPARE(list.box->currentItem(), 1);
        pressKey(PhoneKey::Return);
        QVERIFY(!list.box->itemChecked(1));
    }

    void rebuildForgetsChecks()
    {
        ListFixture list;
        list.layout = "%I%M170%C";
        list.fill(3);
        list.box->item(1)->setChecked(true);
        list.box->clear();
        list.fill(3);
        QVERIFY(!list.box->itemChecked(1));
    }
};

QUARN_TEST_MAIN(tst_ZListBox)
#include "tst_zlistbox.moc"
