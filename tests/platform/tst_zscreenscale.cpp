#include "platform/screenscale.h"
#include "platform/zscreen.h"
#include "tests/platform/selfrun.h"
#include "tests/support/testmain.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <cstdio>

#ifdef __SANITIZE_ADDRESS__
/// The toolkit's plugin for bare displays keeps the picture of the display at its end.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqvnc.so\n";
}
#endif

/// The scale is settled once a process, so every case runs in a process of its own.
class tst_ZScreenScale : public QObject
{
    Q_OBJECT

private slots:
    void variableSetsTheScale_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<double>("scale");
        QTest::newRow("not set") << QString() << 1.0;
        QTest::newRow("one") << "1" << 1.0;
        QTest::newRow("two") << "2" << 2.0;
        QTest::newRow("with a fraction") << "1.5" << 1.5;
        QTest::newRow("smallest") << "0.25" << 0.25;
        QTest::newRow("largest") << "16" << 16.0;
    }

    void variableSetsTheScale()
    {
        QFETCH(QString, value);
        const SelfRun run = probe("offscreen", value);
        QTEST(densityOf(run), "scale");
        QCOMPARE(run.errors, QByteArray());
    }

    void scaleIgnoresTheDisplaysOwnFactors()
    {
        const SelfRun run = SelfRun::with(
            {"--probe"},
            {{"QT_QPA_PLATFORM", "offscreen"}, {"PROBE_SCALE", "1"}, {"QT_SCALE_FACTOR", "3"}});
        QCOMPARE(densityOf(run), 1.0);
    }

    void absurdScaleIsNamedAndIgnored_data()
    {
        QTest::addColumn<QString>("value");
        for (const char* value :
             {"0", "-1", "17", "0.2", "1e300", "nan", "inf", "two", "2x", "1,5"})
            QTest::newRow(value) << value;
        QTest::newRow("empty") << "";
        QTest::newRow("endless") << QString(5000, '9');
    }

    void absurdScaleIsNamedAndIgnored()
    {
        QFETCH(QString, value);
        const SelfRun run = probe("offscreen", value);
        QCOMPARE(densityOf(run), 1.0);
        QVERIFY2(run.errors.contains("PROBE_SCALE"), run.errors.constData());
        QVERIFY2(run.errors.contains(value.toUtf8()), run.errors.constData());
    }

    void bareDisplayIsFilled_data()
    {
        QTest::addColumn<QString>("display");
        QTest::addColumn<double>("scale");
        QTest::addColumn<QPoint>("corner");
        QTest::newRow("twice the size") << "480x640" << 2.0 << QPoint(0, 0);
        QTest::newRow("same size") << "240x320" << 1.0 << QPoint(0, 0);
        QTest::newRow("wide") << "960x480" << 1.5 << QPoint((640 - 240) / 2, 0);
        QTest::newRow("tall") << "480x960" << 2.0 << QPoint(0, (480 - 320) / 2);
        QTest::newRow("between steps") << "500x680" << 2.0 << QPoint(5, 10);
        QTest::newRow("small") << "120x160" << 0.5 << QPoint(0, 0);
    }

    void bareDisplayIsFilled()
    {
        QFETCH(QString, display);
        QFETCH(QPoint, corner);
        const SelfRun run = probe("vnc:port=0:size=" + display, QString());
        QTEST(densityOf(run), "scale");
        QCOMPARE(run.output.split(' ').mid(1),
                 QList<QByteArray>({QByteArray::number(corner.x()), QByteArray::number(corner.y()),
                                    "240", "320"}));
    }

    void largestQuarterStepFits_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("scale");
        QTest::newRow("same size") << QSize(240, 320) << 1.0;
        QTest::newRow("a pixel too narrow") << QSize(239, 320) << 0.75;
        QTest::newRow("a pixel too low") << QSize(480, 639) << 1.75;
        QTest::newRow("landscape") << QSize(320, 240) << 0.75;
        QTest::newRow("between steps") << QSize(800, 600) << 1.75;
        QTest::newRow("tall") << QSize(720, 1440) << 3.0;
        QTest::newRow("largest") << QSize(5000, 5000) << 6.0;
        QTest::newRow("too small for any") << QSize(10, 10) << 0.25;
        QTest::newRow("none") << QSize(0, 0) << 0.25;
    }

    void largestQuarterStepFits()
    {
        QFETCH(QSize, size);
        QTEST(ScreenScale::fitting(size), "scale");
    }

    void firstWindowIsWithinTwoThirds_data()
    {
        QTest::addColumn<QSize>("display");
        QTest::addColumn<QSize>("window");
        QTest::newRow("1080 high") << QSize(1920, 1080) << QSize(480, 640);
        QTest::newRow("1440 high") << QSize(2560, 1440) << QSize(720, 960);
        QTest::newRow("600 high") << QSize(800, 600) << QSize(240, 320);
        QTest::newRow("a pixel less than three times") << QSize(1920, 1439) << QSize(480, 640);
        QTest::newRow("no more than its width") << QSize(300, 2000) << QSize(300, 400);
        QTest::newRow("smaller than the screen") << QSize(320, 240) << QSize(180, 240);
        QTest::newRow("narrower than the screen") << QSize(239, 1000) << QSize(180, 240);
        QTest::newRow("half as wide") << QSize(120, 1000) << QSize(120, 160);
        QTest::newRow("narrower than all scales") << QSize(40, 1000) << QSize(60, 80);
        QTest::newRow("very large") << QSize(8000, 8000) << QSize(1440, 1920);
    }

    void firstWindowIsWithinTwoThirds()
    {
        QFETCH(QSize, display);
        QTEST(ScreenScale::firstWindow(display), "window");
    }

    void windowBelowOneIsAsSmallAndShowsAll_data()
    {
        QTest::addColumn<QString>("platform");
        QTest::addColumn<QString>("scale");
        QTest::addColumn<QByteArray>("found");
        // The window, and where a row and the soft keys are seen in it.
        QTest::newRow("three quarters") << "offscreen"
                                        << "0.75" << QByteArray("180x240 0,30,180,15 90,225");
        QTest::newRow("half") << "offscreen"
                              << "0.5" << QByteArray("120x160 0,20,120,10 60,150");
        QTest::newRow("one") << "offscreen"
                             << "1" << QByteArray("240x320 0,40,240,20 120,300");
        QTest::newRow("bare display")
            << "vnc:port=0:size=320x240" << QString() << QByteArray("320x240 70,30,180,15 160,225");
    }

    void windowBelowOneIsAsSmallAndShowsAll()
    {
        QFETCH(QString, platform);
        QFETCH(QString, scale);
        const SelfRun run = SelfRun::with({"--parts"}, {{"QT_QPA_PLATFORM", platform},
                                                        {"PROBE_SCALE", scale},
                                                        {"QT_SCALE_FACTOR", QString()},
                                                        {"QT_NO_XDG_DESKTOP_PORTAL", "1"}});
        QCOMPARE(run.status, 0);
        QTEST(run.output, "found");
    }

    void variableWinsOnABareDisplay()
    {
        const SelfRun run = probe("vnc:port=0:size=480x640", "1");
        QCOMPARE(densityOf(run), 1.0);
        QCOMPARE(run.output, "1 120 160 240 320");
    }

    void variableWithNoRoomOnABareDisplayGivesWhatFits()
    {
        const SelfRun run = probe("vnc:port=0:size=480x700", "3");
        QCOMPARE(run.output, "2 0 15 240 320");
        QVERIFY2(run.errors.contains("PROBE_SCALE"), run.errors.constData());
    }

    void windowOpensWhereItIsWanted_data()
    {
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("scale");
        QTest::addColumn<QByteArray>("found");
        QTest::newRow("somewhere") << "30,20"
                                   << "1" << QByteArray("30,20");
        QTest::newRow("left of the display") << "-30,0"
                                             << "1" << QByteArray("-30,0");
        QTest::newRow("in pixels of the display") << "60,20"
                                                  << "2" << QByteArray("60,20");
        // Nothing of this is a place: it opens where it would anyway.
        for (const char* junk : {"", "30", "30,", "30,20,10", "a,b", "30;20", "1e9,0", ","})
            QTest::newRow(junk) << junk << "1" << probePlace(QString(), "1").output;
    }

    void windowOpensWhereItIsWanted()
    {
        QFETCH(QString, place);
        QFETCH(QString, scale);
        const SelfRun run = probePlace(place, scale);
        QCOMPARE(run.status, 0);
        QTEST(run.output, "found");
    }

