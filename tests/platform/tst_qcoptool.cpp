#include "platform/qcopchannel.h"
#include "tests/platform/qcoptesting.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace qcoptesting;

namespace
{

struct Result {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

Result run(const QStringList& arguments)
{
    QProcess process;
    process.start(QCOP_TOOL, arguments);
    if (!process.waitForFinished(WaitMs) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class TestQCopTool : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void wrongUsage_data();
    void wrongUsage();
    void sendSaysWhetherItWasSent();
    void sendReachesProgram();
    void registeredSaysWhetherItIs();
    void wrongNameIsFailure();
    void listenPrintsLineForMessage_data();
    void listenPrintsLineForMessage();
    void listenKeepsBytes();
    void listenRefusesOwnedChannel();
    void listenEndsCleanly_data();
    void listenEndsCleanly();
    void listenEndsWithItsReader();
    void oneOfManyStartsRemains();
    void killedListenerIsReplaced();

private:
    std::unique_ptr<RuntimeFolder> folder_;
};

void TestQCopTool::init()
{
    folder_ = std::make_unique<RuntimeFolder>();
}

void TestQCopTool::cleanup()
{
    folder_.reset();
}

void TestQCopTool::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("none") << QStringList();
    QTest::newRow("unknown") << QStringList{"receive", Channel};
    QTest::newRow("empty") << QStringList{""};
    QTest::newRow("send without message") << QStringList{"send", Channel};
    QTest::newRow("send two messages") << QStringList{"send", Channel, "one", "two"};
    QTest::newRow("listen to nothing") << QStringList{"listen"};
    QTest::newRow("listen to two") << QStringList{"listen", "one", "two"};
    QTest::newRow("registered nothing") << QStringList{"registered"};
}

void TestQCopTool::wrongUsage()
{
    QFETCH(QStringList, arguments);
    const Result result = run(arguments);
    QCOMPARE(result.status, 2);
    QCOMPARE(result.output, QByteArray());
    QVERIFY(result.errors.startsWith("usage: qcop send CHANNEL MESSAGE\n"));
}

void TestQCopTool::sendSaysWhetherItWasSent()
{
    QCOMPARE(run({"send", Channel, "nobody"}).status, 1);
    const QCopChannel channel(Channel);
    QCOMPARE(run({"send", Channel, "somebody"}).status, 0);
    QCOMPARE(run({"send", Channel, QString(4097, 'x')}).status, 1);
}

void TestQCopTool::sendReachesProgram()
{
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    QCOMPARE(run({"send", Channel, "show()"}).status, 0);
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QCOMPARE(spy.first().at(0).toByteArray(), QByteArray("show()"));
    QCOMPARE(spy.first().at(1).toByteArray(), QByteArray());
}

void TestQCopTool::registeredSaysWhetherItIs()
{
    QCOMPARE(run({"registered", Channel}).status, 1);
    auto channel = std::make_unique<QCopChannel>(Channel);
    QCOMPARE(run({"registered", Channel}).status, 0);
    channel.reset();
    QCOMPARE(run({"registered", Channel}).status, 1);
}

void TestQCopTool::wrongNameIsFailure()
{
    for (const char* command : {"listen", "registered"}) {
        const Result result = run({command, "a/b"});
        QCOMPARE(result.status, 1);
        QVERIFY(result.errors.contains("a/b"));
    }
    QCOMPARE(run({"send", "a/b", "message"}).status, 1);
}

void TestQCopTool::listenPrintsLineForMessage_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("word") << QByteArray("show") << QByteArray("show\n");
    QTest::newRow("empty") << QByteArray() << QByteArray("\n");
    QTest::newRow("line break") << QByteArray("a\nb\n") << QByteArray("a\\nb\\n\n");
    QTest::newRow("return") << QByteArray("a\r\nb") << QByteArray("a\\r\\nb\n");
    QTest::newRow("zero") << QByteArray("a\0b", 3) << QByteArray("a\0b\n", 4);
}

void TestQCopTool::listenPrintsLineForMessage()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, line);
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QVERIFY(QCopChannel::send(Channel, message));
    QVERIFY(listener.prints(line));
    QVERIFY(QCopChannel::send(Channel, "next", "data is not printed"));
    QVERIFY(listener.prints(line + "next\n"));
    QCOMPARE(listener.readAllStandardError(), QByteArray());
}

