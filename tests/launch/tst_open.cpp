#include "assoc/plugintable.h"
#include "browser/filebrowserftab.h"
#include "files/programnames.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandfixture.h"
#include "tests/fileops/duringwork.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QFile>

#include <memory>

namespace
{

using Log = CommandLog;
using PhoneKey::Code;

QString error(const QString& text)
{
    return Log::message(LANG_ERROR, text, QStringLiteral("error"));
}

/// What starts a plugin of the plugins folder, and what starts one by its path.
QString folderLine(const QByteArray& name, const QString& file)
{
    const QByteArray folder = (work_folder + "/plugins/").toUtf8();
    return Log::shell(folder + name + '/' + name + " -d \"" + file.toUtf8() + "\"&");
}

QString pathLine(const QByteArray& command, const QString& file)
{
    return Log::shell(command + " \"" + file.toUtf8() + "\"&");
}

/// Ticks of the progress box until it goes.
int ticksLeft()
{
    int ticks = 0;
    for (; processView->isUp() && ticks < 100; ++ticks)
        processView->aniUpdate();
    return ticks;
}

} // namespace

class tst_Open : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture_ = std::make_unique<CommandFixture>(); }
    void cleanup() { fixture_.reset(); }

    void pickedFileStartsItsPluginInBothWays_data() { addPages(); }
    void pickedFileStartsItsPluginInBothWays()
    {
        QFETCH(int, page);
        start({"07 0 Viewer"}, {"001 07 PIC"}, {"a.pic"}, page);
        fixture_->highlight("a.pic");
        pressKey(Code::Return);
        const QString file = fixture_->folder(page) + "/a.pic";
        QCOMPARE(taken(),
                 (QStringList{Log::busy(), folderLine("Viewer", file), pathLine("Viewer", file)}));
        QVERIFY(!textView->isUp());
    }

    void pluginIsToldWhereTheWindowIs()
    {
        start({"07 0 Viewer"}, {"001 07 PIC"}, {"a.pic"});
        QList<QByteArray> places;
        fixture_->log().setShell([&places](const QByteArray& /*command*/) {
            places.append(qgetenv(ProgramNames::PlaceVariable));
            return 0;
        });
        pick("a.pic");
        QVERIFY(!ZScreen::placeOnDisplay().isEmpty());
        QCOMPARE(places, QList<QByteArray>(2, ZScreen::placeOnDisplay()));
        // It is not for what else is started.
        QVERIFY(!qEnvironmentVariableIsSet(ProgramNames::PlaceVariable));
    }

    void busyBoxLingersForTwentyFiveTicks()
    {
        start({"07 0 Viewer"}, {"001 07 PIC"}, {"a.pic"});
        pick("a.pic");
        QVERIFY(processView->isUp());
        awaitKeys(*processView);
        const TicksHeldBack held(*processView);
        pressKey('5');
        pressKey(Code::SoftRight);
        QVERIFY2(processView->isUp(), "a key closed the box");
        {
            kWidget expected;
            expected.showProcess("Processing..", QString(), 0, LANG_PLEASE_WAIT, 4,
                                 "res/img/open_with.png", kWidget::Plain);
            QVERIFY(looksLike(*processView, expected));
        }
        QVERIFY(processView->isUp());
        const int ticks = ticksLeft();
        QVERIFY2(ticks > 15 && ticks <= 25, qPrintable(QString::number(ticks)));
        QCOMPARE(keyReceiver(), fixture_->panel(1));
    }

    void notPickedIsIgnored()
    {
        start({"07 0 Viewer"}, {"001 07 PIC"}, {"a.pic"});
        fixture_->highlight("a.pic");
        fixture_->log().take();
        fixture_->window()->slot_ClickFile(false);
        QCOMPARE(taken(), QStringList());
        QVERIFY(!processView->isUp());
    }

    void everyEntryOfTheExtensionAndEveryPluginOfTheNumberIsUsed()
    {
        start({"03 0 Three", "09 1 /bin/nine -x", "03 1 other"},
              {"001 09 PIC", "001 03 PIC", "001 09 OTHER"}, {"a.pic"});
        pick("a.pic");
        const QString file = fixture_->left("a.pic");
        QCOMPARE(taken(), (QStringList{Log::busy(), folderLine("/bin/nine -x", file),
                                       pathLine("/bin/nine -x", file), folderLine("Three", file),
                                       pathLine("Three", file), folderLine("other", file),
                                       pathLine("other", file)}));
    }

    void twoEntriesOfOnePluginEachGiveFourCommands()
    {
        start({"01 0 One", "02 0 Two"}, {"001 01 PIC", "001 02 PIC"}, {"a.pic"});
        pick("a.pic");
        QCOMPARE(taken().size(), 1 + 4);
    }

    void pickedFileIsNotRunByALineWithoutAName()
    {
        start({"01 1", "01 0 ", "01 1    "}, {"001 01 PIC", "001 01"}, {"a.pic", "a."});
        pick("a.pic");
        QCOMPARE(taken(), QStringList(Log::busy()));
        pick("a.");
        QCOMPARE(taken(), (QStringList{Log::busy(),
                                       error("Don`t known how to open " + fixture_->left("a."))}));
    }

    void entryOfANumberThatNoPluginHasCountsAsHandled()
    {
        start({"01 0 One"}, {"001 55 PIC"}, {"a.pic"});
        pick("a.pic");
        QCOMPARE(taken(), QStringList(Log::busy()));
        QVERIFY(processView->isUp() && !textView->isUp());
    }

    void kindsThatAreNeverShownAreStartedAllTheSame()
    {
        start({"01 7 Seven"}, {"001 01 PIC"}, {"a.pic"});
        pick("a.pic");
        const QString file = fixture_->left("a.pic");
        QCOMPARE(taken(),
                 (QStringList{Log::busy(), folderLine("Seven", file), pathLine("Seven", file)}));
    }

    void unknownExtensionIsAnError_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("not in the table") << "a.xyz";
        QTest::newRow("only the beginning is") << "a.pi";
        QTest::newRow("only the end is") << "a.xpic";
        QTest::newRow("none") << "a";
        QTest::newRow("empty") << "a.";
    }

    void unknownExtensionIsAnError()
    {
        QFETCH(QString, name);
        start({"01 0 One"}, {"001 01 PIC"}, {name});
        pick(name);
        QCOMPARE(taken(), (QStringList{Log::busy(),
                                       error("Don`t known how to open " + fixture_->left(name))}));
        QVERIFY2(!processView->isUp(), "the busy box was not taken away");
        fixture_->dismissMessage();
    }

    void extensionIsTheOneBehindTheLastDotInUpperCase()
    {
        start({"01 0 One"}, {"001 01 PIC"}, {"a.b.PiC"});
        pick("a.b.PiC");
        QCOMPARE(taken().size(), 3);
    }

    void fileWithoutADotIsNeverOpenedByItsName()
    {
        start({"01 0 One"}, {"001 01 unknown", "001 01 UNKNOWN", "001 01 README"}, {"README"});
        pick("README");
        QCOMPARE(taken(), (QStringList{Log::busy(), error("Don`t known how to open " +
                                                          fixture_->left("README"))}));
    }

    void whatIsNoRegularFileIsNotExecutable_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"vanished", "fifo", "folder"})
            QTest::newRow(kind) << kind;
    }

    void whatIsNoRegularFileIsNotExecutable()
    {
        QFETCH(QString, kind);
        start({"01 0 One"}, {"001 01 PIC"}, {"a.pic"});
        fixture_->highlight("a.pic");
        const QString file = fixture_->left("a.pic");
        QVERIFY(QFile::remove(file));
        if (kind == "fifo")
            fixture_->files().makeFifo("left/a.pic");
        else if (kind == "folder")
            fixture_->files().makeFolder("left/a.pic");
        fixture_->log().take();
        fixture_->window()->slot_ClickFile(true);
        QCOMPARE(taken(), (QStringList{Log::busy(), error(file + " not executable")}));
        QVERIFY(!processView->isUp());
        fixture_->dismissMessage();
    }

    void nothingIsPickedOnTheAboutPage()
    {
        start({"01 0 One"}, {"001 01 PIC"}, {"a.pic"});
        fixture_->goTo(3);
        fixture_->log().take();
        fixture_->window()->slot_ClickFile(true);
        QCOMPARE(taken(), (QStringList{Log::busy(), error(" not executable")}));
    }

    void oddNamesReachTheShellAsTheyAre_data() { addOddNames(); }
    void oddNamesReachTheShellAsTheyAre()
    {
        QFETCH(QString, name);
        start({"01 0 One"}, {"001 01 PIC"}, {});
        QString odd = name + QStringLiteral(".pic");
        constexpr qsizetype LongestName = 255;
        while (odd.toUtf8().size() > LongestName)
            odd.remove(0, 1);
        fixture_->files().write("left/" + odd);
        relist();
        pick(odd);
        const QString file = fixture_->left(odd);
        QCOMPARE(taken(),
                 (QStringList{Log::busy(), folderLine("One", file), pathLine("One", file)}));
    }

    void chosenPluginIsStartedInItsOwnWay_data()
    {
        QTest::addColumn<int>("item");
        QTest::addColumn<QByteArray>("command");
        // Positions in the menu; one entry of the table is not shown in it.
        QTest::newRow("of the folder") << 0 << QByteArray();
        QTest::newRow("by its path") << 1 << QByteArray("/usr/bin/view --big");
    }

    void chosenPluginIsStartedInItsOwnWay()
    {
        QFETCH(int, item);
        QFETCH(QByteArray, command);
        install("Viewer");
        start({"01 0 Viewer", "02 2 Hidden", "05 1 /usr/bin/view --big"}, {}, {"a.xyz"});
        fixture_->highlight("a.xyz");
        const QString file = fixture_->left("a.xyz");
        chooseOpenWith(item);
        QCOMPARE(taken(), (QStringList{Log::busy(), item == 0 ? folderLine("Viewer", file)
                                                              : pathLine(command, file)}));
        QCOMPARE(fixture_->window()->openWithMenu->getActiveItemId(), item == 0 ? 0 : 2);
        QVERIFY(!textView->isUp());
        QVERIFY(ticksLeft() <= 25);
    }

    void choosingWorksOnTheEntryUnderTheCursorOfThePageShown()
    {
        start({"05 1 view"}, {}, {"a", "b"}, 2);
        fixture_->highlight("b");
        chooseOpenWith(0);
        QCOMPARE(taken(), (QStringList{Log::busy(), pathLine("view", fixture_->right("b"))}));
    }

    void pluginWhoseExecutableIsMissingIsAnError()
    {
        start({"01 0 Viewer"}, {}, {"a"});
        fixture_->highlight("a");
        chooseOpenWith(0);
        QCOMPARE(taken(), (QStringList{Log::busy(), error("Can not find Viewer")}));
        QVERIFY2(processView->isUp(), "the busy box goes by itself, later");
        QVERIFY(ticksLeft() <= 25);
        fixture_->dismissMessage();
    }

    void chosenPluginIsNotStartedOnAFolder()
    {
        start({"05 1 view"}, {}, {"sub/a"});
        fixture_->highlight("sub");
        chooseOpenWith(0);
        QCOMPARE(taken(),
                 (QStringList{Log::busy(), error(fixture_->left("sub") + " not executable")}));
        QVERIFY(processView->isUp());
        QVERIFY(ticksLeft() <= 25);
    }

    void modifierAndADigitStartThatPlugin_data()
    {
        QTest::addColumn<int>("digit");
        for (int digit = 1; digit <= 9; ++digit)
            QTest::addRow("%d", digit) << digit;
    }

    void modifierAndADigitStartThatPlugin()
    {
        QFETCH(int, digit);
        QStringList table;
        for (int i = 1; i <= 9; ++i)
            table.append(QStringLiteral("%1 1 view%2").arg(10 * i, 2).arg(i));
        start(table, {}, {"a"});
        fixture_->highlight("a");
        holdKey(Code::Modifier);
        pressKey('0' + digit);
        QCOMPARE(taken(), (QStringList{Log::busy(), pathLine("view" + QByteArray::number(digit),
                                                             fixture_->left("a"))}));
        QCOMPARE(fixture_->window()->pendingPlugin, 0);
        QVERIFY(fixture_->window()->modKeyHeld);
        releaseKey(Code::Modifier);
        QVERIFY(!fixture_->window()->modKeyHeld);
    }

    void digitsOpenOneAfterTheOtherInOneHold()
    {
        start({"01 1 one", "02 1 two", "03 0 Three", "04 1 four", "05 1 five"}, {}, {"a"});
        fixture_->highlight("a");
        const QString file = fixture_->left("a");
        holdKey(Code::Modifier);
        for (const auto& [digit, opened] :
             {std::pair('3', error("Can not find Three")), std::pair('5', pathLine("five", file)),
              std::pair('9', error("Can not find plugin 9")), std::pair('1', pathLine("one", file)),
              std::pair('1', pathLine("one", file))}) {
            pressKey(digit);
            QCOMPARE(taken(), (QStringList{Log::busy(), opened}));
            QCOMPARE(fixture_->window()->pendingPlugin, 0);
            waitOut();
        }
        releaseKey(Code::Modifier);
        pressKey('1');
        QCOMPARE(taken(), QStringList());
    }

    void modifierReleasedWhileADigitOpensIsReleased_data()
    {
        QTest::addColumn<int>("digit");
        QTest::newRow("while the shell starts the plugin") << int('1');
        QTest::newRow("while the error comes up") << int('2');
    }

    void modifierReleasedWhileADigitOpensIsReleased()
    {
        QFETCH(int, digit);
        start({"01 1 one", "02 0 Two"}, {}, {"a"});
        fixture_->highlight("a");
        fixture_->log().take();
        holdKey(Code::Modifier);
        fixture_->log().setShell([](const QByteArray&) {
            releaseKey(Code::Modifier);
            return 0;
        });
        const DuringWork release([] { return textView->isUp(); },
                                 [] { releaseKey(Code::Modifier); });
        pressKey(digit);
        QCOMPARE(release.hasHappened(), digit == '2');
        QVERIFY(!fixture_->window()->modKeyHeld);
        waitOut();
        pressKey('1');
        QCOMPARE(taken(), QStringList());
    }

    void modifierReleasedAtTheErrorOfADigitIsReleased()
    {
        start({"01 0 One"}, {}, {"a"});
        fixture_->highlight("a");
        holdKey(Code::Modifier);
        pressKey('1');
        awaitKeys(*textView);
        QVERIFY(fixture_->window()->modKeyHeld);
        releaseKey(Code::Modifier);
        QVERIFY(!fixture_->window()->modKeyHeld);
        waitOut();
        pressKey('1');
        QCOMPARE(taken(), QStringList());
    }

    void modifierIsNotHeldBeyondThePluginsWindow()
    {
        start({"01 1 one"}, {}, {"a"});
        fixture_->highlight("a");
        fixture_->log().take();
        QWidget plugin;
        plugin.show();
        activate(plugin);
        activate(*ZScreen::instance()->window());
        holdKey(Code::Modifier);
        fixture_->log().setShell([&plugin](const QByteArray&) {
            activate(plugin);
            return 0;
        });
        pressKey('1');
        QVERIFY(!fixture_->window()->modKeyHeld);
        activate(*ZScreen::instance()->window());
        waitOut();
        taken();
        // The release went to that window.
        pressKey('1');
        QCOMPARE(taken(), QStringList());
    }

    void modifierCountsNoMoreAfterTheMenuHasOpened()
    {
        start({"01 1 one"}, {}, {"a"});
        fixture_->highlight("a");
        holdKey(Code::Modifier);
        chooseOpenWith(0);
        QVERIFY(!fixture_->window()->modKeyHeld);
        waitOut();
        pressKey('1');
        QCOMPARE(taken(), QStringList());
        releaseKey(Code::Modifier);
    }

    void pasteAfterADigitInTheSameHoldCopiesFileByFile()
    {
        start({"01 1 one"}, {}, {"a"});
        QVERIFY(QFile::remove(fixture_->right("a")));
        fixture_->toClipboard(CommandFixture::Copy, "a", 2);
        holdKey(Code::Modifier);
        pressKey('1');
        waitOut();
        CommandFixture::choose(CommandFixture::Paste);
        releaseKey(Code::Modifier);
        const QStringList log = fixture_->log().take();
        QCOMPARE(log.filter("Completed: 0% (0 b/1 b)").size(), 2);
        QVERIFY(log.filter("shell").isEmpty());
        QCOMPARE(fixture_->files().read("right/a"), QByteArray("a"));
    }

    void numberPastTheTableIsAnError_data()
    {
        QTest::addColumn<int>("digit");
        QTest::newRow("just past it") << 3;
        QTest::newRow("far past it") << 9;
    }

    void numberPastTheTableIsAnError()
    {
        QFETCH(int, digit);
        start({"01 1 one", "02 1 two"}, {}, {"a"});
        fixture_->highlight("a");
        holdKey(Code::Modifier);
        pressKey('0' + digit);
        releaseKey(Code::Modifier);
        QCOMPARE(
            taken(),
            (QStringList{Log::busy(), error(QStringLiteral("Can not find plugin %1").arg(digit))}));
        QVERIFY(ticksLeft() <= 25);
        fixture_->dismissMessage();
    }

    void nothingChosenYetIsAnErrorToo()
    {
        start({"01 1 one"}, {}, {"a"});
        fixture_->highlight("a");
        fixture_->log().take();
        fixture_->window()->slot_OpenWith();
        QCOMPARE(taken(), (QStringList{Log::busy(), error("Can not find plugin 0")}));
    }

    void numberOfAnEntryThatIsNotShownStartsNothing()
    {
        start({"01 2 two", "02 9 nine"}, {}, {"a"});
        fixture_->highlight("a");
        for (const int digit : {1, 2}) {
            fixture_->window()->pendingPlugin = digit;
            fixture_->log().take();
            fixture_->window()->slot_OpenWith();
            QCOMPARE(taken(), QStringList(Log::busy()));
        }
        QVERIFY(!textView->isUp());
    }

    void storedNumberIsUsedOnceAndOnlyByChoosing()
    {
        start({"01 1 one", "02 1 two"}, {"001 01 PIC"}, {"a.pic"});
        const QString file = fixture_->left("a.pic");
        fixture_->window()->pendingPlugin = 2;
        pick("a.pic");
        QCOMPARE(fixture_->window()->pendingPlugin, 2);
        processView->init();
        fixture_->log().take();
        fixture_->window()->slot_OpenWith();
        QCOMPARE(taken(), (QStringList{Log::busy(), pathLine("two", file)}));
        QCOMPARE(fixture_->window()->pendingPlugin, 0);
        processView->init();
        fixture_->log().take();
        chooseOpenWith(0);
        QCOMPARE(taken(), (QStringList{Log::busy(), pathLine("one", file)}));
    }

    void pluginGetsTheOptionAndTheFile()
    {
        const QString note = "plugins/Viewer/noted";
        fixture_->program().workFolder().write(
            "plugins/Viewer/Viewer", "#!/bin/sh\ncd \"${0%/*}\"\nprintf '%s\\n' \"$@\" > noting\n"
                                     "mv noting noted\n");
        fixture_->program().workFolder().setMode("plugins/Viewer/Viewer", 0755);
        const QString name = QString::fromUtf8("ein Bild Я.pic");
        start({"01 0 Viewer"}, {"001 01 PIC"}, {name});
        fixture_->log().setShell(systemShell);
        pick(name);
        QTRY_VERIFY(fixture_->program().workFolder().exists(note));
        QCOMPARE(QString::fromUtf8(fixture_->program().workFolder().read(note)),
                 "-d\n" + fixture_->left(name) + '\n');
    }

