#include "platform/zmainwidget.h"
#include "platform/znavtabwidget.h"
#include "platform/zskinservice.h"
#include "platform/zsoftkey.h"
#include "tests/platform/menufixture.h"
#include "tests/support/keys.h"
#include "tests/support/listeners.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

/// Tabs, soft keys, status and title as programs that read the screen know them.
class tst_ZAccessibleBars : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        main_ = std::make_unique<ZKbMainWidget>(ZMainWidget::TitleCentred, nullptr, "main",
                                                Qt::WindowFlags());
        main_->setMainWidgetTitle("Title");
        bar_ = new ZSoftKey(QString(), main_.get(), main_.get());
        main_->setSoftKey(bar_);
        tabs_ = new ZNavTabWidget(1, false, false, main_.get(), "tabs", ZSkinService::clsNavTab);
        for (int i = 0; i < 3; ++i) {
            auto* page = new QWidget;
            page->setFocusPolicy(Qt::StrongFocus);
            tabs_->addTab(page, QPixmap(), i == 2 ? QString("Label") : QString());
        }
        tabs_->currentPage()->setAccessibleName("First page");
        main_->show();
        takeForActive(main_->window());
    }

    void cleanup() { main_.reset(); }

    void tabsAreNamedByLabelPageOrNumber()
    {
        const QAccessibleInterface* list = tabList();
        QCOMPARE(list->role(), QAccessible::PageTabList);
        QCOMPARE(childNames(*list), (QStringList{"First page", "2", "Label"}));
        QCOMPARE(list->child(0)->role(), QAccessible::PageTab);
        QVERIFY(list->child(0)->state().selected);
        QVERIFY(!list->child(1)->state().selected);
    }

    void pressTurnsToATab()
    {
        QVERIFY(act(tabList()->child(2), QAccessibleActionInterface::pressAction()));
        QTRY_COMPARE(tabs_->currentPageIndex(), 2);
        QVERIFY(tabList()->child(2)->state().selected);
        QVERIFY(!tabList()->child(0)->state().selected);
    }

    void anotherTabIsTold()
    {
        tabList();
        const Listeners listeners;
        tabs_->setCurrentPage(2);
        QCOMPARE(listeners.names(QAccessible::Selection), (QStringList{"First page", "Label"}));
    }

    void tabIsWhereItIsSeen()
    {
        QAccessibleInterface* list = tabList();
        const QPoint middle = list->child(1)->rect().center();
        QCOMPARE(list->childAt(middle.x(), middle.y()), list->child(1));
    }

    void softKeysAreButtons()
    {
        bar_->setText(ZSoftKey::Left, "Options");
        bar_->setStatus("folder", "1/7");
        const QAccessibleInterface* bar = spoken(bar_);
        QCOMPARE(childNames(*bar), (QStringList{"Options", "", "folder, 1/7"}));
        QCOMPARE(bar->child(0)->role(), QAccessible::Button);
        QCOMPARE(bar->child(2)->role(), QAccessible::StatusBar);
        QVERIFY(!bar->child(0)->state().invisible);
        QVERIFY(bar->child(1)->state().invisible);
        QVERIFY(!bar->child(2)->state().invisible);
        QVERIFY(!bar->child(0)->state().hasPopup);
    }

    void pressOpensTheMenu()
    {
        const auto menu = makeMenu(1);
        bar_->setText(ZSoftKey::Left, "Options");
        bar_->setOptMenu(ZSoftKey::Left, menu.get());
        QAccessibleInterface* key = spoken(bar_)->child(0);
        QVERIFY(key->state().hasPopup);
        QVERIFY(act(key, QAccessibleActionInterface::pressAction()));
        QTRY_VERIFY(menu->isVisible());
        QCOMPARE(spoken(menu.get())->text(QAccessible::Name), QString("Options"));
    }

    void keysAreThoseOfTheMenuThatIsOpen()
    {
        const auto menu = makeMenu(1);
        bar_->setText(ZSoftKey::Left, "Options");
        bar_->setStatus("folder", "1/7");
        QAccessibleInterface* bar = spoken(bar_);
        const Listeners listeners;
        menu->show();
        QCOMPARE(childNames(*bar), (QStringList{"Select", "Back", ""}));
        QVERIFY(bar->child(2)->state().invisible);
        QVERIFY(listeners.names(QAccessible::NameChanged).contains("Select"));
        QVERIFY(listeners.names(QAccessible::NameChanged).contains("Back"));
        QVERIFY(act(bar->child(1), QAccessibleActionInterface::pressAction()));
        QTRY_VERIFY(menu->isHidden());
        QCOMPARE(childNames(*bar), (QStringList{"Options", "", "folder, 1/7"}));
    }

    void keyWithoutATextDoesNothing()
    {
        QVERIFY(!act(spoken(bar_)->child(1), QAccessibleActionInterface::pressAction()));
    }

    void newStatusIsTold()
    {
        bar_->setStatus("folder", "1/7");
        const Listeners listeners;
        bar_->setStatus("folder", "2/7");
        QVERIFY(listeners.names(QAccessible::NameChanged).contains("folder, 2/7"));
    }

    void screenIsAWindow() { QCOMPARE(spoken(main_->window())->role(), QAccessible::Window); }

    void titleIsAHeading()
    {
        QStringList headings;
        const QAccessibleInterface* main = spoken(main_.get());
        for (int i = 0; i < main->childCount(); ++i) {
            if (main->child(i)->role() == QAccessible::Heading)
                headings.append(main->child(i)->text(QAccessible::Name));
        }
        QCOMPARE(headings, QStringList{"Title"});
    }

private:
    QAccessibleInterface* tabList() const
    {
        const QAccessibleInterface* tabs = spoken(tabs_);
        for (int i = 0; i < tabs->childCount(); ++i) {
            if (tabs->child(i)->role() == QAccessible::PageTabList)
                return tabs->child(i);
        }
        return nullptr;
    }

    std::unique_ptr<ZKbMainWidget> main_;
    ZSoftKey* bar_ = nullptr;
    ZNavTabWidget* tabs_ = nullptr;
};

QUARN_TEST_MAIN(tst_ZAccessibleBars)
#include "tst_zaccessiblebars.moc"
