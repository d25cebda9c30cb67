#include "platform/zoptionsmenu.h"
#include "platform/zskinservice.h"
#include "tests/platform/softkeyfixture.h"
#include "tests/support/testmain.h"

#include <memory>

namespace
{

std::unique_ptr<ZOptionsMenu> menuOfOne()
{
    auto menu = std::make_unique<ZOptionsMenu>(QRect(), nullptr, nullptr, Qt::WindowFlags(),
                                               ZSkinService::clsOptionsMenu);
    menu->insertItem("item", nullptr, {}, true, 1, -1);
    return menu;
}

/// How many pixels of a half of the bar are text.
int inkIn(ZSoftKey& bar, int half)
{
    const QImage picture = bar.grab().toImage();
    int ink = 0;
    for (int x = half * 120; x < half * 120 + 120; ++x) {
        for (int y = 0; y < picture.height(); ++y)
            ink += picture.pixel(x, y) != picture.pixel(0, 0) ? 1 : 0;
    }
    return ink;
}

} // namespace

class tst_ZSoftKey : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fixture_ = std::make_unique<SoftKeyFixture>();
        bar_ = fixture_->bar;
    }

    void cleanup() { fixture_.reset(); }

    void textsAreAtTheirSides()
    {
        QCOMPARE(inkIn(*bar_, 0) + inkIn(*bar_, 1), 0);
        bar_->setText(ZSoftKey::Left, "Options");
        QCOMPARE(bar_->text(ZSoftKey::Left), QString("Options"));
        QVERIFY(inkIn(*bar_, 0) > 0);
        QCOMPARE(inkIn(*bar_, 1), 0);
        bar_->setText(ZSoftKey::Left, QString());
        bar_->setText(ZSoftKey::Right, "Back", 7);
        QCOMPARE(inkIn(*bar_, 0), 0);
        QVERIFY(inkIn(*bar_, 1) > 0);
    }

    void keysThatDoNotExistChangeNothing_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("third") << 2;
        QTest::newRow("negative") << -1;
        QTest::newRow("large") << 1000000;
    }

    void keysThatDoNotExistChangeNothing()
    {
        QFETCH(int, key);
        const auto menu = menuOfOne();
        bar_->setText(key, "x");
        bar_->setOptMenu(key, menu.get());
        QCOMPARE(bar_->text(key), QString());
        QCOMPARE(bar_->optMenu(key), nullptr);
        QVERIFY(!bar_->activate(key));
        QCOMPARE(inkIn(*bar_, 0) + inkIn(*bar_, 1), 0);
        QVERIFY(!menu->isVisible());
    }

    void keyOpensItsMenu()
    {
        const auto menu = menuOfOne();
        QVERIFY(!bar_->activate(ZSoftKey::Left));
        bar_->setOptMenu(ZSoftKey::Left, menu.get());
        QCOMPARE(bar_->optMenu(ZSoftKey::Left), menu.get());
        QVERIFY(!bar_->activate(ZSoftKey::Right));
        QVERIFY(!menu->isVisible());
        QVERIFY(bar_->activate(ZSoftKey::Left));
        QVERIFY(menu->isVisible());
        menu->closeAll();
        bar_->setOptMenu(ZSoftKey::Left, nullptr);
        QVERIFY(!bar_->activate(ZSoftKey::Left));
    }

    void menuThatIsGoneIsForgotten()
    {
        bar_->setOptMenu(ZSoftKey::Left, menuOfOne().get());
        QCOMPARE(bar_->optMenu(ZSoftKey::Left), nullptr);
        QVERIFY(!bar_->activate(ZSoftKey::Left));
    }

    void tapOnASideOpensItsMenu_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("x");
        QTest::newRow("left edge") << 0 << 0;
        QTest::newRow("left of the middle") << 0 << 119;
        QTest::newRow("right of the middle") << 1 << 120;
        QTest::newRow("right edge") << 1 << 239;
    }

    void tapOnASideOpensItsMenu()
    {
        QFETCH(int, key);
        QFETCH(int, x);
        const auto menu = menuOfOne();
        bar_->setOptMenu(key, menu.get());
        QWindow* window = ZScreen::instance()->window()->windowHandle();
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, {239 - x, 310});
        QVERIFY(!menu->isVisible());
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, {x, 310});
        QVERIFY(menu->isVisible());
        QCOMPARE(menu->getActiveItemId(), -1);
    }

private:
    std::unique_ptr<SoftKeyFixture> fixture_;
    ZSoftKey* bar_ = nullptr;
};

QUARN_TEST_MAIN(tst_ZSoftKey)
#include "tst_zsoftkey.moc"
