// Each start of the program is a process of its own: this executable, told to be the program. It
// reports what it has become as lines "name=value" and ends as asked for.

#include "assoc/mimetable.h"
#include "platform/qcopchannel.h"
#include "platform/qdiskfont.h"
#include "shell/fm.h"
#include "shell/qdaemonapp.h"
#include "shell/settings.h"
#include "shell/startup.h"
#include "shell/util.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFontInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace
{

const char BeTheProgram[] = "QUARN_TEST_BE_THE_PROGRAM";
constexpr int LongestRunMilliseconds = 60000;
constexpr int AskedExitStatus = 7;

void report(const char* name, const QString& value)
{
    std::printf("%s=%s\n", name, qUtf8Printable(value));
}

void reportFonts()
{
    for (const QDiskFont& font : ZFontManager::diskFonts()) {
        report("font", QString("%1 %2 %3 %4 %5 %6 %7")
                           .arg(font.name, QString::number(font.weight), QString::number(font.size),
                                font.flavour, font.file)
                           .arg(int(font.italic))
                           .arg(int(font.loaded)));
    }
    const QFont& font = quarn->font();
    report("window font",
           QString("%1 %2 %3").arg(font.family()).arg(font.pixelSize()).arg(font.italic()));
    report("font found", QFontInfo(QFont("ZarnikFont")).family());
}

/// Asks for what would end other programs.
void askToEnd()
{
    a->slotShutdown();
    a->slotQuickQuit();
    QCoreApplication::postEvent(qApp, new QEvent(QEvent::Quit));
    QCoreApplication::processEvents();
}

void reportState()
{
    report("globals", QString::number(int(a != nullptr && u != nullptr && quarn != nullptr)));
    report("work folder", work_folder.isNull() ? QString("(unset)") : work_folder);
    report("program folder", quarn->programDir);
    report("language", lang);
    report("associations", QString::number(mime_nums));
    report("registered", QString::number(int(QCopChannel::isRegistered("Quarn"))));
    reportFonts();
    quarn->hide();
    a->slotRaise();
    report("main widget is raised", QString::number(int(quarn->isVisible())));
    askToEnd();
    report("goes on", QString::number(int(!ZApplication::isQuitting())));
}

/// Runs when the toolkit's application has been made.
void reportWhenStarted()
{
    if (!qEnvironmentVariableIsSet(BeTheProgram))
        return;
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer] {
        if (quarn == nullptr || !quarn->isVisible())
            return;
        timer->stop();
        reportState();
        QCoreApplication::exit(AskedExitStatus);
    });
    timer->start(5);
}

struct Run {
    int status = -1;
    QStringList reported; ///< "name=value"
    QStringList debug;

    QStringList values(const QString& name) const
    {
        QStringList result;
        for (const QString& line : reported) {
            if (line.startsWith(name + '='))
                result.append(line.mid(name.size() + 1));
        }
        return result;
    }
};

/// Starts the program with an argv[0] of its own.
Run run(const QByteArray& program, const QString& currentFolder)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(BeTheProgram, "1");
    environment.insert("QT_FORCE_STDERR_LOGGING", "1");
    environment.remove("QT_MESSAGE_PATTERN");
    environment.remove("QT_LOGGING_RULES");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(currentFolder);
    process.start("bash", {"-c", "exec -a \"$0\" \"$1\"", QString::fromUtf8(program),
                           QCoreApplication::applicationFilePath()});
    Run result;
    if (!process.waitForFinished(LongestRunMilliseconds))
        return result;
    result.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.reported = QString::fromUtf8(process.readAllStandardOutput()).split('\n');
    result.debug = QString::fromUtf8(process.readAllStandardError()).split('\n');
    return result;
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(reportWhenStarted)

class tst_Startup : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void programComesUp();
    void statusIsThatOfTheEventLoop();
    void requestsOfTheSystemToEndAreAbsorbed();
    void settingsAreSoughtBesideTheExecutable_data();
    void settingsAreSoughtBesideTheExecutable();
    void settingsAreReadBeforeTheWindowReadsItsTables();
    void fontIsRegisteredTwice();
    void fontOfTheWorkFolderIsUsed();
    void withoutWorkFolderTheFontPathIsRelative();
    void missingFontIsNoError();
    void withoutWorkFolderTablesAreReadBeforeItIsSet();
    void secondStartSendsShowAndEnds();

private:
    void writeSettings(const QByteArray& lines) const;
    Run runInBin() const { return run(scratch_->path("bin/quarn").toUtf8(), scratch_->path()); }

    std::unique_ptr<ScratchFolder> scratch_;
};

void tst_Startup::init()
{
    scratch_ = std::make_unique<ScratchFolder>();
    scratch_->makeFolder("bin");
    scratch_->makeFolder("files");
    scratch_->makeFolder("work/res");
}

void tst_Startup::writeSettings(const QByteArray& lines) const
{
    const QByteArray files = scratch_->path("files").toUtf8();
    scratch_->write("bin/fm.cfg", "[Setting]\nStart_path_tab1 = " + files +
                                      "\nStart_path_tab2 = " + files + '\n' + lines);
}

void tst_Startup::programComesUp()
{
    writeSettings("");
    const Run start = runInBin();
    QCOMPARE(start.values("globals"), QStringList("1"));
    QCOMPARE(start.values("registered"), QStringList("1"));
    QCOMPARE(start.values("main widget is raised"), QStringList("1"));
    QVERIFY(!QCopChannel::isRegistered("Quarn"));
}

void tst_Startup::statusIsThatOfTheEventLoop()
{
    writeSettings("");
    QCOMPARE(runInBin().status, AskedExitStatus);
}

