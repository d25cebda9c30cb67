#include "assoc/mimetable.h"
#include "shell/fm.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

class tst_MimeTable : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void lineHasFixedColumns_data();
    void lineHasFixedColumns();
    void extensionIsUpperCase();
    void extensionKeepsTrailingBlanksAndNeverMatches();
    void extensionEndsAtColumn26();
    void linesStayInFileOrderDuplicatesIncluded();
    void blankLinesAreSkipped();
    void linesThatEndBeforeTheExtensionAreSkipped_data();
    void linesThatEndBeforeTheExtensionAreSkipped();
    void fileOfAnotherSystemIsRead_data();
    void fileOfAnotherSystemIsRead();
    void wronglyEncodedLineLeavesTheOthersAlone();
    void unusableFileGivesAtMostRubbish_data() { addUnusableKinds(); }
    void unusableFileGivesAtMostRubbish();
    void hugeFileIsNotReadAsAWhole();
    void mimeIsWhatFollowsTheLastDot_data();
    void mimeIsWhatFollowsTheLastDot();
    void nameWithoutDotMatchesNoLine();

private:
    static void load(const QByteArray& content);
    static QStringList extensions();
    static bool matches(const QString& path);
};

void tst_MimeTable::init()
{
    mimes.clear();
    mime_nums = 0;
}

void tst_MimeTable::load(const QByteArray& content)
{
    const ScratchFolder folder;
    folder.write("mime_types.cfg", content);
    loadMimes(folder.path("mime_types.cfg"));
    QCOMPARE(mime_nums, int(mimes.size()));
}

QStringList tst_MimeTable::extensions()
{
    QStringList result;
    for (const mime_struct& mime : mimes)
        result.append(mime.ext);
    return result;
}

bool tst_MimeTable::matches(const QString& path)
{
    return extensions().contains(mimeOf(path));
}

void tst_MimeTable::lineHasFixedColumns_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<int>("plugin");
    QTest::addColumn<int>("icon");
    QTest::newRow("usual") << QByteArray("002 01 JPG") << "JPG" << 1 << 2;
    QTest::newRow("largest numbers") << QByteArray("999 99 X") << "X" << 99 << 999;
    QTest::newRow("blanks before digits") << QByteArray("  2  1 JPG") << "JPG" << 1 << 2;
    QTest::newRow("blank behind digit") << QByteArray("2   7  JPG") << "JPG" << 7 << 2;
    QTest::newRow("any separators") << QByteArray("0029015JPG") << "JPG" << 1 << 2;
    QTest::newRow("signs") << QByteArray("-12 +3 JPG") << "JPG" << 3 << -12;
    QTest::newRow("letters in numbers") << QByteArray("1x2 y5 JPG") << "JPG" << 0 << 1;
    QTest::newRow("no digits") << QByteArray("--- ?? JPG") << "JPG" << 0 << 0;
    QTest::newRow("not hexadecimal") << QByteArray("0x1 0x JPG") << "JPG" << 0 << 0;
    QTest::newRow("digits of another script") << QByteArray("٢٢٢ ٣٣ JPG") << "JPG" << 0 << 0;
    QTest::newRow("extension with dots and blanks")
        << QByteArray("001 02 a.b c") << "A.B C" << 2 << 1;
    QTest::newRow("Cyrillic extension")
        << QByteArray("001 02 док") << QString::fromUtf8("ДОК") << 2 << 1;
}

void tst_MimeTable::lineHasFixedColumns()
{
    QFETCH(QByteArray, line);
    load(line + '\n');
    QCOMPARE(mime_nums, 1);
    QTEST(mimes[0].ext, "extension");
    QTEST(mimes[0].plugin_num, "plugin");
    QTEST(mimes[0].icon_num, "icon");
}

void tst_MimeTable::extensionIsUpperCase()
{
    load("002 01 jpg\n002 01 Png\n");
    QCOMPARE(extensions(), (QStringList{"JPG", "PNG"}));
    QVERIFY(matches("/a/photo.JpG"));
    QVERIFY(matches("/a/photo.png"));
    QVERIFY(!matches("/a/photo.gif"));
}

void tst_MimeTable::extensionKeepsTrailingBlanksAndNeverMatches()
{
    load("002 01 JPG \n");
    QCOMPARE(extensions(), QStringList("JPG "));
    QVERIFY(!matches("/a/photo.jpg"));
}

void tst_MimeTable::extensionEndsAtColumn26()
{
    load("002 01 ABCDEFGHIJKLMNOPQRSTUVWXYZ\n002 01 12345678901234567890\n");
    QCOMPARE(extensions(), (QStringList{"ABCDEFGHIJKLMNOPQRST", "12345678901234567890"}));
}

