#include "files/programnames.h"
#include "platform/zscreen.h"
#include "tests/launch/openfixture.h"
#include "tests/support/testmain.h"

#include <QFile>

class tst_Open : public OpenFixture
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
};

QUARN_TEST_MAIN(tst_Open)
#include "tst_open.moc"
