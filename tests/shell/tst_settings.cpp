#include "files/names.h"
#include "shell/settings.h"
#include "tests/support/debuglines.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <limits>

class tst_Settings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void globalsHoldStartValuesBeforeTheFileIsRead();
    void everyKeyFillsItsSetting();
    void withoutFileAllIsEmpty_data() { addUnusableKinds(); }
    void withoutFileAllIsEmpty();
    void missingKeyIsEmptyNotTheStartValue_data();
    void missingKeyIsEmptyNotTheStartValue();
    void absentWorkFolderIsUnset();
    void workFolderGivenAsEmptyTextIsUnset();
    void workFolderIsUsedAsItIs_data();
    void workFolderIsUsedAsItIs();
    void switchIsOnForAnyNumberButZero_data();
    void switchIsOnForAnyNumberButZero();
    void headerTypeIsTheNumberAtTheStart_data();
    void headerTypeIsTheNumberAtTheStart();
    void everyExtraIsSwitchedByItself_data();
    void everyExtraIsSwitchedByItself();
    void extraThatIsNonsenseIsOffAndNamed_data();
    void extraThatIsNonsenseIsOffAndNamed();
    void unknownExtraIsNamed();
    void extrasOfOtherGroupsDoNotCount();
    void installedFileListsAllExtras();
    void keysOfOtherGroupsDoNotCount();
    void fileIsSoughtInTheFolderGiven();
    void folderWithPercentSignsIsFound();
    void emptyFolderMeansTheCurrentOne();
    void fileOfAnotherSystemIsRead_data();
    void fileOfAnotherSystemIsRead();
    void pathsKeepTheirBytes();
    void keysBeforeRubbishAreRead_data();
    void keysBeforeRubbishAreRead();
    void hugeFileIsNotReadAsAWhole();
    void fileIsNeverWritten();

private:
    static void read(const QByteArray& content);
    static void compareWithEmpty();
};

namespace
{

Extras allExtras()
{
    return {true, true, 1, true, true, true};
}

/// A fresh run's settings, but none with a value that a missing key could give too.
void spoilSettings()
{
    work_folder = QStringLiteral("/before/");
    path_tab1 = QStringLiteral("/before1");
    path_tab2 = QStringLiteral("/before2");
    lang = QStringLiteral("before");
    full_scr = true;
    header_type = 3;
    full_inf = true;
    extras = allExtras();
}

struct StartValues {
    QString workFolder = work_folder;
    QString tab1 = path_tab1;
    QString tab2 = path_tab2;
    QString language = lang;
    bool fullScreen = full_scr;
    int header = header_type;
    bool fullInfo = full_inf;
    Extras more = extras;
};

const StartValues& startValues()
{
    static const StartValues values;
    return values;
}

} // namespace

void tst_Settings::init()
{
    startValues();
    spoilSettings();
}

void tst_Settings::read(const QByteArray& content)
{
    const ScratchFolder folder;
    folder.write("fm.cfg", content);
    readConfig(folder.path() + '/');
}

void tst_Settings::compareWithEmpty()
{
    QVERIFY(work_folder.isNull());
    QCOMPARE(path_tab1, QString(""));
    QCOMPARE(path_tab2, QString(""));
    QCOMPARE(lang, QString(""));
    QCOMPARE(full_scr, false);
    QCOMPARE(header_type, 0);
    QCOMPARE(full_inf, false);
    QVERIFY(extras == Extras());
}

void tst_Settings::globalsHoldStartValuesBeforeTheFileIsRead()
{
    QVERIFY(startValues().workFolder.isNull());
    QCOMPARE(startValues().tab1, QString("/"));
    QCOMPARE(startValues().tab2, QString("/"));
    QVERIFY(startValues().language.isNull());
    QCOMPARE(startValues().fullScreen, true);
    QCOMPARE(startValues().header, 3);
    QCOMPARE(startValues().fullInfo, false);
    QVERIFY(startValues().more == Extras());
}

void tst_Settings::everyKeyFillsItsSetting()
{
    full_scr = false;
    full_inf = false;
    read("[Setting]\n"
         "Work_folder = /mmc/quarn/\n"
         "Start_path_tab1 = /mmc/My Music\n"
         "Start_path_tab2 = /ezx\n"
         "Language = russian\n"
         "Full_screen = 1\n"
         "Header_type = 2\n"
         "Full_info = 1\n");
    QCOMPARE(work_folder, QString("/mmc/quarn/"));
    QCOMPARE(path_tab1, QString("/mmc/My Music"));
    QCOMPARE(path_tab2, QString("/ezx"));
    QCOMPARE(lang, QString("russian"));
    QCOMPARE(full_scr, true);
    QCOMPARE(header_type, 2);
    QCOMPARE(full_inf, true);
}

