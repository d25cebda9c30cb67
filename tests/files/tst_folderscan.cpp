#include "files/folderscan.h"
#include "tests/browser/socketfile.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

QStringList names(const FolderScan& scan, const std::vector<FolderEntry>& entries)
{
    QStringList result;
    for (const FolderEntry& entry : entries)
        result.append(scan.name(entry));
    return result;
}

/// Folders, a bar, everything else.
QString listed(const QString& path, bool withInfo = false)
{
    const auto scan = FolderScan::read(path, withInfo);
    if (!scan)
        return QStringLiteral("unreadable");
    return names(*scan, scan->folders()).join(QLatin1Char(' ')) + QStringLiteral(" | ") +
           names(*scan, scan->others()).join(QLatin1Char(' '));
}

qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}

EntryKind modelKind(const fs::path& path)
{
    std::error_code error;
    const bool isLink = fs::is_symlink(path, error);
    if (fs::is_directory(path, error))
        return isLink ? EntryKind::FolderLink : EntryKind::Folder;
    if (fs::is_regular_file(path, error))
        return isLink ? EntryKind::FileLink : EntryKind::File;
    return EntryKind::Other;
}

bool isFolder(EntryKind kind)
{
    return kind == EntryKind::Folder || kind == EntryKind::FolderLink;
}

/// Bytes of names in the order that a list of them has.
std::set<std::string> modelNames(const fs::path& folder, bool folders)
{
    std::set<std::string> result;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (isFolder(modelKind(entry.path())) == folders)
            result.insert(entry.path().filename().string());
    }
    return result;
}

/// Makes an entry of a random kind; false if the name is taken.
bool makeRandomEntry(const fs::path& folder, QRandomGenerator& random)
{
    static const char* const pieces[] = {
        "a",  "B",  ".",  "_", "\xc3\xa9", "\xef\xbd\x9e", "\xf0\x9f\x98\x80", "1", "-",
        "%2", "\"", "\n", " ", "Z"};
    std::string name;
    for (int i = random.bounded(1, 6); i > 0; --i)
        name += pieces[random.bounded(int(std::size(pieces)))];
    const fs::path path = folder / name;
    std::error_code error;
    if (name == "." || name == ".." ||
        fs::symlink_status(path, error).type() != fs::file_type::not_found)
        return false;
    static const char* const targets[] = {"/",       "/dev/null", "/proc/self/status",
                                          "nowhere", ".",         "a"};
    switch (random.bounded(4)) {
    case 0:
        return fs::create_directory(path, error);
    case 1:
        return mkfifo(path.c_str(), 0600) == 0;
    case 2:
        fs::create_symlink(targets[random.bounded(int(std::size(targets)))], path, error);
        return !error;
    default:
        return ::close(::creat(path.c_str(), 0600)) == 0;
    }
}

} // namespace

class tst_FolderScan : public QObject
{
    Q_OBJECT

private slots:
    void foldersComeFirstThenTheRestEachInOrderOfCode();
    void orderIsOfCodePointsNotOfTheToolkitsCharacters();
    void hiddenEntriesAreListedDotsAreNot();
    void emptyFolderHasNothing();
    void emptyPathIsTheCurrentFolder();
    void pathMayEndInSlashOrGoUp();

    void kindsOfEntries_data();
    void kindsOfEntries();

    void oddNamesComeThroughWhole_data();
    void oddNamesComeThroughWhole();
    void namesOfBrokenBytesAreListed();

    void infoHasSizeAndTime_data();
    void infoHasSizeAndTime();
    void infoOfALinkIsItsTargets();
    void infoIsReadOnlyWhenAskedFor();
    void whatLeadsNowhereHasNoInfo();

    void whatIsNoReadableFolderIsRefused_data();
    void whatIsNoReadableFolderIsRefused();
    void folderThatCannotBeSearchedStillListsNames();
    void folderUnderChangeIsListedWithoutHarm();
    void noDescriptorStaysOpen();
    void thousandsOfEntriesAreAllThere();
    void randomFoldersMatchTheModel();
};

void tst_FolderScan::foldersComeFirstThenTheRestEachInOrderOfCode()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("a.txt"));
    folder.write(QStringLiteral("B.txt"));
    folder.write(QStringLiteral("B"));
    folder.makeFolder(QStringLiteral("b"));
    folder.makeFolder(QStringLiteral("C"));
    QCOMPARE(listed(folder.path()), QStringLiteral("C b | B B.txt a.txt"));
}

