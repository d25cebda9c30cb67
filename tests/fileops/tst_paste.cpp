#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/zoptionsmenu.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandtest.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QDir>
#include <QFileInfo>

namespace
{

using Log = CommandLog;
using Fixture = CommandFixture;

QString copyCommand(const QString& path, const QString& folder)
{
    return Log::shell("cp -R \"" + path.toUtf8() + "\" \"" + folder.toUtf8() + '"');
}

QString refusal()
{
    return Log::message(LANG_ERROR, LANG_DON_TRY_COPY, "error");
}

QString undeleted()
{
    return Log::message(LANG_ERROR, LANG_UNABLE_DELETE, "error");
}

/// What copying by the shell does.
QStringList copied(const QString& path, const QString& folder)
{
    return {Log::notice(LANG_COPYING, LANG_PLEASE_WAIT, "copy"), copyCommand(path, folder),
            Log::cleared()};
}

} // namespace

class tst_Paste : public CommandTest
{
    Q_OBJECT

private slots:
    void fileIsCopiedIntoTheShownFolderAndBothPanelsAreListed_data() { addPages(); }
    void fileIsCopiedIntoTheShownFolderAndBothPanelsAreListed()
    {
        QFETCH(int, page);
        const int from = 3 - page;
        fixture_->write(from, {"a", "b"});
        fixture_->write(page, {"z"});
        fixture_->start(from);
        fixture_->toClipboard(Fixture::Copy, "b", page);
        fixture_->highlight("z");
        Fixture::choose(Fixture::Paste);
        const QString path = fixture_->folder(from) + "/b";
        QCOMPARE(log(), copied(path, fixture_->folder(page)) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(page), (QStringList{"..", "b", "z"}));
        QCOMPARE(fixture_->program().rows(from), (QStringList{"..", "a", "b"}));
        // Row numbers stay.
        QCOMPARE(fixture_->panel(page)->curIndex, 1);
        QCOMPARE(fixture_->panel(from)->curIndex, 2);
        QVERIFY(!textView->isUp());
        QCOMPARE(keyReceiver(), fixture_->panel(page));
    }

