#include "browser/filebrowserftab.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/zmodule.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/trashcommandtest.h"
#include "tests/support/later.h"
#include "tests/support/oddnames.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

/// Delete into the trash, as the module "extras" does it.
class tst_TrashCommands : public TrashCommandTest
{
    Q_OBJECT

private slots:
    void withoutTheModuleNothingIsTouched()
    {
        ZModule::setFolder(QFile::encodeName(data_->path()));
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->highlight("a");
        for (const auto command : {CommandFixture::Delete, CommandFixture::Trash}) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module extras: "));
            CommandFixture::choose(command);
            QCOMPARE(log(), QStringList{Log::message(LANG_ERROR, LANG_NO_EXTRAS, "error")});
            fixture_->dismissError(LANG_NO_EXTRAS);
        }
        QVERIFY(QFile::exists(fixture_->left("a")));
    }

    void afterAnUpgradeNothingIsTouchedAndTheUserIsToldToStartAnew()
    {
        data_->write("quarn", "the newer one");
        ZModule::setFolder({});
        ZModule::setExecutable(QFile::encodeName(data_->path("quarn")) + " (deleted)");
        fixture_->write(1, {"a"});
        fixture_->start();
        fixture_->highlight("a");
        for (const auto command : {CommandFixture::Delete, CommandFixture::Trash}) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^module extras: "));
            CommandFixture::choose(command);
            QCOMPARE(log(), QStringList{Log::message(LANG_ERROR, LANG_UPGRADED, "error")});
            fixture_->dismissError(LANG_UPGRADED);
        }
        QVERIFY(QFile::exists(fixture_->left("a")));
    }

    void deleteAsksAndMovesToTheTrash_data()
    {
        QTest::addColumn<bool>("safe");
        QTest::newRow("alone") << false;
        QTest::newRow("with safe operations") << true;
    }
    void deleteAsksAndMovesToTheTrash()
    {
        QFETCH(bool, safe);
        extras.safe = safe;
        fixture_->write(1, {"a", "f/in", "z"});
        fixture_->start();
        fixture_->highlight("a");
        fixture_->log().expect({no, yes});
        const QString question =
            Log::question("Move to trash?", fixture_->left("a"), QStringLiteral("delete"));
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(question));
        QVERIFY(QFile::exists(fixture_->left("a")));
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(question) + fixture_->bothListed());
        QCOMPARE(data_->read("Trash/files/a"), QByteArray("a"));
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "f", "z"}));
        // The one that took the row's place is highlighted.
        QCOMPARE(fixture_->panel(1)->curFile, fixture_->left("z"));
        fixture_->highlight("f");
        fixture_->log().expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(data_->read("Trash/files/f/in"), QByteArray("f/in"));
    }

    void markedEntriesAreAskedAboutOnce()
    {
        fixture_->write(1, {"a", "b", "c"});
        fixture_->start();
        fixture_->mark({"a", "b"});
        fixture_->log().expect({no, yes});
        const QString question = Log::question("Move to trash?", "a\nb", "delete");
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList(question));
        QCOMPARE(fixture_->panel(1)->getChkFileList().size(), 2);
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(fixture_->program().rows(1), (QStringList{"..", "c"}));
        QVERIFY(!window()->getActiveMultiStat());
        QCOMPARE(trashed(), (QStringList{"a", "b"}));
    }

    void theWayBackIsNoEntry()
    {
        fixture_->start();
        fixture_->highlight("..");
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(log(), QStringList());
        QVERIFY(QFile::exists(fixture_->left()));
    }

    void linksThatLeadNowhereAreEntries()
    {
        files().makeLink("left/link", "none");
        fixture_->start();
        throwAway("link");
        QCOMPARE(trashed(), QStringList("link"));
    }

    void namesOfAllKindsGoAndComeBack_data() { addOddKinds(); }
    void namesOfAllKindsGoAndComeBack()
    {
        QFETCH(int, kind);
        const QByteArray name = thinnedOddKinds().at(kind).names.first();
        files().write("left/" + decodeName(name), name);
        fixture_->start();
        throwAway(decodeName(name));
        QVERIFY(!files().exists("left/" + decodeName(name)));
        follow({{rows(1), choosing('1')}, {rows(0), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(files().read("left/" + decodeName(name)), name);
    }

    void whatHasTakenTheNameIsNotMeant()
    {
        fixture_->write(1, {"a", "other"});
        fixture_->start();
        fixture_->highlight("a");
        fixture_->log().expect({[this] {
            QVERIFY(QFile::remove(fixture_->left("a")));
            QVERIFY(QFile::rename(fixture_->left("other"), fixture_->left("a")));
            yes();
        }});
        follow({{rows(1), [] {
                     QCOMPARE(pageLines(), QStringList("Not done: 1"));
                     QCOMPARE(rowsWithKeys(), QStringList("a|No longer there"));
                     leave();
                 }}});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(files().read("left/a"), QByteArray("other"));
    }

    void aMediumThatTakesLongIsNotWaitedFor()
    {
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        fixture_->mark({"a", "b"});
        fixture_->log().expect({yes});
        bool isShown = false;
        {
            CallFaults faults;
            faults.holdFlushing();
            once([&faults] { return operationBox() != nullptr && faults.isFlushing(); },
                 [&isShown] {
                     isShown = true;
                     leave();
                 });
            CommandFixture::choose(CommandFixture::Delete);
            QVERIFY(faults.isFlushing());
        }
        QVERIFY(isShown);
        QCOMPARE(fixture_->panel(1)->getChkFileList().size(), 2);
        // What was stopped does not go when the medium is there again, and leaves nothing.
        QTRY_VERIFY(QDir(data_->path("Trash/info")).isEmpty());
        QVERIFY(files().exists("left/a") && files().exists("left/b"));
        QCOMPARE(trashed(), QStringList());
    }

    void whatFailsIsToldAndStaysMarked()
    {
        fixture_->write(1, {"b"});
        files().makeFolder("left/locked");
        files().makeFolder("left/locked/a");
        fixture_->start();
        // A folder that may not be written cannot get another folder above it.
        files().setMode("left/locked", 0555);
        fixture_->mark({"locked", "b"});
        data_->makeFolder("Trash");
        data_->makeFolder("Trash/files");
        data_->makeFolder("Trash/info");
        fixture_->log().expect({yes});
        follow({{rows(1), [] {
                     QCOMPARE(rowsWithKeys(), QStringList("locked|No permission"));
                     leave();
                 }}});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(trashed(), QStringList("b"));
        QCOMPARE(fixture_->panel(1)->getChkFileList(), QStringList(fixture_->left("locked")));
    }

    void whatHasNoTrashIsAskedAboutAgain_data()
    {
        QTest::addColumn<bool>("safe");
        QTest::addColumn<bool>("agrees");
        QTest::newRow("no") << false << false;
        QTest::newRow("yes") << false << true;
        QTest::newRow("no, with safe operations") << true << false;
        QTest::newRow("yes, with safe operations") << true << true;
    }
    void whatHasNoTrashIsAskedAboutAgain()
    {
        QFETCH(bool, safe);
        QFETCH(bool, agrees);
        extras.safe = safe;
        const ScratchFolder state;
        qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
        haveNoTrash();
        fixture_->write(1, {"a", "f/in"});
        fixture_->start();
        fixture_->mark({"f", "a"});
        fixture_->log().expect({yes, agrees ? yes : no});
        CommandFixture::choose(CommandFixture::Delete);
        const QStringList lines = log();
        QCOMPARE(lines.value(0), Log::question("Move to trash?", "f\na", "delete"));
        QCOMPARE(lines.value(1),
                 Log::question("Delete for good?",
                               "f\na<hr>Entries: 3, 5 b\nThere is no trash here", "delete"));
        QCOMPARE(QFile::exists(fixture_->left("a")), !agrees);
        QCOMPARE(QFile::exists(fixture_->left("f/in")), !agrees);
        QCOMPARE(fixture_->panel(1)->getChkFileList().size(), agrees ? 0 : 2);
    }

    void whatHasTakenTheNameIsNotDeletedForGood_data()
    {
        QTest::addColumn<bool>("safe");
        QTest::newRow("alone") << false;
        QTest::newRow("with safe operations") << true;
    }
    void whatHasTakenTheNameIsNotDeletedForGood()
    {
        QFETCH(bool, safe);
        extras.safe = safe;
        const ScratchFolder state;
        qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
        haveNoTrash();
        fixture_->write(1, {"a", "b", "other"});
        fixture_->start();
        fixture_->mark({"a", "b"});
        fixture_->log().expect(
            {yes, [this] {
                 QVERIFY(QFile::remove(fixture_->left("a")));
                 QVERIFY(QFile::rename(fixture_->left("other"), fixture_->left("a")));
                 yes();
             }});
        follow({{rows(1), [] {
                     QCOMPARE(rowsWithKeys(), QStringList("a|Was changed meanwhile"));
                     leave();
                 }}});
        CommandFixture::choose(CommandFixture::Delete);
        QCOMPARE(files().read("left/a"), QByteArray("other"));
        QVERIFY(!files().exists("left/b"));
        QCOMPARE(fixture_->panel(1)->getChkFileList(), QStringList(fixture_->left("a")));
    }

    /// What is deleted for good has a journal, too.
    void theStartOffersWhatWasCutShort()
    {
        const ScratchFolder state;
        qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
        state.write("quarn/journals/1.journal", "not a word of it is whole");
        bool isOffered = false;
        follow({{[] { return pageWithKeys() != nullptr; },
                 [&isOffered] {
                     isOffered = pageLines() == QStringList("The notes on it are damaged");
                     leave();
                 }}});
        fixture_->start();
        QTRY_VERIFY(isOffered);
        QTRY_VERIFY(pageWithKeys() == nullptr);
    }

private:
    /// What is in a trash has none.
    void haveNoTrash() const
    {
        files().makeFolder("files");
        files().makeFolder("info");
        data_->makeLink("Trash", files().path());
    }
};

QUARN_TEST_MAIN(tst_TrashCommands)
#include "tst_trashcommands.moc"
