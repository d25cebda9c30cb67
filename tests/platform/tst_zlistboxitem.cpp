#include "platform/zlistbox.h"
#include "platform/zlistboxitem.h"
#include "platform/zlistrowpainter.h"
#include "tests/support/pictures.h"
#include "tests/support/testmain.h"

class tst_ZListBoxItem : public QObject
{
    Q_OBJECT

private slots:
    void layoutStringSaysWhatARowHas_data()
    {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<bool>("icon");
        QTest::addColumn<bool>("text");
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("checkBox");
        QTest::newRow("normal") << "%I%M" << true << true << 0 << false;
        QTest::newRow("narrow") << "%I%M170%C" << true << true << 170 << true;
        QTest::newRow("wide") << "%I%M186%C" << true << true << 186 << true;
        QTest::newRow("text alone") << "%M" << false << true << 0 << false;
        QTest::newRow("empty") << "" << false << false << 0 << false;
        QTest::newRow("percent alone") << "%" << false << false << 0 << false;
        QTest::newRow("percent at the end") << "%I%" << true << false << 0 << false;
        QTest::newRow("unknown letters") << "x%Z%I?" << true << false << 0 << false;
        QTest::newRow("lower case") << "%i%m%c" << false << false << 0 << false;
        QTest::newRow("width of something else") << "%I20%M" << true << true << 0 << false;
    }

    void layoutStringSaysWhatARowHas()
    {
        QFETCH(QString, layout);
        ZListBox box("%I%M", ZScreen::instance(), 0, ZSkinService::clsListBox);
        const ZListBoxItem item(&box, layout);
        QTEST(item.layout().icon, "icon");
        QTEST(item.layout().text, "text");
        QTEST(item.layout().textWidth, "width");
        QTEST(item.layout().checkBox, "checkBox");
    }

    void absurdTextWidthIsBounded()
    {
        const ZListRowLayout* layout = ZListRowLayout::of("%M" + QString(1000, '9') + "%C");
        QVERIFY(layout->textWidth >= 240);
        QVERIFY(layout->textWidth < 1000000);
        QVERIFY(layout->checkBox);
    }

    void equalLayoutsAreShared()
    {
        QCOMPARE(ZListRowLayout::of("%I%M"), ZListRowLayout::of(QString("%I") + "%M"));
        QVERIFY(ZListRowLayout::of("%I%M") != ZListRowLayout::of("%M"));
    }

    void textOfASubItemChangesInARowThatIsShown()
    {
        ZListBox box("%I%M", ZScreen::instance(), 0, ZSkinService::clsListBox);
        box.resize(100, 100);
        for (int i = 0; i < 2; ++i) {
            auto* item = new ZListBoxItem(&box, "%I%M");
            item->appendSubItem(1, "name", false);
            box.insertItem(item);
        }
        const QImage before = box.grab().toImage();
        box.item(1)->setSubItemText(1, 0, "another");
        QCOMPARE(box.item(1)->getSubItemText(1, 0), QString("another"));
        QCOMPARE(box.item(0)->getSubItemText(1, 0), QString("name"));
        QVERIFY(box.grab().toImage() != before);
        // There is none of these.
        box.item(1)->setSubItemText(1, 1, "x");
        box.item(1)->setSubItemText(2, 0, "x");
        QCOMPARE(box.item(1)->subItemCount(1), 1);
        QCOMPARE(box.item(1)->subItemCount(2), 0);
    }

    void subItemsAreReadBackByLineAndIndex()
    {
        ZListBox box("%I%M", ZScreen::instance(), 0, ZSkinService::clsListBox);
        ZListBoxItem item(&box, "%I%M");
        item.appendSubItem(1, "name", false);
        item.appendSubItem(2, "other line", false);
        item.appendSubItem(1, "1 b\t\t\t01/03/2008", true);
        item.appendSubItem(1, "", false);
        QCOMPARE(item.subItemCount(1), 3);
        QCOMPARE(item.subItemCount(2), 1);
        QCOMPARE(item.subItemCount(3), 0);
        bool found = false;
        QCOMPARE(item.getSubItemText(1, 0, &found), QString("name"));
        QVERIFY(found);
        QCOMPARE(item.getSubItemText(1, 1), QString("1 b\t\t\t01/03/2008"));
        QCOMPARE(item.getSubItemText(2, 0), QString("other line"));
        QCOMPARE(item.getSubItemText(1, 2, &found), QString(""));
        QVERIFY(found);
    }

    void missingSubItemIsNull_data()
    {
        QTest::addColumn<int>("line");
        QTest::addColumn<int>("index");
        QTest::newRow("past the last") << 1 << 1;
        QTest::newRow("negative") << 1 << -1;
        QTest::newRow("line without items") << 2 << 0;
        QTest::newRow("line zero") << 0 << 0;
        QTest::newRow("negative line") << -1 << 0;
    }

    void missingSubItemIsNull()
    {
        QFETCH(int, line);
        QFETCH(int, index);
        ZListBox box("%I%M", ZScreen::instance(), 0, ZSkinService::clsListBox);
        ZListBoxItem item(&box, "%I%M");
        item.appendSubItem(1, "name", false);
        bool found = true;
        QVERIFY(item.getSubItemText(line, index, &found).isNull());
        QVERIFY(!found);
    }

