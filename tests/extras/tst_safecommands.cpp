#include "browser/filebrowserftab.h"
#include "files/folderscan.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zapplication.h"
#include "platform/zmodule.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/extras/safecommandtest.h"
#include "tests/extras/safescreens.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/oddnames.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace
{

using Log = CommandLog;

bool moduleIsOpen()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/extras.so");
}

/// What a user does on a page, as soon as it has the keys.
void onPage(const std::function<void()>& action)
{
    once(pageHasKeys, action);
}

} // namespace

/// The commands on files as the module "extras" carries them out.
class tst_SafeCommands : public SafeCommandTest
{
    Q_OBJECT

private slots:
    void withoutTheModuleNothingIsTouched()
    {
        ZModule::setFolder(QFile::encodeName(state_->path()));
        fixture_->startWith(CommandFixture::Copy, "a");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module extras: "));
        fixture_->paste();
        QCOMPARE(log(), QStringList{Log::message(LANG_ERROR, LANG_NO_EXTRAS, "error")});
        fixture_->dismissError(LANG_NO_EXTRAS);
        QVERIFY(QDir(fixture_->right()).isEmpty());
        fixture_->goTo(1);
        fixture_->highlight("a");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module extras: "));
        CommandFixture::choose(CommandFixture::Delete);
        fixture_->dismissError(LANG_NO_EXTRAS);
        QVERIFY(QFile::exists(fixture_->left("a")));
        QVERIFY(!moduleIsOpen());
    }

    void afterAnUpgradeNothingIsTouchedAndTheUserIsToldToStartAnew()
    {
        // Another file lies where the program was, and a module beside it.
        state_->write("quarn", "the newer one");
        state_->makeFolder("modules");
        state_->makeLink("modules/extras.so", QStringLiteral(QUARN_EXTRAS_MODULES "/extras.so"));
        ZModule::setFolder({});
        ZModule::setExecutable(QFile::encodeName(state_->path("quarn")) + " (deleted)");
        fixture_->startWith(CommandFixture::Copy, "a");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module extras: .* start it anew"));
        fixture_->paste();
        QCOMPARE(log(), QStringList{Log::message(LANG_ERROR, LANG_UPGRADED, "error")});
        fixture_->dismissError(LANG_UPGRADED);
        QVERIFY(QDir(fixture_->right()).isEmpty());
        QVERIFY(!moduleIsOpen());
    }

    void withoutTheSettingTheModuleStaysClosed()
    {
        extras.safe = false;
        fixture_->startWith(CommandFixture::Copy, "a");
        fixture_->paste();
        QVERIFY(QFile::exists(fixture_->right("a")));
        QVERIFY(!moduleIsOpen());
    }

