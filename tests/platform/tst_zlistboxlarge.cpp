#include "platform/zlistbox.h"
#include "tests/platform/listfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

#include <ctime>
#include <malloc.h>
#ifdef __SANITIZE_ADDRESS__
/// Of the sanitizer's run-time library, whose headers are not installed everywhere.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace
{

constexpr int Many = 100000;

/// Bytes in use on the heap.
size_t heapBytes()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

void fillAsAFolder(const ListFixture& list)
{
    const QPixmap icon(24, 24);
    for (int i = 0; i < Many; ++i) {
        auto* row = new ZListBoxItem(list.box, "%I%M");
        row->setPixmap(0, icon);
        row->appendSubItem(1, QString("picture_%1.jpg").arg(i, 6, 10, QChar('0')), false);
        row->appendSubItem(1, QString("%1 Kb\t\t\t01/03/2008").arg(i % 1024), false);
        list.box->insertItem(row, -1);
    }
}

} // namespace

class tst_ZListBoxLarge : public QObject
{
    Q_OBJECT

private slots:
    void everyRowCanBeReached()
    {
        ListFixture list;
        fillAsAFolder(list);
        QCOMPARE(list.box->count(), Many);
        QSignalSpy highlighted(list.box, &ZListBox::highlighted);
        for (const int row : {0, Many - 1, Many / 2, 1, 99998, 77777}) {
            list.box->setCurrentItem(row);
            QCOMPARE(list.box->currentItem(), row);
            QVERIFY(list.box->itemVisible(row));
            QCOMPARE(highlighted.takeLast().at(0).toInt(), row);
        }
        list.box->setCurrentItem(Many);
        QCOMPARE(list.box->currentItem(), Many - 1);
        QCOMPARE(list.box->topItem(), Many - list.box->visibleItems());
        QCOMPARE(list.box->item(Many - 1)->getSubItemText(1, 0), QString("picture_099999.jpg"));
    }

    void keysAndPaintingDoNotWalkTheList()
    {
        ListFixture list;
        fillAsAFolder(list);
        list.box->setCurrentItem(Many / 2);
        const auto timeOf = [&list](int steps) {
            const clock_t before = std::clock();
            for (int i = 0; i < steps; ++i) {
                pressKey(PhoneKey::Down);
                ZScreen::instance()->grab();
            }
            return std::clock() - before;
        };
        const clock_t large = timeOf(50);
        list.box->clear();
        list.fill(200);
        list.box->setCurrentItem(100);
        const clock_t small = timeOf(50);
        QVERIFY2(large < small * 10, qPrintable(QString("%1 to %2 ticks").arg(large).arg(small)));
    }

    void rowTakesLittleMemory()
    {
        ListFixture list;
        list.fill(1);
        list.box->setCurrentItem(0);
        ZScreen::instance()->grab();
        list.box->clear();
        const size_t before = heapBytes();
        fillAsAFolder(list);
        list.box->setCurrentItem(Many - 1);
        ZScreen::instance()->grab();
        const size_t after = heapBytes();
        QVERIFY(after > before);
        const size_t perRow = (after - before) / Many;
        QVERIFY2(perRow <= 600, qPrintable(QString::number(perRow)));
        list.box->clear();
        QVERIFY(heapBytes() < before + (after - before) / 10);
    }
};

QUARN_TEST_MAIN(tst_ZListBoxLarge)
#include "tst_zlistboxlarge.moc"
