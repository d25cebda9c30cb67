#include "platform/qcopchannel.h"
#include "tests/platform/qcoptesting.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QtEndian>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <memory>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace qcoptesting;

namespace
{

/// Whether this process has no descriptors left, as far as accepting goes. (Without any the
/// sanitizers cannot look at memory.)
bool lacksDescriptors = false;

} // namespace

/// In place of the C library's.
extern "C" int accept4(int socket, sockaddr* address, socklen_t* length, int flags)
{
    if (!lacksDescriptors)
        return int(::syscall(SYS_accept4, socket, address, length, flags));
    errno = EMFILE;
    return -1;
}

namespace
{

volatile std::sig_atomic_t pipeSignals = 0;

qsizetype put(const Descriptor& peer, const QByteArray& bytes)
{
    return ::send(*peer, bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
}

QByteArray header(quint32 magic, quint32 messageBytes, quint32 dataBytes)
{
    QByteArray bytes(12, '\0');
    qToBigEndian(magic, bytes.data());
    qToBigEndian(messageBytes, bytes.data() + 4);
    qToBigEndian(dataBytes, bytes.data() + 8);
    return bytes;
}

QByteArray goodHeader(quint32 messageBytes, quint32 dataBytes = 0)
{
    return header(0x51434f50, messageBytes, dataBytes);
}

qint64 residentKiB(qint64 pid)
{
    return statusOf(pid, "VmRSS").chopped(3).toLongLong();
}

/// The sockets and channel files that a program started now finds open, a line each.
QByteArray channelFilesOfChild()
{
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        ::execl("/bin/sh", "sh", "-c",
                "for f in /proc/$$/fd/*; do readlink \"$f\"; done | grep -e socket: -e qcop",
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(ends[1]);
    QFile output;
    const bool opened = output.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    const QByteArray lines = opened ? output.readAll() : QByteArray();
    ::waitpid(child, nullptr, 0);
    return lines;
}

} // namespace

class TestQCopPeers : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void stoppedOwnerGetsMessageLater();
    void fullBacklogDoesNotHang();
    void vanishingPeerRaisesNoSignal();
    void dropsJunk_data();
    void dropsJunk();
    void quittersMakeRoom();
    void ignoresWhatFollowsMessage();
    void memoryStaysBounded();
    void slowPeersAreDroppedInTime();
    void idleListenerSleeps();
    void furtherConnectionsWait();
    void keepsOrderOfThoseWaiting();
    void keepsOrderOfOneSender();
    void stoppedWhileReadingStillReceives();
    void lackOfDescriptorsOnlyDelays();
    void leavesNoDescriptorOpen();
    void childInheritsNoDescriptor();

private:
    std::unique_ptr<RuntimeFolder> folder_;
};

void TestQCopPeers::init()
{
    folder_ = std::make_unique<RuntimeFolder>();
}

void TestQCopPeers::cleanup()
{
    folder_.reset();
}

void TestQCopPeers::stoppedOwnerGetsMessageLater()
{
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QVERIFY(listener.stop());

    QElapsedTimer time;
    time.start();
    QVERIFY(QCopChannel::isRegistered(Channel));
    QVERIFY(QCopChannel::send(Channel, "first", QByteArray(65536, 'd')));
    QVERIFY(time.elapsed() < BoundMs);
    // By a process that has ended when the owner goes on.
    QCOMPARE(QProcess::execute(QCOP_TOOL, {"send", Channel, "second"}), 0);
    QCOMPARE(listener.output(), QByteArray());

    QVERIFY(listener.signal(SIGCONT));
    QVERIFY(listener.prints("first\nsecond\n"));
}

void TestQCopPeers::fullBacklogDoesNotHang()
{
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QVERIFY(listener.stop());

    std::atomic<qint64> longest = 0;
    std::atomic<qsizetype> handedOver = 0;
    std::vector<std::thread> senders;
    for (int i = 0; i < 100; ++i) {
        senders.emplace_back([&] {
            QElapsedTimer time;
            time.start();
            if (QCopChannel::send(Channel, "x"))
                ++handedOver;
            qint64 known = longest;
            while (time.elapsed() > known &&
                   !longest.compare_exchange_weak(known, time.elapsed())) {
            }
        });
    }
    for (std::thread& sender : senders)
        sender.join();
    QVERIFY(handedOver > 0);
    QVERIFY2(handedOver < 100, "the backlog never was full");
    QVERIFY(longest >= QCopChannel::SendTimeoutMs);
    QVERIFY2(longest < BoundMs, QByteArray::number(longest).constData());
    QVERIFY(QCopChannel::isRegistered(Channel));

    // What was handed over arrives, and nothing else.
    QVERIFY(listener.signal(SIGCONT));
    QVERIFY(QCopChannel::send(Channel, "end"));
    QVERIFY(listener.prints(QByteArray("x\n").repeated(handedOver) + "end\n"));
}

void TestQCopPeers::vanishingPeerRaisesNoSignal()
{
    {
        // Whoever opens a socket may ignore the signal from then on; undo that afterwards.
        const QCopChannel channel(Channel);
    }
    auto* before = std::signal(SIGPIPE, [](int) { pipeSignals = 1; });
    const Descriptor listener = foreignListener();
    std::atomic<bool> done = false;
    std::thread closer([&listener, &done] {
        while (!done)
            ::close(::accept(*listener, nullptr, nullptr));
    });
    bool failed = false;
    const QByteArray data(65536, 'd');
    QElapsedTimer time;
    for (time.start(); !failed && time.elapsed() < WaitMs;)
        failed = !QCopChannel::send(Channel, "message", data);
    done = true;
    closer.join();
    std::signal(SIGPIPE, before);
    QVERIFY2(failed, "no connection was closed while it was written to");
    QCOMPARE(int(pipeSignals), 0);
}

void TestQCopPeers::dropsJunk_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("text") << QByteArray("GET / HTTP/1.1\r\n\r\n");
    QTest::newRow("other magic") << header(0x504f4351, 0, 0);
    QTest::newRow("zeros") << QByteArray(12, '\0');
    QTest::newRow("message too long") << goodHeader(4097);
    QTest::newRow("data too long") << goodHeader(0, 65537);
    QTest::newRow("largest numbers") << goodHeader(0xffffffff, 0xffffffff);
    QTest::newRow("negative numbers") << goodHeader(0x80000000, 0x80000000);
}

