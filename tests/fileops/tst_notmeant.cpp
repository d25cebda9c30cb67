#include "browser/filebrowserftab.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "tests/fileops/commandtest.h"
#include "tests/support/bytefiles.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "widgets/kwidget.h"
#include "widgets/textinput.h"

#include <cstdio>
#include <functional>
#include <sys/stat.h>

// What a command may not touch: the folder above by way of the back entry, anything at all while
// nothing is under the highlight, and what came into the place of the entry that a question named.

namespace
{

using Fixture = CommandFixture;

enum Exchange { File, Folder, LinkToFile, LinkToFolder, LinkToNothing, Nothing };

constexpr std::pair<Exchange, const char*> Exchanges[] = {{File, "another file"},
                                                          {Folder, "a folder"},
                                                          {LinkToFile, "a link to a file"},
                                                          {LinkToFolder, "a link to a folder"},
                                                          {LinkToNothing, "a link to nothing"},
                                                          {Nothing, "nothing"}};

/// Columns "before" and "after": what an entry is, and what comes into its place.
void addExchanges(bool vanishing = true)
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    for (const auto& [before, was] : Exchanges)
        for (const auto& [after, becomes] : Exchanges)
            // About a link to nothing no question is asked.
            if (before < LinkToNothing && (after != Nothing || vanishing))
                QTest::addRow("%s becomes %s", was, becomes) << int(before) << int(after);
}

/// The same with a column "item": Copy or Move.
void addExchangesWhilePasting(bool vanishing)
{
    QTest::addColumn<int>("item");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    for (const auto item : {Fixture::Copy, Fixture::Move})
        for (const auto& [before, was] : Exchanges)
            for (const auto& [after, becomes] : Exchanges)
                if (before < LinkToNothing && (after != Nothing || vanishing))
                    QTest::addRow("%s: %s becomes %s", item == Fixture::Copy ? "copy" : "move", was,
                                  becomes)
                        << int(item) << int(before) << int(after);
}

} // namespace

