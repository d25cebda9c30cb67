#include "platform/regularfile.h"
#include "platform/socketaddress.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr qsizetype Plenty = 1024 * 1024;

} // namespace

class TestRegularFile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void readsWholeFile();
    void dropsWhatLiesBeyond_data();
    void dropsWhatLiesBeyond();
    void emptyFileIsEmptyNotMissing();
    void followsLinkToFile();
    void readsFileOfUnknownSize();
    void refusesWhatIsNoRegularFile_data();
    void refusesWhatIsNoRegularFile();
    void refusesNameWithZeroCharacter();
    void leavesNoDescriptorOpen();

private:
    QString pathOf(const QString& name) const { return folder_.filePath(name); }
    QString makeFile(const QString& name, const QByteArray& bytes) const;
    QString makeSocket() const;

    QTemporaryDir folder_;
};

QString TestRegularFile::makeFile(const QString& name, const QByteArray& bytes) const
{
    QFile file(pathOf(name));
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    return written ? file.fileName() : QString();
}

QString TestRegularFile::makeSocket() const
{
    const QString path = pathOf("socket");
    const SocketAddress address(QFile::encodeName(path));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool bound = ::bind(socket, address.get(), address.size()) == 0;
    ::close(socket);
    return bound ? path : QString();
}

void TestRegularFile::initTestCase()
{
    QVERIFY(folder_.isValid());
}

void TestRegularFile::readsWholeFile()
{
    QByteArray bytes(300'000, 'x');
    bytes[0] = '\0';
    bytes[299'999] = '\n';
    const QString path = makeFile("whole", bytes);
    QVERIFY(readRegularFile(path, Plenty) == bytes);
    QVERIFY(readRegularFile(path, std::numeric_limits<qsizetype>::max()) == bytes);
}

void TestRegularFile::dropsWhatLiesBeyond_data()
{
    QTest::addColumn<qsizetype>("maxBytes");
    QTest::addColumn<qsizetype>("expected");
    QTest::newRow("one less") << qsizetype(199'999) << qsizetype(199'999);
    QTest::newRow("just all") << qsizetype(200'000) << qsizetype(200'000);
    QTest::newRow("one more") << qsizetype(200'001) << qsizetype(200'000);
    QTest::newRow("a block") << qsizetype(65'536) << qsizetype(65'536);
    QTest::newRow("one") << qsizetype(1) << qsizetype(1);
    QTest::newRow("none") << qsizetype(0) << qsizetype(0);
    QTest::newRow("less than none") << qsizetype(-1) << qsizetype(0);
}

void TestRegularFile::dropsWhatLiesBeyond()
{
    QFETCH(qsizetype, maxBytes);
    QFETCH(qsizetype, expected);
    QByteArray bytes;
    while (bytes.size() < 200'000)
        bytes.append(static_cast<char>(bytes.size() % 251));
    const std::optional<QByteArray> got = readRegularFile(makeFile("long", bytes), maxBytes);
    QVERIFY(got.has_value());
    QCOMPARE(*got, bytes.left(expected));
}

void TestRegularFile::emptyFileIsEmptyNotMissing()
{
    const std::optional<QByteArray> got = readRegularFile(makeFile("empty", {}), Plenty);
    QVERIFY(got.has_value());
    QVERIFY(got->isEmpty());
}

void TestRegularFile::followsLinkToFile()
{
    QVERIFY(QFile::link(makeFile("target", "text"), pathOf("link")));
    QVERIFY(readRegularFile(pathOf("link"), Plenty) == QByteArray("text"));
}

void TestRegularFile::readsFileOfUnknownSize()
{
    const std::optional<QByteArray> got = readRegularFile("/proc/self/status", Plenty);
    QVERIFY(got.has_value());
    QVERIFY(got->contains("Pid:"));
}

void TestRegularFile::refusesWhatIsNoRegularFile_data()
{
    const QString fifo = pathOf("fifo");
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), S_IRUSR | S_IWUSR), 0);
    QVERIFY(QFile::link(pathOf("nothing"), pathOf("dangling")));
    QVERIFY(QFile::link(pathOf("circle"), pathOf("circle")));
    QVERIFY(QFile::link("/dev/zero", pathOf("zero")));

    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << pathOf("missing");
    QTest::newRow("no name") << QString();
    QTest::newRow("folder") << folder_.path();
    QTest::newRow("FIFO without a writer") << fifo;
    QTest::newRow("socket") << makeSocket();
    QTest::newRow("endless device") << QStringLiteral("/dev/zero");
    QTest::newRow("empty device") << QStringLiteral("/dev/null");
    QTest::newRow("link to a device") << pathOf("zero");
    QTest::newRow("dangling link") << pathOf("dangling");
    QTest::newRow("link to itself") << pathOf("circle");
    QTest::newRow("below a file") << makeFile("file", "text") + "/below";
    // Opens, but a read fails for everybody.
    QTest::newRow("unreadable") << QStringLiteral("/proc/self/mem");
}

void TestRegularFile::refusesWhatIsNoRegularFile()
{
    QFETCH(QString, path);
    QVERIFY(!readRegularFile(path, Plenty).has_value());
}

void TestRegularFile::refusesNameWithZeroCharacter()
{
    const QString path = makeFile("before", "text");
    QVERIFY(readRegularFile(path, Plenty).has_value());
    QVERIFY(!readRegularFile(path + QChar::Null + "after", Plenty).has_value());
}

void TestRegularFile::leavesNoDescriptorOpen()
{
    const QDir descriptors("/proc/self/fd");
    const QString path = makeFile("often", "text");
    const auto before = descriptors.entryList().size();
    for (int i = 0; i < 100; ++i) {
        readRegularFile(path, Plenty);
        readRegularFile(folder_.path(), Plenty);
        readRegularFile("/proc/self/mem", Plenty);
    }
    QCOMPARE(descriptors.entryList().size(), before);
}

QTEST_GUILESS_MAIN(TestRegularFile)
#include "tst_regularfile.moc"
