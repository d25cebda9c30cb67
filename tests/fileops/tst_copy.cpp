#include "browser/filebrowserftab.h"
#include "tests/fileops/copytest.h"
#include "tests/support/testmain.h"

#include <QDir>

namespace
{

QString pleaseWait()
{
    return Log::notice(LANG_COPYING, LANG_PLEASE_WAIT, "copy");
}

} // namespace

class tst_Copy : public CopyTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void withoutTheModifierTheShellCopiesBehindABox()
    {
        write("a", "content");
        bool boxWasSeen = false;
        fixture_->log().setShell([&boxWasSeen](const QByteArray& command) {
            boxWasSeen = textView->isVisible() && textView->shownText() == LANG_PLEASE_WAIT;
            return systemShell(command);
        });
        window_->copy(left("a"), right());
        QCOMPARE(taken(), (QStringList{pleaseWait(), cp(left("a"), right()), Log::cleared()}));
        QVERIFY(boxWasSeen);
        QCOMPARE(read("a"), QByteArray("content"));
        QVERIFY(textView->isHidden());
    }

    void shellCopiesWholeFoldersWithWhatIsHidden()
    {
        write("f/a", "1");
        write("f/.hidden", "2");
        files().makeFolder("left/f/empty/inner");
        files().makeLink("left/f/link", "a");
        window_->copy(left("f"), right());
        QCOMPARE(read("f/a"), QByteArray("1"));
        QCOMPARE(read("f/.hidden"), QByteArray("2"));
        QVERIFY(QFileInfo(right("f/empty/inner")).isDir());
        QVERIFY(QFileInfo(right("f/link")).isSymLink());
    }

    void whatTheShellAnswersIsNotLookedAt_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("success") << 0;
        QTest::newRow("failure") << 256;
        QTest::newRow("no shell") << -1;
    }

    void whatTheShellAnswersIsNotLookedAt()
    {
        QFETCH(int, status);
        fixture_->log().setShell([status](const QByteArray&) { return status; });
        window_->copy(left("missing"), right());
        QCOMPARE(taken(),
                 (QStringList{pleaseWait(), cp(left("missing"), right()), Log::cleared()}));
    }

    void entriesWithOddNamesAreCopiedByTheShell_data() { addOddNames(); }
    void entriesWithOddNamesAreCopiedByTheShell()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        fixture_->log().setShell(&Log::quietShell);
        write(name, "content");
        window_->copy(left(name), right());
        QCOMPARE(taken(), (QStringList{pleaseWait(), cp(left(name), right()), Log::cleared()}));
        QCOMPARE(QFile::exists(right(name)), works);
    }

    void entriesWithOddNamesAreCopiedBlockByBlock_data() { addOddNames(); }
    void entriesWithOddNamesAreCopiedBlockByBlock()
    {
        QFETCH(QString, name);
        write("in %1 \"it\"/" + name, "content");
        copyBuiltIn(left("in %1 \"it\"/" + name));
        QCOMPARE(taken(), smallFile(left("in %1 \"it\"/" + name), right('/' + name), "7 b") +
                              QStringList{Log::cleared()});
        QCOMPARE(read(name), QByteArray("content"));
        copyBuiltIn(left("in %1 \"it\""));
        QCOMPARE(read("in %1 \"it\"/" + name), QByteArray("content"));
    }

    void boxTellsHowFarAFileIs_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("empty") << 0LL << QStringList{"0% (0 b/0 b)", "0% (0 b/0 b)"};
        QTest::newRow("one byte") << 1LL << QStringList{"0% (0 b/1 b)", "0% (0 b/1 b)"};
        QTest::newRow("less than a block")
            << Block - 1 << QStringList{"0% (0 b/511.99 Kb)", "0% (0 b/511.99 Kb)"};
        QTest::newRow("a block") << Block
                                 << QStringList{"0% (0 b/512 Kb)", "0% (0 b/512 Kb)",
                                                "100% (512 Kb/512 Kb)"};
        QTest::newRow("600000") << 600000LL
                                << QStringList{"0% (0 b/585.93 Kb)", "0% (0 b/585.93 Kb)",
                                               "87% (512 Kb/585.93 Kb)"};
        QTest::newRow("two megabytes")
            << 4 * Block << QStringList{"0% (0 b/2 Mb)",   "0% (0 b/2 Mb)",     "25% (512 Kb/2 Mb)",
                                        "50% (1 Mb/2 Mb)", "75% (1.5 Mb/2 Mb)", "100% (2 Mb/2 Mb)"};
    }

    void boxTellsHowFarAFileIs()
    {
        QFETCH(qint64, size);
        QFETCH(QStringList, texts);
        const QByteArray content = QByteArray(size, 'c');
        write("a", content);
        copyBuiltIn(left("a"));
        QStringList expected;
        for (const QString& text : std::as_const(texts))
            expected.append(progress(left("a"), right("/a"), text));
        QCOMPARE(taken(), expected + QStringList{Log::cleared()});
        QVERIFY(QFile::exists(right("a")));
        QVERIFY(read("a") == content);
    }

    void copyFileTellsWhetherReadingAndWritingWorked()
    {
        write("a", "content");
        QVERIFY(window_->CopyFile(left("a"), right("b")));
        QCOMPARE(taken(), smallFile(left("a"), right("b"), "7 b") + QStringList{Log::cleared()});
        QCOMPARE(read("b"), QByteArray("content"));
        QVERIFY(!window_->CopyFile(left("a"), right("none/b")));
        QCOMPARE(taken(), QStringList(smallFile(left("a"), right("none/b"), "7 b").first()));
        QVERIFY2(textView->isUp(), "the box keeps its last text");
        QCOMPARE(textView->shownText(), progressText(left("a"), right("none/b"), "0% (0 b/7 b)"));
        for (const QString& nothing : {left("missing"), left(), QString("/dev/null")}) {
            QVERIFY(window_->CopyFile(nothing, right("c")));
            QCOMPARE(taken(), QStringList(Log::cleared()));
            QVERIFY(!QFile::exists(right("c")));
        }
        files().setMode("left/a", 0);
        QVERIFY(window_->CopyFile(left("a"), right("c")));
        QVERIFY(!QFile::exists(right("c")));
    }

    void existingTargetIsReplaced()
    {
        write("a", "new");
        files().write("right/a", "old and longer");
        copyBuiltIn(left("a"));
        QCOMPARE(read("a"), QByteArray("new"));
    }

    void heldModifierMakesAPasteCopyBlockByBlock()
    {
        write("a", "content");
        window_->panel(1)->setDir(left(), 0);
        fixture_->toClipboard(CommandFixture::Copy, "a", 2);
        holdKey(PhoneKey::Modifier);
        CommandFixture::choose(CommandFixture::Paste);
        releaseKey(PhoneKey::Modifier);
        QCOMPARE(taken(), smallFile(left("a"), right("/a"), "7 b") + QStringList{Log::cleared()} +
                              fixture_->bothListed());
        QCOMPARE(read("a"), QByteArray("content"));
    }

    void treeIsCopiedFileByFile()
    {
        for (const char* name : {"f/b", "f/A", "f/sub/c", "f/sub/deep/er/d", "f/only/in/here/e"})
            write(name, name);
        files().makeFolder("left/f/empty/inner");
        write("f/.hidden", "x");
        copyBuiltIn(left("f"));
        QStringList expected;
        for (const char* name : {"f/A", "f/b", "f/only/in/here/e", "f/sub/c", "f/sub/deep/er/d"}) {
            expected += smallFile(left(name), right(name), QString::number(qstrlen(name)) + " b");
            QCOMPARE(read(name), QByteArray(name));
        }
        QCOMPARE(taken(), expected + QStringList{Log::cleared()});
        QVERIFY2(!QFile::exists(right("f/empty")), "subfolders without files are left out");
        QVERIFY2(!QFile::exists(right("f/.hidden")), "walks see nothing hidden");
    }

    void treeOfTheRootFolderIsCopied()
    {
        // What is in the root has two separators at its beginning.
        write("f/a", "1");
        write("f/sub/b", "2");
        copyBuiltIn('/' + left("f"));
        QCOMPARE(read("f/a"), QByteArray("1"));
        QCOMPARE(read("f/sub/b"), QByteArray("2"));
    }

    void treeIsCopiedOverWhatIsThere()
    {
        write("f/sub/a", "new");
        files().write("right/f/sub/a", "old and longer");
        files().write("right/f/b", "stays");
        copyBuiltIn(left("f"));
        QCOMPARE(read("f/sub/a"), QByteArray("new"));
        QCOMPARE(read("f/b"), QByteArray("stays"));
    }

    void treeWithoutFilesIsCopiedByTheShell()
    {
        files().makeFolder("left/f/empty/inner");
        write("f/.hidden", "x");
        copyBuiltIn(left("f"));
        // The target folder is there already when the shell begins.
        QCOMPARE(taken(), (QStringList{pleaseWait(), cp(left("f"), right() + '/'), Log::cleared(),
                                       Log::cleared()}));
        QVERIFY(QFileInfo(right("f/empty/inner")).isDir());
        QCOMPARE(read("f/.hidden"), QByteArray("x"));
        QVERIFY(!QFile::exists(right("f/f")));
    }

    void targetFolderIsMadeBeforeTheTreeIsMeasured()
    {
        write("f/a", "x");
        bool isThere = false;
        const DuringWork look([this] { return window_->fileCount == 1; },
                              [this, &isThere] { isThere = QFileInfo(right("f")).isDir(); });
        window_->fileCount = 0;
        copyBuiltIn(left("f"));
        QVERIFY(look.hasHappened() && isThere);
    }

    void countersGoOnThroughATreeAndNotThroughAFile()
    {
        for (const char* name : {"f/a", "f/b", "f/sub/c"})
            write(name, "x");
        window_->dirCount = 10;
        window_->fileCount = 100;
        copyBuiltIn(left("f"));
        QCOMPARE(window_->dirCount, 12);
        QCOMPARE(window_->fileCount, 103);
        copyBuiltIn(left("f/a"));
        QCOMPARE(window_->dirCount, 12);
        QCOMPARE(window_->fileCount, 103);
    }

    void linksAreFollowedBlockByBlock()
    {
        write("real/a", "content");
        files().makeLink("left/file", left("real/a"));
        files().makeLink("left/folder", "real");
        files().makeLink("left/real/link", "a");
        files().makeLink("left/real/loop", "..");
        copyBuiltIn(left("file"));
        QCOMPARE(read("file"), QByteArray("content"));
        QVERIFY(!QFileInfo(right("file")).isSymLink());
        copyBuiltIn(left("folder"));
        QVERIFY(!QFileInfo(right("folder")).isSymLink());
        for (const char* name : {"folder/a", "folder/link", "folder/loop/file"}) {
            QCOMPARE(read(name), QByteArray("content"));
            QVERIFY(!QFileInfo(right(name)).isSymLink());
        }
        QVERIFY(!QFile::exists(right("folder/loop/real")));
    }

    void folderIsCopiedIntoItsOwnSubfolder()
    {
        write("f/a", "x");
        files().makeFolder("left/f/sub");
        holdKey(PhoneKey::Modifier);
        window_->copy(left("f"), left("f/sub"));
        releaseKey(PhoneKey::Modifier);
        QVERIFY(QFile::exists(left("f/sub/f/a")));
        QVERIFY2(!QFile::exists(left("f/sub/f/sub")), "what the copy itself made was copied");
    }

    void sizesHaveTheirTexts()
    {
        QCOMPARE(FM::countSize(1023.5), QStringLiteral("1023.5 b"));
        QCOMPARE(FM::countSize(1024), QStringLiteral("1 Kb"));
        QCOMPARE(FM::countSize(1048575), QStringLiteral("1023.99 Kb"));
        QCOMPARE(FM::countSize(1048576), QStringLiteral("1 Mb"));
        QCOMPARE(FM::countSize(-1), QStringLiteral("-1 b"));
    }
};

QUARN_TEST_MAIN(tst_Copy)
#include "tst_copy.moc"
