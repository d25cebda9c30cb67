#include "launch/commandlines.h"
#include "tests/support/testmain.h"

class tst_CommandLines : public QObject
{
    Q_OBJECT

private slots:
    void pluginOfTheFolderGetsTheOptionAndTheQuotedFile()
    {
        QCOMPARE(CommandLine::pluginOfFolder("/opt/fm/", "Viewer", "/mmc/a b.txt").toLatin1(),
                 QByteArray("/opt/fm//plugins/Viewer/Viewer -d \"/mmc/a b.txt\"&"));
    }

    void pluginOfAPathIsTakenWholeAndGetsTheQuotedFile()
    {
        QCOMPARE(CommandLine::pluginOfPath("/usr/bin/view --big -x", "/a").toLatin1(),
                 QByteArray("/usr/bin/view --big -x \"/a\"&"));
    }

    void playerIsStartedOnAFileOrOnTheList()
    {
        QCOMPARE(CommandLine::playFile("/w/", "/m/a.mp3").toLatin1(),
                 QByteArray("/w//plugins/LyraPlayer/LyraPlayer -d \"/m/a.mp3\"&"));
        QCOMPARE(CommandLine::playList("/w/").toLatin1(),
                 QByteArray("/w//plugins/LyraPlayer/LyraPlayer -d "
                            "/w//plugins/LyraPlayer/TempList.m3u &"));
        QCOMPARE(CommandLine::playlist("/w/"), QString("/w//plugins/LyraPlayer/TempList.m3u"));
    }

    void listIsReplacedByAFolderAndGrowsByFoldersAndFiles()
    {
        const QByteArray find("find \"/m/x y\" -type f -name *.mp3 -print | sort ");
        const QByteArray list("/w//plugins/LyraPlayer/TempList.m3u");
        QCOMPARE(CommandLine::listFolder("/w/", "/m/x y").toLatin1(), find + "> " + list);
        QCOMPARE(CommandLine::addFolder("/w/", "/m/x y").toLatin1(), find + ">> " + list);
        QCOMPARE(CommandLine::addFile("/w/", "/m/a.mp3").toLatin1(),
                 "echo \"/m/a.mp3\" >> " + list);
        QCOMPARE(CommandLine::addFile("/w/", QString()).toLatin1(), "echo \"\" >> " + list);
    }

    void everyPieceIsInTheFileSystemsEncoding()
    {
        const QString folder = QString::fromUtf8("/ü/");
        const QString name = QString::fromUtf8("Я");
        QCOMPARE(CommandLine::pluginOfFolder(folder, name, name).toLatin1(),
                 QByteArray("/\xc3\xbc//plugins/\xd0\xaf/\xd0\xaf -d \"\xd0\xaf\"&"));
        QCOMPARE(CommandLine::pluginOfPath(name, name).toLatin1(),
                 QByteArray("\xd0\xaf \"\xd0\xaf\"&"));
        QCOMPARE(CommandLine::addFile(folder, name).toLatin1(),
                 QByteArray("echo \"\xd0\xaf\" >> /\xc3\xbc//plugins/LyraPlayer/TempList.m3u"));
    }

    void nothingInAPieceIsEscapedOrReplaced()
    {
        QCOMPARE(CommandLine::pluginOfFolder("/%1/", "%2", "%1\"$x`y`\n%%").toLatin1(),
                 QByteArray("/%1//plugins/%2/%2 -d \"%1\"$x`y`\n%%\"&"));
        QCOMPARE(CommandLine::listFolder("/%1/", "%2").toLatin1(),
                 QByteArray("find \"%2\" -type f -name *.mp3 -print | sort > "
                            "/%1//plugins/LyraPlayer/TempList.m3u"));
    }
};

QUARN_TEST_MAIN(tst_CommandLines)
#include "tst_commandlines.moc"