void tst_FolderScan::orderIsOfCodePointsNotOfTheToolkitsCharacters()
{
    const ScratchFolder folder;
    const QString wave = QStringLiteral("\uff5e");
    const QString face = QStringLiteral("\U0001f600");
    QVERIFY(face < wave); // by the toolkit's 16-bit characters
    folder.write(face);
    folder.write(wave);
    folder.write(QStringLiteral("\u00e9"));
    folder.write(QStringLiteral("z"));
    QCOMPARE(listed(folder.path()),
             QStringLiteral(" | z \u00e9 ") + wave + QLatin1Char(' ') + face);
}

void tst_FolderScan::hiddenEntriesAreListedDotsAreNot()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral(".profile"));
    folder.write(QStringLiteral("..."));
    folder.write(QStringLiteral("..x"));
    folder.makeFolder(QStringLiteral(".git"));
    QCOMPARE(listed(folder.path()), QStringLiteral(".git | ... ..x .profile"));
}

void tst_FolderScan::emptyFolderHasNothing()
{
    const ScratchFolder folder;
    QCOMPARE(listed(folder.path()), QStringLiteral(" | "));
}

void tst_FolderScan::emptyPathIsTheCurrentFolder()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("here"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const QString list = listed(QString());
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(list, QStringLiteral(" | here"));
}

void tst_FolderScan::pathMayEndInSlashOrGoUp()
{
    const ScratchFolder folder;
    folder.makeFolder(QStringLiteral("sub"));
    QCOMPARE(listed(folder.path() + QLatin1Char('/')), QStringLiteral("sub | "));
    QCOMPARE(listed(folder.path(QStringLiteral("sub/.."))), QStringLiteral("sub | "));
    QVERIFY(listed(QStringLiteral("//..")).contains(QStringLiteral("tmp")));
}

void tst_FolderScan::kindsOfEntries_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<EntryKind>("kind");
    const auto add = [](const char* name, EntryKind kind) {
        QTest::newRow(name) << QString::fromLatin1(name) << kind;
    };
    add("folder", EntryKind::Folder);
    add("to-folder", EntryKind::FolderLink);
    add("to-link-to-folder", EntryKind::FolderLink);
    add("to-parent", EntryKind::FolderLink);
    add("file", EntryKind::File);
    add("to-file", EntryKind::FileLink);
    add("fifo", EntryKind::Other);
    add("socket", EntryKind::Other);
    add("to-fifo", EntryKind::Other);
    add("to-device", EntryKind::Other);
    add("to-nothing", EntryKind::Other);
    add("to-itself", EntryKind::Other);
    add("ring1", EntryKind::Other);
    add("ring2", EntryKind::Other);
    add("locked", EntryKind::Folder);
    add("secret", EntryKind::File);
}

void tst_FolderScan::kindsOfEntries()
{
    const ScratchFolder folder;
    folder.makeFolder(QStringLiteral("folder"));
    folder.write(QStringLiteral("file"));
    folder.makeFifo(QStringLiteral("fifo"));
    makeSocket(folder.path(QStringLiteral("socket")));
    const std::pair<const char*, const char*> links[] = {
        {"to-folder", "folder"},   {"to-link-to-folder", "to-folder"},
        {"to-parent", ".."},       {"to-file", "file"},
        {"to-fifo", "fifo"},       {"to-device", "/dev/null"},
        {"to-nothing", "nowhere"}, {"to-itself", "to-itself"},
        {"ring1", "ring2"},        {"ring2", "ring1"}};
    for (const auto& [link, target] : links)
        QCOMPARE(symlink(target, QFile::encodeName(folder.path(QLatin1String(link))).constData()),
                 0);
    folder.makeFolder(QStringLiteral("locked"));
    folder.setMode(QStringLiteral("locked"), 0);
    folder.write(QStringLiteral("secret"));
    folder.setMode(QStringLiteral("secret"), 0);

    QFETCH(QString, name);
    QFETCH(EntryKind, kind);
    for (const bool withInfo : {false, true}) {
        const auto scan = FolderScan::read(folder.path(), withInfo);
        QVERIFY(scan);
        const auto& group = isFolder(kind) ? scan->folders() : scan->others();
        const qsizetype place = names(*scan, group).indexOf(name);
        QVERIFY(place >= 0);
        QCOMPARE(group[size_t(place)].kind, kind);
    }
}

