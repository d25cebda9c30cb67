#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/zoptionsmenu.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/movetest.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QDir>
#include <QFileInfo>

namespace
{

using Log = CommandLog;
using Fixture = CommandFixture;

QString moveRefusal()
{
    return Log::message(LANG_ERROR, LANG_DON_TRY_MOVE, "error");
}

/// What moving by the shell does.
QStringList moved(const QString& path, const QString& folder)
{
    return {Log::notice(LANG_MOVING, LANG_PLEASE_WAIT, "copy"),
            Log::shell("mv \"" + path.toUtf8() + "\" \"" + folder.toUtf8() + '"')};
}

} // namespace

class tst_MoveTo : public MoveTest
{
    Q_OBJECT

private slots:
    void entryIsMovedAfterAQuestionAndBothPanelsAreListed_data() { addPages(); }
    void entryIsMovedAfterAQuestionAndBothPanelsAreListed()
    {
        QFETCH(int, page);
        const int from = 3 - page;
        fixture_->write(from, {"a", "b"});
        fixture_->write(page, {"z"});
        fixture_->start(from);
        fixture_->toClipboard(Fixture::Move, "a", page);
        fixture_->paste({yes});
        const QString path = fixture_->folder(from) + "/a";
        const QString folder = fixture_->folder(page);
        QCOMPARE(log(), sureQuestion("a", folder) + moved(path, folder) + ended());
        QCOMPARE(fixture_->program().rows(page), (QStringList{"..", "a", "z"}));
        QCOMPARE(fixture_->program().rows(from), (QStringList{"..", "b"}));
        QCOMPARE(fixture_->panel(from)->curIndex, 1);
        QVERIFY(!textView->isUp());
        QCOMPARE(keyReceiver(), fixture_->panel(page));
    }

