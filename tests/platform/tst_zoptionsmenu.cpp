#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/platform/menufixture.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <QPointer>

namespace
{

QStringList textsOf(const ZOptionsMenu& menu)
{
    QStringList texts;
    for (int i = 0; i < menu.count(); ++i)
        texts.append(menu.textAt(i));
    return texts;
}

void choose(ZOptionsMenu& menu, int position)
{
    menu.show();
    pressKeys(QList<int>(position, PhoneKey::Down));
    pressKey(PhoneKey::Return);
}

} // namespace

/// The items of a menu and what choosing one runs.
class tst_ZOptionsMenu : public QObject
{
    Q_OBJECT

private slots:
    void itemsAreInsertedWhereAsked()
    {
        const auto menu = makeMenu();
        menu->insertItem("b", nullptr, {}, true, 10, -1);
        menu->insertItem("d", nullptr, {}, true, 20, 100);
        menu->insertItem("a", nullptr, {}, true, 30, 0);
        menu->insertItem("c", nullptr, {}, true, 40, 2);
        QCOMPARE(textsOf(*menu), QStringList({"a", "b", "c", "d"}));
        QCOMPARE(menu->idAt(0), 30);
        QCOMPARE(menu->idAt(3), 20);
    }

    void idsMayHaveGaps()
    {
        const auto menu = makeMenu();
        menu->insertItem("zero", nullptr, {}, true, 0, 0);
        menu->insertItem("two", nullptr, {}, true, 2, 2);
        choose(*menu, 1);
        QCOMPARE(menu->getActiveItemId(), 2);
    }

    void iconsAreCopied()
    {
        const auto menu = makeMenu();
        QPixmap shared = coloured(Qt::red);
        menu->insertItem("red", nullptr, shared, true, 1, -1);
        shared.fill(Qt::green);
        menu->insertItem("green", nullptr, shared, true, 2, -1);
        QCOMPARE(menu->iconAt(0).toImage().pixelColor(0, 0), QColor(Qt::red));
        QCOMPARE(menu->iconAt(1).toImage().pixelColor(0, 0), QColor(Qt::green));
    }

    void changedItemKeepsEverythingElse()
    {
        MenuReceiver receiver;
        const auto menu = makeMenu(3);
        QVERIFY(menu->connectItem(1, &receiver, "first()"));
        QVERIFY(menu->changeItem(1, "changed", coloured(Qt::red)));
        QCOMPARE(textsOf(*menu), QStringList({"item 0", "changed", "item 2"}));
        QVERIFY(!menu->iconAt(1).isNull());
        QVERIFY(menu->isItemEnabled(1));
        choose(*menu, 1);
        QCOMPARE(receiver.ran, QStringList("first"));
        QVERIFY(menu->changeItem(1, "again", QPixmap()));
        QVERIFY(menu->iconAt(1).isNull());
        QVERIFY(!menu->changeItem(7, "nothing", QPixmap()));
    }

    void enablingIsById()
    {
        const auto menu = makeMenu(2);
        QVERIFY(menu->isItemEnabled(1));
        menu->setItemEnabled(1, false);
        QVERIFY(!menu->isItemEnabled(1));
        QVERIFY(menu->isItemEnabled(0));
        menu->setItemEnabled(1, true);
        QVERIFY(menu->isItemEnabled(1));
        menu->setItemEnabled(9, true);
        QVERIFY(!menu->isItemEnabled(9));
    }

    void activeIdIsThatOfTheItemLastChosen()
    {
        const auto menu = makeMenu(3);
        QCOMPARE(menu->getActiveItemId(), -1);
        menu->show();
        pressKeys({PhoneKey::Down, PhoneKey::Left});
        QCOMPARE(menu->getActiveItemId(), -1);
        choose(*menu, 2);
        QCOMPARE(menu->getActiveItemId(), 2);
        menu->setItemEnabled(0, false);
        choose(*menu, 0);
        QCOMPARE(menu->getActiveItemId(), 2);
        menu->closeAll();
    }

    void activeIdIsKnownWhenTheSlotRuns()
    {
        MenuReceiver receiver;
        const auto menu = makeMenu(3);
        int seen = -1;
        bool open = true;
        receiver.whenRun = [&] {
            seen = menu->getActiveItemId();
            open = menu->isVisible();
        };
        QVERIFY(menu->connectItem(2, &receiver, "first()"));
        choose(*menu, 2);
        QCOMPARE(seen, 2);
        QVERIFY(!open);
    }

    void slotRunsOnceHoweverOftenConnected()
    {
        MenuReceiver receiver;
        const auto menu = makeMenu(1);
        QVERIFY(menu->connectItem(0, &receiver, "first()"));
        QVERIFY(menu->connectItem(0, &receiver, "first()"));
        QVERIFY(menu->connectItem(0, &receiver, " first( ) "));
        QVERIFY(menu->connectItem(0, &receiver, SLOT(first())));
        choose(*menu, 0);
        QCOMPARE(receiver.ran, QStringList("first"));
        QVERIFY(menu->disconnectItem(0, &receiver, "first()"));
        choose(*menu, 0);
        QCOMPARE(receiver.ran, QStringList("first"));
    }

    void everyConnectedSlotRuns()
    {
        MenuReceiver one;
        MenuReceiver other;
        const auto menu = makeMenu(1);
        QVERIFY(menu->connectItem(0, &one, "first()"));
        QVERIFY(menu->connectItem(0, &one, "second()"));
        QVERIFY(menu->connectItem(0, &other, "first()"));
        choose(*menu, 0);
        QCOMPARE(one.ran, QStringList({"first", "second"}));
        QCOMPARE(other.ran, QStringList("first"));
    }

