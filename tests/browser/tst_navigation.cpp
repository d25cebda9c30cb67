#include "browser/filebrowserftab.h"
#include "platform/keymap.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

} // namespace

class tst_Navigation : public QObject
{
    Q_OBJECT

private slots:
    void highlightIsFollowedWithoutASignal();
    void selectOnAFolderEntersIt_data();
    void selectOnAFolderEntersIt();
    void selectOnTheBackEntryGoesUp();
    void selectOnAFilePicksIt_data();
    void selectOnAFilePicksIt();
    void selectOnAnythingElseDoesNothing_data();
    void selectOnAnythingElseDoesNothing();
    void selectOnAVanishedEntryDoesNothing();
    void selectOnAFileThatBecameAFolderEntersIt();
    void selectOnALockedFolderEmptiesTheList();
    void heldSelectEntersOneFolderOnly();

    void goUpListsTheFolderAbove();
    void goUpAtTheRootListsTheRoot();
    void goUpWorksFromAnyRow();
    void goUpFromAFolderThatWasReplacedByALinkFollowsTheLink();
    void goUpFromAVanishedFolderEmptiesTheList();
    void goUpLeavesTheFolderOfALink();

    void otherKeysAreLeftToTheWindow_data();
    void otherKeysAreLeftToTheWindow();

    void pickedFileStaysUnderTheHighlight();
    void oddNamesCanBeEnteredAndPicked_data();
    void oddNamesCanBeEnteredAndPicked();
    void folderOfBrokenBytesIsEnteredAndLeft();
    void programFolderEndsWithTheLastSlash();
    void makedirMakesAFolderInsideTheParent_data();
    void makedirMakesAFolderInsideTheParent();
};

void tst_Navigation::highlightIsFollowedWithoutASignal()
{
    const PanelFixture panel;
    panel.makeFiles(3);
    panel->setDir(panel.files().path(), 0);
    const PanelSignals told(panel);
    for (const int key : {PhoneKey::Down, PhoneKey::Down, PhoneKey::Up}) {
        pressKey(key);
        QVERIFY(panel.fieldsFollow());
    }
    QCOMPARE(panel->curIndex, 1);
    QCOMPARE(panel->curFile, panel.files().path(QStringLiteral("f0000")));
    QCOMPARE(told.all(), QStringList());
}

void tst_Navigation::selectOnAFolderEntersIt_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("canonical");
    QTest::newRow("folder") << int(PhoneKey::Return) << QStringLiteral("folder")
                            << QStringLiteral("folder");
    QTest::newRow("by enter") << int(PhoneKey::Enter) << QStringLiteral("folder")
                              << QStringLiteral("folder");
    QTest::newRow("link") << int(PhoneKey::Return) << QStringLiteral("link")
                          << QStringLiteral("folder/in");
}

void tst_Navigation::selectOnAFolderEntersIt()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("folder/in"));
    panel.files().makeLink(QStringLiteral("link"), QStringLiteral("folder/in"));
    QFETCH(int, key);
    QFETCH(QString, name);
    QFETCH(QString, canonical);
    panel->setDir(panel.files().path(), 0);
    panel->setCurrentItem(panel.row(name));
    const PanelSignals told(panel);
    pressKey(key);
    canonical = panel.files().path(canonical);
    QCOMPARE(told.all(), QStringList({QStringLiteral("isFilePicked(false)"),
                                      QStringLiteral("picked(%1)").arg(panel.files().path(name))}));
    // Both come when the folder is listed already.
    QCOMPARE(told.folders(), QStringList({canonical, canonical}));
    QCOMPARE(panel->curPath, canonical);
    QCOMPARE(panel->curIndex, 0);
    QVERIFY(panel.fieldsFollow());
}

void tst_Navigation::selectOnTheBackEntryGoesUp()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("a/b"));
    panel->setDir(panel.files().path(QStringLiteral("a/b")), 0);
    const PanelSignals told(panel);
    pressKey(PhoneKey::Return);
    QCOMPARE(told.all(),
             QStringList({QStringLiteral("isFilePicked(false)"),
                          QStringLiteral("picked(%1/a/b/..)").arg(panel.files().path())}));
    QCOMPARE(panel->curPath, panel.files().path(QStringLiteral("a")));
    QCOMPARE(panel->currentItem(), 0);
    QVERIFY(panel.fieldsFollow());
}

void tst_Navigation::selectOnAFilePicksIt_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("file") << QStringLiteral("file");
    QTest::newRow("link") << QStringLiteral("link");
    QTest::newRow("locked") << QStringLiteral("locked");
}

