#include "sharing/busconnection.h"
#include "tests/sharing/mockservices.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>

#include <functional>
#include <memory>

namespace
{

const QString Service = QStringLiteral("test.quarn.Service");
const QString Path = QStringLiteral("/object");
const QString Interface = QStringLiteral("test.quarn.Interface");
/// Long enough for a call that nobody waits for.
constexpr int Long = 60000;
constexpr int FloodMessages = 5000;
constexpr qint64 HandlingNanoseconds = 100000;

/// A bus that the test plays: what it answers when a client has greeted it.
const QByteArray Welcome = "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n";

/// Waits for a condition, with no pause between two looks at it.
bool soon(const std::function<bool()>& done)
{
    constexpr int Milliseconds = 30000;
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.hasExpired(Milliseconds))
            return false;
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

qsizetype connectionsLeft()
{
    return QCoreApplication::instance()->findChildren<BusConnection*>().size();
}

} // namespace

// A connection lives in the event loop, whatever the bus and the service do.
class tst_BusConnection : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        bus_ = std::make_unique<PrivateBus>();
        QVERIFY(sd_bus_request_name(service(), Service.toUtf8().constData(), 0) >= 0);
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus_->address());
    }

    void cleanup()
    {
        connection_.reset();
        QTRY_COMPARE(connectionsLeft(), 0);
        bus_.reset();
    }

    void replyComes()
    {
        connect();
        QVariantList got;
        connection_->call(Path, Interface, "Echo", {QString("a"), 5, true, QStringList{"x", "y"}},
                          Long, [&](const BusMessage& reply) { got = reply.arguments; });
        answerNextCall();
        QTRY_COMPARE(got.size(), 4);
        QCOMPARE(got.at(0).toString(), QString("a"));
        QCOMPARE(got.at(1).toInt(), 5);
        QCOMPARE(got.at(2).toBool(), true);
        QCOMPARE(got.at(3).toStringList(), (QStringList{"x", "y"}));
    }

    void serviceThatDoesNotAnswerIsAnError()
    {
        connect();
        QStringList errors;
        connection_->call(Path, Interface, "Silence", {}, 50,
                          [&](const BusMessage& reply) { errors.append(reply.errorName); });
        QTRY_COMPARE(errors.size(), 1);
        QVERIFY(!errors.first().isEmpty());
    }

    void callThatCannotBeMadeIsAnError()
    {
        connect();
        QStringList errors;
        connection_->call("no path", Interface, "Method", {}, Long,
                          [&](const BusMessage& reply) { errors.append(reply.errorName); });
        QVERIFY(errors.isEmpty());
        QTRY_COMPARE(errors.size(), 1);
    }

    void serviceThatIsNotThereIsLost()
    {
        connection_ = BusConnection::open(BusConnection::Bus::Session, "test.quarn.Nobody");
        const QSignalSpy lost(connection_.get(), &BusConnection::lost);
        QTRY_COMPARE(lost.size(), 1);
        QVERIFY(!connection_->isReady());
    }

    void signalsOfOthersAreNotTheServices()
    {
        connect();
        const MockServices::Control other = MockServices::connected(bus_->address());
        QStringList heard;
        connection_->listen(Interface, "Told", [&](const BusMessage& signal) {
            heard.append(signal.arguments.value(0).toString());
        });
        awaitRoundTrip();
        // Straight to us, past all that the bus was asked for.
        sd_bus_message* made = nullptr;
        QVERIFY(sd_bus_message_new_signal(other.get(), &made, Path.toUtf8().constData(),
                                          Interface.toUtf8().constData(), "Told") >= 0);
        const BusMessagePointer signal(made);
        QVERIFY(sd_bus_message_append_basic(made, 's', "an impostor's") >= 0);
        QVERIFY(sd_bus_message_set_destination(made, guestName_.constData()) >= 0);
        QVERIFY(sd_bus_send(other.get(), made, nullptr) >= 0);
        const QString bus = QStringLiteral("org.freedesktop.DBus");
        QVERIFY(!MockServices::ask(other.get(), {bus, "/", bus, "GetId"}).isError());
        emitTo(service(), "the service's");
        QTRY_VERIFY(!heard.isEmpty());
        QCOMPARE(heard, QStringList("the service's"));
    }

    void busThatIsNoneIsLost_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("closes") << QByteArray();
        QTest::newRow("garbage") << QByteArray("\xff\xfe garbage\r\n\r\n");
        QTest::newRow("refuses") << QByteArray("REJECTED EXTERNAL\r\n");
        QTest::newRow("garbage for a message") << Welcome + QByteArray(64, '\xff');
        QTest::newRow("a length beyond all")
            << Welcome + QByteArray("l\2\1\1\xff\xff\xff\x7f", 8) + QByteArray(8, '\x7f');
    }

    void busThatIsNoneIsLost()
    {
        QFETCH(QByteArray, answer);
        playBus(answer, true);
        const QSignalSpy lost(connection_.get(), &BusConnection::lost);
        QTRY_COMPARE(lost.size(), 1);
        QVERIFY(!connection_->isReady());
        QCoreApplication::processEvents();
        QCOMPARE(lost.size(), 1);
    }

    void busThatHangsHoldsNothingUp_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("from the first byte") << QByteArray();
        QTest::newRow("half way through the greeting") << Welcome.left(20);
        QTest::newRow("after the greeting") << Welcome;
    }

    void busThatHangsHoldsNothingUp()
    {
        QFETCH(QByteArray, answer);
        QElapsedTimer timer;
        timer.start();
        playBus(answer, false);
        const QSignalSpy lost(connection_.get(), &BusConnection::lost);
        QTRY_VERIFY(guest_ != nullptr && guest_->bytesAvailable() > 0);
        for (int turn = 0; turn < 100; ++turn)
            QCoreApplication::processEvents();
        QVERIFY(!connection_->isReady());
        QCOMPARE(lost.size(), 0);
        const QSignalSpy gone(guest_, &QLocalSocket::disconnected);
        connection_.reset();
        QTRY_COMPARE(gone.size(), 1);
    }

    void busThatHangsLaterIsLeft()
    {
        connect();
        bus_->pause();
        for (int i = 0; i < 100; ++i)
            connection_->send(Path, Interface, "Method");
        connection_.reset();
        QTRY_COMPARE(connectionsLeft(), 0);
        bus_->resume();
    }

    void busThatDiesEndsEveryCall()
    {
        connect();
        const QSignalSpy lost(connection_.get(), &BusConnection::lost);
        int errors = 0;
        for (int i = 0; i < 10; ++i) {
            connection_->call(Path, Interface, "Silence", {}, Long, [&](const BusMessage& reply) {
                QVERIFY(lost.isEmpty());
                errors += int(reply.isError());
            });
        }
        bus_->end();
        QTRY_COMPARE(lost.size(), 1);
        QCOMPARE(errors, 10);
        connection_->send(Path, Interface, "Method");
        QVERIFY(!connection_->isReady());
    }

    void floodLeavesTimeForTheRest()
    {
        connect();
        int heard = 0;
        connection_->listen(Interface, "Told", [&](const BusMessage&) {
            ++heard;
            // Slower than the bus is.
            QElapsedTimer work;
            work.start();
            while (work.nsecsElapsed() < HandlingNanoseconds)
                continue;
        });
        awaitRoundTrip();
        for (int i = 0; i < FloodMessages; ++i)
            emitTo(service(), "flood");
        QVERIFY(sd_bus_flush(service()) >= 0);
        int turns = 0;
        int most = 0;
        while (heard < FloodMessages) {
            const int before = heard;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            most = std::max(most, heard - before);
            ++turns;
        }
        QVERIFY2(most < FloodMessages / 20, qPrintable(QString::number(most)));
        QVERIFY(turns > 20);
    }

    void connectionMayBeClosedWithMessagesUnderWay_data()
    {
        QTest::addColumn<bool>("inHandler");
        QTest::newRow("by the event loop") << false;
        QTest::newRow("by what handles a message") << true;
    }

    void connectionMayBeClosedWithMessagesUnderWay()
    {
        QFETCH(bool, inHandler);
        for (int round = 0; round < 50; ++round) {
            connect();
            int heard = 0;
            connection_->listen(Interface, "Told", [&](const BusMessage&) {
                ++heard;
                if (inHandler && heard > round % 5)
                    connection_.reset();
            });
            awaitRoundTrip();
            for (int i = 0; i < 20; ++i) {
                connection_->call(Path, Interface, "Silence", {}, Long,
                                  [](const BusMessage&) { QFAIL("told after the end"); });
                emitTo(service(), "under way");
            }
            QVERIFY(sd_bus_flush(service()) >= 0);
            QVERIFY(soon([&] { return heard > round % 5; }));
            connection_.reset();
            const int then = heard;
            emitTo(service(), "too late");
            QVERIFY(soon([] { return connectionsLeft() == 0; }));
            QCOMPARE(heard, then);
            drainCalls();
        }
        QTRY_COMPARE(bus_->guests(), 0);
    }

    void lastCallArrivesWhateverIsUnderWay()
    {
        for (int round = 0; round < 50; ++round) {
            connect();
            connection_->listen(Interface, "Told", [](const BusMessage&) {});
            awaitRoundTrip();
            for (int i = 0; i < 20; ++i)
                emitTo(service(), "under way");
            QVERIFY(sd_bus_flush(service()) >= 0);
            connection_->send(Path, Interface, "Farewell");
            connection_.reset();
            QVERIFY(soon([] { return connectionsLeft() == 0; }));
            QCOMPARE(drainCalls().count("Farewell"), 1);
        }
    }

