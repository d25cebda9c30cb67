#include "platform/zscreen.h"
#include "tests/platform/menufixture.h"
#include "tests/support/keys.h"
#include "tests/support/listeners.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"

/// Menus as programs that read the screen know them.
class tst_ZAccessibleMenu : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        main_ = showMainWidget();
        takeForActive(main_->window());
    }

    void cleanup() { main_.reset(); }

    void itemsAreMenuItems()
    {
        const auto menu = makeMenu();
        const auto submenu = makeMenu(1);
        menu->insertItem("\t\t\tCopy", nullptr, {}, true, 1, 1);
        menu->insertItem("\t\t\tPaste", nullptr, {}, false, 2, 2);
        menu->insertItem("\t\t\tMore", submenu.get(), {}, true, 3, 3);
        menu->show();
        QAccessibleInterface* spokenMenu = spoken(menu.get());
        QCOMPARE(spokenMenu->role(), QAccessible::PopupMenu);
        QVERIFY(spokenMenu->state().modal);
        QCOMPARE(childNames(*spokenMenu), (QStringList{"Copy", "Paste", "More"}));
        QAccessibleInterface* paste = spokenMenu->child(1);
        QCOMPARE(paste->role(), QAccessible::MenuItem);
        QVERIFY(paste->state().disabled);
        QVERIFY(!spokenMenu->child(0)->state().disabled);
        QVERIFY(!paste->state().hasPopup);
        QVERIFY(spokenMenu->child(2)->state().hasPopup);
        QCOMPARE(paste->text(QAccessible::Accelerator), QString("2"));
    }

    void tenthItemHasNoDigit()
    {
        const auto menu = makeMenu(10);
        QCOMPARE(spoken(menu.get())->child(8)->text(QAccessible::Accelerator), QString("9"));
        QCOMPARE(spoken(menu.get())->child(9)->text(QAccessible::Accelerator), QString());
    }

    void hiddenMenuIsInvisibleAndInert()
    {
        const auto menu = makeMenu(1);
        QAccessibleInterface* item = spoken(menu.get())->child(0);
        QVERIFY(item->state().invisible);
        QVERIFY(!act(item, QAccessibleActionInterface::pressAction()));
        menu->show();
        QVERIFY(!item->state().invisible);
    }

    void pressChooses()
    {
        const auto menu = makeMenu(3);
        MenuReceiver receiver;
        menu->connectItem(1, &receiver, "first()");
        menu->show();
        QVERIFY(act(spoken(menu.get())->child(1), QAccessibleActionInterface::pressAction()));
        QTRY_COMPARE(receiver.ran, QStringList{"first"});
        QVERIFY(menu->isHidden());
        QCOMPARE(menu->getActiveItemId(), 1);
    }

    void disabledItemCannotBePressed()
    {
        const auto menu = makeMenu(2);
        menu->setItemEnabled(1, false);
        menu->show();
        QAccessibleInterface* item = spoken(menu.get())->child(1);
        QVERIFY(!act(item, QAccessibleActionInterface::pressAction()));
        QVERIFY(act(item, QAccessibleActionInterface::setFocusAction()));
        QTRY_COMPARE(menu->currentPosition(), 1);
    }

    void submenuOpensAndIsCalledAsItsItem()
    {
        const auto menu = makeMenu(1);
        const auto submenu = makeMenu(2);
        menu->insertItem("\t\t\tMore", submenu.get(), {}, true, 1, 1);
        menu->show();
        QAccessibleInterface* item = spoken(menu.get())->child(1);
        QVERIFY(!act(item, QAccessibleActionInterface::pressAction()));
        QVERIFY(act(item, QAccessibleActionInterface::showMenuAction()));
        QTRY_VERIFY(submenu->isVisible());
        QCOMPARE(spoken(submenu.get())->text(QAccessible::Name), QString("More"));
        // The one below is inert now.
        QVERIFY(!act(item, QAccessibleActionInterface::showMenuAction()));
        submenu->hide();
        menu->hide();
    }

    void movingTellsTheItem()
    {
        const auto menu = makeMenu(3);
        const Listeners listeners;
        menu->show();
        QCOMPARE(listeners.names(QAccessible::PopupMenuStart).size(), 1);
        QTRY_VERIFY(listeners.names(QAccessible::Focus).contains("item 0"));
        pressKey(PhoneKey::Down);
        QCOMPARE(listeners.names(QAccessible::Focus).value(1), QString("item 1"));
        QAccessibleInterface* spokenMenu = spoken(menu.get());
        QVERIFY(spokenMenu->child(1)->state().focused);
        QVERIFY(!spokenMenu->child(0)->state().focused);
        QCOMPARE(spokenMenu->focusChild(), spokenMenu->child(1));
        menu->hide();
        QCOMPARE(listeners.names(QAccessible::PopupMenuEnd).size(), 1);
    }

    void itemIsWhereItIsSeen()
    {
        const auto menu = makeMenu(30);
        menu->show();
        QAccessibleInterface* spokenMenu = spoken(menu.get());
        QVERIFY(!spokenMenu->child(0)->state().offscreen);
        QVERIFY(spokenMenu->child(29)->state().offscreen);
        const QPoint middle = spokenMenu->child(2)->rect().center();
        QCOMPARE(spokenMenu->childAt(middle.x(), middle.y()), spokenMenu->child(2));
        menu->hide();
    }

private:
    std::unique_ptr<QWidget> main_;
};

QUARN_TEST_MAIN(tst_ZAccessibleMenu)
#include "tst_zaccessiblemenu.moc"
