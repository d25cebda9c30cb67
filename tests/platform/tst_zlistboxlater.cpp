// Rows that a list makes when it needs them.

#include "platform/zlistbox.h"
#include "tests/platform/listfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

#include <set>

namespace
{

constexpr int Many = 1000;

QPixmap squareIcon(int side)
{
    QPixmap icon(side, side);
    icon.fill(Qt::red);
    return icon;
}

/// A list of many rows that are called by their numbers, and which of them were made.
struct LateList : ListFixture {
    explicit LateList(int lines = 1, int iconSide = 0)
    {
        box->appendLater(Many, lines, QSize(iconSide, iconSide),
                         [this, lines, iconSide](int number) {
                             timesMade += 1;
                             made.insert(number);
                             auto* row = new ZListBoxItem(box, layout);
                             if (iconSide > 0)
                                 row->setPixmap(0, squareIcon(iconSide));
                             row->appendSubItem(1, QString::number(number), false);
                             if (lines > 1)
                                 row->appendSubItem(1, "detail", false);
                             return row;
                         });
    }

    QString text(int row) { return box->item(row)->getSubItemText(1, 0); }

    int timesMade = 0;
    std::set<int> made;
};

} // namespace

class tst_ZListBoxLater : public QObject
{
    Q_OBJECT

private slots:
    void rowsAreCountedBeforeTheyAreMade()
    {
        LateList list;
        QCOMPARE(list.box->count(), Many);
        list.box->setCurrentItem(Many - 1);
        QCOMPARE(list.box->currentItem(), Many - 1);
        QVERIFY(list.box->itemVisible(Many - 1));
        QCOMPARE(list.timesMade, 0);
    }

    void rowsInViewAreMadeWhenPainted()
    {
        LateList list;
        list.box->setCurrentItem(500);
        list.box->grab();
        const int top = list.box->topItem();
        const int shown = list.box->visibleItems();
        QCOMPARE(int(list.made.size()), shown);
        QCOMPARE(*list.made.begin(), top);
        QCOMPARE(*list.made.rbegin(), top + shown - 1);
    }

    void rowIsMadeOnce()
    {
        LateList list;
        QCOMPARE(list.text(7), QString("7"));
        QCOMPARE(list.text(7), QString("7"));
        list.box->grab();
        list.box->grab();
        QCOMPARE(list.timesMade, int(list.made.size()));
    }

    void rowsShowWhatRowsMadeAtOnceShow()
    {
        LateList late(2, 24);
        ListFixture list;
        for (int i = 0; i < Many; ++i) {
            auto* row = new ZListBoxItem(list.box, list.layout);
            row->setPixmap(0, squareIcon(24));
            row->appendSubItem(1, QString::number(i), false);
            row->appendSubItem(1, "detail", false);
            list.box->insertItem(row, -1);
        }
        for (const int row : {0, 300, Many - 1, 290}) {
            late.box->setCurrentItem(row);
            list.box->setCurrentItem(row);
            QCOMPARE(late.box->topItem(), list.box->topItem());
            QCOMPARE(late.box->grab().toImage(), list.box->grab().toImage());
        }
    }

    void heightIsThatOfTheRowsToCome()
    {
        LateList plain;
        LateList detailed(2);
        LateList pictured(1, 100);
        QVERIFY(detailed.box->rowHeight() > plain.box->rowHeight());
        QVERIFY(pictured.box->rowHeight() >= 100);
        const int height = detailed.box->rowHeight();
        detailed.box->grab();
        QCOMPARE(detailed.box->rowHeight(), height);
        QCOMPARE(detailed.timesMade, detailed.box->visibleItems());
    }

    void rowThatIsHigherThanSaidMakesAllHigher()
    {
        ListFixture list;
        list.box->appendLater(Many, 1, {}, [&list](int number) {
            auto* row = new ZListBoxItem(list.box, list.layout);
            row->appendSubItem(1, QString::number(number), false);
            row->setPixmap(0, squareIcon(number == 500 ? 60 : 10));
            return row;
        });
        list.box->setCurrentItem(0);
        list.box->grab();
        const int before = list.box->rowHeight();
        list.box->setCurrentItem(500);
        list.box->grab();
        QVERIFY(list.box->rowHeight() >= 60);
        QVERIFY(before < 60);
        QVERIFY(list.box->visibleItems() * list.box->rowHeight() <= list.box->height());
        list.box->grab();
        QVERIFY(list.box->itemVisible(500));
    }

    void rowsInsertedAroundKeepTheNumbers()
    {
        LateList list;
        list.add("first", 0);
        list.add("last", -1);
        list.add("between", 3);
        QCOMPARE(list.box->count(), Many + 3);
        QCOMPARE(list.text(0), QString("first"));
        QCOMPARE(list.text(1), QString("0"));
        QCOMPARE(list.text(3), QString("between"));
        QCOMPARE(list.text(4), QString("2"));
        QCOMPARE(list.text(Many + 1), QString::number(Many - 1));
        QCOMPARE(list.text(Many + 2), QString("last"));
    }

    void checkMarksOfUnseenRowsAreOff()
    {
        LateList list;
        list.layout = "%I%M%C";
        for (int row = 0; row < Many; ++row)
            QVERIFY(!list.box->itemChecked(row));
        QCOMPARE(list.timesMade, 0);
        list.box->setCurrentItem(3);
        pressKey(PhoneKey::Return);
        QVERIFY(list.box->itemChecked(3));
        QVERIFY(!list.box->itemChecked(4));
    }

    void clearedListMakesNoRows()
    {
        LateList list;
        list.box->setCurrentItem(5);
        list.box->clear();
        QCOMPARE(list.box->count(), 0);
        QCOMPARE(list.box->item(0), nullptr);
        list.box->grab();
        list.fill(3);
        QCOMPARE(list.text(2), QString("2"));
        list.box->grab();
        QCOMPARE(list.timesMade, 0);
    }

    void rowsMadeWhilePaintingAskForNoOtherPicture()
    {
        LateList list;
        list.box->setCurrentItem(0);
        QTRY_VERIFY(list.timesMade > 0);
        QCoreApplication::processEvents();
        struct Counter : QObject {
            bool eventFilter(QObject*, QEvent* event) override
            {
                paints += event->type() == QEvent::Paint ? 1 : 0;
                return false;
            }
            int paints = 0;
        } counter;
        list.box->viewport()->installEventFilter(&counter);
        const int before = list.timesMade;
        list.box->setCurrentItem(Many / 2);
        QTRY_VERIFY(list.timesMade > before);
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
        QCOMPARE(counter.paints, 1);
    }
};

QUARN_TEST_MAIN(tst_ZListBoxLater)
#include "tst_zlistboxlater.moc"
