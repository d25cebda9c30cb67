#include "platform/zbubble.h"
#include "tests/platform/listfixture.h"
#include "tests/support/keys.h"
#include "tests/support/listeners.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

/// Its rows as programs that read the screen know them.
class tst_ZAccessibleList : public QObject
{
    Q_OBJECT

private slots:
    void rowsAreListItemsInOrder()
    {
        const ListFixture list;
        list.fill(3);
        QAccessibleInterface* box = spoken(list.box);
        QCOMPARE(box->role(), QAccessible::List);
        QCOMPARE(box->childCount(), 3);
        QCOMPARE(childNames(*box), (QStringList{"0", "1", "2"}));
        for (int row = 0; row < 3; ++row) {
            QCOMPARE(box->child(row)->role(), QAccessible::ListItem);
            QCOMPARE(box->child(row)->parent(), box);
            QCOMPARE(box->indexOfChild(box->child(row)), row);
            QCOMPARE(box->child(row), box->child(row));
        }
        QVERIFY(box->child(3) == nullptr);
        QVERIFY(box->child(-1) == nullptr);
    }

    void detailIsTheDescription()
    {
        const ListFixture list;
        list.add("a.txt", -1, "12 b\t\t01.02.2008");
        const QAccessibleInterface* row = spoken(list.box)->child(0);
        QCOMPARE(row->text(QAccessible::Name), QString("a.txt"));
        QCOMPARE(row->text(QAccessible::Description), QString("12 b 01.02.2008"));
    }

    void bytesThatAreNoTextAreMarks()
    {
        const ListFixture list;
        list.add(QString("a") + QChar(0xdcff), -1);
        QCOMPARE(spoken(list.box)->child(0)->text(QAccessible::Name),
                 QString("a") + QChar(QChar::ReplacementCharacter));
    }

    void currentRowIsSelectedAndHasTheFocus()
    {
        const ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(1);
        takeForActive(list.main.window());
        QTRY_VERIFY(list.box->hasFocus());
        QAccessibleInterface* box = spoken(list.box);
        for (int row = 0; row < 3; ++row) {
            const QAccessible::State state = box->child(row)->state();
            QCOMPARE(bool(state.selected), row == 1);
            QCOMPARE(bool(state.focused), row == 1);
            QVERIFY(state.selectable);
            QVERIFY(!state.checkable);
            QVERIFY(!state.disabled);
            QVERIFY(!state.invisible);
        }
        QCOMPARE(box->focusChild(), box->child(1));
    }

    void checkBoxAndDisabledAreStates()
    {
        ListFixture list;
        list.layout = "%I%M%C";
        list.fill(2);
        list.box->item(1)->setChecked(true);
        list.box->item(0)->setEnabled(false);
        const QAccessibleInterface* box = spoken(list.box);
        QVERIFY(box->child(0)->state().checkable);
        QVERIFY(!box->child(0)->state().checked);
        QVERIFY(box->child(0)->state().disabled);
        QVERIFY(box->child(1)->state().checked);
        QVERIFY(!box->child(1)->state().disabled);
    }

    void rowsOutOfViewAreOffscreen()
    {
        const ListFixture list;
        list.fill(100);
        const QAccessibleInterface* box = spoken(list.box);
        QVERIFY(!box->child(0)->state().offscreen);
        QVERIFY(box->child(99)->state().offscreen);
        list.box->setCurrentItem(99);
        QVERIFY(box->child(0)->state().offscreen);
        QVERIFY(!box->child(99)->state().offscreen);
    }

    void rowIsWhereItIsSeen()
    {
        const ListFixture list;
        list.fill(100);
        list.box->setCurrentItem(50);
        QAccessibleInterface* box = spoken(list.box);
        const QPoint middle = list.box->mapToGlobal(list.rowPoint(2));
        QAccessibleInterface* row = box->child(list.box->topItem() + 2);
        QVERIFY(row->rect().contains(middle));
        QCOMPARE(row->rect().size(), QSize(240, list.box->rowHeight()));
        QCOMPARE(box->childAt(middle.x(), middle.y()), row);
        QVERIFY(box->childAt(-1000, 0) == nullptr);
    }

    void pressOpensARow()
    {
        const ListFixture list;
        list.fill(3);
        const QSignalSpy selected(list.box, &ZListBox::selected);
        QVERIFY(act(spoken(list.box)->child(2), QAccessibleActionInterface::pressAction()));
        // Whoever asks does not wait for what comes of it.
        QCOMPARE(selected.count(), 0);
        QTRY_COMPARE(selected.count(), 1);
        QCOMPARE(selected.at(0).at(0).toInt(), 2);
        QCOMPARE(list.box->currentItem(), 2);
    }

    void toggleChecksARow()
    {
        ListFixture list;
        list.layout = "%I%M%C";
        list.fill(2);
        QAccessibleInterface* row = spoken(list.box)->child(1);
        QVERIFY(!act(row, QAccessibleActionInterface::pressAction()));
        QVERIFY(act(row, QAccessibleActionInterface::toggleAction()));
        QTRY_VERIFY(list.box->itemChecked(1));
        QVERIFY(row->state().checked);
    }