void tst_Navigation::selectOnAFilePicksIt()
{
    const PanelFixture panel;
    panel.files().write(QStringLiteral("file"));
    panel.files().write(QStringLiteral("locked"));
    panel.files().setMode(QStringLiteral("locked"), 0);
    panel.files().makeLink(QStringLiteral("link"), QStringLiteral("file"));
    panel->setDir(panel.files().path(), 0);
    QFETCH(QString, name);
    const int row = panel.row(name);
    panel->setCurrentItem(row);
    const PanelSignals told(panel);
    pressKey(PhoneKey::Return);
    QCOMPARE(told.all(), QStringList(QStringLiteral("isFilePicked(true)")));
    QCOMPARE(panel->curFile, panel.files().path(name));
    QCOMPARE(panel->curIndex, row);
    QCOMPARE(panel->count(), 4);
}

void tst_Navigation::selectOnAnythingElseDoesNothing_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"fifo", "device", "dangling", "loop"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_Navigation::selectOnAnythingElseDoesNothing()
{
    const PanelFixture panel;
    panel.files().makeFifo(QStringLiteral("fifo"));
    panel.files().makeLink(QStringLiteral("device"), QStringLiteral("/dev/null"));
    panel.files().makeLink(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    panel.files().makeLink(QStringLiteral("loop"), QStringLiteral("loop"));
    panel->setDir(panel.files().path(), 0);
    QFETCH(QString, name);
    panel->setCurrentItem(panel.row(name));
    const PanelSignals told(panel);
    pressKey(PhoneKey::Return);
    QCOMPARE(told.all(), QStringList());
    QCOMPARE(panel->count(), 5);
    QVERIFY(panel.fieldsFollow());
}

void tst_Navigation::selectOnAVanishedEntryDoesNothing()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("folder"));
    panel.files().write(QStringLiteral("file"));
    panel->setDir(panel.files().path(), 0);
    QVERIFY(QDir().rmdir(panel.files().path(QStringLiteral("folder"))));
    QVERIFY(QFile::remove(panel.files().path(QStringLiteral("file"))));
    const PanelSignals told(panel);
    for (const int row : {1, 2}) {
        panel->setCurrentItem(row);
        pressKey(PhoneKey::Return);
    }
    QCOMPARE(told.all(), QStringList());
    QCOMPARE(panel->count(), 3);
}

void tst_Navigation::selectOnAFileThatBecameAFolderEntersIt()
{
    const PanelFixture panel;
    panel.files().write(QStringLiteral("entry"));
    panel->setDir(panel.files().path(), 1);
    QVERIFY(QFile::remove(panel.files().path(QStringLiteral("entry"))));
    panel.files().makeFolder(QStringLiteral("entry"));
    pressKey(PhoneKey::Return);
    QCOMPARE(panel->curPath, panel.files().path(QStringLiteral("entry")));
}

void tst_Navigation::selectOnALockedFolderEmptiesTheList()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("locked"));
    panel.files().setMode(QStringLiteral("locked"), 0);
    panel->setDir(panel.files().path(), 1);
    const PanelSignals told(panel);
    pressKey(PhoneKey::Return);
    QCOMPARE(told.all(),
             QStringList(
                 {QStringLiteral("isFilePicked(false)"),
                  QStringLiteral("picked(%1)").arg(panel.files().path(QStringLiteral("locked")))}));
    QCOMPARE(panel->count(), 0);
    QCOMPARE(panel->curPath, panel.files().path());
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, QDir(panel.files().path(QStringLiteral(".."))).canonicalPath());
    QVERIFY(panel->count() > 0);
}

void tst_Navigation::heldSelectEntersOneFolderOnly()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("a/b/c"));
    panel->setDir(panel.files().path(QStringLiteral("a/b/c")), 0);
    holdKey(PhoneKey::Return);
    repeatKey(PhoneKey::Return);
    repeatKey(PhoneKey::Return);
    releaseKey(PhoneKey::Return);
    QCOMPARE(panel->curPath, panel.files().path(QStringLiteral("a/b")));
}

