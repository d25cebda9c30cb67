#include "platform/zlistbox.h"
#include "platform/zskinservice.h"
#include "tests/lang/languages.h"
#include "tests/support/glyphs.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"
#include "widgets/boxparts.h"

#include <algorithm>

/// Names in scripts that the program's font does not have, with the fonts that are installed for
/// them.
class tst_Scripts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }

    void everyCharacterHasAPicture_data() { addNames(); }
    void everyCharacterHasAPicture()
    {
        QFETCH(QString, name);
        for (const int size : {11, 13, 14, 15}) {
            const QFont font = ZSkinService::font(ProgramNames::Font, size, 25);
            QCOMPARE(missingGlyphs(font, name), 0);
        }
        QCOMPARE(missingGlyphs(Box::titleFont().font(), name), 0);
    }

    void rowsShowTheName_data() { addNames(); }
    void rowsShowTheName()
    {
        QFETCH(QString, name);
        const auto main = showMainWidget();
        ZListBox list("%M", main.get(), 0, ZSkinService::clsListBox);
        list.resize(ZScreen::Width, ZScreen::Height);
        auto* row = new ZListBoxItem(&list, "%M");
        row->appendSubItem(1, name, false);
        list.insertItem(row);
        list.show();
        // What is written from the right comes in pieces, in the order in which they stand.
        QString drawn;
        for (const DrawnText& piece : textsDrawnBy(list))
            drawn += piece.text;
        std::sort(drawn.begin(), drawn.end());
        QString expected = name;
        std::sort(expected.begin(), expected.end());
        QCOMPARE(drawn, expected);
    }

    void linesOfABoxHoldTheName_data() { addNames(); }
    void linesOfABoxHoldTheName()
    {
        QFETCH(QString, name);
        BoxFont font = Box::textFont();
        const BoxFont::Lines lines = font.wrapped(name, Box::TextWidth);
        QCOMPARE(lines.texts, QStringList(name));
        QVERIFY(QFontMetrics(font.font()).horizontalAdvance(name) <= Box::TextWidth);
    }

    void characterOfNoFontIsABox()
    {
        // Nobody has given this place a character.
        const char32_t nobody[] = {U'a', 0x2fff0, U'z'};
        QCOMPARE(missingGlyphs(QApplication::font(), QString::fromUcs4(nobody, 3)), 1);
    }

private:
    static void addNames()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("Chinese") << QString::fromUtf8("照片和文件.txt");
        QTest::newRow("traditional Chinese") << QString::fromUtf8("圖書與檔案.txt");
        QTest::newRow("Japanese") << QString::fromUtf8("夏休みのアルバム.txt");
        QTest::newRow("Korean") << QString::fromUtf8("가족 사진 모음.txt");
        QTest::newRow("Arabic") << QString::fromUtf8("صور العائلة.txt");
        QTest::newRow("Hebrew") << QString::fromUtf8("תמונות משפחה.txt");
        QTest::newRow("Devanagari") << QString::fromUtf8("तस्वीरें.txt");
        QTest::newRow("Thai") << QString::fromUtf8("รูปถ่ายครอบครัว.txt");
        QTest::newRow("emoji") << QString::fromUtf8("😀🎵📷❤.txt");
        QTest::newRow("Greek") << QString::fromUtf8("Φωτογραφίες.txt");
        QTest::newRow("Cyrillic") << QString::fromUtf8("Фотографії ґ.txt");
    }
};

QUARN_TEST_MAIN(tst_Scripts)
#include "tst_scripts.moc"
