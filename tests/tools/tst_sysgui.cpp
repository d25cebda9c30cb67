#include "tests/support/testmain.h"
#include "tests/tools/filesystems.h"
#include "tests/tools/treetext.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <memory>

namespace
{

constexpr int WaitMs = 60000;

QProcessEnvironment environment(const QList<std::pair<QString, QString>>& variables = {})
{
    QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        result.remove(QLatin1String(name));
    for (const auto& [name, value] : variables)
        result.insert(name, value);
    return result;
}

QProcessEnvironment noDisplay()
{
    return environment({{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen")}});
}

QProcessEnvironment display(const QString& name)
{
    return environment({{QStringLiteral("DISPLAY"), name}});
}

/// The program, started with the arguments of a move.
class SysGui : public QProcess
{
public:
    SysGui(const QByteArray& source, const QByteArray& folder,
           const QProcessEnvironment& variables = noDisplay())
    {
        setProcessEnvironment(variables);
        start(QStringLiteral(SYS_GUI),
              {QStringLiteral("mv"), QFile::decodeName(source), QFile::decodeName(folder),
               QStringLiteral("Moving"), QStringLiteral("Please wait.."),
               QStringLiteral("/none/copy.png")});
    }
    ~SysGui() override
    {
        kill();
        waitForFinished();
    }

    bool isRunning() const { return state() != QProcess::NotRunning; }
    void signal(int number) { ::kill(pid_t(processId()), number); }
    /// The exit status; -1 if it did not end by itself.
    int status()
    {
        waitForFinished(WaitMs);
        return state() == QProcess::NotRunning && exitStatus() == QProcess::NormalExit ? exitCode()
                                                                                       : -1;
    }
    QByteArray errors()
    {
        errors_ += readAllStandardError();
        return errors_;
    }

private:
    QByteArray errors_;
};

/// Holds up whoever opens a file, until it goes: a lease, which the system calls back.
class HeldFile
{
public:
    explicit HeldFile(const QByteArray& path) : file_(open(path.constData(), O_RDWR | O_CLOEXEC))
    {
        std::signal(SIGIO, SIG_IGN);
        isHeld_ = fcntl(file_, F_SETLEASE, F_WRLCK) == 0;
    }
    ~HeldFile() { close(file_); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    bool isHeld() const { return isHeld_; }
    bool isWanted() const { return fcntl(file_, F_GETLEASE) != F_WRLCK; }

private:
    int file_;
    bool isHeld_ = false;
};

/// An X server of its own.
class VirtualDisplay
{
public:
    VirtualDisplay()
    {
        server_.start(QStringLiteral("Xvfb"),
                      {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                       QStringLiteral("0"), QStringLiteral("320x400x24")});
        QElapsedTimer time;
        time.start();
        while (!server_.canReadLine() && time.elapsed() < WaitMs &&
               server_.waitForReadyRead(WaitMs)) {
        }
        name_ = QLatin1Char(':') + QString::fromLatin1(server_.readLine().trimmed());
    }
    ~VirtualDisplay()
    {
        server_.terminate();
        server_.waitForFinished(WaitMs);
    }
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    QString name() const { return name_; }
    QByteArray run(const QString& program, const QStringList& arguments) const
    {
        QProcess tool;
        tool.setProcessEnvironment(display(name_));
        tool.start(program, arguments);
        tool.waitForFinished(WaitMs);
        return tool.readAllStandardOutput();
    }
    /// Whether the window is seen, by its title and its class.
    bool hasWindow() const
    {
        const auto search = [this](const char* by, const char* text) {
            return run(QStringLiteral("xdotool"),
                       {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                        QLatin1String(by), QLatin1String(text)});
        };
        const QByteArray byName = search("--name", "^Quarn$");
        return !byName.isEmpty() && byName == search("--class", "^quarn$");
    }

private:
    QProcess server_;
    QString name_;
};

/// A folder whose move stands still on its way, since its two files are held up.
class HeldFolder
{
public:
    explicit HeldFolder(const QByteArray& path)
    {
        making::folder(path);
        for (const char* name : {"/one", "/two"}) {
            making::file(path + name, QByteArray(1000, 'x'));
            files_.push_back(std::make_unique<HeldFile>(path + name));
        }
    }

    bool isHeld() const { return files_[0]->isHeld() && files_[1]->isHeld(); }

    /// Lets a move copy one of them, after the time in which it shows no box.
    void waitForBoxTime()
    {
        QTRY_VERIFY_WITH_TIMEOUT(files_[0]->isWanted() || files_[1]->isWanted(), WaitMs);
        QElapsedTimer time;
        time.start();
        QTRY_VERIFY_WITH_TIMEOUT(time.elapsed() > BoxMs, WaitMs);
        files_.erase(files_.begin() + (files_[0]->isWanted() ? 0 : 1));
        QTRY_VERIFY_WITH_TIMEOUT(files_[0]->isWanted(), WaitMs);
    }

private:
    static constexpr qint64 BoxMs = 200;
    std::vector<std::unique_ptr<HeldFile>> files_;
};

} // namespace

class tst_SysGui : public QObject
{
    Q_OBJECT

private slots:
    void wrongUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        const QStringList move{"mv", "/none/a", "/none/b", "Moving", "Please wait..", "icon.png"};
        QTest::newRow("none") << QStringList();
        QTest::newRow("no icon") << move.first(5);
        QTest::newRow("too many") << move + QStringList{"more"};
        QTest::newRow("another command") << QStringList{"cp"} + move.mid(1);
        QTest::newRow("help") << QStringList{"--help"};
    }

    void wrongUsage()
    {
        QFETCH(QStringList, arguments);
        QProcess process;
        process.setProcessEnvironment(noDisplay());
        process.start(SYS_GUI, arguments);
        QVERIFY(process.waitForFinished(WaitMs));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 2);
        QCOMPARE(process.readAllStandardOutput(), QByteArray());
        QCOMPARE(process.readAllStandardError(),
                 QByteArray("usage: sys_gui mv SRC DSTDIR TITLE TEXT ICON\n"));
    }

    void movesWithoutAWord_data()
    {
        QTest::addColumn<bool>("across");
        QTest::newRow("within") << false;
        QTest::newRow("across") << true;
    }

    void movesWithoutAWord()
    {
        QFETCH(bool, across);
        const OwnFolder source(usualPlace());
        const OwnFolder target(across ? otherPlace() : usualPlace());
        making::variety(source.path("tree"));
        const QByteArrayList before = treeText(source.path("tree"));
        SysGui program(source.path("tree"), target.path());
        QCOMPARE(program.status(), 0);
        QCOMPARE(program.readAllStandardOutput(), QByteArray());
        QCOMPARE(program.errors(), QByteArray());
        QCOMPARE(treeText(target.path("tree")), before);
        QCOMPARE(source.names(), QList<QByteArray>());
    }

    void failureIsAMessageAndStatusOne()
    {
        const OwnFolder target(usualPlace());
        SysGui program("/none/at all", target.path());
        QCOMPARE(program.status(), 1);
        QCOMPARE(program.errors(),
                 QByteArray("sys_gui: cannot move '/none/at all': No such file or directory\n"));
        QCOMPARE(program.readAllStandardOutput(), QByteArray());
    }

    void limitedFileSizeIsAFailureLikeOthers()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::file(source.path("file"), QByteArray(1000000, 'x'));
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit limit{500000, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &limit), 0);
        SysGui program(source.path("file"), target.path());
        const bool isStarted = program.waitForStarted(WaitMs);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
        QVERIFY(isStarted);
        QCOMPARE(program.status(), 1);
        QVERIFY(program.errors().contains("File too large"));
        QCOMPARE(source.names(), QList<QByteArray>{"file"});
        QCOMPARE(target.names(), QList<QByteArray>());
    }

