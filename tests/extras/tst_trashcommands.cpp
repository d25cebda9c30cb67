#include "browser/filebrowserftab.h"
#include "files/filehandle.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zmodule.h"
#include "platform/zoptionsmenu.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/safescreens.h"
#include "tests/fileops/commandtest.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/oddnames.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/file.h>

namespace
{

using Log = CommandLog;

/// The page that has the keys; nullptr if none has.
QWidget* pageWithKeys()
{
    for (auto* page : ZScreen::instance()->findChildren<QWidget*>("EntryPage")) {
        if (page->isVisible() && ZScreen::instance()->isActive(page))
            return page;
    }
    return nullptr;
}

QStringList rowsWithKeys()
{
    QStringList rows;
    auto* list = pageWithKeys() != nullptr ? pageWithKeys()->findChild<ZListBox*>() : nullptr;
    for (int row = 0; list != nullptr && row < list->count(); ++row)
        rows.append(list->item(row)->getSubItemText(1, 0) + '|' +
                    list->item(row)->getSubItemText(1, 1));
    return rows;
}

/// What a user does, as soon as something is seen.
struct Step {
    std::function<bool()> seen;
    std::function<void()> action;
};

void follow(const QList<Step>& steps)
{
    if (steps.isEmpty())
        return;
    once(steps.first().seen, [steps] {
        steps.first().action();
        // A test that has failed must come to its end, too.
        if (QTest::currentTestFailed())
            once([] { return pageWithKeys() != nullptr; }, [] { pressKey(PhoneKey::SoftRight); });
        else
            follow(steps.mid(1));
    });
}

/// A page with that many rows has the keys.
std::function<bool()> rows(int count)
{
    return [count] { return pageWithKeys() != nullptr && rowsWithKeys().size() == count; };
}

bool messageHasKeys()
{
    return textView->isUp() && ZScreen::instance()->isActive(textView);
}

void leave()
{
    pressKey(PhoneKey::SoftRight);
}

/// Chooses from the menu of the highlighted row.
std::function<void()> choosing(char digit)
{
    return [digit] {
        pressKey(PhoneKey::SoftLeft);
        pressKey(digit);
    };
}

} // namespace

