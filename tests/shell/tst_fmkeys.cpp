#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "platform/qcopchannel.h"
#include "platform/znavtabwidget.h"
#include "shell/fm.h"
#include "tests/support/debuglines.h"
#include "tests/support/keys.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QApplication>
#include <QSignalSpy>

#include <memory>

namespace
{

using PhoneKey::Code;

/// A music player that notes what it was started with.
const char PlayerScript[] = "#!/bin/sh\n"
                            "cd \"${0%/*}\"\n"
                            "printf '%s\\n' \"$0\" \"$@\" > noting\n"
                            "mv noting noted\n";
const QString Player = QStringLiteral("plugins/LyraPlayer/LyraPlayer");
const QString Noted = QStringLiteral("plugins/LyraPlayer/noted");

void pressKeys(std::initializer_list<int> codes)
{
    for (const int code : codes)
        pressKey(code);
}

/// Presses a key while the modifier is held.
void pressModified(int code)
{
    holdKey(Code::Modifier);
    pressKey(code);
    releaseKey(Code::Modifier);
}

/// Presses keys that put the exit question, answers it no. Returns whether it was put.
bool asksToExit(const std::function<void()>& press)
{
    bool asked = false;
    once([] { return textView->isWaiting() && hasKeys(*textView); },
         [&asked] {
             asked = true;
             pressKey(Code::SoftRight);
         });
    press();
    return asked;
}

bool isErrorAboutThePlayer(kWidget& box)
{
    kWidget expected;
    expected.showText(LANG_ERROR, "Please install LyraPlayer", 4, "res/img/error.png",
                      kWidget::Message);
    return looksLike(box, expected);
}

} // namespace

