#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/platform/menufixture.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"

#include <QWheelEvent>
#include <QWindow>

namespace
{

constexpr int Up = PhoneKey::Up;
constexpr int Down = PhoneKey::Down;
constexpr int Left = PhoneKey::Left;
constexpr int Right = PhoneKey::Right;
constexpr int Return = PhoneKey::Return;
constexpr int SoftLeft = PhoneKey::SoftLeft;
constexpr int SoftRight = PhoneKey::SoftRight;

/// The middle of the n-th row in view, in pixels of the screen.
QPoint rowPoint(const ZOptionsMenu& menu, int row)
{
    return menu.pos() + QPoint(50, row * ZSkinService::MenuRowHeight + 13);
}

} // namespace

/// Keys and fingers in menus, and where menus are.
class tst_ZOptionsMenuUse : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        main_ = showMainWidget();
        menu_ = makeMenu(4);
        submenu_ = makeMenu(3);
        menu_->insertItem("more", submenu_.get(), {}, true, 10, 1);
        menu_->setItemEnabled(2, false); // the one at position 3
    }

    void cleanup()
    {
        menu_.reset();
        submenu_.reset();
        main_.reset();
    }

    void keysMoveTheHighlightRound_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<int>("position");
        QTest::newRow("opened") << QList<int>{} << 0;
        QTest::newRow("down") << QList<int>{Down} << 1;
        QTest::newRow("up from the first") << QList<int>{Up} << 4;
        QTest::newRow("down from the last") << QList<int>{Up, Down} << 0;
        QTest::newRow("on a disabled one") << QList<int>{Down, Down, Down} << 3;
        QTest::newRow("past a disabled one") << QList<int>{Down, Down, Down, Down} << 4;
        QTest::newRow("right on a plain item") << QList<int>{Right} << 0;
        QTest::newRow("choosing a disabled one")
            << QList<int>{Up, Up, Return, SoftLeft, Right} << 3;
        QTest::newRow("keys that mean nothing")
            << QList<int>{'0', '#', '*', PhoneKey::Modifier} << 0;
    }

    void keysMoveTheHighlightRound()
    {
        QFETCH(QList<int>, keys);
        menu_->show();
        pressKeys(keys);
        QVERIFY(menu_->isVisible());
        QTEST(menu_->currentPosition(), "position");
        QCOMPARE(menu_->getActiveItemId(), -1);
    }

    void keysCloseTheMenu_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<int>("chosen");
        QTest::newRow("return") << QList<int>{Down, Down, Return} << 1;
        QTest::newRow("enter") << QList<int>{int(PhoneKey::Enter)} << 0;
        QTest::newRow("left soft key") << QList<int>{Up, SoftLeft} << 3;
        QTest::newRow("left") << QList<int>{Left} << -1;
        QTest::newRow("right soft key") << QList<int>{Down, SoftRight} << -1;
    }

    void keysCloseTheMenu()
    {
        QFETCH(QList<int>, keys);
        menu_->show();
        pressKeys(keys);
        QVERIFY(!menu_->isVisible());
        QTEST(menu_->getActiveItemId(), "chosen");
        QCOMPARE(ZScreen::instance()->active(), main_.get());
    }

    void submenuIsOpenedAndLeft_data()
    {
        QTest::addColumn<int>("open");
        QTest::addColumn<int>("close");
        QTest::newRow("return, left") << Return << Left;
        QTest::newRow("right, right soft key") << Right << SoftRight;
        QTest::newRow("left soft key, left") << SoftLeft << Left;
    }

    void submenuIsOpenedAndLeft()
    {
        QFETCH(int, open);
        QFETCH(int, close);
        menu_->show();
        pressKeys({Down, open});
        QVERIFY(submenu_->isVisible());
        QVERIFY(menu_->isVisible());
        QCOMPARE(ZScreen::instance()->active(), submenu_.get());
        pressKeys({Down, close});
        QVERIFY(!submenu_->isVisible());
        QVERIFY(menu_->isVisible());
        QCOMPARE(menu_->currentPosition(), 1);
        pressKey(open);
        QCOMPARE(submenu_->currentPosition(), 0);
    }

    void choosingInASubmenuClosesAll()
    {
        menu_->show();
        pressKeys({Down, Right, Down, Down, Return});
        QVERIFY(!menu_->isVisible());
        QVERIFY(!submenu_->isVisible());
        QCOMPARE(submenu_->getActiveItemId(), 2);
        QCOMPARE(menu_->getActiveItemId(), -1);
    }

    void disabledSubmenuDoesNotOpen()
    {
        menu_->setItemEnabled(10, false);
        menu_->show();
        pressKeys({Down, Right, Return, SoftLeft});
        QVERIFY(menu_->isVisible());
        QVERIFY(!submenu_->isVisible());
    }

    void emptyMenuOnlyCloses()
    {
        const auto empty = makeMenu();
        empty->show();
        QCOMPARE(empty->currentPosition(), -1);
        pressKeys({Up, Down, Return, Right, SoftLeft});
        tapScreen(rowPoint(*empty, 0));
        QCOMPARE(empty->getActiveItemId(), -1);
        QVERIFY(empty->isVisible());
        ZScreen::instance()->grab();
        pressKey(Left);
        QVERIFY(!empty->isVisible());
    }

    void heldKeyNeitherChoosesNorCloses_data()
    {
        QTest::addColumn<int>("key");
        for (const int key : {Return, SoftLeft, SoftRight, Left})
            QTest::addRow("%x", unsigned(key)) << key;
    }

    void heldKeyNeitherChoosesNorCloses()
    {
        QFETCH(int, key);
        menu_->show();
        repeatKey(key);
        repeatKey(key);
        releaseKey(key);
        QVERIFY(menu_->isVisible());
        QCOMPARE(menu_->getActiveItemId(), -1);
    }

    void heldArrowGoesOn()
    {
        menu_->show();
        holdKey(Down);
        repeatKey(Down);
        releaseKey(Down);
        QCOMPARE(menu_->currentPosition(), 2);
    }

    void menuStartsAtTheFirstItemEachTime()
    {
        menu_->show();
        pressKeys({Down, Down, Left});
        menu_->show();
        QCOMPARE(menu_->currentPosition(), 0);
    }

    void focusGoesBackWhenTheMenuCloses()
    {
        takeForActive(main_->window());
        main_->setFocus();
        menu_->show();
        QVERIFY(menu_->hasFocus());
        pressKeys({Down, Right});
        QVERIFY(submenu_->hasFocus());
        pressKeys({Left, Left});
        QVERIFY(main_->hasFocus());
    }

    void menuIsAtTheLowerLeftAboveTheSoftKeys()
    {
        menu_->show();
        QCOMPARE(menu_->x(), 0);
        QCOMPARE(menu_->geometry().bottom() + 1, 320 - ZSkinService::SoftKeyHeight);
        QCOMPARE(menu_->height(), 5 * ZSkinService::MenuRowHeight + 2);
        pressKeys({Down, Right});
        QVERIFY(submenu_->x() > menu_->x());
        QVERIFY(submenu_->geometry().bottom() < 300);
    }

    void menuKeepsToItsLimit_data()
    {
        QTest::addColumn<QRect>("limit");
        QTest::newRow("room") << QRect(30, 40, 200, 200);
        QTest::newRow("narrow") << QRect(100, 10, 80, 250);
        QTest::newRow("low") << QRect(10, 200, 200, 60);
        QTest::newRow("beyond the screen") << QRect(100, 200, 1000, 1000);
    }

    void menuKeepsToItsLimit()
    {
        QFETCH(QRect, limit);
        menu_->setLimitRect(limit);
        menu_->show();
        QCOMPARE(menu_->pos(), limit.topLeft());
        QVERIFY(limit.contains(menu_->geometry()));
        QVERIFY(QRect(0, 0, 240, 320).contains(menu_->geometry()));
        pressKeys({Up, Return});
        QCOMPARE(menu_->getActiveItemId(), 3);
    }

    void limitWithoutSizeGivesTheCorner()
    {
        menu_->setLimitRect(QRect(20, 30, 0, 0).adjusted(0, 0, -1, 0));
        menu_->show();
        QCOMPARE(menu_->pos(), QPoint(20, 30));
        QCOMPARE(menu_->height(), 5 * ZSkinService::MenuRowHeight + 2);
    }

    void longMenuScrolls()
    {
        const auto menu = makeMenu(40);
        menu->show();
        QVERIFY(QRect(0, 0, 240, 300).contains(menu->geometry()));
        const int shown = menu->height() / ZSkinService::MenuRowHeight;
        QVERIFY(shown < 40);
        pressKey(Up);
        QCOMPARE(menu->currentPosition(), 39);
        tapScreen(rowPoint(*menu, 0));
        QCOMPARE(menu->getActiveItemId(), 40 - shown);
        menu->show();
        pressKeys(QList<int>(shown, Down));
        QCOMPARE(menu->currentPosition(), shown);
        tapScreen(rowPoint(*menu, 0));
        QCOMPARE(menu->getActiveItemId(), 1);
    }

    void wheelAndDragScrollALongMenu()
    {
        const auto menu = makeMenu(40);
        menu->show();
        QWheelEvent turn(QPointF(5, 5), QPointF(5, 5), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(menu.get(), &turn);
        QCOMPARE(menu->currentPosition(), 0);
        const QPoint from = rowPoint(*menu, 6);
        QTest::mousePress(screenWindow(), Qt::LeftButton, Qt::NoModifier, from);
        for (int step = 1; step <= 3; ++step)
            QTest::mouseMove(screenWindow(), from - QPoint(0, step * ZSkinService::MenuRowHeight));
        QTest::mouseRelease(screenWindow(), Qt::LeftButton, Qt::NoModifier, rowPoint(*menu, 3));
        QVERIFY(menu->isVisible());
        QCOMPARE(menu->getActiveItemId(), -1);
        tapScreen(rowPoint(*menu, 0));
        QCOMPARE(menu->getActiveItemId(), 4);
    }

    void tapChooses()
    {
        menu_->show();
        tapScreen(rowPoint(*menu_, 3));
        QVERIFY(menu_->isVisible());
        QCOMPARE(menu_->getActiveItemId(), -1);
        tapScreen(rowPoint(*menu_, 4));
        QVERIFY(!menu_->isVisible());
        QCOMPARE(menu_->getActiveItemId(), 3);
    }

    void tapOpensASubmenuAndChoosesInIt()
    {
        menu_->show();
        tapScreen(rowPoint(*menu_, 1));
        QVERIFY(submenu_->isVisible());
        tapScreen(rowPoint(*submenu_, 2));
        QCOMPARE(submenu_->getActiveItemId(), 2);
        QVERIFY(!menu_->isVisible());
    }

    void tapBesideClosesTheMenuAndItsOpeners()
    {
        menu_->show();
        pressKeys({Down, Right});
        tapScreen({230, 10});
        QVERIFY(!submenu_->isVisible());
        QVERIFY(!menu_->isVisible());
        QCOMPARE(menu_->getActiveItemId(), -1);
        QCOMPARE(submenu_->getActiveItemId(), -1);
        QCOMPARE(ZScreen::instance()->active(), main_.get());
    }

    void tabsIndentAllTextsPastTheIcon()
    {
        QPixmap icon(16, 16);
        icon.fill(Qt::blue);
        const auto menu = makeMenu();
        menu->insertItem("first", nullptr, {}, true, 1, -1);
        menu->insertItem("\t\t\tIIII", nullptr, icon, true, 2, -1);
        menu->insertItem("IIII", nullptr, {}, true, 3, -1);
        menu->show();
        const QImage picture = menu->grab().toImage();
        const QColor ground = ZSkinService::look(ZSkinService::clsOptionsMenu).background;
        const auto firstInk = [&](int row, int from) {
            for (int x = from; x < picture.width() - 4; ++x) {
                for (int y = row * 24 + 3; y < row * 24 + 23; ++y) {
                    if (picture.pixelColor(x, y) != ground)
                        return x;
                }
            }
            return -1;
        };
        QCOMPARE(picture.pixelColor(firstInk(1, 1), 24 + 13), QColor(Qt::blue));
        const int indented = firstInk(1, 24);
        QVERIFY(indented >= 3 * ZSkinService::MenuTabWidth);
        QCOMPARE(firstInk(2, 1), indented);
        menu->changeItem(2, "IIII", icon);
        QCOMPARE(menu->grab().toImage(), picture);
    }

    void bytesThatAreNoTextAreOneMarkEach_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("marked");
        const QString mark(QChar(QChar::ReplacementCharacter));
        QTest::newRow("bytes") << 'a' + QString(QChar(0xdcff)) + QChar(0xdcc3) + 'b'
                               << 'a' + mark + mark + 'b';
        QTest::newRow("half of a character") << 'a' + QString(QChar(0xd83d)) << 'a' + mark;
        QTest::newRow("a byte-order mark")
            << '\t' + QString(QChar(0xfeff)) + 'a' << '\t' + mark + 'a';
    }

    void bytesThatAreNoTextAreOneMarkEach()
    {
        QFETCH(QString, text);
        QFETCH(QString, marked);
        const auto pictureWith = [](const QString& item) {
            const auto menu = makeMenu();
            menu->insertItem(item, nullptr, {}, true, 1, -1);
            menu->show();
            return menu->grab().toImage();
        };
        QVERIFY(pictureWith(text) == pictureWith(marked));
    }

private:
    std::unique_ptr<QWidget> main_;
    std::unique_ptr<ZOptionsMenu> menu_;
    std::unique_ptr<ZOptionsMenu> submenu_;
};

QUARN_TEST_MAIN(tst_ZOptionsMenuUse)
#include "tst_zoptionsmenuuse.moc"