    void namesAreKeptAsTheyAre_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("line break") << "a\nb";
        QTest::newRow("blanks") << "  a \t";
        QTest::newRow("markup") << "<b>&amp;</b>";
        QTest::newRow("percent") << "%1%2";
        QTest::newRow("half a pair") << QString(QChar(0xd800));
        QTest::newRow("zero character") << QString("a") + QChar(0) + "b";
        QTest::newRow("long") << QString(255, 'x');
    }

    void namesAreKeptAsTheyAre()
    {
        QFETCH(QString, name);
        ZListBox box("%I%M", ZScreen::instance(), 0, ZSkinService::clsListBox);
        ZListBoxItem item(&box, "%I%M");
        item.appendSubItem(1, name, false);
        QCOMPARE(item.getSubItemText(1, 0), name);
    }

    void onlyPixmapSlotZeroExists()
    {
        ZListBox box("%I%M", ZScreen::instance(), 0, ZSkinService::clsListBox);
        ZListBoxItem item(&box, "%I%M");
        QVERIFY(item.pixmap(0).isNull());
        item.setPixmap(1, coloured(Qt::red));
        item.setPixmap(-1, coloured(Qt::red));
        QVERIFY(item.pixmap(0).isNull());
        QVERIFY(item.pixmap(1).isNull());
        item.setPixmap(0, coloured(Qt::green));
        QCOMPARE(item.pixmap(0).toImage().pixelColor(0, 0), QColor(Qt::green));
        QVERIFY(item.pixmap(1).isNull());
    }

    void checkingNeedsABoxAndAnEnabledRow_data()
    {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("checked");
        QTest::newRow("box") << "%I%M170%C" << true << true;
        QTest::newRow("disabled") << "%I%M170%C" << false << false;
        QTest::newRow("no box") << "%I%M" << true << false;
    }

    void checkingNeedsABoxAndAnEnabledRow()
    {
        QFETCH(QString, layout);
        QFETCH(bool, enabled);
        ZListBox box("%I%M", ZScreen::instance(), 0, ZSkinService::clsListBox);
        ZListBoxItem item(&box, layout);
        QVERIFY(item.isEnabled());
        QVERIFY(!item.isChecked());
        item.setEnabled(enabled);
        QCOMPARE(item.isEnabled(), enabled);
        item.setChecked(true);
        QTEST(item.isChecked(), "checked");
        item.setChecked(false);
        QVERIFY(!item.isChecked());
    }

    void controlCharactersAreVisible_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        QTest::newRow("none") << "plain name.txt"
                              << "plain name.txt";
        QTest::newRow("line break") << "a\nb" << QString("a") + QChar(0x240a) + "b";
        QTest::newRow("return and tab") << "\r\t" << QString(QChar(0x240d)) + QChar(0x2409);
        QTest::newRow("escape") << "\x1b[31m" << QString(QChar(0x241b)) + "[31m";
        QTest::newRow("zero") << QString(QChar(0)) << QString(QChar(0x2400));
        QTest::newRow("delete") << "\x7f" << QString(QChar(0x2421));
        QTest::newRow("accents") << QString::fromUtf8("\xc3\xa9") << QString::fromUtf8("\xc3\xa9");
        QTest::newRow("one beyond ASCII") << QString(QChar(0x9b)) << QString(QChar(0xfffd));
        const QString mark(QChar(0xfffd));
        QTest::newRow("bytes that are no text")
            << QChar(0xdc80) + QString("a") + QChar(0xdcff) + QChar(0xdcff)
            << mark + "a" + mark + mark;
        QTest::newRow("first half alone") << QString(QChar(0xd800)) + "a" << mark + "a";
        QTest::newRow("byte-order mark") << QString(QChar(0xfeff)) << mark;
        for (const int turning : {0x061c, 0x200e, 0x200f, 0x202a, 0x202b, 0x202c, 0x202d, 0x202e,
                                  0x2066, 0x2067, 0x2068, 0x2069}) {
            QTest::newRow(qPrintable(QString("direction %1").arg(turning, 0, 16)))
                << QString("a") + QChar(turning) + "gpj.exe" << "a" + mark + "gpj.exe";
        }
        QTest::newRow("joiner of emoji")
            << QString("a") + QChar(0x200d) << QString("a") + QChar(0x200d);
        QTest::newRow("letter of two halves before a byte that is no text")
            << QString::fromUtf8("\xF0\x9F\x90\x80") + QChar(0xdc80)
            << QString::fromUtf8("\xF0\x9F\x90\x80") + mark;
        for (const int breaking : {0x85, 0x2028, 0x2029}) {
            QTest::newRow(qPrintable(QString("break %1").arg(breaking, 0, 16)))
                << QString("a") + QChar(breaking) + "b" << QString("a") + QChar(0x2424) + "b";
        }
    }

    void controlCharactersAreVisible()
    {
        QFETCH(QString, name);
        QTEST(ZListRowPainter::visibleText(name), "shown");
    }
};

QUARN_TEST_MAIN(tst_ZListBoxItem)
#include "tst_zlistboxitem.moc"
