#include "tests/lang/knowntexts.h"
#include "tests/support/debuglines.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <QSet>

#include <iterator>

class tst_Texts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void eachTextHasAKeyOfItsOwn();
    void textTakesItsDefault_data();
    void textTakesItsDefault();
    void keyOfTheFileChangesItsTextAlone_data();
    void keyOfTheFileChangesItsTextAlone();
    void allTextsOfAFileAreTaken();
    void folderExistsKeyWithAnSAtTheEndIsNoKey();
    void exitQuestionNamesTheProgram();
    void numberTakesItsPlace_data();
    void numberTakesItsPlace();
    void valueIsUsedAsItIs_data();
    void valueIsUsedAsItIs();
    void emptyValueIsTheEmptyText();
    void oldFileIsWarnedAboutAndUsed();
    void warningTellsBothVersions_data();
    void warningTellsBothVersions();
    void fileIsNamedOnTheDebugStreamFirst();
    void pathIsPlainConcatenation_data();
    void pathIsPlainConcatenation();
    void withoutAUsableFileTextsAreEnglish_data() { addUnusableKinds(); }
    void withoutAUsableFileTextsAreEnglish();
    void keysOfOtherGroupsDoNotCount();
    void fileInLatin1IsRead();
    void fileInAnotherEncodingLeavesTheRestAlone();
    void hugeFileIsNotReadAsAWhole();

private:
    static void load(const QByteArray& content);
    static void compareWithEnglish(const QByteArray& exceptKey = {});
};

namespace
{

const QString OldFileWarning =
    QStringLiteral("WARNING: Version of lang file is %1 - please update it to 102");

} // namespace

void tst_Texts::initTestCase()
{
    for (const KnownText& known : KnownTexts)
        QVERIFY2(known.text->isNull(), known.key);
}

void tst_Texts::init()
{
    for (const KnownText& known : KnownTexts)
        *known.text = QStringLiteral("before");
}

void tst_Texts::load(const QByteArray& content)
{
    const ScratchFolder folder;
    folder.write("a.lang", content);
    loadTexts(folder.path("a.lang"));
}

void tst_Texts::compareWithEnglish(const QByteArray& exceptKey)
{
    for (const KnownText& known : KnownTexts) {
        if (known.key != exceptKey)
            QCOMPARE(*known.text, QString::fromLatin1(known.english));
    }
}

void tst_Texts::eachTextHasAKeyOfItsOwn()
{
    QSet<const QString*> texts;
    QSet<QByteArray> keys;
    for (const KnownText& known : KnownTexts) {
        texts.insert(known.text);
        keys.insert(known.key);
    }
    QCOMPARE(texts.size(), qsizetype(std::size(KnownTexts)));
    QCOMPARE(keys.size(), texts.size());
}

void tst_Texts::textTakesItsDefault_data()
{
    QTest::addColumn<int>("number");
    int number = 0;
    for (const KnownText& known : KnownTexts)
        QTest::newRow(known.key) << number++;
}

void tst_Texts::textTakesItsDefault()
{
    QFETCH(int, number);
    load("[Language]\nVER = 102\n");
    QCOMPARE(*KnownTexts[number].text, QString::fromLatin1(KnownTexts[number].english));
}

void tst_Texts::keyOfTheFileChangesItsTextAlone_data()
{
    textTakesItsDefault_data();
}

void tst_Texts::keyOfTheFileChangesItsTextAlone()
{
    QFETCH(int, number);
    const KnownText& known = KnownTexts[number];
    load(QByteArray("[Language]\nVER = 102\n") + known.key + " = Other text\n");
    QCOMPARE(*known.text, QString("Other text"));
    compareWithEnglish(known.key);
}

void tst_Texts::allTextsOfAFileAreTaken()
{
    QByteArray content("[Language]\nVER = 102\n");
    for (const KnownText& known : KnownTexts)
        content += QByteArray(known.key) + " = text of " + known.key + '\n';
    load(content);
    for (const KnownText& known : KnownTexts)
        QCOMPARE(*known.text, QString("text of %1").arg(known.key));
}

