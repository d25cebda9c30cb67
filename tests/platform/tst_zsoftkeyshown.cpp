#include "platform/keymap.h"
#include "platform/zmainwidget.h"
#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/platform/menufixture.h"
#include "tests/platform/softkeyfixture.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <QVBoxLayout>

namespace
{

/// A main widget with a bar, whose left key has a menu of a plain item, one that is disabled and
/// one with a submenu.
class BarWindow : public ZKbMainWidget
{
public:
    BarWindow() : ZKbMainWidget(TitleUnderlined, nullptr, "Main", {})
    {
        hide();
        qApp->installEventFilter(this);
        contentLayout()->addWidget(new QWidget);
        bar = new ZSoftKey(QString(), this, this);
        setSoftKey(bar);
        bar->setText(ZSoftKey::Left, "Options");
        bar->setText(ZSoftKey::Right, "Exit");
        bar->setOptMenu(ZSoftKey::Left, &menu);
        menu.insertItem("plain", nullptr, {}, true, 1, -1);
        menu.insertItem("disabled", nullptr, {}, false, 2, -1);
        menu.insertItem("more", &submenu, {}, true, 3, -1);
        submenu.insertItem("inner", nullptr, {}, true, 7, -1);
        show();
    }

    QString texts() const
    {
        return bar->shownText(ZSoftKey::Left) + '|' + bar->shownText(ZSoftKey::Right);
    }

    QImage picture() const { return bar->grab().toImage(); }

    ZOptionsMenu menu{QRect(), nullptr, nullptr, {}, ZSkinService::clsOptionsMenu};
    ZOptionsMenu submenu{QRect(), nullptr, nullptr, {}, ZSkinService::clsOptionsMenu};
    ZSoftKey* bar = nullptr;
};

/// A box that takes all keys.
std::unique_ptr<QWidget> makeBox(const QRect& area = QRect(60, 100, 120, 80))
{
    auto box = std::make_unique<QWidget>(ZScreen::instance());
    box->hide();
    box->setGeometry(area);
    ZScreen::instance()->place(box.get(), ZScreen::Layer::Box);
    return box;
}

void tapBar(int x)
{
    tapScreen({x, 310});
}

} // namespace

/// What stands in the bar while something is open over it.
class tst_ZSoftKeyShown : public QObject
{
    Q_OBJECT

private slots:
    void init() { ZOptionsMenu::setSoftKeyTexts("Select", "Back"); }

    void ownTextsAreShownWhileItsWidgetHasTheKeys()
    {
        const BarWindow window;
        QCOMPARE(window.texts(), QString("Options|Exit"));
        QCOMPARE(window.bar->shownText(2), QString());
        QCOMPARE(window.bar->shownText(-1), QString());
    }

    void openMenuSaysSelectAndBack()
    {
        const BarWindow window;
        const QImage before = window.picture();
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(window.texts(), QString("Select|Back"));
        QVERIFY(window.picture() != before);
        // The bar itself is what it was.
        QCOMPARE(window.bar->text(ZSoftKey::Left), QString("Options"));
        QCOMPARE(window.bar->text(ZSoftKey::Right), QString("Exit"));
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(window.texts(), QString("Options|Exit"));
        QVERIFY(window.picture() == before);
    }

    void menuSaysWhatItWasToldInAllMenus()
    {
        const BarWindow window;
        ZOptionsMenu::setSoftKeyTexts("Wahl", QString());
        pressKeys({PhoneKey::SoftLeft});
        QCOMPARE(window.texts(), QString("Wahl|"));
        pressKeys({'3'});
        QCOMPARE(window.texts(), QString("Wahl|"));
    }

    void overAnItemThatCannotBeChosenThereIsNothingToSelect()
    {
        BarWindow window;
        pressKeys({PhoneKey::SoftLeft, PhoneKey::Down});
        QCOMPARE(window.texts(), QString("|Back"));
        pressKey(PhoneKey::SoftLeft);
        QVERIFY(window.menu.isVisible());
        window.menu.setItemEnabled(2, true);
        QCOMPARE(window.texts(), QString("Select|Back"));
        window.menu.setItemEnabled(2, false);
        pressKey(PhoneKey::Down);
        QCOMPARE(window.texts(), QString("Select|Back"));
    }