    void signalHalfWayLeavesSourceAndNoCopy_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void signalHalfWayLeavesSourceAndNoCopy()
    {
        QFETCH(int, number);
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::variety(source.path("tree"));
        const QByteArrayList before = treeText(source.path("tree"));
        auto held = std::make_unique<HeldFile>(source.path("tree/shared/deep/er/one"));
        QVERIFY(held->isHeld());
        SysGui program(source.path("tree"), target.path());
        QTRY_VERIFY_WITH_TIMEOUT(held->isWanted(), WaitMs);
        QCOMPARE(target.names().size(), 1);
        QVERIFY(target.names().first().startsWith(".tree.part-"));
        program.signal(number);
        QCOMPARE(program.status(), 1);
        QCOMPARE(program.errors(), QByteArray("sys_gui: interrupted\n"));
        QCOMPARE(target.names(), QList<QByteArray>());
        held.reset();
        QCOMPARE(treeText(source.path("tree")), before);
    }

    void sourceIsWholeUntilTheCopyIs()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::variety(source.path("tree"));
        const QByteArrayList before = treeText(source.path("tree"));
        SysGui program(source.path("gone"), target.path());
        QCOMPARE(program.status(), 1);
        {
            const HeldFile held(source.path("tree/large"));
            SysGui killed(source.path("tree"), target.path());
            QTRY_VERIFY_WITH_TIMEOUT(held.isWanted(), WaitMs);
            killed.kill();
            QVERIFY(killed.waitForFinished(WaitMs));
        }
        QCOMPARE(treeText(source.path("tree")), before);
        // What a killed one leaves is in nobody's way.
        SysGui again(source.path("tree"), target.path());
        QCOMPARE(again.status(), 0);
        QCOMPARE(treeText(target.path("tree")), before);
    }

    void foldersMayBeDeeperThanAPathIsLong()
    {
        constexpr int Depth = 700;
        const QByteArray name(10, 'd');
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        int folder = open(source.path().constData(), O_PATH | O_DIRECTORY);
        for (int i = 0; i < Depth; ++i) {
            QCOMPARE(mkdirat(folder, name.constData(), 0755), 0);
            const int next = openat(folder, name.constData(), O_PATH | O_DIRECTORY);
            close(folder);
            folder = next;
        }
        close(folder);
        SysGui program(source.path(name), target.path());
        QCOMPARE(program.status(), 0);
        QCOMPARE(source.names(), QList<QByteArray>());
        int depth = 0;
        folder = open(target.path().constData(), O_PATH | O_DIRECTORY);
        for (int next = 0; next >= 0; ++depth) {
            next = openat(folder, name.constData(), O_PATH | O_DIRECTORY);
            close(folder);
            folder = next;
        }
        QCOMPARE(depth - 1, Depth);
    }

    void displayThatCannotBeOpenedIsDoneWithout()
    {
        const OwnFolder source(otherPlace());
        const OwnFolder target(usualPlace());
        HeldFolder held(source.path("held"));
        QVERIFY(held.isHeld());
        SysGui program(source.path("held"), target.path(), display(QStringLiteral(":none")));
        held.waitForBoxTime();
        QTRY_VERIFY_WITH_TIMEOUT(program.errors().contains("could not connect to display"), WaitMs);
        QVERIFY(program.isRunning());
        program.signal(SIGTERM);
        QCOMPARE(program.status(), 1);
        QVERIFY(program.errors().contains("sys_gui: interrupted"));
        QCOMPARE(source.names(), QList<QByteArray>{"held"});
        QCOMPARE(target.names(), QList<QByteArray>());
    }

    void boxShowsWhileTheMoveLasts()
    {
        const VirtualDisplay screen;
        const OwnFolder source(otherPlace());
        const OwnFolder target(usualPlace());
        HeldFolder held(source.path("held"));
        QVERIFY(held.isHeld());
        SysGui program(source.path("held"), target.path(), display(screen.name()));
        held.waitForBoxTime();
        QTRY_VERIFY_WITH_TIMEOUT(screen.hasWindow(), WaitMs);
        program.signal(SIGTERM);
        QCOMPARE(program.status(), 1);
        QVERIFY(!screen.hasWindow());
        QCOMPARE(source.names(), QList<QByteArray>{"held"});
        QCOMPARE(target.names(), QList<QByteArray>());
    }

    void boxOfAKilledMoveGoesToo()
    {
        const VirtualDisplay screen;
        const OwnFolder source(otherPlace());
        const OwnFolder target(usualPlace());
        HeldFolder held(source.path("held"));
        QVERIFY(held.isHeld());
        SysGui program(source.path("held"), target.path(), display(screen.name()));
        held.waitForBoxTime();
        QTRY_VERIFY_WITH_TIMEOUT(screen.hasWindow(), WaitMs);
        program.signal(SIGKILL);
        QVERIFY(program.waitForFinished(WaitMs));
        QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow(), WaitMs);
    }

    void failureShowsUntilAKey()
    {
        const VirtualDisplay screen;
        const OwnFolder target(usualPlace());
        SysGui program("/none/at all", target.path(), display(screen.name()));
        QTRY_VERIFY_WITH_TIMEOUT(screen.hasWindow() || !program.isRunning(), WaitMs);
        QVERIFY(program.errors().contains("No such file or directory"));
        QElapsedTimer time;
        time.start();
        QTRY_VERIFY_WITH_TIMEOUT(
            (screen.run(QStringLiteral("xdotool"), {QStringLiteral("key"), QStringLiteral("a")}),
             !program.isRunning()),
            WaitMs);
        QCOMPARE(program.status(), 1);
        QVERIFY2(time.elapsed() < 8000, "a key closed it, not the time");
    }
};

int main(int argc, char** argv)
{
    // A shell may have started the test without them.
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        std::signal(number, SIG_DFL);
    // What is mounted for the test is there for the program, too.
    enterOwnMounts();
    return runTest<tst_SysGui>(argc, argv);
}

#include "tst_sysgui.moc"
