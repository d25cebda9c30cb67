#include "browser/filebrowserftab.h"
#include "platform/zpixmap.h"
#include "platform/zskinservice.h"
#include "tests/browser/panelfixture.h"
#include "tests/browser/socketfile.h"
#include "tests/support/debuglines.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QSignalSpy>

namespace
{

/// What a list looks like that has the same rows as a panel, in a font of so many pixels.
QImage pictureOfRows(const PanelFixture& panel, int pixels)
{
    ZListBox list(QString(), ZScreen::instance(), 0, ZSkinService::clsListBox);
    list.resize(panel->size());
    QFont font = panel->font();
    font.setPixelSize(pixels);
    list.setItemFont(2, font, true);
    list.setItemFont(2, font, false);
    for (int row = 0; row < panel->count(); ++row) {
        const ZListBoxItem* shown = panel->item(row);
        auto* item = new ZListBoxItem(&list, QStringLiteral("%I%M"));
        item->setPixmap(0, shown->pixmap(0));
        for (int sub = 0; sub < shown->subItemCount(1); ++sub)
            item->appendSubItem(1, shown->getSubItemText(1, sub), false);
        list.insertItem(item);
    }
    list.setCurrentItem(panel->currentItem());
    return list.grab().toImage();
}

} // namespace

class tst_Listing : public QObject
{
    Q_OBJECT

private slots:
    void panelListsNothingAtFirst();
    void backEntryThenFoldersThenFilesInOrderOfCode();
    void rootHasNoBackEntry();
    void emptyFolderHasOnlyTheBackEntry();
    void curPathIsCanonical_data();
    void curPathIsCanonical();
    void listingIsWrittenToTheDebugStream_data();
    void listingIsWrittenToTheDebugStream();
    void argumentMayBeThePanelsOwnPath();

    void iconTellsTheKind_data();
    void iconTellsTheKind();
    void iconFollowsTheExtension_data();
    void iconFollowsTheExtension();
    void lastMatchOfTheTableGivesTheIcon();
    void missingIconLeavesTheRow();
    void iconsOfKindsAreReadOnce();
    void cacheLimitIsThePanels();
    void modeHasItsOwnIcons();

    void compactRowsHaveNoSecondText();
    void fontIsSmallerWithInformation_data();
    void fontIsSmallerWithInformation();
    void lastRowDecidesTheFont();

    void indexIsTheCurrentRow_data();
    void indexIsTheCurrentRow();
    void newListTellsItsHighlightAnew();
    void unreadableFolderLeavesAnEmptyList_data();
    void unreadableFolderLeavesAnEmptyList();
    void keysInAnEmptyListDoNoHarm();
    void refreshAfterAnUnreadableFolderShowsTheOneBefore();
    void oddNamesAreListed();
};

void tst_Listing::panelListsNothingAtFirst()
{
    const PanelFixture panel;
    QCOMPARE(panel->count(), 0);
    QCOMPARE(panel->curPath, QString());
    QCOMPARE(panel->curFile, QString());
    QCOMPARE(panel->curIndex, 0);
    QVERIFY(!panel->isMultiSelect());
}

void tst_Listing::backEntryThenFoldersThenFilesInOrderOfCode()
{
    const PanelFixture panel;
    panel.files().write(QStringLiteral("a.txt"));
    panel.files().write(QStringLiteral("B.txt"));
    panel.files().write(QStringLiteral(".hidden"));
    panel.files().makeLink(QStringLiteral("Dangling"), QStringLiteral("nowhere"));
    panel.files().makeLink(QStringLiteral("a"), QStringLiteral("C"));
    panel.files().makeFolder(QStringLiteral("b"));
    panel.files().makeFolder(QStringLiteral("C"));
    panel.files().makeFolder(QStringLiteral(".config"));
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.names().join(QLatin1Char(' ')),
             QStringLiteral(".. .config C a b .hidden B.txt Dangling a.txt"));
}

void tst_Listing::rootHasNoBackEntry()
{
    for (const char* path : {"/", "//", "/..", "/tmp/.."}) {
        const PanelFixture panel;
        panel->setDir(QString::fromLatin1(path), 0);
        QCOMPARE(panel->curPath, QStringLiteral("/"));
        QVERIFY(panel->count() > 0);
        QVERIFY(!panel.names().contains(QStringLiteral("..")));
        QVERIFY(panel.names().contains(QStringLiteral("tmp")));
    }
}

