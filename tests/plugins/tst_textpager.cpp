#include "plugins/support/textpager.h"
#include "tests/plugins/memorytext.h"
#include "tests/support/testmain.h"

#include <QRegularExpression>

#include <algorithm>

/// Characters are one pixel wide, so that widths are columns.
class tst_TextPager : public QObject
{
    Q_OBJECT

private slots:
    void linesAreBroken_data();
    void linesAreBroken();
    void rowsCoverTheTextFromWhereverOneComes_data();
    void rowsCoverTheTextFromWhereverOneComes();
    void rowsKnowWhereTheirLineBegins_data();
    void rowsKnowWhereTheirLineBegins();
    void wordsOfALongLineStayWhole();
    void charactersOfALongLineStayWhole();
    void linesThatFillABlockStayWhole();
    void lastPageShowsTheEnd_data();
    void lastPageShowsTheEnd();
    void shorterTextIsShownFromItsLastRow();
    void textMayHaveLostItsBeginning();
    void textThatCannotBeReadGivesNoRows();
    void littleIsReadOfAHugeText_data();
    void littleIsReadOfAHugeText();
};

namespace
{

int oneColumn(char32_t /*character*/)
{
    return 1;
}

QStringList textsOf(const QList<TextRow>& rows)
{
    QStringList texts;
    for (const TextRow& row : rows)
        texts.append(row.text);
    return texts;
}

/// Four gigabytes of one line, made as they are read.
class HugeText : public TextSource
{
public:
    static constexpr qint64 Bytes = 4LL * 1024 * 1024 * 1024;

    explicit HugeText(char byte) : byte_(byte) {}

    qint64 end() const override { return Bytes; }
    QByteArray read(qint64 offset, qsizetype count) const override
    {
        const qint64 length = std::min<qint64>(count, Bytes - offset);
        bytesRead += length;
        return QByteArray(length, byte_);
    }
    mutable qint64 bytesRead = 0;

private:
    char byte_;
};

class UnreadableText : public TextSource
{
public:
    qint64 end() const override { return 1000; }
    QByteArray read(qint64 /*offset*/, qsizetype /*count*/) const override { return {}; }
};

} // namespace

void tst_TextPager::linesAreBroken_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("width");
    QTest::addColumn<QStringList>("rows");
    const auto row = [](const char* name, const QByteArray& text, int width,
                        const QStringList& rows) { QTest::newRow(name) << text << width << rows; };
    row("nothing", "", 10, {});
    row("a line", "one", 10, {"one"});
    row("a line with its end", "one\n", 10, {"one"});
    row("lines", "one\ntwo\n", 10, {"one", "two"});
    row("empty lines", "\n\none\n\n", 10, {"", "", "one", ""});
    row("line ends of other systems", "one\r\ntwo\r\n\r\n", 10, {"one", "two", ""});
    row("at a blank", "one two three", 8, {"one two ", "three"});
    row("exactly full", "one two\nthree", 7, {"one two", "three"});
    row("blanks stand out", "one     two", 3, {"one     ", "two"});
    row("a long word", "abcdefghij", 4, {"abcd", "efgh", "ij"});
    row("a long word behind others", "ab cdefghij", 4, {"ab ", "cdef", "ghij"});
    row("an indent is no place to break", "  abcdef", 4, {"  ab", "cdef"});
    row("narrower than a character", "abc", 0 + 1, {"a", "b", "c"});
    row("not broken", "one two three\nfour", 0, {"one two three", "four"});
    row("tab stops", "a\tb\tc d", 17, {"a\tb\tc ", "d"});
    row("UTF-8", "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80z", 2,
        {QString::fromUtf8("\xc3\xa4\xe2\x82\xac"), QString::fromUtf8("\xf0\x9f\x98\x80z")});
    row("byte order mark", "\xef\xbb\xbfone", 10, {"one"});
    row("byte order mark alone", "\xef\xbb\xbf", 10, {""});
    row("Latin-1", "caf\xe9 \xfc", 10, {QString::fromUtf8("caf\xc3\xa9 \xc3\xbc")});
    row("each line for itself", "\xe9\n\xc3\xa9", 10,
        {QString::fromUtf8("\xc3\xa9"), QString::fromUtf8("\xc3\xa9")});
    row("control characters", QByteArray("a\0b\x1b[\x7f\rz", 8), 10,
        {QString::fromUtf8("a\xc2\xb7"
                           "b\xc2\xb7[\xc2\xb7\xc2\xb7z")});
    row("line breaks of Unicode",
        "a\xe2\x80\xa8"
        "b\xc2\x85"
        "c",
        10,
        {QString::fromUtf8("a\xc2\xb7"
                           "b\xc2\xb7"
                           "c")});
}

