#include "platform/keymap.h"
#include "tests/support/debuglines.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

namespace
{

int codeOf(const KeyMap& map, int key, quint32 scanCode = 0)
{
    return map.code(QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier, scanCode, 0, 0));
}

} // namespace

class tst_KeyMap : public QObject
{
    Q_OBJECT

private slots:
    void defaultsAreThePhonesCodes_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("code");
        const auto row = [](const char* name, int key, int code) {
            QTest::newRow(name) << key << code;
        };
        row("left", Qt::Key_Left, 0x1012);
        row("up", Qt::Key_Up, 0x1013);
        row("right", Qt::Key_Right, 0x1014);
        row("down", Qt::Key_Down, 0x1015);
        row("page up", Qt::Key_PageUp, 0x1016);
        row("page down", Qt::Key_PageDown, 0x1017);
        row("return", Qt::Key_Return, 0x1004);
        row("enter", Qt::Key_Enter, 0x1005);
        row("F1", Qt::Key_F1, 0x1030);
        row("F2", Qt::Key_F2, 0x1031);
        row("F3", Qt::Key_F3, 0x1032);
        row("F9", Qt::Key_F9, 0x1038);
        row("F11", Qt::Key_F11, 0x103A);
        row("F26", Qt::Key_F26, 0x1049);
        row("F28", Qt::Key_F28, 0x104B);
        row("F29", Qt::Key_F29, 0x104C);
        row("menu", Qt::Key_Menu, 0x1038);
        row("escape", Qt::Key_Escape, 0x103A);
        row("backspace", Qt::Key_Backspace, 0x1032);
        row("media play", Qt::Key_MediaPlay, 0x1049);
        row("media play or pause", Qt::Key_MediaTogglePlayPause, 0x1049);
        row("media previous", Qt::Key_MediaPrevious, 0x104B);
        row("media next", Qt::Key_MediaNext, 0x104C);
        row("0", Qt::Key_0, '0');
        row("9", Qt::Key_9, '9');
        row("*", Qt::Key_Asterisk, '*');
        row("#", Qt::Key_NumberSign, '#');
        row("A", Qt::Key_A, 'A');
        row("unknown", Qt::Key_unknown, 0);
        row("none", 0, 0);
    }

    void defaultsAreThePhonesCodes()
    {
        QFETCH(int, key);
        QTEST(codeOf(KeyMap(), key), "code");
    }

    void arrowsAndSelectKeysAreToldApart()
    {
        for (const int code : {0x1012, 0x1013, 0x1014, 0x1015})
            QVERIFY(PhoneKey::isArrow(code));
        for (const int code : {0x1011, 0x1016, int('5')})
            QVERIFY(!PhoneKey::isArrow(code));
        QVERIFY(PhoneKey::isSelect(0x1004) && PhoneKey::isSelect(0x1005));
        QVERIFY(!PhoneKey::isSelect(0x1038));
    }

    void fileOverrides_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("code");
        const auto row = [](const char* line, int key, int code) {
            QTest::newRow(line) << QByteArray(line) << key << code;
        };
        row("F5 = 0x1031", Qt::Key_F5, 0x1031);
        row("F1=0x1038", Qt::Key_F1, 0x1038);
        row("  Media Play\t=  0x1030  ", Qt::Key_MediaPlay, 0x1030);
        row("Home = 0x1016", Qt::Key_Home, 0x1016);
        row("A = 2", Qt::Key_A, '2');
        row("B = c", Qt::Key_B, 'C');
        row("Q = *", Qt::Key_Q, '*');
        row("Escape = none", Qt::Key_Escape, 0);
        row("Esc = 0x1032", Qt::Key_Escape, 0x1032);
        row("0x01000034 = 0x1031", Qt::Key_F5, 0x1031);
        row("= = 0x1031", Qt::Key_Equal, 0x1031);
        row("#=0x1031", Qt::Key_NumberSign, 0x1031);
        row("F5 = 4145", Qt::Key_F5, 4145);
        row("F5 = 1\nF5 = 2", Qt::Key_F5, '2');
        row("F5 = 0x1031\r", Qt::Key_F5, 0x1031);
        row("; F1 = 1", Qt::Key_F1, 0x1030);
        row("# F1 = 1", Qt::Key_F1, 0x1030);
    }

    void fileOverrides()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, key);
        const DebugLines lines;
        KeyMap map;
        folder_.write("keymap.cfg", line + "\n\n  \n;\n#\n");
        map.load(folder_.path("keymap.cfg"));
        QTEST(codeOf(map, key), "code");
        QCOMPARE(lines.all(), QStringList());
    }

    void scanCodeWinsOverTheKey()
    {
        KeyMap map;
        folder_.write("keymap.cfg", "scan:66 = 0x1038\nscan:0x43 = none\nF1 = 5\n");
        map.load(folder_.path("keymap.cfg"));
        QCOMPARE(codeOf(map, Qt::Key_F1, 66), 0x1038);
        QCOMPARE(codeOf(map, Qt::Key_A, 0x43), 0);
        QCOMPARE(codeOf(map, Qt::Key_F1, 65), int('5'));
        QCOMPARE(codeOf(map, Qt::Key_A, 65), int('A'));
    }

    void badLineIsNamedAndSkipped_data()
    {
        QTest::addColumn<QByteArray>("line");
        for (const char* line :
             {"F5", "= 0x1031", "F5 =", "F5 = 0x", "F5 = 0x1031 too", "F5 = -3", "F5 = 99999999999",
              "Nonsense = 0x1031", "Ctrl+F5 = 0x1031", "F5, F6 = 0x1031", "scan: = 0x1031",
              "scan:x = 0x1031", "scan:-1 = 0x1031", "F5 = two", "0xzz = 0x1031", "[Keys]"})
            QTest::newRow(line) << QByteArray(line);
    }

    void badLineIsNamedAndSkipped()
    {
        QFETCH(QByteArray, line);
        const DebugLines lines;
        KeyMap map;
        folder_.write("keymap.cfg", "F6 = 1\n" + line + "\nF7 = 2\n");
        map.load(folder_.path("keymap.cfg"));
        QCOMPARE(codeOf(map, Qt::Key_F5), 0x1034);
        QCOMPARE(codeOf(map, Qt::Key_F6), int('1'));
        QCOMPARE(codeOf(map, Qt::Key_F7), int('2'));
        QCOMPARE(lines.all().size(), 1);
        QVERIFY2(lines.mentions("keymap.cfg:2"), qPrintable(lines.all().first()));
        QVERIFY(lines.mentions(QString::fromUtf8(line)));
    }

    void whatIsNoFileChangesNothing_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"missing", "folder", "fifo", "locked", "empty"})
            QTest::newRow(name) << name;
    }

    void whatIsNoFileChangesNothing()
    {
        QFETCH(QString, name);
        const ScratchFolder folder;
        folder.makeFolder("folder");
        folder.makeFifo("fifo");
        folder.write("empty");
        folder.write("locked", "F1 = 1\n");
        folder.setMode("locked", 0);
        const DebugLines lines;
        KeyMap map;
        map.load(folder.path(name));
        QCOMPARE(codeOf(map, Qt::Key_F1), 0x1030);
        QCOMPARE(lines.all(), QStringList());
    }

    void hugeFileIsReadInPart()
    {
        const DebugLines lines;
        KeyMap map;
        QByteArray content("F5 = 1\n");
        content += QByteArray("; filling\n").repeated(int(KeyMap::MaxFileBytes) / 10);
        folder_.write("keymap.cfg", content + "F6 = 2\n");
        map.load(folder_.path("keymap.cfg"));
        QCOMPARE(codeOf(map, Qt::Key_F5), int('1'));
        QCOMPARE(codeOf(map, Qt::Key_F6), 0x1035);
    }

    void binaryFileKeepsTheDefaults()
    {
        const DebugLines lines;
        KeyMap map;
        folder_.write("keymap.cfg", QByteArray(1000000, '\xff'));
        map.load(folder_.path("keymap.cfg"));
        QCOMPARE(codeOf(map, Qt::Key_F1), 0x1030);
        QCOMPARE(lines.all().size(), 1);
        QVERIFY(lines.all().first().size() < 500);
    }

private:
    ScratchFolder folder_;
};

QUARN_TEST_MAIN(tst_KeyMap)
#include "tst_keymap.moc"