void tst_Settings::withoutFileAllIsEmpty()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "fm.cfg", kind);
    const PeakMemory memory;
    readConfig(folder.path() + '/');
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    compareWithEmpty();
}

void tst_Settings::missingKeyIsEmptyNotTheStartValue_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("group alone") << QByteArray("[Setting]\n");
    QTest::newRow("unknown key") << QByteArray("[Setting]\nColour = red\n");
    QTest::newRow("keys without group") << QByteArray("Full_screen = 1\nLanguage = german\n");
    QTest::newRow("all empty") << QByteArray("[Setting]\nWork_folder =\nStart_path_tab1 =\n"
                                             "Start_path_tab2 =\nLanguage =\nFull_screen =\n"
                                             "Header_type =\nFull_info =\n");
    QTest::newRow("extras group alone") << QByteArray("[Extras]\n");
}

void tst_Settings::missingKeyIsEmptyNotTheStartValue()
{
    QFETCH(QByteArray, content);
    read(content);
    compareWithEmpty();
}

void tst_Settings::absentWorkFolderIsUnset()
{
    read("[Setting]\nLanguage = german\n");
    QVERIFY(work_folder.isNull());
    QVERIFY(!path_tab1.isNull());
    QCOMPARE(lang, QString("german"));
}

void tst_Settings::workFolderGivenAsEmptyTextIsUnset()
{
    read("[Setting]\nWork_folder = \n");
    QVERIFY(work_folder.isNull());
}

void tst_Settings::workFolderIsUsedAsItIs_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("without slash at the end") << "/mmc/quarn";
    QTest::newRow("relative") << "quarn/";
    QTest::newRow("two slashes") << "/mmc//quarn//";
    QTest::newRow("blanks") << "/my card/quarn fm/";
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("/Карта/Ünï/");
    QTest::newRow("percent") << "/mmc/%1/%2/";
    QTest::newRow("quotes") << "\"/mmc/quarn/\"";
    QTest::newRow("comma, backslash, semicolon") << "/a,b\\n;c/";
}

void tst_Settings::workFolderIsUsedAsItIs()
{
    QFETCH(QString, value);
    read("[Setting]\nWork_folder = " + value.toUtf8() + "\n");
    QCOMPARE(work_folder, value);
}

void tst_Settings::switchIsOnForAnyNumberButZero_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("on");
    QTest::newRow("0") << QByteArray("0") << false;
    QTest::newRow("1") << QByteArray("1") << true;
    QTest::newRow("2") << QByteArray("2") << true;
    QTest::newRow("negative") << QByteArray("-1") << true;
    QTest::newRow("signed zero") << QByteArray("+0") << false;
    QTest::newRow("zeros before") << QByteArray("0003") << true;
    QTest::newRow("blanks before") << QByteArray("\t  5") << true;
    QTest::newRow("yes") << QByteArray("yes") << false;
    QTest::newRow("true") << QByteArray("true") << false;
    QTest::newRow("hexadecimal") << QByteArray("0x10") << false;
    QTest::newRow("letters behind") << QByteArray("1st") << true;
    QTest::newRow("sign alone") << QByteArray("-") << false;
    QTest::newRow("digits of another script") << QByteArray("\u0663") << false;
    QTest::newRow("beyond 32 bits") << QByteArray("4294967296") << true;
    QTest::newRow("beyond 64 bits") << QByteArray("99999999999999999999") << true;
}

void tst_Settings::switchIsOnForAnyNumberButZero()
{
    QFETCH(QByteArray, value);
    full_scr = true;
    full_inf = false;
    read("[Setting]\nFull_screen = " + value + "\nFull_info = " + value + "\n");
    QTEST(full_scr, "on");
    QTEST(full_inf, "on");
}

void tst_Settings::headerTypeIsTheNumberAtTheStart_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("number");
    QTest::newRow("digit") << QByteArray("2") << 2;
    QTest::newRow("letters behind") << QByteArray("5x") << 5;
    QTest::newRow("sign") << QByteArray("-3") << -3;
    QTest::newRow("plus") << QByteArray("+3") << 3;
    QTest::newRow("leading zero is not octal") << QByteArray("010") << 10;
    QTest::newRow("blank between digits") << QByteArray("1 2") << 1;
    QTest::newRow("fraction") << QByteArray("2.9") << 2;
    QTest::newRow("none") << QByteArray("none") << 0;
    QTest::newRow("beyond 32 bits") << QByteArray("4294967299") << std::numeric_limits<int>::max();
    QTest::newRow("far below") << QByteArray("-99999999999") << std::numeric_limits<int>::min();
}