    void emptyMenuHasNothingToSelect()
    {
        const BarWindow window;
        ZOptionsMenu empty{QRect(), nullptr, nullptr, {}, ZSkinService::clsOptionsMenu};
        empty.show();
        QCOMPARE(window.texts(), QString("|Back"));
    }

    void submenuIsLikeAMenuAndLeavesOneBehind()
    {
        const BarWindow window;
        pressKeys({PhoneKey::SoftLeft, '3'});
        QCOMPARE(window.texts(), QString("Select|Back"));
        pressKey(PhoneKey::Left);
        QCOMPARE(window.texts(), QString("Select|Back"));
        pressKeys({'3', '1'});
        QCOMPARE(window.texts(), QString("Options|Exit"));
    }

    void boxThatSaysNothingLeavesTheBarEmpty()
    {
        const BarWindow window;
        const auto box = makeBox();
        box->show();
        QCOMPARE(window.texts(), QString("|"));
        const auto& look = ZSkinService::look(ZSkinService::clsSoftKey);
        QVERIFY(isPlain(window.picture(), window.bar->rect(), look.background));
        box->hide();
        QCOMPARE(window.texts(), QString("Options|Exit"));
    }

    void boxMaySayWhatItsKeysDoAndChangeIt()
    {
        const BarWindow window;
        auto box = makeBox();
        ZScreen::instance()->setSoftKeys(box.get(), {{"Yes", "No"}, {}});
        QCOMPARE(window.texts(), QString("Options|Exit"));
        box->show();
        QCOMPARE(window.texts(), QString("Yes|No"));
        ZScreen::instance()->setSoftKeys(box.get(), {{"Stop", QString()}, {}});
        QCOMPARE(window.texts(), QString("Stop|"));
        const auto above = makeBox();
        above->show();
        QCOMPARE(window.texts(), QString("|"));
        above->hide();
        QCOMPARE(window.texts(), QString("Stop|"));
        box.reset();
        QCOMPARE(window.texts(), QString("Options|Exit"));
    }

    void whatWasNotPlacedHasNoSoftKeys()
    {
        const BarWindow window;
        QWidget stranger;
        ZScreen::instance()->setSoftKeys(&stranger, {{"Yes", "No"}, {}});
        QCOMPARE(window.texts(), QString("Options|Exit"));
    }

    void textThatIsSetMeanwhileComesAfterwards()
    {
        const BarWindow window;
        pressKey(PhoneKey::SoftLeft);
        window.bar->setText(ZSoftKey::Left, "Other");
        QCOMPARE(window.texts(), QString("Select|Back"));
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(window.texts(), QString("Other|Exit"));
    }

    void barOfAWidgetThatGetsNoInputIsEmpty()
    {
        const BarWindow window;
        {
            const ZScreen::MainInputPause pause;
            QCOMPARE(window.texts(), QString("|"));
            const auto box = makeBox();
            ZScreen::instance()->setSoftKeys(box.get(), {{"Yes", "No"}, {}});
            box->show();
            QCOMPARE(window.texts(), QString("Yes|No"));
        }
        QCOMPARE(window.texts(), QString("Options|Exit"));
    }

    void eachMainWidgetHasItsOwnBar()
    {
        const BarWindow below;
        {
            const BarWindow above;
            above.bar->setText(ZSoftKey::Left, "Send");
            QCOMPARE(above.texts(), QString("Send|Exit"));
            pressKey(PhoneKey::SoftLeft);
            QCOMPARE(above.texts(), QString("Select|Back"));
        }
        QCOMPARE(below.texts(), QString("Options|Exit"));
    }

    void barIsPaintedWhenItSaysSomethingElseAndOnlyThen()
    {
        const BarWindow window;
        PaintCounter painted(window.bar);
        QTRY_VERIFY(painted.count > 0);
        int before = painted.count;
        for (const int key : {PhoneKey::SoftLeft, PhoneKey::Down, PhoneKey::Down, PhoneKey::Left}) {
            pressKey(key);
            QTRY_COMPARE(painted.count, before + 1);
            before = painted.count;
        }
        pressKeys({PhoneKey::SoftLeft});
        QTRY_COMPARE(painted.count, before + 1);
        pressKeys({PhoneKey::Up, PhoneKey::Right, PhoneKey::Left, PhoneKey::Down});
        QCoreApplication::processEvents();
        QCOMPARE(painted.count, before + 1);
    }

