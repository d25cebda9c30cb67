#include "platform/keymap.h"
#include "plugins/desktop/desktopwindow.h"
#include "plugins/desktop/handover.h"
#include "tests/support/keys.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFile>

#include <limits>

/// Handing files to the desktop; scripts stand in for its tools.
class tst_Desktop : public QObject
{
    Q_OBJECT

private slots:
    void openerGetsTheFile_data();
    void openerGetsTheFile();
    void failureIsTold_data();
    void failureIsTold();
    void successThatNobodyCanHaveHadIsTold_data();
    void successThatNobodyCanHaveHadIsTold();
    void programThatFailsAfterAWhileHasOpenedTheFile();
    void missingFileIsNotHandedOver();
    void windowSaysWhatTheMatterIs_data();
    void windowSaysWhatTheMatterIs();
    void windowIsEndedByItsKey();
};

namespace
{

/// Tools of a desktop that do what scripts say.
DesktopTools toolsIn(const ScratchFolder& folder, const QByteArray& opener,
                     const QByteArray& types = "exit 1")
{
    DesktopTools tools;
    folder.write("open", "#!/bin/sh\n" + opener + '\n');
    folder.setMode("open", 0755);
    folder.write("types", "#!/bin/sh\n" + types + '\n');
    folder.setMode("types", 0755);
    tools.opener = QFile::encodeName(folder.path("open"));
    tools.types = QFile::encodeName(folder.path("types"));
    // However slow the machine is.
    tools.longestFailure = std::numeric_limits<int>::max();
    tools.longestNothing = std::numeric_limits<int>::max();
    return tools;
}

} // namespace

void tst_Desktop::openerGetsTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "a.pdf";
    QTest::newRow("blanks and quotes") << " a 'b\" $c.pdf";
    QTest::newRow("like an option") << "--help";
    QTest::newRow("no ASCII") << QString::fromUtf8("\u00fcber.pdf");
}

void tst_Desktop::openerGetsTheFile()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write(name, "content");
    const DesktopTools tools = toolsIn(folder, "printf '%s' \"$#:$1\" > \"${0%/*}/noted\"");
    QCOMPARE(handOver(folder.path(name), tools), Handover::Done);
    QCOMPARE(QString::fromUtf8(folder.read("noted")), "1:" + folder.path(name));
}

void tst_Desktop::failureIsTold_data()
{
    QTest::addColumn<QByteArray>("opener");
    QTest::addColumn<QByteArray>("types");
    QTest::addColumn<Handover>("outcome");
    const QByteArray known = "test $2 = filetype && echo a/b && exit\n"
                             "test \"$2 $3\" = 'default a/b' && echo viewer.desktop";
    QTest::newRow("nobody knows the kind")
        << QByteArray("exit 3") << QByteArray("exit 1") << Handover::NoProgram;
    QTest::newRow("nobody opens the kind")
        << QByteArray("exit 4") << QByteArray("test $2 = filetype && echo a/b")
        << Handover::NoProgram;
    QTest::newRow("somebody should have") << QByteArray("exit 4") << known << Handover::Failed;
    QTest::newRow("ended by a signal") << QByteArray("kill -KILL $$") << known << Handover::Failed;
    QTest::newRow("long answers") << QByteArray("exit 3")
                                  << QByteArray("head -c 1000000 /dev/zero | tr '\\0' x")
                                  << Handover::Failed;
}

void tst_Desktop::failureIsTold()
{
    QFETCH(QByteArray, opener);
    QFETCH(QByteArray, types);
    const ScratchFolder folder;
    folder.write("a.pdf", "content");
    QTEST(handOver(folder.path("a.pdf"), toolsIn(folder, opener, types)), "outcome");
    DesktopTools missing = toolsIn(folder, "exit 0");
    missing.opener = QFile::encodeName(folder.path("no such program"));
    QCOMPARE(handOver(folder.path("a.pdf"), missing), Handover::NoOpener);
}

