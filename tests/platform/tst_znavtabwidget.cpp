#include "platform/keymap.h"
#include "platform/znavtabwidget.h"
#include "platform/zskinservice.h"
#include "tests/support/drawntexts.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <QLineEdit>
#include <QPixmap>
#include <QSignalSpy>

#include <memory>

class tst_ZNavTabWidget : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        main_ = showMainWidget();
        tabs_ = new ZNavTabWidget(1, false, false, main_.get(), "tabs", ZSkinService::clsNavTab);
        tabs_->setGeometry(0, 0, 240, 300);
        tabs_->show();
        takeForActive(main_->window());
    }

    void cleanup() { main_.reset(); }

    void firstPageBecomesCurrent()
    {
        QCOMPARE(tabs_->count(), 0);
        QCOMPARE(tabs_->currentPageIndex(), -1);
        QCOMPARE(tabs_->currentPage(), nullptr);
        addPages(3);
        QCOMPARE(tabs_->count(), 3);
        QCOMPARE(tabs_->currentPageIndex(), 0);
        QCOMPARE(tabs_->currentPage(), pages_.at(0));
        QVERIFY(pages_.at(0)->isVisible());
        QVERIFY(!pages_.at(1)->isVisible());
    }

    void pageFillsWhatIsBelowTheBar()
    {
        addPages(1);
        QTRY_COMPARE(QRect(pages_.at(0)->mapTo(tabs_, QPoint()), pages_.at(0)->size()),
                     QRect(0, ZSkinService::TabBarHeight, 240, 300 - ZSkinService::TabBarHeight));
    }

    void labelKeepsToItsTab()
    {
        for (const QString& label : {QString(100, 'W'), QString("short"), QString(100, 'M')}) {
            QPixmap icon(16, 16);
            icon.fill(Qt::red);
            tabs_->addTab(new QWidget, icon, label);
        }
        const QList<DrawnText> drawn = textsDrawnBy(*tabs_);
        QCOMPARE(drawn.size(), 3);
        QVERIFY(isDrawn(drawn, "short"));
        for (int i = 0; i < drawn.size(); ++i)
            QCOMPARE(misplaced({drawn.at(i)}, QRectF(80 * i, 0, 80, 22)), QString());
    }

    void leftAndRightGoRound_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("changes");
        const int left = PhoneKey::Left;
        const int right = PhoneKey::Right;
        QTest::newRow("right") << 3 << QList<int>{right} << 1 << 1;
        QTest::newRow("twice right") << 3 << QList<int>{right, right} << 2 << 2;
        QTest::newRow("right from the last") << 3 << QList<int>{right, right, right} << 0 << 3;
        QTest::newRow("left from the first") << 3 << QList<int>{left} << 2 << 1;
        QTest::newRow("there and back") << 3 << QList<int>{right, left} << 0 << 2;
        QTest::newRow("two pages") << 2 << QList<int>{left, left} << 0 << 2;
        QTest::newRow("one page") << 1 << QList<int>{left, right} << 0 << 0;
        QTest::newRow("other keys") << 3 << QList<int>{PhoneKey::Up, PhoneKey::Down, '5'} << 0 << 0;
    }

    void leftAndRightGoRound()
    {
        QFETCH(int, count);
        QFETCH(QList<int>, keys);
        QFETCH(int, page);
        addPages(count);
        pages_.at(0)->setFocus();
        QSignalSpy changed(tabs_, &ZNavTabWidget::currentChanged);
        for (const int key : keys)
            pressKey(key);
        QCOMPARE(tabs_->currentPageIndex(), page);
        QTEST(int(changed.count()), "changes");
        QVERIFY(pages_.at(page)->hasFocus());
        QVERIFY(pages_.at(page)->isVisible());
        if (!changed.isEmpty())
            QCOMPARE(changed.last().at(0).value<QWidget*>(), pages_.at(page));
    }

    void keysWithoutPagesDoNothing()
    {
        tabs_->setFocus();
        pressKey(PhoneKey::Right);
        pressKey(PhoneKey::Left);
        QCOMPARE(tabs_->currentPageIndex(), -1);
    }

    void currentPageIsKnownWhenTheChangeIsTold()
    {
        addPages(3);
        int seen = -1;
        bool focused = false;
        connect(tabs_, &ZNavTabWidget::currentChanged, this, [&](QWidget* page) {
            seen = tabs_->currentPageIndex();
            focused = page->hasFocus();
        });
        tabs_->setCurrentPage(2);
        QCOMPARE(seen, 2);
        QVERIFY(focused);
    }

    void pageThatTakesTheKeysKeepsThem()
    {
        auto* field = new QLineEdit("abc");
        tabs_->addTab(field, {}, {});
        addPages(1);
        field->setFocus();
        field->setCursorPosition(1);
        pressKey(PhoneKey::Right);
        QCOMPARE(field->cursorPosition(), 2);
        QCOMPARE(tabs_->currentPageIndex(), 0);
    }

    void settingTheCurrentOrAMissingPageDoesNothing()
    {
        addPages(2);
        QSignalSpy changed(tabs_, &ZNavTabWidget::currentChanged);
        for (const int index : {0, 2, -1, 100})
            tabs_->setCurrentPage(index);
        QCOMPARE(tabs_->currentPageIndex(), 0);
        QCOMPARE(changed.count(), 0);
    }

    void tapOnATabShowsItsPage()
    {
        addPages(3);
        QSignalSpy changed(tabs_, &ZNavTabWidget::currentChanged);
        tapAt(239);
        QCOMPARE(tabs_->currentPageIndex(), 2);
        tapAt(80);
        QCOMPARE(tabs_->currentPageIndex(), 1);
        tapAt(159);
        QCOMPARE(tabs_->currentPageIndex(), 1);
        tapAt(0);
        QCOMPARE(tabs_->currentPageIndex(), 0);
        QCOMPARE(changed.count(), 3);
        QVERIFY(pages_.at(0)->hasFocus());
    }

    void tapWithoutTabsDoesNothing()
    {
        tapAt(10);
        QCOMPARE(tabs_->currentPageIndex(), -1);
    }

    void pageMayNotTakeTheFocusOfABox()
    {
        addPages(2);
        pages_.at(0)->setFocus();
        QWidget box(ZScreen::instance());
        box.hide();
        ZScreen::instance()->place(&box, ZScreen::Layer::Box);
        box.show();
        tabs_->setCurrentPage(1);
        QVERIFY(box.hasFocus());
        box.hide();
        QVERIFY(pages_.at(1)->hasFocus());
    }

    void tabsAreDrawnWithTheirIconsAndTheCurrentMarked()
    {
        tabs_->addTab(new QWidget, coloured(Qt::red), QString());
        tabs_->addTab(new QWidget, coloured(Qt::green), QString());
        const QImage before = tabs_->grab().toImage();
        QCOMPARE(before.pixelColor(60, 11), QColor(Qt::red));
        QCOMPARE(before.pixelColor(180, 11), QColor(Qt::green));
        QVERIFY(before.pixel(5, 11) != before.pixel(125, 11));
        // A line under the one in front, which tells it where both grounds are dark.
        const QColor mark = ZSkinService::look(ZSkinService::clsNavTab).mark;
        QCOMPARE(before.pixelColor(5, ZSkinService::TabBarHeight - 1), mark);
        QVERIFY(before.pixelColor(125, ZSkinService::TabBarHeight - 1) != mark);
        tabs_->setCurrentPage(1);
        const QImage after = tabs_->grab().toImage();
        QCOMPARE(after.pixel(125, 11), before.pixel(5, 11));
        QCOMPARE(after.pixel(5, 11), before.pixel(125, 11));
    }

private:
    void addPages(int count)
    {
        pages_.clear();
        for (int i = 0; i < count; ++i) {
            pages_.append(new QWidget);
            tabs_->addTab(pages_.last(), QPixmap(), QString());
        }
    }

    static void tapAt(int x)
    {
        QTest::mouseClick(ZScreen::instance()->window()->windowHandle(), Qt::LeftButton,
                          Qt::NoModifier, {x, 10});
    }

    std::unique_ptr<QWidget> main_;
    ZNavTabWidget* tabs_ = nullptr;
    QList<QWidget*> pages_;
};

QUARN_TEST_MAIN(tst_ZNavTabWidget)
#include "tst_znavtabwidget.moc"
