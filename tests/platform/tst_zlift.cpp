#include "platform/keymap.h"
#include "platform/zlift.h"
#include "platform/zmotion.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "tests/platform/menufixture.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"

namespace
{

QImage liftedPicture()
{
    return ZScreen::instance()->grab().toImage();
}

const QWidget* liftOf(const ZOptionsMenu& menu)
{
    for (const QWidget* lift : ZScreen::instance()->findChildren<ZLift*>()) {
        if (lift->isVisible() && lift->geometry().contains(menu.geometry()))
            return lift;
    }
    return nullptr;
}

} // namespace

/// What is around a menu and how it comes.
class tst_ZLift : public QObject
{
    Q_OBJECT

private slots:
    void init() { main_ = showMainWidget(); }

    void cleanup()
    {
        ZMotion::setEnabled(false);
        main_.reset();
    }

    void menuHasAShadowOfTwoPixels()
    {
        const QImage before = liftedPicture();
        const auto menu = makeMenu(4);
        menu->show();
        const QImage open = liftedPicture();
        const QRect place = menu->geometry();
        const int x = place.center().x();
        const auto shade = [](const QImage& picture, int column, int row) {
            return qGray(picture.pixel(column, row));
        };
        for (int away = 1; away <= 2; ++away) {
            QVERIFY(shade(open, x, place.top() - away) < shade(before, x, place.top() - away));
            const int right = place.right() + away;
            QVERIFY(shade(open, right, place.center().y()) <
                    shade(before, right, place.center().y()));
        }
        QCOMPARE(open.pixel(x, place.top() - 3), before.pixel(x, place.top() - 3));
        // The nearer, the darker.
        QVERIFY(shade(open, x, place.top() - 1) < shade(open, x, place.top() - 2));
        menu->hide();
        QVERIFY(liftedPicture() == before);
    }

    void cornersAreRound()
    {
        const auto menu = makeMenu(4);
        menu->show();
        const QImage open = liftedPicture();
        const QColor outline = ZSkinService::look(ZSkinService::clsOptionsMenu).border;
        const QRect place = menu->geometry();
        // Straight edges are sharp; at the corners the outline leaves out the outermost pixel.
        QCOMPARE(open.pixelColor(place.center().x(), place.top()), outline);
        QCOMPARE(open.pixelColor(place.right(), place.center().y()), outline);
        const auto distance = [&outline](const QColor& colour) {
            return std::abs(qGray(colour.rgb()) - qGray(outline.rgb()));
        };
        for (const QPoint& corner : {place.topLeft(), place.topRight(), place.bottomRight()})
            QVERIFY(distance(open.pixelColor(corner)) > 20);
    }

    void shadowIsInNobodysWay()
    {
        const auto menu = makeMenu(4);
        menu->show();
        tapScreen({menu->geometry().right() + 2, menu->geometry().center().y()});
        QVERIFY(!menu->isVisible());
        QVERIFY(liftOf(*menu) == nullptr);
    }

    void goesWithItsMenu()
    {
        const auto count = [] { return ZScreen::instance()->findChildren<ZLift*>().size(); };
        const qsizetype before = count();
        auto menu = makeMenu(4);
        menu->show();
        QVERIFY(liftOf(*menu) != nullptr);
        menu.reset();
        QTRY_COMPARE(count(), before);
    }

    void submenuIsLiftedAboveItsOpener()
    {
        const auto submenu = makeMenu(3);
        const auto menu = makeMenu(4);
        menu->insertItem("more", submenu.get(), {}, true, 9, 0);
        menu->show();
        const QImage before = liftedPicture();
        pressKey('1');
        const QImage open = liftedPicture();
        const QRect place = submenu->geometry();
        const QPoint beside(place.left() - 1, place.center().y());
        QVERIFY(menu->geometry().contains(beside));
        QVERIFY(qGray(open.pixel(beside)) < qGray(before.pixel(beside)));
    }

    void menuIsInItsPlaceAtOnceWithoutMotion()
    {
        const auto menu = makeMenu(4);
        menu->show();
        const QRect place = menu->geometry();
        QCOMPARE(place.bottom(), 299);
        QCOMPARE(place.height(), 4 * ZSkinService::MenuRowHeight + 2);
    }

    void menuRisesWithMotion()
    {
        const auto menu = makeMenu(4);
        menu->show();
        const QRect place = menu->geometry();
        menu->hide();
        ZMotion::setEnabled(true);
        menu->show();
        QCOMPARE(menu->geometry(), place.adjusted(0, 8, 0, 0));
        QTRY_COMPARE(menu->geometry(), place);
    }

    void risingMenuAnswersAtOnce()
    {
        const auto submenu = makeMenu(3);
        const auto menu = makeMenu(4);
        menu->insertItem("more", submenu.get(), {}, true, 9, 1);
        ZMotion::setEnabled(true);
        menu->show();
        pressKey(PhoneKey::Down);
        QCOMPARE(menu->currentPosition(), 1);
        pressKey('2');
        QVERIFY(submenu->isVisible());
        pressKey('3');
        QCOMPARE(submenu->getActiveItemId(), 2);
        QVERIFY(!menu->isVisible() && !submenu->isVisible());
    }

    void submenuOfARisingMenuIsWhereItWouldBe()
    {
        const auto submenu = makeMenu(3);
        const auto menu = makeMenu(4);
        menu->insertItem("more", submenu.get(), {}, true, 9, 1);
        menu->show();
        pressKey('2');
        const QRect place = submenu->geometry();
        menu->closeAll();
        ZMotion::setEnabled(true);
        menu->show();
        pressKey('2');
        QTRY_COMPARE(submenu->geometry(), place);
    }

private:
    std::unique_ptr<QWidget> main_;
};

QUARN_TEST_MAIN(tst_ZLift)
#include "tst_zlift.moc"
