#include "lang/texts.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/movetest.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QFile>

namespace
{

QByteArray moverCommand(const QByteArray& mover, const QString& path, const QString& folder)
{
    return mover + " mv \"" + path.toUtf8() + "\" \"" + folder.toUtf8() +
           "\" \"Moving\" \"Please wait..\" \"" + work_folder.toUtf8() + "res/img/copy.png\"";
}

} // namespace

/// Moves by the program for them, where it is installed.
class tst_Mover : public MoveTest
{
    Q_OBJECT

    using Log = CommandLog;
    using Fixture = CommandFixture;

private slots:
    void moverThatIsInstalledMovesAndShowsItsOwnBox()
    {
        fixture_->write(1, {"x"});
        FM* window = fixture_->start();
        fixture_->installMover();
        fixture_->toClipboard(Fixture::Move, "x", 2);
        bool boxed = true;
        fixture_->log().setShell([&boxed](const QByteArray& command) {
            boxed = textView->isUp();
            return systemShell(command);
        });
        fixture_->paste({yes});
        QVERIFY2(!boxed, "two boxes at once");
        const QByteArray mover = window->programDir.toUtf8() + "bin/sys_gui";
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) +
                            QStringList(Log::shell(
                                moverCommand(mover, fixture_->left("x"), fixture_->right()))) +
                            ended());
        QCOMPARE(
            fixture_->moverArguments(),
            (QByteArrayList{"mv", fixture_->left("x").toUtf8(), fixture_->right().toUtf8(),
                            "Moving", "Please wait..", work_folder.toUtf8() + "res/img/copy.png"}));
        QVERIFY(!textView->isUp());
    }

    void moverIsAskedForEachTime()
    {
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        fixture_->mark({"a", "b"});
        Fixture::choose(Fixture::Move);
        fixture_->goTo(2);
        log();
        fixture_->paste({yes, [this] {
                             fixture_->installMover();
                             yes();
                         }});
        const QStringList commands = log().filter("shell | ");
        QCOMPARE(commands.size(), 2);
        QVERIFY(commands.at(0).contains("mv \""));
        QVERIFY(commands.at(1).contains("/bin/sys_gui mv \""));
        QVERIFY(QFile::exists(fixture_->right("a")) && QFile::exists(fixture_->left("b")));
    }

    void moverReplacesTargetsAfterTheSameQuestions()
    {
        fixture_->write(1, {"x"});
        fixture_->write(2, {"x"});
        FM* window = fixture_->start();
        fixture_->installMover();
        fixture_->toClipboard(Fixture::Move, "x", 2);
        fixture_->paste({yes, yes});
        const QByteArray mover = window->programDir.toUtf8() + "bin/sys_gui";
        const QString command =
            Log::shell(moverCommand(mover, fixture_->left("x"), fixture_->right()));
        QCOMPARE(log(), sureQuestion("x", fixture_->right()) +
                            (QStringList{replaceQuestion("x"), command} + ended()));
        QVERIFY(!QFile::exists(fixture_->right("x")));
    }

    void oddNamesReachTheMoverAsTheyAre_data() { addOddNames(); }
    void oddNamesReachTheMoverAsTheyAre()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->write(1, {name});
        fixture_->files().makeFolder("right/" + name);
        path_tab2 = fixture_->right(name);
        FM* window = fixture_->start();
        fixture_->installMover();
        fixture_->toClipboard(Fixture::Move, name, 2);
        fixture_->paste({yes});
        const QString path = fixture_->left(name);
        const QString folder = fixture_->right(name);
        const QByteArray mover = window->programDir.toUtf8() + "bin/sys_gui";
        QVERIFY(log().contains(Log::shell(moverCommand(mover, path, folder))));
        const QByteArrayList arguments = fixture_->moverArguments();
        const QByteArrayList exact{
            "mv",     path.toUtf8(),   folder.toUtf8(),
            "Moving", "Please wait..", work_folder.toUtf8() + "res/img/copy.png"};
        QCOMPARE(arguments == exact, works);
    }

    void moverAndIconAreFoundInFoldersBeyondAscii()
    {
        const QString beyond = QString::fromUtf8("\u041f\u0440 \u00fc/");
        const ScratchFolder& folder = fixture_->program().workFolder();
        fixture_->write(1, {"x"});
        FM* window = fixture_->start();
        fixture_->installMover();
        // The mover's own path is not quoted.
        folder.makeLink(QString::fromUtf8("\u041f\u0440"), folder.path());
        window->programDir = folder.path(QString::fromUtf8("\u041f\u0440/"));
        work_folder = folder.path(beyond);
        fixture_->toClipboard(Fixture::Move, "x", 2);
        fixture_->paste({yes});
        QVERIFY(log().contains(Log::shell(moverCommand(window->programDir.toUtf8() + "bin/sys_gui",
                                                       fixture_->left("x"), fixture_->right()))));
        QCOMPARE(fixture_->moverArguments().last(), work_folder.toUtf8() + "res/img/copy.png");
    }

    void moverIsGivenEnglishTextsInAnyLanguage()
    {
        fixture_->program().workFolder().write("lang/test.lang", "[Language]\nVER=102\n"
                                                                 "MOVING=Umzug\nPLEASE_WAIT=Los\n"
                                                                 "MOVE_SURE=Umziehen\n");
        lang = "test";
        fixture_->write(1, {"x"});
        fixture_->start();
        QCOMPARE(LANG_MOVING, QStringLiteral("Umzug"));
        fixture_->installMover();
        fixture_->toClipboard(Fixture::Move, "x", 2);
        fixture_->paste({yes});
        QCOMPARE(log().first(), Log::question("Umziehen", "x to " + fixture_->right(), "warning"));
        const QByteArrayList arguments = fixture_->moverArguments();
        QCOMPARE(arguments.value(3), QByteArray("Moving"));
        QCOMPARE(arguments.value(4), QByteArray("Please wait.."));
    }

    void moverThatDoesNotRunLeavesTheEntry()
    {
        fixture_->write(1, {"x"});
        fixture_->start();
        fixture_->program().workFolder().write("bin/sys_gui", "not a program");
        fixture_->toClipboard(Fixture::Move, "x", 2);
        fixture_->paste({yes});
        QVERIFY(QFile::exists(fixture_->left("x")));
        QVERIFY(!textView->isUp());
    }
};

QUARN_TEST_MAIN(tst_Mover)
#include "tst_mover.moc"
