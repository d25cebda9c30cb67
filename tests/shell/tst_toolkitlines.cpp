#include "shell/toolkitlines.h"
#include "tests/support/testmain.h"

#include <QTest>

class tst_ToolkitLines : public QObject
{
    Q_OBJECT

private slots:
    void wordsOnFontsAreKnownFromEachVersion()
    {
        QVERIFY(isAboutFonts(QStringLiteral("  OpenType support missing for \"Font\", script 11")));
        QVERIFY(isAboutFonts(QStringLiteral("OpenType support missing for \"Font\", script 11")));
        QVERIFY(!isAboutFonts(QStringLiteral("fb::set path OpenType support missing for ")));
        QVERIFY(!isAboutFonts(QString()));
    }

    void aServerWithoutItsPortIsKnown()
    {
        QVERIFY(isWithoutServer(QStringLiteral("QVncServer could not connect: The bound address")));
        QVERIFY(!isWithoutServer(QStringLiteral("fb::set path /QVncServer could not connect")));
    }

    void whyThereIsNoDisplay_data()
    {
        QTest::addColumn<QByteArrayList>("lines");
        QTest::addColumn<QByteArray>("why");
        const QByteArray plugin = "Could not load the Qt platform plugin \"xcb\" in \"\"";
        const QByteArray hint =
            "From 6.5.0, xcb-cursor0 or libxcb-cursor0 is needed to load the Qt "
            "xcb platform plugin.";
        QTest::newRow("before the plugin")
            << QByteArrayList{"a warning", "could not connect", plugin}
            << QByteArray("could not connect");
        QTest::newRow("before a hint")
            << QByteArrayList{"could not connect", hint, plugin} << QByteArray("could not connect");
        QTest::newRow("a hint alone") << QByteArrayList{hint, plugin} << hint;
        QTest::newRow("no word on a plugin")
            << QByteArrayList{"first", "second"} << QByteArray("first");
        QTest::newRow("nothing") << QByteArrayList() << QByteArray("the toolkit does not say why");
    }
    void whyThereIsNoDisplay()
    {
        QFETCH(QByteArrayList, lines);
        QTEST(whyNoDisplay(lines), "why");
    }
};

QUARN_TEST_MAIN(tst_ToolkitLines)
#include "tst_toolkitlines.moc"
