#include "platform/zskinservice.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tools/sys_gui/box.h"

#include <QSignalSpy>

namespace
{

const QColor Bar = ZSkinService::look(ZSkinService::clsListBox).mark;

QImage pictureOf(const MoveBox& box)
{
    return const_cast<MoveBox&>(box).grab().toImage();
}

} // namespace

class tst_MoveBox : public QObject
{
    Q_OBJECT

private slots:
    void standsInTheMiddleOfTheScreen()
    {
        MoveBox box(QStringLiteral("Moving"), QStringLiteral("Please wait.."), {});
        box.show();
        QCOMPARE(box.x(), 10);
        QCOMPARE(box.width(), 220);
        QVERIFY(std::abs(box.geometry().center().y() - ZScreen::Height / 2) <= 1);
        QCOMPARE(ZScreen::instance()->active(), &box);
        box.showFailure(QStringLiteral("It failed."));
        QVERIFY(std::abs(box.geometry().center().y() - ZScreen::Height / 2) <= 1);
    }

    void titleIsWhiteOnBlackBelowItsIcon()
    {
        const ScratchFolder folder;
        folder.write(QStringLiteral("icon.png"), plainPng(18, 18, Qt::green));
        MoveBox box(QStringLiteral("Moving"), QStringLiteral("Please wait.."),
                    folder.path(QStringLiteral("icon.png")));
        box.show();
        const QImage picture = pictureOf(box);
        QCOMPARE(boundsOf(picture, Qt::green), QRect(101, 4, 18, 18));
        QVERIFY(isPlain(picture, {0, 0, 220, 4}, Qt::black));
        QVERIFY(isPlain(picture, {0, 4, 100, 18}, Qt::black));
        const QRect title = inkBounds(picture, {0, 22, 220, 16}, Qt::black);
        QVERIFY(title.width() > 20);
        QVERIFY2(std::abs(title.center().x() - 110) <= 3, "the title is centred");
    }

    void missingIconLeavesTheTitleAlone()
    {
        const ScratchFolder folder;
        folder.write(QStringLiteral("icon.png"), plainPng(18, 18, Qt::green));
        const QString title = QStringLiteral("Moving");
        const MoveBox with(title, title, folder.path(QStringLiteral("icon.png")));
        const MoveBox without(title, title, folder.path(QStringLiteral("none.png")));
        QCOMPARE(with.height() - without.height(), 18);
    }

    void barGrowsWithTheProgress_data()
    {
        QTest::addColumn<qint64>("done");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<int>("width");
        QTest::newRow("not known") << qint64(0) << qint64(0) << 0;
        QTest::newRow("nothing") << qint64(0) << qint64(1000) << 0;
        QTest::newRow("half") << qint64(500) << qint64(1000) << 104;
        QTest::newRow("all") << qint64(1000) << qint64(1000) << 208;
        QTest::newRow("more than all") << qint64(2000) << qint64(1000) << 208;
        QTest::newRow("half of very much") << (qint64(1) << 61) << (qint64(1) << 62) << 104;
    }

    void barGrowsWithTheProgress()
    {
        QFETCH(qint64, done);
        QFETCH(qint64, total);
        MoveBox box(QStringLiteral("Moving"), QStringLiteral("Please wait.."), {});
        box.show();
        box.showProgress({done, total});
        const QRect bar = boundsOf(pictureOf(box), Bar);
        QTEST(bar.width(), "width");
        QVERIFY(bar.isEmpty() || bar.left() == 6);
    }

    void numbersStandBelowTheBar()
    {
        MoveBox box(QStringLiteral("Moving"), QStringLiteral("Please wait.."), {});
        box.show();
        const QRect below(2, box.height() - 24, 216, 22);
        QVERIFY(inkBounds(pictureOf(box), below, Qt::white).isEmpty());
        box.showProgress({500, 1000});
        const QImage half = pictureOf(box);
        QVERIFY(inkBounds(half, below, Qt::white).width() > 50);
        box.showProgress({700, 1000});
        QVERIFY(pictureOf(box).copy(below) != half.copy(below));
    }

    void keysDoNotCloseTheProgress()
    {
        MoveBox box(QStringLiteral("Moving"), QStringLiteral("Please wait.."), {});
        const QSignalSpy closed(&box, &MoveBox::closed);
        box.show();
        for (const int key : {0x1004, 0x1038, 0x103A, int('5')})
            pressKey(key);
        QCOMPARE(closed.size(), 0);
    }

    void anyKeyButTheArrowsClosesTheFailure()
    {
        MoveBox box(QStringLiteral("Moving"), QStringLiteral("Please wait.."), {});
        const QSignalSpy closed(&box, &MoveBox::closed);
        box.show();
        box.showFailure(QStringLiteral("It failed."));
        for (const int arrow : {0x1012, 0x1013, 0x1014, 0x1015})
            pressKey(arrow);
        QCOMPARE(closed.size(), 0);
        pressKey('5');
        QCOMPARE(closed.size(), 1);
    }

    void longMessageStaysOnTheScreen()
    {
        MoveBox box(QStringLiteral("Moving"), QStringLiteral("Please wait.."), {});
        box.show();
        box.showFailure(QString(4000, QLatin1Char('m')));
        QVERIFY(ZScreen::instance()->rect().contains(box.geometry()));
        QVERIFY(boundsOf(pictureOf(box), Bar).isEmpty());
    }
};

QUARN_TEST_MAIN(tst_MoveBox)
#include "tst_movebox.moc"
