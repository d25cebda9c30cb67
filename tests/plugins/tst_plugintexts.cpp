#include "plugins/support/fileproblem.h"
#include "plugins/support/pluginsettings.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/pluginwindow.h"
#include "tests/support/drawntexts.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <cerrno>

/// What the plugins take from the work folder: their texts and the file manager's settings.
class tst_PluginTexts : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { loadPluginTexts(QString()); }

    void textsAreEnglishUntilOthersAreLoaded()
    {
        QCOMPARE(pluginTexts().exit, QString("Exit"));
        QCOMPARE(pluginTexts().noFile, QString("No file was given."));
    }

    void fileGivesItsTextsAndEnglishTheRest()
    {
        load("[Language]\nEXIT = Ende\nNO_FILE = Nichts da.\nFIT =\n[Other]\nZOOM = wrong\n");
        QCOMPARE(pluginTexts().exit, QString("Ende"));
        QCOMPARE(pluginTexts().noFile, QString("Nichts da."));
        QCOMPARE(pluginTexts().fit, QString(""));
        QCOMPARE(pluginTexts().zoom, QString("Zoom"));
    }

    void anotherFileTakesThePlaceOfTheFirst()
    {
        load("[Language]\nEXIT = Ende\nZOOM = Lupe\n");
        load("[Language]\nEXIT = Fin\n");
        QCOMPARE(pluginTexts().exit, QString("Fin"));
        QCOMPARE(pluginTexts().zoom, QString("Zoom"));
    }

    void missingFileIsEnglish()
    {
        load("[Language]\nEXIT = Ende\n");
        loadPluginTexts("/no/such.lang");
        QCOMPARE(pluginTexts().exit, QString("Exit"));
    }

    void windowsSpeakTheLanguageLoaded()
    {
        load("[Language]\nEXIT = Конец\n");
        PluginWindow window("Test");
        QVERIFY(isDrawn(textsDrawnBy(window), "Конец"));
    }

    void problemsOfFilesAreTexts_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << ENOENT << "There is no such file.";
        QTest::newRow("below a file") << ENOTDIR << "There is no such file.";
        QTest::newRow("folder") << EISDIR << "This is a folder.";
        QTest::newRow("socket") << ENXIO << "This is not a regular file.";
        QTest::newRow("locked") << EACCES << "You may not read this file.";
        QTest::newRow("another") << ELOOP
                                 << "Cannot open the file: " + qt_error_string(ELOOP) + '.';
    }

    void problemsOfFilesAreTexts()
    {
        QFETCH(int, error);
        QTEST(fileProblem(error), "text");
    }

    void reasonsOfTheSystemAreTexts_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("key");
        QTest::newRow("permission") << EACCES << "SYSTEM_NO_PERMISSION";
        QTest::newRow("privilege") << EPERM << "SYSTEM_NO_PERMISSION";
        QTest::newRow("none") << ENOENT << "SYSTEM_NOT_FOUND";
        QTest::newRow("folder") << EISDIR << "SYSTEM_IS_FOLDER";
        QTest::newRow("full") << ENOSPC << "SYSTEM_NO_SPACE";
        QTest::newRow("read-only") << EROFS << "SYSTEM_READ_ONLY";
        QTest::newRow("medium") << EIO << "SYSTEM_IO_ERROR";
    }

    void reasonsOfTheSystemAreTexts()
    {
        QFETCH(int, error);
        QFETCH(QString, key);
        load("[Language]\n" + key.toUtf8() + " = Grund\nCANNOT_OPEN = Nein: %1.\n");
        QCOMPARE(systemProblem(error), QString("Grund"));
        QCOMPARE(systemProblem("execve: " + qt_error_string(error)), QString("Grund"));
        QCOMPARE(systemProblem(ELOOP), qt_error_string(ELOOP));
        QCOMPARE(systemProblem("execve: " + qt_error_string(ELOOP)),
                 "execve: " + qt_error_string(ELOOP));
    }

    void problemWithoutASentenceOfItsOwnSaysTheReason()
    {
        load("[Language]\nSYSTEM_IO_ERROR = Grund\nCANNOT_OPEN = Nein: %1.\n");
        QCOMPARE(fileProblem(EIO), QString("Nein: Grund."));
    }

    void settingsAreTheFileManagers_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("theme");
        const auto row = [](const char* name, const QByteArray& content, const char* language,
                            int theme) { QTest::newRow(name) << content << language << theme; };
        row("both", "[Setting]\nLanguage = german\n[Extras]\nTheme = 1\n", "german", 1);
        row("no extras", "[Setting]\nLanguage = german\n", "german", 0);
        row("light", "[Extras]\nTheme = 0\n", "", 0);
        row("no such theme", "[Extras]\nTheme = 2\n", "", 0);
        row("no number", "[Extras]\nTheme = 1x\n", "", 0);
        row("another group", "[Setting]\nTheme = 1\n[Extras]\nLanguage = german\n", "", 0);
        row("empty file", "", "", 0);
    }

    void settingsAreTheFileManagers()
    {
        QFETCH(QByteArray, content);
        const ScratchFolder folder;
        folder.write("fm.cfg", content);
        const PluginSettings settings = readPluginSettings(folder.path("fm.cfg"));
        QTEST(settings.language, "language");
        QTEST(settings.theme, "theme");
    }

    void motionIsTheFileManagers()
    {
        const ScratchFolder folder;
        for (const char* value : {"1", "01", "0", "2", "x", ""}) {
            folder.write("fm.cfg",
                         QByteArray("[Extras]\nMotion = ") + value + "\nTheme = " + value);
            const PluginSettings settings = readPluginSettings(folder.path("fm.cfg"));
            const bool isOn = QByteArray(value).endsWith('1');
            QCOMPARE(settings.motion, isOn);
            QCOMPARE(settings.theme, isOn ? 1 : 0);
        }
    }

    void settingsWithoutAFileAreThoseOfAnEmptyOne()
    {
        const PluginSettings settings = readPluginSettings("/no/such.cfg");
        QCOMPARE(settings.language, QString());
        QCOMPARE(settings.theme, 0);
    }

private:
    static void load(const QByteArray& content)
    {
        const ScratchFolder folder;
        folder.write("a.lang", content);
        loadPluginTexts(folder.path("a.lang"));
    }
};

QUARN_TEST_MAIN(tst_PluginTexts)
#include "tst_plugintexts.moc"
