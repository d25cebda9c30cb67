#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/qcopchannel.h"
#include "platform/znavtabwidget.h"
#include "platform/zoptionsmenu.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "tests/fileops/commandfixture.h"
#include "tests/platform/selfrun.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"
#include "widgets/textinput.h"

#include <QSignalSpy>

namespace
{

using Log = CommandLog;
using Fixture = CommandFixture;

void addCommands()
{
    QTest::addColumn<QString>("command");
    for (const char* command : {"delete", "replace", "move", "rename", "make folder"})
        QTest::newRow(command) << QString::fromLatin1(command);
}

/// Another program's message, waited for until it has been heeded.
void sendShow()
{
    const QSignalSpy received(quarn->findChild<QCopChannel*>(), &QCopChannel::received);
    QVERIFY(QCopChannel::send("Quarn", "show()"));
    QTRY_COMPARE(received.size(), 1);
}

QString exitQuestion()
{
    return Log::question(LANG_EXIT, LANG_EXIT_SURE, "warning");
}

/// One command on the entry "a", from the panel's key to what it waits for, the user.
class WaitingCommand
{
public:
    explicit WaitingCommand(const QString& name) : name_(name)
    {
        fixture_.write(1, {"a", "b"});
        if (name_ == "replace")
            fixture_.files().write("right/a", "old");
        fixture_.start();
        if (isPaste())
            fixture_.toClipboard(name_ == "move" ? Fixture::Move : Fixture::Copy, "a", 2);
        else
            fixture_.highlight("a");
    }

    ~WaitingCommand()
    {
        [this] { QCOMPARE(fixture_.log().unused(), 0); }();
    }
    WaitingCommand(const WaitingCommand&) = delete;
    WaitingCommand& operator=(const WaitingCommand&) = delete;

    Fixture& fixture() { return fixture_; }
    bool isPaste() const { return name_ == "move" || name_ == "replace"; }
    bool isDialog() const { return name_ == "rename" || name_ == "make folder"; }

    /// Gives the command; `meanwhile` happens while it waits, in a dialog behind the first typed
    /// letter. Then the user agrees, unless it is told to be over.
    void run(const CommandLog::Action& meanwhile, bool agree = true)
    {
        fixture_.log().expect({[this, meanwhile, agree] {
            if (isDialog())
                typeText("z");
            meanwhile();
            if (agree)
                yes();
        }});
        give();
    }

    void give()
    {
        if (isPaste())
            Fixture::choose(Fixture::Paste);
        else if (name_ == "delete")
            Fixture::choose(Fixture::Delete);
        else if (name_ == "rename")
            Fixture::choose(Fixture::Rename);
        else
            Fixture::choose(Fixture::MakeFolder);
    }

    /// Whether what it waits for is on top of the screen and takes keys.
    bool isAsking() const
    {
        const TextInput* input = fixture_.window()->textInput;
        return isDialog() ? input->isRunning() && ZScreen::instance()->active() == input
                          : textView->isWaiting() && hasKeys(*textView);
    }

    bool isDone() const
    {
        const ScratchFolder& files = fixture_.files();
        if (name_ == "delete")
            return !files.exists("left/a");
        if (name_ == "replace")
            return files.read("right/a") == "a";
        if (name_ == "move")
            return files.exists("right/a") && !files.exists("left/a");
        return files.exists("left/z") && files.exists("left/a") == (name_ == "make folder");
    }

    bool isUntouched() const
    {
        const ScratchFolder& files = fixture_.files();
        return files.exists("left/a") && !files.exists("left/z") &&
               files.read("right/a") == (name_ == "replace" ? "old" : "");
    }

    /// Nothing is left on the screen but the main window, and the panel has the keys.
    void checkOver() const
    {
        QVERIFY(!textView->isUp() && !fixture_.window()->textInput->isVisible());
        QCOMPARE(ZScreen::instance()->active(), fixture_.window());
        QCOMPARE(keyReceiver(), fixture_.window()->activePanel());
    }

private:
    Fixture fixture_;
    QString name_;
};

} // namespace

