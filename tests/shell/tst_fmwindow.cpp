#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "platform/qcopchannel.h"
#include "platform/znavtabwidget.h"
#include "platform/zoptionsmenu.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "shell/qdaemonapp.h"
#include "tests/support/debuglines.h"
#include "tests/support/keys.h"
#include "tests/support/pictures.h"
#include "tests/support/program.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <memory>

namespace
{

/// What there was to see of the window under construction when a debug line was written.
struct Glimpse {
    QString line;
    bool startBoxShown;
    bool messageBoxThere;
    int panels;
};

QList<Glimpse> glimpses;

void takeGlimpse(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& line)
{
    const auto panels = ZScreen::instance()->findChildren<FileBrowserFtab*>().size();
    glimpses.append({line, processView != nullptr && processView->isVisible(), textView != nullptr,
                     int(panels)});
}

/// How the window looks.
QImage pictureOf(FM* window)
{
    return window->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class tst_FmWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        program_ = std::make_unique<Program>();
        program_->files().makeFolder("first");
        program_->files().makeFolder("second");
        program_->files().write("first/a");
        program_->files().write("first/b");
        program_->files().write("first/c");
        program_->files().write("second/d");
        path_tab1 = program_->files().path("first");
        path_tab2 = program_->files().path("second");
    }

    void cleanup() { program_.reset(); }

    void debugLinesAreWrittenInOrder()
    {
        program_->workFolder().write("lang/test.lang", "[Language]\nVER=102\n");
        lang = "test";
        const DebugLines lines;
        program_->start();
        QStringList all = lines.all();
        QVERIFY(!all.isEmpty());
        checkBanner(all.takeFirst());
        const QString program = QString::fromLocal8Bit(ZApplication::programName());
        const QStringList expected{program,
                                   program.left(program.lastIndexOf('/') + 1),
                                   "--- read lang file: " + work_folder + "/lang/test.lang",
                                   "--- read lang ok",
                                   "--- read mimes ok",
                                   "--- read plugins ok",
                                   "--- read bookmarks ok",
                                   "fb::set path " + path_tab1,
                                   "fb::set path " + path_tab2};
        QCOMPARE(all, expected);
    }

    void startBoxIsShownWhileTheWindowIsBuilt()
    {
        glimpses.clear();
        const QtMessageHandler before = qInstallMessageHandler(takeGlimpse);
        quarn = new FM;
        qInstallMessageHandler(before);
        QVERIFY(!glimpses.first().startBoxShown);
        for (const Glimpse& glimpse : std::as_const(glimpses)) {
            const bool reading = glimpse.line.startsWith("---");
            const bool listing = glimpse.line.startsWith("fb::set path");
            if (reading || listing)
                QVERIFY2(glimpse.startBoxShown, qPrintable(glimpse.line));
            QCOMPARE(glimpse.messageBoxThere, listing);
            QVERIFY(listing || glimpse.panels == 0);
        }
        QCOMPARE(glimpses.last().panels, 2);
        QVERIFY(processView->isUp());
    }

    void startBoxSaysPleaseWait()
    {
        quarn = new FM;
        kWidget expected;
        expected.showProcess("Quarn starting", QString(), 0, "Please wait..", 4,
                             "res/img/open_with.png", kWidget::Plain);
        QVERIFY(looksLike(*processView, expected));
    }

    void startBoxGoesAfterTenTicksAndNoKeyTakesItAway()
    {
        quarn = new FM;
        const TicksHeldBack held(*processView);
        awaitKeys(*processView);
        // Some ticks may have passed while the window was built.
        for (const int code : {int(PhoneKey::SoftLeft), int(PhoneKey::SoftRight), int('5')})
            pressKey(code);
        QVERIFY(processView->isUp() && !processView->isClosed());
        int ticks = 0;
        for (; processView->isUp() && ticks < 100; ++ticks)
            processView->aniUpdate();
        QVERIFY2(ticks <= 10, qPrintable(QString::number(ticks)));
        QVERIFY(!processView->isVisible());
    }

    void windowFillsTheScreenAndHasATitleAndThreeTabs()
    {
        const FM* window = program_->start();
        QCOMPARE(window->geometry(), QRect(0, 0, 240, 320));
        QCOMPARE(window->objectName(), QStringLiteral("ZMainWidget"));
        QCOMPARE(window->mainWidgetTitle(), QStringLiteral("Quarn"));
        QCOMPARE(window->tabWidget()->count(), 3);
        QCOMPARE(window->tabWidget()->currentPageIndex(), 0);
        QCOMPARE(window->tabWidget()->currentPage(), program_->panel(1));
        QCOMPARE(window->activePage(), 1);
        QCOMPARE(keyReceiver(), program_->panel(1));
        QVERIFY(!window->modKeyHeld);
        QCOMPARE(window->pendingPlugin, 0);
    }

