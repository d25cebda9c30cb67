#include "platform/zscreen.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QLineEdit>
#include <QPainter>
#include <QSignalSpy>
#include <QWindow>

#include <memory>

namespace
{

/// A coloured top-level widget with two fields that can have the focus.
class Panel : public QWidget
{
public:
    Panel(ZScreen::Layer layer, const QRect& area, QColor colour)
        : QWidget(ZScreen::instance()), colour_(colour)
    {
        hide();
        setFocusPolicy(Qt::StrongFocus);
        setGeometry(area);
        ZScreen::instance()->place(this, layer);
        first.setGeometry(0, 0, 40, 10);
        second.setGeometry(0, 10, 40, 10);
    }

    QWidget first{this};
    QWidget second{this};
    int presses = 0;
    int releases = 0;
    int wheels = 0;
    QList<int> keys;

protected:
    void paintEvent(QPaintEvent* /*event*/) override { QPainter(this).fillRect(rect(), colour_); }
    void mousePressEvent(QMouseEvent* /*event*/) override { ++presses; }
    void mouseReleaseEvent(QMouseEvent* /*event*/) override { ++releases; }
    void wheelEvent(QWheelEvent* /*event*/) override { ++wheels; }
    void keyPressEvent(QKeyEvent* event) override { keys.append(event->key()); }

private:
    QColor colour_;
};

constexpr QRect Whole(0, 0, 240, 320);
constexpr QRect Middle(60, 100, 120, 80);

/// The display without a screen never takes the focus from a window that is hidden, so the toolkit
/// does not notice that the window has it when it is shown again.
void activateWindow()
{
    takeForActive(ZScreen::instance()->window());
}

} // namespace

class tst_ZScreen : public QObject
{
    Q_OBJECT

private slots:
    void isOfThePhonesSize()
    {
        QCOMPARE(ZScreen::instance()->size(), QSize(240, 320));
        QCOMPARE(ZScreen::instance(), ZScreen::instance());
    }

