#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandtest.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <QDir>

namespace
{

using Log = CommandLog;

QString askFile(const QString& path)
{
    return Log::question(LANG_DELETE_FILE, path, QStringLiteral("delete"));
}

QString askFolder(const QString& path)
{
    return Log::question(LANG_DELETE_DIR, path, QStringLiteral("delete"));
}

} // namespace

class tst_Delete : public CommandTest
{
    Q_OBJECT

private slots:
    void fileIsDeletedAfterAQuestionAndThePanelListedAnew_data() { addPages(); }
    void fileIsDeletedAfterAQuestionAndThePanelListedAnew()
    {
        QFETCH(int, page);
        const QString folder = fixture_->folder(page);
        fixture_->write(page, {"a", "b", "c"});
        fixture_->start(page);
        fixture_->highlight("b");
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), (QStringList{askFile(folder + "/b"), Log::listed(folder)}));
        QCOMPARE(fixture_->program().rows(page), (QStringList{"..", "a", "c"}));
        // The row number stays, the entry under it does not.
        QCOMPARE(fixture_->panel(page)->curIndex, 2);
        QCOMPARE(fixture_->panel(page)->curFile, folder + "/c");
        QVERIFY(!QFile::exists(folder + "/b"));
        QVERIFY(!textView->isUp());
        QCOMPARE(keyReceiver(), fixture_->panel(page));
    }

    void folderIsDeletedByTheShell_data() { addPages(); }
    void folderIsDeletedByTheShell()
    {
        QFETCH(int, page);
        const QString folder = fixture_->folder(page);
        fixture_->write(page, {"f/one", "f/.hidden", "f/g/two", "z"});
        fixture_->start(page);
        fixture_->highlight("f");
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), (QStringList{askFolder(folder + "/f"), removal(folder + "/f"),
                                     Log::listed(folder)}));
        QCOMPARE(fixture_->program().rows(page), (QStringList{"..", "z"}));
    }

    void noLeavesTheEntry_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("file") << "file";
        QTest::newRow("folder") << "folder";
    }

    void noLeavesTheEntry()
    {
        QFETCH(QString, name);
        fixture_->write(1, {"file", "folder/in"});
        fixture_->start();
        fixture_->highlight(name);
        expect({no});
        CommandFixture::choose(CommandFixture::Delete);
        const QString path = fixture_->left(name);
        QCOMPARE(log(), QStringList(name == "file" ? askFile(path) : askFolder(path)));
        QVERIFY(QFile::exists(path));
        QVERIFY(!textView->isUp());
    }

    void onlyTheAnswerKeysAnswer()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->highlight("a");
        expect({[] {
            for (const int code : {int(PhoneKey::Down), int(PhoneKey::Return), int('0'), int('#'),
                                   int(PhoneKey::Hide), int(PhoneKey::Modifier)})
                pressKey(code);
            QVERIFY(textView->isWaiting());
            no();
        }});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(askFile(fixture_->left("a"))));
        QVERIFY(QFile::exists(fixture_->left("a")));
    }

    void markedEntriesAreAskedForOneByOne_data() { addPages(); }
    void markedEntriesAreAskedForOneByOne()
    {
        QFETCH(int, page);
        const QString folder = fixture_->folder(page);
        fixture_->write(page, {"f/in", "a", "b", "c"});
        fixture_->start(page);
        fixture_->mark({"c", "b", "f"});
        expect({yes, no, yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(),
                 (QStringList{Log::listed(folder), askFolder(folder + "/f"), removal(folder + "/f"),
                              Log::listed(folder), askFile(folder + "/b"), askFile(folder + "/c"),
                              Log::listed(folder)}));
        QCOMPARE(fixture_->program().rows(page), (QStringList{"..", "a", "b"}));
        QVERIFY(!fixture_->window()->getActiveMultiStat());
    }

    void nothingMarkedAsksNothing()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->mark({});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(Log::listed(fixture_->left())));
        QVERIFY(!fixture_->window()->getActiveMultiStat());
    }

    void markedDanglingLinkIsPassedOver()
    {
        fixture_->write(1, {"a", "c"});
        fixture_->files().makeLink("left/b", "nowhere");
        fixture_->start();
        fixture_->mark({"a", "b", "c"});
        expect({yes, yes});
        CommandFixture::choose(CommandFixture::Delete);
        const QString folder = fixture_->left();
        QCOMPARE(log(),
                 (QStringList{Log::listed(folder), askFile(folder + "/a"), Log::listed(folder),
                              askFile(folder + "/c"), Log::listed(folder)}));
        QVERIFY(fixture_->files().exists("left/b"));
        QVERIFY(!textView->isUp());
    }

    void whatIsNeitherFileNorFolderIsPassedOver_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"dangling link", "FIFO", "link to a device"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }

    void whatIsNeitherFileNorFolderIsPassedOver()
    {
        QFETCH(QString, kind);
        if (kind == "FIFO")
            fixture_->files().makeFifo("left/x");
        else
            fixture_->files().makeLink("left/x", kind == "link to a device" ? "/dev/null" : "no");
        fixture_->start();
        fixture_->highlight("x");
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList());
        QVERIFY(fixture_->files().exists("left/x"));
    }

    void linkIsDeletedAndNotWhatItLeadsTo_data()
    {
        QTest::addColumn<bool>("toFolder");
        QTest::newRow("link to a file") << false;
        QTest::newRow("link to a folder") << true;
    }

    void linkIsDeletedAndNotWhatItLeadsTo()
    {
        QFETCH(bool, toFolder);
        fixture_->write(2, {"target/in"});
        const QString target = fixture_->right(toFolder ? "target" : "target/in");
        fixture_->files().makeLink("left/link", target);
        fixture_->start();
        fixture_->highlight("link");
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        const QString link = fixture_->left("link");
        QCOMPARE(log(), toFolder ? (QStringList{askFolder(link), removal(link),
                                                Log::listed(fixture_->left())})
                                 : (QStringList{askFile(link), Log::listed(fixture_->left())}));
        QVERIFY(!fixture_->files().exists("left/link"));
        QVERIFY(QFile::exists(fixture_->right("target/in")));
    }

    void fileInAProtectedFolderIsReportedOnceAndThePanelListedAnew()
    {
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        fixture_->files().setMode("left", 0555);
        fixture_->highlight("a");
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), (QStringList{askFile(fixture_->left("a")), removalError(),
                                     Log::listed(fixture_->left())}));
        QVERIFY(QFile::exists(fixture_->left("a")));
        QVERIFY(textView->isUp() && !textView->isWaiting());
        fixture_->dismissError(LANG_UNABLE_DELETE);
    }

    void protectedFileIsDeletedLikeAnyOther()
    {
        fixture_->write(1, {"a"});
        fixture_->files().setMode("left/a", 0);
        fixture_->start();
        fixture_->highlight("a");
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), (QStringList{askFile(fixture_->left("a")), Log::listed(fixture_->left())}));
        QVERIFY(!QFile::exists(fixture_->left("a")));
    }

    void folderThatCannotBeRemovedIsReportedOnceAndThePanelListedAnew_data()
    {
        QTest::addColumn<QString>("locked");
        QTest::newRow("in a protected folder") << "left";
        QTest::newRow("with a protected folder in it") << "left/f/g";
    }

    void folderThatCannotBeRemovedIsReportedOnceAndThePanelListedAnew()
    {
        QFETCH(QString, locked);
        fixture_->write(1, {"f/a", "f/g/b"});
        fixture_->start();
        fixture_->files().setMode(locked, 0555);
        fixture_->highlight("f");
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        const QString folder = fixture_->left("f");
        QCOMPARE(log(), (QStringList{askFolder(folder), removal(folder), removalError(),
                                     Log::listed(fixture_->left())}));
        QVERIFY(QFile::exists(folder));
        // What could go is gone.
        QCOMPARE(QFile::exists(folder + "/a"), false);
        fixture_->dismissMessage();
    }

    void failureOfOneDoesNotKeepTheOthers()
    {
        fixture_->write(1, {"f/in", "g/in", "h"});
        fixture_->start();
        fixture_->mark({"f", "g", "h"});
        fixture_->log().setShell([](const QByteArray& command) {
            return command.contains("/f\"") ? 0 : systemShell(command);
        });
        expect({yes, yes, yes});
        CommandFixture::choose(CommandFixture::Delete);
        const QString folder = fixture_->left();
        QCOMPARE(log(),
                 (QStringList{Log::listed(folder), askFolder(folder + "/f"), removal(folder + "/f"),
                              removalError(), Log::listed(folder), askFolder(folder + "/g"),
                              removal(folder + "/g"), Log::listed(folder), askFile(folder + "/h"),
                              Log::listed(folder)}));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "f"}));
    }

    void exitStatusOfTheShellMeansNothing()
    {
        fixture_->write(1, {"f/in"});
        fixture_->start();
        fixture_->highlight("f");
        fixture_->log().setShell([](const QByteArray& command) {
            systemShell(command);
            return -1;
        });
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        const QString folder = fixture_->left("f");
        QCOMPARE(log(),
                 (QStringList{askFolder(folder), removal(folder), Log::listed(fixture_->left())}));
        QVERIFY(!textView->isUp());
    }

    void entryThatVanishesDuringItsQuestionIsReportedAndNothingListed_data() { addFileAndFolder(); }
    void entryThatVanishesDuringItsQuestionIsReportedAndNothingListed()
    {
        QFETCH(bool, isFolder);
        fixture_->write(1, {isFolder ? "x/in" : "x"});
        fixture_->start();
        fixture_->highlight("x");
        const QString path = fixture_->left("x");
        expect({[path, isFolder] {
            QVERIFY(isFolder ? QDir(path).removeRecursively() : QFile::remove(path));
            yes();
        }});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), (QStringList{isFolder ? askFolder(path) : askFile(path), removalError()}));
        QVERIFY(textView->isUp());
        fixture_->dismissMessage();
    }

    void entryThatVanishedBeforeItsQuestionIsPassedOver()
    {
        fixture_->write(1, {"a", "b", "c"});
        fixture_->start();
        fixture_->mark({"a", "b", "c"});
        const QString folder = fixture_->left();
        expect({[folder] {
                    QVERIFY(QFile::remove(folder + "/b"));
                    yes();
                },
                yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(),
                 (QStringList{Log::listed(folder), askFile(folder + "/a"), Log::listed(folder),
                              askFile(folder + "/c"), Log::listed(folder)}));
        QVERIFY(!textView->isUp());
    }

    void folderThatTakesTheNameDuringAQuestionStays()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->highlight("x");
        const QString path = fixture_->left("x");
        expect({[this, path] {
            QVERIFY(QFile::remove(path));
            fixture_->files().write("left/x/in");
            yes();
        }});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), (QStringList{askFile(path), removalError()}));
        QVERIFY(fixture_->files().exists("left/x/in"));
    }

    void oddNamesReachTheShellAsTheirBytes_data() { addOddNames(); }
    void oddNamesReachTheShellAsTheirBytes()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->write(1, {name + "/in", "other"});
        fixture_->start();
        fixture_->highlight(name);
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        const QString path = fixture_->left(name);
        QStringList expected{askFolder(path), removal(path)};
        if (!works)
            expected.append(removalError());
        expected.append(Log::listed(fixture_->left()));
        QCOMPARE(log(), expected);
        QCOMPARE(QFile::exists(path), !works);
        QVERIFY(QFile::exists(fixture_->left("other")));
        if (!works)
            fixture_->dismissMessage();
    }

    void filesWithOddNamesAreDeletedWithoutTheShell_data() { addOddNames(); }
    void filesWithOddNamesAreDeletedWithoutTheShell()
    {
        QFETCH(QString, name);
        fixture_->write(1, {name, "other"});
        fixture_->start();
        fixture_->highlight(name);
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(),
                 (QStringList{askFile(fixture_->left(name)), Log::listed(fixture_->left())}));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "other"}));
    }

    void backEntryIsAskedForAndItsFolderStays()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->highlight("..");
        expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        const QString path = fixture_->left("..");
        QCOMPARE(log(), (QStringList{askFolder(path), removal(path), removalError(),
                                     Log::listed(fixture_->left())}));
        QVERIFY(QFile::exists(fixture_->left("a")));
        fixture_->dismissMessage();
    }

    void entryOfTheRootHasTwoSlashes()
    {
        path_tab1 = "/";
        fixture_->start();
        fixture_->highlight("etc");
        fixture_->log().setShell([](const QByteArray&) { return 0; });
        expect({no});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(askFolder("//etc")));
    }

    void nothingIsDeletedFromTheAboutPage()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->highlight("a");
        fixture_->goTo(FM::AboutPage);
        fixture_->window()->slot_Delete();
        QCOMPARE(log(), QStringList());
        QVERIFY(QFile::exists(fixture_->left("a")));
    }

    void emptyEntryEndsTheWork()
    {
        fixture_->start();
        fixture_->files().setMode("left", 0);
        fixture_->window()->panel(1)->curFile.clear();
        fixture_->window()->slot_Delete();
        QCOMPARE(log(), QStringList());
    }

    void deletionTellsWhetherThereWasAnything_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("expected");
        QTest::newRow("file") << "file" << true;
        QTest::newRow("folder") << "folder" << true;
        QTest::newRow("FIFO") << "fifo" << true;
        QTest::newRow("nothing") << "nothing" << false;
        QTest::newRow("dangling link") << "dangling" << false;
    }

    void deletionTellsWhetherThereWasAnything()
    {
        QFETCH(QString, name);
        QFETCH(bool, expected);
        fixture_->write(1, {"file", "folder/in"});
        fixture_->files().makeFifo("left/fifo");
        fixture_->files().makeLink("left/dangling", "nowhere");
        fixture_->start();
        const QString path = fixture_->left(name);
        QCOMPARE(fixture_->window()->DeleteFile(path), expected);
        QCOMPARE(QFile::exists(path), false);
        QCOMPARE(log(),
                 name == "folder" || name == "fifo" ? QStringList(removal(path)) : QStringList());
        QVERIFY(!textView->isUp());
    }

private:
    void expect(std::initializer_list<CommandLog::Action> actions)
    {
        fixture_->log().expect(actions);
    }
};

QUARN_TEST_MAIN(tst_Delete)
#include "tst_delete.moc"