void tst_FolderScan::oddNamesComeThroughWhole_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("quotes") << QStringLiteral("it's \"quoted\" `here`");
    QTest::newRow("percent signs") << QStringLiteral("%1 %2 %s %n 100%");
    QTest::newRow("line breaks") << QStringLiteral("two\nlines\r\n");
    QTest::newRow("control characters") << QStringLiteral("\x01\t\x1b[31m\x7f");
    QTest::newRow("backslashes") << QStringLiteral("a\\b\\");
    QTest::newRow("options") << QStringLiteral("-rf");
    QTest::newRow("blanks") << QStringLiteral("  blank  ");
    QTest::newRow("shell") << QStringLiteral("$(reboot);&|<>*?[]{}~!#");
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('n'));
    QTest::newRow("255 bytes of 3 each") << QString(85, QChar(0x20ac));
    QTest::newRow("right to left") << QStringLiteral("\u202egnp.exe");
    QTest::newRow("combining") << QStringLiteral("e\u0301");
}

void tst_FolderScan::oddNamesComeThroughWhole()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write(name);
    folder.makeFolder(QStringLiteral("in/") + name);
    QCOMPARE(listed(folder.path()), QStringLiteral("in | ") + name);
    QCOMPARE(listed(folder.path(QStringLiteral("in")), true), name + QStringLiteral(" | "));
    QCOMPARE(listed(folder.path(QStringLiteral("in/") + name)), QStringLiteral(" | "));
}

void tst_FolderScan::namesOfBrokenBytesAreListed()
{
    const ScratchFolder folder;
    const QByteArray base = QFile::encodeName(folder.path()) + '/';
    const char* const broken[] = {"\xff\xfe", "caf\xe9", "\xed\xa0\x80", "ok"};
    for (const char* name : broken)
        QVERIFY(::close(::creat((base + name).constData(), 0600)) == 0);
    const auto scan = FolderScan::read(folder.path(), true);
    QVERIFY(scan);
    const QStringList list = names(*scan, scan->others());
    QCOMPARE(list.size(), 4);
    QCOMPARE(list.at(0), QStringLiteral("caf") + QChar(0xdce9));
    QCOMPARE(list.at(1), QStringLiteral("ok"));
    for (const FolderEntry& entry : scan->others())
        QVERIFY(entry.hasInfo);
    // The toolkit cannot name them, so it cannot remove them.
    for (const char* name : broken)
        QCOMPARE(::unlink((base + name).constData()), 0);
}

void tst_FolderScan::infoHasSizeAndTime_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<qint64>("modified");
    QTest::newRow("empty, the first second") << qint64(0) << qint64(0);
    QTest::newRow("small, 2008") << qint64(512) << qint64(1204675200);
    QTest::newRow("before 1970") << qint64(1) << qint64(-1);
    QTest::newRow("1902") << qint64(1) << qint64(-2145916800);
    QTest::newRow("after 2038") << qint64(1) << qint64(4102444800);
    QTest::newRow("2 GiB") << (qint64(2) << 30) << qint64(1);
    QTest::newRow("5 GiB") << (qint64(5) << 30) << qint64(1);
    QTest::newRow("1 TiB") << (qint64(1) << 40) << qint64(1);
}

void tst_FolderScan::infoHasSizeAndTime()
{
    QFETCH(qint64, size);
    QFETCH(qint64, modified);
    const ScratchFolder folder;
    folder.writeSparse(QStringLiteral("file"), size);
    folder.setModified(QStringLiteral("file"), modified);
    const auto scan = FolderScan::read(folder.path(), true);
    QVERIFY(scan);
    QCOMPARE(scan->others().size(), size_t(1));
    const FolderEntry& entry = scan->others().front();
    QVERIFY(entry.hasInfo);
    QCOMPARE(entry.size, size);
    QCOMPARE(entry.modified, modified);
}

void tst_FolderScan::infoOfALinkIsItsTargets()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("in/file"), QByteArray(700, 'x'));
    folder.setModified(QStringLiteral("in/file"), 1000);
    folder.makeLink(QStringLiteral("link"), QStringLiteral("in/file"));
    const auto scan = FolderScan::read(folder.path(), true);
    QVERIFY(scan);
    QCOMPARE(scan->others().front().size, qint64(700));
    QCOMPARE(scan->others().front().modified, qint64(1000));
}

void tst_FolderScan::infoIsReadOnlyWhenAskedFor()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("file"), "abc");
    const auto scan = FolderScan::read(folder.path(), false);
    QVERIFY(scan);
    QVERIFY(!scan->others().front().hasInfo);
}

void tst_FolderScan::whatLeadsNowhereHasNoInfo()
{
    const ScratchFolder folder;
    folder.makeLink(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    const auto scan = FolderScan::read(folder.path(), true);
    QVERIFY(scan);
    QVERIFY(!scan->others().front().hasInfo);
}

void tst_FolderScan::whatIsNoReadableFolderIsRefused_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"missing", "missing/sub", "file", "file/", "fifo", "locked",
                             "unlisted", "locked/sub", "loop", "dangling"})
        QTest::newRow(name) << QString::fromLatin1(name);
    QTest::newRow("far too long") << QString(5000, QLatin1Char('x'));
}