void TestQCopPeers::dropsJunk()
{
    QFETCH(QByteArray, bytes);
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    const Descriptor peer = connectedPeer();
    QElapsedTimer time;
    time.start();
    QCOMPARE(put(peer, bytes), bytes.size());
    QTRY_VERIFY_WITH_TIMEOUT(isDropped(peer), WaitMs);
    QVERIFY2(time.elapsed() < QCopChannel::ReceiveTimeoutMs / 2, "not dropped for what it sent");
    QVERIFY(QCopChannel::send(Channel, "show()"));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QCOMPARE(spy.first().first().toByteArray(), QByteArray("show()"));
}

void TestQCopPeers::quittersMakeRoom()
{
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    const auto before = descriptorCount();
    std::vector<Descriptor> peers;
    for (qsizetype i = 0; i < QCopChannel::MaxConnections; ++i) {
        peers.push_back(connectedPeer());
        QVERIFY(put(peers.back(), goodHeader(2) + "m") > 0);
    }
    const qsizetype enough = before + 2 * QCopChannel::MaxConnections;
    QTRY_VERIFY_WITH_TIMEOUT(descriptorCount() >= enough, WaitMs);
    for (int round = 0; round < 4; ++round) {
        for (qsizetype size : {0, 1, 11, 12, 13}) {
            const Descriptor quitter = connectedPeer();
            QCOMPARE(put(quitter, (goodHeader(2) + "m").left(size)), size);
        }
    }
    QVERIFY(QCopChannel::send(Channel, "show()"));
    QElapsedTimer time;
    time.start();
    peers.clear();
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QVERIFY2(time.elapsed() < QCopChannel::ReceiveTimeoutMs / 2, "it waited for who had gone");
}

