#include "platform/zskinservice.h"
#include "tests/support/testmain.h"

#include <cstdlib>
#include <limits>

class tst_ZSkinService : public QObject
{
    Q_OBJECT

private slots:
    void weightsAreConverted_data()
    {
        QTest::addColumn<int>("weight");
        QTest::addColumn<int>("toolkit");
        QTest::newRow("light") << 25 << int(QFont::Light);
        QTest::newRow("normal") << 50 << int(QFont::Normal);
        QTest::newRow("bold") << 75 << int(QFont::Bold);
        QTest::newRow("black") << 87 << int(QFont::Black);
        QTest::newRow("thinnest") << 0 << int(QFont::Thin);
        QTest::newRow("below") << -5 << int(QFont::Thin);
        QTest::newRow("far below") << std::numeric_limits<int>::min() << int(QFont::Thin);
    }

    void weightsAreConverted()
    {
        QFETCH(int, weight);
        QTEST(ZSkinService::toolkitWeight(weight), "toolkit");
    }

    void heavierStaysHeavier()
    {
        for (int weight = 0; weight < 99; ++weight) {
            QVERIFY(ZSkinService::toolkitWeight(weight) < ZSkinService::toolkitWeight(weight + 1));
            QVERIFY(ZSkinService::toolkitWeight(weight) >= 1);
        }
        QVERIFY(ZSkinService::toolkitWeight(99) <= 1000);
        QCOMPARE(ZSkinService::toolkitWeight(1000), ZSkinService::toolkitWeight(99));
        QVERIFY(ZSkinService::toolkitWeight(10) < int(QFont::Light));
    }

    void pointIsAPixel()
    {
        const QFont font = ZSkinService::font("ZarnikFont", 14, 25, true);
        QCOMPARE(font.pixelSize(), 14);
        QCOMPARE(font.family(), QString("ZarnikFont"));
        QCOMPARE(int(font.weight()), int(QFont::Normal));
        QCOMPARE(int(ZSkinService::font("any", 14, 75).weight()), int(QFont::Bold));
        QVERIFY(font.italic());
        QVERIFY(!ZSkinService::font("any", 14).italic());
        QCOMPARE(ZSkinService::font("any", 0).pixelSize(), 1);
        QCOMPARE(ZSkinService::font("any", -3).pixelSize(), 1);
    }

    void unknownClassLooksLikeAListBox_data()
    {
        QTest::addColumn<unsigned>("number");
        QTest::newRow("zero") << 0U;
        QTest::newRow("unknown") << 49U;
        QTest::newRow("largest") << std::numeric_limits<unsigned>::max();
    }

    void unknownClassLooksLikeAListBox()
    {
        QFETCH(unsigned, number);
        const auto& look = ZSkinService::look(number);
        const auto& expected = ZSkinService::look(40);
        QCOMPARE(look.background, expected.background);
        QCOMPARE(look.highlight, expected.highlight);
        QCOMPARE(look.text, expected.text);
    }

    void textsCanBeReadOnTheirGrounds_data()
    {
        QTest::addColumn<unsigned>("number");
        for (const unsigned number : {40U, 41U, 50U, 52U, 53U, 54U})
            QTest::addRow("%u", number) << number;
    }

    void textsCanBeReadOnTheirGrounds()
    {
        QFETCH(unsigned, number);
        const auto& look = ZSkinService::look(number);
        const auto contrast = [](const QColor& one, const QColor& other) {
            return std::abs(qGray(one.rgb()) - qGray(other.rgb()));
        };
        QVERIFY(contrast(look.text, look.background) > 100);
        QVERIFY(contrast(look.highlightText, look.highlight) > 100);
        QVERIFY(look.disabledText != look.text);
        QVERIFY(look.highlight != look.background);
    }
};

QUARN_TEST_MAIN(tst_ZSkinService)
#include "tst_zskinservice.moc"