private:
    /// The program with tables, files in both panels and a page shown; no command is really run.
    void start(const QStringList& pluginLines, const QStringList& mimeLines,
               const QStringList& names, int page = 1)
    {
        const ScratchFolder& work = fixture_->program().workFolder();
        work.write("fm_plugins.cfg", pluginLines.join('\n').toUtf8());
        work.write("mime_types.cfg", mimeLines.join('\n').toUtf8());
        for (const int each : {1, 2})
            fixture_->write(each, names);
        fixture_->start(page);
        fixture_->log().setShell([](const QByteArray&) { return 0; });
    }

    void install(const QString& name)
    {
        fixture_->program().workFolder().write("plugins/" + name + '/' + name);
    }

    void relist()
    {
        fixture_->panel(1)->setDir(fixture_->panel(1)->curPath, 0);
        fixture_->log().take();
    }

    void pick(const QString& name)
    {
        fixture_->highlight(name);
        fixture_->log().take();
        pressKey(Code::Return);
    }

    /// Chooses an item of the submenu by keys.
    void chooseOpenWith(int position)
    {
        fixture_->log().take();
        pressKey(Code::SoftLeft);
        pressKey(Code::Return);
        for (int i = 0; i < position; ++i)
            pressKey(Code::Down);
        pressKey(Code::Return);
    }

    /// Lets the busy box go and closes the message, if there is one.
    void waitOut()
    {
        ticksLeft();
        if (textView->isUp())
            fixture_->dismissMessage();
        fixture_->log().take();
    }

    /// What was done, but for boxes that were taken away.
    QStringList taken()
    {
        QStringList lines = fixture_->log().take();
        lines.removeAll(Log::cleared());
        return lines;
    }

    std::unique_ptr<CommandFixture> fixture_;
};

QUARN_TEST_MAIN(tst_Open)
#include "tst_open.moc"