void TestQCopPeers::ignoresWhatFollowsMessage()
{
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    const Descriptor peer = connectedPeer();
    QElapsedTimer time;
    time.start();
    const QByteArray bytes = goodHeader(3) + "one" + goodHeader(3) + "two";
    QCOMPARE(put(peer, bytes), bytes.size());
    QTRY_VERIFY_WITH_TIMEOUT(isDropped(peer), WaitMs);
    QVERIFY2(time.elapsed() < QCopChannel::ReceiveTimeoutMs / 2, "kept after its message");
    QVERIFY(QCopChannel::send(Channel, "three"));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 2, WaitMs);
    QCOMPARE(spy.at(0).first().toByteArray(), QByteArray("one"));
    QCOMPARE(spy.at(1).first().toByteArray(), QByteArray("three"));
}

void TestQCopPeers::memoryStaysBounded()
{
    Listener listener;
    QVERIFY(listener.hasRegistered());
    QVERIFY(QCopChannel::send(Channel, "ready"));
    QVERIFY(listener.prints("ready\n"));
    const qint64 before = residentKiB(listener.processId());
    QVERIFY(before > 0);

    // More peers than are served write without end: as many bytes as they get rid of in the time
    // in which the first ones are dropped, or 64 MiB if they are read on and on.
    std::vector<Descriptor> peers;
    for (qsizetype i = 0; i < QCopChannel::MaxConnections + 4; ++i) {
        peers.push_back(connectedPeer());
        put(peers.back(), i < QCopChannel::MaxConnections ? QByteArray("QCO") : goodHeader(1));
    }
    const QByteArray block(65536, 'x');
    qint64 written = 0;
    qint64 most = 0;
    const auto droppedOrRead = [&] {
        for (size_t i = QCopChannel::MaxConnections; i < peers.size(); ++i)
            written += std::max<qsizetype>(0, put(peers[i], block));
        most = std::max(most, residentKiB(listener.processId()));
        return isDropped(peers.front()) || written > 64 * 1024 * 1024;
    };
    QVERIFY(QTest::qWaitFor(droppedOrRead, WaitMs));
    QVERIFY2(most - before < 16 * 1024, QByteArray::number(most - before).constData());
    QVERIFY2(written < 8 * 1024 * 1024, QByteArray::number(written).constData());
}

void TestQCopPeers::slowPeersAreDroppedInTime()
{
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    const Descriptor silent = connectedPeer();
    const Descriptor half = connectedPeer();
    QVERIFY(put(half, goodHeader(100) + "half") > 0);
    const Descriptor trickling = connectedPeer();
    QVERIFY(put(trickling, goodHeader(4096)) > 0);
    QTimer drops;
    connect(&drops, &QTimer::timeout, this, [&trickling] { put(trickling, "x"); });
    drops.start(100);

    QElapsedTimer time;
    time.start();
    QVERIFY(QCopChannel::send(Channel, "meanwhile"));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QVERIFY(!isDropped(silent) && !isDropped(half) && !isDropped(trickling));
    const auto allDropped = [&] {
        return isDropped(silent) && isDropped(half) && isDropped(trickling);
    };
    QTRY_VERIFY_WITH_TIMEOUT(allDropped(), WaitMs);
    QVERIFY2(time.elapsed() >= QCopChannel::ReceiveTimeoutMs - 500, "dropped too early");
    QVERIFY2(time.elapsed() < 3 * QCopChannel::ReceiveTimeoutMs, "dropped too late");
    QCOMPARE(spy.size(), 1);
}