class tst_NotMeant : public CommandTest
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        // Whether a question is asked is left open where nothing is done anyway.
        fixture_->log().forget();
        fixture_.reset();
    }

    void backEntryIsNotDeleted()
    {
        begin();
        const ByteTree before = tree();
        highlightBackEntry();
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Delete);
        QCOMPARE(before.differences(tree()), QStringList());
        // Asked or not, the user is told.
        QVERIFY(textView->isUp());
        QCOMPARE(textView->shownText(), LANG_UNABLE_DELETE);
        fixture_->dismissMessage();
    }

    void backEntryIsNotPasted_data()
    {
        QTest::addColumn<int>("item");
        QTest::addColumn<bool>("builtIn");
        QTest::newRow("copy") << int(Fixture::Copy) << false;
        QTest::newRow("built-in copy") << int(Fixture::Copy) << true;
        QTest::newRow("move") << int(Fixture::Move) << false;
    }

    void backEntryIsNotPasted()
    {
        QFETCH(int, item);
        QFETCH(bool, builtIn);
        begin();
        const ByteTree before = tree();
        for (const int page : {1, 2}) {
            fixture_->goTo(1);
            highlightBackEntry();
            Fixture::choose(Fixture::CopyItem(item));
            fixture_->goTo(page);
            fixture_->log().expect({yes, yes});
            if (builtIn)
                holdKey(PhoneKey::Modifier);
            Fixture::choose(Fixture::Paste);
            if (builtIn)
                releaseKey(PhoneKey::Modifier);
            QCOMPARE(before.differences(tree()), QStringList());
            QVERIFY(textView->isUp());
            dismissAll();
            fixture_->log().forget();
        }
    }

    void backEntryIsNotRenamed_data()
    {
        QTest::addColumn<QString>("typed");
        for (const char* typed : {"up", "", "..", ".", "folder/up", "../up", "../right/up"})
            QTest::newRow(typed) << typed;
    }

    void backEntryIsNotRenamed()
    {
        QFETCH(QString, typed);
        begin();
        const ByteTree before = tree();
        highlightBackEntry();
        fixture_->log().expect({typing(typed)});
        Fixture::choose(Fixture::Rename);
        QCOMPARE(before.differences(tree()), QStringList());
        if (textView->isUp())
            dismissAll();
    }

    void backEntryCannotBeMarked()
    {
        begin();
        const ByteTree before = tree();
        pressKey('0');
        highlightBackEntry();
        pressKey(PhoneKey::Return);
        fixture_->log().take();
        Fixture::choose(Fixture::Delete);
        QCOMPARE(before.differences(tree()), QStringList());
        QCOMPARE(log().filter("question"), QStringList());
    }

    void nothingIsTouchedWhileNothingIsListed_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<int>("item");
        QTest::newRow("delete") << int(Fixture::Delete) << 0;
        QTest::newRow("rename") << int(Fixture::Rename) << 0;
        QTest::newRow("copy") << int(Fixture::CopyMenu) << int(Fixture::Copy);
        QTest::newRow("move") << int(Fixture::CopyMenu) << int(Fixture::Move);
    }

    void nothingIsTouchedWhileNothingIsListed()
    {
        QFETCH(int, option);
        QFETCH(int, item);
        showUnreadableFolder();
        const ByteTree before = tree();
        fixture_->log().expect({yes, yes});
        if (option != Fixture::CopyMenu) {
            Fixture::choose(Fixture::Option(option));
        } else {
            Fixture::choose(Fixture::CopyItem(item));
            fixture_->goTo(2);
            Fixture::choose(Fixture::Paste);
        }
        QCOMPARE(before.differences(tree()), QStringList());
        QCOMPARE(log().filter("question"), QStringList());
        QVERIFY(!textView->isUp());
    }

    void nothingIsSentOrOpenedWhileNothingIsListed()
    {
        showUnreadableFolder();
        Fixture::choose(Fixture::SendByBluetooth);
        QCOMPARE(log(), QStringList(CommandLog::message(LANG_ERROR, "Error can't send ", "error")));
        fixture_->dismissMessage();
        pressKey(PhoneKey::Return);
        QCOMPARE(log(), QStringList());
    }

    void propertiesAreOfNothingWhileNothingIsListed()
    {
        showUnreadableFolder();
        Fixture::choose(Fixture::Properties);
        QVERIFY(textView->isUp());
        QVERIFY2(textView->shownText().contains(LANG_TYPE + ": " + LANG_UNK),
                 qPrintable(textView->shownText()));
        QVERIFY(textView->shownText().contains(LANG_SIZE + ": 0 b"));
        fixture_->dismissMessage();
    }

    void marksOfNothingDeleteNothing()
    {
        showUnreadableFolder();
        const ByteTree before = tree();
        fixture_->window()->panel(1)->switchMultiSelect();
        fixture_->log().expect({yes});
        Fixture::choose(Fixture::Delete);
        QCOMPARE(before.differences(tree()), QStringList());
    }

    void whatComesIntoThePlaceOfAnEntryIsNotDeleted_data() { addExchanges(); }
    void whatComesIntoThePlaceOfAnEntryIsNotDeleted()
    {
        begin();
        makeEntry("left/x", 'b');
        showLeft();
        fixture_->highlight("x");
        ByteTree after;
        fixture_->log().expect({[this, &after] {
            exchange("left/x");
            after = tree();
            yes();
        }});
        Fixture::choose(Fixture::Delete);
        expectUntouched(after);
        QCOMPARE(textView->shownText(), LANG_UNABLE_DELETE);
        fixture_->dismissMessage();
    }

    void folderThatComesIntoThePlaceOfTheListedOneKeepsItsEntries_data() { addFileAndFolder(); }
    void folderThatComesIntoThePlaceOfTheListedOneKeepsItsEntries()
    {
        QFETCH(bool, isFolder);
        begin();
        fixture_->write(1, {isFolder ? "x/in" : "x"});
        showLeft();
        fixture_->highlight("x");
        ByteTree after;
        fixture_->log().expect({[this, &after, isFolder] {
            QCOMPARE(::rename(at("left").constData(), at("old left").constData()), 0);
            fixture_->write(1, {isFolder ? "x/other" : "x"});
            after = tree();
            yes();
        }});
        Fixture::choose(Fixture::Delete);
        expectUntouched(after);
        fixture_->dismissMessage();
    }

    void whatComesIntoThePlaceOfATargetIsNotReplaced_data() { addExchangesWhilePasting(false); }
    void whatComesIntoThePlaceOfATargetIsNotReplaced()
    {
        begin();
        fixture_->write(1, {"x"});
        makeEntry("right/x", 'b');
        pasteWhile([this] { exchange("right/x"); });
    }

    void targetStaysWhenSomethingElseComesIntoThePlaceOfTheSource_data()
    {
        addExchangesWhilePasting(true);
    }

    void targetStaysWhenSomethingElseComesIntoThePlaceOfTheSource()
    {
        begin();
        makeEntry("left/x", 'b');
        fixture_->write(2, {"x"});
        pasteWhile([this] { exchange("left/x"); });
    }

    void folderThatComesIntoThePlaceOfTheDestinationGetsNothing_data()
    {
        QTest::addColumn<int>("item");
        QTest::newRow("copy") << int(Fixture::Copy);
        QTest::newRow("move") << int(Fixture::Move);
    }

    void folderThatComesIntoThePlaceOfTheDestinationGetsNothing()
    {
        begin();
        fixture_->write(1, {"x"});
        fixture_->write(2, {"x"});
        pasteWhile([this] {
            QCOMPARE(::rename(at("right").constData(), at("old right").constData()), 0);
            // Even with the very entry in it that is to be replaced.
            makeFolder(at("right"));
            QCOMPARE(::rename(at("old right/x").constData(), at("right/x").constData()), 0);
        });
    }

    void builtInCopyWritesNoFileThroughALink_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("to nothing") << QByteArray("../new");
        QTest::newRow("out of the folder") << QByteArray("../../elsewhere");
    }

    void builtInCopyWritesNoFileThroughALink()
    {
        QFETCH(QByteArray, target);
        begin();
        fixture_->write(1, {"x"});
        makeLink(at("right/x"), target);
        showLeft();
        fixture_->highlight("x");
        Fixture::choose(Fixture::Copy);
        fixture_->goTo(2);
        const ByteTree before = tree();
        holdKey(PhoneKey::Modifier);
        Fixture::choose(Fixture::Paste);
        releaseKey(PhoneKey::Modifier);
        expectUntouched(before);
        dismissAll();
    }

    void whatComesIntoThePlaceOfASourceIsNotMoved_data() { addExchanges(false); }
    void whatComesIntoThePlaceOfASourceIsNotMoved()
    {
        begin();
        makeEntry("left/x", 'b');
        showLeft();
        fixture_->highlight("x");
        Fixture::choose(Fixture::Move);
        fixture_->goTo(2);
        ByteTree after;
        fixture_->log().expect({[this, &after] {
            exchange("left/x");
            after = tree();
            yes();
        }});
        Fixture::choose(Fixture::Paste);
        expectUntouched(after);
        dismissAll();
    }

    void fileChangedInItsPlaceIsStillTheOneThatWasNamed()
    {
        begin();
        fixture_->write(1, {"x"});
        showLeft();
        fixture_->highlight("x");
        fixture_->log().expect({[this] {
            writeFile(at("left/x"), "more");
            yes();
        }});
        Fixture::choose(Fixture::Delete);
        QVERIFY(!isThere(at("left/x")));
        QVERIFY(!textView->isUp());
    }

    void laterEntriesAreAskedAboutAsTheyAreThen()
    {
        begin();
        fixture_->write(1, {"a", "b"});
        showLeft();
        fixture_->mark({"a", "b"});
        // "b" is exchanged before its question, which so names what is there.
        fixture_->log().expect({[this] {
                                    QCOMPARE(remove(at("left/b").constData()), 0);
                                    fixture_->write(1, {"b/in"});
                                    yes();
                                },
                                yes});
        Fixture::choose(Fixture::Delete);
        QVERIFY(!isThere(at("left/a")) && !isThere(at("left/b")));
        QVERIFY(log().join('\n').contains(LANG_DELETE_DIR));
    }

