#include "assoc/mimetable.h"
#include "assoc/plugintable.h"
#include "lang/texts.h"
#include "platform/zoptionsmenu.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/support/debuglines.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

#include <ctime>

/// The main window with the tables that it reads when it is made.
class tst_Tables : public QObject
{
    Q_OBJECT

private slots:
    void windowReadsItsTablesFromTheWorkFolder();
    void tablesAreReadInTheirOrder();
    void tablesAreNotReadAgain();
    void changesOfTheFilesShowAfterARestart();
    void withoutTablesMenusAreEmpty();
    void unusableTablesDoNoHarm_data() { addUnusableKinds(); }
    void unusableTablesDoNoHarm();
    void absurdlyLongTableDoesNotHoldUpTheStart_data();
    void absurdlyLongTableDoesNotHoldUpTheStart();
};

namespace
{

void writeTables(const ScratchFolder& folder)
{
    folder.write("lang/test.lang", "[Language]\nVER = 102\nEXIT = Quit\n");
    folder.write("mime_types.cfg", "002 01 jpg\n003 02 MP3\n");
    folder.write("fm_plugins.cfg", "01 0 viewer\n02 2 hidden\n03 1 /bin/less\n");
    folder.write("bookmark.cfg", "\nMusic\n/mmc/music\nRoot\n/");
    folder.write("plugins/full_path/3/desktop.ini", "Text viewer\n");
}

} // namespace

void tst_Tables::windowReadsItsTablesFromTheWorkFolder()
{
    Program program;
    writeTables(program.workFolder());
    lang = "test";
    const FM* window = program.start();
    QCOMPARE(LANG_EXIT, QString("Quit"));
    QCOMPARE(mime_nums, 2);
    QCOMPARE(mimes[0].ext, QString("JPG"));
    QCOMPARE(plug_nums, 3);
    QCOMPARE(plugins[1].kind, 2);
    QCOMPARE(window->bookmarkList, (QStringList{"Music", "Root"}));
    QCOMPARE(window->bookmarkPaths, (QStringList{"/mmc/music", "/"}));
    // Entries of unknown kinds are not shown, but count.
    QCOMPARE(window->openWithMenu->count(), 2);
    QCOMPARE(window->openWithMenu->idAt(0), 0);
    QCOMPARE(window->openWithMenu->textAt(0), QString("\t\t\tviewer"));
    QCOMPARE(window->openWithMenu->idAt(1), 2);
    QCOMPARE(window->openWithMenu->textAt(1), QString("\t\t\tText viewer"));
}

void tst_Tables::tablesAreReadInTheirOrder()
{
    Program program;
    writeTables(program.workFolder());
    const DebugLines lines;
    program.start();
    QStringList steps;
    for (const QString& line : lines.all()) {
        if (line.startsWith("--- "))
            steps.append(line);
    }
    QCOMPARE(steps,
             (QStringList{"--- read lang file: " + work_folder + "/lang/.lang", "--- read lang ok",
                          "--- read mimes ok", "--- read plugins ok", "--- read bookmarks ok"}));
}

void tst_Tables::tablesAreNotReadAgain()
{
    Program program;
    writeTables(program.workFolder());
    const FM* window = program.start();
    program.workFolder().write("mime_types.cfg", "002 01 PNG\n");
    program.workFolder().write("fm_plugins.cfg", "");
    program.workFolder().write("bookmark.cfg", "");
    program.window()->createSoftKeysStab();
    QCOMPARE(mime_nums, 2);
    QCOMPARE(plug_nums, 3);
    QCOMPARE(window->openWithMenu->count(), 2);
    QCOMPARE(window->bookmarkList.size(), 2);
}

void tst_Tables::changesOfTheFilesShowAfterARestart()
{
    for (const QByteArray& extension : {QByteArray("JPG"), QByteArray("PNG")}) {
        Program program;
        program.workFolder().write("mime_types.cfg", "002 01 " + extension + '\n');
        quarn = new FM;
        QCOMPARE(mime_nums, 1);
        QCOMPARE(mimes[0].ext, QString(extension));
    }
}

void tst_Tables::withoutTablesMenusAreEmpty()
{
    Program program;
    const FM* window = program.start();
    QCOMPARE(mime_nums, 0);
    QCOMPARE(plug_nums, 0);
    QCOMPARE(window->openWithMenu->count(), 0);
    QVERIFY(window->bookmarkList.isEmpty());
    QCOMPARE(window->bookmarkMenu->count(), 1);
    QCOMPARE(window->bookmarkMenu->idAt(0), 0);
    QCOMPARE(window->bookmarkMenu->textAt(0), QString("\t\t\tAdd Bookmark"));
}

void tst_Tables::unusableTablesDoNoHarm()
{
    QFETCH(QString, kind);
    Program program;
    program.workFolder().makeFolder("lang");
    program.files().write("a.jpg");
    for (const char* name :
         {"mime_types.cfg", "fm_plugins.cfg", "bookmark.cfg", "lang/.lang", "fm.png"})
        makeUnusable(program.workFolder(), name, kind);
    const DebugLines lines;
    quarn = new FM;
    QCOMPARE(program.rows(1), (QStringList{"..", "a.jpg"}));
    QCOMPARE(program.rows(2), program.rows(1));
    QCOMPARE(LANG_EXIT, QString("Exit"));
    QCOMPARE(quarn->bookmarkList.size(), quarn->bookmarkPaths.size());
    QCOMPARE(quarn->bookmarkMenu->count(), int(quarn->bookmarkList.size()) + 1);
}

void tst_Tables::absurdlyLongTableDoesNotHoldUpTheStart_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("associations of one type") << "mime_types.cfg" << QByteArray("002 01 JPG\n");
    QTest::newRow("associations in one letter") << "mime_types.cfg" << QByteArray("x\n");
    QTest::newRow("plugins") << "fm_plugins.cfg" << QByteArray("01 0 viewer\n");
    QTest::newRow("plugins in one letter") << "fm_plugins.cfg" << QByteArray("x\n");
    QTest::newRow("plugins never shown") << "fm_plugins.cfg" << QByteArray("01 2 x\n");
    QTest::newRow("bookmarks") << "bookmark.cfg" << QByteArray("\nMusic\n/mmc");
    QTest::newRow("bookmarks without text") << "bookmark.cfg" << QByteArray("\n");
}

void tst_Tables::absurdlyLongTableDoesNotHoldUpTheStart()
{
    constexpr qsizetype Bytes = 32 * 1024 * 1024;
    QFETCH(QString, name);
    QFETCH(QByteArray, line);
    Program program;
    program.files().write("a.jpg");
    program.workFolder().write(name, line.repeated(Bytes / line.size()));
    const PeakMemory memory;
    const std::clock_t before = std::clock();
    quarn = new FM;
    // Of this process's own time, however busy the machine is.
    const double seconds = double(std::clock() - before) / CLOCKS_PER_SEC;
    QVERIFY2(seconds < 20, qPrintable(QString::number(seconds)));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(program.rows(1), (QStringList{"..", "a.jpg"}));
}

QUARN_TEST_MAIN(tst_Tables)
#include "tst_tables.moc"