void TestQCopPeers::idleListenerSleeps()
{
    Listener idle;
    QVERIFY(idle.hasRegistered());
    QVERIFY(QCopChannel::send(Channel, "once"));
    QVERIFY(idle.prints("once\n"));
    QTRY_VERIFY_WITH_TIMEOUT(idle.isIn('S'), WaitMs);
    const QByteArray wakeUps = statusOf(idle.processId(), "voluntary_ctxt_switches");
    QVERIFY(!wakeUps.isEmpty());

    // The time-out of its connection, measured at another channel that has one.
    const RuntimeFolder other;
    const QCopChannel channel(Channel);
    const Descriptor silent = connectedPeer();
    QTRY_VERIFY_WITH_TIMEOUT(isDropped(silent), WaitMs);
    QCOMPARE(statusOf(idle.processId(), "voluntary_ctxt_switches"), wakeUps);
}

void TestQCopPeers::furtherConnectionsWait()
{
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    const auto before = descriptorCount();
    std::vector<Descriptor> peers;
    for (int i = 0; i < 30; ++i)
        peers.push_back(connectedPeer());
    QVERIFY(QCopChannel::send(Channel, "patient"));
    qsizetype most = 0;
    const auto firstIsDropped = [&] {
        most = std::max(most, descriptorCount() - before - qsizetype(peers.size()));
        return isDropped(peers.front());
    };
    QTRY_VERIFY_WITH_TIMEOUT(firstIsDropped(), WaitMs);
    QVERIFY2(most >= QCopChannel::MaxConnections, QByteArray::number(most).constData());
    QVERIFY2(most <= QCopChannel::MaxConnections + 3, QByteArray::number(most).constData());
    QVERIFY(!isDropped(peers.back()));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QCOMPARE(spy.first().first().toByteArray(), QByteArray("patient"));
}

void TestQCopPeers::keepsOrderOfThoseWaiting()
{
    const QCopChannel channel(Channel);
    QList<QByteArray> got;
    connect(&channel, &QCopChannel::received, this,
            [&got](const QByteArray& message) { got.append(message); });
    const auto before = descriptorCount();
    std::vector<Descriptor> peers;
    for (qsizetype i = 0; i < QCopChannel::MaxConnections; ++i) {
        peers.push_back(connectedPeer());
        QVERIFY(put(peers.back(), goodHeader(5) + "fir") > 0);
    }
    QList<QByteArray> expected = {"first"};
    for (int i = 10; i < 30; ++i) {
        expected.append(QByteArray::number(i));
        peers.push_back(connectedPeer());
        QVERIFY(put(peers.back(),
                    goodHeader(2, quint32(i)) + expected.last() + QByteArray(i, 'd')) > 0);
    }
    // As many as are served have left the backlog.
    const qsizetype enough = before + qsizetype(peers.size()) + QCopChannel::MaxConnections;
    QTRY_VERIFY_WITH_TIMEOUT(descriptorCount() >= enough, WaitMs);
    QVERIFY(got.isEmpty());
    QCOMPARE(put(peers.front(), "st"), 2);
    QTRY_COMPARE_WITH_TIMEOUT(got.size(), expected.size(), WaitMs);
    QCOMPARE(got, expected);
}

void TestQCopPeers::keepsOrderOfOneSender()
{
    const QCopChannel channel(Channel);
    QList<QByteArray> got;
    connect(&channel, &QCopChannel::received, this,
            [&got](const QByteArray& message) { got.append(message); });
    const auto before = descriptorCount();
    const Descriptor peer = connectedPeer();
    QTRY_COMPARE_WITH_TIMEOUT(descriptorCount(), before + 2, WaitMs);
    // By the time the channel looks again, both have come.
    QVERIFY(put(peer, goodHeader(5) + "first") > 0);
    QVERIFY(QCopChannel::send(Channel, "second"));
    QTRY_COMPARE_WITH_TIMEOUT(got.size(), 2, WaitMs);
    QCOMPARE(got, (QList<QByteArray>{"first", "second"}));
}

