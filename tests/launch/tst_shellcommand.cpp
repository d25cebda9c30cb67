#include "files/names.h"
#include "launch/shellcommand.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFile>

#include <sys/wait.h>

class tst_ShellCommand : public QObject
{
    Q_OBJECT

private slots:
    void pathIsItsUtf8BytesBetweenQuotes_data();
    void pathIsItsUtf8BytesBetweenQuotes();
    void whatStandsForNoPathIsNotRun();
    void bytesArePutInWithoutQuotes();
    void shellReceivesThePathsBytes_data();
    void shellReceivesThePathsBytes();
    void shellReadsNothingInAPathWithSafeOperations_data();
    void shellReadsNothingInAPathWithSafeOperations();
    void shellExpandsWhatIsNotEscaped_data();
    void shellExpandsWhatIsNotEscaped();
    void statusOfTheShellIsReturned();
    void shellInThePlaceOfTheSystemsGetsTheBytes();
    void commandInTheBackgroundIsNotWaitedFor();
    void commandInTheForegroundIsWaitedFor();
    void usersLocaleReachesTheShell_data();
    void usersLocaleReachesTheShell();

private:
    /// What a program started by the shell gets as its only argument for a quoted path.
    static QByteArray argumentFor(const QString& path);
};

QByteArray tst_ShellCommand::argumentFor(const QString& path)
{
    const ScratchFolder folder;
    runShell(joined(
        {"printf %s ", quotedForShell(path), " > ", quotedForShell(folder.path("argument"))}));
    return folder.read("argument");
}

void tst_ShellCommand::pathIsItsUtf8BytesBetweenQuotes_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << "/mmc/a.txt" << QByteArray("\"/mmc/a.txt\"");
    QTest::newRow("empty") << "" << QByteArray("\"\"");
    QTest::newRow("blanks") << "/my card/a b" << QByteArray("\"/my card/a b\"");
    QTest::newRow("Latin-1") << QString::fromUtf8("/ü") << QByteArray("\"/\xc3\xbc\"");
    QTest::newRow("Cyrillic") << QString::fromUtf8("/Я") << QByteArray("\"/\xd0\xaf\"");
    QTest::newRow("four bytes") << QString::fromUtf8("/😀") << QByteArray("\"/\xf0\x9f\x98\x80\"");
    QTest::newRow("special characters stay")
        << "/a\"b$c\\d`e'f" << QByteArray("\"/a\"b$c\\d`e'f\"");
    QTest::newRow("percent signs stay") << "/%1 %2 %%" << QByteArray("\"/%1 %2 %%\"");
    QTest::newRow("no UTF-8") << decodeName("/\xff\xc3") << QByteArray("\"/\xff\xc3\"");
    QTest::newRow("no UTF-8 and special characters")
        << decodeName("/a\xff\"b$c\\d`e'f") << QByteArray("\"/a\xff\\\"b\\$c\\\\d\\`e'f\"");
    QTest::newRow("byte-order mark") << QString(QChar(0xfeff)) << QByteArray("\"\xef\xbb\xbf\"");
}

void tst_ShellCommand::pathIsItsUtf8BytesBetweenQuotes()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, bytes);
    QCOMPARE(FM::ExecFormat(path), QString::fromLatin1(bytes));
    QCOMPARE(quotedForShell(path).value_or("nothing"), bytes);
    QCOMPARE(FM::ExecFormat(path).toLatin1(), bytes);
}

void tst_ShellCommand::whatStandsForNoPathIsNotRun()
{
    const ScratchFolder folder;
    const QString none = QStringLiteral("/a") + QChar(0xd800);
    QCOMPARE(FM::ExecFormat(none), QString());
    QVERIFY(!quotedForShell(none));
    QVERIFY(!joined({"touch ", quotedForShell(folder.path("made")), "; : ", quotedForShell(none)}));
    QCOMPARE(runShell(std::nullopt), -1);
}

void tst_ShellCommand::bytesArePutInWithoutQuotes()
{
    QCOMPARE(shellBytes(QString::fromUtf8("/Я b/")).value_or("nothing"),
             QByteArray("/\xd0\xaf b/"));
    QCOMPARE(shellBytes(QString()).value_or("nothing"), QByteArray());
}

void tst_ShellCommand::shellReceivesThePathsBytes_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("plain") << "/mmc/a.txt";
    QTest::newRow("blanks") << "/my  card/ a b ";
    QTest::newRow("empty") << "";
    QTest::newRow("Latin-1") << QString::fromUtf8("/mmc/Müsik/ß");
    QTest::newRow("Cyrillic") << QString::fromUtf8("/Карта/Музыка.mp3");
    QTest::newRow("Chinese") << QString::fromUtf8("/卡/音乐");
    QTest::newRow("beyond the first plane") << QString::fromUtf8("/😀");
    QTest::newRow("decomposed") << QString::fromUtf8("/u\u0308");
    QTest::newRow("shell's characters") << "/a;b&c|d>e<f(g)h*i?j#k~l!m'n[o]{p}";
    QTest::newRow("line break") << "/a\nb";
    QTest::newRow("tab") << "/a\tb";
    QTest::newRow("percent signs") << "/%1%s%%";
    QTest::newRow("leading minus") << "-rf";
    QTest::newRow("no text, with the shell's signs")
        << decodeName("/a\xff$b \"c\" $(echo d) `echo e` \\f \\\\ \\$g");
    QTest::newRow("longest path") << QString(4095, QLatin1Char('p'));
}

