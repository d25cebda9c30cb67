#include "assoc/plugintable.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "shell/util.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

class tst_PluginTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { u = new util; }
    void cleanupTestCase() { delete u; }
    void init();
    void lineHasFixedColumns_data();
    void lineHasFixedColumns();
    void nameIsCutAfter100Characters();
    void linesStayInFileOrderWithDuplicatesAndUnknownKinds();
    void blankLinesAreSkipped();
    void linesWithoutANameAreSkipped_data();
    void linesWithoutANameAreSkipped();
    void fileOfAnotherSystemIsRead_data();
    void fileOfAnotherSystemIsRead();
    void unusableFileGivesAtMostRubbish_data() { addUnusableKinds(); }
    void unusableFileGivesAtMostRubbish();
    void hugeFileIsNotReadAsAWhole();
    void installedPluginIsFound_data();
    void installedPluginIsFound();
    void pluginIsSoughtOnDiskEachTime();
    void labelOfAPluginIsItsName();
    void labelOfAProgramIsTheFirstLineOfItsFile_data();
    void labelOfAProgramIsTheFirstLineOfItsFile();
    void folderOfAProgramHasNoLeadingZeros_data();
    void folderOfAProgramHasNoLeadingZeros();
    void labelFileWithoutALabel_data() { addUnusableKinds(); }
    void labelFileWithoutALabel();

private:
    static void load(const QByteArray& content);
};

void tst_PluginTable::init()
{
    plugins.clear();
    plug_nums = 0;
}

void tst_PluginTable::load(const QByteArray& content)
{
    const ScratchFolder folder;
    folder.write("fm_plugins.cfg", content);
    loadPlugins(folder.path("fm_plugins.cfg"));
    QCOMPARE(plug_nums, int(plugins.size()));
}

void tst_PluginTable::lineHasFixedColumns_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("name");
    QTest::newRow("usual") << QByteArray("01 0 viewer") << 1 << 0 << "viewer";
    QTest::newRow("program") << QByteArray("05 1 /usr/bin/less") << 5 << 1 << "/usr/bin/less";
    QTest::newRow("with arguments")
        << QByteArray("05 1 /usr/bin/x -a  \"b c\" ") << 5 << 1 << "/usr/bin/x -a  \"b c\" ";
    QTest::newRow("any separators") << QByteArray("01x0yviewer") << 1 << 0 << "viewer";
    QTest::newRow("blank before digit") << QByteArray(" 7 1 v") << 7 << 1 << "v";
    QTest::newRow("blank behind digit") << QByteArray("7  1 v") << 7 << 1 << "v";
    QTest::newRow("negative") << QByteArray("-1 1 v") << -1 << 1 << "v";
    QTest::newRow("letters") << QByteArray("ab x v") << 0 << 0 << "v";
    QTest::newRow("kind of two digits") << QByteArray("01 12viewer") << 1 << 1 << "viewer";
    QTest::newRow("unknown kind") << QByteArray("01 9 v") << 1 << 9 << "v";
    QTest::newRow("case is kept") << QByteArray("01 0 LyraPlayer") << 1 << 0 << "LyraPlayer";
    QTest::newRow("beyond Latin-1")
        << QByteArray("01 0 Плеер") << 1 << 0 << QString::fromUtf8("Плеер");
}

void tst_PluginTable::lineHasFixedColumns()
{
    QFETCH(QByteArray, line);
    load(line + '\n');
    QCOMPARE(plug_nums, 1);
    QTEST(plugins[0].plugin_num, "number");
    QTEST(plugins[0].kind, "kind");
    QTEST(plugins[0].name, "name");
}

void tst_PluginTable::nameIsCutAfter100Characters()
{
    load("01 1 " + QByteArray("0123456789").repeated(11) + '\n');
    QCOMPARE(plugins[0].name, QString("0123456789").repeated(10));
    load("01 1 " + QByteArray("ж").repeated(130) + '\n');
    QCOMPARE(plugins[1].name, QString::fromUtf8("ж").repeated(100));
}