void TestQCopPeers::stoppedWhileReadingStillReceives()
{
    Listener listener;
    QVERIFY(listener.hasRegistered());
    const Descriptor peer = connectedPeer();
    QVERIFY(put(peer, goodHeader(4) + "la") > 0);
    // Its answer shows that it has taken the first connection.
    QVERIFY(QCopChannel::send(Channel, "other"));
    QVERIFY(listener.prints("other\n"));
    QVERIFY(listener.stop());
    QVERIFY(put(peer, "te") == 2);
    // The time-out has to pass while the listener cannot see it.
    QElapsedTimer time;
    time.start();
    QVERIFY(QTest::qWaitFor([&] { return time.hasExpired(QCopChannel::ReceiveTimeoutMs + 500); },
                            WaitMs));
    QVERIFY(listener.signal(SIGCONT));
    QVERIFY(listener.prints("other\nlate\n"));
}

void TestQCopPeers::lackOfDescriptorsOnlyDelays()
{
    const QCopChannel channel(Channel);
    QSignalSpy spy(&channel, &QCopChannel::received);
    const Descriptor peer = connectedPeer();
    QVERIFY(put(peer, goodHeader(4) + "late") > 0);

    lacksDescriptors = true;
    // While there are none, this process must not try again and again.
    const std::clock_t before = std::clock();
    QEventLoop loop;
    QTimer::singleShot(500, &loop, &QEventLoop::quit); // waits: the time that is measured
    loop.exec();
    const double busy = double(std::clock() - before) / CLOCKS_PER_SEC;
    lacksDescriptors = false;
    QCOMPARE(spy.size(), 0);
    QVERIFY2(busy < 0.2, QByteArray::number(busy).constData());

    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, WaitMs);
    QCOMPARE(spy.first().first().toByteArray(), QByteArray("late"));
}

void TestQCopPeers::leavesNoDescriptorOpen()
{
    const auto first = descriptorCount();
    {
        const QCopChannel channel(Channel);
        QSignalSpy spy(&channel, &QCopChannel::received);
        const auto before = descriptorCount();
        for (int i = 1; i <= 1000; ++i) {
            QVERIFY(QCopChannel::isRegistered(Channel));
            QVERIFY(QCopChannel::send(Channel, "message"));
            if (i % 20 == 0)
                QTRY_COMPARE_WITH_TIMEOUT(spy.size(), i, WaitMs);
        }
        QTRY_COMPARE_WITH_TIMEOUT(descriptorCount(), before, WaitMs);
    }
    for (int i = 0; i < 100; ++i) {
        QVERIFY(QCopChannel::reserve(Channel, 0));
        QVERIFY(QCopChannel(Channel).isOwner());
        QVERIFY(!QCopChannel::send(Channel, "nobody"));
    }
    QCOMPARE(descriptorCount(), first);
}

void TestQCopPeers::childInheritsNoDescriptor()
{
    const Descriptor inherited(::socket(AF_UNIX, SOCK_STREAM, 0));
    const QByteArray before = channelFilesOfChild();
    QVERIFY(before.contains("socket:"));
    const auto own = descriptorCount();
    QVERIFY(QCopChannel::reserve("LyraPlayer", 0));
    const QCopChannel channel(Channel);
    const Descriptor half = connectedPeer();
    // Lock, lock and server, both ends of the connection.
    QTRY_COMPARE_WITH_TIMEOUT(descriptorCount(), own + 5, WaitMs);
    QCOMPARE(channelFilesOfChild(), before);
    QCopChannel::releaseReservation("LyraPlayer");
}

QTEST_GUILESS_MAIN(TestQCopPeers)
#include "tst_qcoppeers.moc"