class tst_FmKeys : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        program_ = std::make_unique<Program>();
        for (const char* name : {"first/a", "first/b", "second/c", "second/d"})
            program_->files().write(name);
        path_tab1 = program_->files().path("first");
        path_tab2 = program_->files().path("second");
        window_ = program_->start();
    }

    void cleanup() { program_.reset(); }

    void modifierIsHeldUntilItIsReleased()
    {
        holdKey(Code::Modifier);
        QVERIFY(window_->modKeyHeld);
        releaseKey('5');
        releaseKey(Code::Hide);
        QVERIFY(window_->modKeyHeld);
        releaseKey(Code::Modifier);
        QVERIFY(!window_->modKeyHeld);
    }

    void modifierStaysHeldWhileItRepeats()
    {
        holdKey(Code::Modifier);
        for (int i = 0; i < 10; ++i) {
            repeatKey(Code::Modifier);
            QVERIFY(window_->modKeyHeld);
        }
        releaseKey(Code::Modifier);
        QVERIFY(!window_->modKeyHeld);
    }

    void modifierIsHeldAcrossABox_data()
    {
        QTest::addColumn<bool>("releasedInBox");
        QTest::newRow("released while the box is up") << true;
        QTest::newRow("released afterwards") << false;
    }

    void modifierIsHeldAcrossABox()
    {
        QFETCH(bool, releasedInBox);
        holdKey(Code::Modifier);
        processView->showProcess("Work", QString(), 0, QString(), 0, QString(), kWidget::Plain);
        awaitKeys(*processView);
        repeatKey(Code::Modifier);
        QVERIFY(window_->modKeyHeld);
        if (releasedInBox)
            releaseKey(Code::Modifier);
        QCOMPARE(window_->modKeyHeld, !releasedInBox);
        processView->init();
        repeatKey(releasedInBox ? int(Code::Down) : int(Code::Modifier));
        QCOMPARE(window_->modKeyHeld, !releasedInBox);
        releaseKey(Code::Modifier);
        QVERIFY(!window_->modKeyHeld);
    }

    void modifierIsNotHeldBeyondTheWindow()
    {
        QWidget other;
        other.show();
        activate(other);
        activate(*ZScreen::instance()->window());
        holdKey(Code::Modifier);
        QVERIFY(window_->modKeyHeld);
        // Its release goes there and is never seen here.
        activate(other);
        QVERIFY(!window_->modKeyHeld);
        activate(*ZScreen::instance()->window());
        holdKey(Code::Modifier);
        QVERIFY2(window_->modKeyHeld, "held again");
        releaseKey(Code::Modifier);
    }

    void hideKeyHidesTheWindowAndAsksNothing()
    {
        pressKey(Code::Hide);
        QVERIFY(!window_->isVisible());
        QVERIFY(!textView->isUp());
        QVERIFY(!ZApplication::isQuitting());
        window_->show();
        QCOMPARE(keyReceiver(), program_->panel(1));
    }

    void modifierAndHideAskToExit()
    {
        QVERIFY(asksToExit([] {
            holdKey(Code::Modifier);
            pressKey(Code::Hide);
        }));
        QVERIFY(window_->isVisible());
        QVERIFY(!window_->modKeyHeld);
        // Held all the time, but no longer counting.
        pressKey(Code::Hide);
        QVERIFY(!window_->isVisible());
    }

    void modifierAndHideAskToExitAfterADigitInTheSameHold()
    {
        openByDigitInAHold();
        QVERIFY(asksToExit([] { pressKey(Code::Hide); }));
        QVERIFY(window_->isVisible());
        QVERIFY(!window_->modKeyHeld);
        releaseKey(Code::Modifier);
    }

    void modifierAndHashShowATestBoxAfterADigitInTheSameHold()
    {
        openByDigitInAHold();
        const DebugLines lines;
        pressKey('#');
        QVERIFY(lines.all().isEmpty());
        QCOMPARE(processView->shownText(), QStringLiteral("Please wait"));
        QVERIFY(!window_->modKeyHeld);
        releaseKey(Code::Modifier);
        processView->init();
    }

    void modifierAndPlayShowThePlayerAfterADigitInTheSameHold()
    {
        installPlayer();
        const QCopChannel channel("LyraPlayer");
        QSignalSpy received(&channel, &QCopChannel::received);
        openByDigitInAHold();
        pressKey(Code::Music);
        QTRY_COMPARE(received.size(), 1);
        QCOMPARE(received.first().at(0).toByteArray(), QByteArray("show"));
        QVERIFY(!window_->modKeyHeld);
        releaseKey(Code::Modifier);
    }

    void otherKeysMeanNothingAfterADigitInTheSameHold()
    {
        openByDigitInAHold();
        const DebugLines lines;
        pressKeys({'*', '0', 'q', Code::MusicPrevious});
        QVERIFY(lines.all().isEmpty());
        QVERIFY(!full_scr && !window_->getActiveMultiStat() && !textView->isUp());
        QVERIFY(window_->modKeyHeld);
        releaseKey(Code::Modifier);
        QVERIFY(!window_->modKeyHeld);
    }

    void modifierReleasedDuringTheExitQuestionIsReleased()
    {
        once([] { return textView->isWaiting() && hasKeys(*textView); },
             [] {
                 releaseKey(Code::Modifier);
                 pressKey(Code::SoftRight);
             });
        holdKey(Code::Modifier);
        pressKey(Code::Hide);
        QVERIFY(!window_->modKeyHeld);
    }

    void starTogglesFullScreen()
    {
        const int tabsTop = window_->tabWidget()->mapTo(window_, QPoint()).y();
        pressKey('*');
        QVERIFY(full_scr && window_->isFullScreenMode());
        QTRY_COMPARE(window_->tabWidget()->mapTo(window_, QPoint()).y(), 0);
        pressKey('*');
        QVERIFY(!full_scr && !window_->isFullScreenMode());
        QTRY_COMPARE(window_->tabWidget()->mapTo(window_, QPoint()).y(), tabsTop);
        QVERIFY(!program_->workFolder().exists("fm.cfg"));
    }

    void hashTogglesTheInformationLineOfBothPanels_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("on the first page") << 1;
        QTest::newRow("on the second page") << 2;
        QTest::newRow("on the about page") << 3;
    }

    void hashTogglesTheInformationLineOfBothPanels()
    {
        QFETCH(int, page);
        goTo(page);
        program_->highlight(1, "b");
        program_->highlight(2, "c");
        for (const int texts : {2, 1}) {
            const DebugLines lines;
            pressKey('#');
            QCOMPARE(lines.all(),
                     (QStringList{"fb::set path " + path_tab1, "fb::set path " + path_tab2}));
            for (const int each : {1, 2}) {
                QCOMPARE(program_->panel(each)->item(1)->subItemCount(1), texts);
                QCOMPARE(program_->panel(each)->curIndex, each == 1 ? 2 : 1);
            }
        }
        QCOMPARE(window_->activePage(), page);
    }

    void zeroTogglesMultiSelectionOfTheShownPanel_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("first") << 1;
        QTest::newRow("second") << 2;
    }

    void zeroTogglesMultiSelectionOfTheShownPanel()
    {
        QFETCH(int, page);
        goTo(page);
        program_->highlight(page, page == 1 ? "b" : "d");
        for (const bool on : {true, false}) {
            const DebugLines lines;
            pressKey('0');
            QCOMPARE(lines.all(), QStringList("fb::set path " + program_->panel(page)->curPath));
            QCOMPARE(program_->panel(page)->isMultiSelect(), on);
            QCOMPARE(program_->panel(page)->item(1)->layout().checkBox, on);
            QCOMPARE(program_->panel(page)->currentItem(), 2);
            QVERIFY(!program_->panel(3 - page)->isMultiSelect());
        }
    }

    void zeroDoesNothingOnTheAboutPage()
    {
        goTo(3);
        const DebugLines lines;
        pressKey('0');
        QVERIFY(lines.all().isEmpty());
        QVERIFY(!program_->panel(1)->isMultiSelect() && !program_->panel(2)->isMultiSelect());
    }

    void keysWithoutMeaningDoNothing_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("modified");
        for (const char digit : {'1', '5', '9'})
            QTest::addRow("%c", digit) << int(digit) << false;
        QTest::newRow("letter") << int('q') << false;
        QTest::newRow("modified star") << int('*') << true;
        QTest::newRow("modified zero") << int('0') << true;
        QTest::newRow("modified letter") << int('q') << true;
        QTest::newRow("modified previous") << int(Code::MusicPrevious) << true;
        QTest::newRow("modified next") << int(Code::MusicNext) << true;
    }

    void keysWithoutMeaningDoNothing()
    {
        QFETCH(int, code);
        QFETCH(bool, modified);
        const DebugLines lines;
        modified ? pressModified(code) : pressKey(code);
        QVERIFY(lines.all().isEmpty());
        QVERIFY(window_->isVisible());
        QVERIFY(!textView->isUp() && !processView->isUp());
        QVERIFY(!full_scr && !window_->getActiveMultiStat());
        QCOMPARE(window_->pendingPlugin, 0);
        QCOMPARE(ZScreen::instance()->active(), window_);
    }

    void musicKeysWithoutThePlayerTellThatItIsMissing_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("modified");
        QTest::newRow("play") << int(Code::Music) << false;
        QTest::newRow("previous") << int(Code::MusicPrevious) << false;
        QTest::newRow("next") << int(Code::MusicNext) << false;
        QTest::newRow("modified play") << int(Code::Music) << true;
    }

    void musicKeysWithoutThePlayerTellThatItIsMissing()
    {
        QFETCH(int, code);
        QFETCH(bool, modified);
        const QCopChannel channel("LyraPlayer");
        if (modified)
            holdKey(Code::Modifier);
        pressKey(code);
        QVERIFY(!window_->modKeyHeld);
        QVERIFY(isErrorAboutThePlayer(*textView));
        QVERIFY(!processView->isUp());
        pressKey('5');
        QVERIFY(!textView->isUp());
        QCOMPARE(window_->pendingPlugin, 0);
        QCOMPARE(keyReceiver(), program_->panel(1));
    }

    void playerIsMissingWithoutItsExecutable()
    {
        program_->workFolder().makeFolder("plugins/LyraPlayer");
        pressKey(Code::MusicNext);
        QVERIFY(textView->isUp());
        textView->init();
    }

    void runningPlayerGetsItsMessages()
    {
        installPlayer();
        const QCopChannel channel("LyraPlayer");
        QSignalSpy received(&channel, &QCopChannel::received);
        pressKeys({Code::MusicPrevious, Code::MusicNext});
        pressModified(Code::Music);
        // On their own keys the modifier means nothing.
        pressModified(Code::MusicPrevious);
        pressKey(Code::MusicNext);
        QTRY_COMPARE(received.size(), 4);
        QByteArrayList messages;
        for (const QList<QVariant>& each : std::as_const(received)) {
            messages.append(each.at(0).toByteArray());
            QVERIFY(each.at(1).toByteArray().isEmpty());
        }
        QCOMPARE(messages, (QByteArrayList{"prew", "next", "show", "next"}));
        QVERIFY(!textView->isUp() && !processView->isUp());
        QVERIFY(!program_->workFolder().exists(Noted));
    }

    void playerThatDoesNotRunIsNotToldAnything()
    {
        installPlayer();
        pressKeys({Code::MusicPrevious, Code::MusicNext});
        QVERIFY(!textView->isUp() && !processView->isUp());
        QVERIFY(!program_->workFolder().exists(Noted));
    }

    void modifierAndPlayStartThePlayerOnTheLastList()
    {
        installPlayer();
        holdKey(Code::Modifier);
        pressKey(Code::Music);
        QVERIFY(!window_->modKeyHeld);
        QVERIFY(processView->isUp() && !textView->isUp());
        {
            kWidget expected;
            expected.showProcess("Processing..", QString(), 0, LANG_PLEASE_WAIT, 4,
                                 "res/img/open_with.png", kWidget::Plain);
            QVERIFY(looksLike(*processView, expected));
        }
        QTRY_VERIFY(program_->workFolder().exists(Noted));
        const QString folder = work_folder + "/plugins/LyraPlayer/";
        QCOMPARE(QString::fromUtf8(program_->workFolder().read(Noted)),
                 folder + "LyraPlayer\n-d\n" + folder + "TempList.m3u\n");
        int ticks = 0;
        for (; processView->isUp() && ticks < 100; ++ticks)
            processView->aniUpdate();
        QVERIFY(ticks <= 15);
    }

    void modifierAndHashShowATestBoxUntilAKey()
    {
        const DebugLines lines;
        holdKey(Code::Modifier);
        pressKey('#');
        QVERIFY(!window_->modKeyHeld);
        QVERIFY2(lines.all().isEmpty(), "the panels were listed anew");
        {
            kWidget expected;
            expected.showProcess(LANG_PROPERTIES, "Please wait", 1, "testing...", 0,
                                 "res/img/props.png", kWidget::Message);
            QVERIFY(looksLike(*processView, expected));
        }
        for (int i = 0; i < 100; ++i)
            processView->aniUpdate();
        QVERIFY(processView->isUp());
        awaitKeys(*processView);
        pressKey(Code::Down);
        QVERIFY(processView->isUp());
        pressKey('7');
        QVERIFY(!processView->isUp() && processView->isClosed());
    }

    void keysDoNotReachTheWindowWhileABoxIsUp()
    {
        processView->showProcess("Work", QString(), 0, QString(), 0, QString(), kWidget::Plain);
        awaitKeys(*processView);
        const DebugLines lines;
        pressKeys({'*', '#', '0', Code::Hide, Code::SoftLeft, Code::Right, Code::Modifier});
        QVERIFY(lines.all().isEmpty());
        QVERIFY(!full_scr && window_->isVisible() && !window_->modKeyHeld);
        QCOMPARE(window_->activePage(), 1);
        QVERIFY(hasKeys(*processView));
        processView->init();
    }

private:
    void goTo(int page)
    {
        while (window_->activePage() != page)
            pressKey(Code::Right);
    }

    /// Holds the modifier, presses a digit for which there is no plugin, and closes the boxes.
    void openByDigitInAHold()
    {
        program_->highlight(1, "a");
        holdKey(Code::Modifier);
        pressKey('5');
        QVERIFY(textView->isUp());
        textView->init();
        processView->init();
        QVERIFY(window_->modKeyHeld);
    }

    void installPlayer()
    {
        program_->workFolder().write(Player, PlayerScript);
        program_->workFolder().setMode(Player, 0755);
    }

    std::unique_ptr<Program> program_;
    FM* window_ = nullptr;
};

QUARN_TEST_MAIN(tst_FmKeys)
#include "tst_fmkeys.moc"
