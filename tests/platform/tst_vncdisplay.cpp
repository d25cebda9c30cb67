#include "platform/qcopchannel.h"
#include "platform/vncdisplay.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

/// Listens on a port of the loopback address.
class VncListener
{
public:
    explicit VncListener(int port = 0) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(in_port_t(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* any = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket_, any, length) == 0 && ::listen(socket_, 1) == 0 &&
            ::getsockname(socket_, any, &length) == 0)
            port_ = ntohs(address.sin_port);
    }
    ~VncListener() { ::close(socket_); }
    VncListener(const VncListener&) = delete;
    VncListener& operator=(const VncListener&) = delete;

    /// 0 if it cannot.
    int port() const { return port_; }

private:
    int socket_;
    int port_ = 0;
};

int portIn(const QByteArray& platform)
{
    return platform.mid(platform.indexOf("port=") + 5).split(':').first().toInt();
}

} // namespace

/// Programs that are shown over VNC, each on a port of its own.
class tst_VncDisplay : public QObject
{
    Q_OBJECT

private slots:
    void init() { platform_ = qgetenv("QT_QPA_PLATFORM"); }
    void cleanup() { qputenv("QT_QPA_PLATFORM", platform_); }

    void guestGetsAnotherPort_data()
    {
        QTest::addColumn<QByteArray>("own");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("behind");
        QTest::newRow("none told") << QByteArray("vnc") << QByteArray("vnc:port=") << QByteArray();
        QTest::newRow("size") << QByteArray("vnc:size=1x1") << QByteArray("vnc:size=1x1:port=")
                              << QByteArray();
        QTest::newRow("last") << QByteArray("vnc:size=1x1:port=5950")
                              << QByteArray("vnc:size=1x1:port=") << QByteArray();
        QTest::newRow("first") << QByteArray("vnc:port=5950:size=1x1") << QByteArray("vnc:port=")
                               << QByteArray(":size=1x1");
        QTest::newRow("by the command line")
            << QByteArray() << QByteArray("vnc:size=480x640:port=") << QByteArray();
    }
    void guestGetsAnotherPort()
    {
        QFETCH(QByteArray, own);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, behind);
        qputenv("QT_QPA_PLATFORM", own);
        const QByteArray platform = VncDisplay::platformForGuest();
        QVERIFY2(platform.startsWith(before) && platform.endsWith(behind), platform.constData());
        QVERIFY2(portIn(platform) > (own.contains("5950") ? 5950 : 5900), platform.constData());
    }

    void portThatIsTakenIsPassedOver()
    {
        const VncListener taken;
        QVERIFY(taken.port() > 1);
        qputenv("QT_QPA_PLATFORM", "vnc:port=" + QByteArray::number(taken.port() - 1));
        const int port = portIn(VncDisplay::platformForGuest());
        QVERIFY2(port > taken.port(), qPrintable(QString::number(port)));
    }

    void beyondTheLastPortThereIsNone()
    {
        qputenv("QT_QPA_PLATFORM", "vnc:port=65535");
        QCOMPARE(VncDisplay::platformForGuest(), QByteArray());
    }

    void hostIsToldWhereGuestsAre()
    {
        VncDisplay host;
        host.show();
        const QSignalSpy shown(&host, &VncDisplay::guestShown);
        qputenv("QT_QPA_PLATFORM", "vnc:size=1x1:port=5977");
        VncDisplay guest;
        guest.show();
        QTRY_COMPARE(shown.size(), 1);
        QCOMPARE(shown.first().first().toInt(), 5977);
        guest.show();
        QTRY_COMPARE(shown.size(), 2);
        host.show();
        for (const char* message : {"shown", "shown ", "shown x", "shown 0", "shown -1",
                                    "shown 65536", "taken 5", "shown 65535"})
            QVERIFY(QCopChannel::send("QuarnDisplay", message));
        QTRY_COMPARE(shown.size(), 3);
        QCOMPARE(shown.last().first().toInt(), 65535);
    }

private:
    QByteArray platform_;
};

QUARN_TEST_MAIN(tst_VncDisplay)
#include "tst_vncdisplay.moc"
