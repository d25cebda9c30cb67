#include "files/names.h"
#include "launch/commandlines.h"
#include "shell/settings.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFile>

class tst_CommandLines : public QObject
{
    Q_OBJECT

private slots:
    void pluginOfTheFolderGetsTheOptionAndTheQuotedFile()
    {
        QCOMPARE(
            CommandLine::pluginOfFolder("/opt/fm/", "Viewer", "/mmc/a b.txt").value_or("nothing"),
            QByteArray("/opt/fm//plugins/Viewer/Viewer -d \"/mmc/a b.txt\"&"));
    }

    void pluginOfAPathIsTakenWholeAndGetsTheQuotedFile()
    {
        QCOMPARE(CommandLine::pluginOfPath("/usr/bin/view --big -x", "/a").value_or("nothing"),
                 QByteArray("/usr/bin/view --big -x \"/a\"&"));
    }

    void playerIsStartedOnAFileOrOnTheList()
    {
        QCOMPARE(CommandLine::playFile("/w/", "/m/a.mp3").value_or("nothing"),
                 QByteArray("/w//plugins/LyraPlayer/LyraPlayer -d \"/m/a.mp3\"&"));
        QCOMPARE(CommandLine::playList("/w/").value_or("nothing"),
                 QByteArray("/w//plugins/LyraPlayer/LyraPlayer -d "
                            "/w//plugins/LyraPlayer/TempList.m3u &"));
        QCOMPARE(CommandLine::playlist("/w/"), QString("/w//plugins/LyraPlayer/TempList.m3u"));
    }

    void listIsReplacedByAFolderAndGrowsByFoldersAndFiles()
    {
        const QByteArray find("find \"/m/x y\" -type f -name *.mp3 -print | sort ");
        const QByteArray list("/w//plugins/LyraPlayer/TempList.m3u");
        QCOMPARE(CommandLine::listFolder("/w/", "/m/x y").value_or("nothing"), find + "> " + list);
        QCOMPARE(CommandLine::addFolder("/w/", "/m/x y").value_or("nothing"), find + ">> " + list);
        QCOMPARE(CommandLine::addFile("/w/", "/m/a.mp3").value_or("nothing"),
                 "echo \"/m/a.mp3\" >> " + list);
        QCOMPARE(CommandLine::addFile("/w/", QString()).value_or("nothing"),
                 "echo \"\" >> " + list);
    }

    void everyPieceIsInTheFileSystemsEncoding()
    {
        const QString folder = QString::fromUtf8("/ü/");
        const QString name = QString::fromUtf8("Я");
        QCOMPARE(CommandLine::pluginOfFolder(folder, name, name).value_or("nothing"),
                 QByteArray("/\xc3\xbc//plugins/\xd0\xaf/\xd0\xaf -d \"\xd0\xaf\"&"));
        QCOMPARE(CommandLine::pluginOfPath(name, name).value_or("nothing"),
                 QByteArray("\xd0\xaf \"\xd0\xaf\"&"));
        QCOMPARE(CommandLine::addFile(folder, name).value_or("nothing"),
                 QByteArray("echo \"\xd0\xaf\" >> /\xc3\xbc//plugins/LyraPlayer/TempList.m3u"));
    }

    void namesThatAreNoTextKeepTheirBytes()
    {
        const QByteArray odd("/\xff/\xef\xbb\xbf");
        const QString name = decodeName(odd);
        QCOMPARE(CommandLine::pluginOfPath(name, name).value_or("nothing"),
                 odd + " \"" + odd + "\"&");
        QCOMPARE(CommandLine::addFile(name, name).value_or("nothing"),
                 "echo \"" + odd + "\" >> " + odd + "/plugins/LyraPlayer/TempList.m3u");
    }

    void whatStandsForNoNameGivesNoCommand()
    {
        const QString none(QChar(0xd800));
        QVERIFY(!CommandLine::pluginOfFolder("/w/", "Viewer", none));
        QVERIFY(!CommandLine::pluginOfFolder(none, "Viewer", "/a"));
        QVERIFY(!CommandLine::pluginOfFolder("/w/", none, "/a"));
        QVERIFY(!CommandLine::pluginOfPath("view", none));
        QVERIFY(!CommandLine::playFile("/w/", none));
        QVERIFY(!CommandLine::playList(none));
        QVERIFY(!CommandLine::listFolder("/w/", none));
        QVERIFY(!CommandLine::addFolder("/w/", none));
        QVERIFY(!CommandLine::addFile("/w/", none));
    }

