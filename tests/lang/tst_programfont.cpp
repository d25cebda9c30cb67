#include "platform/zskinservice.h"
#include "tests/lang/languages.h"
#include "tests/support/testmain.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QPainterPath>
#include <QRawFont>

#include <algorithm>

namespace
{

constexpr int Light = 25;
constexpr int Black = 87;

QFont staged(int pixels, int weight)
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), pixels, weight);
}

QPainterPath outlineOf(const QRawFont& font, const QString& letter)
{
    return font.pathForGlyph(font.glyphIndexesForString(letter).value(0));
}

} // namespace

/// The font of the work folder.
class tst_ProgramFont : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void titlesAreOfTheBoldFaceAtEverySize_data()
    {
        QTest::addColumn<int>("pixels");
        for (const int pixels : {13, 15, 27, 45, 90})
            QTest::addRow("%d", pixels) << pixels;
    }

    void titlesAreOfTheBoldFaceAtEverySize()
    {
        QFETCH(int, pixels);
        const QRawFont regular(QStringLiteral(QUARN_STAGE_DIR "/res/font.ttf"), pixels);
        const QRawFont bold(QStringLiteral(QUARN_STAGE_DIR "/res/font-bold.ttf"), pixels);
        QVERIFY(outlineOf(regular, "Q") != outlineOf(bold, "Q"));
        QCOMPARE(outlineOf(QRawFont::fromFont(staged(pixels, Light)), "Q"),
                 outlineOf(regular, "Q"));
        QCOMPARE(outlineOf(QRawFont::fromFont(staged(pixels, Black)), "Q"), outlineOf(bold, "Q"));
    }

    void figuresStandBelowEachOther_data() { addSizes(); }

    void figuresStandBelowEachOther()
    {
        QFETCH(int, pixels);
        for (const int weight : {Light, Black}) {
            const QFontMetrics metrics(staged(pixels, weight));
            const int width = metrics.horizontalAdvance(QString(20, '0'));
            for (char figure = '1'; figure <= '9'; ++figure)
                QCOMPARE(metrics.horizontalAdvance(QString(20, QLatin1Char(figure))), width);
        }
    }

    void rnIsNoM_data() { addSizes(); }

    void rnIsNoM()
    {
        QFETCH(int, pixels);
        const QFontMetrics metrics(staged(pixels, Light));
        QVERIFY(metrics.horizontalAdvance("rnrnrnrn") >= metrics.horizontalAdvance("mmmm") + 4);
    }

    void lettersThatAreTakenForEachOtherDiffer()
    {
        const QRawFont font(QStringLiteral(QUARN_STAGE_DIR "/res/font.ttf"), 60);
        const QStringList alike[] = {{"I", "l"}, {"l", "1"}, {"I", "1"}, {"O", "0"}};
        for (const QStringList& pair : alike)
            QVERIFY2(outlineOf(font, pair[0]) != outlineOf(font, pair[1]), qPrintable(pair[0]));
    }

    void linesAreAsHighAsBoxesAreLaidOutBy()
    {
        QCOMPARE(QFontMetrics(staged(13, Light)).height(), 15);
        QCOMPARE(QFontMetrics(staged(15, Black)).height(), 18);
        QVERIFY(QFontMetrics(staged(13, Light)).maxWidth() <= 20);
    }

    void lettersOfEuropeAreThere_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        QTest::newRow("Latin") << 0x20 << 0x7e;
        QTest::newRow("Latin of the west") << 0xa0 << 0xff;
        QTest::newRow("Latin of the east") << 0x100 << 0x17f;
        QTest::newRow("Greek") << 0x391 << 0x3a1;
        QTest::newRow("small Greek") << 0x3ac << 0x3ce;
        QTest::newRow("Cyrillic") << 0x401 << 0x45f;
        QTest::newRow("Ukrainian") << 0x490 << 0x491;
    }

    void lettersOfEuropeAreThere()
    {
        QFETCH(int, first);
        QFETCH(int, last);
        for (const char* file : {"/res/font.ttf", "/res/font-bold.ttf"}) {
            const QRawFont font(QStringLiteral(QUARN_STAGE_DIR) + QLatin1String(file), 13);
            QVERIFY(font.isValid());
            for (int code = first; code <= last; ++code)
                QVERIFY2(font.supportsCharacter(uint(code)), qPrintable(QString::number(code, 16)));
        }
    }

    void describedTextsFitTheirPlaces()
    {
        // On the about page it begins at 70; the title beside it.
        QVERIFY(QFontMetrics(staged(15, 10)).horizontalAdvance("FileManager for ROKR E2") <= 170);
        QVERIFY(QFontMetrics(staged(27, Black)).horizontalAdvance("Quarn 1.6") <= 170);
    }

private:
    static void addSizes()
    {
        QTest::addColumn<int>("pixels");
        for (int pixels = 11; pixels <= 15; ++pixels)
            QTest::addRow("%d", pixels) << pixels;
    }
};

QUARN_TEST_MAIN(tst_ProgramFont)
#include "tst_programfont.moc"