    void pleaseWaitIsOnTheScreenWhileTheShellCopies()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "a", 2);
        bool shown = false;
        fixture_->log().setShell([&shown](const QByteArray& command) {
            kWidget expected;
            expected.showText(LANG_COPYING, LANG_PLEASE_WAIT, 4, "res/img/copy.png",
                              kWidget::Plain);
            shown = hasKeys(*textView) && looksLike(*textView, expected);
            return Log::realShell(command);
        });
        Fixture::choose(Fixture::Paste);
        QVERIFY(shown);
        QVERIFY(!textView->isUp());
    }

    void treeIsCopiedWhole()
    {
        fixture_->write(1, {"f/a", "f/.hidden", "f/g/h/b"});
        fixture_->files().makeFolder("left/f/empty");
        fixture_->files().makeLink("left/f/link", "nowhere");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "f", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied(fixture_->left("f"), fixture_->right()) + fixture_->bothListed());
        for (const char* name : {"f/a", "f/.hidden", "f/g/h/b", "f/empty", "f/link"})
            QVERIFY2(fixture_->files().exists(QLatin1String("right/") + name), name);
        QCOMPARE(fixture_->files().read("right/f/g/h/b"), QByteArray("f/g/h/b"));
        QVERIFY(QFile::exists(fixture_->left("f/a")));
    }

    void markedEntriesAreCopiedOneByOne()
    {
        fixture_->write(1, {"a", "b", "f/in"});
        fixture_->write(2, {"a"});
        fixture_->start();
        fixture_->mark({"b", "a", "f"});
        Fixture::choose(Fixture::Copy);
        fixture_->goTo(2);
        log();
        fixture_->log().expect({no});
        Fixture::choose(Fixture::Paste);
        const QString to = fixture_->right();
        const QStringList both = fixture_->bothListed();
        QCOMPARE(log(), copied(fixture_->left("f"), to) + both + QStringList(replaceQuestion("a")) +
                            both + copied(fixture_->left("b"), to) + both);
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "f", "a", "b"}));
    }

    void targetThatExistsIsReplacedAfterAQuestion_data()
    {
        QTest::addColumn<bool>("folderThere");
        QTest::addColumn<bool>("folderHere");
        for (const bool there : {false, true}) {
            for (const bool here : {false, true})
                QTest::addRow("%s replaces %s", there ? "folder" : "file", here ? "folder" : "file")
                    << there << here;
        }
    }

    void targetThatExistsIsReplacedAfterAQuestion()
    {
        QFETCH(bool, folderThere);
        QFETCH(bool, folderHere);
        fixture_->write(1, {folderThere ? "x/new" : "x"});
        fixture_->files().write(folderHere ? "right/x/old" : "right/x", "old");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Paste);
        QStringList expected{replaceQuestion("x")};
        if (folderHere)
            expected.append(Log::shell("rm -f -r \"" + fixture_->right("x").toUtf8() + '"'));
        QCOMPARE(log(), expected + copied(fixture_->left("x"), fixture_->right()) +
                            fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->right("x/old")));
        const QString arrived = folderThere ? "x/new" : "x";
        QCOMPARE(fixture_->files().read("right/" + arrived), arrived.toUtf8());
    }

    void targetStaysWhenTheAnswerIsNo()
    {
        fixture_->write(1, {"x"});
        fixture_->files().write("right/x", "old");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->log().expect({no});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), QStringList(replaceQuestion("x")) + fixture_->bothListed());
        QCOMPARE(fixture_->files().read("right/x"), QByteArray("old"));
        QVERIFY(!textView->isUp());
    }

    void targetThatCannotBeRemovedKeepsTheCopyOut_data()
    {
        QTest::addColumn<bool>("isFolder");
        QTest::newRow("file") << false;
        QTest::newRow("folder") << true;
    }

    void targetThatCannotBeRemovedKeepsTheCopyOut()
    {
        QFETCH(bool, isFolder);
        fixture_->write(1, {"x"});
        fixture_->write(2, {isFolder ? "x/old" : "x"});
        fixture_->start();
        fixture_->files().setMode("right", 0555);
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Paste);
        QStringList expected{replaceQuestion("x")};
        if (isFolder)
            expected.append(Log::shell("rm -f -r \"" + fixture_->right("x").toUtf8() + '"'));
        expected += {undeleted(), refusal()};
        QCOMPARE(log(), expected + fixture_->bothListed());
        QCOMPARE(QFileInfo(fixture_->right("x")).isDir(), isFolder);
        QCOMPARE(textView->shownTitle(), LANG_ERROR);
        QCOMPARE(textView->shownText(), LANG_DON_TRY_COPY);
        fixture_->dismissMessage();
    }

    void copyIntoAProtectedFolderFailsInSilence()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->files().setMode("right", 0555);
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->right("x")));
        QVERIFY(!textView->isUp());
    }

    void targetThatVanishesDuringItsQuestionIsNoFailure()
    {
        fixture_->write(1, {"x"});
        fixture_->write(2, {"x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->log().expect({[this] {
            QVERIFY(QFile::remove(fixture_->right("x")));
            yes();
        }});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), QStringList(replaceQuestion("x")) +
                            copied(fixture_->left("x"), fixture_->right()) +
                            fixture_->bothListed());
        QVERIFY(QFile::exists(fixture_->right("x")));
        QVERIFY(!textView->isUp());
    }

    void sourceThatVanishedIsNotReported()
    {
        fixture_->write(1, {"x", "y"});
        fixture_->start();
        fixture_->mark({"x", "y"});
        Fixture::choose(Fixture::Copy);
        fixture_->goTo(2);
        log();
        QVERIFY(QFile::remove(fixture_->left("x")));
        Fixture::choose(Fixture::Paste);
        const QString to = fixture_->right();
        QCOMPARE(log(), copied(fixture_->left("x"), to) + fixture_->bothListed() +
                            copied(fixture_->left("y"), to) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "y"}));
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "y"}));
        QVERIFY(!textView->isUp());
    }

    void sourceThatVanishesDuringTheQuestionTakesTheTargetAlong()
    {
        fixture_->write(1, {"x"});
        fixture_->write(2, {"x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->log().expect({[this] {
            QVERIFY(QFile::remove(fixture_->left("x")));
            yes();
        }});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), QStringList(replaceQuestion("x")) +
                            copied(fixture_->left("x"), fixture_->right()) +
                            fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->right("x")));
    }

    void folderThatVanishedUnderThePanelGetsNothing()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        const QString to = fixture_->right();
        fixture_->log().setShell([to](const QByteArray& command) {
            [to] { QVERIFY(QDir().rmdir(to)); }();
            return Log::quietShell(command);
        });
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied(fixture_->left("x"), to) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(2), QStringList());
        QVERIFY(QFile::exists(fixture_->left("x")));
    }

    void pastedOntoItselfAnEntryIsLost_data()
    {
        QTest::addColumn<bool>("isFolder");
        QTest::newRow("file") << false;
        QTest::newRow("folder") << true;
    }

    /// It is its own target, which is removed first.
    void pastedOntoItselfAnEntryIsLost()
    {
        QFETCH(bool, isFolder);
        fixture_->write(1, {isFolder ? "x/in" : "x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 1);
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Paste);
        QStringList expected{replaceQuestion("x")};
        if (isFolder)
            expected.append(Log::shell("rm -f -r \"" + fixture_->left("x").toUtf8() + '"'));
        QCOMPARE(log(),
                 expected + copied(fixture_->left("x"), fixture_->left()) + fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->left("x")));
        QVERIFY(!textView->isUp());
    }

    void pastedOntoItselfAnEntryStaysWhenTheAnswerIsNo()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 1);
        fixture_->log().expect({no});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), QStringList(replaceQuestion("x")) + fixture_->bothListed());
        QCOMPARE(fixture_->files().read("left/x"), QByteArray("x"));
    }

    void folderIsNotPastedIntoItself()
    {
        fixture_->write(1, {"f/in"});
        path_tab2 = fixture_->left("f");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "f", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), QStringList(refusal()) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "in"}));
        QCOMPARE(textView->shownTitle(), LANG_ERROR);
        QCOMPARE(textView->shownText(), LANG_DON_TRY_COPY);
        QVERIFY(!fixture_->window()->copyMenu->isItemEnabled(Fixture::Paste));
        fixture_->dismissMessage();
    }

    /// Not caught beforehand; the shell's command refuses, and ends.
    void folderPastedIntoItsSubfolderStays()
    {
        fixture_->write(1, {"f/in", "f/g/in"});
        path_tab2 = fixture_->left("f/g");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "f", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(),
                 copied(fixture_->left("f"), fixture_->left("f/g")) + fixture_->bothListed());
        QVERIFY(QFile::exists(fixture_->left("f/in")) && QFile::exists(fixture_->left("f/g/in")));
    }

    void linksAreCopiedAsLinks()
    {
        fixture_->files().makeLink("left/dangling", "nowhere");
        fixture_->files().makeLink("left/null", "/dev/null");
        fixture_->start();
        fixture_->mark({"dangling", "null"});
        Fixture::choose(Fixture::Copy);
        fixture_->goTo(2);
        Fixture::choose(Fixture::Paste);
        QVERIFY(QFileInfo(fixture_->right("dangling")).isSymLink());
        QCOMPARE(QFileInfo(fixture_->right("null")).symLinkTarget(), QStringLiteral("/dev/null"));
    }

    void linkThatLeadsNowhereIsNoTargetToAskAbout()
    {
        fixture_->write(1, {"x"});
        fixture_->files().makeLink("right/x", "nowhere");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->right("nowhere")));
    }

    void pipeIsCopiedAsOneAndNotRead()
    {
        fixture_->files().makeFifo("left/x");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(isFifo(fixture_->right("x")));
    }

    /// Copying its content would never end. Only root can make a device, and not everywhere.
    void deviceIsCopiedAsOneOrNotAtAll()
    {
        path_tab1 = "/dev";
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "zero", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied("/dev/zero", fixture_->right()) + fixture_->bothListed());
        QVERIFY(!QFileInfo(fixture_->right("zero")).isFile());
        QVERIFY(!textView->isUp());
    }

    void pipeInTheWayIsReplaced()
    {
        fixture_->write(1, {"x"});
        fixture_->files().makeFifo("right/x");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(fixture_->files().read("right/x"), QByteArray("x"));
    }

    void oddNamesReachTheShellAsTheirBytes_data() { addOddNames(); }
    void oddNamesReachTheShellAsTheirBytes()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->write(1, {name});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, name, 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied(fixture_->left(name), fixture_->right()) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(2),
                 works ? (QStringList{"..", name}) : QStringList{".."});
        QCOMPARE(fixture_->files().read("left/" + name), name.toUtf8());
    }

    void oddNamesAreAskedAboutAsTheyAre_data() { addOddNames(); }
    void oddNamesAreAskedAboutAsTheyAre()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->write(1, {name});
        fixture_->files().write("right/" + name, "old");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, name, 2);
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), QStringList(replaceQuestion(name)) +
                            copied(fixture_->left(name), fixture_->right()) +
                            fixture_->bothListed());
        // Removed without the shell, whatever becomes of the copy.
        QCOMPARE(fixture_->files().read("right/" + name), works ? name.toUtf8() : QByteArray());
    }

    void oddFoldersAreCopiedInto_data() { addOddNames(); }
    void oddFoldersAreCopiedInto()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->write(1, {"x"});
        fixture_->files().makeFolder("right/" + name);
        path_tab2 = fixture_->right(name);
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(),
                 copied(fixture_->left("x"), fixture_->right(name)) + fixture_->bothListed());
        QCOMPARE(QFile::exists(fixture_->right(name + "/x")), works);
    }

    void exitStatusOfTheShellMeansNothing()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->log().setShell([](const QByteArray&) { return -1; });
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(!textView->isUp());
    }

    void rootIsCopiedIntoLikeAnyFolder()
    {
        fixture_->write(1, {"a name that no one has"});
        path_tab2 = "/";
        fixture_->start();
        fixture_->log().setShell([](const QByteArray&) { return 0; });
        fixture_->toClipboard(Fixture::Copy, "a name that no one has", 2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(log(),
                 copied(fixture_->left("a name that no one has"), "/") + fixture_->bothListed());
    }

    void nothingIsCopiedWhereTheFolderIsGone_data()
    {
        QTest::addColumn<bool>("builtIn");
        QTest::addColumn<bool>("file");
        for (const bool builtIn : {false, true}) {
            for (const bool file : {false, true})
                QTest::addRow("%s, %s", builtIn ? "built-in" : "shell", file ? "a file" : "nothing")
                    << builtIn << file;
        }
    }

    void nothingIsCopiedWhereTheFolderIsGone()
    {
        QFETCH(bool, builtIn);
        QFETCH(bool, file);
        fixture_->write(1, {"x"});
        FM* window = fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        QVERIFY(QDir().rmdir(fixture_->right()));
        if (file)
            fixture_->files().write("right", "in its place");
        window->modKeyHeld = builtIn;
        window->slot_CopyTo();
        window->modKeyHeld = false;
        QCOMPARE(log().first(), refusal());
        QCOMPARE(fixture_->files().read("left/x"), QByteArray("x"));
        QCOMPARE(QFile::exists(fixture_->right()), file);
        if (file)
            QCOMPARE(fixture_->files().read("right"), QByteArray("in its place"));
        fixture_->dismissMessage();
    }

    void folderThatGoesDuringTheQuestionIsNotCopiedTo()
    {
        fixture_->write(1, {"x"});
        fixture_->write(2, {"x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->log().expect({[this] {
            QVERIFY(QDir(fixture_->right()).removeRecursively());
            yes();
        }});
        Fixture::choose(Fixture::Paste);
        const QStringList lines = log();
        QVERIFY(lines.contains(refusal()));
        QVERIFY(!lines.contains(copyCommand(fixture_->left("x"), fixture_->right())));
        QVERIFY(!QFile::exists(fixture_->right()));
    }

    void nothingIsCopiedToTheAboutPage()
    {
        fixture_->write(1, {"a name that no one has"});
        const FM* window = fixture_->start();
        fixture_->log().setShell([](const QByteArray&) { return 0; });
        fixture_->toClipboard(Fixture::Copy, "a name that no one has", FM::AboutPage);
        const ZOptionsMenu* menu = window->copyMenu;
        fixture_->window()->slot_CopyTo();
        QCOMPARE(log(), QStringList(refusal()) + fixture_->bothListed());
        QCOMPARE(window->copyMenu, menu);
        QVERIFY(!menu->isItemEnabled(Fixture::Paste));
        QCOMPARE(window->softKey->optMenu(ZSoftKey::Left), window->optionsMenu);
    }
};

QUARN_TEST_MAIN(tst_Paste)
#include "tst_paste.moc"