void tst_Desktop::successThatNobodyCanHaveHadIsTold_data()
{
    QTest::addColumn<QByteArray>("defaults"); // kinds that have a program
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<Handover>("outcome");
    QTest::newRow("nobody") << QByteArray("none") << QByteArray() << Handover::NoProgram;
    QTest::newRow("a program") << QByteArray("a/b") << QByteArray() << Handover::Done;
    QTest::newRow("a browser") << QByteArray("x-scheme-handler/http") << QByteArray()
                               << Handover::Done;
    QTest::newRow("a browser of the user")
        << QByteArray("none") << QByteArray("BROWSER") << Handover::Done;
    QTest::newRow("a desktop that may have asked")
        << QByteArray("none") << QByteArray("XDG_CURRENT_DESKTOP") << Handover::Done;
}

void tst_Desktop::successThatNobodyCanHaveHadIsTold()
{
    QFETCH(QByteArray, defaults);
    QFETCH(QByteArray, variable);
    const ScratchFolder folder;
    folder.write("a.pdf", "content");
    const QByteArray types = "test $2 = filetype && echo a/b && exit\n"
                             "test \"$3\" = '" +
                             defaults + "' && echo viewer.desktop";
    DesktopTools tools = toolsIn(folder, "exit 0", types);
    for (const char* each : {"BROWSER", "XDG_CURRENT_DESKTOP"}) {
        qunsetenv(each);
        if (variable == each)
            qputenv(each, "something");
    }
    QTEST(handOver(folder.path("a.pdf"), tools), "outcome");
    tools.longestNothing = -1;
    QCOMPARE(handOver(folder.path("a.pdf"), tools), Handover::Done);
    qunsetenv("BROWSER");
    qunsetenv("XDG_CURRENT_DESKTOP");
}

void tst_Desktop::programThatFailsAfterAWhileHasOpenedTheFile()
{
    const ScratchFolder folder;
    folder.write("a.pdf", "content");
    DesktopTools tools = toolsIn(folder, "exit 1");
    tools.longestFailure = -1;
    QCOMPARE(handOver(folder.path("a.pdf"), tools), Handover::Done);
}

void tst_Desktop::missingFileIsNotHandedOver()
{
    const ScratchFolder folder;
    const DesktopTools tools = toolsIn(folder, ": > \"${0%/*}/noted\"");
    QCOMPARE(handOver(folder.path("missing.pdf"), tools), Handover::NoFile);
    QCOMPARE(handOver(QString(), tools), Handover::NoFile);
    QVERIFY(!folder.exists("noted"));
}

void tst_Desktop::windowSaysWhatTheMatterIs_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<Handover>("outcome");
    QTest::addColumn<QString>("problem");
    QTest::addColumn<QString>("advice"); // a part of it
    QTest::newRow("no program") << "/x/a.pdf" << Handover::NoProgram << "No program for .pdf"
                                << "Open with";
    QTest::newRow("no opener") << "/x/a.pdf" << Handover::NoOpener << "No program for .pdf"
                               << "xdg-utils";
    QTest::newRow("failed") << "/x/a.pdf" << Handover::Failed << "The program for .pdf has failed"
                            << "Open with";
    QTest::newRow("no extension") << "/x.y/a" << Handover::NoProgram << "No program for this file"
                                  << "Open with";
    QTest::newRow("long extension")
        << "/x/a." + QString(100, 'b') << Handover::NoProgram
        << "No program for ." + QString(16, 'b') + QChar(0x2026) << "Open with";
    QTest::newRow("no file") << "/x/a.pdf" << Handover::NoFile << "There is no such file."
                             << "";
    QTest::newRow("nothing") << "" << Handover::NoFile << "No file was given."
                             << "";
}

void tst_Desktop::windowSaysWhatTheMatterIs()
{
    QFETCH(QString, file);
    QFETCH(Handover, outcome);
    QFETCH(QString, advice);
    const DesktopWindow window(file, outcome);
    QTEST(window.problem(), "problem");
    QVERIFY2(window.advice().contains(advice), qPrintable(window.advice()));
    QVERIFY(!window.mainWidgetTitle().isEmpty());
}

void tst_Desktop::windowIsEndedByItsKey()
{
    DesktopWindow window("/x/a.pdf", Handover::NoProgram);
    window.show();
    QTRY_COMPARE(keyReceiver(), &window);
    pressKey(PhoneKey::SoftRight);
    QVERIFY(ZApplication::isQuitting());
}

QUARN_TEST_MAIN(tst_Desktop)
#include "tst_desktop.moc"