    void panelsShowTheFoldersOfTheSettings()
    {
        program_->start();
        QCOMPARE(program_->panel(1)->curPath, path_tab1);
        QCOMPARE(program_->panel(2)->curPath, path_tab2);
        QCOMPARE(program_->rows(1), (QStringList{"..", "a", "b", "c"}));
        QCOMPARE(program_->rows(2), (QStringList{"..", "d"}));
        QCOMPARE(program_->panel(1)->currentItem(), 0);
    }

    void informationLineIsShownAsTheSettingsSay()
    {
        full_inf = true;
        program_->start();
        QCOMPARE(program_->panel(1)->item(1)->subItemCount(1), 2);
        QCOMPARE(program_->panel(2)->item(1)->subItemCount(1), 2);
    }

    void headerIsOfTheTypeInTheSettings_data()
    {
        QTest::addColumn<int>("setting");
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("shown");
        QTest::newRow("none") << 0 << 0 << false;
        QTest::newRow("left") << 1 << 1 << true;
        QTest::newRow("centred") << 2 << 2 << true;
        QTest::newRow("underlined") << 3 << 3 << true;
        QTest::newRow("unknown") << 99 << 3 << true;
        QTest::newRow("negative") << -1 << 3 << true;
    }

    void headerIsOfTheTypeInTheSettings()
    {
        QFETCH(int, setting);
        QFETCH(bool, shown);
        header_type = setting;
        FM* window = program_->start();
        QTEST(window->headerType(), "type");
        const int tabsTop = window->tabWidget()->mapTo(window, QPoint()).y();
        QCOMPARE(tabsTop > 0, shown);
        QCOMPARE(inkBounds(pictureOf(window), {0, 0, 240, tabsTop}, Qt::black).isEmpty(), !shown);
    }

    void fullScreenTakesTheHeaderAwayAndKeepsTheSoftKeys()
    {
        full_scr = true;
        FM* window = program_->start();
        QVERIFY(window->isFullScreenMode());
        QCOMPARE(window->tabWidget()->mapTo(window, QPoint()).y(), 0);
        QVERIFY(window->softKey->isVisible());
        QCOMPARE(window->softKey->geometry().bottom(), 319);
    }

    void tabsHaveTheirIconsInOrder()
    {
        const ScratchFolder folder;
        work_folder = folder.path() + QLatin1Char('/');
        folder.write("res/img/1.png", plainPng(10, 10, Qt::red));
        folder.write("res/img/2.png", plainPng(10, 10, Qt::green));
        folder.write("res/img/about.png", plainPng(10, 10, Qt::blue));
        FM* window = program_->start();
        const QImage picture = pictureOf(window);
        const QColor colours[] = {Qt::red, Qt::green, Qt::blue};
        for (int i = 0; i < 3; ++i) {
            const QRect icon = boundsOf(picture, colours[i]);
            QCOMPARE(icon.size(), QSize(10, 10));
            QVERIFY(QRect(80 * i, 0, 80, 60).contains(icon));
            QVERIFY(std::abs(icon.center().x() - (80 * i + 40)) <= 2);
        }
    }

    void missingPicturesAreNotReported()
    {
        const ScratchFolder empty;
        work_folder = empty.path() + QLatin1Char('/');
        const DebugLines lines;
        program_->start();
        // The banner, two lines of the start, two of the language file, four and two.
        QCOMPARE(lines.all().size(), 11);
        QVERIFY(!textView->isUp());
        QCOMPARE(program_->rows(1), (QStringList{"..", "a", "b", "c"}));
    }

    void workFolderThatIsNotSetIsTheProgramsFolder()
    {
        work_folder = QString();
        const DebugLines lines;
        const FM* window = program_->start();
        const QString program = QString::fromLocal8Bit(ZApplication::programName());
        QCOMPARE(window->programDir, program.left(program.lastIndexOf('/') + 1));
        QCOMPARE(work_folder, window->programDir);
        // The tables are read before.
        QVERIFY(lines.contains("--- read lang file: /lang/.lang"));
    }

    void workFolderThatIsEmptyStaysEmpty()
    {
        work_folder = QString(QLatin1String(""));
        program_->start();
        QVERIFY(work_folder.isEmpty());
    }