    void barIsPaintedWhenInputIsPausedAndWhenABoxIsDeleted()
    {
        const BarWindow window;
        PaintCounter painted(window.bar);
        QTRY_VERIFY(painted.count > 0);
        const int before = painted.count;
        auto box = makeBox();
        box->show();
        QTRY_COMPARE(painted.count, before + 1);
        box.reset();
        QTRY_COMPARE(painted.count, before + 2);
        {
            const ZScreen::MainInputPause pause;
            QTRY_COMPARE(painted.count, before + 3);
        }
        QTRY_COMPARE(painted.count, before + 4);
    }

    void tapOnSelectChooses()
    {
        const BarWindow window;
        pressKeys({PhoneKey::SoftLeft, PhoneKey::Up});
        tapBar(20);
        QCOMPARE(ZScreen::instance()->active(), &window.submenu);
        tapBar(119);
        QCOMPARE(window.submenu.getActiveItemId(), 7);
        QVERIFY(!window.menu.isVisible());
    }

    void tapOnBackGoesOneMenuBack()
    {
        const BarWindow window;
        pressKeys({PhoneKey::SoftLeft, '3'});
        tapBar(220);
        QCOMPARE(ZScreen::instance()->active(), &window.menu);
        tapBar(120);
        QCOMPARE(ZScreen::instance()->active(), &window);
        QCOMPARE(window.menu.getActiveItemId(), -1);
    }

    void secondOfTwoQuickTapsCounts()
    {
        const BarWindow window;
        pressKeys({PhoneKey::SoftLeft, '3'});
        QTest::mouseDClick(screenWindow(), Qt::LeftButton, Qt::NoModifier, {220, 310});
        QCOMPARE(ZScreen::instance()->active(), &window);
    }

    void tapWhereNothingStandsIsATapBesideTheMenu()
    {
        const BarWindow window;
        pressKeys({PhoneKey::SoftLeft, PhoneKey::Down});
        tapBar(20);
        QCOMPARE(ZScreen::instance()->active(), &window);
        QCOMPARE(window.menu.getActiveItemId(), -1);
    }

    void longTextsAreCutAndDoNotMeet_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        const QString endless(300, QLatin1Char('W'));
        QTest::newRow("left") << endless << "Back";
        QTest::newRow("right") << "Select" << endless;
        QTest::newRow("both") << endless << endless;
    }

    void longTextsAreCutAndDoNotMeet()
    {
        QFETCH(QString, left);
        QFETCH(QString, right);
        const BarWindow window;
        const auto& look = ZSkinService::look(ZSkinService::clsSoftKey);
        const auto inkWith = [&](const QString& one, const QString& other) {
            window.bar->setText(ZSoftKey::Left, one);
            window.bar->setText(ZSoftKey::Right, other);
            return window.picture();
        };
        const QImage both = inkWith(left, right);
        const QRect bar = window.bar->rect();
        // From the middle of the gap on each side has its text.
        int widest = 0;
        int run = 0;
        for (int x = 20; x < 220; ++x) {
            const bool empty =
                inkBounds(both, QRect(x, 0, 1, bar.height()), look.background).isEmpty();
            run = empty ? run + 1 : 0;
            widest = std::max(widest, run);
        }
        QVERIFY2(widest >= 8, qPrintable(QString::number(widest)));
        const QRect ink = inkBounds(both, bar, look.background);
        QVERIFY(ink.left() >= 5 && ink.right() <= 235);
        // A short text beside a long one is whole.
        if (left.size() < 20) {
            const QImage alone = inkWith(left, QString());
            const int width = inkBounds(alone, bar, look.background).right() + 2;
            QVERIFY(alone.copy(0, 0, width, 20) == both.copy(0, 0, width, 20));
        }
        if (right.size() < 20) {
            const QImage alone = inkWith(QString(), right);
            const int from = inkBounds(alone, bar, look.background).left() - 2;
            QVERIFY(alone.copy(from, 0, 240 - from, 20) == both.copy(from, 0, 240 - from, 20));
        }
    }
};

QUARN_TEST_MAIN(tst_ZSoftKeyShown)
#include "tst_zsoftkeyshown.moc"
