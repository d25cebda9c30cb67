#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "tests/extras/trashcommandtest.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

/// The trash and what can be done in it, as the module "extras" does it.
class tst_TrashVisit : public TrashCommandTest
{
    Q_OBJECT

private slots:
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
        putFolder(data, fixture_->left("gone/f"));
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
                 (QStringList{
                     Log::question("Delete for good?", fixture_->left("a") + "<hr>1 b", "delete"),
                     Log::question("Delete for good?", fixture_->left("f") + "<hr>Entries: 2, 4 b",
                                   "delete")}));
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
        const QString question = Log::question("Empty trash?", "Entries: 3, 5 b", "delete");
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
};

QUARN_TEST_MAIN(tst_TrashVisit)
#include "tst_trashvisit.moc"
