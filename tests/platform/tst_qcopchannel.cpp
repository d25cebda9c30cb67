#include "platform/qcopchannel.h"
#include "tests/platform/qcoptesting.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace qcoptesting;

namespace
{

/// The lock of the channel's owner, held as another process would. Negative if it is taken.
Descriptor foreignLock()
{
    QDir().mkdir(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/qcop");
    ::chmod((qgetenv("XDG_RUNTIME_DIR") + "/qcop").constData(), S_IRWXU);
    const QByteArray path = socketPath() + ".lock";
    const int file = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0)
        return Descriptor(file);
    ::close(file);
    return Descriptor(-1);
}

} // namespace

class TestQCopChannel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void deliversMessageAndData_data();
    void deliversMessageAndData();
    void refusesOversizedMessage();
    void keepsOrder();
    void keepsOrderOfBacklog();
    void refusesName_data();
    void refusesName();
    void acceptsName_data();
    void acceptsName();
    void refusesTooLongPath();

    void registeredWhileObjectLives();
    void channelsAreSeparate();
    void secondOwnerIsRefused();
    void filesArePrivate();
    void fileIsNotRegistered();
    void killedOwnerBlocksNothing();
    void deletedLockDoesNotMakeSecondOwner();
    void slotMayDestroyChannel();
    void slotMayRunEventLoop();

    void reservationIsAdopted();
    void reservationIsReleased();
    void reserveOfRegisteredChannelFails();
    void reserveWaitsForItsTime();
    void reserveTakesWhatIsGivenUp();
    void reserveEndsWhenOtherListens();

    void folderMustBePrivate_data();
    void folderMustBePrivate();
    void withoutRuntimeFolder_data();
    void withoutRuntimeFolder();

private:
    QString pathOf(const QString& name) const { return folder_->filePath(name); }

    std::unique_ptr<RuntimeFolder> folder_;
};

void TestQCopChannel::init()
{
    folder_ = std::make_unique<RuntimeFolder>();
}

void TestQCopChannel::cleanup()
{
    qunsetenv("TMPDIR");
    folder_.reset();
}

void TestQCopChannel::deliversMessageAndData_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("message") << QByteArray("show()") << QByteArray();
    QTest::newRow("both") << QByteArray("open(QString)") << QByteArray("/tmp/file");
    QTest::newRow("nothing") << QByteArray() << QByteArray();
    QTest::newRow("only data") << QByteArray() << QByteArray("data");
    QTest::newRow("any bytes") << QByteArray("\0\n\377", 3) << QByteArray("\377\0QCOP", 6);
    QTest::newRow("largest") << QByteArray(4096, 'm') << QByteArray(65536, 'd');
}

void TestQCopChannel::deliversMessageAndData()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, data);
    const QCopChannel channel(Channel);
    QVERIFY(channel.isOwner());
    QSignalSpy spy(&channel, &QCopChannel::received);
    QVERIFY(QCopChannel::send(Channel, message, data));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QCOMPARE(spy.first(), QVariantList({message, data}));
}

void TestQCopChannel::refusesOversizedMessage()
{
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    const QRegularExpression warning("too long");
    QTest::ignoreMessage(QtWarningMsg, warning);
    QVERIFY(!QCopChannel::send(Channel, QByteArray(4097, 'm')));
    QTest::ignoreMessage(QtWarningMsg, warning);
    QVERIFY(!QCopChannel::send(Channel, "message", QByteArray(65537, 'd')));
    QVERIFY(QCopChannel::send(Channel, "last"));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QCOMPARE(spy.first().first().toByteArray(), QByteArray("last"));
}

void TestQCopChannel::keepsOrder()
{
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QByteArray expected;
    for (int i = 0; i < 200; ++i) {
        const QByteArray message = QByteArray::number(i);
        QVERIFY(QCopChannel::send(Channel, message, QByteArray(i % 2 == 0 ? 65536 : 0, 'd')));
        expected += message + '\n';
    }
    QVERIFY(listener.prints(expected));
}

void TestQCopChannel::keepsOrderOfBacklog()
{
    const QCopChannel channel(Channel);
    QList<QByteArray> got;
    connect(&channel, &QCopChannel::received, this,
            [&got](const QByteArray& message) { got.append(message); });
    QList<QByteArray> sent;
    for (int i = 0; i < 40; ++i) {
        sent.append(QByteArray::number(i));
        QVERIFY(QCopChannel::send(Channel, sent.last(), QByteArray(i % 2 == 0 ? 65536 : 0, 'd')));
    }
    QTRY_COMPARE_WITH_TIMEOUT(got.size(), sent.size(), WaitMs);
    QCOMPARE(got, sent);
}