    void tabsChangeWhatTheSoftKeyDoes()
    {
        const FM* window = program_->start();
        const int pages[] = {2, 3, 1, 3, 2, 1};
        const int keys[] = {PhoneKey::Right, PhoneKey::Right, PhoneKey::Right,
                            PhoneKey::Left,  PhoneKey::Left,  PhoneKey::Left};
        for (int i = 0; i < 6; ++i) {
            pressKey(keys[i]);
            const bool about = pages[i] == 3;
            QCOMPARE(window->activePage(), pages[i]);
            QCOMPARE(window->tabWidget()->currentPageIndex(), pages[i] - 1);
            QCOMPARE(window->softKey->text(ZSoftKey::Left), about ? QString() : LANG_OPTIONS);
            QCOMPARE(window->softKey->optMenu(ZSoftKey::Left),
                     about ? nullptr : window->optionsMenu);
            QCOMPARE(keyReceiver(), window->tabWidget()->currentPage());
        }
    }

    void fileNamesAreCutAtTheLastSlash_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("name");
        QTest::newRow("a file") << "/a/b/c.txt"
                                << "/a/b/"
                                << "c.txt";
        QTest::newRow("at the root") << "/c"
                                     << "/"
                                     << "c";
        QTest::newRow("a folder") << "/a/b/"
                                  << "/a/b/"
                                  << "";
        QTest::newRow("two slashes") << "/a//b"
                                     << "/a//"
                                     << "b";
        QTest::newRow("no slash") << "abc"
                                  << ""
                                  << "";
        QTest::newRow("one character") << "a"
                                       << ""
                                       << "";
        QTest::newRow("nothing") << ""
                                 << ""
                                 << "";
        QTest::newRow("the root") << "/"
                                  << "/"
                                  << "";
        QTest::newRow("back entry") << "/a/.."
                                    << "/a/"
                                    << "..";
        QTest::newRow("odd characters") << "/a %1/\"b\\ c\n"
                                        << "/a %1/"
                                        << "\"b\\ c\n";
    }

    void fileNamesAreCutAtTheLastSlash()
    {
        QFETCH(QString, path);
        QTEST(FM::getFilePath(path), "folder");
        QTEST(FM::getFileName(path), "name");
    }

    void activeFileIsThatOfTheShownPanel()
    {
        const FM* window = program_->start();
        program_->highlight(1, "b");
        program_->highlight(2, "d");
        QCOMPARE(window->getActiveFileName(), path_tab1 + "/b");
        pressKey(PhoneKey::Down);
        QCOMPARE(window->getActiveFileName(), path_tab1 + "/c");
        pressKey(PhoneKey::Right);
        QCOMPARE(window->getActiveFileName(), path_tab2 + "/d");
        pressKey(PhoneKey::Right);
        QVERIFY(window->getActiveFileName().isNull());
    }

    void activeFileNamesAreTheCheckedOnesAndEndMultiSelection()
    {
        FM* window = program_->start();
        pressKey('0');
        QVERIFY(window->getActiveMultiStat());
        for (const char* name : {"c", "a"}) {
            program_->highlight(1, name);
            pressKey(PhoneKey::Return);
        }
        const DebugLines lines;
        QCOMPARE(window->getActiveFileNames(), (QStringList{path_tab1 + "/a", path_tab1 + "/c"}));
        QCOMPARE(lines.all(), QStringList{"fb::set path " + path_tab1});
        QVERIFY(!window->getActiveMultiStat());
        QVERIFY(!program_->panel(1)->item(1)->layout().checkBox);
        QCOMPARE(window->getActiveFileName(), path_tab1 + "/a");
        QCOMPARE(program_->panel(1)->currentItem(), 1);
    }

    void multiSelectionIsToldOfTheShownPanel()
    {
        FM* window = program_->start();
        QVERIFY(!window->getActiveMultiStat());
        pressKeys({PhoneKey::Right, '0'});
        QVERIFY(window->getActiveMultiStat());
        pressKey(PhoneKey::Right);
        QVERIFY(!window->getActiveMultiStat());
        const DebugLines lines;
        QVERIFY(window->getActiveFileNames().isEmpty());
        QVERIFY(lines.all().isEmpty());
        pressKey(PhoneKey::Right);
        QVERIFY(!window->getActiveMultiStat());
        pressKey(PhoneKey::Right);
        QVERIFY(window->getActiveMultiStat());
    }

    void channelIsThereAsLongAsTheWindow()
    {
        QVERIFY(!QCopChannel::isRegistered("Quarn"));
        program_->start();
        QVERIFY(QCopChannel::isRegistered("Quarn"));
        program_.reset();
        QVERIFY(!QCopChannel::isRegistered("Quarn"));
    }

    void secondStartBringsTheHiddenWindowBack()
    {
        const FM* window = program_->start();
        pressKey(PhoneKey::Right);
        pressKey(PhoneKey::Hide);
        QVERIFY(!window->isVisible());
        QVERIFY(!ZScreen::instance()->window()->isVisible());
        QVERIFY(QCopChannel::send("Quarn", "show()"));
        QTRY_VERIFY(window->isVisible());
        QVERIFY(ZScreen::instance()->window()->isVisible());
        QCOMPARE(window->activePage(), 2);
        QCOMPARE(keyReceiver(), program_->panel(2));
    }

    void otherMessagesAreIgnored_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("without parentheses") << QByteArray("show");
        QTest::newRow("capitals") << QByteArray("SHOW()");
        QTest::newRow("with a blank") << QByteArray("show() ");
        QTest::newRow("another") << QByteArray("quit()");
        QTest::newRow("with a zero byte") << QByteArray("show()\0", 7);
    }

    void otherMessagesAreIgnored()
    {
        QFETCH(QByteArray, message);
        FM* window = program_->start();
        pressKey(PhoneKey::Hide);
        window->slotQCopReceived(message);
        QVERIFY(!window->isVisible());
        window->slotQCopReceived("show()");
        QVERIFY(window->isVisible());
    }

    void systemsRequestShowsTheWindow()
    {
        const FM* window = program_->start();
        pressKey(PhoneKey::Hide);
        emit a->signalRaise();
        QVERIFY(window->isVisible());
    }

    void closingTheWindowAsksOnce()
    {
        const FM* window = program_->start();
        once([] { return textView->isWaiting() && hasKeys(*textView); },
             [] {
                 requestClose();
                 pressKey(PhoneKey::SoftRight);
             });
        requestClose();
        QVERIFY(!textView->isUp());
        QVERIFY(window->isVisible());
        QVERIFY(!ZApplication::isQuitting());
    }

    void exitIsAskedForAndNoLeavesEverythingAsItWas()
    {
        FM* window = program_->start();
        QImage picture;
        once([] { return textView->isWaiting() && hasKeys(*textView); },
             [&picture] {
                 picture = pictureOf(*textView);
                 pressKey(PhoneKey::SoftRight);
             });
        window->CloseProgramm();
        QCOMPARE(picture, exitQuestion());
        QVERIFY(window->isVisible());
        QVERIFY(!textView->isUp());
        QVERIFY(!ZApplication::isQuitting());
        QCOMPARE(keyReceiver(), program_->panel(1));
    }

    void keysTypedBeforeTheExitQuestionIsUpDoNotReachThePanel()
    {
        program_->files().write("a");
        FM* window = program_->start();
        const int row = program_->panel(1)->curIndex;
        once([] { return textView->isWaiting() && hasKeys(*textView); },
             [] { pressKey(PhoneKey::SoftRight); });
        bool early = false;
        const auto typeEarly = [&early] {
            early = textView->isUp() && !hasKeys(*textView);
            for (const int code : {int('*'), int(PhoneKey::Down)})
                pressKey(code);
        };
        QMetaObject::invokeMethod(window, typeEarly, Qt::QueuedConnection);
        window->CloseProgramm();
        QVERIFY(early);
        QVERIFY(!full_scr);
        QCOMPARE(program_->panel(1)->curIndex, row);
    }

    // The process cannot take the request back, so this comes last.
    void exitAnsweredWithYesEndsTheEventLoop()
    {
        program_->start();
        once([] { return textView->isWaiting() && hasKeys(*textView); },
             [] { pressKey(PhoneKey::SoftLeft); });
        once([] { return true; },
             [] {
                 holdKey(PhoneKey::Modifier);
                 pressKey(PhoneKey::Hide);
             });
        QCOMPARE(a->exec(), 0);
        QVERIFY(ZApplication::isQuitting());
    }

