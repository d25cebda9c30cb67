#include "assoc/bookmarkfile.h"
#include "tests/support/testmain.h"
#include "tests/support/unusablefiles.h"

class tst_BookmarkFile : public QObject
{
    Q_OBJECT

private slots:
    void recordsAreNameAndPath_data();
    void recordsAreNameAndPath();
    void fileOfAnotherSystemIsRead_data();
    void fileOfAnotherSystemIsRead();
    void wronglyEncodedNameLeavesTheOthersAlone();
    void manyBookmarksAreAllRead();
    void newestOfVeryManyIsRead();
    void recordAtTheEndOfWhatIsReadIsWholeOrLeftOut_data();
    void recordAtTheEndOfWhatIsReadIsWholeOrLeftOut();
    void unusableFileGivesAtMostRubbish_data() { addUnusableKinds(); }
    void unusableFileGivesAtMostRubbish();
    void hugeFileIsNotReadAsAWhole();

private:
    static Bookmarks load(const QByteArray& content);
};

Bookmarks tst_BookmarkFile::load(const QByteArray& content)
{
    const ScratchFolder folder;
    folder.write("bookmark.cfg", content);
    return readBookmarks(folder.path("bookmark.cfg"));
}

void tst_BookmarkFile::recordsAreNameAndPath_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("paths");
    using List = QStringList;
    QTest::newRow("as the program writes") << QByteArray("\nMusic\n/mmc/music\nRoot\n/")
                                           << List{"Music", "Root"} << List{"/mmc/music", "/"};
    QTest::newRow("by hand") << QByteArray("Music\n/mmc/music\nRoot\n/\n") << List{"Music", "Root"}
                             << List{"/mmc/music", "/"};
    QTest::newRow("by hand, then by the program")
        << QByteArray("Music\n/mmc/music\n\nRoot\n/") << List{"Music", "Root"}
        << List{"/mmc/music", "/"};
    QTest::newRow("same name twice")
        << QByteArray("A\n/a\nA\n/b") << List{"A", "A"} << List{"/a", "/b"};
    QTest::newRow("blanks are kept")
        << QByteArray(" My music \n /a b ") << List{" My music "} << List{" /a b "};
    QTest::newRow("name without path")
        << QByteArray("\nMusic\n/m\nRoot") << List{"Music", "Root"} << List{"/m", ""};
    QTest::newRow("name without path, line ended")
        << QByteArray("\nMusic\n/m\nRoot\n") << List{"Music", "Root"} << List{"/m", ""};
    QTest::newRow("empty path") << QByteArray("Here\n\nRoot\n/") << List{"Here", "Root"}
                                << List{"", "/"};
    QTest::newRow("empty line at the end")
        << QByteArray("\nMusic\n/m\n\n") << List{"Music", ""} << List{"/m", ""};
    QTest::newRow("only one empty line is skipped")
        << QByteArray("\n\nMusic\n/m") << List{"", "/m"} << List{"Music", ""};
    QTest::newRow("a line of blanks is a name") << QByteArray(" \n/m") << List{" "} << List{"/m"};
    QTest::newRow("one empty line alone") << QByteArray("\n") << List{""} << List{""};
    QTest::newRow("beyond Latin-1")
        << QByteArray("Музыка\n/Карта/😀") << List{QString::fromUtf8("Музыка")}
        << List{QString::fromUtf8("/Карта/😀")};
    QTest::newRow("percent signs") << QByteArray("%1\n/%2") << List{"%1"} << List{"/%2"};
}

void tst_BookmarkFile::recordsAreNameAndPath()
{
    QFETCH(QByteArray, content);
    const Bookmarks bookmarks = load(content);
    QTEST(bookmarks.names, "names");
    QTEST(bookmarks.paths, "paths");
}

void tst_BookmarkFile::fileOfAnotherSystemIsRead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("CR LF") << QByteArray("\r\nMusic\r\n/m\r\nRoot\r\n/\r\n");
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf\nMusic\n/m\nRoot\n/");
}