void tst_Navigation::goUpListsTheFolderAbove()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("a/b"));
    panel->setDir(panel.files().path(QStringLiteral("a/b")), 0);
    const PanelSignals told(panel);
    pressKey(PhoneKey::FolderUp);
    const QString above = panel.files().path(QStringLiteral("a"));
    QCOMPARE(told.all(), QStringList({QStringLiteral("isFilePicked(false)"),
                                      QStringLiteral("picked(%1/b/..)").arg(above)}));
    QCOMPARE(told.folders(), QStringList({above, above}));
    QCOMPARE(panel.names().join(QLatin1Char(' ')), QStringLiteral(".. b"));
    QCOMPARE(panel->currentItem(), 0);
    QVERIFY(panel.fieldsFollow());
}

void tst_Navigation::goUpAtTheRootListsTheRoot()
{
    const PanelFixture panel;
    panel->setDir(QStringLiteral("/"), 1);
    const QStringList before = panel.names();
    const PanelSignals told(panel);
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, QStringLiteral("/"));
    QCOMPARE(panel.names(), before);
    QCOMPARE(panel->currentItem(), 0);
    QCOMPARE(told.all(),
             QStringList({QStringLiteral("isFilePicked(false)"), QStringLiteral("picked(//..)")}));
}

void tst_Navigation::goUpWorksFromAnyRow()
{
    const PanelFixture panel;
    panel.makeFiles(40);
    panel->setDir(panel.files().path(), 40);
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, QDir(panel.files().path(QStringLiteral(".."))).canonicalPath());
    QCOMPARE(panel->currentItem(), 0);
    QVERIFY(panel->itemVisible(0));
}

void tst_Navigation::goUpFromAFolderThatWasReplacedByALinkFollowsTheLink()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("a/b"));
    panel.files().makeFolder(QStringLiteral("far/away"));
    panel->setDir(panel.files().path(QStringLiteral("a/b")), 0);
    QVERIFY(QDir().rmdir(panel.files().path(QStringLiteral("a/b"))));
    panel.files().makeLink(QStringLiteral("a/b"), panel.files().path(QStringLiteral("far/away")));
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, panel.files().path(QStringLiteral("far")));
}

void tst_Navigation::goUpFromAVanishedFolderEmptiesTheList()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("a"));
    panel->setDir(panel.files().path(QStringLiteral("a")), 0);
    QVERIFY(QDir().rmdir(panel.files().path(QStringLiteral("a"))));
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->count(), 0);
    QCOMPARE(panel->curPath, panel.files().path(QStringLiteral("a")));
    panel->setDir(panel.files().path(), 0);
    QCOMPARE(panel->count(), 1);
}

void tst_Navigation::goUpLeavesTheFolderOfALink()
{
    const PanelFixture panel;
    panel.files().makeFolder(QStringLiteral("far/away"));
    panel.files().makeLink(QStringLiteral("link"), QStringLiteral("far/away"));
    panel->setDir(panel.files().path(QStringLiteral("link")), 0);
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, panel.files().path(QStringLiteral("far")));
}

void tst_Navigation::otherKeysAreLeftToTheWindow_data()
{
    QTest::addColumn<int>("key");
    for (const int key : {0x1012, 0x1014, 0x1030, 0x1031, 0x1038, 0x103a, 0x1049, int('5'),
                          int('*'), int('#'), int('a')})
        QTest::addRow("0x%x", key) << key;
}

void tst_Navigation::otherKeysAreLeftToTheWindow()
{
    QFETCH(int, key);
    const PanelFixture panel;
    panel.makeFiles(3);
    panel.files().write(QStringLiteral("abc"));
    panel->setDir(panel.files().path(), 2);
    const PanelSignals told(panel);
    QKeyEvent event(QEvent::KeyPress, toolkitKey(key), Qt::NoModifier);
    QCoreApplication::sendEvent(panel.panel(), &event);
    QVERIFY(!event.isAccepted());
    QCOMPARE(panel->currentItem(), 2);
    QCOMPARE(told.all(), QStringList());
}

void tst_Navigation::pickedFileStaysUnderTheHighlight()
{
    const PanelFixture panel;
    panel.makeFiles(30);
    panel->setDir(panel.files().path(), 20);
    const int top = panel->topItem();
    pressKey(PhoneKey::Return);
    QCOMPARE(panel->topItem(), top);
    QCOMPARE(panel->currentItem(), 20);
}

void tst_Navigation::oddNamesCanBeEnteredAndPicked_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("quotes") << QStringLiteral("it's \"quoted\"");
    QTest::newRow("percent signs") << QStringLiteral("%1 %2 %s%n");
    QTest::newRow("line break") << QStringLiteral("two\nlines");
    QTest::newRow("control characters") << QStringLiteral("\x01\t\x1b\x7f");
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('n'));
    QTest::newRow("dots") << QStringLiteral("...");
    QTest::newRow("backslash") << QStringLiteral("a\\b");
    QTest::newRow("blanks") << QStringLiteral("  ");
}

