// When a panel asks for the attributes of entries: not before their rows are seen.

#include "browser/filebrowserftab.h"
#include "tests/browser/panelfixture.h"
#include "tests/support/testmain.h"

#include <QDir>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr int Many = 200;

int questions = 0;        ///< for attributes, since the last reset
bool kindsAreTold = true; ///< by the folder itself
QByteArray closedFolder;  ///< whose entries tell nothing; ends with "/". None if it is empty

} // namespace

// In place of the C library's functions of these names, for the whole test program.
extern "C" {

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* info)
{
    ++questions;
    if (!closedFolder.isEmpty() && QByteArrayView(path).startsWith(closedFolder)) {
        errno = EACCES;
        return -1;
    }
    return int(syscall(SYS_statx, folder, path, flags, mask, info));
}

int faccessat(int folder, const char* path, int mode, int flags)
{
    if (!closedFolder.isEmpty() && closedFolder == path && (mode & X_OK) != 0) {
        errno = EACCES;
        return -1;
    }
    return int(syscall(SYS_faccessat2, folder, path, mode, flags));
}

dirent* readdir(DIR* folder)
{
    using Function = dirent* (*)(DIR*);
    // It goes by this name wherever its numbers have 64 bits.
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "readdir64"));
    dirent* entry = next(folder);
    if (entry != nullptr && !kindsAreTold)
        entry->d_type = DT_UNKNOWN;
    return entry;
}

} // extern "C"

namespace
{

QString fileName(int number)
{
    return QStringLiteral("file%1").arg(number, 3, 10, QLatin1Char('0'));
}

void fill(const ScratchFolder& folder)
{
    for (int i = 0; i < Many; ++i)
        folder.write(fileName(i), QByteArray(i, 'x'));
}

} // namespace

