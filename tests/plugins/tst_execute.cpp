#include "platform/keymap.h"
#include "plugins/execute/executewindow.h"
#include "plugins/execute/runningprogram.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/textpane.h"
#include "tests/support/drawntexts.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <limits>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

/// Running programs, driven by keys.
class tst_Execute : public QObject
{
    Q_OBJECT

private slots:
    void outputAndStatusAreShown();
    void programRunsInItsFolderWithoutInput();
    void outputComesWhileTheProgramRuns();
    void signalThatEndsTheProgramIsTold();
    void programIsStopped();
    void stubbornProgramIsKilled();
    void secondRequestKillsAtOnce();
    void whatItStartedIsStoppedToo();
    void programRunsAgain();
    void floodLeavesTheKeysAlone();
    void endOfTheOutputStaysInView();
    void whatOneLooksAtStaysInView();
    void programThatCannotBeRunIsTold_data();
    void programThatCannotBeRunIsTold();
    void reasonWhyItCannotBeRunIsInTheLanguage();
    void endingEndsTheProgramFirst();
    void closingTheWindowObjectEndsTheProgram();
    void programInheritsNoDescriptors();
    void noChildIsLeft();
};

namespace
{

/// A program in the plugin's window.
class Runner
{
public:
    explicit Runner(const QString& path) : window(path)
    {
        window.show();
        [this] { QVERIFY(QTest::qWaitFor([this] { return keyReceiver() == &window; })); }();
    }
    bool shows(const QString& row) const { return rows().contains(row); }
    QStringList rows() const
    {
        QStringList texts;
        for (const TextRow& row : window.pane()->rows())
            texts.append(row.text);
        return texts;
    }
    /// What the title says behind the name.
    QString state() const { return window.mainWidgetTitle().section(" · ", 1); }