void tst_Texts::folderExistsKeyWithAnSAtTheEndIsNoKey()
{
    load("[Language]\nVER = 102\nRENAME_DIREXISTS = Wrong\n");
    QCOMPARE(LANG_RENAME_DIREXISTS, QString("A dir with that name already exists.."));
    load("[Language]\nVER = 102\nRENAME_DIREXIST = Right\nRENAME_DIREXISTS = Wrong\n");
    QCOMPARE(LANG_RENAME_DIREXISTS, QString("Right"));
    QCOMPARE(LANG_RENAME_EXISTS, QString("This name already exists."));
}

void tst_Texts::exitQuestionNamesTheProgram()
{
    load({});
    QCOMPARE(LANG_EXIT_SURE, QString("Are you sure want exit Quarn?"));
}

void tst_Texts::numberTakesItsPlace_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("with");
    QTest::newRow("first") << "%1 marked"
                           << "12 marked";
    QTest::newRow("last") << QString::fromUtf8("Отмечено: %1") << QString::fromUtf8("Отмечено: 12");
    QTest::newRow("none") << "marked"
                          << "marked";
    QTest::newRow("other places") << "%2 of %%1"
                                  << "%2 of %12";
    QTest::newRow("empty") << ""
                           << "";
}

void tst_Texts::numberTakesItsPlace()
{
    QFETCH(QString, text);
    const DebugLines lines;
    QTEST(withNumber(text, 12), "with");
    QCOMPARE(lines.all(), QStringList());
}

void tst_Texts::valueIsUsedAsItIs_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("blanks inside") << "Leave   the program now";
    QTest::newRow("escapes") << "a\\nb\\tc\\\\";
    QTest::newRow("markup") << "<b>Leave</b><hr>&amp;";
    QTest::newRow("places for arguments") << "%1 of %2 %n %s";
    QTest::newRow("quotes") << "\"Leave\"";
    QTest::newRow("separators") << "a=b;c#d,e";
    QTest::newRow("Cyrillic") << QString::fromUtf8("Выход");
    QTest::newRow("beyond the first plane") << QString::fromUtf8("😀");
    QTest::newRow("long") << QString(20000, QLatin1Char('x'));
}

void tst_Texts::valueIsUsedAsItIs()
{
    QFETCH(QString, value);
    load("[Language]\nEXIT = " + value.toUtf8() + "\nNO = Nope\n");
    QCOMPARE(LANG_EXIT, value);
    QCOMPARE(LANG_NO, QString("Nope"));
}

void tst_Texts::emptyValueIsTheEmptyText()
{
    load("[Language]\nVER = 102\nEXIT =\nNO = \n");
    QCOMPARE(LANG_EXIT, QString(""));
    QCOMPARE(LANG_NO, QString(""));
    QCOMPARE(LANG_YES, QString("Yes"));
}

void tst_Texts::oldFileIsWarnedAboutAndUsed()
{
    const DebugLines lines;
    load("[Language]\nVER = 101\nEXIT = Quit\n");
    QVERIFY(lines.contains("WARNING: Version of lang file is 101 - please update it to 102"));
    QCOMPARE(LANG_EXIT, QString("Quit"));
    compareWithEnglish("EXIT");
}

void tst_Texts::warningTellsBothVersions_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QString>("told");
    QTest::newRow("missing") << QByteArray() << "0";
    QTest::newRow("empty") << QByteArray("VER =\n") << "0";
    QTest::newRow("text") << QByteArray("VER = new\n") << "0";
    QTest::newRow("one less") << QByteArray("VER = 101\n") << "101";
    QTest::newRow("negative") << QByteArray("VER = -102\n") << "-102";
    QTest::newRow("digits first") << QByteArray("VER = 99.5 beta\n") << "99";
    QTest::newRow("hexadecimal") << QByteArray("VER = 0x66\n") << "0";
    QTest::newRow("other group") << QByteArray("[Other]\nVER = 102\n") << "0";
    QTest::newRow("expected") << QByteArray("VER = 102\n") << "";
    QTest::newRow("expected with letters") << QByteArray("VER = 102a\n") << "";
    QTest::newRow("newer") << QByteArray("VER = 103\n") << "";
    QTest::newRow("signed") << QByteArray("VER = +0102\n") << "";
    QTest::newRow("huge") << QByteArray("VER = 99999999999999999999\n") << "";
}

