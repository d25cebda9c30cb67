#include "platform/zapplication.h"
#include "shell/util.h"
#include "tests/support/debuglines.h"
#include "tests/support/rootpowers.h"
#include "tests/support/scratchfolder.h"

#include <QTemporaryDir>
#include <QTest>

/// The application object keeps the argument vector of the first one made, so each row makes one.
class tst_Util : public QObject
{
    Q_OBJECT

private slots:
    void programFolderIsArgumentZeroUpToItsLastSlash_data();
    void programFolderIsArgumentZeroUpToItsLastSlash();
    void laterApplicationObjectsDoNotChangeTheProgramFolder();
    void withoutArgumentsTheProgramFolderIsEmpty();
    void existsForFilesAndFolders_data();
    void existsForFilesAndFolders();
};

void tst_Util::programFolderIsArgumentZeroUpToItsLastSlash_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QString>("folder");
    QTest::newRow("full path") << QByteArray("/mmc/quarn/quarn") << "/mmc/quarn/";
    QTest::newRow("relative path") << QByteArray("quarn/fm") << "quarn/";
    QTest::newRow("current folder") << QByteArray("./quarn") << "./";
    QTest::newRow("in the root") << QByteArray("/quarn") << "/";
    QTest::newRow("no slash") << QByteArray("quarn") << "";
    QTest::newRow("empty") << QByteArray("") << "";
    QTest::newRow("slash at the end") << QByteArray("/mmc/quarn/") << "/mmc/quarn/";
    QTest::newRow("double slashes") << QByteArray("/mmc//quarn") << "/mmc//";
    QTest::newRow("blanks and percent") << QByteArray("/my card/%1 %s/quarn") << "/my card/%1 %s/";
    QTest::newRow("beyond Latin-1") << QByteArray("/Карта/quarn") << QString::fromUtf8("/Карта/");
}

void tst_Util::programFolderIsArgumentZeroUpToItsLastSlash()
{
    QFETCH(QByteArray, program);
    char* arguments[] = {program.data(), nullptr};
    const ZApplication application(1, arguments, ZApplication::GuiClient);
    const DebugLines lines;
    QTEST(util().getProgramDir(), "folder");
    QFETCH(QString, folder);
    QCOMPARE(lines.all(), (QStringList{QString::fromUtf8(program), folder}));
}

void tst_Util::laterApplicationObjectsDoNotChangeTheProgramFolder()
{
    QByteArray first("/first/quarn");
    QByteArray second("/second/quarn");
    char* firstArguments[] = {first.data(), nullptr};
    char* secondArguments[] = {second.data(), nullptr};
    const ZApplication application(1, firstArguments, ZApplication::GuiClient);
    const ZApplication another(1, secondArguments, ZApplication::GuiClient);
    QCOMPARE(util().getProgramDir(), QString("/first/"));
}

void tst_Util::withoutArgumentsTheProgramFolderIsEmpty()
{
    char* arguments[] = {nullptr};
    const ZApplication application(0, arguments, ZApplication::GuiClient);
    QCOMPARE(util().getProgramDir(), QString(""));
}

void tst_Util::existsForFilesAndFolders_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("exists");
    QTest::newRow("file") << "file" << true;
    QTest::newRow("folder") << "folder" << true;
    QTest::newRow("folder with a slash") << "folder/" << true;
    QTest::newRow("double slash") << "/folder//inside" << true;
    QTest::newRow("hidden") << ".hidden" << true;
    QTest::newRow("FIFO") << "fifo" << true;
    QTest::newRow("unreadable file") << "locked" << true;
    QTest::newRow("link to a file") << "link" << true;
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("Файл 😀") << true;
    QTest::newRow("missing") << "missing" << false;
    QTest::newRow("other case") << "FILE" << false;
    QTest::newRow("link to nothing") << "dangling" << false;
    QTest::newRow("in a file") << "file/inside" << false;
    QTest::newRow("name too long for any system") << QString(100000, QLatin1Char('n')) << false;
}

void tst_Util::existsForFilesAndFolders()
{
    const ScratchFolder folder;
    for (const char* name : {"file", "folder/inside", ".hidden", "locked", "Файл 😀"})
        folder.write(QString::fromUtf8(name));
    folder.setMode("locked", 0);
    folder.makeFifo("fifo");
    folder.makeLink("link", folder.path("file"));
    folder.makeLink("dangling", folder.path("missing"));
    QFETCH(QString, name);
    QTEST(util().fExist(folder.path(name)), "exists");
    QVERIFY(!util().fExist(QString()));
}

int main(int argc, char** argv)
{
    giveUpRootPowers(argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    tst_Util object;
    return QTest::qExec(&object, argc, argv);
}

#include "tst_util.moc"
