#include "platform/keymap.h"
#include "platform/zboxpan.h"
#include "platform/zscreen.h"
#include "tests/support/keys.h"
#include "tests/support/mainwidget.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

#include <QPainter>
#include <QWheelEvent>
#include <QWindow>

namespace
{

constexpr int Step = ZBoxPan::Step;

/// A box that puts itself into the middle of the screen, and writes down what reaches it. Its first
/// row of pixels is red, its last one blue.
class PlainBox : public QWidget
{
public:
    explicit PlainBox(int height) : QWidget(ZScreen::instance())
    {
        hide();
        setFocusPolicy(Qt::StrongFocus);
        ZScreen::instance()->place(this, ZScreen::Layer::Box);
        centre(height);
    }

    void centre(int height) { setGeometry(10, (ZScreen::Height - height) / 2, 220, height); }

    QList<int> keys;
    int taps = 0;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys.append(PhoneKey::code(*event)); }
    void mouseReleaseEvent(QMouseEvent* /*event*/) override { ++taps; }

    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::green);
        painter.fillRect(0, 0, width(), 1, Qt::red);
        painter.fillRect(0, height() - 1, width(), 1, Qt::blue);
    }
};

QColor colourAt(int y)
{
    return ZScreen::instance()->grab().toImage().pixelColor(100, y);
}

/// The marks that are shown, the lowest first.
QList<const QWidget*> marks()
{
    const auto all =
        ZScreen::instance()->findChildren<QWidget*>("ZBoxPan", Qt::FindDirectChildrenOnly);
    QList<const QWidget*> shown;
    for (const QWidget* each : all) {
        if (each->isVisible())
            shown.append(each);
    }
    return shown;
}

/// The only mark that is shown; nullptr if there is none.
const QWidget* mark()
{
    return marks().size() == 1 ? marks().first() : nullptr;
}

} // namespace

class tst_ZBoxPan : public QObject
{
    Q_OBJECT

private slots:
    void init() { main_ = showMainWidget(); }
    void cleanup() { main_.reset(); }

    void highBoxIsShownFromItsTop()
    {
        PlainBox box(500);
        box.show();
        QCOMPARE(box.geometry(), QRect(10, 0, 220, 500));
        QCOMPARE(colourAt(0), QColor(Qt::red));
        QCOMPARE(colourAt(319), QColor(Qt::green));
    }

    void upAndDownPanAsFarAsItGoes()
    {
        PlainBox box(400);
        box.show();
        pressKey(PhoneKey::Up);
        QCOMPARE(box.y(), 0);
        pressKey(PhoneKey::Down);
        QCOMPARE(box.y(), -Step);
        repeatKey(PhoneKey::Down);
        QCOMPARE(box.y(), -80);
        QCOMPARE(colourAt(319), QColor(Qt::blue));
        pressKey(PhoneKey::Down);
        QCOMPARE(box.y(), -80);
        pressKey(PhoneKey::Up);
        QCOMPARE(box.y(), -80 + Step);
        QVERIFY(box.keys.isEmpty());
    }

    void otherKeysAreTheBoxs()
    {
        PlainBox box(400);
        box.show();
        for (const int code : {int(PhoneKey::Left), int(PhoneKey::SoftLeft), int('5')})
            pressKey(code);
        QCOMPARE(box.keys, QList<int>({PhoneKey::Left, PhoneKey::SoftLeft, '5'}));
        QCOMPARE(box.y(), 0);
    }

    void boxThatFitsIsLeftAlone_data()
    {
        QTest::addColumn<int>("height");
        for (const int height : {40, 319, 320})
            QTest::addRow("%d", height) << height;
    }

    void boxThatFitsIsLeftAlone()
    {
        QFETCH(int, height);
        PlainBox box(height);
        box.show();
        pressKey(PhoneKey::Down);
        QCOMPARE(box.geometry(), QRect(10, (320 - height) / 2, 220, height));
        QCOMPARE(box.keys, QList<int>{PhoneKey::Down});
        QVERIFY(marks().isEmpty());
    }

