#include "platform/keyline.h"
#include "platform/keymap.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tools/quarn_keys/keyfile.h"

#include <QDir>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

KeyAnswer given(int code, int key, quint32 scan = 0)
{
    return {code, {key, scan, 0}};
}

KeyMap mapFrom(const QByteArray& content)
{
    KeyMap map;
    for (const QByteArray& line : content.split('\n')) {
        if (!map.add(KeyLine::of(QString::fromUtf8(line))))
            [line] { QFAIL(line.constData()); }();
    }
    return map;
}

/// While it lives, writing beyond so many bytes of a file fails, as on a full disk.
class LargestFile
{
public:
    explicit LargestFile(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~LargestFile()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    LargestFile(const LargestFile&) = delete;
    LargestFile& operator=(const LargestFile&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

unsigned modeOf(const QString& path)
{
    struct stat found = {};
    return ::stat(path.toUtf8().constData(), &found) == 0 ? found.st_mode & 07777u : 0;
}

} // namespace

/// The file of keys as it becomes when keys are given.
class tst_KeyFile : public QObject
{
    Q_OBJECT

private slots:
    void keyGetsItsCode_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("scan");
        QTest::addColumn<QByteArray>("line");
        const auto row = [](int code, int key, int scan, const char* line) {
            QTest::newRow(line) << code << key << scan << QByteArray(line);
        };
        row(PhoneKey::SoftLeft, Qt::Key_F5, 71, "F5 = 0x1038");
        row(PhoneKey::Music, Qt::Key_VolumeUp, 123, "Volume Up = 0x1049");
        row('2', Qt::Key_A, 38, "A = 2");
        row('#', Qt::Key_Q, 24, "Q = #");
        row(PhoneKey::Hide, Qt::Key_Equal, 21, "= = 0x1031");
        // These names are a comment, and what no sequence of keys is.
        row(PhoneKey::Hide, Qt::Key_NumberSign, 51, "0x23 = 0x1031");
        row(PhoneKey::Hide, Qt::Key_Semicolon, 47, "0x3b = 0x1031");
        row(PhoneKey::SoftRight, Qt::Key_unknown, 151, "scan:151 = 0x103a");
        row(PhoneKey::SoftRight, 0, 152, "scan:152 = 0x103a");
    }

    void keyGetsItsCode()
    {
        QFETCH(int, code);
        QFETCH(int, key);
        QFETCH(int, scan);
        QFETCH(QByteArray, line);
        const KeyAnswer answer = given(code, key, quint32(scan));
        const QByteArray content = keyFileWith("Keypad = 1\n", {answer});
        QVERIFY2(content.endsWith('\n' + line + '\n'), content.constData());
        QCOMPARE(mapFrom(content).code(answer.key.press()), code);
        QVERIFY(mapFrom(content).hasKeypad());
    }

    void keyThatHasItsCodeGetsNoLine()
    {
        const QByteArray old = "Keypad = 0\nF5 = 0x1012\n";
        QCOMPARE(keyFileWith(old, {given(PhoneKey::Up, Qt::Key_Up), given('1', Qt::Key_1),
                                   given(PhoneKey::SoftRight, Qt::Key_Escape)}),
                 old);
    }

    void otherLinesStayByteByByte()
    {
        const QByteArray old = "; mine\r\n\nKeypad = 1\n  F7 =0x1049\nnonsense \xff\nF8 = none";
        const QByteArray content = keyFileWith(old, {given(PhoneKey::SoftLeft, Qt::Key_F5)});
        QVERIFY2(content.startsWith(old + '\n'), content.constData());
        QVERIFY(content.endsWith("\nF5 = 0x1038\n"));
    }

    void linesOfTheKeyAndOfTheCodeAreReplaced()
    {
        const QByteArray old = "F5 = 0x1030\nF6 = 0x1038\nscan:71 = 0x1031\nF7 = 0x1049\n";
        const QByteArray content = keyFileWith(old, {given(PhoneKey::SoftLeft, Qt::Key_F5, 71)});
        QVERIFY2(content.startsWith("F7 = 0x1049\n"), content.constData());
        QCOMPARE(content.count(" = "), 2);
        QCOMPARE(mapFrom(content).code(given(0, Qt::Key_F5, 71).key.press()),
                 int(PhoneKey::SoftLeft));
        QCOMPARE(mapFrom(content).code(given(0, Qt::Key_F6, 72).key.press()), 0x1035);
    }

    void writingAgainChangesNothing()
    {
        const QList<KeyAnswer> answers{given(PhoneKey::SoftLeft, Qt::Key_F5),
                                       given(PhoneKey::SoftRight, Qt::Key_F6)};
        const QByteArray first = keyFileWith(QByteArray(), answers);
        QCOMPARE(keyFileWith(first, answers), first);
        QVERIFY(first.startsWith(';'));
    }

    void twoKeysThatAreOneToTheToolkitAreToldByTheKeyboard()
    {
        const QList<KeyAnswer> answers{given(PhoneKey::SoftLeft, Qt::Key_Return, 36),
                                       given(PhoneKey::Return, Qt::Key_Return, 104)};
        const KeyMap map = mapFrom(keyFileWith(QByteArray(), answers));
        for (const KeyAnswer& answer : answers)
            QCOMPARE(map.code(answer.key.press()), answer.code);
    }

    void keyGivenToAnotherCodeLosesItsOwn()
    {
        const KeyMap map = mapFrom(keyFileWith(
            QByteArray(), {given(PhoneKey::Up, Qt::Key_Down), given(PhoneKey::Down, Qt::Key_Up)}));
        QCOMPARE(map.code(given(0, Qt::Key_Down).key.press()), int(PhoneKey::Up));
        QCOMPARE(map.code(given(0, Qt::Key_Up).key.press()), int(PhoneKey::Down));
    }

    void fileIsMadeOrReplacedWithItsPermissions()
    {
        const ScratchFolder folder;
        const QString path = folder.path("keymap.cfg");
        const QList<KeyAnswer> answers{given(PhoneKey::SoftLeft, Qt::Key_F5)};
        QCOMPARE(writeKeyFile(path, answers), 0);
        QVERIFY(folder.read("keymap.cfg").endsWith("F5 = 0x1038\n"));
        QVERIFY((modeOf(path) & 0600) == 0600);
        folder.write("keymap.cfg", "Keypad = 1\n");
        folder.setMode("keymap.cfg", 0640);
        QCOMPARE(writeKeyFile(path, answers), 0);
        QVERIFY(folder.read("keymap.cfg").startsWith("Keypad = 1\n"));
        QVERIFY(folder.read("keymap.cfg").endsWith("F5 = 0x1038\n"));
        QCOMPARE(modeOf(path), 0640u);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList("keymap.cfg"));
    }