void TestQCopTool::listenKeepsBytes()
{
    qputenv("LC_ALL", "C");
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QProcess sender;
    sender.start("/bin/sh", {"-c", QStringLiteral("exec '%1' send '%2' \"$(printf '\\344\\377')\"")
                                       .arg(QStringLiteral(QCOP_TOOL), QLatin1String(Channel))});
    QVERIFY(sender.waitForFinished(WaitMs));
    qunsetenv("LC_ALL");
    QCOMPARE(sender.exitCode(), 0);
    QVERIFY(listener.prints("\344\377\n"));
    QCOMPARE(listener.readAllStandardError(), QByteArray());
}

void TestQCopTool::listenRefusesOwnedChannel()
{
    Listener first;
    QVERIFY(first.hasRegistered());
    const Result second = run({"listen", Channel});
    QCOMPARE(second.status, 1);
    QCOMPARE(second.output, QByteArray());
    QVERIFY(second.errors.contains("registered already"));
    QVERIFY(QCopChannel::send(Channel, "still"));
    QVERIFY(first.prints("still\n"));
}

void TestQCopTool::listenEndsCleanly_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestQCopTool::listenEndsCleanly()
{
    QFETCH(int, signalNumber);
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QCOMPARE(::kill(static_cast<pid_t>(listener.processId()), signalNumber), 0);
    QVERIFY(listener.waitForFinished(WaitMs));
    QCOMPARE(listener.exitStatus(), QProcess::NormalExit);
    QCOMPARE(listener.exitCode(), 0);
    QVERIFY(!QFile::exists(folder_->filePath("qcop/Quarn")));
    QVERIFY(!QCopChannel::isRegistered(Channel));
}

void TestQCopTool::listenEndsWithItsReader()
{
    const QByteArray fifo = QFile::encodeName(folder_->filePath("fifo"));
    QCOMPARE(::mkfifo(fifo.constData(), S_IRUSR | S_IWUSR), 0);
    const int reader = ::open(fifo.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(reader >= 0);
    Listener listener(folder_->filePath("fifo"));
    QVERIFY(listener.hasRegistered());
    ::close(reader);
    QVERIFY(QCopChannel::send(Channel, "nobody reads this"));
    QVERIFY(listener.waitForFinished(WaitMs));
    QCOMPARE(listener.exitStatus(), QProcess::NormalExit);
    QCOMPARE(listener.exitCode(), 1);
    QVERIFY(!QFile::exists(folder_->filePath("qcop/Quarn")));
}

void TestQCopTool::oneOfManyStartsRemains()
{
    constexpr size_t Starts = 8;
    for (int round = 0; round < 5; ++round) {
        std::vector<std::unique_ptr<QProcess>> processes;
        for (size_t i = 0; i < Starts; ++i)
            processes.push_back(std::make_unique<QProcess>());
        for (const auto& process : processes)
            process->start(QCOP_TOOL, {"listen", Channel});

        const auto running = [&processes] {
            return std::count_if(processes.begin(), processes.end(), [](const auto& process) {
                return process->state() != QProcess::NotRunning;
            });
        };
        QTRY_COMPARE_WITH_TIMEOUT(running(), 1, WaitMs);
        QTRY_VERIFY_WITH_TIMEOUT(QCopChannel::isRegistered(Channel), WaitMs);
        for (const auto& process : processes) {
            if (process->state() == QProcess::NotRunning) {
                QCOMPARE(process->exitCode(), 1);
                continue;
            }
            QVERIFY(QCopChannel::send(Channel, "you"));
            QTRY_COMPARE_WITH_TIMEOUT(process->bytesAvailable(), 4, WaitMs);
            process->terminate();
            QVERIFY(process->waitForFinished(WaitMs));
            QCOMPARE(process->exitCode(), 0);
        }
    }
}

void TestQCopTool::killedListenerIsReplaced()
{
    {
        Listener listener;
        QVERIFY(listener.hasRegistered());
        listener.kill();
        QVERIFY(listener.waitForFinished(WaitMs));
    }
    QVERIFY(QFile::exists(folder_->filePath("qcop/Quarn")));
    QCOMPARE(run({"registered", Channel}).status, 1);
    QCOMPARE(run({"send", Channel, "lost"}).status, 1);
    Listener next;
    QVERIFY(next.hasRegistered());
    QVERIFY(QCopChannel::send(Channel, "found"));
    QVERIFY(next.prints("found\n"));
}

QTEST_GUILESS_MAIN(TestQCopTool)
#include "tst_qcoptool.moc"