    void noMovesNothingAndListsBothPanels()
    {
        fixture_->startWith(Fixture::Move, "x");
        fixture_->paste({no});
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) + ended());
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "x"}));
        QCOMPARE(fixture_->program().rows(2), (QStringList{".."}));
        QVERIFY(!textView->isUp());
    }

    void pleaseWaitIsOnTheScreenWhileTheShellMoves()
    {
        fixture_->startWith(Fixture::Move, "x");
        bool shown = false;
        fixture_->log().setShell([&shown](const QByteArray& command) {
            shown = Fixture::showsPleaseWait(LANG_MOVING);
            return systemShell(command);
        });
        fixture_->paste({yes});
        QVERIFY(shown);
        QVERIFY(!textView->isUp());
    }

    void treeIsMovedWhole()
    {
        fixture_->write(1, {"f/a", "f/.hidden", "f/g/h/b"});
        fixture_->files().makeFolder("left/f/empty");
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "f", 2);
        fixture_->paste({yes});
        for (const char* name : {"f/a", "f/.hidden", "f/g/h/b", "f/empty"})
            QVERIFY2(fixture_->files().exists(QLatin1String("right/") + name), name);
        QVERIFY(!QFile::exists(fixture_->left("f")));
    }

    void markedEntriesAreAskedForOneByOne()
    {
        fixture_->write(1, {"a", "b", "f/in"});
        fixture_->start();
        fixture_->mark({"a", "b", "f"});
        Fixture::choose(Fixture::Move);
        fixture_->goTo(2);
        log();
        fixture_->paste({yes, no, yes});
        const QString to = fixture_->right();
        QCOMPARE(log(), sureQuestion("f", to) + moved(fixture_->left("f"), to) + ended() +
                            sureQuestion("a", to) + ended() + sureQuestion("b", to) +
                            moved(fixture_->left("b"), to) + ended());
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "a"}));
        QCOMPARE(fixture_->program().rows(2), (QStringList{"..", "f", "b"}));
    }

    void targetThatExistsIsReplacedAfterASecondQuestion_data() { addReplacements(); }
    void targetThatExistsIsReplacedAfterASecondQuestion()
    {
        QFETCH(bool, folderThere);
        QFETCH(bool, folderHere);
        fixture_->write(1, {folderThere ? "x/new" : "x"});
        fixture_->files().write(folderHere ? "right/x/old" : "right/x", "old");
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "x", 2);
        fixture_->paste({yes, yes});
        QStringList expected = sureQuestion("x", fixture_->right());
        expected.append(replaceQuestion("x"));
        if (folderHere)
            expected.append(removal(fixture_->right("x")));
        QCOMPARE(log(), expected + moved(fixture_->left("x"), fixture_->right()) + ended());
        QVERIFY(!QFile::exists(fixture_->right("x/old")) && !QFile::exists(fixture_->left("x")));
        const QString arrived = folderThere ? "x/new" : "x";
        QCOMPARE(fixture_->files().read("right/" + arrived), arrived.toUtf8());
    }

    void targetStaysWhenTheSecondAnswerIsNo()
    {
        fixture_->files().write("right/x", "old");
        fixture_->startWith(Fixture::Move, "x");
        fixture_->paste({yes, no});
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) + QStringList(replaceQuestion("x")) +
                            ended());
        QCOMPARE(fixture_->files().read("right/x"), QByteArray("old"));
        QCOMPARE(fixture_->files().read("left/x"), QByteArray("x"));
        QVERIFY(!textView->isUp());
    }

    void targetIsNotAskedAboutWhenTheFirstAnswerIsNo()
    {
        fixture_->write(2, {"x"});
        fixture_->startWith(Fixture::Move, "x");
        fixture_->paste({no});
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) + ended());
    }

    void targetThatCannotBeRemovedKeepsTheMoveOut_data() { addFileAndFolder(); }
    void targetThatCannotBeRemovedKeepsTheMoveOut()
    {
        QFETCH(bool, isFolder);
        fixture_->write(1, {"x"});
        fixture_->write(2, {isFolder ? "x/old" : "x"});
        fixture_->start();
        fixture_->files().setMode("right", 0555);
        fixture_->toClipboard(Fixture::Move, "x", 2);
        fixture_->paste({yes, yes});
        QStringList expected = sureQuestion("x", fixture_->right());
        expected.append(replaceQuestion("x"));
        if (isFolder)
            expected.append(removal(fixture_->right("x")));
        expected += {removalError(), moveRefusal()};
        QCOMPARE(log(), expected + fixture_->bothListed());
        QVERIFY(QFile::exists(fixture_->left("x")) && QFile::exists(fixture_->right("x")));
        // It stays for the user to read.
        fixture_->dismissError(LANG_DON_TRY_MOVE);
    }

    void moveThatTheFileSystemRefusesIsNotReported_data()
    {
        QTest::addColumn<QString>("locked");
        QTest::newRow("from a protected folder") << "left";
        QTest::newRow("to a protected folder") << "right";
    }

    void moveThatTheFileSystemRefusesIsNotReported()
    {
        QFETCH(QString, locked);
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->files().setMode(locked, 0555);
        fixture_->toClipboard(Fixture::Move, "x", 2);
        fixture_->paste({yes});
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) +
                            moved(fixture_->left("x"), fixture_->right()) + ended());
        QVERIFY(QFile::exists(fixture_->left("x")) && !QFile::exists(fixture_->right("x")));
        QVERIFY(!textView->isUp());
    }

    void targetThatVanishesDuringItsQuestionIsNoFailure()
    {
        fixture_->write(2, {"x"});
        fixture_->startWith(Fixture::Move, "x");
        fixture_->paste({yes, [this] {
                             QVERIFY(QFile::remove(fixture_->right("x")));
                             yes();
                         }});
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) + QStringList(replaceQuestion("x")) +
                            moved(fixture_->left("x"), fixture_->right()) + ended());
        QVERIFY(QFile::exists(fixture_->right("x")) && !QFile::exists(fixture_->left("x")));
    }

    void targetThatAppearsDuringTheFirstQuestionIsAskedAbout()
    {
        fixture_->startWith(Fixture::Move, "x");
        fixture_->paste({[this] {
                             fixture_->write(2, {"x"});
                             yes();
                         },
                         no});
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) + QStringList(replaceQuestion("x")) +
                            ended());
    }

    void sourceThatVanishesDuringTheQuestionIsNotReported()
    {
        fixture_->startWith(Fixture::Move, "x");
        fixture_->paste({[this] {
            QVERIFY(QFile::remove(fixture_->left("x")));
            yes();
        }});
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) +
                            moved(fixture_->left("x"), fixture_->right()) + ended());
        QCOMPARE(fixture_->program().rows(1), QStringList(".."));
        QVERIFY(!textView->isUp());
    }

    void movedOntoItselfAFileIsLost()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "x", 1);
        fixture_->paste({yes, yes});
        QCOMPARE(log(), sureQuestion("x", fixture_->left()) + QStringList(replaceQuestion("x")) +
                            moved(fixture_->left("x"), fixture_->left()) + ended());
        QVERIFY(!QFile::exists(fixture_->left("x")));
    }

    void folderIsNotMovedIntoItself()
    {
        fixture_->write(1, {"f/in"});
        path_tab2 = fixture_->left("f");
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "f", 2);
        fixture_->paste();
        QCOMPARE(log(), QStringList(moveRefusal()) + fixture_->bothListed());
        QVERIFY(QFile::exists(fixture_->left("f/in")));
        QVERIFY(!fixture_->window()->copyMenu->isItemEnabled(Fixture::Paste));
        fixture_->dismissError(LANG_DON_TRY_MOVE);
    }

    /// Not caught beforehand; the shell's command refuses.
    void folderMovedIntoItsSubfolderStays()
    {
        fixture_->write(1, {"f/in", "f/g/in"});
        path_tab2 = fixture_->left("f/g");
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "f", 2);
        fixture_->paste({yes});
        QCOMPARE(log(), sureQuestion("f", fixture_->left("f/g")) +
                            moved(fixture_->left("f"), fixture_->left("f/g")) + ended());
        QVERIFY(QFile::exists(fixture_->left("f/in")) && QFile::exists(fixture_->left("f/g/in")));
    }

    void panelWhoseFolderIsMovedKeepsItsPath()
    {
        fixture_->write(1, {"f/in"});
        fixture_->start();
        fixture_->toClipboard(Fixture::Move, "f", 2);
        fixture_->panel(1)->setDir(fixture_->left("f"), 0);
        fixture_->paste({yes});
        QCOMPARE(fixture_->panel(1)->curPath, fixture_->left("f"));
        QCOMPARE(fixture_->program().rows(1), QStringList());
        QVERIFY(QFile::exists(fixture_->right("f/in")));
    }

    void pipesAndLinksAreMovedAsTheyAre()
    {
        fixture_->files().makeFifo("left/pipe");
        fixture_->files().makeLink("left/dangling", "nowhere");
        fixture_->files().makeLink("left/null", "/dev/null");
        fixture_->start();
        fixture_->mark({"pipe", "dangling", "null"});
        Fixture::choose(Fixture::Move);
        fixture_->goTo(2);
        fixture_->paste({yes, yes, yes});
        QVERIFY(isFifo(fixture_->right("pipe")));
        QVERIFY(QFileInfo(fixture_->right("dangling")).isSymLink());
        QCOMPARE(QFileInfo(fixture_->right("null")).symLinkTarget(), QStringLiteral("/dev/null"));
        QCOMPARE(fixture_->program().rows(1), QStringList(".."));
    }

    void oddNamesReachTheShellAsTheirBytes_data() { addOddNames(); }
    void oddNamesReachTheShellAsTheirBytes()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->startWith(Fixture::Move, name);
        fixture_->paste({yes});
        QCOMPARE(log(), sureQuestion(name, fixture_->right()) +
                            moved(fixture_->left(name), fixture_->right()) + ended());
        QCOMPARE(fixture_->files().exists("right/" + name), works);
        QCOMPARE(fixture_->files().exists("left/" + name), !works);
    }

    void oddFoldersAreMovedInto_data() { addOddNames(); }
    void oddFoldersAreMovedInto()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->files().makeFolder("right/" + name);
        path_tab2 = fixture_->right(name);
        fixture_->startWith(Fixture::Move, "x");
        fixture_->paste({yes});
        QCOMPARE(log(), sureQuestion("x", fixture_->right(name)) +
                            moved(fixture_->left("x"), fixture_->right(name)) + ended());
        QCOMPARE(QFile::exists(fixture_->right(name + "/x")), works);
    }

    void nothingIsMovedWhereTheFolderIsGone_data()
    {
        QTest::addColumn<QString>("when");
        for (const char* when : {"before", "at the first question", "at the second question"})
            QTest::newRow(when) << QString::fromLatin1(when);
    }

    void nothingIsMovedWhereTheFolderIsGone()
    {
        QFETCH(QString, when);
        fixture_->write(2, {"x"});
        fixture_->startWith(Fixture::Move, "x");
        const auto remove = [this] { QVERIFY(QDir(fixture_->right()).removeRecursively()); };
        const auto removeAndAgree = [&remove] {
            remove();
            yes();
        };
        if (when == "before") {
            remove();
            fixture_->paste({yes});
        } else if (when == "at the first question") {
            fixture_->paste({removeAndAgree});
        } else {
            fixture_->paste({yes, removeAndAgree});
        }
        const QStringList lines = log();
        QCOMPARE(lines.first(), sureQuestion("x", fixture_->right()).first());
        QVERIFY(lines.contains(moveRefusal()));
        QCOMPARE(fixture_->log().unused(), 0);
        QCOMPARE(fixture_->files().read("left/x"), QByteArray("x"));
        QVERIFY(!QFile::exists(fixture_->right()));
        fixture_->dismissMessage();
    }

    void nothingIsMovedToTheAboutPage()
    {
        fixture_->write(1, {"a name that no one has"});
        fixture_->start();
        fixture_->log().setShell([](const QByteArray&) { return 0; });
        fixture_->toClipboard(Fixture::Move, "a name that no one has", FM::AboutPage);
        fixture_->log().expect({yes});
        fixture_->window()->slot_MoveTo();
        QCOMPARE(log(), sureQuestion("a name that no one has", "") + QStringList(moveRefusal()) +
                            fixture_->bothListed());
        QVERIFY(QFile::exists(fixture_->left("a name that no one has")));
    }
};

QUARN_TEST_MAIN(tst_MoveTo)
#include "tst_moveto.moc"
