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

QString pasteRefusal()
{
    return Log::message(LANG_ERROR, LANG_DON_TRY_COPY, "error");
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
        fixture_->paste();
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
        fixture_->startWith(Fixture::Copy, "a");
        bool shown = false;
        fixture_->log().setShell([&shown](const QByteArray& command) {
            shown = Fixture::showsPleaseWait(LANG_COPYING);
            return systemShell(command);
        });
        fixture_->paste();
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
        fixture_->paste();
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
        fixture_->paste({no});
        const QString to = fixture_->right();
        const QStringList both = fixture_->bothListed();
        QCOMPARE(log(), copied(fixture_->left("f"), to) + both + QStringList(replaceQuestion("a")) +
                            both + copied(fixture_->left("b"), to) + both);
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "f", "a", "b"}));
    }

    void targetThatExistsIsReplacedAfterAQuestion_data() { addReplacements(); }
    void targetThatExistsIsReplacedAfterAQuestion()
    {
        QFETCH(bool, folderThere);
        QFETCH(bool, folderHere);
        fixture_->write(1, {folderThere ? "x/new" : "x"});
        fixture_->files().write(folderHere ? "right/x/old" : "right/x", "old");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->paste({yes});
        QStringList expected{replaceQuestion("x")};
        if (folderHere)
            expected.append(removal(fixture_->right("x")));
        QCOMPARE(log(), expected + copied(fixture_->left("x"), fixture_->right()) +
                            fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->right("x/old")));
        const QString arrived = folderThere ? "x/new" : "x";
        QCOMPARE(fixture_->files().read("right/" + arrived), arrived.toUtf8());
    }

    void targetStaysWhenTheAnswerIsNo()
    {
        fixture_->files().write("right/x", "old");
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->paste({no});
        QCOMPARE(log(), QStringList(replaceQuestion("x")) + fixture_->bothListed());
        QCOMPARE(fixture_->files().read("right/x"), QByteArray("old"));
        QVERIFY(!textView->isUp());
    }

    void targetThatCannotBeRemovedKeepsTheCopyOut_data() { addFileAndFolder(); }
    void targetThatCannotBeRemovedKeepsTheCopyOut()
    {
        QFETCH(bool, isFolder);
        fixture_->write(1, {"x"});
        fixture_->write(2, {isFolder ? "x/old" : "x"});
        fixture_->start();
        fixture_->files().setMode("right", 0555);
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->paste({yes});
        QStringList expected{replaceQuestion("x")};
        if (isFolder)
            expected.append(removal(fixture_->right("x")));
        expected += {removalError(), pasteRefusal()};
        QCOMPARE(log(), expected + fixture_->bothListed());
        QCOMPARE(QFileInfo(fixture_->right("x")).isDir(), isFolder);
        fixture_->dismissError(LANG_DON_TRY_COPY);
    }

    void copyIntoAProtectedFolderFailsInSilence()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->files().setMode("right", 0555);
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->paste();
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->right("x")));
        QVERIFY(!textView->isUp());
    }

    void targetThatVanishesDuringItsQuestionIsNoFailure()
    {
        fixture_->write(2, {"x"});
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->paste({[this] {
            QVERIFY(QFile::remove(fixture_->right("x")));
            yes();
        }});
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
        fixture_->paste();
        const QString to = fixture_->right();
        QCOMPARE(log(), copied(fixture_->left("x"), to) + fixture_->bothListed() +
                            copied(fixture_->left("y"), to) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "y"}));
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "y"}));
        QVERIFY(!textView->isUp());
    }

    void sourceThatVanishesDuringTheQuestionLeavesTheTarget()
    {
        fixture_->write(2, {"x"});
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->paste({[this] {
            QVERIFY(QFile::remove(fixture_->left("x")));
            yes();
        }});
        QCOMPARE(log(), QStringList(replaceQuestion("x")) + QStringList(pasteRefusal()) +
                            fixture_->bothListed());
        QVERIFY(QFile::exists(fixture_->right("x")));
        fixture_->dismissMessage();
    }

    void folderThatVanishedUnderThePanelGetsNothing()
    {
        fixture_->startWith(Fixture::Copy, "x");
        const QString to = fixture_->right();
        fixture_->log().setShell([to](const QByteArray& command) {
            [to] { QVERIFY(QDir().rmdir(to)); }();
            return Log::quietShell(command);
        });
        fixture_->paste();
        QCOMPARE(log(), copied(fixture_->left("x"), to) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(2), QStringList());
        QVERIFY(QFile::exists(fixture_->left("x")));
    }

    void pastedOntoItselfAnEntryIsLost_data() { addFileAndFolder(); }
    /// It is its own target, which is removed first.
    void pastedOntoItselfAnEntryIsLost()
    {
        QFETCH(bool, isFolder);
        fixture_->write(1, {isFolder ? "x/in" : "x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 1);
        fixture_->paste({yes});
        QStringList expected{replaceQuestion("x")};
        if (isFolder)
            expected.append(removal(fixture_->left("x")));
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
        fixture_->paste({no});
        QCOMPARE(log(), QStringList(replaceQuestion("x")) + fixture_->bothListed());
        QCOMPARE(fixture_->files().read("left/x"), QByteArray("x"));
    }

    void folderIsNotPastedIntoItself()
    {
        fixture_->write(1, {"f/in"});
        path_tab2 = fixture_->left("f");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "f", 2);
        fixture_->paste();
        QCOMPARE(log(), QStringList(pasteRefusal()) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "in"}));
        QVERIFY(!fixture_->window()->copyMenu->isItemEnabled(Fixture::Paste));
        fixture_->dismissError(LANG_DON_TRY_COPY);
    }

    /// Not caught beforehand; the shell's command refuses, and ends.
    void folderPastedIntoItsSubfolderStays()
    {
        fixture_->write(1, {"f/in", "f/g/in"});
        path_tab2 = fixture_->left("f/g");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "f", 2);
        fixture_->paste();
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
        fixture_->paste();
        QVERIFY(QFileInfo(fixture_->right("dangling")).isSymLink());
        QCOMPARE(QFileInfo(fixture_->right("null")).symLinkTarget(), QStringLiteral("/dev/null"));
    }

    void linkThatLeadsNowhereIsNoTargetToAskAbout()
    {
        fixture_->files().makeLink("right/x", "nowhere");
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->paste();
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(!QFile::exists(fixture_->right("nowhere")));
    }

    void pipeIsCopiedAsOneAndNotRead()
    {
        fixture_->files().makeFifo("left/x");
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "x", 2);
        fixture_->paste();
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(isFifo(fixture_->right("x")));
    }

    /// Copying its content would never end. Only root can make a device, and not everywhere.
    void deviceIsCopiedAsOneOrNotAtAll()
    {
        path_tab1 = "/dev";
        fixture_->start();
        fixture_->toClipboard(Fixture::Copy, "zero", 2);
        fixture_->paste();
        QCOMPARE(log(), copied("/dev/zero", fixture_->right()) + fixture_->bothListed());
        QVERIFY(!QFileInfo(fixture_->right("zero")).isFile());
        QVERIFY(!textView->isUp());
    }

    void pipeInTheWayIsReplaced()
    {
        fixture_->files().makeFifo("right/x");
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->paste({yes});
        QCOMPARE(fixture_->files().read("right/x"), QByteArray("x"));
    }

    void oddNamesReachTheShellAsTheirBytes_data() { addOddNames(); }
    void oddNamesReachTheShellAsTheirBytes()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->startWith(Fixture::Copy, name);
        fixture_->paste();
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
        fixture_->files().write("right/" + name, "old");
        fixture_->startWith(Fixture::Copy, name);
        fixture_->paste({yes});
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
        fixture_->files().makeFolder("right/" + name);
        path_tab2 = fixture_->right(name);
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->paste();
        QCOMPARE(log(),
                 copied(fixture_->left("x"), fixture_->right(name)) + fixture_->bothListed());
        QCOMPARE(QFile::exists(fixture_->right(name + "/x")), works);
    }

    void exitStatusOfTheShellMeansNothing()
    {
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->log().setShell([](const QByteArray&) { return -1; });
        fixture_->paste();
        QCOMPARE(log(), copied(fixture_->left("x"), fixture_->right()) + fixture_->bothListed());
        QVERIFY(!textView->isUp());
    }

    void rootIsCopiedIntoLikeAnyFolder()
    {
        path_tab2 = "/";
        fixture_->startWith(Fixture::Copy, "a name that no one has");
        fixture_->log().setShell([](const QByteArray&) { return 0; });
        fixture_->paste();
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
        FM* window = fixture_->startWith(Fixture::Copy, "x");
        QVERIFY(QDir().rmdir(fixture_->right()));
        if (file)
            fixture_->files().write("right", "in its place");
        window->modKeyHeld = builtIn;
        window->slot_CopyTo();
        window->modKeyHeld = false;
        QCOMPARE(log().first(), pasteRefusal());
        QCOMPARE(fixture_->files().read("left/x"), QByteArray("x"));
        QCOMPARE(QFile::exists(fixture_->right()), file);
        if (file)
            QCOMPARE(fixture_->files().read("right"), QByteArray("in its place"));
        fixture_->dismissMessage();
    }

    void folderThatGoesDuringTheQuestionIsNotCopiedTo()
    {
        fixture_->write(2, {"x"});
        fixture_->startWith(Fixture::Copy, "x");
        fixture_->paste({[this] {
            QVERIFY(QDir(fixture_->right()).removeRecursively());
            yes();
        }});
        const QStringList lines = log();
        QVERIFY(lines.contains(pasteRefusal()));
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
        QCOMPARE(log(), QStringList(pasteRefusal()) + fixture_->bothListed());
        QCOMPARE(window->copyMenu, menu);
        QVERIFY(!menu->isItemEnabled(Fixture::Paste));
        QCOMPARE(window->softKey->optMenu(ZSoftKey::Left), window->optionsMenu);
    }
};

QUARN_TEST_MAIN(tst_Paste)
#include "tst_paste.moc"