class tst_LateDetails : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        kindsAreTold = true;
        closedFolder.clear();
        questions = 0;
    }

    void onlyRowsInViewAreAskedFor_data()
    {
        QTest::addColumn<int>("index");
        for (const int index : {0, Many / 2, Many})
            QTest::newRow(QByteArray::number(index).constData()) << index;
    }

    void onlyRowsInViewAreAskedFor()
    {
        QFETCH(int, index);
        const PanelFixture panel(true);
        fill(panel.files());
        questions = 0;
        panel->setDir(panel.files().path(), index);
        // The last row, which decides the font.
        QCOMPARE(questions, 1);
        panel->grab();
        QVERIFY(questions > 1);
        QVERIFY(questions <= 1 + panel->visibleItems());
        const int before = questions;
        panel->grab();
        QCOMPARE(questions, before);
    }

    void lookingForPicturesAsksForNoOtherRows()
    {
        const PanelFixture panel(true);
        fill(panel.files());
        panel.associate(QStringLiteral("JPG"), PictureIcon);
        panel.files().write(QStringLiteral("file100.jpg"));
        panel->setDir(panel.files().path(), 0);
        panel->grab();
        const int before = questions;
        panel.previewTimer()->setInterval(0);
        QTRY_VERIFY(!panel.previewTimer()->isActive());
        // Those about the picture and its file.
        QVERIFY(questions - before < Many / 10);
    }

    void entriesOfAFolderThatMayNotBeSearchedAreNotAllAsked()
    {
        const PanelFixture panel(true);
        fill(panel.files());
        closedFolder = panel.files().path().toUtf8() + '/';
        questions = 0;
        panel->setDir(panel.files().path(), 0);
        QCOMPARE(panel->count(), Many + 1);
        QVERIFY(questions <= 2);
        panel->grab();
        QCOMPARE(panel->item(Many)->subItemCount(1), 1);
    }

    void compactListAsksForNothing()
    {
        const PanelFixture panel;
        fill(panel.files());
        questions = 0;
        panel->setDir(panel.files().path(), 0);
        panel->grab();
        QCOMPARE(questions, 0);
    }

    void linksAreAskedForAtOnceSinceTheirKindDecidesTheirPlace()
    {
        const PanelFixture panel;
        panel.files().makeFolder(QStringLiteral("folder"));
        panel.files().write(QStringLiteral("file"));
        panel.files().makeLink(QStringLiteral("zz"), QStringLiteral("folder"));
        questions = 0;
        panel->setDir(panel.files().path(), 0);
        QCOMPARE(questions, 1);
        QCOMPARE(panel.names().join(QLatin1Char(' ')), QStringLiteral(".. folder zz file"));
    }

    void folderThatTellsNoKindsIsListedTheSame()
    {
        for (const bool fullInfo : {false, true}) {
            const PanelFixture panel(fullInfo);
            panel.files().makeFolder(QStringLiteral("z"));
            panel.files().write(QStringLiteral("a"), "abc");
            panel.files().makeLink(QStringLiteral("y"), QStringLiteral("z"));
            panel.files().makeLink(QStringLiteral("b"), QStringLiteral("nowhere"));
            QStringList rows[2];
            for (const bool told : {true, false}) {
                kindsAreTold = told;
                panel->setDir(panel.files().path(), 0);
                for (const QString& name : panel.names())
                    rows[told ? 0 : 1] += name + panel.icon(name) + panel.detail(name);
            }
            QCOMPARE(rows[1], rows[0]);
            QVERIFY(rows[0].at(1).startsWith(QStringLiteral("y")));
        }
    }

    void rowTellsWhatItsEntryIsWhenSeen()
    {
        const PanelFixture panel(true);
        fill(panel.files());
        panel->setDir(panel.files().path(), 0);
        panel->grab();
        panel.files().write(fileName(0), QByteArray(2048, 'x'));
        panel.files().write(fileName(150), QByteArray(2048, 'x'));
        QVERIFY(panel.detail(fileName(0)).startsWith(QStringLiteral("0 b\t")));
        QVERIFY(panel.detail(fileName(150)).startsWith(QStringLiteral("2 Kb\t")));
        QVERIFY(panel.detail(fileName(100)).startsWith(QStringLiteral("100 b\t")));
    }

    void entryThatIsGoneWhenSeenHasANameAlone()
    {
        const PanelFixture panel(true);
        fill(panel.files());
        panel->setDir(panel.files().path(), 0);
        panel->grab();
        QVERIFY(QFile::remove(panel.files().path(fileName(150))));
        const int height = panel->rowHeight();
        panel->setCurrentItem(151);
        panel->grab();
        QCOMPARE(panel->item(151)->getSubItemText(1, 0), fileName(150));
        QCOMPARE(panel->item(151)->subItemCount(1), 1);
        QCOMPARE(panel->item(150)->subItemCount(1), 2);
        QCOMPARE(panel->rowHeight(), height);
        QCOMPARE(panel->curFile, panel.files().path(fileName(150)));
    }

    void folderThatVanishesWhileItsRowsAreSeenLeavesTheNames()
    {
        const PanelFixture panel(true);
        fill(panel.files());
        panel->setDir(panel.files().path(), 0);
        panel->grab();
        QVERIFY(QDir(panel.files().path()).removeRecursively());
        for (int row = 50; row < Many; row += 50) {
            panel->setCurrentItem(row);
            QVERIFY(!panel->grab().isNull());
            QCOMPARE(panel->item(row)->subItemCount(1), 1);
            QCOMPARE(panel->curFile, panel.files().path(fileName(row - 1)));
        }
        panel->setCurrentItem(0);
        QVERIFY(!panel->grab().isNull());
        QVERIFY(QDir().mkpath(panel.files().path()));
    }

    void modeOfTheListingHoldsUntilTheNext()
    {
        const PanelFixture panel(true);
        fill(panel.files());
        panel->setDir(panel.files().path(), 0);
        panel->grab();
        panel->setFullInf();
        panel->switchMultiSelect();
        panel->setCurrentItem(Many);
        panel->grab();
        QCOMPARE(panel->item(Many)->subItemCount(1), 2);
        QVERIFY(!panel->item(Many)->layout().checkBox);
        QCOMPARE(panel.icon(fileName(Many - 1)), QStringLiteral("browser/1/file.png"));
    }

    void entriesWithoutAttributesHaveRowsOfOneLine()
    {
        const PanelFixture panel(true);
        panel.files().write(QStringLiteral("only/a"));
        panel.files().write(QStringLiteral("both/a"));
        for (const char* name : {"only/b", "only/c", "both/b", "both/c"})
            panel.files().makeLink(QLatin1String(name), QStringLiteral("nowhere"));
        QVERIFY(QFile::remove(panel.files().path(QStringLiteral("only/a"))));
        panel->setDir(panel.files().path(QStringLiteral("only")), 1);
        const int oneLine = panel->rowHeight();
        panel->grab();
        QCOMPARE(panel->rowHeight(), oneLine);
        // One that has them, be it not the last, gives all rows room for them.
        panel->setDir(panel.files().path(QStringLiteral("both")), 1);
        QVERIFY(panel->rowHeight() > oneLine);
    }
};

QUARN_TEST_MAIN(tst_LateDetails)
#include "tst_latedetails.moc"