    void rowCanBeMadeCurrent()
    {
        const ListFixture list;
        list.fill(3);
        const QSignalSpy selected(list.box, &ZListBox::selected);
        QVERIFY(act(spoken(list.box)->child(1), QAccessibleActionInterface::setFocusAction()));
        QTRY_COMPARE(list.box->currentItem(), 1);
        QCOMPARE(selected.count(), 0);
    }

    void nothingCanBeDoneBelowABox()
    {
        const ListFixture list;
        list.fill(1);
        QAccessibleInterface* row = spoken(list.box)->child(0);
        const QScopedPointer<QWidget> above(new QWidget(ZScreen::instance()));
        above->hide();
        ZScreen::instance()->place(above.data(), ZScreen::Layer::Box);
        above->show();
        QVERIFY(!act(row, QAccessibleActionInterface::pressAction()));
        above->hide();
        QVERIFY(act(row, QAccessibleActionInterface::pressAction()));
    }

    void actionOnARowThatIsGoneDoesNothing()
    {
        const ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(0);
        const QSignalSpy selected(list.box, &ZListBox::selected);
        QVERIFY(act(spoken(list.box)->child(2), QAccessibleActionInterface::pressAction()));
        list.box->clear();
        list.fill(3);
        list.box->setCurrentItem(0);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QCOMPARE(selected.count(), 0);
        QCOMPARE(list.box->currentItem(), 0);
    }

    void rowsOfAListThatIsFilledAnewAreOthers()
    {
        const ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(0);
        QAccessibleInterface* box = spoken(list.box);
        const QAccessible::Id before = QAccessible::uniqueId(box->child(1));
        list.box->clear();
        QVERIFY(!QAccessible::accessibleInterface(before)->isValid());
        QVERIFY(QAccessible::accessibleInterface(before)->state().invalid);
        list.add("other", -1);
        list.add("second", -1);
        list.box->setCurrentItem(0);
        QVERIFY(QAccessible::uniqueId(box->child(1)) != before);
        QCOMPARE(box->child(1)->text(QAccessible::Name), QString("second"));
        QTRY_VERIFY(QAccessible::accessibleInterface(before) == nullptr);
    }

    void oneOfAHundredThousandRowsIsMadeAlone()
    {
        const ListFixture list;
        QList<int> made;
        list.box->appendLater(100000, 1, QSize(16, 16), [&](int number) {
            made.append(number);
            auto* row = new ZListBoxItem(list.box, list.layout);
            row->appendSubItem(1, QString::number(number), false);
            return row;
        });
        list.box->setCurrentItem(0);
        QAccessibleInterface* box = spoken(list.box);
        made.clear();
        QCOMPARE(box->childCount(), 100000);
        QAccessibleInterface* row = box->child(77777);
        QCOMPARE(box->indexOfChild(row), 77777);
        QVERIFY(made.isEmpty());
        QCOMPARE(row->text(QAccessible::Name), QString("77777"));
        QVERIFY(row->state().offscreen);
        const QPoint middle = list.box->mapToGlobal(list.rowPoint(0));
        QCOMPARE(box->indexOfChild(box->childAt(middle.x(), middle.y())), 0);
        QCOMPARE(made, QList<int>{77777});
    }

    void emptyListSaysWhy()
    {
        const ListFixture list;
        list.box->setEmptyText("No entries");
        QCOMPARE(spoken(list.box)->childCount(), 0);
        QCOMPARE(spoken(list.box)->text(QAccessible::Description), QString("No entries"));
    }

    void bubbleStandsBehindTheRows()
    {
        const ListFixture list;
        list.fill(2);
        auto* bubble = new ZBubble(list.box);
        bubble->showNote("do", false, QRect());
        QAccessibleInterface* box = spoken(list.box);
        QCOMPARE(childNames(*box), (QStringList{"0", "1", "do"}));
        QCOMPARE(box->child(2)->role(), QAccessible::StaticText);
        QCOMPARE(box->indexOfChild(box->child(2)), 2);
        QCOMPARE(box->child(2)->parent(), box);
    }

    void nothingFoundIsAnAlert()
    {
        const ListFixture list;
        auto* bubble = new ZBubble(list.box);
        const Listeners listeners;
        bubble->showNote("do", false, QRect());
        QCOMPARE(listeners.names(QAccessible::Alert), QStringList());
        bubble->showNote("dx", true, QRect());
        QCOMPARE(listeners.names(QAccessible::Alert), QStringList{"dx"});
    }

    void newCurrentRowIsTold()
    {
        const ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(0);
        takeForActive(list.main.window());
        QTRY_VERIFY(list.box->hasFocus());
        Listeners listeners;
        QCoreApplication::processEvents();
        listeners.clear();
        list.box->setCurrentItem(2);
        QCOMPARE(listeners.names(QAccessible::Selection), (QStringList{"0", "2"}));
    }

    void focusThatComesBackIsToldOfTheRow()
    {
        ListFixture list;
        list.fill(3);
        list.box->setCurrentItem(1);
        takeForActive(list.main.window());
        list.main.setFocusPolicy(Qt::StrongFocus);
        list.main.setFocus();
        const Listeners listeners;
        list.box->setFocus();
        QTRY_COMPARE(listeners.names(QAccessible::Focus), QStringList{"1"});
    }
};

QUARN_TEST_MAIN(tst_ZAccessibleList)
#include "tst_zaccessiblelist.moc"