private:
    static SelfRun probePlace(const QString& place, const QString& scale)
    {
        return SelfRun::with({"--place"}, {{"QT_QPA_PLATFORM", "offscreen"},
                                           {"PROBE_SCALE", scale},
                                           {"PROBE_PLACE", place},
                                           {"QT_SCALE_FACTOR", QString()}});
    }

    static SelfRun probe(const QString& platform, const QString& scale)
    {
        // The last keeps newer toolkits from asking the desktop's services, and from leaking the
        // question where there is no message bus.
        return SelfRun::with({"--probe"}, {{"QT_QPA_PLATFORM", platform},
                                           {"PROBE_SCALE", scale},
                                           {"QT_SCALE_FACTOR", QString()},
                                           {"QT_NO_XDG_DESKTOP_PORTAL", "1"}});
    }

    static double densityOf(const SelfRun& run)
    {
        return run.status == 0 ? run.output.split(' ').first().toDouble() : -1;
    }
};

namespace
{

/// A main widget with a part at 40 from the top, 20 high.
class Stripes : public QWidget
{
public:
    Stripes() : QWidget(ZScreen::instance()), inside(this)
    {
        ZScreen::instance()->place(this, ZScreen::Layer::Main);
        resize(ZScreen::Width, ZScreen::Height);
        inside.setGeometry(0, 40, ZScreen::Width, 20);
    }