void tst_PluginTable::linesStayInFileOrderWithDuplicatesAndUnknownKinds()
{
    load("03 0 c\n01 2 hidden\n03 1 /bin/c\n01 0 a\n03 0 c\n");
    QCOMPARE(plug_nums, 5);
    QStringList found;
    for (const plugin_struct& plugin : plugins)
        found.append(QString("%1/%2/%3").arg(plugin.plugin_num).arg(plugin.kind).arg(plugin.name));
    QCOMPARE(found, (QStringList{"3/0/c", "1/2/hidden", "3/1//bin/c", "1/0/a", "3/0/c"}));
}

void tst_PluginTable::blankLinesAreSkipped()
{
    load("\n\n01 0 a\n \t \n02 0 b\n\n");
    QCOMPARE(plug_nums, 2);
    QCOMPARE(plugins[1].name, QString("b"));
}

void tst_PluginTable::linesWithoutANameAreSkipped_data()
{
    QTest::addColumn<QByteArray>("line");
    for (const char* line : {"9", "01 1", "01 0", "01 1 ", "01 1     ", "01 1 \t \r"})
        QTest::newRow(line) << QByteArray(line);
}

void tst_PluginTable::linesWithoutANameAreSkipped()
{
    QFETCH(QByteArray, line);
    load("01 0 a\n" + line + "\n02 0 b\n");
    QCOMPARE(plug_nums, 2);
    QCOMPARE(plugins[1].name, QString("b"));
}

void tst_PluginTable::fileOfAnotherSystemIsRead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no end of line") << QByteArray("01 0 a\n02 1 b");
    QTest::newRow("CR LF") << QByteArray("01 0 a\r\n02 1 b\r\n");
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf"
                                                   "01 0 a\n02 1 b\n");
    QTest::newRow("Latin-1 in between") << QByteArray("01 0 a\n02 1 b\n03 0 \xe4\xf6\xfc\n");
}

void tst_PluginTable::fileOfAnotherSystemIsRead()
{
    QFETCH(QByteArray, content);
    load(content);
    QVERIFY(plug_nums >= 2);
    QCOMPARE(plugins[0].plugin_num, 1);
    QCOMPARE(plugins[0].name, QString("a"));
    QCOMPARE(plugins[1].kind, 1);
    QCOMPARE(plugins[1].name, QString("b"));
}