void tst_Startup::requestsOfTheSystemToEndAreAbsorbed()
{
    writeSettings("");
    QCOMPARE(runInBin().values("goes on"), QStringList("1"));
}

void tst_Startup::settingsAreSoughtBesideTheExecutable_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QString>("currentFolder");
    QTest::addColumn<QString>("programFolder");
    QTest::addColumn<QString>("language");
    QTest::newRow("folder and name") << QByteArray("bin/quarn") << ""
                                     << "bin/"
                                     << "beside";
    QTest::newRow("current folder") << QByteArray("./quarn") << "bin"
                                    << "./"
                                    << "beside";
    QTest::newRow("no slash") << QByteArray("quarn") << "bin"
                              << ""
                              << "beside";
    QTest::newRow("no slash, elsewhere") << QByteArray("quarn") << ""
                                         << ""
                                         << "current";
    QTest::newRow("no settings there") << QByteArray("work/quarn") << ""
                                       << "work/"
                                       << "";
}

void tst_Startup::settingsAreSoughtBesideTheExecutable()
{
    writeSettings("Language = beside\n");
    scratch_->write("fm.cfg", "[Setting]\nLanguage = current\n");
    QFETCH(QByteArray, program);
    QFETCH(QString, currentFolder);
    QFETCH(QString, programFolder);
    const Run start = run(program, scratch_->path(currentFolder));
    QFETCH(QString, language);
    QCOMPARE(start.values("language"), QStringList(language));
    QCOMPARE(start.values("program folder"), QStringList(programFolder));
    const qsizetype line = start.debug.indexOf(QString::fromUtf8(program));
    QVERIFY(line >= 0);
    QCOMPARE(start.debug.at(line + 1), programFolder);
}

void tst_Startup::settingsAreReadBeforeTheWindowReadsItsTables()
{
    const QString work = scratch_->path("work/");
    writeSettings("Language = test\nWork_folder = " + work.toUtf8() + '\n');
    scratch_->write("work/mime_types.cfg", "002 01 JPG\n");
    const Run start = runInBin();
    QCOMPARE(start.values("work folder"), QStringList(work));
    QCOMPARE(start.values("associations"), QStringList("1"));
    const QString banner("--------Quarn 1.6---------");
    const QStringList steps{scratch_->path("bin/"),
                            banner,
                            "--- read lang file: " + work + "/lang/test.lang",
                            "--- read lang ok",
                            "--- read mimes ok",
                            "--- read plugins ok",
                            "--- read bookmarks ok",
                            "fb::set path " + scratch_->path("files")};
    qsizetype last = -1;
    for (const QString& step : steps) {
        const qsizetype line = start.debug.indexOf(step);
        QVERIFY2(line > last, qPrintable(step));
        last = line;
    }
}

void tst_Startup::fontIsRegisteredTwice()
{
    const QString work = scratch_->path("work");
    // Plain concatenation, also where the slash is missing.
    writeSettings("Work_folder = " + work.toUtf8() + '\n');
    const Run start = runInBin();
    const QString file = work + "res/font.ttf";
    QCOMPARE(start.values("font"), (QStringList{"ZarnikFont 25 0 s " + file + " 0 0",
                                                "ZarnikFont 87 0 s " + file + " 0 0"}));
    QCOMPARE(start.values("window font"), QStringList("ZarnikFont 14 0"));
}

void tst_Startup::fontOfTheWorkFolderIsUsed()
{
    writeSettings("Work_folder = " + scratch_->path("work/").toUtf8() + '\n');
    scratch_->makeLink("work/res/font.ttf", QUARN_STAGE_DIR "/res/font.ttf");
    QCOMPARE(runInBin().values("font found"), QStringList("ZarnikFont"));
}

void tst_Startup::withoutWorkFolderTheFontPathIsRelative()
{
    writeSettings("");
    scratch_->makeFolder("res");
    scratch_->makeLink("res/font.ttf", QUARN_STAGE_DIR "/res/font.ttf");
    const Run start = runInBin();
    QCOMPARE(start.values("font"), (QStringList{"ZarnikFont 25 0 s res/font.ttf 0 0",
                                                "ZarnikFont 87 0 s res/font.ttf 0 0"}));
    QCOMPARE(start.values("font found"), QStringList("ZarnikFont"));
}

void tst_Startup::missingFontIsNoError()
{
    writeSettings("");
    const Run start = runInBin();
    QCOMPARE(start.status, AskedExitStatus);
    QVERIFY(start.values("font found") != QStringList("ZarnikFont"));
}

void tst_Startup::withoutWorkFolderTablesAreReadBeforeItIsSet()
{
    writeSettings("Language = test\n");
    scratch_->write("bin/mime_types.cfg", "002 01 JPG\n");
    const Run start = runInBin();
    QCOMPARE(start.values("work folder"), QStringList(scratch_->path("bin/")));
    QVERIFY(start.debug.contains("--- read lang file: /lang/test.lang"));
    QVERIFY(!QFile::exists("/mime_types.cfg"));
    QCOMPARE(start.values("associations"), QStringList("0"));
}

void tst_Startup::secondStartSendsShowAndEnds()
{
    writeSettings("");
    QCopChannel channel("Quarn");
    QVERIFY(channel.isOwner());
    QSignalSpy received(&channel, &QCopChannel::received);
    const Run start = runInBin();
    QCOMPARE(start.status, 0);
    QCOMPARE(start.values("globals"), QStringList());
    QTRY_COMPARE(received.count(), 1);
    QCOMPARE(received[0][0].toByteArray(), QByteArray("show()"));
    QCOMPARE(received[0][1].toByteArray(), QByteArray());
}

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsSet(BeTheProgram))
        return startQuarn(argc, argv);
    return runTest<tst_Startup>(argc, argv);
}

#include "tst_startup.moc"