void tst_Settings::headerTypeIsTheNumberAtTheStart()
{
    QFETCH(QByteArray, value);
    read("[Setting]\nHeader_type = " + value + "\n");
    QTEST(header_type, "number");
}

void tst_Settings::everyExtraIsSwitchedByItself_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<Extras>("expected");
    QTest::newRow("none") << QByteArray("Find = 0\nStatus = 0\nTheme = 0\nMotion = 0\n"
                                        "Safe = 0\nTrash = 0\n")
                          << Extras();
    QTest::newRow("find") << QByteArray("Find = 1\n") << Extras{true, false, 0, false};
    QTest::newRow("status") << QByteArray("Status = 1\n") << Extras{false, true, 0, false};
    QTest::newRow("theme") << QByteArray("Theme = 1\n") << Extras{false, false, 1, false};
    QTest::newRow("motion") << QByteArray("Motion = 1\n") << Extras{false, false, 0, true};
    QTest::newRow("safe") << QByteArray("Safe = 1\n") << Extras{.safe = true};
    QTest::newRow("trash") << QByteArray("Trash = 1\n") << Extras{.trash = true};
    QTest::newRow("all")
        << QByteArray("Safe = 1\nTrash = 1\nMotion = 1\nTheme = 1\nStatus = 1\nFind = 01\n")
        << allExtras();
}

void tst_Settings::everyExtraIsSwitchedByItself()
{
    QFETCH(QByteArray, lines);
    QFETCH(Extras, expected);
    const DebugLines said;
    read("[Extras]\n" + lines);
    QVERIFY(extras == expected);
    QCOMPARE(said.all(), QStringList());
}

void tst_Settings::extraThatIsNonsenseIsOffAndNamed_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("word") << "yes";
    QTest::newRow("number beyond") << "2";
    QTest::newRow("negative") << "-1";
    QTest::newRow("letters behind") << "1st";
    QTest::newRow("two numbers") << "1 1";
    QTest::newRow("fraction") << "1.0";
    QTest::newRow("hexadecimal") << "0x1";
    QTest::newRow("nothing") << "";
    QTest::newRow("beyond 32 bits") << "4294967297";
    QTest::newRow("Cyrillic") << QString::fromUtf8("да");
}

void tst_Settings::extraThatIsNonsenseIsOffAndNamed()
{
    QFETCH(QString, value);
    for (const QString key : {"Find", "Status", "Theme", "Motion", "Safe", "Trash"}) {
        spoilSettings();
        const DebugLines said;
        read(QString("[Extras]\n%1 = %2\n").arg(key, value).toUtf8());
        QVERIFY(extras == Extras());
        QCOMPARE(said.all(), QStringList("fm.cfg: " + key + ": neither 0 nor 1: " + value));
    }
}

void tst_Settings::unknownExtraIsNamed()
{
    const DebugLines said;
    read("[Extras]\nFindd = 1\nStatus = 1\nfind = 1\nfind = 0\n[Setting]\nOther = 1\n");
    QVERIFY(extras == (Extras{.status = true}));
    QCOMPARE(said.all(), QStringList({"fm.cfg: Findd: no key of [Extras]",
                                      "fm.cfg: find: no key of [Extras]"}));
    QByteArray many("[Extras]\n");
    for (int i = 0; i < 1000; ++i)
        many += "key" + QByteArray::number(i) + "=1\n";
    read(many);
    QCOMPARE(said.all().size(), 12);
}

void tst_Settings::extrasOfOtherGroupsDoNotCount()
{
    read("[Setting]\nFind = 1\nStatus = 1\nTheme = 1\nMotion = 1\nSafe = 1\nTrash = 1\n");
    QVERIFY(extras == Extras());
}