    void linkStaysALink()
    {
        const ScratchFolder folder;
        folder.write("own/keys", "Keypad = 1\n");
        folder.makeLink("keymap.cfg", "own/keys");
        QCOMPARE(writeKeyFile(folder.path("keymap.cfg"), {given('2', Qt::Key_A)}), 0);
        QVERIFY(folder.read("own/keys").endsWith("A = 2\n"));
        QVERIFY(QFileInfo(folder.path("keymap.cfg")).isSymLink());
    }

    void whatCannotBeReadOrReplacedStays_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("error");
        QTest::newRow("locked file") << "locked" << EACCES;
        QTest::newRow("folder") << "folder" << EISDIR;
        QTest::newRow("fifo") << "fifo" << ENXIO;
        QTest::newRow("too long to be read whole") << "long" << EFBIG;
        QTest::newRow("no folder") << "missing/keymap.cfg" << ENOENT;
        QTest::newRow("folder that is read-only") << "closed/keymap.cfg" << EACCES;
    }

    void whatCannotBeReadOrReplacedStays()
    {
        QFETCH(QString, name);
        const ScratchFolder folder;
        folder.write("locked", "F1 = 1\n");
        folder.setMode("locked", 0);
        folder.makeFolder("folder");
        folder.makeFifo("fifo");
        const QByteArray content = QByteArray("; x\n").repeated(int(KeyMap::MaxFileBytes) / 4 + 1);
        folder.write("long", content);
        folder.write("closed/keymap.cfg", "F1 = 2\n");
        folder.setMode("closed", 0500);
        QTEST(writeKeyFile(folder.path(name), {given('2', Qt::Key_A)}), "error");
        QCOMPARE(folder.read("long"), content);
        QCOMPARE(folder.read("closed/keymap.cfg"), QByteArray("F1 = 2\n"));
        QCOMPARE(
            QDir(folder.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
            QStringList({"closed", "fifo", "folder", "locked", "long"}));
    }

    void diskWithoutRoomKeepsTheOldFile()
    {
        const ScratchFolder folder;
        folder.write("keymap.cfg", "Keypad = 1\n");
        int error = 0;
        {
            const LargestFile limit(4);
            error = writeKeyFile(folder.path("keymap.cfg"), {given('2', Qt::Key_A)});
        }
        QCOMPARE(error, EFBIG);
        QCOMPARE(folder.read("keymap.cfg"), QByteArray("Keypad = 1\n"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("keymap.cfg"));
    }
};

QUARN_TEST_MAIN(tst_KeyFile)
#include "tst_keyfile.moc"