void tst_MimeTable::linesStayInFileOrderDuplicatesIncluded()
{
    load("003 02 MP3\n002 01 JPG\n004 05 MP3\n003 02 MP3\n");
    QCOMPARE(extensions(), (QStringList{"MP3", "JPG", "MP3", "MP3"}));
    QCOMPARE(mimes[2].plugin_num, 5);
    QCOMPARE(mimes[2].icon_num, 4);
}

void tst_MimeTable::blankLinesAreSkipped()
{
    load("\n002 01 JPG\n\n   \n002 01 PNG\n\n");
    QCOMPARE(extensions(), (QStringList{"JPG", "PNG"}));
}

void tst_MimeTable::linesThatEndBeforeTheExtensionAreSkipped_data()
{
    QTest::addColumn<QByteArray>("line");
    for (const char* line : {"7", "001 1", "001 02", "001 02 ", "001 02 \r"})
        QTest::newRow(line) << QByteArray(line);
}

void tst_MimeTable::linesThatEndBeforeTheExtensionAreSkipped()
{
    QFETCH(QByteArray, line);
    load("002 01 JPG\n" + line + "\n002 01 PNG\n");
    QCOMPARE(extensions(), (QStringList{"JPG", "PNG"}));
    QVERIFY(!matches("/a/name."));
}

void tst_MimeTable::fileOfAnotherSystemIsRead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no end of line") << QByteArray("002 01 JPG\n003 02 MP3");
    QTest::newRow("CR LF") << QByteArray("002 01 JPG\r\n003 02 MP3\r\n");
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf"
                                                   "002 01 JPG\n003 02 MP3\n");
}

void tst_MimeTable::fileOfAnotherSystemIsRead()
{
    QFETCH(QByteArray, content);
    load(content);
    QCOMPARE(extensions(), (QStringList{"JPG", "MP3"}));
    QCOMPARE(mimes[0].icon_num, 2);
    QCOMPARE(mimes[1].plugin_num, 2);
}

void tst_MimeTable::wronglyEncodedLineLeavesTheOthersAlone()
{
    load("002 01 JPG\n003 02 \xe4\xff\xfe\n003 02 MP3\n");
    QCOMPARE(mime_nums, 3);
    QCOMPARE(mimes[1].plugin_num, 2);
    QVERIFY(matches("/a.jpg"));
    QVERIFY(matches("/a.mp3"));
}

void tst_MimeTable::unusableFileGivesAtMostRubbish()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "mime_types.cfg", kind);
    const PeakMemory memory;
    loadMimes(folder.path("mime_types.cfg"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(mime_nums, int(mimes.size()));
    const bool hasLines = kind == "binary" || kind.endsWith("without end");
    QVERIFY2(hasLines || mimes.empty(), qPrintable(kind));
    QVERIFY(!matches("/a/photo.jpg"));
    for (const mime_struct& mime : mimes)
        QVERIFY(mime.ext.size() <= 3 * 20);
}

void tst_MimeTable::hugeFileIsNotReadAsAWhole()
{
    const ScratchFolder folder;
    folder.write("mime_types.cfg", "002 01 JPG\n003 02 MP3\n004 05 ");
    QVERIFY(QFile::resize(folder.path("mime_types.cfg"), PeakMemory::TooMuch));
    const PeakMemory memory;
    loadMimes(folder.path("mime_types.cfg"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(mime_nums, 3);
    QVERIFY(matches("/a.mp3"));
}

void tst_MimeTable::mimeIsWhatFollowsTheLastDot_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("mime");
    QTest::newRow("mixed case") << "/mmc/photo.JpG"
                                << "JPG";
    QTest::newRow("two dots") << "/mmc/archive.tar.gz"
                              << "GZ";
    QTest::newRow("no dot") << "/mmc/README"
                            << "unknown";
    QTest::newRow("nothing") << ""
                             << "unknown";
    QTest::newRow("hidden") << "/mmc/.profile"
                            << "PROFILE";
    QTest::newRow("dot at the end") << "/mmc/name."
                                    << "";
    QTest::newRow("dot in the folder only") << "/mmc/a.b/README"
                                            << "B/README";
    QTest::newRow("name alone") << "a.txt"
                                << "TXT";
    QTest::newRow("blank behind") << "/a.txt "
                                  << "TXT ";
    QTest::newRow("Cyrillic") << QString::fromUtf8("/файл.док") << QString::fromUtf8("ДОК");
}

void tst_MimeTable::mimeIsWhatFollowsTheLastDot()
{
    QFETCH(QString, path);
    QTEST(FM::getMime(path), "mime");
    QTEST(mimeOf(path), "mime");
}

void tst_MimeTable::nameWithoutDotMatchesNoLine()
{
    load("001 02 UNKNOWN\n001 02 unknown\n001 02 README\n001 02\n");
    QVERIFY(!matches("/mmc/README"));
    QVERIFY(!matches("/mmc/a.b/README"));
}

QUARN_TEST_MAIN(tst_MimeTable)
#include "tst_mimetable.moc"
