#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "tests/fileops/duringwork.h"
#include "tests/launch/openfixture.h"
#include "tests/support/testmain.h"

#include <QFile>

/// Plugins that are chosen in the submenu, or by the modifier with their number.
class tst_OpenWith : public OpenFixture
{
    Q_OBJECT

private slots:
    void init() { fixture_ = std::make_unique<CommandFixture>(); }
    void cleanup() { fixture_.reset(); }

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
};

QUARN_TEST_MAIN(tst_OpenWith)
#include "tst_openwith.moc"