/// What happens in a process that is asked to quit, one function a process.
class Quitting : public QObject
{
    Q_OBJECT

private slots:
    void commandThatWaitsDoesNothing_data() { addCommands(); }
    void commandThatWaitsDoesNothing()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        waiting.run(&ZApplication::quit, false);
        QVERIFY(waiting.isUntouched());
        waiting.checkOver();
    }

    void remainingQuestionsAreAnsweredNo()
    {
        Fixture fixture;
        fixture.write(1, {"a", "b", "c"});
        fixture.start();
        fixture.mark({"a", "b", "c"});
        fixture.log().expect({yes, &ZApplication::quit});
        Fixture::choose(Fixture::Delete);
        QStringList asked;
        for (const char* name : {"a", "b", "c"})
            asked.append(Log::question(LANG_DELETE_FILE, fixture.left(name), "delete"));
        QCOMPARE(fixture.log().take().filter("question"), asked);
        QVERIFY(!fixture.files().exists("left/a"));
        QVERIFY(fixture.files().exists("left/b") && fixture.files().exists("left/c"));
        QVERIFY(!textView->isUp());
    }

    void exitFromATextDialogCancelsIt()
    {
        WaitingCommand waiting("rename");
        waiting.fixture().log().expect({[] {
                                            typeText("z");
                                            requestClose();
                                        },
                                        yes});
        waiting.give();
        QVERIFY(ZApplication::isQuitting());
        QVERIFY(waiting.isUntouched());
        QVERIFY(waiting.fixture().log().take().contains(exitQuestion()));
    }
};