void TestQCopChannel::refusesName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("too long") << QByteArray(65, 'n');
    QTest::newRow("hidden") << QByteArray(".hidden");
    QTest::newRow("folder") << QByteArray("..");
    QTest::newRow("slash") << QByteArray("a/b");
    QTest::newRow("path") << QByteArray("../qcop/a");
    QTest::newRow("blank") << QByteArray("a b");
    QTest::newRow("line break") << QByteArray("a\n");
    QTest::newRow("zero") << QByteArray("a\0b", 3);
    QTest::newRow("not ASCII") << QByteArray("\303\244");
    QTest::newRow("lock of another") << QByteArray("Quarn.lock");
}

void TestQCopChannel::refusesName()
{
    QFETCH(QByteArray, name);
    const QRegularExpression warning("is not a channel name");
    for (int i = 0; i < 4; ++i)
        QTest::ignoreMessage(QtWarningMsg, warning);
    QVERIFY(!QCopChannel(name).isOwner());
    QVERIFY(!QCopChannel::isRegistered(name));
    QVERIFY(!QCopChannel::send(name, "message"));
    QVERIFY(!QCopChannel::reserve(name, 0));
}

void TestQCopChannel::acceptsName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("shortest") << QByteArray("a");
    QTest::newRow("every kind") << QByteArray("azAZ09._-");
    QTest::newRow("digit first") << QByteArray("0");
    QTest::newRow("dash first") << QByteArray("-a");
    QTest::newRow("dots inside") << QByteArray("a..b.");
    QTest::newRow("longest") << QByteArray(64, 'n');
}

void TestQCopChannel::acceptsName()
{
    QFETCH(QByteArray, name);
    const QCopChannel channel(name);
    QVERIFY(channel.isOwner());
    QVERIFY(QCopChannel::isRegistered(name));
    QVERIFY(QCopChannel::send(name, "message"));
}

void TestQCopChannel::refusesTooLongPath()
{
    const QString deep = pathOf(QString(90 - folder_->path().size(), 'd'));
    QVERIFY(QDir().mkdir(deep));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(deep));
    // 90 or 91 bytes and "/qcop/" leave room for at least 10 of 107.
    QVERIFY(QCopChannel("shortname").isOwner());
    const QRegularExpression warning("too long for a socket");
    for (int i = 0; i < 4; ++i)
        QTest::ignoreMessage(QtWarningMsg, warning);
    const QByteArray name(20, 'n');
    QVERIFY(!QCopChannel(name).isOwner());
    QVERIFY(!QCopChannel::isRegistered(name));
    QVERIFY(!QCopChannel::send(name, "message"));
    QVERIFY(!QCopChannel::reserve(name, 0));
}

void TestQCopChannel::registeredWhileObjectLives()
{
    QVERIFY(!QCopChannel::isRegistered(Channel));
    QVERIFY(!QCopChannel::send(Channel, "too early"));
    QVERIFY(!QFile::exists(pathOf("qcop")));
    for (int i = 0; i < 3; ++i) {
        const QCopChannel channel(Channel);
        QVERIFY(channel.isOwner());
        QVERIFY(QCopChannel::isRegistered(Channel));
    }
    QVERIFY(!QCopChannel::isRegistered(Channel));
    QVERIFY(!QCopChannel::send(Channel, "too late"));
    QCOMPARE(QDir(pathOf("qcop"))
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot),
             QStringList("Quarn.lock"));
}

void TestQCopChannel::channelsAreSeparate()
{
    const QCopChannel first(Channel);
    const QCopChannel second("LyraPlayer");
    QVERIFY(first.isOwner());
    QVERIFY(second.isOwner());
    QSignalSpy firstSpy(&first, &QCopChannel::received);
    QSignalSpy secondSpy(&second, &QCopChannel::received);
    QVERIFY(QCopChannel::send("LyraPlayer", "next"));
    QTRY_COMPARE_WITH_TIMEOUT(secondSpy.size(), 1, WaitMs);
    QVERIFY(QCopChannel::send(Channel, "show()"));
    QTRY_COMPARE_WITH_TIMEOUT(firstSpy.size(), 1, WaitMs);
    QCOMPARE(secondSpy.size(), 1);
}

void TestQCopChannel::secondOwnerIsRefused()
{
    const QCopChannel first(Channel);
    QSignalSpy spy(&first, &QCopChannel::received);
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("registered already"));
        const QCopChannel second(Channel);
        QVERIFY(!second.isOwner());
    }
    QVERIFY(QCopChannel::isRegistered(Channel));
    QVERIFY(QCopChannel::send(Channel, "show()"));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
}

void TestQCopChannel::filesArePrivate()
{
    const mode_t before = ::umask(0);
    const QCopChannel channel(Channel);
    ::umask(before);
    const auto modeOf = [](const QByteArray& path) {
        struct stat about = {};
        return ::lstat(path.constData(), &about) == 0 ? about.st_mode & 0777U : 0;
    };
    QCOMPARE(modeOf(QFile::encodeName(pathOf("qcop"))), 0700U);
    QCOMPARE(modeOf(socketPath() + ".lock"), 0600U);
    QCOMPARE(modeOf(socketPath()), 0700U);
}