void tst_Settings::installedFileListsAllExtras()
{
    QFile file(QStringLiteral(QUARN_DATA_DIR "/fm.cfg.in"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    const qsizetype group = lines.indexOf("[Extras]");
    QVERIFY(group > 0);
    for (const QString line :
         {"Find = 1", "Status = 1", "Theme = 0", "Motion = 1", "Safe = 0", "Trash = 0"}) {
        const qsizetype place = lines.indexOf(line);
        QVERIFY2(place > group, qPrintable(line));
        QVERIFY2(lines.at(place - 1).startsWith(';'), qPrintable(line));
    }
    read(lines.join('\n').toUtf8());
    QVERIFY((extras == Extras{true, true, 0, true}));
}

void tst_Settings::keysOfOtherGroupsDoNotCount()
{
    read("[Other]\nLanguage = german\n[Setting]\nLanguage = russian\n[Settings]\nLanguage = x\n");
    QCOMPARE(lang, QString("russian"));
    read("[Settings]\nLanguage = x\n");
    QCOMPARE(lang, QString(""));
}

void tst_Settings::fileIsSoughtInTheFolderGiven()
{
    const ScratchFolder folder;
    folder.write("bin/fm.cfg", "[Setting]\nLanguage = inside\n");
    folder.write("fm.cfg", "[Setting]\nLanguage = above\n");
    folder.write("binfm.cfg", "[Setting]\nLanguage = joined\n");
    readConfig(folder.path("bin/"));
    QCOMPARE(lang, QString("inside"));
    // The folder's slash is the caller's business.
    readConfig(folder.path("bin"));
    QCOMPARE(lang, QString("joined"));
}

void tst_Settings::folderWithPercentSignsIsFound()
{
    const ScratchFolder folder;
    folder.write("%1 %2/fm.cfg", "[Setting]\nLanguage = percent\n");
    readConfig(folder.path("%1 %2/"));
    QCOMPARE(lang, QString("percent"));
}

void tst_Settings::emptyFolderMeansTheCurrentOne()
{
    const ScratchFolder folder;
    folder.write("fm.cfg", "[Setting]\nLanguage = here\n");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    readConfig(QString());
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(lang, QString("here"));
}

void tst_Settings::fileOfAnotherSystemIsRead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("CR LF") << QByteArray(
        "[Setting]\r\nWork_folder = /w/\r\nLanguage = german\r\nHeader_type=2\r\n");
    QTest::newRow("byte order mark")
        << QByteArray("\xef\xbb\xbf[Setting]\nWork_folder=/w/\nLanguage=german\nHeader_type=2\n");
    QTest::newRow("no blanks, no end of line")
        << QByteArray("[Setting]\nWork_folder=/w/\nLanguage=german\nHeader_type=2");
    QTest::newRow("blank lines and comments")
        << QByteArray("; mine\n\n[Setting]\n\n# note\nWork_folder  =  /w/ \n;Language = x\n"
                      "Language\t=\tgerman\n\nHeader_type = 2\n");
}

void tst_Settings::fileOfAnotherSystemIsRead()
{
    QFETCH(QByteArray, content);
    read(content);
    QCOMPARE(work_folder, QString("/w/"));
    QCOMPARE(lang, QString("german"));
    QCOMPARE(header_type, 2);
}

void tst_Settings::pathsKeepTheirBytes()
{
    read("[Setting]\nWork_folder = /\xef\xbb\xbfw/\nStart_path_tab1 = /M\xfcsik\n"
         "Language = \xef\xbb\xbf\nHeader_type = 2\n");
    QCOMPARE(encodedPath(work_folder), QByteArray("/\xef\xbb\xbfw/"));
    QCOMPARE(encodedPath(path_tab1), QByteArray("/M\xfcsik"));
    QCOMPARE(lang, QString(QChar(0xfeff)));
    QCOMPARE(header_type, 2);
}

void tst_Settings::keysBeforeRubbishAreRead_data()
{
    QTest::addColumn<QByteArray>("rubbish");
    QTest::newRow("zero bytes") << QByteArray(5000, '\0');
    QTest::newRow("brackets") << QByteArray(5000, '[');
    QTest::newRow("equals signs") << QByteArray(5000, '=');
    QTest::newRow("line without end") << QByteArray(4 * 1024 * 1024, 'x');
    QTest::newRow("many lines") << QByteArray("k=v\n").repeated(100000);
}

void tst_Settings::keysBeforeRubbishAreRead()
{
    QFETCH(QByteArray, rubbish);
    read("[Setting]\nLanguage = german\nHeader_type = 1\n" + rubbish);
    QCOMPARE(lang, QString("german"));
    QCOMPARE(header_type, 1);
    QVERIFY(work_folder.isNull());
}

void tst_Settings::hugeFileIsNotReadAsAWhole()
{
    const ScratchFolder folder;
    folder.write("fm.cfg", "[Setting]\nLanguage = german\n");
    QVERIFY(QFile::resize(folder.path("fm.cfg"), PeakMemory::TooMuch));
    const PeakMemory memory;
    readConfig(folder.path() + '/');
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(lang, QString("german"));
}

void tst_Settings::fileIsNeverWritten()
{
    const ScratchFolder folder;
    const QByteArray content("[Setting]\nLanguage = german\n");
    folder.write("fm.cfg", content);
    folder.setModified("fm.cfg", 1000000000);
    readConfig(folder.path() + '/');
    QCOMPARE(folder.read("fm.cfg"), content);
    QCOMPARE(QFileInfo(folder.path("fm.cfg")).lastModified().toSecsSinceEpoch(), 1000000000);
}

QUARN_TEST_MAIN(tst_Settings)
#include "tst_settings.moc"
