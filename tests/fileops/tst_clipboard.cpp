#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zsoftkey.h"
#include "shell/fm.h"
#include "tests/fileops/commandfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <memory>

namespace
{

using Log = CommandLog;
using Fixture = CommandFixture;

void leaveMenus()
{
    pressKey(PhoneKey::SoftRight);
    pressKey(PhoneKey::SoftRight);
}

} // namespace

class tst_Clipboard : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fixture_ = std::make_unique<Fixture>();
        fixture_->write(1, {"a", "b", "c", "folder/in"});
        fixture_->write(2, {"x", "y"});
        window_ = fixture_->start();
    }

    void cleanup()
    {
        QCOMPARE(fixture_->log().unused(), 0);
        fixture_.reset();
    }

    void nothingCanBePastedAtTheStart()
    {
        QVERIFY(!canPaste());
        QVERIFY(window_->clipboardList.isEmpty());
        QCOMPARE(commandsOfPaste(), QStringList());
    }

    void copyTakesTheCurrentEntryAndLetsPasteCopyIt_data() { addPages(); }
    void copyTakesTheCurrentEntryAndLetsPasteCopyIt()
    {
        QFETCH(int, page);
        const QString name = page == 1 ? "b" : "y";
        fixture_->goTo(page);
        fixture_->highlight(name);
        Fixture::choose(Fixture::Copy);
        QCOMPARE(fixture_->log().take(), QStringList());
        QVERIFY(!textView->isUp());
        QCOMPARE(window_->clipboardList, QStringList(fixture_->folder(page) + '/' + name));
        QVERIFY(canPaste());
        fixture_->goTo(3 - page);
        QCOMPARE(commandsOfPaste(),
                 QStringList(copyCommand(fixture_->folder(page) + '/' + name, 3 - page)));
        QVERIFY(QFile::exists(fixture_->left(name)) && QFile::exists(fixture_->right(name)));
        QVERIFY(!canPaste());
    }

    void moveTakesTheCurrentEntryAndLetsPasteMoveIt_data() { addPages(); }
    void moveTakesTheCurrentEntryAndLetsPasteMoveIt()
    {
        QFETCH(int, page);
        const QString name = page == 1 ? "b" : "y";
        fixture_->goTo(page);
        fixture_->highlight(name);
        Fixture::choose(Fixture::Move);
        QCOMPARE(fixture_->log().take(), QStringList());
        QVERIFY(!textView->isUp());
        const QString path = fixture_->folder(page) + '/' + name;
        QCOMPARE(window_->clipboardList, QStringList(path));
        QVERIFY(canPaste());
        fixture_->goTo(3 - page);
        fixture_->log().expect({yes});
        QCOMPARE(commandsOfPaste(), QStringList(moveCommand(path, 3 - page)));
        QVERIFY(!QFile::exists(path));
        QVERIFY(!canPaste());
    }

    void markedEntriesAreTakenInRowOrderAndUnmarked_data()
    {
        QTest::addColumn<int>("item");
        QTest::newRow("copy") << int(Fixture::Copy);
        QTest::newRow("move") << int(Fixture::Move);
    }

    void markedEntriesAreTakenInRowOrderAndUnmarked()
    {
        QFETCH(int, item);
        window_->clipboardList = QStringList{"/before"};
        fixture_->mark({"c", "folder", "a"});
        Fixture::choose(Fixture::CopyItem(item));
        QCOMPARE(window_->clipboardList,
                 (QStringList{fixture_->left("folder"), fixture_->left("a"), fixture_->left("c")}));
        QVERIFY(!window_->getActiveMultiStat());
        QCOMPARE(fixture_->log().take(), QStringList(Log::listed(fixture_->left())));
        QVERIFY(canPaste());
    }

    void nothingMarkedPastesNothing()
    {
        window_->clipboardList = QStringList{fixture_->left("a")};
        fixture_->mark({});
        Fixture::choose(Fixture::Copy);
        QCOMPARE(window_->clipboardList, QStringList());
        QVERIFY(canPaste());
        fixture_->goTo(2);
        fixture_->log().take();
        Fixture::choose(Fixture::Paste);
        QCOMPARE(fixture_->log().take(), QStringList());
        QVERIFY(!canPaste());
    }

    void lastChoiceDecides_data()
    {
        QTest::addColumn<QList<int>>("choices");
        QTest::addColumn<bool>("moves");
        const int copy = Fixture::Copy;
        const int move = Fixture::Move;
        QTest::newRow("copy, move") << QList<int>{copy, move} << true;
        QTest::newRow("move, copy") << QList<int>{move, copy} << false;
        QTest::newRow("copy, copy") << QList<int>{copy, copy} << false;
        QTest::newRow("move, move") << QList<int>{move, move} << true;
        QTest::newRow("copy, move, copy") << QList<int>{copy, move, copy} << false;
        QTest::newRow("move, move, copy, copy, move")
            << QList<int>{move, move, copy, copy, move} << true;
    }

    /// And it runs once, however often it was chosen.
    void lastChoiceDecides()
    {
        QFETCH(QList<int>, choices);
        QFETCH(bool, moves);
        fixture_->highlight("a");
        for (const int item : choices)
            Fixture::choose(Fixture::CopyItem(item));
        QCOMPARE(window_->clipboardList, QStringList(fixture_->left("a")));
        fixture_->goTo(2);
        if (moves)
            fixture_->log().expect({yes});
        QCOMPARE(commandsOfPaste(), QStringList(moves ? moveCommand(fixture_->left("a"), 2)
                                                      : copyCommand(fixture_->left("a"), 2)));
        QCOMPARE(QFile::exists(fixture_->left("a")), !moves);
        QVERIFY(QFile::exists(fixture_->right("a")));
        QVERIFY(!canPaste());
    }

    void secondChoiceDropsTheEntriesOfTheFirst()
    {
        fixture_->highlight("a");
        Fixture::choose(Fixture::Copy);
        fixture_->highlight("c");
        Fixture::choose(Fixture::Copy);
        QCOMPARE(window_->clipboardList, QStringList(fixture_->left("c")));
    }

    void pasteIsArmedOnEveryPage()
    {
        fixture_->highlight("a");
        Fixture::choose(Fixture::Copy);
        for (const int page : {2, 3, 1, 2}) {
            fixture_->goTo(page);
            QVERIFY(canPaste());
        }
        QCOMPARE(commandsOfPaste(), QStringList(copyCommand(fixture_->left("a"), 2)));
    }

    void pasteDisarmsItselfAndKeepsTheEntries()
    {
        fixture_->highlight("a");
        Fixture::choose(Fixture::Copy);
        fixture_->goTo(2);
        QCOMPARE(commandsOfPaste(), QStringList(copyCommand(fixture_->left("a"), 2)));
        QVERIFY(!canPaste());
        QCOMPARE(window_->clipboardList, QStringList(fixture_->left("a")));
        QCOMPARE(commandsOfPaste(), QStringList());
        fixture_->goTo(1);
        QVERIFY(!canPaste());
        QCOMPARE(commandsOfPaste(), QStringList());
    }

    void pasteIsDisarmedBeforeItsFirstQuestion()
    {
        fixture_->toClipboard(Fixture::Move, "a", 2);
        bool armed = true;
        fixture_->log().expect({[this, &armed] {
            armed = canPaste();
            no();
        }});
        Fixture::choose(Fixture::Paste);
        QVERIFY(!armed);
    }

    void pasteReplacesTheMenusAndLeaksNone_data() { addPages(); }
    void pasteReplacesTheMenusAndLeaksNone()
    {
        QFETCH(int, page);
        const int from = 3 - page;
        const qsizetype menus = menuCount();
        for (const char* name : {"a", "b", "c"}) {
            fixture_->write(from, {name});
            fixture_->goTo(from);
            fixture_->panel(from)->setDir(fixture_->folder(from), 0);
            QFile::remove(fixture_->folder(page) + '/' + name);
            QVERIFY(!QFile::exists(fixture_->folder(page) + '/' + name));
            fixture_->toClipboard(Fixture::Copy, name, page);
            const QPointer<ZOptionsMenu> before = window_->copyMenu;
            Fixture::choose(Fixture::Paste);
            QVERIFY(window_->copyMenu != before);
            QCOMPARE(window_->softKey->optMenu(ZSoftKey::Left), window_->optionsMenu);
            QTRY_VERIFY(before.isNull());
            QTRY_COMPARE(menuCount(), menus);
            QVERIFY(QFile::exists(fixture_->folder(page) + '/' + name));
        }
        pressKey(PhoneKey::SoftLeft);
        QCOMPARE(ZScreen::instance()->active(), window_->optionsMenu);
        pressKey(PhoneKey::SoftRight);
    }

    void newMenusDoAllThatTheOldOnesDid()
    {
        fixture_->toClipboard(Fixture::Copy, "a", 2);
        Fixture::choose(Fixture::Paste);
        fixture_->log().take();
        fixture_->highlight("a");
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Delete);
        QVERIFY(!QFile::exists(fixture_->right("a")));
        fixture_->highlight("x");
        Fixture::choose(Fixture::Move);
        QVERIFY(canPaste());
        fixture_->goTo(1);
        fixture_->log().take();
        fixture_->log().expect({yes});
        QCOMPARE(commandsOfPaste(), QStringList(moveCommand(fixture_->right("x"), 1)));
    }

    void pasteAsIsNeverThere()
    {
        const auto checkState = [this] {
            QVERIFY(!window_->copyMenu->isItemEnabled(Fixture::PasteAs));
            Fixture::choose(Fixture::PasteAs);
            QCOMPARE(ZScreen::instance()->active(), window_->copyMenu);
            leaveMenus();
            QCOMPARE(fixture_->log().take(), QStringList());
        };
        checkState();
        for (const Fixture::CopyItem item : {Fixture::Copy, Fixture::Move}) {
            fixture_->highlight("a");
            Fixture::choose(item);
            checkState();
        }
        fixture_->log().expect({no});
        Fixture::choose(Fixture::Paste);
        fixture_->log().take();
        checkState();
    }

    void emptyEntriesAreLeftOut()
    {
        fixture_->highlight("a");
        Fixture::choose(Fixture::Copy);
        window_->clipboardList =
            QStringList{QString(), fixture_->left("b"), "", fixture_->left("c"), QString()};
        fixture_->goTo(2);
        QCOMPARE(commandsOfPaste(), (QStringList{copyCommand(fixture_->left("b"), 2),
                                                 copyCommand(fixture_->left("c"), 2)}));
    }

    void aboutPageHasNothingToCopy()
    {
        fixture_->highlight("a");
        fixture_->goTo(FM::AboutPage);
        window_->slot_Copy();
        QVERIFY(canPaste());
        fixture_->goTo(2);
        Fixture::choose(Fixture::Paste);
        QCOMPARE(fixture_->log().take(), QStringList());
        QVERIFY(!canPaste());
    }

private:
    bool canPaste() const { return window_->copyMenu->isItemEnabled(Fixture::Paste); }

    QString copyCommand(const QString& path, int toPage) const
    {
        return Log::shell("cp -R \"" + path.toUtf8() + "\" \"" + fixture_->folder(toPage).toUtf8() +
                          '"');
    }

    QString moveCommand(const QString& path, int toPage) const
    {
        return Log::shell("mv \"" + path.toUtf8() + "\" \"" + fixture_->folder(toPage).toUtf8() +
                          '"');
    }

    /// Goes for the Paste item and tells what reached the shell. An item that is disabled leaves
    /// its menu open.
    QStringList commandsOfPaste()
    {
        const bool enabled = canPaste();
        fixture_->log().take();
        Fixture::choose(Fixture::Paste);
        if ((ZScreen::instance()->active() == window_->copyMenu) == enabled)
            QTest::qFail("the item is not what it looks like", __FILE__, __LINE__);
        if (!enabled)
            leaveMenus();
        return fixture_->log().take().filter(QStringLiteral("shell | "));
    }

    std::unique_ptr<Fixture> fixture_;
    FM* window_ = nullptr;
};

QUARN_TEST_MAIN(tst_Clipboard)
#include "tst_clipboard.moc"