void TestQCopChannel::fileIsNotRegistered()
{
    QVERIFY(QDir().mkdir(pathOf("qcop")));
    QCOMPARE(::chmod(QFile::encodeName(pathOf("qcop")).constData(), S_IRWXU), 0);
    QFile file(pathOf("qcop/Quarn"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QVERIFY(!QCopChannel::isRegistered(Channel));
    QVERIFY(!QCopChannel::send(Channel, "message"));
    const QCopChannel channel(Channel);
    QVERIFY(channel.isOwner());
    QVERIFY(QCopChannel::isRegistered(Channel));
}

void TestQCopChannel::killedOwnerBlocksNothing()
{
    {
        Listener listener;
        QVERIFY(listener.hasRegistered());
        listener.kill();
        QVERIFY(listener.waitForFinished(WaitMs));
    }
    QVERIFY(QFile::exists(pathOf("qcop/Quarn")));
    QVERIFY(!QCopChannel::isRegistered(Channel));
    QVERIFY(!QCopChannel::send(Channel, "message"));
    QVERIFY(QCopChannel::reserve(Channel, 0));
    const QCopChannel channel(Channel);
    QVERIFY(channel.isOwner());
    QSignalSpy spy(&channel, &QCopChannel::received);
    QVERIFY(QCopChannel::send(Channel, "show()"));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
}

void TestQCopChannel::deletedLockDoesNotMakeSecondOwner()
{
    const QCopChannel first(Channel);
    QVERIFY(QFile::remove(pathOf("qcop/Quarn.lock")));
    QVERIFY(!QCopChannel::reserve(Channel, 0));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("registered already"));
    QVERIFY(!QCopChannel(Channel).isOwner());
    QVERIFY(QCopChannel::isRegistered(Channel));
}

void TestQCopChannel::slotMayDestroyChannel()
{
    auto* channel = new QCopChannel(Channel);
    int count = 0;
    connect(channel, &QCopChannel::received, this, [channel, &count] {
        ++count;
        delete channel;
    });
    const Descriptor half = connectedPeer();
    for (int i = 0; i < 3; ++i)
        QVERIFY(QCopChannel::send(Channel, "end"));
    QTRY_VERIFY_WITH_TIMEOUT(!QCopChannel::isRegistered(Channel), WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(isDropped(half), WaitMs);
    QCOMPARE(count, 1);
}

void TestQCopChannel::slotMayRunEventLoop()
{
    const QCopChannel channel(Channel);
    QList<QByteArray> got;
    const auto question = [&got](const QByteArray& message) {
        got.append(message);
        if (message == "ask" && QCopChannel::send(Channel, "answer")) {
            const bool answered = QTest::qWaitFor([&got] { return got.size() > 1; }, WaitMs);
            got.append(answered ? "answered" : "not answered");
        }
    };
    connect(&channel, &QCopChannel::received, this, question);
    QVERIFY(QCopChannel::send(Channel, "ask"));
    QTRY_COMPARE_WITH_TIMEOUT(got.size(), 3, WaitMs);
    QCOMPARE(got, QList<QByteArray>({"ask", "answer", "answered"}));
}

void TestQCopChannel::reservationIsAdopted()
{
    QVERIFY(QCopChannel::reserve(Channel, 0));
    QVERIFY(QCopChannel::reserve(Channel, 0));
    QVERIFY(*foreignLock() < 0);
    QVERIFY(!QCopChannel::isRegistered(Channel));
    {
        const QCopChannel channel(Channel);
        QVERIFY(channel.isOwner());
        QVERIFY(QCopChannel::isRegistered(Channel));
        QVERIFY(*foreignLock() < 0);
        QCopChannel::releaseReservation(Channel); // which it no longer is
        QVERIFY(*foreignLock() < 0);
    }
    QVERIFY(*foreignLock() >= 0);
}

void TestQCopChannel::reservationIsReleased()
{
    QCopChannel::releaseReservation(Channel);
    QVERIFY(QCopChannel::reserve(Channel, 0));
    QCopChannel::releaseReservation(Channel);
    QVERIFY(*foreignLock() >= 0);
    QVERIFY(QCopChannel(Channel).isOwner());
}

void TestQCopChannel::reserveOfRegisteredChannelFails()
{
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QVERIFY(listener.stop());
    QElapsedTimer time;
    time.start();
    QVERIFY(!QCopChannel::reserve(Channel, WaitMs));
    QVERIFY2(time.elapsed() < WaitMs, "it waited for what was there");
}

void TestQCopChannel::reserveWaitsForItsTime()
{
    const Descriptor lock = foreignLock();
    QVERIFY(*lock >= 0);
    QElapsedTimer time;
    time.start();
    QVERIFY(!QCopChannel::reserve(Channel, 300));
    QVERIFY(time.elapsed() >= 300);
    QVERIFY(time.elapsed() < BoundMs);
    QVERIFY(!QCopChannel::reserve(Channel, 0));
    QVERIFY(!QCopChannel::reserve(Channel, -1));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("registered already"));
    QVERIFY(!QCopChannel(Channel).isOwner());
}

void TestQCopChannel::reserveTakesWhatIsGivenUp()
{
    auto lock = std::make_unique<Descriptor>(foreignLock());
    QVERIFY(**lock >= 0);
    QVERIFY(!QCopChannel::reserve(Channel, 0));
    std::thread other([&lock] { lock.reset(); });
    const bool reserved = QCopChannel::reserve(Channel, WaitMs);
    other.join();
    QVERIFY(reserved);
    QVERIFY(QCopChannel(Channel).isOwner());
}

void TestQCopChannel::reserveEndsWhenOtherListens()
{
    const Descriptor lock = foreignLock();
    QVERIFY(!QCopChannel::reserve(Channel, 0));
    std::unique_ptr<Descriptor> listener;
    std::thread other([&listener] { listener = std::make_unique<Descriptor>(foreignListener()); });
    QElapsedTimer time;
    time.start();
    const bool reserved = QCopChannel::reserve(Channel, WaitMs);
    other.join();
    QVERIFY(!reserved);
    QVERIFY(time.elapsed() < WaitMs);
    QVERIFY(QCopChannel::isRegistered(Channel));
}

void TestQCopChannel::folderMustBePrivate_data()
{
    QTest::addColumn<QByteArray>("shell");
    QTest::newRow("open to the group") << QByteArray("mkdir qcop && chmod 0710 qcop");
    QTest::newRow("open to others") << QByteArray("mkdir qcop && chmod 0702 qcop");
    QTest::newRow("as usual") << QByteArray("mkdir qcop && chmod 0755 qcop");
    QTest::newRow("link") << QByteArray("mkdir -m 0700 real && ln -s real qcop");
    QTest::newRow("dangling link") << QByteArray("ln -s nothing qcop");
    QTest::newRow("file") << QByteArray("touch qcop && chmod 0600 qcop");
    if (::geteuid() == 0)
        QTest::newRow("of another user") << QByteArray("mkdir -m 0700 qcop && chown 12345 qcop");
}

void TestQCopChannel::folderMustBePrivate()
{
    QFETCH(QByteArray, shell);
    QProcess process;
    process.setWorkingDirectory(folder_->path());
    process.start("/bin/sh", {"-c", QString::fromLatin1(shell)});
    QVERIFY(process.waitForFinished(WaitMs));
    QCOMPARE(process.exitCode(), 0);

    const QRegularExpression warning("is not a private folder");
    for (int i = 0; i < 4; ++i)
        QTest::ignoreMessage(QtWarningMsg, warning);
    QVERIFY(!QCopChannel(Channel).isOwner());
    QVERIFY(!QCopChannel::isRegistered(Channel));
    QVERIFY(!QCopChannel::send(Channel, "message"));
    QVERIFY(!QCopChannel::reserve(Channel, 0));
    QVERIFY(!QFile::exists(pathOf("qcop/Quarn.lock")));
}

void TestQCopChannel::withoutRuntimeFolder_data()
{
    QTest::addColumn<QByteArray>("runtime");
    QTest::newRow("unset") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("relative") << QByteArray(".");
    QTest::newRow("missing") << QByteArray("/nonexistent/runtime");
    QTest::newRow("file") << QByteArray("/proc/self/status");
}

void TestQCopChannel::withoutRuntimeFolder()
{
    QFETCH(QByteArray, runtime);
    qputenv("TMPDIR", QFile::encodeName(folder_->path()));
    if (runtime.isNull())
        qunsetenv("XDG_RUNTIME_DIR");
    else
        qputenv("XDG_RUNTIME_DIR", runtime);
    const QString expected = pathOf(QStringLiteral("qcop-%1").arg(::geteuid()));
    {
        const QCopChannel channel(Channel);
        QVERIFY(channel.isOwner());
        QVERIFY(QCopChannel::isRegistered(Channel));
        QVERIFY(QFile::exists(expected + "/Quarn"));
        QCOMPARE(QFile::permissions(expected) & QFile::Permissions(0x0077), QFile::Permissions());
    }
    QCOMPARE(::chmod(QFile::encodeName(expected).constData(), 0755), 0);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("is not a private folder"));
    QVERIFY(!QCopChannel(Channel).isOwner());
}

QTEST_GUILESS_MAIN(TestQCopChannel)
#include "tst_qcopchannel.moc"