void tst_ShellCommand::shellReceivesThePathsBytes()
{
    QFETCH(QString, path);
    QCOMPARE(argumentFor(path), encodeName(path).value_or("nothing"));
}

void tst_ShellCommand::shellReadsNothingInAPathWithSafeOperations_data()
{
    shellReceivesThePathsBytes_data();
    for (const char* path :
         {"/a$HOME/b", "/a\\$b", "/a\"b\"c", "/a'b''c'", "'", "$(touch made)", "`touch made`",
          "\"; touch made; \"", "'; touch made; '", "\\", "a\\'b"})
        QTest::newRow(path) << path;
}

void tst_ShellCommand::shellReadsNothingInAPathWithSafeOperations()
{
    QFETCH(QString, path);
    extras.safe = true;
    const QByteArray argument = argumentFor(path);
    extras.safe = false;
    QCOMPARE(argument, encodeName(path).value_or("nothing"));
    QVERIFY(!QFile::exists("made"));
}

void tst_ShellCommand::shellExpandsWhatIsNotEscaped_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("argument");
    QTest::newRow("variable") << "/a$NO_SUCH_VARIABLE/b" << QByteArray("/a/b");
    QTest::newRow("backslash before a dollar sign") << "/a\\$b" << QByteArray("/a$b");
    QTest::newRow("two double quotes") << "/a\"b\"c" << QByteArray("/abc");
}

void tst_ShellCommand::shellExpandsWhatIsNotEscaped()
{
    QFETCH(QString, path);
    QTEST(argumentFor(path), "argument");
}

void tst_ShellCommand::statusOfTheShellIsReturned()
{
    QCOMPARE(runShell("true"), 0);
    const int status = runShell("exit 3");
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 3);
}

void tst_ShellCommand::shellInThePlaceOfTheSystemsGetsTheBytes()
{
    QByteArrayList commands;
    setShell([&commands](const QByteArray& command) {
        commands.append(command);
        return 7;
    });
    const int status = runShell(joined({"exit ", shellBytes(QStringLiteral("\u00fc"))}));
    runShell(std::nullopt);
    setShell(systemShell);
    QCOMPARE(status, 7);
    QCOMPARE(commands, QByteArrayList{"exit \xc3\xbc"});
    QCOMPARE(WEXITSTATUS(runShell("exit 3")), 3);
}

void tst_ShellCommand::commandInTheBackgroundIsNotWaitedFor()
{
    const ScratchFolder folder;
    folder.makeFifo("gate");
    // The reader behind the gate cannot end before something is written.
    runShell(joined({"cat ", quotedForShell(folder.path("gate")), " > ",
                     quotedForShell(folder.path("copy")), "&"}));
    QFile gate(folder.path("gate"));
    QVERIFY(gate.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    QCOMPARE(gate.write("through"), 7);
    gate.close();
    QTRY_COMPARE(folder.read("copy"), QByteArray("through"));
}

void tst_ShellCommand::commandInTheForegroundIsWaitedFor()
{
    const ScratchFolder folder;
    const ShellBytes file = quotedForShell(folder.path("done"));
    runShell(joined({"i=0; while [ $i -lt 2000 ]; do i=$((i+1)); done; echo $i > ", file}));
    QCOMPARE(folder.read("done"), QByteArray("2000\n"));
}

void tst_ShellCommand::usersLocaleReachesTheShell_data()
{
    QTest::addColumn<QByteArray>("users");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("none") << QByteArray() << QByteArray("none");
    QTest::newRow("empty") << QByteArray("") << QByteArray("");
    QTest::newRow("not installed") << QByteArray("yy_YY") << QByteArray("yy_YY");
}

void tst_ShellCommand::usersLocaleReachesTheShell()
{
    QFETCH(QByteArray, users);
    QFETCH(QByteArray, text);
    const ScratchFolder folder;
    const ShellBytes line =
        joined({"printf %s \"${LC_ALL-none} $LC_CTYPE\" > ", quotedForShell(folder.path("noted"))});
    const QByteArray before = qgetenv("LC_ALL");
    users.isNull() ? qunsetenv("LC_ALL") : qputenv("LC_ALL", users);
    qputenv("LC_CTYPE", "de_DE");
    keepUsersLocale();
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("LC_CTYPE", "C.UTF-8");
    runShell(line);
    QCOMPARE(folder.read("noted"), text + " de_DE");
    runShellInByteOrder(line);
    QVERIFY(folder.read("noted").startsWith("C "));
    QCOMPARE(qgetenv("LC_ALL"), QByteArray("C.UTF-8"));
    QCOMPARE(qgetenv("LC_CTYPE"), QByteArray("C.UTF-8"));
    before.isNull() ? qunsetenv("LC_ALL") : qputenv("LC_ALL", before);
    qunsetenv("LC_CTYPE");
    keepUsersLocale();
}

QUARN_TEST_MAIN(tst_ShellCommand)
#include "tst_shellcommand.moc"
