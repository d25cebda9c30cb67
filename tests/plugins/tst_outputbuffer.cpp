#include "plugins/execute/outputbuffer.h"
#include "tests/support/testmain.h"

/// What is kept of a program's output.
class tst_OutputBuffer : public QObject
{
    Q_OBJECT

private slots:
    void terminalCodesAreFollowed_data();
    void terminalCodesAreFollowed();
    void onlyTheEndIsKept();
    void endOfOneLongLineIsKept();
    void clearedItStartsAnew();

private:
    static QByteArray textOf(const OutputBuffer& buffer);
};

QByteArray tst_OutputBuffer::textOf(const OutputBuffer& buffer)
{
    return buffer.read(buffer.begin(), buffer.end() - buffer.begin());
}

void tst_OutputBuffer::terminalCodesAreFollowed_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char* name, const QByteArray& output, const QByteArray& text) {
        QTest::newRow(name) << output << text;
    };
    row("text", "one\ntwo", "one\ntwo");
    row("line ends of other systems", "one\r\ntwo\r\n", "one\ntwo\n");
    row("line written over", "title\n10%\r20%\r100%\n", "title\n100%\n");
    row("first line written over", "10%\r20%", "20%");
    row("return at the end", "10%\r", "10%");
    row("several returns", "10%\r\r\r\nx", "10%\nx");
    row("colours", "\x1b[1;31mred\x1b[0m\n", "red\n");
    row("cursor", "\x1b[2J\x1b[Hx\x1b[?25h", "x");
    row("other escape", "a\x1b(b", "ab");
    row("window title", "\x1b]0;title\ax", "x");
    row("window title ended otherwise", "\x1b]0;title\x1b\\x", "x");
    row("endless sequence", "\x1b[1;2\nx", "\nx");
    row("endless title", "\x1b]0;title\nx", "\nx");
}

void tst_OutputBuffer::terminalCodesAreFollowed()
{
    QFETCH(QByteArray, output);
    OutputBuffer whole;
    whole.append(output);
    QTEST(textOf(whole), "text");
    OutputBuffer pieces;
    for (const char byte : output)
        pieces.append(QByteArray(1, byte));
    QTEST(textOf(pieces), "text");
}

void tst_OutputBuffer::onlyTheEndIsKept()
{
    OutputBuffer buffer;
    qint64 written = 0;
    for (int i = 0; i < 300000; ++i) {
        const QByteArray line = "line " + QByteArray::number(i) + '\n';
        buffer.append(line);
        written += line.size();
        QVERIFY(buffer.end() - buffer.begin() <= 2 * OutputBuffer::KeptBytes);
    }
    QCOMPARE(buffer.end(), written);
    const QByteArray text = textOf(buffer);
    QVERIFY(text.size() > OutputBuffer::KeptBytes / 2);
    QVERIFY(text.startsWith("line "));
    QVERIFY(text.endsWith("line 299999\n"));
    QCOMPARE(buffer.read(0, 10), QByteArray());
}

void tst_OutputBuffer::endOfOneLongLineIsKept()
{
    OutputBuffer buffer;
    for (int i = 0; i < 100; ++i)
        buffer.append(QByteArray(100000, 'x'));
    buffer.append("end");
    QVERIFY(textOf(buffer).endsWith("xend"));
    QVERIFY(textOf(buffer).size() <= 2 * OutputBuffer::KeptBytes);
    buffer.append("\rnew");
    QCOMPARE(textOf(buffer), QByteArray("new"));
}

void tst_OutputBuffer::clearedItStartsAnew()
{
    OutputBuffer buffer;
    buffer.append(QByteArray(2 * OutputBuffer::KeptBytes, 'x') + "\x1b[");
    buffer.clear();
    buffer.append("31 new");
    QCOMPARE(buffer.begin(), 0);
    QCOMPARE(textOf(buffer), QByteArray("31 new"));
}

QUARN_TEST_MAIN(tst_OutputBuffer)
#include "tst_outputbuffer.moc"
