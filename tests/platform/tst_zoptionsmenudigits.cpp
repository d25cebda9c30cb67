#include "platform/keymap.h"
#include "platform/zlift.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/platform/menufixture.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <vector>

namespace
{

constexpr int RowHeight = ZSkinService::MenuRowHeight;
/// At least so wide is the part of a row in which digit and arrow stand.
constexpr int EndWidth = 26;

QColor menuGround()
{
    return ZSkinService::look(ZSkinService::clsOptionsMenu).background;
}

QImage screenPicture()
{
    return ZScreen::instance()->grab().toImage();
}

/// The right end of the n-th row in view, in pixels of the menu.
QRect rowEnd(const ZOptionsMenu& menu, int row)
{
    return {menu.width() - 1 - EndWidth, 2 + row * RowHeight, EndWidth, RowHeight - 2};
}

/// What is drawn at the right end of a row, in pixels of the menu.
QRect endInk(ZOptionsMenu& menu, int row)
{
    return inkBounds(menu.grab().toImage(), rowEnd(menu, row), menuGround());
}

std::unique_ptr<ZOptionsMenu> makeMenuWithIcons(int items)
{
    auto menu = makeMenu();
    QPixmap icon(20, 20);
    icon.fill(Qt::blue);
    for (int i = 0; i < items; ++i)
        menu->insertItem(QStringLiteral("\t\t\titem %1").arg(i), nullptr, icon, true, i, -1);
    return menu;
}

} // namespace

/// Digits that choose, how they are shown, and what a submenu leaves of the menu below it.
class tst_ZOptionsMenuDigits : public QObject
{
    Q_OBJECT

private slots:
    void init() { main_ = showMainWidget(); }

    void cleanup() { main_.reset(); }

    void digitChoosesAtOnce_data()
    {
        QTest::addColumn<int>("digit");
        for (int digit = 1; digit <= 9; ++digit)
            QTest::addRow("%d", digit) << digit;
    }

    void digitChoosesAtOnce()
    {
        QFETCH(int, digit);
        MenuReceiver receiver;
        const auto menu = makeMenu(30);
        QVERIFY(menu->connectItem(digit - 1, &receiver, "first()"));
        menu->show();
        pressKeys({PhoneKey::Down, PhoneKey::Down, '0' + digit});
        QCOMPARE(receiver.ran, QStringList("first"));
        QCOMPARE(menu->getActiveItemId(), digit - 1);
        QVERIFY(!menu->isVisible());
    }

    void digitsCountFromTheFirstItemOfAScrolledMenu()
    {
        const auto menu = makeMenu(30);
        menu->show();
        pressKeys({PhoneKey::Up, '2'});
        QCOMPARE(menu->getActiveItemId(), 1);
    }