/// Delete into the trash, and the trash, as the module "extras" does it.
class tst_TrashCommands : public CommandTest
{
    Q_OBJECT

private slots:
    /// The list has the trashes of all file systems: who puts something there waits for the others.
    void initTestCase()
    {
        const QString path = QDir::tempPath() + QStringLiteral("/quarn-trash-test.lock");
        trashes_ =
            FileHandle(open(encodedPath(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
        QVERIFY(trashes_.isOpen());
        QVERIFY(flock(trashes_.get(), LOCK_SH) == 0);
    }

    void init()
    {
        CommandTest::init();
        extras.trash = true;
        data_ = std::make_unique<ScratchFolder>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(data_->path()));
        ZModule::setFolder(QByteArrayLiteral(QUARN_EXTRAS_MODULES));
    }
    void cleanup()
    {
        CommandTest::cleanup();
        ZModule::setExecutable({});
        QVERIFY(entryPage() == nullptr && operationBox() == nullptr);
        data_.reset();
    }

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

    void aMediumThatTakesLongIsNotWaitedForByARestore()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        throwAway("a");
        CallFaults faults;
        faults.holdFlushing();
        bool isShown = false;
        follow({{rows(1), choosing('1')},
                {[&faults] { return operationBox() != nullptr && faults.isFlushing(); },
                 [&isShown] {
                     isShown = true;
                     leave();
                 }},
                {[] { return pageWithKeys() != nullptr; }, leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QVERIFY(isShown);
        QCOMPARE(files().read("left/a"), QByteArray("a"));
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

    void theTrashIsShown()
    {
        fixture_->write(1, {"a.txt"});
        fixture_->start();
        follow({{rows(0), [] {
                     QCOMPARE(entryPage()->findChild<ZListBox*>()->emptyText(), "Trash is empty");
                     QCOMPARE(pageKeys(), (QStringList{QString(), LANG_BACK}));
                     // There is nothing that could be done.
                     pressKey(PhoneKey::SoftLeft);
                     pressKey(PhoneKey::Return);
                     QVERIFY(pageHasKeys());
                     leave();
                 }}});
        CommandFixture::choose(CommandFixture::Trash);
        throwAway("a.txt");
        log();
        follow({{rows(1), [] {
                     const QString today = QDate::currentDate().toString("dd/MM/yyyy");
                     const QStringList row = rowsWithKeys().value(0).split('|');
                     QCOMPARE(row.value(0), "a.txt");
                     QVERIFY2(row.value(1).endsWith('\t' + today), qPrintable(row.value(1)));
                     QVERIFY(pageNotes().value(0).endsWith("/left"));
                     QCOMPARE(pageNotes().value(1), "5 b");
                     QCOMPARE(pageKeys(), (QStringList{LANG_OPTIONS, LANG_BACK}));
                     QVERIFY(!entryPage()->findChild<ZListBox*>()->item(0)->pixmap(0).isNull());
                     leave();
                 }}});
        CommandFixture::choose(CommandFixture::Trash);
        // Nothing has changed, so nothing is listed.
        QCOMPARE(log(), QStringList());
    }

    void theLatestIsTheFirst()
    {
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        throwAway("a");
        throwAway("b");
        data_->write("Trash/info/a.trashinfo",
                     "[Trash Info]\nPath=/x/older\nDeletionDate=2020-01-01T00:00:00\n");
        follow({{rows(2), [] {
                     QVERIFY(rowsWithKeys().first().startsWith("b|"));
                     QCOMPARE(rowsWithKeys().last(), "older|/x\t01/01/2020");
                     leave();
                 }}});
        CommandFixture::choose(CommandFixture::Trash);
    }

    void anEntryIsRestored()
    {
        fixture_->write(1, {"a", "b"});
        fixture_->start();
        throwAway("a");
        throwAway("b");
        log();
        follow({{rows(2),
                 [] {
                     // Return opens the menu, too.
                     pressKey(PhoneKey::Return);
                     pressKey('1');
                 }},
                {rows(1), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(log(), fixture_->bothListed());
        // Which of the two is the first the second of the clock decides.
        const QString back = trashed() == QStringList("a") ? "b" : "a";
        QCOMPARE(files().read("left/" + back), back.toUtf8());
        QCOMPARE(trashed().size(), 1);
    }

    void aPlaceThatIsTakenIsAskedAbout_data()
    {
        QTest::addColumn<char>("digit");
        QTest::addColumn<QByteArray>("there");
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<QStringList>("inTrash");
        QTest::newRow("replaced") << '1' << QByteArray("a") << QByteArray() << QStringList{"a (2)"};
        QTest::newRow("both") << '2' << QByteArray("new") << QByteArray("a") << QStringList();
        QTest::newRow("left out") << '3' << QByteArray("new") << QByteArray() << QStringList{"a"};
    }
    void aPlaceThatIsTakenIsAskedAbout()
    {
        QFETCH(char, digit);
        fixture_->write(1, {"a"});
        fixture_->start();
        throwAway("a");
        files().write("left/a", "new");
        const int left = digit == '2' ? 0 : 1;
        follow({{rows(1), choosing('1')},
                {rows(3),
                 [digit] {
                     QCOMPARE(rowsWithKeys(), (QStringList{"1  Replace|The other goes to the trash",
                                                           "2  Keep both|", "3  Leave out|"}));
                     QCOMPARE(pageWithKeys()->property("lines").toStringList().value(0),
                              "Already there: a");
                     pressKey(digit);
                 }},
                {rows(left), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QTEST(files().read("left/a"), "there");
        QFETCH(QByteArray, second);
        QCOMPARE(files().exists("left/a (2)"), !second.isEmpty());
        if (!second.isEmpty())
            QCOMPARE(files().read("left/a (2)"), second);
        QTEST(trashed(), "inTrash");
    }

    void whatNobodyKnowsThePlaceOfComesHereIfTheUserAgrees()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        throwAway("a");
        QVERIFY(QFile::remove(data_->path("Trash/info/a.trashinfo")));
        fixture_->log().expect({no, yes});
        log();
        follow({{rows(1),
                 [] {
                     QCOMPARE(rowsWithKeys(), QStringList("a|Place not known\t"));
                     choosing('1')();
                 }},
                {unasked(1), choosing('1')},
                {rows(0), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        const QString question = Log::question(
            "Restore", "Place not known<hr>Restore it to this folder?\n" + fixture_->left(),
            "warning");
        QCOMPARE(log().mid(0, 2), (QStringList{question, question}));
        QCOMPARE(files().read("left/a"), QByteArray("a"));
    }

    void whatBelongsToAnotherFileSystemIsCopiedThere_data()
    {
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("free") << false;
        QTest::newRow("taken") << true;
    }
    void whatBelongsToAnotherFileSystemIsCopiedThere()
    {
        QFETCH(bool, isTaken);
        const ScratchFolder data(ScratchFolder::Memory);
        const ScratchFolder state;
        qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
        qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
        data.write("Trash/files/f/in", "content");
        data.write("Trash/info/f.trashinfo",
                   "[Trash Info]\nPath=" + QFile::encodeName(fixture_->left("gone/f")) +
                       "\nDeletionDate=2026-01-01T00:00:00\n");
        if (isTaken)
            files().write("left/gone/f", "other");
        fixture_->start();
        QList<Step> steps{{rows(1), choosing('1')}, {rows(0), leave}};
        if (isTaken)
            steps.insert(1, {rows(3), [] { pressKey('2'); }});
        follow(steps);
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(files().read(isTaken ? "left/gone/f (2)/in" : "left/gone/f/in"),
                 QByteArray("content"));
        QVERIFY(!data.exists("Trash/files/f") && !data.exists("Trash/info/f.trashinfo"));
        if (isTaken)
            QCOMPARE(files().read("left/gone/f"), QByteArray("other"));
    }

    void whatCannotBeRestoredIsTold()
    {
        fixture_->write(1, {"f/a"});
        fixture_->start();
        fixture_->panel(1)->setDir(fixture_->left("f"), 0);
        throwAway("a");
        QVERIFY(QDir().rmdir(fixture_->left("f")));
        files().write("left/f", "in the way");
        log();
        follow({{rows(1), choosing('1')},
                {messageHasKeys, [] { pressKey(PhoneKey::Return); }},
                {rows(1), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        QCOMPARE(log().value(0).section('\n', 0, 0),
                 Log::message(LANG_ERROR, "a\n", "error").section('\n', 0, 0));
        QCOMPARE(trashed(), QStringList("a"));
    }

    void anEntryIsDeletedForGoodAfterAQuestion()
    {
        fixture_->write(1, {"a", "f/in"});
        fixture_->start();
        throwAway("a");
        throwAway("f");
        log();
        fixture_->log().expect({no, yes, yes});
        follow({{rows(2), choosing('2')},
                {unasked(2), choosing('2')},
                {rows(1), choosing('2')},
                {rows(0), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        const QStringList lines = log();
        QCOMPARE(lines.value(0), lines.value(1));
        QStringList named{lines.value(1), lines.value(2)};
        named.sort();
        QCOMPARE(named,
                 (QStringList{Log::question("Delete for good?", fixture_->left("a"), "delete"),
                              Log::question("Delete for good?", fixture_->left("f"), "delete")}));
        QCOMPARE(trashed(), QStringList());
        QVERIFY(QDir(data_->path("Trash/expunged")).isEmpty());
    }

    void theTrashIsEmptiedAfterAQuestion()
    {
        fixture_->write(1, {"a", "f/in", "kept"});
        fixture_->start();
        throwAway("a");
        throwAway("f");
        log();
        fixture_->log().expect({no, yes});
        follow({{rows(2), choosing('3')}, {unasked(1), choosing('3')}, {rows(0), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        const QString question = Log::question("Empty trash?", "Entries: 2", "delete");
        QCOMPARE(log(), (QStringList{question, question}));
        QCOMPARE(trashed(), QStringList());
        QVERIFY(QDir(data_->path("Trash/info")).isEmpty());
        QVERIFY(QFile::exists(fixture_->left("kept")));
    }

    void whatWasCutShortIsGoneOnWith()
    {
        fixture_->start();
        data_->write("Trash/files/a", "a");
        data_->write("Trash/expunged/1/in", "in");
        data_->makeFolder("Trash/info");
        follow({{[this] { return rows(1)() && QDir(data_->path("Trash/expunged")).isEmpty(); },
                 leave}});
        CommandFixture::choose(CommandFixture::Trash);
    }

    void anEntryHasProperties()
    {
        fixture_->write(1, {"a"});
        fixture_->start();
        throwAway("a");
        log();
        follow({{rows(1), choosing('4')},
                {messageHasKeys, [] { pressKey(PhoneKey::Return); }},
                {rows(1), leave}});
        CommandFixture::choose(CommandFixture::Trash);
        const QString line = log().value(0);
        for (const QString& part :
             {QString("Type: File"), QString("Name: a"), "Path: " + fixture_->left(),
              QString("Size: 1 b"), QString("Deleted: "), "Trash: " + data_->path("Trash")})
            QVERIFY2(line.contains(part), qPrintable(line));
    }

private:
    const ScratchFolder& files() const { return fixture_->files(); }
    FM* window() const { return fixture_->window(); }

    /// The user has that many answers left, and the page has the keys again.
    std::function<bool()> unasked(int answers)
    {
        return [this, answers] {
            return pageWithKeys() != nullptr && !textView->isWaiting() &&
                   fixture_->log().unused() == answers;
        };
    }

    void throwAway(const QString& name)
    {
        fixture_->highlight(name);
        fixture_->log().expect({yes});
        CommandFixture::choose(CommandFixture::Delete);
    }
    /// What is in a trash has none.
    void haveNoTrash() const
    {
        files().makeFolder("files");
        files().makeFolder("info");
        data_->makeLink("Trash", files().path());
    }
    /// The names in the trash.
    QStringList trashed() const
    {
        return QDir(data_->path("Trash/files"))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                       QDir::Name);
    }

    std::unique_ptr<ScratchFolder> data_;
    FileHandle trashes_;
};

QUARN_TEST_MAIN(tst_TrashCommands)
#include "tst_trashcommands.moc"