private:
    static void pressKeys(std::initializer_list<int> codes)
    {
        for (const int code : codes)
            pressKey(code);
    }

    /// The lines of the banner between its rules: 26 characters each.
    static void checkBanner(const QString& banner)
    {
        const QStringList lines = banner.split('\n');
        QCOMPARE(lines.size(), 11);
        QCOMPARE(lines.first(), QString());
        QCOMPARE(lines.last(), QString());
        for (const QString& line : lines.mid(1, 9))
            QCOMPARE(line.size(), 26);
        const QString rule(26, '-');
        QCOMPARE(lines.at(1), rule);
        QCOMPARE(lines.at(9), rule);
        QCOMPARE(lines.mid(2, 3),
                 (QStringList{"--------Quarn 1.6---------", "-File manager for ROKR E2-",
                              "-------Written by --------"}));
    }

    static QImage exitQuestion()
    {
        kWidget expected;
        QImage picture;
        once([&expected] { return expected.isWaiting() && hasKeys(expected); },
             [&expected, &picture] {
                 picture = ::pictureOf(expected);
                 pressKey(PhoneKey::SoftRight);
             });
        expected.showText(LANG_EXIT, LANG_EXIT_SURE, 4, "res/img/warning.png", kWidget::Question);
        return picture;
    }

    std::unique_ptr<Program> program_;
};

QUARN_TEST_MAIN(tst_FmWindow)
#include "tst_fmwindow.moc"