void tst_PluginTable::unusableFileGivesAtMostRubbish()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "fm_plugins.cfg", kind);
    const PeakMemory memory;
    loadPlugins(folder.path("fm_plugins.cfg"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(plug_nums, int(plugins.size()));
    const bool hasLines = kind == "binary" || kind.endsWith("without end");
    QVERIFY2(hasLines || plugins.empty(), qPrintable(kind));
    for (const plugin_struct& plugin : plugins)
        QVERIFY(plugin.name.size() <= 100);
}

void tst_PluginTable::hugeFileIsNotReadAsAWhole()
{
    const ScratchFolder folder;
    folder.write("fm_plugins.cfg", "01 0 a\n02 1 b\n");
    QVERIFY(QFile::resize(folder.path("fm_plugins.cfg"), PeakMemory::TooMuch));
    const PeakMemory memory;
    loadPlugins(folder.path("fm_plugins.cfg"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QVERIFY(plug_nums >= 2);
    QCOMPARE(plugins[1].name, QString("b"));
}

void tst_PluginTable::installedPluginIsFound_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("executable") << "viewer" << true;
    QTest::newRow("file that is not executable") << "plain" << true;
    QTest::newRow("folder of that name in it") << "nested" << true;
    QTest::newRow("link to nothing") << "dangling" << false;
    QTest::newRow("folder only") << "empty" << false;
    QTest::newRow("folder with another file") << "other" << false;
    QTest::newRow("other case") << "VIEWER" << false;
    QTest::newRow("missing") << "missing" << false;
    QTest::newRow("percent signs") << "%1" << true;
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("Плеер") << true;
}

void tst_PluginTable::installedPluginIsFound()
{
    const ScratchFolder folder;
    for (const char* file :
         {"viewer/viewer", "plain/plain", "nested/nested/x", "other/x", "%1/%1", "Плеер/Плеер"})
        folder.write("plugins/" + QString::fromUtf8(file));
    folder.setMode("plugins/viewer/viewer", 0755);
    folder.makeFolder("plugins/empty");
    folder.makeFolder("plugins/dangling");
    folder.makeLink("plugins/dangling/dangling", folder.path("nothing"));
    work_folder = folder.path() + '/';
    QFETCH(QString, name);
    QTEST(FM::searchPlugin(name), "found");
    work_folder = QString();
    QVERIFY(!FM::searchPlugin(name));
}

void tst_PluginTable::pluginIsSoughtOnDiskEachTime()
{
    const ScratchFolder folder;
    work_folder = folder.path() + '/';
    QVERIFY(!FM::searchPlugin("late"));
    folder.write("plugins/late/late");
    QVERIFY(FM::searchPlugin("late"));
    QVERIFY(QFile::remove(folder.path("plugins/late/late")));
    QVERIFY(!FM::searchPlugin("late"));
}

void tst_PluginTable::labelOfAPluginIsItsName()
{
    const ScratchFolder folder;
    folder.write("plugins/full_path/1/desktop.ini", "Other");
    QCOMPARE(pluginLabel(folder.path() + '/', {"Viewer %1", 1, 0}), QString("Viewer %1"));
}

void tst_PluginTable::labelOfAProgramIsTheFirstLineOfItsFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("label");
    QTest::newRow("one line") << QByteArray("Text viewer\n") << "Text viewer";
    QTest::newRow("no end of line") << QByteArray("Text viewer") << "Text viewer";
    QTest::newRow("more lines") << QByteArray("First\nSecond\n") << "First";
    QTest::newRow("CR LF") << QByteArray("First\r\nSecond\r\n") << "First";
    QTest::newRow("beyond Latin-1") << QByteArray("Просмотр") << QString::fromUtf8("Просмотр");
    QTest::newRow("blanks are kept") << QByteArray("  a  \n") << "  a  ";
    QTest::newRow("group line is a label too") << QByteArray("[Desktop]\nName=x\n") << "[Desktop]";
    QTest::newRow("empty first line") << QByteArray("\nSecond\n") << "";
}

void tst_PluginTable::labelOfAProgramIsTheFirstLineOfItsFile()
{
    QFETCH(QByteArray, content);
    const ScratchFolder folder;
    folder.write("plugins/full_path/5/desktop.ini", content);
    QTEST(pluginLabel(folder.path() + '/', {"/bin/x", 5, 1}), "label");
}

void tst_PluginTable::folderOfAProgramHasNoLeadingZeros_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<QString>("label");
    QTest::newRow("05") << QByteArray("05") << "five";
    QTest::newRow("blank and 5") << QByteArray(" 5") << "five";
    QTest::newRow("50") << QByteArray("50") << "fifty";
    QTest::newRow("00") << QByteArray("00") << "none";
    QTest::newRow("letters") << QByteArray("xx") << "none";
    QTest::newRow("06") << QByteArray("06") << "Unknown";
}

void tst_PluginTable::folderOfAProgramHasNoLeadingZeros()
{
    const ScratchFolder folder;
    folder.write("plugins/full_path/5/desktop.ini", "five");
    folder.write("plugins/full_path/05/desktop.ini", "wrong");
    folder.write("plugins/full_path/06/desktop.ini", "wrong");
    folder.write("plugins/full_path/50/desktop.ini", "fifty");
    folder.write("plugins/full_path/0/desktop.ini", "none");
    QFETCH(QByteArray, number);
    load(number + " 1 /bin/x\n");
    QTEST(pluginLabel(folder.path() + '/', plugins[0]), "label");
}

void tst_PluginTable::labelFileWithoutALabel()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    folder.makeFolder("plugins/full_path/5");
    makeUnusable(folder, "plugins/full_path/5/desktop.ini", kind);
    const PeakMemory memory;
    const QString label = pluginLabel(folder.path() + '/', {"/bin/x", 5, 1});
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    if (kind == "empty")
        QCOMPARE(label, QString(""));
    else if (kind == "binary" || kind.endsWith("without end"))
        QVERIFY(label.size() <= 4096);
    else
        QCOMPARE(label, QString("Unknown"));
}

QUARN_TEST_MAIN(tst_PluginTable)
#include "tst_plugintable.moc"
