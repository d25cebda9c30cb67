#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/browser/socketfile.h"
#include "tests/fileops/commandfixture.h"
#include "tests/fileops/duringwork.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QFile>
#include <QHash>

#include <memory>
#include <pwd.h>
#include <unistd.h>

namespace
{

using Log = CommandLog;

constexpr qint64 GiB = 1024LL * 1024 * 1024;

QString userName()
{
    return QString::fromLocal8Bit(getpwuid(geteuid())->pw_name);
}

} // namespace

class tst_Properties : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture_ = std::make_unique<CommandFixture>(); }
    void cleanup() { fixture_.reset(); }

    void fileHasItsFiveLines()
    {
        write("a", "content");
        files().setMode("left/a", 0644);
        start();
        CommandFixture::choose(CommandFixture::Properties);
        QCOMPARE(taken(), QStringList(" Type: File\n Name: a\n Path: " + left("a") +
                                      "<hr> Size: 7 b<hr> Owner: " + userName() +
                                      "\n Permissions: RW- R-- R--"));
    }

    void bothPanelsHaveProperties_data() { addPages(); }
    void bothPanelsHaveProperties()
    {
        QFETCH(int, page);
        fixture_->write(page, {"a", "b"});
        fixture_->start(page);
        fixture_->highlight("b");
        CommandFixture::choose(CommandFixture::Properties);
        QCOMPARE(fixture_->log().take().size(), 1);
        QVERIFY(textView->shownText().contains(": " + fixture_->folder(page) + "/b<hr>"));
        fixture_->dismissMessage();
    }

    void boxStaysUntilAKeyAndLeavesNothingBehind()
    {
        write("a", "content");
        start();
        window_->slot_Properties();
        awaitKeys(*textView);
        pressKey(PhoneKey::Down);
        QVERIFY(textView->isUp());
        fixture_->dismissMessage();
        QVERIFY(!processView->isUp());
        QCOMPARE(fixture_->panel(1)->curFile, left("a"));
    }

    void rowOfTheFolderAboveHasNone()
    {
        write("a", "content");
        start();
        fixture_->highlight("..");
        CommandFixture::choose(CommandFixture::Properties);
        QCOMPARE(fixture_->log().take(), QStringList());
        QVERIFY(!textView->isUp() && !processView->isUp());
    }

    void folderAboveHasNoneUnderItsBareNameEither()
    {
        window_ = fixture_->start();
        fixture_->panel(1)->curFile = "..";
        window_->slot_Properties();
        QCOMPARE(fixture_->log().take(), QStringList());
        QVERIFY(!textView->isUp() && !processView->isUp());
    }

    void listWithoutAnEntryHasABoxOfNothing_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("folder that cannot be read") << 1;
        QTest::newRow("folder that is not there") << 2;
        QTest::newRow("about page") << 3;
    }

    void listWithoutAnEntryHasABoxOfNothing()
    {
        QFETCH(int, page);
        files().setMode("left", 0);
        path_tab2 = right("none");
        window_ = fixture_->start(page);
        if (page == 3)
            window_->slot_Properties();
        else
            CommandFixture::choose(CommandFixture::Properties);
        QCOMPARE(taken(), QStringList(" Type: Unknown\n Name: \n Path: "
                                      "<hr> Size: 0 b<hr> Owner: \n Permissions: --- --- ---"));
        QVERIFY(textView->isUp() && !processView->isUp());
        textView->init();
    }

    void languageFileNamesTheLines()
    {
        fixture_->program().workFolder().write("lang/test.lang",
                                               "[Language]\nVER=102\nTYPE=Art\nFILE=Datei\n"
                                               "NAME=Wie\nPATH=Wo\nSIZE=Wieviel\nOWNER=Wem\n"
                                               "PERM=Wozu\nPROPERTIES=Alles\n");
        lang = "test";
        write("a", "content");
        files().setMode("left/a", 0600);
        start();
        window_->slot_Properties();
        QCOMPARE(textView->shownTitle(), QStringLiteral("Alles"));
        QCOMPARE(textView->shownText(), " Art: Datei\n Wie: a\n Wo: " + left("a") +
                                            "<hr> Wieviel: 7 b<hr> Wem: " + userName() +
                                            "\n Wozu: RW- --- ---");
    }

    void sizeOfAFileIsGivenInBytesAboveAKilobyte_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << 0LL << "0 b";
        QTest::newRow("below a kilobyte") << 1023LL << "1023 b";
        QTest::newRow("a kilobyte") << 1024LL << "1 Kb";
        QTest::newRow("above a kilobyte") << 1025LL << "1 Kb (1025 b)";
        QTest::newRow("one and a half") << 1536LL << "1.5 Kb (1536 b)";
        QTest::newRow("some megabytes") << 5000000LL << "4.76 Mb (5000000 b)";
        QTest::newRow("two gigabytes") << 2 * GiB << "2048 Mb (2147483648 b)";
        QTest::newRow("below four gigabytes") << 4 * GiB - 1 << "4095.99 Mb (4294967295 b)";
        QTest::newRow("four gigabytes") << 4 * GiB << "0 b";
        QTest::newRow("more") << 5 * GiB + 2000 << "1024 Mb (1073743824 b)";
    }

    void sizeOfAFileIsGivenInBytesAboveAKilobyte()
    {
        QFETCH(qint64, size);
        QFETCH(QString, text);
        files().writeSparse("left/a", size);
        start();
        window_->slot_Properties();
        QCOMPARE(textView->shownText().section("<hr>", 1, 1), " Size: " + text);
        // A folder gives the same for what is in it.
        files().makeFolder("left/b");
        QVERIFY(QFile::rename(left("a"), left("b/a")));
        fixture_->panel(1)->setDir(left(), 1);
        window_->slot_Properties();
        QCOMPARE(textView->shownText().section("<hr>", 1, 1),
                 " Size: " + text + "\n Dirs: 0 | Files: 1");
    }

    void safeOperationsTellSizesAsTheyAre()
    {
        extras.safe = true;
        files().writeSparse("left/a", 5 * GiB);
        start();
        window_->slot_Properties();
        QCOMPARE(textView->shownText().section("<hr>", 1, 1),
                 QString(" Size: 5 Gb (5368709120 b)"));
        files().writeSparse("left/b/.hidden/.big", 5 * GiB);
        files().write("left/b/in", "12345");
        fixture_->panel(1)->setDir(left(), 1);
        window_->slot_Properties();
        QCOMPARE(textView->shownText().section("<hr>", 1, 1),
                 QString(" Size: 5 Gb (5368709125 b)\n Dirs: 1 | Files: 2"));
    }

    void typeIsThatOfTheEntryItself_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("type");
        QTest::newRow("file") << "file"
                              << "File";
        QTest::newRow("folder") << "folder"
                                << "Dir";
        for (const char* kind :
             {"link to file", "link to folder", "link to nothing", "link to device"})
            QTest::newRow(kind) << kind << "Symlink";
        QTest::newRow("pipe") << "pipe"
                              << "Unknown";
        QTest::newRow("socket") << "socket"
                                << "Unknown";
        QTest::newRow("vanished") << "vanished"
                                  << "Unknown";
    }

    void typeIsThatOfTheEntryItself()
    {
        QFETCH(QString, kind);
        if (kind == "file" || kind == "vanished")
            write("a", "content");
        else if (kind == "folder")
            files().makeFolder("left/a");
        else if (kind == "pipe")
            files().makeFifo("left/a");
        else if (kind == "socket")
            makeSocket(left("a"));
        const QHash<QString, QString> targets{{"link to file", "/etc/passwd"},
                                              {"link to folder", right()},
                                              {"link to nothing", "../gone"},
                                              {"link to device", "/dev/null"}};
        if (targets.contains(kind))
            files().makeLink("left/a", targets.value(kind));
        start();
        if (kind == "vanished")
            QVERIFY(QFile::remove(left("a")));
        window_->slot_Properties();
        QTEST(line(" Type: "), "type");
        QCOMPARE(textView->shownText().contains("LinkPath"), targets.contains(kind));
        if (targets.contains(kind))
            QCOMPARE(line("\n LinkPath: "), targets.value(kind));
    }

    void vanishedEntryHasNothingToTell()
    {
        write("a", "content");
        start();
        QVERIFY(QFile::remove(left("a")));
        window_->slot_Properties();
        QCOMPARE(taken(), QStringList(" Type: Unknown\n Name: a\n Path: " + left("a") +
                                      "<hr> Size: 0 b<hr> Owner: \n Permissions: --- --- ---"));
    }

    void linkToAFileHasTheSizeAndTheRightsOfTheFile()
    {
        write("real", QByteArray(2000, 'x'));
        files().setMode("left/real", 0755);
        files().makeLink("left/a", "real");
        start();
        window_->slot_Properties();
        QCOMPARE(taken(), QStringList(" Type: Symlink\n Name: a\n Path: " + left("a") +
                                      "\n LinkPath: real<hr> Size: 1.95 Kb (2000 b)<hr> Owner: " +
                                      userName() + "\n Permissions: RWX R-X R-X"));
    }

    void linkToAFolderIsWalkedInItsTarget()
    {
        write("real/one", QByteArray(1000, 'x'));
        write("real/sub/two", QByteArray(1000, 'x'));
        files().setMode("left/real", 0755);
        files().makeLink("left/a", left("real"));
        start();
        window_->slot_Properties();
        QCOMPARE(textView->shownText(),
                 " Type: Symlink\n Name: a\n Path: " + left("a") + "\n LinkPath: " + left("real") +
                     "<hr> Size: 1.95 Kb (2000 b)\n Dirs: 1 | Files: 2<hr> Owner: " + userName() +
                     "\n Permissions: RWX R-X R-X");
    }

    void permissionsAreThoseOfOwnerGroupAndOthers_data()
    {
        QTest::addColumn<unsigned>("mode");
        QTest::addColumn<QString>("text");
        QTest::newRow("0644") << 0644U << "RW- R-- R--";
        QTest::newRow("0755") << 0755U << "RWX R-X R-X";
        QTest::newRow("0000") << 0000U << "--- --- ---";
        QTest::newRow("0124") << 0124U << "--X -W- R--";
    }

    void permissionsAreThoseOfOwnerGroupAndOthers()
    {
        QFETCH(unsigned, mode);
        write("a", "content");
        files().setMode("left/a", mode);
        start();
        window_->slot_Properties();
        QTEST(textView->shownText().section("Permissions: ", 1), "text");
    }

    void ownerIsWhoeverTheSystemNames()
    {
        files().makeLink("left/a", "/dev/null");
        start();
        window_->slot_Properties();
        QCOMPARE(line("<hr> Owner: "), QString::fromLocal8Bit(getpwuid(0)->pw_name));
    }

    void folderIsCountedWithoutItself()
    {
        for (const char* name : {"a/one", "a/two", "a/sub/three"})
            write(name, "xy");
        files().setMode("left/a", 0750);
        start();
        window_->dirCount = 50;
        window_->fileCount = 50;
        CommandFixture::choose(CommandFixture::Properties);
        const QStringList log = fixture_->log().take();
        QCOMPARE(log.size(), 2);
        QCOMPARE(log.at(0), Log::progress(LANG_PROPERTIES, "props"));
        const QString text = " Type: Dir\n Name: a\n Path: " + left("a") +
                             "<hr> Size: 6 b\n Dirs: 1 | Files: 3<hr> Owner: " + userName() +
                             "\n Permissions: RWX R-X ---";
        QCOMPARE(log.at(1), message(text));
        QCOMPARE(window_->dirCount, 1);
        QCOMPARE(window_->fileCount, 3);
        QVERIFY(!processView->isUp());
        fixture_->dismissMessage();
    }

    void emptyFolderHasNothingInIt()
    {
        files().makeFolder("left/a");
        start();
        window_->slot_Properties();
        QVERIFY(textView->shownText().contains("<hr> Size: 0 b\n Dirs: 0 | Files: 0<hr>"));
    }

    void unreadableFolderHasNothingInIt()
    {
        write("a/file", "xy");
        files().setMode("left/a", 0);
        start();
        window_->slot_Properties();
        QVERIFY(textView->shownText().contains("<hr> Size: 0 b\n Dirs: 0 | Files: 0<hr>"));
        QVERIFY(textView->shownText().endsWith("--- --- ---"));
    }

    void hiddenEntriesAndLinksAreNotCounted()
    {
        write("a/one", "xy");
        write("a/.two", "xy");
        write("a/.sub/three", "xy");
        files().makeLink("left/a/four", "one");
        files().makeLink("left/a/loop", ".");
        files().makeFifo("left/a/pipe");
        start();
        window_->slot_Properties();
        QVERIFY(textView->shownText().contains("<hr> Size: 2 b\n Dirs: 0 | Files: 1<hr>"));
    }

    void largeFolderIsCountedInThirtyTwoBits()
    {
        files().writeSparse("left/a/one", 3 * GiB);
        files().writeSparse("left/a/two", 3 * GiB + 1000);
        start();
        window_->slot_Properties();
        QCOMPARE(textView->shownText().section("<hr>", 1, 1),
                 QStringLiteral(" Size: 2048 Mb (2147484648 b)\n Dirs: 0 | Files: 2"));
        QCOMPARE(window_->GetDirSize(left("a")), qint32(2147484648U));
    }

    void boxOfTheWalkSaysWhatIsKnown()
    {
        write("a/one", "xy");
        start();
        QString title;
        QString text;
        const DuringWork look([this] { return window_->fileCount == 1; },
                              [&title, &text] {
                                  title = processView->shownTitle();
                                  text = processView->shownText();
                              });
        window_->slot_Properties();
        QVERIFY(look.hasHappened());
        QCOMPARE(title, QStringLiteral("Properties"));
        QCOMPARE(text, " Type: Dir\n Name: a\n Path: " + left("a") + "<hr> Size: ...");
    }

    void boxOfTheWalkOffersToCancel()
    {
        write("a/one", "xy");
        start();
        bool isAlike = false;
        const DuringWork look(
            [this] { return window_->fileCount == 1; },
            [this, &isAlike] {
                kWidget expected;
                expected.showProcess(LANG_PROPERTIES,
                                     " Type: Dir\n Name: a\n Path: " + left("a") + "<hr> Size: ...",
                                     1, QString(), 0, "res/img/props.png", kWidget::Message);
                isAlike = looksLike(*processView, expected);
            });
        window_->slot_Properties();
        QVERIFY(look.hasHappened());
        QVERIFY(isAlike);
    }

    void markedEntriesDoNotCount()
    {
        fixture_->write(1, {"a", "b", "c"});
        start();
        fixture_->mark({"b", "c"});
        fixture_->highlight("a");
        CommandFixture::choose(CommandFixture::Properties);
        QVERIFY(textView->shownText().startsWith(" Type: File\n Name: a\n"));
        QVERIFY2(window_->getActiveMultiStat(), "the marks stay");
    }

    void entriesWithOddNamesHaveProperties_data() { addOddNames(); }
    void entriesWithOddNamesHaveProperties()
    {
        QFETCH(QString, name);
        write(name + '/' + name, "xy");
        start(name);
        window_->slot_Properties();
        QVERIFY(textView->shownText().startsWith(" Type: Dir\n Name: " + name +
                                                 "\n Path: " + left(name) + "<hr> Size: 2 b\n"));
        QVERIFY(textView->shownText().contains("Dirs: 0 | Files: 1"));
    }

    void methodsWalkLikeTheCommand()
    {
        for (const char* name : {"a/one", "a/sub/two"})
            write(name, "xy");
        start();
        window_->dirCount = 10;
        window_->fileCount = 20;
        QCOMPARE(window_->GetDirSize(left("a")), 4);
        QCOMPARE(window_->dirCount, 12);
        QCOMPARE(window_->fileCount, 22);
        QCOMPARE(FM::GetFilesInFolder(left("a")), (QStringList{left("a/one"), left("a/sub/two")}));
        QCOMPARE(window_->fileCount, 22);
    }