    void boxThatPlacesItselfAgainStaysPanned()
    {
        PlainBox box(500);
        box.show();
        pressKey(PhoneKey::Down);
        box.centre(500);
        QCOMPARE(box.y(), -Step);
        // With less in it its end is shown, and one that fits now is where it wants to be.
        box.centre(340);
        QCOMPARE(box.y(), -20);
        box.centre(300);
        QCOMPARE(box.y(), 10);
        QVERIFY(marks().isEmpty());
        box.centre(500);
        QCOMPARE(box.y(), 0);
        QVERIFY(mark() != nullptr);
    }

    void boxThatIsShownAgainBeginsAtItsTop()
    {
        PlainBox box(500);
        box.show();
        pressKey(PhoneKey::Down);
        box.hide();
        QVERIFY(marks().isEmpty());
        box.centre(500);
        box.show();
        QCOMPARE(box.y(), 0);
    }

    void markSaysHowMuchIsInView()
    {
        PlainBox box(640);
        box.show();
        QVERIFY(mark() != nullptr);
        QCOMPARE(mark()->y(), 0);
        QCOMPARE(mark()->height(), 160);
        QVERIFY(mark()->x() > box.geometry().right());
        for (int press = 0; press < 8; ++press)
            pressKey(PhoneKey::Down);
        QCOMPARE(mark()->geometry().bottom(), 319);
    }

    void eachHighBoxHasAMarkOfItsOwn()
    {
        PlainBox below(500);
        below.show();
        const QWidget* first = mark();
        PlainBox above(640);
        above.show();
        QCOMPARE(marks().size(), 2);
        QCOMPARE(marks().first(), first);
        const QRect place = first->geometry();
        pressKey(PhoneKey::Down);
        QCOMPARE(first->geometry(), place);
        QCOMPARE(marks().last()->y(), Step / 2);
        above.hide();
        QCOMPARE(mark(), first);
        QCOMPARE(first->geometry(), place);
        below.hide();
        QVERIFY(marks().isEmpty());
    }

    void markLiesOverItsBoxAlone()
    {
        PlainBox below(300);
        below.show();
        PlainBox above(100);
        above.setGeometry(0, 0, 240, 320);
        above.show();
        below.centre(640);
        QVERIFY(mark() != nullptr);
        const QObjectList& all = ZScreen::instance()->children();
        QVERIFY(all.indexOf(&below) < all.indexOf(mark()));
        QVERIFY(all.indexOf(mark()) < all.indexOf(&above));
    }

    void wheelPans()
    {
        PlainBox box(500);
        box.show();
        const QPointF point(100, 100);
        QWheelEvent down(point, box.mapToGlobal(point), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&box, &down);
        QCOMPARE(box.y(), -Step);
    }

    void fingerPansAndATapIsTheBoxs()
    {
        PlainBox box(500);
        box.show();
        QWindow* window = screenWindow();
        QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, {100, 200});
        for (int step = 1; step <= 5; ++step)
            QTest::mouseMove(window, {100, 200 - step * 20});
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, {100, 100});
        QCOMPARE(box.y(), -100);
        QCOMPARE(box.taps, 0);
        tapScreen({100, 100});
        QCOMPARE(box.taps, 1);
        QCOMPARE(box.y(), -100);
    }

    void inertBoxIsNotPanned()
    {
        PlainBox below(500);
        below.show();
        PlainBox above(100);
        above.show();
        pressKey(PhoneKey::Down);
        QCOMPARE(below.y(), 0);
        QCOMPARE(above.keys, QList<int>{PhoneKey::Down});
    }

private:
    std::unique_ptr<QWidget> main_;
};

QUARN_TEST_MAIN(tst_ZBoxPan)
#include "tst_zboxpan.moc"