void tst_Navigation::oddNamesCanBeEnteredAndPicked()
{
    QFETCH(QString, name);
    const PanelFixture panel;
    panel.files().write(name + QLatin1Char('/') + name);
    panel->setDir(panel.files().path(), 1);
    pressKey(PhoneKey::Return);
    QCOMPARE(panel->curPath, panel.files().path(name));
    pressKey(PhoneKey::Down);
    const PanelSignals told(panel);
    pressKey(PhoneKey::Return);
    QCOMPARE(told.all(), QStringList(QStringLiteral("isFilePicked(true)")));
    QCOMPARE(panel->curFile, panel.files().path(name + QLatin1Char('/') + name));
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, panel.files().path());
}

void tst_Navigation::folderOfBrokenBytesIsEnteredAndLeft()
{
    const PanelFixture panel;
    const QString name = QStringLiteral("caf") + QChar(0xdce9);
    const QByteArray bytes = QFile::encodeName(panel.files().path()) + "/caf\xe9";
    QCOMPARE(mkdir(bytes.constData(), 0700), 0);
    panel->setDir(panel.files().path(), 1);
    QCOMPARE(panel.names(), (QStringList{"..", name}));
    pressKey(PhoneKey::Return);
    QCOMPARE(panel->curPath, panel.files().path(name));
    QCOMPARE(panel->count(), 1);
    pressKey(PhoneKey::FolderUp);
    QCOMPARE(panel->curPath, panel.files().path());
    QCOMPARE(rmdir(bytes.constData()), 0);
}

void tst_Navigation::programFolderEndsWithTheLastSlash()
{
    QCOMPARE(FileBrowserFtab::getProgramDir(QStringLiteral("/a/b/c")), QStringLiteral("/a/b/"));
    QCOMPARE(FileBrowserFtab::getProgramDir(QStringLiteral("/a/b/")), QStringLiteral("/a/b/"));
    QCOMPARE(FileBrowserFtab::getProgramDir(QStringLiteral("/")), QStringLiteral("/"));
    QVERIFY(FileBrowserFtab::getProgramDir(QStringLiteral("abc")).isEmpty());
    QVERIFY(FileBrowserFtab::getProgramDir(QString()).isEmpty());
}

void tst_Navigation::makedirMakesAFolderInsideTheParent_data()
{
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("made");
    QTest::newRow("plain") << QStringLiteral("in") << QStringLiteral("new") << true;
    QTest::newRow("name with a slash first")
        << QStringLiteral("in") << QStringLiteral("/new") << true;
    QTest::newRow("odd name") << QStringLiteral("in") << QStringLiteral("%1 \"x\"\n") << true;
    QTest::newRow("255 bytes") << QStringLiteral("in") << QString(255, QLatin1Char('n')) << true;
    QTest::newRow("256 bytes") << QStringLiteral("in") << QString(256, QLatin1Char('n')) << false;
    QTest::newRow("there already") << QStringLiteral("in") << QStringLiteral("old") << false;
    QTest::newRow("no folder above") << QStringLiteral("in") << QStringLiteral("no/new") << false;
    QTest::newRow("no parent") << QStringLiteral("missing") << QStringLiteral("new") << false;
    QTest::newRow("locked parent") << QStringLiteral("locked") << QStringLiteral("new") << false;
    QTest::newRow("empty name") << QStringLiteral("in") << QString() << false;
}

void tst_Navigation::makedirMakesAFolderInsideTheParent()
{
    QFETCH(QString, parent);
    QFETCH(QString, name);
    QFETCH(bool, made);
    const ScratchFolder folder;
    folder.makeFolder(QStringLiteral("in/old"));
    folder.makeFolder(QStringLiteral("locked"));
    folder.setMode(QStringLiteral("locked"), 0555);
    const auto entries = [&folder] {
        return QDir(folder.path(QStringLiteral("in")))
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    };
    const QStringList before = entries();
    QCOMPARE(FileBrowserFtab::makedir(folder.path(parent), name), made);
    QCOMPARE(entries().size(), before.size() + (made ? 1 : 0));
    QVERIFY(!made || QFileInfo(folder.path(parent) + QLatin1Char('/') + name).isDir());
    QVERIFY(!FileBrowserFtab::makedir(QString(), name));
}

QUARN_TEST_MAIN(tst_Navigation)
#include "tst_navigation.moc"