void tst_TextPager::linesAreBroken()
{
    QFETCH(QByteArray, text);
    QFETCH(int, width);
    const MemoryText source(text);
    TextPager pager(source, oneColumn);
    pager.setWidth(width);
    QTEST(textsOf(pager.rows(0, 100)), "rows");
}

void tst_TextPager::rowsCoverTheTextFromWhereverOneComes_data()
{
    constexpr int Block = int(TextPager::BlockBytes);
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("short lines") << QByteArray("some words in a line\n").repeated(2000);
    QTest::newRow("empty lines") << QByteArray("\n").repeated(3 * Block);
    QTest::newRow("one long line") << QByteArray("words in a line ").repeated(3000);
    QTest::newRow("no blank") << QByteArray("x").repeated(5 * Block + 17);
    QTest::newRow("zeros") << QByteArray(5 * Block + 17, '\0');
    QTest::newRow("blanks") << QByteArray(4 * Block, ' ');
    QTest::newRow("characters of three bytes") << QByteArray("\xe2\x82\xac").repeated(2 * Block);
    QTest::newRow("continuations only") << QByteArray(4 * Block, '\x80');
    for (const int length :
         {Block - 1, Block, Block + 1, 2 * Block - 1, 2 * Block, 2 * Block + 1}) {
        const QByteArray line = QByteArray(length - 1, 'x') + '\n';
        QTest::newRow(qPrintable(QString("lines of %1").arg(length))) << line.repeated(5);
        QTest::newRow(qPrintable(QString("lines of %1 between others").arg(length)))
            << "ab\n" + line + "cd\n\n" + line + line + "ef";
    }
}

void tst_TextPager::rowsCoverTheTextFromWhereverOneComes()
{
    QFETCH(QByteArray, text);
    const MemoryText source(text);
    TextPager pager(source, oneColumn);
    pager.setWidth(100);
    const QList<TextRow> rows = pager.rows(0, int(text.size()) + 1);
    QVERIFY(!rows.isEmpty());
    QCOMPARE(rows.front().start, 0);
    QCOMPARE(rows.back().end, text.size());
    for (qsizetype i = 1; i < rows.size(); ++i)
        QCOMPARE(rows.at(i).start, rows.at(i - 1).end);
    const qsizetype step = std::max<qsizetype>(rows.size() / 50, 1);
    for (qsizetype i = 0; i < rows.size(); i += step) {
        const TextRow& row = rows.at(i);
        QCOMPARE(pager.rowStart(row.start), row.start);
        QCOMPARE(pager.rowStart(row.end - 1), row.start);
        QCOMPARE(pager.moved(row.start, -1), rows.at(std::max<qsizetype>(i - 1, 0)).start);
        QCOMPARE(pager.moved(row.start, 1), rows.at(std::min(i + 1, rows.size() - 1)).start);
        QCOMPARE(pager.moved(row.start, -30), rows.at(std::max<qsizetype>(i - 30, 0)).start);
        QCOMPARE(pager.rows(row.start, 1).front().text, row.text);
    }
}

void tst_TextPager::rowsKnowWhereTheirLineBegins_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<bool>>("fromTheRight"); // each row
    const QString shalom = QString::fromUtf8("\u05e9\u05dc\u05d5\u05dd");
    const QString salam = QString::fromUtf8("\u0633\u0644\u0627\u0645");
    QTest::newRow("Latin") << "abc" << QList<bool>{false};
    QTest::newRow("Hebrew") << shalom << QList<bool>{true};
    QTest::newRow("Arabic") << salam << QList<bool>{true};
    QTest::newRow("nothing but signs") << "12 + 3!" << QList<bool>{false};
    QTest::newRow("signs first") << "12. " + shalom << QList<bool>{true};
    QTest::newRow("the first letter says") << shalom + " abc" << QList<bool>{true};
    QTest::newRow("the first letter says, Latin") << "abc " + shalom << QList<bool>{false};
    QTest::newRow("line by line") << "abc\n" + shalom + "\n\nabc"
                                  << QList<bool>{false, true, false, false};
    QTest::newRow("all rows of a line")
        << shalom + " abcdefg " + shalom << QList<bool>{true, true, true};
}

void tst_TextPager::rowsKnowWhereTheirLineBegins()
{
    QFETCH(QString, text);
    const MemoryText source(text.toUtf8());
    TextPager pager(source, oneColumn);
    pager.setWidth(8);
    QList<bool> fromTheRight;
    for (const TextRow& row : pager.rows(0, 10))
        fromTheRight.append(row.rightToLeft);
    QTEST(fromTheRight, "fromTheRight");
}