void tst_Listing::emptyFolderHasOnlyTheBackEntry()
{
    const PanelFixture panel;
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.names(), QStringList(QStringLiteral("..")));
    QCOMPARE(panel.icon(QStringLiteral("..")), QStringLiteral("back.png"));
    QCOMPARE(panel->item(0)->subItemCount(1), 1);
    QVERIFY(panel->item(0)->isEnabled());
}

void tst_Listing::curPathIsCanonical_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("canonical");
    QTest::newRow("plain") << QStringLiteral("/a/b") << QStringLiteral("/a/b");
    QTest::newRow("slash at the end") << QStringLiteral("/a/b/") << QStringLiteral("/a/b");
    QTest::newRow("slashes") << QStringLiteral("//a///b") << QStringLiteral("/a/b");
    QTest::newRow("up") << QStringLiteral("/a/b/..") << QStringLiteral("/a");
    QTest::newRow("dot") << QStringLiteral("/a/./b/.") << QStringLiteral("/a/b");
    QTest::newRow("link") << QStringLiteral("/link") << QStringLiteral("/a/b");
    QTest::newRow("up from a link") << QStringLiteral("/link/..") << QStringLiteral("/a");
}

void tst_Listing::curPathIsCanonical()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("a/b"));
    panel.files().makeLink(QStringLiteral("link"), QStringLiteral("a/b"));
    QFETCH(QString, path);
    QFETCH(QString, canonical);
    panel->setDir(panel.files().path() + path, 0);
    QCOMPARE(panel->curPath, panel.files().path() + canonical);
    QCOMPARE(panel->curFile, panel->curPath + QStringLiteral("/.."));
}

void tst_Listing::listingIsWrittenToTheDebugStream_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("folder") << QStringLiteral("folder");
    QTest::newRow("not canonical") << QStringLiteral("folder/../folder/");
    QTest::newRow("percent signs") << QStringLiteral("%s%n%1");
    QTest::newRow("letters of elsewhere") << QStringLiteral("\u0444\u00e9\U0001f600");
    QTest::newRow("missing") << QStringLiteral("missing");
}

void tst_Listing::listingIsWrittenToTheDebugStream()
{
    const PanelFixture panel;
    QFETCH(QString, name);
    if (name != QLatin1String("missing"))
        panel.files().makeFolder(name);
    const DebugLines lines;
    panel->setDir(panel.files().path(name), 0);
    QCOMPARE(lines.all(), QStringList(QStringLiteral("fb::set path ") + panel.files().path(name)));
}

void tst_Listing::argumentMayBeThePanelsOwnPath()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("a"));
    panel.files().makeLink(QStringLiteral("link"), QStringLiteral("a"));
    panel->setDir(panel.files().path(QStringLiteral("link")), 0);
    panel->setDir(panel->curPath, panel->curIndex);
    QCOMPARE(panel->curPath, panel.files().path(QStringLiteral("a")));
    panel->setDir(panel->curFile, 0);
    QCOMPARE(panel->curPath, panel.files().path());
}

void tst_Listing::iconTellsTheKind_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("icon");
    const std::pair<const char*, const char*> kinds[] = {
        {"folder", "folder"},      {"to-folder", "folder_link"}, {"file", "file"},
        {"to-file", "file_link"},  {"fifo", "device"},           {"socket", "device"},
        {"to-device", "device"},   {"dangling", "device"},       {"loop", "device"},
        {"fifo.jpg", "device"},    {"to-file.jpg", "file_link"}, {"folder.jpg", "folder"},
        {"dangling.jpg", "device"}};
    for (const auto& [name, icon] : kinds)
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(icon);
}