void tst_BookmarkFile::fileOfAnotherSystemIsRead()
{
    QFETCH(QByteArray, content);
    const Bookmarks bookmarks = load(content);
    QCOMPARE(bookmarks.names, (QStringList{"Music", "Root"}));
    QCOMPARE(bookmarks.paths, (QStringList{"/m", "/"}));
}

void tst_BookmarkFile::wronglyEncodedNameLeavesTheOthersAlone()
{
    const Bookmarks bookmarks = load("\nM\xfcsik\n/m\nRoot\n/");
    QCOMPARE(bookmarks.names.size(), 2);
    QCOMPARE(bookmarks.names.last(), QString("Root"));
    QCOMPARE(bookmarks.paths, (QStringList{"/m", "/"}));
}

void tst_BookmarkFile::manyBookmarksAreAllRead()
{
    constexpr int Many = 10000;
    QByteArray content;
    for (int i = 0; i < Many; ++i)
        content += "\nname" + QByteArray::number(i) + "\n/path" + QByteArray::number(i);
    const Bookmarks bookmarks = load(content);
    QCOMPARE(bookmarks.names.size(), Many);
    QCOMPARE(bookmarks.paths.size(), Many);
    QCOMPARE(bookmarks.names.last(), QString("name9999"));
    QCOMPARE(bookmarks.paths.last(), QString("/path9999"));
}

void tst_BookmarkFile::newestOfVeryManyIsRead()
{
    constexpr int VeryMany = 300000;
    const Bookmarks bookmarks =
        load(QByteArray("\nA name of usual length\n/a/path").repeated(VeryMany) + "\nnew\n/new");
    QCOMPARE(bookmarks.names.size(), VeryMany + 1);
    QCOMPARE(bookmarks.names.last(), QString("new"));
    QCOMPARE(bookmarks.paths.last(), QString("/new"));
}

void tst_BookmarkFile::recordAtTheEndOfWhatIsReadIsWholeOrLeftOut_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::newRow("cut in its name") << QByteArray("\nlast");
    QTest::newRow("cut between name and path") << QByteArray("\nlast\n");
    QTest::newRow("cut in its path") << QByteArray("\nlast\n/fo");
}

void tst_BookmarkFile::recordAtTheEndOfWhatIsReadIsWholeOrLeftOut()
{
    QFETCH(QByteArray, record);
    constexpr qsizetype Bound = 64 * 1024 * 1024;
    QByteArray content = "\nfirst\n/" + QByteArray(Bound, 'x');
    content.truncate(Bound - record.size());
    content += record + "lder and so on\n/more\nname\n/path";
    const Bookmarks bookmarks = load(content);
    QCOMPARE(bookmarks.names, QStringList("first"));
    QVERIFY(bookmarks.paths.first().startsWith("/xxx"));
}

void tst_BookmarkFile::unusableFileGivesAtMostRubbish()
{
    QFETCH(QString, kind);
    const ScratchFolder folder;
    makeUnusable(folder, "bookmark.cfg", kind);
    const PeakMemory memory;
    const Bookmarks bookmarks = readBookmarks(folder.path("bookmark.cfg"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(bookmarks.names.size(), bookmarks.paths.size());
    const bool hasLines = kind == "binary" || kind.endsWith("without end");
    QVERIFY2(hasLines || bookmarks.names.isEmpty(), qPrintable(kind));
    for (const QString& name : bookmarks.names)
        QVERIFY2(name.size() <= 4096, "a name that no menu can show");
}

void tst_BookmarkFile::hugeFileIsNotReadAsAWhole()
{
    const ScratchFolder folder;
    folder.write("bookmark.cfg", "\nMusic\n/m\n");
    QVERIFY(QFile::resize(folder.path("bookmark.cfg"), PeakMemory::TooMuch));
    const PeakMemory memory;
    const Bookmarks bookmarks = readBookmarks(folder.path("bookmark.cfg"));
    QVERIFY2(memory.growth() < PeakMemory::Bound, qPrintable(QString::number(memory.growth())));
    QCOMPARE(bookmarks.names.first(), QString("Music"));
    QCOMPARE(bookmarks.paths.first(), QString("/m"));
}

QUARN_TEST_MAIN(tst_BookmarkFile)
#include "tst_bookmarkfile.moc"
