#include "platform/zconfig.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

class tst_ZConfig : public QObject
{
    Q_OBJECT

private slots:
    void valuesAreKeptAsWritten_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("value");
        QTest::newRow("plain") << QByteArray("Key=value") << "value";
        QTest::newRow("blanks around") << QByteArray("  Key \t = \t a  b \t ") << "a  b";
        QTest::newRow("empty") << QByteArray("Key=") << "";
        QTest::newRow("blanks alone") << QByteArray("Key =  \t ") << "";
        QTest::newRow("quotes") << QByteArray("Key=\"a b\"") << "\"a b\"";
        QTest::newRow("one quote") << QByteArray("Key=don`t \"") << "don`t \"";
        QTest::newRow("commas") << QByteArray("Key=a, b,,c") << "a, b,,c";
        QTest::newRow("backslashes") << QByteArray("Key=a\\n\\\\b\\") << "a\\n\\\\b\\";
        QTest::newRow("percent") << QByteArray("Key=%1 100% %20") << "%1 100% %20";
        QTest::newRow("equals sign") << QByteArray("Key=a=b==") << "a=b==";
        QTest::newRow("semicolon") << QByteArray("Key=a ; b # c") << "a ; b # c";
        QTest::newRow("brackets") << QByteArray("Key=[x]") << "[x]";
        QTest::newRow("here-document") << QByteArray("Key=<<<END") << "<<<END";
        QTest::newRow("markup") << QByteArray("Key=<b>&amp;</b>") << "<b>&amp;</b>";
        QTest::newRow("Cyrillic") << QByteArray("Key=\xd0\x9e\xd0\xba") << QString::fromUtf8("Ок");
        QTest::newRow("Latin-1") << QByteArray("Key=gr\xfc\xdf") << QString::fromUtf8("grüß");
        QTest::newRow("Windows line end") << QByteArray("Key=value\r") << "value";
        QTest::newRow("key without value") << QByteArray("Key") << "fallback";
        QTest::newRow("other case") << QByteArray("KEY=value") << "fallback";
        QTest::newRow("comment ;") << QByteArray(";Key=value") << "fallback";
        QTest::newRow("comment #") << QByteArray("#Key=value") << "fallback";
        QTest::newRow("twice") << QByteArray("Key=a\nKey=b") << "b";
        QTest::newRow("in another group") << QByteArray("[Other]\nKey=value") << "fallback";
        QTest::newRow("group again") << QByteArray("[Other]\nx=y\n[Setting]\nKey=late") << "late";
    }

    void valuesAreKeptAsWritten()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, value);
        for (const QByteArray& before : {QByteArray("[Setting]\n"), QByteArray("\n[Setting]\r\n"),
                                         QByteArray("\xef\xbb\xbf[Setting]\n")}) {
            for (const QByteArray& after : {QByteArray("\n"), QByteArray()})
                QCOMPARE(read(before + line + after), value);
        }
    }

    void absentIsNotEmpty()
    {
        folder_.write("file", "[Setting]\nEmpty=\n");
        const ZConfig config(folder_.path("file"), true);
        QVERIFY(config.readEntry("Setting", "Absent", QString()).isNull());
        const QString empty = config.readEntry("Setting", "Empty", QString());
        QVERIFY(empty.isEmpty());
        QVERIFY(!empty.isNull());
        QVERIFY(config.readEntry("Nowhere", "Empty", QString()).isNull());
        QVERIFY(config.readEntry("setting", "Empty", QString()).isNull());
    }

    void keysBesideBadLinesAreRead()
    {
        QCOMPARE(read("garbage\n]]][[\n=\n[Setting\n[Setting]\nKey=value\n===\n"), "value");
        QCOMPARE(read("Key=outside\n[Setting]\nOther=1\n"), "fallback");
    }

    void uselessFileGivesTheFallback_data()
    {
        QTest::addColumn<QByteArray>("content");
        QByteArray bytes;
        for (int i = 0; i < 65536; ++i)
            bytes.append(char((i * 7919) >> 3));
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << bytes;
        QTest::newRow("zeros") << QByteArray(100000, '\0');
        QTest::newRow("endless line") << "[Setting]\n" + QByteArray(500000, 'K') + "=value";
        QTest::newRow("brackets") << QByteArray(100000, '[');
        QTest::newRow("line breaks") << QByteArray(100000, '\n');
        const QString text = "[Setting]\nKey=value\n";
        QTest::newRow("wide characters")
            << QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    }

    void uselessFileGivesTheFallback()
    {
        QFETCH(QByteArray, content);
        QCOMPARE(read(content), "fallback");
    }

    void zeroByteHidesNothingBehindIt()
    {
        QCOMPARE(read(QByteArrayLiteral("[Setting]\nOther=\0\nKey=value\n")), "value");
    }

    void onlyTheBeginningOfAHugeFileCounts()
    {
        const QByteArray filling = QByteArray("; filling\n").repeated(ZConfig::MaxBytes / 10 + 1);
        QCOMPARE(read("[Setting]\nKey=early\n" + filling + "Key=late\n"), "early");
    }

    void whatIsNoFileGivesTheFallback_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"missing", "folder", "fifo", "locked", "dangling", "loop"})
            QTest::newRow(name) << name;
        QTest::newRow("device") << "/dev/zero";
        QTest::newRow("empty name") << "";
    }

    void whatIsNoFileGivesTheFallback()
    {
        QFETCH(QString, name);
        const ScratchFolder folder;
        folder.makeFolder("folder");
        folder.makeFifo("fifo");
        folder.write("locked", "[Setting]\nKey=value\n");
        folder.setMode("locked", 0);
        folder.makeLink("dangling", "nowhere");
        folder.makeLink("loop", folder.path("loop"));
        const bool relative = !name.isEmpty() && !name.startsWith('/');
        const ZConfig config(relative ? folder.path(name) : name, true);
        QCOMPARE(config.readEntry("Setting", "Key", "fallback"), QString("fallback"));
        QVERIFY(!folder.exists("missing"));
    }

    void keysOfAGroupAreThoseThatStandInIt()
    {
        folder_.write("keys", "a=1\n[Setting]\nz=1\n;c=1\nb=\n[Other]\nd=1\n[Setting]\nz=2\n"
                              "no equals sign\nA\xff=1\n");
        const ZConfig config(folder_.path("keys"), false);
        QCOMPARE(config.keysOf("Setting"), QStringList({"z", "b", QString("A") + QChar(0xfffd)}));
        QCOMPARE(config.keysOf("Missing"), QStringList());
        QCOMPARE(ZConfig(folder_.path("missing"), false).keysOf("Setting"), QStringList());
    }

    void fileIsReadOnce()
    {
        folder_.write("once", "[Setting]\nKey=before\n");
        const ZConfig config(folder_.path("once"), false);
        folder_.write("once", "[Setting]\nKey=after\n");
        QCOMPARE(config.readEntry("Setting", "Key", {}), QString("before"));
    }

private:
    QString read(const QByteArray& content) const
    {
        folder_.write("file", content);
        const ZConfig config(folder_.path("file"), true);
        return config.readEntry("Setting", "Key", "fallback");
    }

    ScratchFolder folder_;
};

QUARN_TEST_MAIN(tst_ZConfig)
#include "tst_zconfig.moc"