void tst_Texts::warningTellsBothVersions()
{
    QFETCH(QByteArray, version);
    QFETCH(QString, told);
    const DebugLines lines;
    load("[Language]\n" + version);
    QCOMPARE(lines.all().mid(1),
             told.isEmpty() ? QStringList() : QStringList(OldFileWarning.arg(told)));
}

void tst_Texts::fileIsNamedOnTheDebugStreamFirst()
{
    const DebugLines lines;
    const QString file = QString::fromUtf8("/nowhere/%1 %s Язык.lang");
    loadTexts(file);
    QCOMPARE(lines.all(), (QStringList{"--- read lang file: " + file, OldFileWarning.arg(0)}));
}

void tst_Texts::pathIsPlainConcatenation_data()
{
    QTest::addColumn<QString>("workFolder");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("file");
    QTest::newRow("usual") << "/w/"
                           << "russian"
                           << "/w//lang/russian.lang";
    QTest::newRow("no slash at the end") << "/w"
                                         << "russian"
                                         << "/w/lang/russian.lang";
    QTest::newRow("no work folder") << QString() << "russian"
                                    << "/lang/russian.lang";
    QTest::newRow("no language") << "/w/" << QString() << "/w//lang/.lang";
    QTest::newRow("neither") << QString() << QString() << "/lang/.lang";
    QTest::newRow("percent signs") << "/%1/%2/"
                                   << "%1"
                                   << "/%1/%2//lang/%1.lang";
}

void tst_Texts::pathIsPlainConcatenation()
{
    QFETCH(QString, workFolder);
    QFETCH(QString, language);
    QTEST(languageFile(workFolder, language), "file");
}

void tst_Texts::withoutAUsableFileTextsAreEnglish()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "a.lang", kind);
    const DebugLines lines;
    const PeakMemory memory;
    loadTexts(folder.path("a.lang"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QVERIFY(lines.contains(OldFileWarning.arg(0)));
    compareWithEnglish();
}

void tst_Texts::keysOfOtherGroupsDoNotCount()
{
    load("EXIT = before any\n[Setting]\nEXIT = wrong\n[Languages]\nEXIT = wrong\n");
    compareWithEnglish();
    load("[Setting]\nEXIT = wrong\n[Language]\nEXIT = right\n");
    QCOMPARE(LANG_EXIT, QString("right"));
}

void tst_Texts::fileInLatin1IsRead()
{
    load("[Language]\nVER = 102\nSIZE = Gr\xf6\xdf"
         "e\nNO = Nein\n");
    QCOMPARE(LANG_SIZE, QString::fromUtf8("Größe"));
    QCOMPARE(LANG_NO, QString("Nein"));
}

void tst_Texts::fileInAnotherEncodingLeavesTheRestAlone()
{
    QByteArray wide("\xff\xfe", 2);
    for (const char character : QByteArray("[Language]\nEXIT = Quit\n")) {
        wide += character;
        wide += '\0';
    }
    load(wide);
    compareWithEnglish("EXIT");
}

void tst_Texts::hugeFileIsNotReadAsAWhole()
{
    const ScratchFolder folder;
    folder.write("a.lang", "[Language]\nEXIT = Quit\nNO = Nope\nYES = ");
    QVERIFY(QFile::resize(folder.path("a.lang"), PeakMemory::TooMuch));
    const PeakMemory memory;
    loadTexts(folder.path("a.lang"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(LANG_EXIT, QString("Quit"));
    QCOMPARE(LANG_NO, QString("Nope"));
}

QUARN_TEST_MAIN(tst_Texts)
#include "tst_texts.moc"