void tst_Listing::iconTellsTheKind()
{
    QFETCH(QString, name);
    QFETCH(QString, icon);
    for (const int mode : {0, 1}) {
        const PanelFixture panel(mode == 1);
        panel.associate(QStringLiteral("JPG"), 2);
        const ScratchFolder& files = panel.files();
        files.makeFolder(QStringLiteral("folder"));
        files.makeFolder(QStringLiteral("folder.jpg"));
        files.write(QStringLiteral("file"));
        for (const char* link : {"to-file", "to-file.jpg"})
            files.makeLink(QLatin1String(link), QStringLiteral("file"));
        for (const char* link : {"dangling", "dangling.jpg"})
            files.makeLink(QLatin1String(link), QStringLiteral("nowhere"));
        files.makeLink(QStringLiteral("to-folder"), QStringLiteral("folder"));
        files.makeLink(QStringLiteral("to-device"), QStringLiteral("/dev/null"));
        files.makeLink(QStringLiteral("loop"), QStringLiteral("loop"));
        files.makeFifo(QStringLiteral("fifo"));
        files.makeFifo(QStringLiteral("fifo.jpg"));
        makeSocket(files.path(QStringLiteral("socket")));
        panel->setDir(files.path(), 0);
        QCOMPARE(panel.icon(name), QStringLiteral("browser/%1/%2.png").arg(mode).arg(icon));
    }
}

void tst_Listing::iconFollowsTheExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("icon");
    QTest::newRow("of the table") << QStringLiteral("song.mp3") << QStringLiteral("mime/0/3.png");
    QTest::newRow("any case") << QStringLiteral("song.Mp3") << QStringLiteral("mime/0/3.png");
    QTest::newRow("the last one") << QStringLiteral("a.b.mp3") << QStringLiteral("mime/0/3.png");
    QTest::newRow("hidden") << QStringLiteral(".mp3") << QStringLiteral("mime/0/3.png");
    QTest::newRow("two digits") << QStringLiteral("a.deb") << QStringLiteral("mime/0/17.png");
    QTest::newRow("none") << QStringLiteral("README") << QStringLiteral("mime/0/9.png");
    QTest::newRow("empty") << QStringLiteral("dot.") << QStringLiteral("browser/0/file.png");
    QTest::newRow("not of the table")
        << QStringLiteral("a.xyz") << QStringLiteral("browser/0/file.png");
    QTest::newRow("only a part") << QStringLiteral("a.mp34")
                                 << QStringLiteral("browser/0/file.png");
    QTest::newRow("no dot") << QStringLiteral("mp3") << QStringLiteral("mime/0/9.png");
}

void tst_Listing::iconFollowsTheExtension()
{
    const PanelFixture panel;
    panel.associate(QStringLiteral("MP3"), 3);
    panel.associate(QStringLiteral("DEB"), 17);
    panel.associate(QStringLiteral("quarn_execute"), 9);
    QFETCH(QString, name);
    panel.files().write(name);
    panel->setDir(panel.files().path(), 0);
    QTEST(panel.icon(name), "icon");
}

void tst_Listing::lastMatchOfTheTableGivesTheIcon()
{
    const PanelFixture panel;
    panel.associate(QStringLiteral("MP3"), 3);
    panel.associate(QStringLiteral("OGG"), 5);
    panel.associate(QStringLiteral("MP3"), 4);
    panel.files().write(QStringLiteral("a.mp3"));
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.icon(QStringLiteral("a.mp3")), QStringLiteral("mime/0/4.png"));
}

void tst_Listing::missingIconLeavesTheRow()
{
    const PanelFixture panel;
    panel.associate(QStringLiteral("MP3"), 99, false);
    panel.files().write(QStringLiteral("a.mp3"));
    panel.files().makeFolder(QStringLiteral("folder"));
    for (const char* picture : {"back.png", "browser/0/folder.png"})
        QVERIFY(QFile::remove(
            panel.workFolder().path(QStringLiteral("res/img/") + QLatin1String(picture))));
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.names().join(QLatin1Char(' ')), QStringLiteral(".. folder a.mp3"));
    for (const QString& name : panel.names())
        QCOMPARE(panel.icon(name), QStringLiteral("none"));
    QVERIFY(!panel->grab().isNull());
}