    ExecuteWindow window;
};

/// Whether a process is there and not yet dead.
bool isAlive(qint64 process)
{
    QFile status(QString("/proc/%1/stat").arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = status.readAll();
    return !line.isEmpty() && line.mid(line.lastIndexOf(')') + 2, 1) != "Z";
}

/// A program that counts to 100 and, when it is told to go on, to 200. Returns its path.
QString counting(const ScratchFolder& folder)
{
    folder.makeFifo("fifo");
    folder.write("a.sh", "seq 1 100\nread line < fifo\nseq 101 200\n");
    return folder.path("a.sh");
}

void goOn(const ScratchFolder& folder)
{
    QFile fifo(folder.path("fifo"));
    QVERIFY(fifo.open(QIODevice::WriteOnly));
    fifo.write("go on\n");
}

} // namespace

void tst_Execute::outputAndStatusAreShown()
{
    const ScratchFolder folder;
    folder.write("a.sh", "echo out\necho err >&2\nexit 3\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_COMPARE(runner.window.mainWidgetTitle(), QString("a.sh · Exit code 3"));
    QCOMPARE(runner.rows(), (QStringList{"out", "err"}));
}

void tst_Execute::programRunsInItsFolderWithoutInput()
{
    const ScratchFolder folder;
    folder.write("in/a.sh", "ls\nread line || echo none\n");
    const Runner runner(folder.path("in/a.sh"));
    QTRY_COMPARE(runner.state(), QString("Exit code 0"));
    QCOMPARE(runner.rows(), (QStringList{"a.sh", "none"}));
}

void tst_Execute::outputComesWhileTheProgramRuns()
{
    const ScratchFolder folder;
    folder.makeFifo("fifo");
    folder.write("a.sh", "echo begun\nread line < fifo\necho $line\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_VERIFY(runner.shows("begun"));
    QCOMPARE(runner.state(), QString("Running..."));
    goOn(folder);
    QTRY_COMPARE(runner.state(), QString("Exit code 0"));
    QCOMPARE(runner.rows(), (QStringList{"begun", "go on"}));
}

void tst_Execute::signalThatEndsTheProgramIsTold()
{
    const ScratchFolder folder;
    folder.write("a.sh", "kill -SEGV $$\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_COMPARE(runner.state(), QString("Signal 11"));
}

void tst_Execute::programIsStopped()
{
    const ScratchFolder folder;
    folder.write("a.sh", "echo begun\nexec sleep 1000\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_VERIFY(runner.shows("begun"));
    pressKey(PhoneKey::SoftLeft);
    QCOMPARE(runner.state(), QString("Stopping..."));
    QTRY_COMPARE(runner.state(), QString("Stopped"));
}

void tst_Execute::stubbornProgramIsKilled()
{
    const ScratchFolder folder;
    folder.write("a.sh", "trap '' TERM\necho begun\nwhile :; do sleep 0.1; done\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_VERIFY(runner.shows("begun"));
    pressKey(PhoneKey::SoftLeft);
    QTRY_COMPARE_WITH_TIMEOUT(runner.state(), QString("Stopped"), 20000);
}

void tst_Execute::secondRequestKillsAtOnce()
{
    const ScratchFolder folder;
    folder.write("a.sh", "trap '' TERM\necho begun\nwhile :; do sleep 0.1; done\n");
    RunningProgram program(nullptr);
    program.setPatience(std::numeric_limits<int>::max());
    QByteArray output;
    std::optional<ProgramEnd> end;
    connect(&program, &RunningProgram::output, this,
            [&](const QByteArray& bytes) { output += bytes; });
    connect(&program, &RunningProgram::ended, this, [&](const ProgramEnd& how) { end = how; });
    program.start(Command::forFile(folder.path("a.sh")));
    QTRY_COMPARE(output, QByteArray("begun\n"));
    program.stop();
    program.stop();
    QTRY_VERIFY(end);
    QVERIFY(end->bySignal && end->asWished);
    QCOMPARE(end->code, SIGKILL);
    QVERIFY(!program.isRunning());
}

void tst_Execute::whatItStartedIsStoppedToo()
{
    const ScratchFolder folder;
    // The child does not listen, and its parent does not wait for it.
    folder.write("a.sh", "sh -c 'trap \"\" TERM; echo ready; while :; do sleep 0.1; done' &\n"
                         "echo $!\nwait\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_VERIFY(runner.shows("ready") && runner.rows().size() == 2);
    const qint64 child = runner.rows().filter(QRegularExpression("^\\d+$")).value(0).toLongLong();
    QVERIFY(isAlive(child));
    pressKey(PhoneKey::SoftLeft);
    QTRY_COMPARE(runner.state(), QString("Stopped"));
    QTRY_VERIFY(!isAlive(child));
}

void tst_Execute::programRunsAgain()
{
    const ScratchFolder folder;
    folder.write("a.sh", "echo x >> log\nwc -l < log\n");
    const Runner runner(folder.path("a.sh"));
    for (const char* count : {"1", "2", "3"}) {
        QTRY_COMPARE(runner.state(), QString("Exit code 0"));
        QCOMPARE(runner.rows(), QStringList(count));
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(runner.state(), QString("Running..."));
    }
    QTRY_COMPARE(runner.state(), QString("Exit code 0"));
}

void tst_Execute::floodLeavesTheKeysAlone()
{
    const ScratchFolder folder;
    folder.write("a.sh", "exec yes flood\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_VERIFY(runner.shows("flood"));
    pressKey('1');
    pressKey(PhoneKey::PageDown);
    QVERIFY(runner.shows("flood"));
    pressKey(PhoneKey::SoftLeft);
    QTRY_COMPARE(runner.state(), QString("Stopped"));
    QVERIFY(runner.shows("flood"));
}

void tst_Execute::endOfTheOutputStaysInView()
{
    const ScratchFolder folder;
    const Runner runner(counting(folder));
    QTRY_VERIFY(runner.shows("100"));
    goOn(folder);
    QTRY_VERIFY(runner.shows("200"));
}

void tst_Execute::whatOneLooksAtStaysInView()
{
    const ScratchFolder folder;
    const Runner runner(counting(folder));
    QTRY_VERIFY(runner.shows("100"));
    pressKey('1');
    QVERIFY(runner.shows("1"));
    goOn(folder);
    QTRY_COMPARE(runner.state(), QString("Exit code 0"));
    QVERIFY(runner.shows("1"));
    pressKey('7');
    QVERIFY(runner.shows("200"));
}

void tst_Execute::programThatCannotBeRunIsTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << "missing";
    QTest::newRow("text") << "text.txt";
    QTest::newRow("interpreter missing") << "none";
    QTest::newRow("no program") << "zeros";
}

void tst_Execute::programThatCannotBeRunIsTold()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write("text.txt", "text");
    folder.setMode("text.txt", 0644);
    folder.write("none", "#!/nonexistent/interpreter\n");
    folder.setMode("none", 0755);
    folder.write("zeros", QByteArray(100, '\0'));
    folder.setMode("zeros", 0755);
    Runner runner(folder.path(name));
    QTRY_COMPARE(runner.window.mainWidgetTitle(), name);
    QVERIFY(runner.rows().isEmpty());
    const QImage shown =
        runner.window.pane()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QVERIFY(!isPlain(shown, shown.rect(), shown.pixelColor(1, 1)));
    pressKey(PhoneKey::SoftLeft);
    pressKey(PhoneKey::Down);
    QTRY_COMPARE(runner.window.mainWidgetTitle(), name);
}

void tst_Execute::reasonWhyItCannotBeRunIsInTheLanguage()
{
    const ScratchFolder folder;
    folder.write("a.lang", "[Language]\nCANNOT_RUN = Nein, %1: %2\nSYSTEM_NOT_FOUND = Grund\n");
    folder.write("none", "#!/nonexistent/interpreter\n");
    folder.setMode("none", 0755);
    loadPluginTexts(folder.path("a.lang"));
    Runner runner(folder.path("none"));
    QTRY_COMPARE(runner.window.mainWidgetTitle(), QString("none"));
    QStringList said;
    for (const DrawnText& line : textsDrawnBy(*runner.window.pane()))
        said.append(line.text);
    loadPluginTexts(QString());
    QCOMPARE(said.join(' '), QString("Nein, none: Grund"));
}

void tst_Execute::endingEndsTheProgramFirst()
{
    const ScratchFolder folder;
    folder.write("a.sh", "trap 'echo x > ended; exit' TERM\necho begun\n"
                         "while :; do sleep 0.1; done\n");
    Runner runner(folder.path("a.sh"));
    QTRY_VERIFY(runner.shows("begun"));
    QVERIFY(!ZApplication::isQuitting());
    runner.window.end();
    QVERIFY(!ZApplication::isQuitting());
    QTRY_VERIFY(ZApplication::isQuitting());
    QVERIFY(folder.exists("ended"));
}

void tst_Execute::closingTheWindowObjectEndsTheProgram()
{
    const ScratchFolder folder;
    folder.write("a.sh", "echo $$\nexec sleep 1000\n");
    qint64 process = 0;
    {
        const Runner runner(folder.path("a.sh"));
        QTRY_VERIFY(!runner.rows().isEmpty());
        process = runner.rows().front().toLongLong();
        QVERIFY(isAlive(process));
    }
    QVERIFY(!isAlive(process));
}

void tst_Execute::programInheritsNoDescriptors()
{
    const ScratchFolder folder;
    folder.write("kept-open");
    const int descriptor =
        ::open(QFile::encodeName(folder.path("kept-open")).constData(), O_RDONLY);
    QVERIFY(descriptor >= 0);
    folder.write("a.sh", "ls -l /proc/self/fd\n");
    const Runner runner(folder.path("a.sh"));
    QTRY_COMPARE(runner.state(), QString("Exit code 0"));
    ::close(descriptor);
    const QString text = runner.rows().join(QString());
    QVERIFY(text.contains("/dev/null"));
    QVERIFY2(!text.contains("kept-open"), qPrintable(text));
}

void tst_Execute::noChildIsLeft()
{
    const ScratchFolder folder;
    folder.write("a.sh", "true\n");
    {
        const Runner runner(folder.path("a.sh"));
        QTRY_COMPARE(runner.state(), QString("Exit code 0"));
    }
    QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1);
    QCOMPARE(errno, ECHILD);
}

QUARN_TEST_MAIN(tst_Execute)
#include "tst_execute.moc"