    void safeOperationsQuoteEveryPath()
    {
        extras.safe = true;
        const auto lines = [](const ShellBytes& line) { return line.value_or("nothing"); };
        QCOMPARE(lines(CommandLine::pluginOfFolder("/w w/", "It's", "/a'b")),
                 QByteArray("'/w w//plugins/It'\\''s/It'\\''s' -d '/a'\\''b'&"));
        QCOMPARE(lines(CommandLine::pluginOfPath("view -x", "/a b")),
                 QByteArray("view -x '/a b'&"));
        const QByteArray list = "'/w//plugins/LyraPlayer/TempList.m3u'";
        QCOMPARE(lines(CommandLine::addFile("/w/", "/a\\nb")),
                 "printf '%s\\n' '/a\\nb' >> " + list);
        QCOMPARE(lines(CommandLine::addFile("/w/", "/a b\n'#")),
                 "printf '%s\\n' 'file:///a%20b%0A%27%23' >> " + list);
        QVERIFY(lines(CommandLine::listFolder("/w/", "/m")).endsWith(" > " + list));
        QCOMPARE(lines(CommandLine::playList("/w/")),
                 "'/w//plugins/LyraPlayer/LyraPlayer' -d " + list + " &");
        extras.safe = false;
    }

    /// What the player makes of the list is all that there is, in the order of the bytes.
    void safeListsHoldNamesOfAllBytes()
    {
        const ScratchFolder folder;
        const QByteArrayList names{"\n.mp3",        "%41?#\n\n'$(x)\\.mp3", "-a.mp3",
                                   "a\r\n\xff.mp3", "b \xd0\xbf%41#?.mp3",  "c\r.mp3"};
        for (const QByteArray& name : names)
            folder.write("music\n%/" + decodeName(name));
        folder.write("work/plugins/LyraPlayer/TempList.m3u");
        extras.safe = true;
        const QString work = folder.path("work/");
        const QString music = folder.path("music\n%");
        runShellInByteOrder(CommandLine::listFolder(work, music));
        QCOMPARE(listed(work), within(music, names));
        runShellInByteOrder(CommandLine::addFolder(work, music));
        runShellInByteOrder(CommandLine::addFile(work, folder.path("d\r")));
        runShellInByteOrder(CommandLine::addFile(work, folder.path("e'\n")));
        extras.safe = false;
        QCOMPARE(listed(work),
                 within(music, names + names) + within(folder.path(), {"d\r", "e'\n"}));
    }

    void nothingInAPieceIsEscapedOrReplaced()
    {
        QCOMPARE(CommandLine::pluginOfFolder("/%1/", "%2", "%1\"$x`y`\n%%").value_or("nothing"),
                 QByteArray("/%1//plugins/%2/%2 -d \"%1\"$x`y`\n%%\"&"));
        QCOMPARE(CommandLine::listFolder("/%1/", "%2").value_or("nothing"),
                 QByteArray("find \"%2\" -type f -name *.mp3 -print | sort > "
                            "/%1//plugins/LyraPlayer/TempList.m3u"));
    }

private:
    /// The files that a list names, addresses taken for what they stand for.
    static QByteArrayList listed(const QString& workFolder)
    {
        QByteArrayList files;
        QFile list(CommandLine::playlist(workFolder));
        if (!list.open(QIODevice::ReadOnly))
            return files;
        for (const QByteArray& line : list.readAll().split('\n')) {
            if (line.startsWith("file://"))
                files.append(QByteArray::fromPercentEncoding(line.sliced(7)));
            else if (!line.isEmpty())
                files.append(line);
        }
        return files;
    }

    static QByteArrayList within(const QString& folder, const QByteArrayList& names)
    {
        QByteArrayList files;
        for (const QByteArray& name : names)
            files.append(encodedPath(folder) + '/' + name);
        return files;
    }
};

QUARN_TEST_MAIN(tst_CommandLines)
#include "tst_commandlines.moc"