private:
    const ScratchFolder& files() const { return fixture_->files(); }
    QString left(const QString& name = QString()) const { return fixture_->left(name); }
    QString right(const QString& name = QString()) const { return fixture_->right(name); }
    void write(const QString& name, const QByteArray& content) const
    {
        files().write("left/" + name, content);
    }

    void start(const QString& highlighted = "a")
    {
        window_ = fixture_->start();
        fixture_->highlight(highlighted);
    }

    static QString message(const QString& text)
    {
        return Log::message(LANG_PROPERTIES, text, "props") + " | align 1";
    }

    /// The texts of the messages that were shown; any other box fails the test.
    QStringList taken()
    {
        QStringList texts;
        const QString before = message(QString()).section(" | ", 0, 1) + " | ";
        const QString after = " | props | align 1";
        for (const QString& entry : fixture_->log().take()) {
            if (entry.startsWith(before) && entry.endsWith(after))
                texts.append(entry.mid(before.size()).chopped(after.size()));
            else
                texts.append("unexpected " + entry);
        }
        return texts;
    }

    /// What follows a label in the box, up to the end of its line.
    static QString line(const QString& label)
    {
        return textView->shownText().section(label, 1).section('\n', 0, 0).section("<hr>", 0, 0);
    }

    std::unique_ptr<CommandFixture> fixture_;
    FM* window_ = nullptr;
};

QUARN_TEST_MAIN(tst_Properties)
#include "tst_properties.moc"
