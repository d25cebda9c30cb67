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

    void fileSaysWhetherThereIsAKeypad_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<bool>("hasKeypad");
        QTest::newRow("nothing") << QByteArray() << false;
        QTest::newRow("yes") << QByteArray("Keypad = 1") << true;
        QTest::newRow("no") << QByteArray("Keypad = 0") << false;
        QTest::newRow("narrow and small") << QByteArray("keypad=1") << true;
        QTest::newRow("the last counts") << QByteArray("Keypad = 1\nKeypad = 0") << false;
        QTest::newRow("comment") << QByteArray("; Keypad = 1") << false;
    }

    void fileSaysWhetherThereIsAKeypad()
    {
        QFETCH(QByteArray, lines);
        const DebugLines named;
        KeyMap map;
        folder_.write("keymap.cfg", lines);
        map.load(folder_.path("keymap.cfg"));
        QTEST(map.hasKeypad(), "hasKeypad");
        QCOMPARE(named.all(), QStringList());
    }

    void keypadWithNonsenseIsNamedAndNone_data()
    {
        QTest::addColumn<QByteArray>("value");
        for (const char* value : {"", "2", "-1", "yes", "1 1", "01", "0x1", "none", "\xff"})
            QTest::newRow(value) << QByteArray(value);
    }

    void keypadWithNonsenseIsNamedAndNone()
    {
        QFETCH(QByteArray, value);
        const DebugLines named;
        KeyMap map;
        folder_.write("keymap.cfg", "Keypad = 1\nKeypad = " + value + "\nF6 = 1\n");
        map.load(folder_.path("keymap.cfg"));
        QVERIFY(!map.hasKeypad());
        QCOMPARE(codeOf(map, Qt::Key_F6), int('1'));
        QCOMPARE(named.all().size(), 1);
        QVERIFY2(named.mentions("keymap.cfg:2"), qPrintable(named.all().first()));

        qputenv("KEYPAD_OF_TEST", value);
        map.loadKeypadVariable("KEYPAD_OF_TEST");
        qunsetenv("KEYPAD_OF_TEST");
        QVERIFY(!map.hasKeypad());
        QCOMPARE(named.all().size(), 2);
        QVERIFY2(named.all().last().startsWith("KEYPAD_OF_TEST: "), qPrintable(named.all().last()));
    }

    void environmentSaysThatThereIsAKeypadAndNeverThatThereIsNone()
    {
        const DebugLines named;
        KeyMap map;
        map.loadKeypadVariable("KEYPAD_OF_TEST");
        QVERIFY(!map.hasKeypad());
        qputenv("KEYPAD_OF_TEST", "1");
        map.loadKeypadVariable("KEYPAD_OF_TEST");
        QVERIFY(map.hasKeypad());
        qputenv("KEYPAD_OF_TEST", "0");
        map.loadKeypadVariable("KEYPAD_OF_TEST");
        QVERIFY(map.hasKeypad());
        qunsetenv("KEYPAD_OF_TEST");
        QCOMPARE(named.all(), QStringList());
    }

    void keypadIsFoundOutFromItsKeys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<quint32>("symbol");
        QTest::addColumn<bool>("tells");
        const auto row = [](const char* name, int key, quint32 symbol, bool tells) {
            QTest::newRow(name) << key << symbol << tells;
        };
        row("select", Qt::Key_Select, 0, true);
        row("call", Qt::Key_Call, 0, true);
        row("last soft key", Qt::Key_Context4, 0, true);
        row("a keypad's own 0", Qt::Key_unknown, 0x10081200, true);
        row("a keypad's own #", 0, 0x1008120b, true);
        row("symbol before them", Qt::Key_unknown, 0x100811ff, false);
        row("symbol behind them", Qt::Key_unknown, 0x1008120c, false);
        // Keyboards have these too.
        row("2", Qt::Key_2, 0, false);
        row("menu", Qt::Key_Menu, 0, false);
        row("return", Qt::Key_Return, 0, false);
        row("F26", Qt::Key_F26, 0, false);
        row("media play", Qt::Key_MediaPlay, 0, false);
    }

    void keypadIsFoundOutFromItsKeys()
    {
        QFETCH(int, key);
        QFETCH(quint32, symbol);
        KeyMap map;
        map.notice(QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier, 0, symbol, 0));
        QTEST(map.hasKeypad(), "tells");
    }

    void letterTellsOfAKeyboardUnlessAKeypadIsSet()
    {
        const QKeyEvent select(QEvent::KeyPress, Qt::Key_Select, Qt::NoModifier);
        const QKeyEvent letter(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, "x");
        const QKeyEvent digit(QEvent::KeyPress, Qt::Key_5, Qt::NoModifier, "5");
        KeyMap map;
        map.notice(select);
        map.notice(digit);
        QVERIFY(map.hasKeypad());
        map.notice(letter);
        QVERIFY(!map.hasKeypad());
        folder_.write("keymap.cfg", "Keypad = 1\n");
        map.load(folder_.path("keymap.cfg"));
        map.notice(letter);
        QVERIFY(map.hasKeypad());
    }

    void keypadsOwnKeysGiveTheirCharacters()
    {
        const KeyMap map;
        QString codes;
        for (quint32 symbol = 0x10081200; symbol <= 0x1008120b; ++symbol)
            codes += QChar(map.code(
                QKeyEvent(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, 0, symbol, 0)));
        QCOMPARE(codes, QStringLiteral("0123456789*#"));
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