void tst_TextPager::wordsOfALongLineStayWhole()
{
    const MemoryText source(QByteArray("longer words ").repeated(4000));
    TextPager pager(source, oneColumn);
    pager.setWidth(30);
    const QStringList words =
        textsOf(pager.rows(0, 100000)).join(QLatin1Char('|')).split(QRegularExpression("[ |]+"));
    QCOMPARE(words.count("longer"), 4000);
    QCOMPARE(words.count("words"), 4000);
}

void tst_TextPager::charactersOfALongLineStayWhole()
{
    // Three bytes do not divide a block.
    const QString text = QString::fromUtf8("\xe2\x82\xac").repeated(20000);
    const MemoryText source(text.toUtf8());
    TextPager pager(source, oneColumn);
    pager.setWidth(30);
    QCOMPARE(textsOf(pager.rows(0, 100000)).join(QString()), text);
}

void tst_TextPager::linesThatFillABlockStayWhole()
{
    const QString line = QString("words ").repeated(2000).left(TextPager::BlockBytes - 1);
    const MemoryText source((line + '\n').repeated(4).toLatin1());
    const TextPager pager(source, oneColumn);
    QCOMPARE(textsOf(pager.rows(0, 100)), (QStringList{line, line, line, line}));
}

void tst_TextPager::lastPageShowsTheEnd_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("nothing") << QByteArray() << QStringList();
    QTest::newRow("less than a page") << QByteArray("a\nb\n") << QStringList{"a", "b"};
    QTest::newRow("a page") << QByteArray("a\nb\nc\n") << QStringList{"a", "b", "c"};
    QTest::newRow("more") << QByteArray("a\nb\nc\nd\ne") << QStringList{"c", "d", "e"};
}

void tst_TextPager::lastPageShowsTheEnd()
{
    QFETCH(QByteArray, text);
    const MemoryText source(text);
    TextPager pager(source, oneColumn);
    pager.setWidth(10);
    QTEST(textsOf(pager.rows(pager.lastPage(3), 3)), "rows");
}

void tst_TextPager::shorterTextIsShownFromItsLastRow()
{
    MemoryText source(QByteArray("line\n").repeated(1000));
    TextPager pager(source, oneColumn);
    pager.setWidth(10);
    const qint64 top = pager.lastPage(10);
    source.setBytes("first\nlast\n");
    QCOMPARE(textsOf(pager.rows(top, 10)), QStringList{"last"});
    QCOMPARE(pager.moved(top, -5), 0);
    source.setBytes({});
    QCOMPARE(pager.rows(top, 10).size(), 0);
    QCOMPARE(pager.moved(top, 5), 0);
    QCOMPARE(pager.moved(top, -5), 0);
}

void tst_TextPager::textMayHaveLostItsBeginning()
{
    const QByteArray text = QByteArray("0123456789 ").repeated(5000);
    const qint64 lost = 20003;
    const MemoryText source(text, lost);
    TextPager pager(source, oneColumn);
    pager.setWidth(40);
    const QList<TextRow> rows = pager.rows(0, 100000);
    QCOMPARE(rows.front().start, lost);
    QCOMPARE(rows.back().end, text.size());
    QCOMPARE(textsOf(rows).join(QString()), QString::fromLatin1(text.mid(lost)));
    QCOMPARE(pager.moved(text.size(), -100000), lost);
}

void tst_TextPager::textThatCannotBeReadGivesNoRows()
{
    const UnreadableText source;
    TextPager pager(source, oneColumn);
    pager.setWidth(40);
    QCOMPARE(pager.rows(0, 10).size(), 0);
    QCOMPARE(pager.rows(500, 10).size(), 0);
    QCOMPARE(pager.moved(500, 3), 0);
    QCOMPARE(pager.moved(500, -3), 0);
    QCOMPARE(pager.lastPage(10), 0);
}

void tst_TextPager::littleIsReadOfAHugeText_data()
{
    QTest::addColumn<char>("byte");
    QTest::newRow("letters") << 'a';
    QTest::newRow("zeros") << '\0';
    QTest::newRow("line breaks") << '\n';
}

void tst_TextPager::littleIsReadOfAHugeText()
{
    QFETCH(char, byte);
    const HugeText source(byte);
    TextPager pager(source, oneColumn);
    pager.setWidth(40);
    const qint64 top = pager.lastPage(20);
    const QList<TextRow> rows = pager.rows(top, 20);
    QCOMPARE(rows.size(), 20);
    QCOMPARE(rows.back().end, HugeText::Bytes);
    QVERIFY(pager.moved(HugeText::Bytes / 2, -20) < HugeText::Bytes / 2);
    QVERIFY2(source.bytesRead < 4 * 1024 * 1024, qPrintable(QString::number(source.bytesRead)));
}

QUARN_TEST_MAIN(tst_TextPager)
#include "tst_textpager.moc"
