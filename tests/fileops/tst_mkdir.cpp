#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandtest.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

namespace
{

using Log = CommandLog;
using Fixture = CommandFixture;

QString dialog()
{
    return Log::dialog(LANG_MKDIR, LANG_ENTER_DIRNAME, "mkdir", "");
}

QString failure()
{
    return Log::message(LANG_ERROR, LANG_RENAME_DIREXISTS, "error");
}

} // namespace

class tst_MkDir : public CommandTest
{
    Q_OBJECT

private slots:
    void folderIsMadeInTheShownFolderWhichIsListedAnew_data() { addPages(); }
    void folderIsMadeInTheShownFolderWhichIsListedAnew()
    {
        QFETCH(int, page);
        // The other panel shows the same folder and is left alone.
        path_tab1 = path_tab2 = fixture_->folder(page);
        fixture_->write(page, {"a", "z/in"});
        fixture_->start(page);
        fixture_->highlight("a");
        make(typing("new"));
        QCOMPARE(log(), (QStringList{dialog(), Log::listed(fixture_->folder(page))}));
        QCOMPARE(fixture_->program().rows(page), (QStringList{"..", "new", "z", "a"}));
        QCOMPARE(fixture_->program().rows(3 - page), (QStringList{"..", "z", "a"}));
        QCOMPARE(fixture_->panel(page)->curIndex, 2);
        QVERIFY(QFileInfo(fixture_->folder(page) + "/new").isDir());
        QVERIFY(!textView->isUp());
        QCOMPARE(keyReceiver(), fixture_->panel(page));
    }

    void fieldIsEmptyWhateverWasTypedBefore()
    {
        fixture_->start();
        make(typing("one"));
        make(typing("two"));
        QCOMPARE(log().first(), dialog());
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "one", "two"}));
    }

    void cancelledDialogMakesNothing()
    {
        fixture_->start();
        make([] {
            typeText("new");
            no();
        });
        QCOMPARE(log(), QStringList(dialog()));
        QVERIFY(!QFile::exists(fixture_->left("new")) && !textView->isUp());
    }

    void emptyNameMakesNothingAndTellsNothing()
    {
        fixture_->start();
        make(yes);
        QCOMPARE(log(), QStringList(dialog()));
        make([] {
            typeText("x");
            pressKey(0x1000 + (Qt::Key_Backspace & 0xff));
            yes();
        });
        QCOMPARE(log(), QStringList(dialog()));
        QVERIFY(!textView->isUp());
        QCOMPARE(fixture_->program().rows(1), QStringList(".."));
    }

    void everyFailureHasTheOneMessage_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("a folder has the name") << "folder";
        QTest::newRow("a file has the name") << "file";
        QTest::newRow("a link that leads nowhere has the name") << "dangling";
        QTest::newRow("this folder") << ".";
        QTest::newRow("the folder above") << "..";
        QTest::newRow("below a missing folder") << "missing/new";
        QTest::newRow("below a file") << "file/new";
        QTest::newRow("too long") << QString(256, 'x');
        QTest::newRow("in a protected folder") << "protected/new";
        QTest::newRow("nothing but a slash") << "/";
    }

    void everyFailureHasTheOneMessage()
    {
        QFETCH(QString, typed);
        fixture_->write(1, {"file", "folder/in", "protected/in"});
        fixture_->files().makeLink("left/dangling", "nowhere");
        fixture_->files().setMode("left/protected", 0555);
        fixture_->start();
        const QStringList rows = fixture_->program().rows(1);
        make(typing(typed));
        QCOMPARE(log(), (QStringList{dialog(), failure()}));
        fixture_->dismissError(LANG_RENAME_DIREXISTS);
        QVERIFY(!QFile::exists(fixture_->left("nowhere")));
        fixture_->panel(1)->setDir(fixture_->left(), 0);
        QCOMPARE(fixture_->program().rows(1), rows);
    }

    void protectedFolderIsReportedToo()
    {
        fixture_->start();
        fixture_->files().setMode("left", 0555);
        make(typing("new"));
        QCOMPARE(log(), (QStringList{dialog(), failure()}));
        fixture_->dismissMessage();
    }

    void folderThatVanishedMeanwhileIsReported()
    {
        fixture_->start();
        make([this] {
            QVERIFY(QDir().rmdir(fixture_->left()));
            typing("new")();
        });
        QCOMPARE(log(), (QStringList{dialog(), failure()}));
        fixture_->dismissMessage();
        QVERIFY(!QFile::exists(fixture_->left()));
    }

    void nameStaysInsideTheFolder_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("made");
        QTest::newRow("slash before") << "/new"
                                      << "new";
        QTest::newRow("slash behind") << "new/"
                                      << "new";
        QTest::newRow("below") << "folder/new"
                               << "folder/new";
    }

    void nameStaysInsideTheFolder()
    {
        QFETCH(QString, typed);
        QFETCH(QString, made);
        fixture_->write(1, {"folder/in"});
        fixture_->start();
        make(typing(typed));
        QCOMPARE(log(), (QStringList{dialog(), Log::listed(fixture_->left())}));
        QVERIFY(QFileInfo(fixture_->left(made)).isDir());
    }

    void oddNamesAreMadeAsTheyAreTyped_data() { addTypedNames(); }

    void oddNamesAreMadeAsTheyAreTyped()
    {
        QFETCH(QString, name);
        fixture_->start();
        make(typing(name));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", name}));
        QVERIFY(QFileInfo(fixture_->left(name)).isDir());
    }

    void foldersAreMadeInFoldersWithOddNames_data() { addOddNames(); }
    void foldersAreMadeInFoldersWithOddNames()
    {
        QFETCH(QString, name);
        fixture_->files().makeFolder("left/" + name);
        path_tab1 = fixture_->left(name);
        fixture_->start();
        make(typing("new"));
        QVERIFY(QFileInfo(fixture_->left(name + "/new")).isDir());
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "new"}));
    }

    void pastedZeroDoesNotCutTheName()
    {
        fixture_->start();
        make([this] {
            QGuiApplication::clipboard()->setText(QString('z') + QChar(0) + 'c');
            fixture_->window()->textInput->Paste();
            yes();
        });
        QCOMPARE(log(), (QStringList{dialog(), failure()}));
        fixture_->dismissMessage();
        QVERIFY(!QFile::exists(fixture_->left("z")));
    }

    void marksGoWithTheNewListing()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->mark({"a"});
        make(typing("new"));
        QVERIFY(fixture_->window()->getActiveMultiStat());
        QCOMPARE(fixture_->panel(1)->getChkFileList(), QStringList());
    }

    void nothingIsMadeOnTheAboutPage()
    {
        fixture_->start();
        fixture_->goTo(FM::AboutPage);
        log();
        fixture_->log().expect({typing("a name that no one has")});
        fixture_->window()->slot_MkDir();
        QCOMPARE(log(), (QStringList{dialog(), failure()}));
        QVERIFY(!QFile::exists("/a name that no one has"));
        textView->init();
    }

private:
    void make(const CommandLog::Action& user)
    {
        fixture_->log().take();
        fixture_->log().expect({user});
        Fixture::choose(Fixture::MakeFolder);
    }
};

QUARN_TEST_MAIN(tst_MkDir)
#include "tst_mkdir.moc"