    void childrenAreAtScreenCoordinates()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        main.show();
        box.show();
        const QImage image = ZScreen::instance()->grab().toImage();
        QCOMPARE(image.size(), QSize(240, 320));
        QCOMPARE(image.pixelColor(59, 100), QColor(Qt::green));
        QCOMPARE(image.pixelColor(60, 100), QColor(Qt::red));
        QCOMPARE(image.pixelColor(179, 179), QColor(Qt::red));
        QCOMPARE(image.pixelColor(180, 179), QColor(Qt::green));
    }

    void windowIsShownWithTheFirstAndHiddenWithTheLast()
    {
        const QWidget* shown = ZScreen::instance()->window();
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        auto box = std::make_unique<Panel>(ZScreen::Layer::Box, Middle, Qt::red);
        QVERIFY(!shown->isVisible());
        main.show();
        QVERIFY(shown->isVisible());
        box->show();
        main.hide();
        QVERIFY(shown->isVisible());
        QCOMPARE(ZScreen::instance()->active(), box.get());
        box.reset();
        QVERIFY(!shown->isVisible());
        QCOMPARE(ZScreen::instance()->active(), nullptr);
        main.show();
        QVERIFY(shown->isVisible());
    }

    void raisingShowsNothingByItself()
    {
        ZScreen::instance()->raiseWindow();
        QVERIFY(!ZScreen::instance()->window()->isVisible());
    }

    void laterOnesAreAboveEarlierOnes()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel lower(ZScreen::Layer::Box, Middle, Qt::red);
        Panel upper(ZScreen::Layer::Box, Middle, Qt::blue);
        main.show();
        upper.show();
        lower.show();
        QCOMPARE(ZScreen::instance()->active(), &lower);
        lower.hide();
        QCOMPARE(ZScreen::instance()->active(), &upper);
        lower.show();
        QCOMPARE(ZScreen::instance()->grab().toImage().pixelColor(100, 150), QColor(Qt::red));
        upper.hide();
        QCOMPARE(ZScreen::instance()->active(), &lower);
        QVERIFY(ZScreen::instance()->isActive(&lower.first));
        QVERIFY(!ZScreen::instance()->isActive(&main));
        QVERIFY(!ZScreen::instance()->isActive(nullptr));
    }

    void mainWidgetComesUpBelowBoxes()
    {
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        box.show();
        main.show();
        QCOMPARE(ZScreen::instance()->active(), &box);
        QCOMPARE(ZScreen::instance()->grab().toImage().pixelColor(100, 150), QColor(Qt::red));
        QCOMPARE(ZScreen::instance()->grab().toImage().pixelColor(10, 10), QColor(Qt::green));
    }

    void showingAgainChangesNoOrder()
    {
        Panel lower(ZScreen::Layer::Box, Middle, Qt::red);
        Panel upper(ZScreen::Layer::Box, Middle, Qt::blue);
        lower.show();
        upper.show();
        lower.show();
        QCOMPARE(ZScreen::instance()->active(), &upper);
    }

    void fingersReachOnlyTheTopmost()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        main.show();
        tapScreen({10, 300});
        QCOMPARE(main.presses, 1);
        box.show();
        QSignalSpy outside(ZScreen::instance(), &ZScreen::pressedOutside);
        tapScreen({10, 300});
        QCOMPARE(main.presses, 1);
        QCOMPARE(main.releases, 1);
        QCOMPARE(outside.count(), 1);
        tapScreen({100, 150});
        QCOMPARE(box.presses, 1);
        QCOMPARE(outside.count(), 1);
    }

    void pressBesideEverythingIsOutside()
    {
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        box.show();
        QSignalSpy outside(ZScreen::instance(), &ZScreen::pressedOutside);
        tapScreen({5, 5});
        QCOMPARE(outside.count(), 1);
        QCOMPARE(box.presses, 0);
    }

    void wheelReachesOnlyTheTopmost()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        main.show();
        box.show();
        for (QWidget* receiver : {static_cast<QWidget*>(&main), static_cast<QWidget*>(&box)}) {
            QWheelEvent turn(QPointF(1, 1), QPointF(1, 1), {}, {0, -120}, Qt::NoButton,
                             Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(receiver, &turn);
        }
        QCOMPARE(main.wheels, 0);
        QCOMPARE(box.wheels, 1);
    }

    void keysReachOnlyTheTopmost()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        main.show();
        box.show();
        activateWindow();
        QTest::keyClick(screenWindow(), Qt::Key_5);
        QCOMPARE(box.keys, QList<int>{Qt::Key_5});
        QKeyEvent misled(QEvent::KeyPress, Qt::Key_7, Qt::NoModifier, "7");
        QApplication::sendEvent(&main, &misled);
        QVERIFY(main.keys.isEmpty());
        box.hide();
        QTest::keyClick(screenWindow(), Qt::Key_6);
        QCOMPARE(main.keys, QList<int>{Qt::Key_6});
    }

    void focusComesBackWhereItWas()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        main.show();
        activateWindow();
        main.second.setFocus();
        QTRY_VERIFY(main.second.hasFocus());
        box.show();
        QTRY_VERIFY(box.hasFocus());
        box.first.setFocus();
        QVERIFY(box.first.hasFocus());
        box.hide();
        QTRY_VERIFY(main.second.hasFocus());
    }

    void focusComesBackThroughSeveralBoxes()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel lower(ZScreen::Layer::Box, Middle, Qt::red);
        auto upper = std::make_unique<Panel>(ZScreen::Layer::Box, Middle, Qt::blue);
        main.show();
        activateWindow();
        main.first.setFocus();
        lower.show();
        lower.second.setFocus();
        upper->show();
        QTRY_VERIFY(upper->hasFocus());
        upper.reset();
        QTRY_VERIFY(lower.second.hasFocus());
        lower.hide();
        QTRY_VERIFY(main.first.hasFocus());
    }

    void focusGivenToSomethingInertTakesEffectLater()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        main.show();
        activateWindow();
        main.first.setFocus();
        box.show();
        QTRY_VERIFY(box.hasFocus());
        main.second.setFocus();
        QVERIFY(box.hasFocus());
        box.hide();
        QTRY_VERIFY(main.second.hasFocus());
    }

    void focusThatIsGoneComesBackToTheWidget()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        Panel box(ZScreen::Layer::Box, Middle, Qt::red);
        auto field = std::make_unique<QLineEdit>(&main);
        main.show();
        activateWindow();
        field->show();
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());
        box.show();
        field.reset();
        box.hide();
        QTRY_VERIFY(ZScreen::instance()->isActive(QApplication::focusWidget()));
    }

    void hiddenWindowIsShownAgainWithItsFocus()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        main.show();
        activateWindow();
        main.second.setFocus();
        QTRY_VERIFY(main.second.hasFocus());
        main.hide();
        QTRY_VERIFY(!ZScreen::instance()->window()->isVisible());
        main.show();
        activateWindow();
        QTRY_VERIFY(main.second.hasFocus());
    }

    void insidesDoNotCountAsTopLevels()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        main.show();
        main.first.hide();
        QCOMPARE(ZScreen::instance()->active(), &main);
        main.first.show();
        QCOMPARE(ZScreen::instance()->active(), &main);
    }

    void closingIsARequestOnly()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        main.show();
        QVERIFY(QTest::qWaitForWindowExposed(screenWindow()));
        QSignalSpy requested(ZScreen::instance(), &ZScreen::closeRequested);
        screenWindow()->close();
        QTRY_COMPARE(requested.count(), 1);
        QVERIFY(ZScreen::instance()->window()->isVisible());
        QVERIFY(main.isVisible());
        QCOMPARE(ZScreen::instance()->active(), &main);
    }

    void widgetMayGoWhileItIsPressed()
    {
        Panel main(ZScreen::Layer::Main, Whole, Qt::green);
        auto box = std::make_unique<Panel>(ZScreen::Layer::Box, Middle, Qt::red);
        main.show();
        box->show();
        const auto asked =
            connect(ZScreen::instance(), &ZScreen::pressedOutside, [&box] { box.reset(); });
        tapScreen({5, 300});
        disconnect(asked);
        QCOMPARE(main.presses, 0);
        QCOMPARE(ZScreen::instance()->active(), &main);
        tapScreen({5, 300});
        QCOMPARE(main.presses, 1);
    }
};

QUARN_TEST_MAIN(tst_ZScreen)
#include "tst_zscreen.moc"