class tst_OpsInLoops : public QObject
{
    Q_OBJECT

private slots:
    void callToShowLeavesTheBoxOnTop_data() { addCommands(); }
    void callToShowLeavesTheBoxOnTop()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        waiting.run([&waiting] {
            sendShow();
            QVERIFY(waiting.isAsking());
        });
        QVERIFY(waiting.isDone());
        waiting.checkOver();
    }

    void windowThatIsHiddenMeanwhileComesBackBelowTheBox_data() { addCommands(); }
    void windowThatIsHiddenMeanwhileComesBackBelowTheBox()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        waiting.run([&waiting] {
            quarn->hide();
            QVERIFY(waiting.isAsking());
            sendShow();
            QVERIFY(quarn->isVisible());
            QVERIFY(waiting.isAsking());
        });
        QVERIFY(waiting.isDone());
        waiting.checkOver();
    }

    void commandEndsWhileTheWindowIsHidden_data() { addCommands(); }
    void commandEndsWhileTheWindowIsHidden()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        waiting.run([] { quarn->hide(); });
        QVERIFY(waiting.isDone());
        QVERIFY(!quarn->isVisible() && !textView->isUp());
        sendShow();
        waiting.checkOver();
    }

    void closingTheWindowDuringAQuestionIsNotHeeded_data()
    {
        QTest::addColumn<QString>("command");
        for (const char* command : {"delete", "replace", "move"})
            QTest::newRow(command) << QString::fromLatin1(command);
    }

    void closingTheWindowDuringAQuestionIsNotHeeded()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        waiting.run([&waiting] {
            const QString text = textView->shownText();
            requestClose();
            QVERIFY(waiting.isAsking());
            QCOMPARE(textView->shownText(), text);
        });
        QVERIFY(!waiting.fixture().log().take().contains(exitQuestion()));
        QVERIFY(waiting.isDone());
        QVERIFY(!ZApplication::isQuitting());
        waiting.checkOver();
    }

    void closingTheWindowDuringATextDialogAsksAboveIt_data()
    {
        QTest::addColumn<QString>("command");
        for (const char* command : {"rename", "make folder"})
            QTest::newRow(command) << QString::fromLatin1(command);
    }

    void closingTheWindowDuringATextDialogAsksAboveIt()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        bool cameBack = false;
        waiting.fixture().log().expect({[&] {
                                            typeText("z");
                                            requestClose();
                                            cameBack = waiting.isAsking();
                                            yes();
                                        },
                                        [&] {
                                            QVERIFY(hasKeys(*textView));
                                            no();
                                        }});
        waiting.give();
        QVERIFY(cameBack);
        QVERIFY(waiting.fixture().log().take().contains(exitQuestion()));
        QVERIFY(waiting.isDone());
        QVERIFY(!ZApplication::isQuitting());
        waiting.checkOver();
    }

    void menusMayBeRebuiltMeanwhile_data() { addCommands(); }
    void menusMayBeRebuiltMeanwhile()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        FM* window = waiting.fixture().window();
        const qsizetype menus = menuCount();
        waiting.run([&waiting, window] {
            const QPointer<ZOptionsMenu> options = window->optionsMenu;
            const QPointer<ZOptionsMenu> submenu = window->copyMenu;
            window->createSoftKeysFtab();
            // But for a paste, the item that was chosen is among those that go.
            QTRY_VERIFY(options.isNull() && submenu.isNull());
            QVERIFY(waiting.isAsking());
        });
        QVERIFY(waiting.isDone());
        waiting.checkOver();
        QTRY_COMPARE(menuCount(), menus);
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(ZScreen::instance()->active(), window->optionsMenu);
        pressKey(PhoneKey::SoftRight);
        QVERIFY(!window->copyMenu->isItemEnabled(Fixture::Paste));
    }

    void panelsMayBeListedAnewMeanwhile_data() { addCommands(); }
    void panelsMayBeListedAnewMeanwhile()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        Fixture& fixture = waiting.fixture();
        waiting.run([&fixture] {
            for (const int page : {1, 2})
                fixture.panel(page)->setDir(fixture.panel(page)->curPath, 0);
        });
        QVERIFY(waiting.isDone());
        waiting.checkOver();
    }

    void commandStaysWithItsEntryAndFolderWherePanelsGo_data() { addCommands(); }
    void commandStaysWithItsEntryAndFolderWherePanelsGo()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        Fixture& fixture = waiting.fixture();
        fixture.files().write("other/a");
        waiting.run([&fixture] {
            for (const int page : {1, 2})
                fixture.panel(page)->setDir(fixture.files().path("other"), 1);
        });
        QVERIFY(waiting.isDone());
        QVERIFY(fixture.files().exists("other/a") && !fixture.files().exists("other/z"));
        waiting.checkOver();
    }

    void aboutPageMayComeUpMeanwhile_data() { addCommands(); }
    void aboutPageMayComeUpMeanwhile()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        FM* window = waiting.fixture().window();
        waiting.run([window] { window->tabWidget()->setCurrentPage(2); });
        QVERIFY(waiting.isDone());
        QCOMPARE(window->activePage(), int(FM::AboutPage));
        QVERIFY(!textView->isUp());
    }

    void pasteGoesOnWithItsEntriesWhenTheClipboardIsFilledAnew()
    {
        Fixture fixture;
        fixture.write(1, {"a", "b", "c"});
        FM* window = fixture.start();
        fixture.mark({"a", "b", "c"});
        Fixture::choose(Fixture::Move);
        fixture.goTo(2);
        fixture.log().expect({[window] {
                                  window->clipboardList.clear();
                                  window->slot_Copy();
                                  yes();
                              },
                              no, yes});
        Fixture::choose(Fixture::Paste);
        QCOMPARE(fixture.program().rows(1), (QStringList{"..", "b"}));
        QCOMPARE(fixture.program().rows(2), (QStringList{"..", "a", "c"}));
        QCOMPARE(window->clipboardList, QStringList(fixture.right("..")));
    }

    void modifierReleasedInABoxIsReleased_data() { addCommands(); }
    void modifierReleasedInABoxIsReleased()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        FM* window = waiting.fixture().window();
        holdKey(PhoneKey::Modifier);
        waiting.run([&waiting, window] {
            repeatKey(PhoneKey::Modifier);
            QVERIFY(window->modKeyHeld && waiting.isAsking());
            releaseKey(PhoneKey::Modifier);
            QVERIFY(!window->modKeyHeld && waiting.isAsking());
        });
        QVERIFY(waiting.isDone());
        waiting.checkOver();
    }

    void modifierDecidesOnTheWayOfCopyingAfterTheQuestion_data()
    {
        QTest::addColumn<bool>("released");
        QTest::newRow("released during the question") << true;
        QTest::newRow("held all the time") << false;
    }

    void modifierDecidesOnTheWayOfCopyingAfterTheQuestion()
    {
        QFETCH(bool, released);
        WaitingCommand waiting("replace");
        holdKey(PhoneKey::Modifier);
        waiting.run([released] {
            if (released)
                releaseKey(PhoneKey::Modifier);
        });
        QVERIFY(waiting.isDone());
        QCOMPARE(waiting.fixture().log().take().filter("shell | cp ").size(), released ? 1 : 0);
        releaseKey(PhoneKey::Modifier);
        QVERIFY(!waiting.fixture().window()->modKeyHeld);
    }

    void keysOfTheWindowDoNothingMeanwhile_data() { addCommands(); }
    void keysOfTheWindowDoNothingMeanwhile()
    {
        QFETCH(QString, command);
        WaitingCommand waiting(command);
        const FM* window = waiting.fixture().window();
        const int page = window->activePage();
        // To a field the key that leads a folder up is the clear key.
        const int up = waiting.isDialog() ? PhoneKey::PageUp : PhoneKey::FolderUp;
        waiting.run([&] {
            for (const int code :
                 {int(PhoneKey::Hide), up, int(PhoneKey::PageDown), int(PhoneKey::Music)})
                pressKey(code);
            QVERIFY(waiting.isAsking());
            QVERIFY(window->isVisible());
            QCOMPARE(window->activePage(), page);
            QCOMPARE(window->panel(1)->curPath, waiting.fixture().left());
        });
        waiting.checkOver();
    }

    void keysPressedWhileFoldersAreRemovedDoNothing()
    {
        Fixture fixture;
        fixture.write(1, {"f/in", "g/in"});
        fixture.start();
        fixture.mark({"f", "g"});
        fixture.log().setShell(pressingKeys(1));
        fixture.log().expect({yes, yes});
        Fixture::choose(Fixture::Delete);
        checkUntouched(fixture, 1);
        QCOMPARE(fixture.program().rows(1), QStringList(".."));
    }

    void keysPressedWhileEntriesAreMovedDoNothing()
    {
        Fixture fixture;
        fixture.write(1, {"a", "b"});
        fixture.start();
        // It shows a box of its own, outside the program.
        fixture.installMover();
        fixture.mark({"a", "b"});
        Fixture::choose(Fixture::Move);
        fixture.goTo(2);
        fixture.log().setShell(pressingKeys(2));
        fixture.log().expect({yes, yes});
        Fixture::choose(Fixture::Paste);
        checkUntouched(fixture, 2);
    }

    void messageStaysOnTopWhenTheWindowIsCalled()
    {
        Fixture fixture;
        showMessage(fixture);
        fixture.window()->hide();
        sendShow();
        QVERIFY(fixture.window()->isVisible() && hasKeys(*textView));
        QCOMPARE(textView->shownText(), LANG_UNABLE_DELETE);
        fixture.dismissMessage();
    }

    void messageMakesWayForTheExitQuestion()
    {
        Fixture fixture;
        showMessage(fixture);
        fixture.log().expect({no});
        requestClose();
        QCOMPARE(fixture.log().take(), (QStringList{Log::cleared(), exitQuestion()}));
        QVERIFY(!textView->isUp() && !ZApplication::isQuitting());
        QCOMPARE(keyReceiver(), fixture.panel(1));
    }

    void messageOutlivesTheMenus()
    {
        Fixture fixture;
        showMessage(fixture);
        const QPointer<ZOptionsMenu> before = fixture.window()->optionsMenu;
        fixture.window()->createSoftKeysFtab();
        QTRY_VERIFY(before.isNull());
        QVERIFY(hasKeys(*textView));
        fixture.dismissMessage();
    }

    void modifierReleasedInAMessageIsReleased()
    {
        Fixture fixture;
        holdKeyAtMessage(fixture);
        repeatKey(PhoneKey::Modifier);
        QVERIFY(fixture.window()->modKeyHeld && hasKeys(*textView));
        releaseKey(PhoneKey::Modifier);
        QVERIFY(!fixture.window()->modKeyHeld);
        fixture.dismissMessage();
    }

    void keyThatDismissesAMessageDoesNothingElse_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("star") << int('*');
        QTest::newRow("zero") << int('0');
        QTest::newRow("hide") << int(PhoneKey::Hide);
        QTest::newRow("left soft key") << int(PhoneKey::SoftLeft);
        QTest::newRow("folder up") << int(PhoneKey::FolderUp);
    }

    void keyThatDismissesAMessageDoesNothingElse()
    {
        QFETCH(int, code);
        Fixture fixture;
        showMessage(fixture);
        pressKey(code);
        QVERIFY(!textView->isUp());
        QVERIFY(fixture.window()->isVisible() && !fixture.window()->isFullScreenMode());
        QCOMPARE(ZScreen::instance()->active(), fixture.window());
        QVERIFY(!fixture.window()->getActiveMultiStat());
        QCOMPARE(fixture.panel(1)->curPath, fixture.left());
        QCOMPARE(fixture.log().take(), QStringList());
    }

    void quitEndsEveryWaitWithNo_data()
    {
        QTest::addColumn<QString>("scenario");
        for (const char* command : {"delete", "replace", "move", "rename", "make folder"})
            QTest::newRow(command) << QStringLiteral("commandThatWaitsDoesNothing:") + command;
        QTest::newRow("several questions") << "remainingQuestionsAreAnsweredNo";
        QTest::newRow("exit from a text dialog") << "exitFromATextDialogCancelsIt";
    }

    void quitEndsEveryWaitWithNo()
    {
        QFETCH(QString, scenario);
        const SelfRun run = SelfRun::with({"quit", scenario}, {});
        QVERIFY2(run.status == 0, run.output + run.errors);
        QVERIFY2(run.output.contains("0 failed"), run.output);
    }