    void disconnectingTakesOneSlotAway()
    {
        MenuReceiver receiver;
        const auto menu = makeMenu(2);
        QVERIFY(menu->connectItem(0, &receiver, "first()"));
        QVERIFY(menu->connectItem(0, &receiver, "second()"));
        QVERIFY(menu->isItemConnected(0, &receiver, "first()"));
        QVERIFY(menu->disconnectItem(0, &receiver, "first()"));
        QVERIFY(!menu->isItemConnected(0, &receiver, "first()"));
        QVERIFY(menu->isItemConnected(0, &receiver, "second()"));
        QVERIFY(!menu->isItemConnected(1, &receiver, "second()"));
        QVERIFY(!menu->isItemConnected(9, &receiver, "second()"));
        QVERIFY(!menu->disconnectItem(0, &receiver, "first()"));
        QVERIFY(!menu->disconnectItem(1, &receiver, "second()"));
        QVERIFY(!menu->disconnectItem(9, &receiver, "second()"));
        choose(*menu, 0);
        QCOMPARE(receiver.ran, QStringList("second"));
    }

    void whatCannotBeConnectedIsRefused_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("slot");
        QTest::newRow("item") << 9 << "first()";
        QTest::newRow("slot") << 0 << "third()";
        QTest::newRow("empty") << 0 << "";
        QTest::newRow("no parentheses") << 0 << "first";
        QTest::newRow("argument") << 0 << "withArgument(int)";
    }

    void whatCannotBeConnectedIsRefused()
    {
        QFETCH(int, id);
        QFETCH(QString, slot);
        MenuReceiver receiver;
        const auto menu = makeMenu(1);
        QVERIFY(!menu->connectItem(id, &receiver, slot.toUtf8().constData()));
        choose(*menu, 0);
        QVERIFY(receiver.ran.isEmpty());
    }

    void receiverThatIsGoneIsSkipped()
    {
        MenuReceiver staying;
        auto going = std::make_unique<MenuReceiver>();
        const auto menu = makeMenu(1);
        QVERIFY(menu->connectItem(0, going.get(), "first()"));
        QVERIFY(menu->connectItem(0, &staying, "first()"));
        going.reset();
        choose(*menu, 0);
        QCOMPARE(staying.ran, QStringList("first"));
    }

    void slotMayDeleteTheMenu()
    {
        MenuReceiver receiver;
        auto menu = makeMenu(3);
        auto submenu = makeMenu(3);
        menu->insertItem("more", submenu.get(), {}, true, 10, 0);
        QVERIFY(submenu->connectItem(1, &receiver, "first()"));
        QVERIFY(submenu->connectItem(1, &receiver, "second()"));
        receiver.whenRun = [&] {
            menu.reset();
            submenu.reset();
        };
        menu->show();
        pressKeys({PhoneKey::Return, PhoneKey::Down, PhoneKey::Return});
        QCOMPARE(receiver.ran, QStringList({"first", "second"}));
        QVERIFY(!menu);
    }

    void slotMayRebuildTheMenus()
    {
        MenuReceiver receiver;
        auto menu = makeMenu(3);
        receiver.whenRun = [&] {
            menu = makeMenu(40);
            QVERIFY(menu->connectItem(39, &receiver, "second()"));
            menu->show();
        };
        QVERIFY(menu->connectItem(2, &receiver, "first()"));
        choose(*menu, 2);
        QCOMPARE(ZScreen::instance()->active(), menu.get());
        receiver.whenRun = [] {};
        pressKeys({PhoneKey::Up, PhoneKey::Return});
        QCOMPARE(receiver.ran, QStringList({"first", "second"}));
    }

    void slotMayGrowTheMenuThatRunsIt()
    {
        MenuReceiver receiver;
        const auto menu = makeMenu(1);
        QVERIFY(menu->connectItem(0, &receiver, "first()"));
        receiver.whenRun = [&] {
            QVERIFY(menu->disconnectItem(0, &receiver, "first()"));
            for (int i = 1; i < 200; ++i)
                menu->insertItem("new", nullptr, {}, true, i, i);
            QVERIFY(menu->changeItem(0, "old", QPixmap()));
            QVERIFY(menu->connectItem(199, &receiver, "second()"));
        };
        choose(*menu, 0);
        receiver.whenRun = [] {};
        choose(*menu, 199);
        QCOMPARE(receiver.ran, QStringList({"first", "second"}));
    }

    void submenuThatIsGoneLeavesAPlainItem()
    {
        const auto menu = makeMenu();
        menu->insertItem("more", makeMenu(2).get(), {}, true, 5, 0);
        QCOMPARE(menu->submenuAt(0), nullptr);
        choose(*menu, 0);
        QCOMPARE(menu->getActiveItemId(), 5);
        QVERIFY(!menu->isVisible());
    }

    void menuGoesWithItsParent()
    {
        auto widget = std::make_unique<QWidget>();
        const QPointer<ZOptionsMenu> menu =
            new ZOptionsMenu(QRect(), widget.get(), nullptr, {}, ZSkinService::clsOptionsMenu);
        widget.reset();
        QTRY_VERIFY(menu.isNull());
    }
};

QUARN_TEST_MAIN(tst_ZOptionsMenu)
#include "tst_zoptionsmenu.moc"