private:
    QByteArray at(const QByteArray& path) const
    {
        return fixture_->files().path().toLocal8Bit() + '/' + path;
    }

    ByteTree tree() const { return ByteTree::of(fixture_->files().path().toLocal8Bit()); }

    /// Panels on two folders with something in them and around them.
    void begin()
    {
        fixture_->write(1, {"folder/in", "file"});
        fixture_->write(2, {"kept"});
        fixture_->files().write("target/in", "in the target");
        fixture_->files().write("target file", "the target");
        fixture_->start();
    }

    void showLeft()
    {
        fixture_->panel(1)->setDir(fixture_->left(), 0);
        fixture_->log().take();
    }

    void highlightBackEntry()
    {
        QVERIFY(fixture_->panel(1)->count() > 0);
        fixture_->panel(1)->setCurrentItem(0);
        QCOMPARE(fixture_->program().rows(1).first(), QStringLiteral(".."));
        fixture_->log().take();
    }

    void showUnreadableFolder()
    {
        begin();
        fixture_->files().write("left/locked/in", "in");
        fixture_->files().setMode("left/locked", 0);
        showLeft();
        fixture_->highlight("locked");
        pressKey(PhoneKey::Return);
        QCOMPARE(fixture_->panel(1)->count(), 0);
        // So that it is there to be compared.
        fixture_->files().setMode("left/locked", 0700);
        fixture_->log().take();
    }

    /// Pastes "x" of the left folder over that of the right one, as the row says, with a change
    /// while the question whether to replace it is open. Nothing may be touched after the change.
    void pasteWhile(const std::function<void()>& change)
    {
        QFETCH(int, item);
        showLeft();
        fixture_->highlight("x");
        Fixture::choose(Fixture::CopyItem(item));
        fixture_->goTo(2);
        ByteTree after;
        if (item == Fixture::Move)
            fixture_->log().expect({yes});
        fixture_->log().expect({[this, &after, &change] {
            change();
            after = tree();
            yes();
        }});
        Fixture::choose(Fixture::Paste);
        expectUntouched(after);
        dismissAll();
    }

    void makeEntry(const QByteArray& path, char version, Exchange kind)
    {
        switch (kind) {
        case File:
            writeFile(at(path), QByteArray("version ") + version);
            break;
        case Folder:
            makeFolder(at(path));
            writeFile(at(path + "/in"), QByteArray("version ") + version);
            break;
        case LinkToFile:
            makeLink(at(path), version == 'b' ? "../target file" : "../left/file");
            break;
        case LinkToFolder:
            makeLink(at(path), version == 'b' ? "../target" : "../left/folder");
            break;
        case LinkToNothing:
            makeLink(at(path), "../nowhere");
            break;
        case Nothing:
            break;
        }
    }

    void makeEntry(const QByteArray& path, char version)
    {
        QFETCH(int, before);
        makeEntry(path, version, Exchange(before));
    }

    /// The entry goes to another place, and another one comes to its own.
    void exchange(const QByteArray& path)
    {
        QFETCH(int, after);
        QCOMPARE(::rename(at(path).constData(), at("taken away").constData()), 0);
        makeEntry(path, 'c', Exchange(after));
    }

    void expectUntouched(const ByteTree& after)
    {
        QCOMPARE(after.differences(tree()), QStringList());
        QVERIFY2(textView->isUp(), "nothing is said");
    }

    static void dismissAll()
    {
        for (int i = 0; i < 5 && textView->isUp(); ++i) {
            QTRY_COMPARE(keyReceiver(), textView);
            pressKey(PhoneKey::SoftRight);
        }
        QVERIFY(!textView->isUp());
    }
};

QUARN_TEST_MAIN(tst_NotMeant)
#include "tst_notmeant.moc"