private:
    sd_bus* service() const { return bus_->control(); }

    void connect()
    {
        connection_ = BusConnection::open(BusConnection::Bus::Session, Service);
        QVERIFY(!connection_->isReady());
        QVERIFY(soon([this] { return connection_->isReady(); }));
    }

    /// Until the bus knows what was asked of it before.
    void awaitRoundTrip()
    {
        bool back = false;
        connection_->call(Path, Interface, "Echo", {}, Long,
                          [&](const BusMessage&) { back = true; });
        answerNextCall();
        QVERIFY(soon([&] { return back; }));
    }

    static void emitTo(sd_bus* bus, const char* text)
    {
        QVERIFY(sd_bus_emit_signal(bus, Path.toUtf8().constData(), Interface.toUtf8().constData(),
                                   "Told", "s", text) >= 0);
    }

    /// The next call that came to the service.
    BusMessagePointer nextCall() const
    {
        sd_bus_message* message = nullptr;
        while (sd_bus_process(service(), &message) > 0) {
            BusMessagePointer owned(message);
            if (message != nullptr && sd_bus_message_is_method_call(message, nullptr, nullptr) > 0)
                return owned;
        }
        return nullptr;
    }

    /// Sends back what the call brought.
    void answerNextCall()
    {
        BusMessagePointer call;
        QVERIFY(soon([&] { return (call = nextCall()) != nullptr; }));
        guestName_ = sd_bus_message_get_sender(call.get());
        sd_bus_message* made = nullptr;
        QVERIFY(sd_bus_message_new_method_return(call.get(), &made) >= 0);
        const BusMessagePointer reply(made);
        QVERIFY(sd_bus_message_copy(made, call.get(), 1) >= 0);
        QVERIFY(sd_bus_send(service(), made, nullptr) >= 0);
        QVERIFY(sd_bus_flush(service()) >= 0);
    }

    QStringList drainCalls() const
    {
        QStringList result;
        while (const BusMessagePointer call = nextCall())
            result.append(QString::fromUtf8(sd_bus_message_get_member(call.get())));
        return result;
    }

    /// Opens a connection to a bus that answers that to the greeting and closes, or then hangs.
    void playBus(const QByteArray& answer, bool closes)
    {
        files_ = std::make_unique<ScratchFolder>();
        played_ = std::make_unique<QLocalServer>();
        QVERIFY(played_->listen(files_->path("played")));
        guest_ = nullptr;
        QObject::connect(played_.get(), &QLocalServer::newConnection, this, [=, this] {
            guest_ = played_->nextPendingConnection();
            guest_->write(answer);
            if (closes)
                guest_->disconnectFromServer();
        });
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + files_->path("played").toUtf8());
        connection_ = BusConnection::open(BusConnection::Bus::Session, Service);
    }

    std::unique_ptr<PrivateBus> bus_;
    QByteArray guestName_; ///< by which the bus knows the connection
    std::unique_ptr<ScratchFolder> files_;
    std::unique_ptr<QLocalServer> played_;
    QLocalSocket* guest_ = nullptr;
    BusConnection::Pointer connection_;
};

QUARN_TEST_MAIN(tst_BusConnection)

#include "tst_busconnection.moc"