    void digitThatNoItemHasDoesNothing_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("of a disabled item") << int('2');
        QTest::newRow("past the last item") << int('4');
        QTest::newRow("the last digit") << int('9');
        QTest::newRow("zero") << int('0');
        QTest::newRow("a letter") << int('A');
    }

    void digitThatNoItemHasDoesNothing()
    {
        QFETCH(int, key);
        const auto submenu = makeMenu(2);
        const auto menu = makeMenu(2);
        menu->insertItem("more", submenu.get(), {}, false, 9, 1);
        menu->show();
        pressKey(key);
        QVERIFY(menu->isVisible());
        QVERIFY(!submenu->isVisible());
        QCOMPARE(menu->currentPosition(), 0);
        QCOMPARE(menu->getActiveItemId(), -1);
    }

    void digitOpensASubmenuAndTheNextChoosesInIt()
    {
        const auto submenu = makeMenu(3);
        const auto menu = makeMenu(4);
        menu->insertItem("more", submenu.get(), {}, true, 9, 2);
        menu->show();
        pressKey('3');
        QCOMPARE(ZScreen::instance()->active(), submenu.get());
        QCOMPARE(menu->currentPosition(), 2);
        QCOMPARE(submenu->currentPosition(), 0);
        pressKey('2');
        QCOMPARE(submenu->getActiveItemId(), 1);
        QVERIFY(!menu->isVisible() && !submenu->isVisible());
    }

    void heldDigitDoesNotChoose()
    {
        const auto menu = makeMenu(4);
        menu->show();
        repeatKey('2');
        repeatKey('2');
        releaseKey('2');
        QVERIFY(menu->isVisible());
        QCOMPARE(menu->getActiveItemId(), -1);
    }

    void firstNineItemsThatCanBeChosenShowTheirDigits()
    {
        const auto menu = makeMenu(11);
        menu->setItemEnabled(3, false);
        menu->show();
        pressKey(PhoneKey::Up); // the last one, so that no other row has a ground of its own
        QRect column;
        for (int row = 0; row < 10; ++row) {
            const QRect ink = endInk(*menu, row);
            QCOMPARE(ink.isEmpty(), row == 3 || row == 9);
            column |= ink;
            // Small, and clear of the edge.
            if (!ink.isEmpty()) {
                QVERIFY2(ink.height() >= 6 && ink.height() <= 10, qPrintable(QString::number(row)));
                QVERIFY2(ink.right() <= menu->width() - 5, qPrintable(QString::number(row)));
            }
        }
        QVERIFY(column.width() <= 9);
        menu->setItemEnabled(3, true);
        QVERIFY(!endInk(*menu, 3).isEmpty());
    }

    void digitsAreGrey()
    {
        const auto menu = makeMenu(3);
        menu->show();
        const auto& look = ZSkinService::look(ZSkinService::clsOptionsMenu);
        const QImage picture = menu->grab().toImage();
        const auto darkest = [&picture](const QRect& area) {
            QColor found(Qt::white);
            for (int y = area.top(); y <= area.bottom(); ++y) {
                for (int x = area.left(); x <= area.right(); ++x) {
                    const QColor colour = picture.pixelColor(x, y);
                    found = colour.lightness() < found.lightness() ? colour : found;
                }
            }
            return found;
        };
        // On the highlight, too.
        for (const int row : {0, 1}) {
            QVERIFY(darkest(rowEnd(*menu, row)).lightness() >= look.secondaryText.lightness() - 8);
            QVERIFY(darkest(rowEnd(*menu, row)).lightness() <= look.secondaryText.lightness() + 60);
        }
    }

    void digitStandsBesideTheArrowOfASubmenu()
    {
        const auto submenu = makeMenu(3);
        const auto menu = makeMenu(2);
        menu->insertItem("more", submenu.get(), {}, true, 9, 2);
        menu->show();
        const QRect plain = endInk(*menu, 1);
        const QImage picture = menu->grab().toImage();
        const QRect both = inkBounds(picture, rowEnd(*menu, 2), menuGround());
        QVERIFY(!plain.isEmpty());
        // The digits are one column, the arrow is at its right with a gap between.
        QVERIFY(both.right() > plain.right() + 2);
        QVERIFY(std::abs(both.left() - plain.left()) <= 2);
        const QRect gap(plain.right() + 2, both.top(), 1, both.height());
        QVERIFY(isPlain(picture, gap, menuGround()));
    }

    void longTextEndsBeforeTheDigit_data()
    {
        QTest::addColumn<bool>("scrolls");
        QTest::addColumn<bool>("withSubmenu");
        QTest::newRow("short menu") << false << false;
        QTest::newRow("with a submenu") << false << true;
        QTest::newRow("long menu") << true << false;
        QTest::newRow("long menu with a submenu") << true << true;
    }

    void longTextEndsBeforeTheDigit()
    {
        QFETCH(bool, scrolls);
        QFETCH(bool, withSubmenu);
        const auto submenu = makeMenu(3);
        const auto menu = makeMenu(scrolls ? 40 : 2);
        const QString longText(200, QLatin1Char('H'));
        menu->insertItem(longText, withSubmenu ? submenu.get() : nullptr, {}, true, 99, 2);
        menu->show();
        QVERIFY(QRect(0, 0, ZScreen::Width, ZScreen::Height).contains(menu->geometry()));
        const QImage picture = menu->grab().toImage();
        // The scroll bar is no digit.
        const int end = menu->width() - 2 - (scrolls ? ZSkinService::ScrollBarWidth : 0);
        const QRect digit = inkBounds(
            picture, rowEnd(*menu, 1).adjusted(0, 0, end - menu->width(), 0), menuGround());
        QVERIFY(!digit.isEmpty());
        const QRect text = inkBounds(
            picture, {1, 2 + 2 * RowHeight, digit.left() - 3, RowHeight - 2}, menuGround());
        QVERIFY2(digit.left() - text.right() >= 5 && digit.left() - text.right() < 24,
                 qPrintable(QStringLiteral("%1 %2").arg(text.right()).arg(digit.left())));
    }

    void textThatFitsIsWhole()
    {
        const auto menu = makeMenu();
        const QString text("\t\t\tSend by wire");
        menu->insertItem(text, nullptr, {}, true, 1, -1);
        menu->show();
        const QImage whole = menu->grab().toImage();
        const int width = menu->width();
        menu->hide();
        // With much more room the text is drawn as it was.
        menu->insertItem(QString(40, QLatin1Char('W')), nullptr, {}, true, 2, -1);
        menu->show();
        QVERIFY(menu->width() > width + 40);
        const QRect area(1, 1, width - 24, RowHeight);
        QVERIFY(menu->grab().toImage().copy(area) == whole.copy(area));
    }

    void submenuLeavesIconsInViewAndHidesTheRestBesideIt_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<QString>("text");
        QTest::newRow("from the first") << 0 << "short";
        QTest::newRow("from the middle") << 3 << "short";
        QTest::newRow("from the last") << 6 << "short";
        QTest::newRow("beside long texts") << 3 << QString(60, QLatin1Char('m'));
    }

    void submenuLeavesIconsInViewAndHidesTheRestBesideIt()
    {
        QFETCH(int, position);
        QFETCH(QString, text);
        const auto submenu = makeMenu(3);
        const auto menu = makeMenuWithIcons(6);
        QPixmap icon(20, 20);
        icon.fill(Qt::blue);
        menu->insertItem("\t\t\t" + text, submenu.get(), icon, true, 50, position);
        menu->show();
        const QImage before = screenPicture();
        pressKeys(QList<int>(position, PhoneKey::Down));
        pressKey(PhoneKey::Right);
        QVERIFY(submenu->isVisible());
        const QImage open = screenPicture();
        // The icons, which begin at the same column in all rows.
        const QRect icons = boundsOf(before, Qt::blue);
        QCOMPARE(icons.width(), 20);
        QCOMPARE(boundsOf(open, Qt::blue), icons);
        for (int row = 0; row < 7; ++row) {
            const QRect rowIcon(icons.left(), menu->y() + 1 + row * RowHeight + 2, 20, 20);
            QVERIFY(isPlain(open, rowIcon, Qt::blue));
        }
        const QRect covered = submenu->geometry();
        QVERIFY(covered.left() > icons.right());
        QVERIFY(covered.right() >= menu->geometry().right());
        QVERIFY(QRect(0, 0, 240, 300).contains(covered));
        // Between the icon and the submenu nothing of the text is seen.
        for (int y = covered.top() + 2; y < covered.bottom() - 1; ++y) {
            const QColor beside = open.pixelColor(icons.right() + 1, y);
            for (int x = icons.right() + 1; x < covered.left() - ZLift::Shadow; ++x)
                QCOMPARE(open.pixelColor(x, y), beside);
        }
    }

    void menuBelowASubmenuShowsNeitherArrowsNorDigits()
    {
        const auto submenu = makeMenu(1);
        const auto other = makeMenu(1);
        const auto menu = makeMenu(5);
        menu->insertItem("one", other.get(), {}, true, 50, 0);
        menu->insertItem("two", submenu.get(), {}, true, 51, 3);
        menu->show();
        pressKeys({PhoneKey::Down, PhoneKey::Down, PhoneKey::Down});
        const QImage before = screenPicture();
        pressKey(PhoneKey::Right);
        const QImage picture = menu->grab().toImage();
        for (const int row : {0, 1, 2, 4, 5, 6})
            QVERIFY(isPlain(picture, rowEnd(*menu, row), menuGround()));
        pressKey(PhoneKey::Left);
        QVERIFY(screenPicture() == before);
    }

    void submenuThatFindsNoRoomCoversItsOpener()
    {
        std::vector<std::unique_ptr<ZOptionsMenu>> menus;
        for (int i = 0; i < 9; ++i) {
            menus.push_back(makeMenuWithIcons(i == 0 ? 3 : 1));
            if (i > 0)
                menus.at(size_t(i - 1))->insertItem("more", menus.back().get(), {}, true, 50, 0);
        }
        menus.front()->show();
        for (size_t i = 1; i < menus.size(); ++i) {
            pressKey('1');
            QCOMPARE(ZScreen::instance()->active(), menus.at(i).get());
            const QRect opener = menus.at(i - 1)->geometry();
            const QRect covered = menus.at(i)->geometry();
            QVERIFY(QRect(0, 0, 240, 300).contains(covered));
            QVERIFY(covered.width() >= 110);
            QVERIFY(covered.left() > opener.left() + 26 || covered.contains(opener));
            QVERIFY(covered.right() >= opener.right());
        }
        pressKey('1');
        QCOMPARE(menus.back()->getActiveItemId(), 0);
        QVERIFY(!menus.front()->isVisible());
    }

private:
    std::unique_ptr<QWidget> main_;
};

QUARN_TEST_MAIN(tst_ZOptionsMenuDigits)
#include "tst_zoptionsmenudigits.moc"