private:
    /// A shell during whose work the user presses keys of a panel, which wait to be handled.
    static Shell pressingKeys(int page)
    {
        return [page](const QByteArray& command) {
            for (const int code : {int(PhoneKey::FolderUp), int('0')}) {
                for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
                    QCoreApplication::postEvent(
                        quarn->panel(page), new QKeyEvent(type, toolkitKey(code), Qt::NoModifier));
            }
            return systemShell(command);
        };
    }

    static void checkUntouched(Fixture& fixture, int page)
    {
        QCOMPARE(fixture.panel(page)->curPath, fixture.folder(page));
        QVERIFY(!fixture.panel(page)->isMultiSelect());
        QCOMPARE(ZScreen::instance()->active(), fixture.window());
    }

    /// Leaves the message of a deletion that failed on the screen.
    static void showMessage(Fixture& fixture)
    {
        fixture.write(1, {"a"});
        fixture.start();
        failToDelete(fixture);
    }

    static void holdKeyAtMessage(Fixture& fixture)
    {
        fixture.write(1, {"a"});
        fixture.start();
        holdKey(PhoneKey::Modifier);
        failToDelete(fixture);
    }

    static void failToDelete(Fixture& fixture)
    {
        fixture.files().setMode("left", 0555);
        fixture.highlight("a");
        fixture.log().expect({yes});
        Fixture::choose(Fixture::Delete);
        fixture.log().take();
        QTRY_VERIFY(hasKeys(*textView) && !textView->isWaiting());
        QCOMPARE(textView->shownText(), LANG_UNABLE_DELETE);
    }
};

int main(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "quit") == 0)
        return runTest<Quitting>(argc - 1, argv + 1);
    return runTest<tst_OpsInLoops>(argc, argv);
}
#include "tst_opsinloops.moc"