    QWidget inside;
    int paints = 0;
    QPoint tap;

protected:
    void paintEvent(QPaintEvent* /*event*/) override { ++paints; }
    void mousePressEvent(QMouseEvent* event) override { tap = event->position().toPoint(); }
};

/// Prints the density of the display and where the screen is in its window.
int printScale(int argc, char** argv)
{
    ScreenScale::setVariable("PROBE_SCALE");
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    QWidget main(ZScreen::instance());
    ZScreen::instance()->place(&main, ZScreen::Layer::Main);
    main.show();
    const QWidget* window = ZScreen::instance()->window();
    const auto inPlace = [window] {
        return window->windowHandle()->isExposed() &&
               (!window->isFullScreen() ||
                window->size() == window->screen()->size().expandedTo(ZScreen::instance()->size()));
    };
    if (!QTest::qWaitFor(inPlace, 20000))
        return 1;
    const QRect area = ZScreen::instance()->geometry();
    std::printf("%g %d %d %d %d", ScreenScale::density(), area.x(), area.y(), area.width(),
                area.height());
    return 0;
}

/// Prints where the window has opened.
int printPlace(int argc, char** argv)
{
    ScreenScale::setVariable("PROBE_SCALE");
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    ZScreen::setPlace(qgetenv("PROBE_PLACE"));
    QWidget main(ZScreen::instance());
    ZScreen::instance()->place(&main, ZScreen::Layer::Main);
    if (!ZScreen::placeOnDisplay().isEmpty())
        return 1;
    main.show();
    std::fputs(ZScreen::placeOnDisplay().constData(), stdout);
    return 0;
}

/// Prints how large the window is, where a part of the screen is said to be seen in it, and where
/// the colour of another one is, whose tap must arrive.
int printParts(int argc, char** argv)
{
    ScreenScale::setVariable("PROBE_SCALE");
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    Stripes main;
    main.show();
    QWindow* window = ZScreen::instance()->window()->windowHandle();
    if (!QTest::qWaitFor([window] { return window->isExposed(); }, 20000) ||
        !QTest::qWaitFor([&main] { return main.paints > 0; }, 20000))
        return 1;
    QAccessibleInterface* part = QAccessible::queryAccessibleInterface(&main.inside);
    const QRect seen = part->rect().translated(-window->position());
    QAccessibleInterface* root =
        QAccessible::queryAccessibleInterface(ZScreen::instance()->window());
    if (root->childAt(part->rect().center().x(), part->rect().center().y()) == nullptr)
        return 2;
    const QPoint below(window->width() / 2, window->height() - 15 * window->height() / 240);
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, below);
    if (!QTest::qWaitFor([&main] { return main.tap.y() >= 300; }, 20000))
        return 3;
    std::printf("%dx%d %d,%d,%d,%d %d,%d", window->width(), window->height(), seen.x(), seen.y(),
                seen.width(), seen.height(), below.x(), below.y());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && qstrcmp(argv[1], "--probe") == 0)
        return printScale(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "--place") == 0)
        return printPlace(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "--parts") == 0)
        return printParts(argc, argv);
    return runTest<tst_ZScreenScale>(argc, argv);
}

#include "tst_zscreenscale.moc"