void tst_FolderScan::whatIsNoReadableFolderIsRefused()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("file"));
    folder.makeFifo(QStringLiteral("fifo"));
    folder.makeFolder(QStringLiteral("locked/sub"));
    folder.setMode(QStringLiteral("locked"), 0);
    folder.makeFolder(QStringLiteral("unlisted"));
    folder.setMode(QStringLiteral("unlisted"), 0311);
    folder.makeLink(QStringLiteral("loop"), QStringLiteral("loop"));
    folder.makeLink(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    QFETCH(QString, name);
    QCOMPARE(listed(folder.path(name)), QStringLiteral("unreadable"));
}

void tst_FolderScan::folderThatCannotBeSearchedStillListsNames()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("dark/file"), "abc");
    folder.write(QStringLiteral("dark/other"), "abc");
    folder.setMode(QStringLiteral("dark"), 0444);
    const auto scan = FolderScan::read(folder.path(QStringLiteral("dark")), true);
    QVERIFY(scan);
    QCOMPARE(names(*scan, scan->others()),
             QStringList({QStringLiteral("file"), QStringLiteral("other")}));
    QVERIFY(!scan->others().front().hasInfo);
}

void tst_FolderScan::folderUnderChangeIsListedWithoutHarm()
{
    const ScratchFolder folder;
    for (int i = 0; i < 50; ++i)
        folder.write(QStringLiteral("stays%1").arg(i));
    std::atomic<bool> stop = false;
    const std::string base = folder.path().toStdString() + "/comes";
    std::thread churn([&stop, &base] {
        for (int i = 0; !stop; i = (i + 1) % 20) {
            const std::string name = base + std::to_string(i);
            if (i % 2 == 0) {
                ::close(::creat(name.c_str(), 0600));
                ::unlink(name.c_str());
            } else {
                ::mkdir(name.c_str(), 0700);
                ::rmdir(name.c_str());
            }
        }
    });
    qsizetype least = 50;
    for (int round = 0; round < 300; ++round) {
        const auto scan = FolderScan::read(folder.path(), true);
        least = std::min(
            least, scan ? names(*scan, scan->others()).filter(QStringLiteral("stays")).size() : 0);
    }
    stop = true;
    churn.join();
    QCOMPARE(least, 50);
}

void tst_FolderScan::noDescriptorStaysOpen()
{
    const ScratchFolder folder;
    folder.write(QStringLiteral("file"));
    const qsizetype before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        QVERIFY(FolderScan::read(folder.path(), true));
        QVERIFY(!FolderScan::read(folder.path(QStringLiteral("file")), true));
    }
    QCOMPARE(openDescriptors(), before);
}

void tst_FolderScan::thousandsOfEntriesAreAllThere()
{
    const ScratchFolder folder;
    const QByteArray base = QFile::encodeName(folder.path()) + '/';
    constexpr int Count = 5000;
    for (int i = 0; i < Count; ++i)
        QVERIFY(::close(::creat((base + QByteArray::number(i)).constData(), 0600)) == 0);
    const auto scan = FolderScan::read(folder.path(), false);
    QVERIFY(scan);
    const QStringList list = names(*scan, scan->others());
    QCOMPARE(list.size(), Count);
    QVERIFY(std::is_sorted(list.cbegin(), list.cend()));
}

void tst_FolderScan::randomFoldersMatchTheModel()
{
    QRandomGenerator random(20080305);
    const ScratchFolder folder;
    for (int round = 0; round < 300; ++round) {
        folder.makeFolder(QString::number(round));
        const fs::path path = folder.path(QString::number(round)).toStdString();
        for (int entries = random.bounded(0, 12); entries > 0; --entries)
            makeRandomEntry(path, random);
        const auto scan = FolderScan::read(QString::fromStdString(path.string()), round % 2 == 0);
        QVERIFY(scan);
        for (const bool folders : {true, false}) {
            const auto& entries = folders ? scan->folders() : scan->others();
            QStringList expected;
            for (const std::string& name : modelNames(path, folders))
                expected.append(QString::fromStdString(name));
            QCOMPARE(names(*scan, entries), expected);
            for (const FolderEntry& entry : entries)
                QCOMPARE(entry.kind, modelKind(path / scan->name(entry).toStdString()));
        }
    }
}

QUARN_TEST_MAIN(tst_FolderScan)
#include "tst_folderscan.moc"