void tst_Listing::iconsOfKindsAreReadOnce()
{
    const PanelFixture panel;
    panel.files().write(QStringLiteral("file"));
    panel.files().makeFolder(QStringLiteral("folder"));
    panel->setDir(panel.files().path(), 0);
    const QString path = panel.workFolder().path(QStringLiteral("res/img/browser/0/file.png"));
    QPixmap kept;
    QVERIFY(ZPixmapCache::find(path, kept));
    QVERIFY(QFile::remove(path));
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.icon(QStringLiteral("file")), QStringLiteral("browser/0/file.png"));
}

void tst_Listing::cacheLimitIsThePanels()
{
    ZPixmapCache::setCacheLimit(1);
    const PanelFixture panel;
    QCOMPARE(ZPixmapCache::cacheLimit(), 5120);
}

void tst_Listing::modeHasItsOwnIcons()
{
    const PanelFixture panel;
    panel.associate(QStringLiteral("MP3"), 3);
    panel.files().write(QStringLiteral("a.mp3"));
    panel.files().write(QStringLiteral("file"));
    panel->setDir(panel.files().path(), 1);
    panel->setFullInf();
    QCOMPARE(panel.icon(QStringLiteral("file")), QStringLiteral("browser/0/file.png"));
    panel->setDir(panel->curPath, panel->curIndex);
    QCOMPARE(panel.icon(QStringLiteral("file")), QStringLiteral("browser/1/file.png"));
    QCOMPARE(panel.icon(QStringLiteral("a.mp3")), QStringLiteral("mime/1/3.png"));
    QCOMPARE(panel.icon(QStringLiteral("..")), QStringLiteral("back.png"));
    QVERIFY(!panel.detail(QStringLiteral("file")).isEmpty());
    panel->setFullInf();
    panel->setDir(panel->curPath, panel->curIndex);
    QCOMPARE(panel.icon(QStringLiteral("a.mp3")), QStringLiteral("mime/0/3.png"));
    QVERIFY(panel.detail(QStringLiteral("file")).isNull());
    QCOMPARE(panel->curIndex, 1);
}

void tst_Listing::compactRowsHaveNoSecondText()
{
    const PanelFixture panel;
    panel.files().write(QStringLiteral("file"), "abc");
    panel.files().makeFolder(QStringLiteral("folder"));
    panel.files().makeFifo(QStringLiteral("fifo"));
    panel->setDir(panel.files().path(), 0);
    for (int row = 0; row < panel->count(); ++row)
        QCOMPARE(panel->item(row)->subItemCount(1), 1);
}

void tst_Listing::fontIsSmallerWithInformation_data()
{
    QTest::addColumn<bool>("fullInfo");
    QTest::addColumn<int>("pixels");
    QTest::newRow("compact") << false << 15;
    QTest::newRow("full information") << true << 13;
}

void tst_Listing::fontIsSmallerWithInformation()
{
    QFETCH(bool, fullInfo);
    QFETCH(int, pixels);
    const PanelFixture panel(fullInfo);
    panel.files().write(QStringLiteral("file"), "abc");
    panel.files().makeFolder(QStringLiteral("folder"));
    for (const int row : {0, 2}) {
        panel->setDir(panel.files().path(), row);
        QCOMPARE(panel->grab().toImage(), pictureOfRows(panel, pixels));
        QVERIFY(panel->grab().toImage() != pictureOfRows(panel, 28 - pixels));
    }
}

void tst_Listing::lastRowDecidesTheFont()
{
    const PanelFixture panel(true);
    panel.files().write(QStringLiteral("file"), "abc");
    panel.files().makeLink(QStringLiteral("zz"), QStringLiteral("nowhere"));
    panel->setDir(panel.files().path(), 1);
    QVERIFY(panel.detail(QStringLiteral("zz")).isNull());
    QVERIFY(!panel.detail(QStringLiteral("file")).isNull());
    QCOMPARE(panel->grab().toImage(), pictureOfRows(panel, 15));
}

void tst_Listing::indexIsTheCurrentRow_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("row");
    QTest::newRow("back entry") << 0 << 0;
    QTest::newRow("folder") << 1 << 1;
    QTest::newRow("last") << 3 << 3;
    QTest::newRow("past the end") << 4 << 3;
    QTest::newRow("far past the end") << 2147483647 << 3;
}