    void plainCopyAsksNothingAndUsesNoShell()
    {
        fixture_->write(1, {"folder/in", "folder/.hidden", "folder/empty/.keep"});
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Copy, "folder", 2);
        fixture_->paste();
        QCOMPARE(log(), fixture_->bothListed());
        for (const char* name : {"folder/in", "folder/.hidden", "folder/empty/.keep"})
            QCOMPARE(files().read(QLatin1String("right/") + name), QByteArray(name));
        QVERIFY(QFile::exists(fixture_->left("folder/in")));
        QVERIFY(moduleIsOpen());
    }

    void namesOfAllKindsReachTheDisk_data() { addOddKinds(); }
    void namesOfAllKindsReachTheDisk()
    {
        QFETCH(int, kind);
        fixture_->start();
        fixture_->goTo(2);
        QSet<QByteArray> made;
        QStringList sources;
        for (const QByteArray& name : thinnedOddKinds().at(kind).names) {
            made.insert(name);
            files().write("left/" + decodeName(name), name);
            sources.append(fixture_->left(decodeName(name)));
        }
        window()->clipboardList = sources;
        window()->slot_CopyTo();
        QCOMPARE(namesIn(fixture_->right()), made);
        QCOMPARE(namesIn(fixture_->left()), made);
        window()->clipboardList = sources;
        files().makeFolder("right/into");
        fixture_->panel(2)->setDir(fixture_->right("into"), 0);
        fixture_->log().expect({yes});
        window()->slot_MoveTo();
        QCOMPARE(namesIn(fixture_->right("into")), made);
        QCOMPARE(namesIn(fixture_->left()), QSet<QByteArray>());
        fixture_->panel(2)->setDir(fixture_->right(), 0);
        for (const QByteArray& name : thinnedOddKinds().at(kind).names) {
            fixture_->highlight(decodeName(name));
            fixture_->log().expect({yes});
            window()->slot_Delete();
        }
        QCOMPARE(namesIn(fixture_->right()), QSet<QByteArray>{"into"});
    }

    void whatIsInTheWayIsAskedAbout_data()
    {
        QTest::addColumn<int>("digit");
        QTest::addColumn<QStringList>("left");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        const QStringList two{"a", "b"};
        QTest::newRow("both are kept unless something is chosen")
            << 0 << QStringList{"a", "a (2)", "b", "b (2)"} << QByteArray("old")
            << QByteArray("old");
        QTest::newRow("one is replaced")
            << 1 << QStringList{"a", "b", "b (2)"} << QByteArray("new") << QByteArray("old");
        QTest::newRow("one is kept with the other") << 2 << QStringList{"a", "a (2)", "b", "b (2)"}
                                                    << QByteArray("old") << QByteArray("old");
        QTest::newRow("one is left out")
            << 3 << QStringList{"a", "b", "b (2)"} << QByteArray("old") << QByteArray("old");
        QTest::newRow("all are replaced") << 4 << two << QByteArray("new") << QByteArray("new");
        QTest::newRow("all are kept with the others")
            << 5 << QStringList{"a", "a (2)", "b", "b (2)"} << QByteArray("old")
            << QByteArray("old");
        QTest::newRow("all are left out") << 6 << two << QByteArray("old") << QByteArray("old");
    }

    void whatIsInTheWayIsAskedAbout()
    {
        QFETCH(int, digit);
        for (const char* name : {"a", "b"}) {
            files().write(QLatin1String("left/") + name, "new");
            files().write(QLatin1String("right/") + name, "old");
        }
        fixture_->start();
        fixture_->mark({"a", "b"});
        CommandFixture::choose(CommandFixture::Copy);
        fixture_->goTo(2);
        log();
        onPage([digit] {
            QCOMPARE(pageRows(), (QStringList{"a|Keep both", "b|Keep both"}));
            QCOMPARE(pageLines(), QStringList("Already there: 2 (OK: choose)"));
            QVERIFY(pageNotes().at(0).startsWith("New: 3 b, "));
            QVERIFY(pageNotes().at(1).startsWith("There: 3 b, "));
            QCOMPARE(pageKeys(), (QStringList{LANG_COPY, LANG_CANCEL}));
            if (digit != 0) {
                pressKey(PhoneKey::Return);
                pressKey('0' + digit);
            }
            pressKey(PhoneKey::SoftLeft);
        });
        fixture_->paste();
        QCOMPARE(log(), fixture_->bothListed());
        QTEST(QDir(fixture_->right()).entryList(QDir::Files, QDir::Name), "left");
        QTEST(files().read("right/a"), "first");
        QTEST(files().read("right/b"), "second");
        if (digit == 0)
            QCOMPARE(files().read("right/b (2)"), QByteArray("new"));
    }

    void pageShowsWhatIsChosenForARow()
    {
        for (const char* side : {"left/", "right/"}) {
            files().write(QLatin1String(side) + "a", side);
            files().write(QLatin1String(side) + "b", side);
        }
        fixture_->start();
        fixture_->mark({"a", "b"});
        CommandFixture::choose(CommandFixture::Copy);
        fixture_->goTo(2);
        onPage([] {
            pressKey(PhoneKey::Down);
            pressKey(PhoneKey::Return);
            pressKey('1');
            QCOMPARE(pageRows(), (QStringList{"a|Keep both", "b|Replace"}));
            pressKey(PhoneKey::Return);
            pressKey('6');
            QCOMPARE(pageRows(), (QStringList{"a|Leave out", "b|Leave out"}));
            // A menu that is left changes nothing.
            pressKey(PhoneKey::Return);
            pressKey(PhoneKey::SoftRight);
            QCOMPARE(pageRows(), (QStringList{"a|Leave out", "b|Leave out"}));
            pressKey(PhoneKey::SoftRight);
        });
        fixture_->paste();
        // Going back has changed nothing, and nothing is listed anew.
        QCOMPARE(files().read("right/a"), QByteArray("right/"));
        QCOMPARE(QDir(fixture_->right()).entryList(QDir::Files).size(), 2);
    }

    /// More than the page lists: what is said for all counts for the others, too.
    void moreThanAreListedAreAnsweredByKeys()
    {
        constexpr int Listed = 500;
        constexpr int Many = Listed + 20;
        for (int i = 0; i < Many; ++i) {
            files().write("left/f/" + QString::number(i), "new");
            files().write("right/f/" + QString::number(i), "old");
        }
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Copy, "f", 2);
        QString replaced;
        qint64 slowest = 0;
        onPage([&] {
            QCOMPARE(pageLines(), QStringList("Already there: 520 (OK: choose)"));
            QCOMPARE(pageRows().size(), Listed + 1);
            QCOMPARE(pageRows().last(), QString("And 20 more|Keep both"));
            const auto press = [&slowest](int key) {
                QElapsedTimer timer;
                timer.start();
                pressKey(key);
                QCoreApplication::processEvents();
                slowest = std::max(slowest, timer.elapsed());
            };
            press(PhoneKey::Return);
            press('6');
            QCOMPARE(pageRows().last(), QString("And 20 more|Leave out"));
            for (int i = 0; i < Listed / 2; ++i)
                press(PhoneKey::Down);
            press(PhoneKey::Return);
            press('1');
            const QStringList rows = pageRows();
            replaced = rows.at(Listed / 2).section('|', 0, 0);
            QCOMPARE(rows.filter("|Replace"), QStringList(replaced + "|Replace"));
            QCOMPARE(rows.filter("|Leave out").size(), Listed);
            pressKey(PhoneKey::SoftLeft);
        });
        fixture_->paste();
        QVERIFY(!replaced.isEmpty());
        for (int i = 0; i < Many; ++i) {
            const QString name = QString::number(i);
            QCOMPARE(files().read("right/f/" + name), name == replaced ? "new" : "old");
        }
        QCOMPARE(QDir(fixture_->right("f")).entryList(QDir::Files).size(), Many);
        // Each key is answered at once; a machine that has more to do may take some more.
        QVERIFY2(slowest < 500, qPrintable(QString::number(slowest)));
    }

    void refusedOnesAreToldAndTheOthersDone()
    {
        fixture_->write(1, {"folder/in", "other"});
        files().makeFolder("left/folder/below");
        fixture_->start();
        fixture_->mark({"folder", "other"});
        CommandFixture::choose(CommandFixture::Copy);
        fixture_->panel(1)->setDir(fixture_->left("folder/below"), 0);
        onPage([] {
            QCOMPARE(pageRows(), QStringList("folder|A folder cannot go into itself"));
            QCOMPARE(pageLines(), QStringList("Not possible: 1"));
            pressKey(PhoneKey::SoftLeft);
        });
        fixture_->paste();
        QCOMPARE(QDir(fixture_->left("folder/below")).entryList(QDir::Files), QStringList("other"));
        QVERIFY(!QFile::exists(fixture_->left("folder/below/folder")));
    }

    void sameFileIsRefused_data()
    {
        QTest::addColumn<bool>("move");
        QTest::newRow("copy") << false;
        QTest::newRow("move") << true;
    }

    void sameFileIsRefused()
    {
        QFETCH(bool, move);
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->toClipboard(move ? CommandFixture::Move : CommandFixture::Copy, "a", 1);
        onPage([] {
            QCOMPARE(pageRows(), QStringList("a|This is the same file"));
            QCOMPARE(pageKeys(), (QStringList{QString(), LANG_BACK}));
            // A key without a text does nothing.
            pressKey(PhoneKey::SoftLeft);
            pressKey(PhoneKey::Return);
            QVERIFY(pageHasKeys());
            pressKey(PhoneKey::SoftRight);
        });
        if (move)
            fixture_->paste({yes});
        else
            fixture_->paste();
        QCOMPARE(files().read("left/a"), QByteArray("a"));
    }

    void moveAsksFirstAndMergesFolders()
    {
        fixture_->write(1, {"f/new", "f/g/deep"});
        fixture_->write(2, {"f/old"});
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Move, "f", 2);
        fixture_->paste({no});
        const QString question =
            Log::question(LANG_MOVE_SURE, "f to " + fixture_->right(), QStringLiteral("warning"));
        QCOMPARE(log(), QStringList(question));
        QVERIFY(QFile::exists(fixture_->left("f/new")));
        fixture_->goTo(1);
        fixture_->toClipboard(CommandFixture::Move, "f", 2);
        fixture_->paste({yes});
        QCOMPARE(log(), QStringList(question) + fixture_->bothListed());
        for (const char* name : {"f/new", "f/g/deep", "f/old"})
            QCOMPARE(files().read(QLatin1String("right/") + name), QByteArray(name));
        QVERIFY(!QFile::exists(fixture_->left("f")));
    }

    void deleteSaysHowMuchGoes()
    {
        fixture_->write(1, {"f/12345", "f/.1234567", "z"});
        fixture_->start();
        fixture_->highlight("f");
        fixture_->log().expect({no, yes});
        const QString question =
            Log::question(LANG_DELETE_DIR, fixture_->left("f") + "<hr>Entries: 3, 17 b", "delete");
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(question));
        QVERIFY(QFile::exists(fixture_->left("f/12345")));
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(question) + fixture_->bothListed());
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "z"}));
        QCOMPARE(fixture_->panel(1)->curFile, fixture_->left("z"));
    }

    void markedEntriesAreDeletedWithOneQuestion()
    {
        fixture_->write(1, {"a", "b", "c", "d", "e", "f"});
        fixture_->start();
        fixture_->mark({"a", "b", "c", "d", "e"});
        fixture_->log().expect({no, yes});
        const QString question = Log::question(
            "Delete all of these?", "a\nb\nc\nd\nAnd 1 more<hr>Entries: 5, 5 b", "delete");
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(question));
        // Without a yes the marks are as they were.
        QCOMPARE(fixture_->panel(1)->getChkFileList().size(), 5);
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "f"}));
        QVERIFY(!window()->getActiveMultiStat());
    }

    void whatFailsIsToldAndStaysMarked()
    {
        fixture_->write(1, {"fixed/in", "plain"});
        files().setMode("left/fixed", 0555);
        fixture_->start();
        fixture_->mark({"fixed", "plain"});
        fixture_->highlight("fixed");
        fixture_->log().expect({yes});
        onPage([] {
            QVERIFY(pageRows().contains("in|No permission"));
            QVERIFY(pageLines().at(0).startsWith("Not done: "));
            QCOMPARE(pageKeys(), (QStringList{QString(), LANG_BACK}));
            pressKey(PhoneKey::SoftRight);
        });
        CommandFixture::choose(CommandFixture::Delete);
        QVERIFY(!QFile::exists(fixture_->left("plain")));
        QVERIFY(QFile::exists(fixture_->left("fixed/in")));
        QCOMPARE(fixture_->panel(1)->getChkFileList(), QStringList(fixture_->left("fixed")));
        QCOMPARE(fixture_->panel(1)->curFile, fixture_->left("fixed"));
    }

    void whatCannotBeCopiedIsMarkedAgain()
    {
        fixture_->write(1, {"a", "secret"});
        files().setMode("left/secret", 0);
        fixture_->start();
        fixture_->mark({"a", "secret"});
        CommandFixture::choose(CommandFixture::Copy);
        fixture_->goTo(2);
        onPage([] {
            QVERIFY(pageRows().at(0).startsWith("secret|"));
            pressKey(PhoneKey::SoftRight);
        });
        fixture_->paste();
        QTRY_VERIFY(entryPage() == nullptr);
        QCOMPARE(QDir(fixture_->right()).entryList(QDir::Files | QDir::Hidden), QStringList("a"));
        QCOMPARE(fixture_->panel(1)->getChkFileList(), QStringList(fixture_->left("secret")));
    }

    /// As many fail as were told before, but not the same.
    void whatWasNotToldBeforeIsToldAfterwards()
    {
        fixture_->write(1, {"f/in", "plain"});
        files().setMode("left/f", 0);
        fixture_->start();
        fixture_->mark({"f", "plain"});
        CommandFixture::choose(CommandFixture::Copy);
        fixture_->goTo(2);
        bool isTold = false;
        onPage([this, &isTold] {
            QCOMPARE(pageRows(), QStringList("f|No permission"));
            files().setMode("left/f", 0755);
            files().setMode("left/plain", 0);
            pressKey(PhoneKey::SoftLeft);
            onPage([&isTold] {
                isTold = pageRows() == QStringList("plain|No permission");
                pressKey(PhoneKey::SoftRight);
            });
        });
        fixture_->paste();
        QVERIFY(isTold);
        QVERIFY(files().exists("right/f/in"));
    }

    void whatWasToldBeforeIsNotToldAgain()
    {
        fixture_->write(1, {"f/in", "plain"});
        files().setMode("left/f", 0);
        fixture_->start();
        fixture_->mark({"f", "plain"});
        CommandFixture::choose(CommandFixture::Copy);
        fixture_->goTo(2);
        onPage([] { pressKey(PhoneKey::SoftLeft); });
        // Another page would wait for a key, and nobody gives one.
        fixture_->paste();
        QVERIFY(files().exists("right/plain"));
        files().setMode("left/f", 0755);
    }

    void backEntryIsNeverASource()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->highlight("..");
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList());
        fixture_->toClipboard(CommandFixture::Move, "..", 2);
        fixture_->paste();
        QCOMPARE(log(), QStringList());
        QVERIFY(QFile::exists(fixture_->left("a")));
    }

    void stateFolderThatCannotBeWrittenIsSaidOnce()
    {
        state_->setMode(".", 0500);
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Copy, "a", 2);
        onPage([] {
            QCOMPARE(pageRows(), QStringList("No protection from power cuts|No permission"));
            pressKey(PhoneKey::SoftRight);
        });
        fixture_->paste();
        QVERIFY(QFile::exists(fixture_->right("a")));
        fixture_->goTo(1);
        fixture_->toClipboard(CommandFixture::Copy, "b", 2);
        fixture_->paste();
        QVERIFY(QFile::exists(fixture_->right("b")));
        state_->setMode(".", 0700);
    }

    // The process cannot take a request to quit back, so this comes last.
    void exitWhileItWorksLeavesNothingHalf()
    {
        // More than is copied before the event loop has its turn.
        constexpr int Many = 6000;
        for (int i = 0; i < Many; ++i)
            files().write("left/tree/" + QString::number(i), "content");
        fixture_->start();
        fixture_->toClipboard(CommandFixture::Copy, "tree", 2);
        const QDir journals(state_->path("quarn/journals"));
        const auto isWorking = [journals] {
            return !journals.entryList({"*.journal"}, QDir::Files).isEmpty();
        };
        once(isWorking, [] { ZApplication::quit(); });
        fixture_->paste();
        QVERIFY(ZApplication::isQuitting());
        const QDir copied(fixture_->right("tree"));
        const QStringList names = copied.entryList(QDir::Files | QDir::Hidden);
        QVERIFY(names.size() < Many);
        for (const QString& name : names)
            QCOMPARE(files().read("right/tree/" + name), QByteArray("content"));
        QCOMPARE(QDir(fixture_->right()).entryList({".quarn-*"}, QDir::AllEntries | QDir::Hidden),
                 QStringList());
        QCOMPARE(QDir(fixture_->left("tree")).entryList(QDir::Files).size(), Many);
        // The next start offers to go on, or to take it back.
        QVERIFY(isWorking());
        QVERIFY(QDir(journals).removeRecursively());
    }

private:
    static QSet<QByteArray> namesIn(const QString& folder)
    {
        QSet<QByteArray> names;
        const auto scan = FolderScan::read(folder, false);
        for (const auto* part : {&scan->folders(), &scan->others()}) {
            for (const FolderEntry& entry : *part)
                names.insert(scan->nameBytes(entry).toByteArray());
        }
        return names;
    }
};

QUARN_TEST_MAIN(tst_SafeCommands)
#include "tst_safecommands.moc"