void tst_Listing::indexIsTheCurrentRow()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("folder"));
    panel.files().write(QStringLiteral("one"));
    panel.files().write(QStringLiteral("two"));
    QFETCH(int, index);
    QFETCH(int, row);
    panel->setDir(panel.files().path(), index);
    QCOMPARE(panel->currentItem(), row);
    QCOMPARE(panel->curIndex, row);
    QCOMPARE(panel->curFile, panel.files().path(panel.names().at(row)));
}

void tst_Listing::newListTellsItsHighlightAnew()
{
    const PanelFixture panel;
    panel.files().write(QStringLiteral("in/alpha"));
    panel.files().write(QStringLiteral("other/beta"));
    panel->setDir(panel.files().path(QStringLiteral("in")), 1);
    const QSignalSpy highlighted(panel.panel(), &ZListBox::highlighted);
    panel->setDir(panel.files().path(QStringLiteral("other")), 1);
    QCOMPARE(highlighted.count(), 1);
    QCOMPARE(panel->curFile, panel.files().path(QStringLiteral("other/beta")));
}

void tst_Listing::unreadableFolderLeavesAnEmptyList_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"missing", "locked", "unlisted", "file", "dangling", "loop", "fifo"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_Listing::unreadableFolderLeavesAnEmptyList()
{
    QFETCH(QString, name);
    for (const bool fullInfo : {false, true}) {
        const PanelFixture panel(fullInfo);
        panel.files().write(QStringLiteral("file"));
        panel.files().makeFifo(QStringLiteral("fifo"));
        panel.files().makeFolder(QStringLiteral("locked"));
        panel.files().setMode(QStringLiteral("locked"), 0);
        panel.files().makeFolder(QStringLiteral("unlisted"));
        panel.files().setMode(QStringLiteral("unlisted"), 0311);
        panel.files().makeLink(QStringLiteral("dangling"), QStringLiteral("nowhere"));
        panel.files().makeLink(QStringLiteral("loop"), QStringLiteral("loop"));
        panel->setDir(panel.files().path(), 2);
        panel->setDir(panel.files().path(name), 1);
        QCOMPARE(panel->count(), 0);
        QCOMPARE(panel->currentItem(), -1);
        QCOMPARE(panel->curPath, panel.files().path());
        QCOMPARE(panel->curIndex, 2);
    }
}

void tst_Listing::keysInAnEmptyListDoNoHarm()
{
    for (const int key : {0x1013, 0x1015, 0x1016, 0x1017, 0x1004}) {
        const PanelFixture panel;
        panel->setDir(panel.files().path(QStringLiteral("missing")), 0);
        pressKey(key);
        QCOMPARE(panel->count(), 0);
        QVERIFY(!panel->grab().isNull());
    }
}

void tst_Listing::refreshAfterAnUnreadableFolderShowsTheOneBefore()
{
    const PanelFixture panel;
    panel.files().write(QStringLiteral("file"));
    panel->setDir(panel.files().path(), 1);
    panel->setDir(panel.files().path(QStringLiteral("missing")), 0);
    panel->setDir(panel->curPath, panel->curIndex);
    QCOMPARE(panel.names().join(QLatin1Char(' ')), QStringLiteral(".. file"));
    QCOMPARE(panel->curFile, panel.files().path(QStringLiteral("file")));
}

void tst_Listing::oddNamesAreListed()
{
    const PanelFixture panel(true);
    const QStringList odd = {QStringLiteral("\x01\x1b[0m\x7f"),
                             QStringLiteral("%1 %2 %s"),
                             QStringLiteral("-rf"),
                             QStringLiteral("it's \"odd\" $(x)"),
                             QString(255, QLatin1Char('n')),
                             QStringLiteral("two\nlines\tand tabs")};
    for (const QString& name : odd)
        panel.files().write(name, "abc");
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel.names().mid(1), odd);
    for (int row = 1; row < panel->count(); ++row) {
        panel->setCurrentItem(row);
        QCOMPARE(panel->curFile, panel.files().path(odd.at(row - 1)));
        QVERIFY(panel.detail(odd.at(row - 1)).startsWith(QStringLiteral("3 b\t\t\t")));
        QVERIFY(!panel->grab().isNull());
    }
}

QUARN_TEST_MAIN(tst_Listing)
#include "tst_listing.moc"
