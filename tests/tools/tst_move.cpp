#include "tests/support/testmain.h"
#include "tests/tools/filesystems.h"
#include "tests/tools/treetext.h"
#include "tools/sys_gui/move.h"

#include <QProcess>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

using Maker = std::function<void(const QByteArray&)>;
Q_DECLARE_METATYPE(Maker)

namespace
{

ino_t inodeOf(const QByteArray& path)
{
    struct stat info = {};
    return lstat(path.constData(), &info) == 0 ? info.st_ino : 0;
}

bool isThere(const QByteArray& path)
{
    return inodeOf(path) != 0;
}

void mv(const QByteArray& source, const QByteArray& folder)
{
    QProcess process;
    process.start(QStringLiteral("mv"), {QFile::decodeName(source), QFile::decodeName(folder)});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
}

const MoveWatcher noWatcher;

} // namespace

class tst_Move : public QObject
{
    Q_OBJECT

private slots:
    void entryWithinFileSystemIsRenamed()
    {
        const OwnFolder one(usualPlace());
        const OwnFolder two(usualPlace());
        making::variety(one.path("tree"));
        const ino_t inode = inodeOf(one.path("tree"));
        const QByteArrayList before = treeText(one.path("tree"));
        const MoveResult result = moveInto(one.path("tree"), two.path(), noWatcher);
        QCOMPARE(result.message, QByteArray());
        QCOMPARE(result.state, MoveResult::Moved);
        QCOMPARE(inodeOf(two.path("tree")), inode);
        QCOMPARE(treeText(two.path("tree")), before);
        QCOMPARE(one.names(), QList<QByteArray>());
    }

    void resultIsThatOfMv_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<Maker>("make");
        const auto row = [](const char* title, const QByteArray& name, const Maker& make) {
            QTest::newRow(title) << name << make;
        };
        row("file", "file", [](const auto& path) { making::file(path, "content"); });
        row("empty file", "file", [](const auto& path) { making::file(path, {}); });
        row("file of many blocks", "file",
            [](const auto& path) { making::file(path, QByteArray(3 * 1000 * 1000, 'x')); });
        row("file of others' modes", "file",
            [](const auto& path) { making::file(path, "x", 06711); });
        row("old file", "file", [](const auto& path) {
            making::file(path, "x");
            making::age(path, 86400);
        });
        row("file from before 1970", "file", [](const auto& path) {
            making::file(path, "x");
            making::age(path, -86400);
        });
        row("empty folder", "folder", [](const auto& path) { making::folder(path, 0711); });
        row("empty folder nobody may write", "folder",
            [](const auto& path) { making::folder(path, 0555); });
        row("tree", "tree", making::variety);
        row("many files", "many", [](const auto& path) {
            making::folder(path);
            for (int i = 0; i < 300; ++i)
                making::file(path + '/' + QByteArray::number(i), QByteArray::number(i));
        });
        row("link", "link", [](const auto& path) { making::symbolicLink(path, "/etc"); });
        row("broken link", "link", [](const auto& path) { making::symbolicLink(path, "gone"); });
        row("link of the longest text", "link",
            [](const auto& path) { making::symbolicLink(path, QByteArray(4095, 'l')); });
        row("fifo", "fifo", [](const auto& path) { making::fifo(path); });
        row("socket", "socket", [](const auto& path) { making::socket(path); });
        row("longest name", QByteArray(255, 'n'),
            [](const auto& path) { making::file(path, "x"); });
        row("longest name of two-byte characters", QByteArray("\xd0\xbf").repeated(127),
            [](const auto& path) { making::file(path, "x"); });
        row("quotes", "a \"b\" 'c'", [](const auto& path) { making::file(path, "x"); });
        row("line break", "a\nb", [](const auto& path) { making::file(path, "x"); });
        row("option", "--help", [](const auto& path) { making::file(path, "x"); });
        row("hidden", ".profile", [](const auto& path) { making::file(path, "x"); });
    }

    void resultIsThatOfMv()
    {
        QFETCH(QByteArray, name);
        QFETCH(Maker, make);
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        const OwnFolder theirs(otherPlace());
        make(source.path(name));
        // Both move the very same thing, one after the other.
        const QByteArrayList before = treeText(source.path(name));
        const MoveResult result = moveInto(source.path(name), target.path(), noWatcher);
        QCOMPARE(result.message, QByteArray());
        QCOMPARE(result.state, MoveResult::Moved);
        QCOMPARE(source.names(), QList<QByteArray>());
        QCOMPARE(target.names(), QList<QByteArray>{name});
        const QByteArrayList ours = treeText(target.path(name));
        QCOMPARE(ours, before);
        QCOMPARE(moveInto(target.path(name), source.path(), noWatcher).message, QByteArray());
        QCOMPARE(treeText(source.path(name)), before);
        mv(source.path(name), theirs.path());
        QCOMPARE(ours, treeText(theirs.path(name)));
    }

    void nameThatIsNoTextIsKept()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        const QByteArray name("\xff\xfe\x01 name");
        making::file(source.path(name), "x");
        QCOMPARE(moveInto(source.path(name), target.path(), noWatcher).message, QByteArray());
        QCOMPARE(target.names(), QList<QByteArray>{name});
    }

    void deviceIsMadeAnew()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        const dev_t device = 0x103; // what reads as nothing and swallows everything
        if (mknod(source.path("device").constData(), S_IFCHR | 0600, device) != 0) {
            // Who may not make one cannot have one that may be moved.
            QCOMPARE(errno, EPERM);
            return;
        }
        QCOMPARE(moveInto(source.path("device"), target.path(), noWatcher).message, QByteArray());
        struct stat info = {};
        QCOMPARE(lstat(target.path("device").constData(), &info), 0);
        QVERIFY(S_ISCHR(info.st_mode));
        QCOMPARE(info.st_rdev, device);
        QVERIFY(!isThere(source.path("device")));
    }

    void linkedFileOutsideStaysWhatItIs()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::file(source.path("outside"), "kept");
        making::folder(source.path("tree"));
        making::folder(source.path("outer"));
        making::file(source.path("outer/inner"), "kept");
        making::symbolicLink(source.path("tree/file"), source.path("outside"));
        making::symbolicLink(source.path("tree/folder"), source.path("outer"));
        QCOMPARE(moveInto(source.path("tree"), target.path(), noWatcher).message, QByteArray());
        QCOMPARE(source.names(), (QList<QByteArray>{"outer", "outside"}));
        QVERIFY(isThere(source.path("outer/inner")));
        QCOMPARE(treeText(target.path("tree/folder")).size(), 1);
    }

    void bothNamesOfOneFileKeepItsContent()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::folder(source.path("tree"));
        making::file(source.path("tree/one"), "content");
        QCOMPARE(link(source.path("tree/one").constData(), source.path("tree/two").constData()), 0);
        making::age(source.path("tree"), 1000);
        const QByteArrayList before = treeText(source.path("tree"));
        QCOMPARE(moveInto(source.path("tree"), target.path(), noWatcher).message, QByteArray());
        QCOMPARE(treeText(target.path("tree")), before);
        QCOMPARE(source.names(), QList<QByteArray>());
    }

    void slashAtTheEndIsNoPartOfTheName()
    {
        for (const QByteArray& place : {usualPlace(), otherPlace()}) {
            const OwnFolder source(usualPlace());
            const OwnFolder target(place);
            making::folder(source.path("folder"));
            making::file(source.path("folder/file"), "x");
            QCOMPARE(moveInto(source.path("folder//"), target.path() + '/', noWatcher).message,
                     QByteArray());
            QCOMPARE(treeText(target.path("folder")).size(), 2);
            QCOMPARE(source.names(), QList<QByteArray>());
        }
    }

    void relativePathsCountFromTheCurrentFolder()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::file(source.path("file"), "x");
        making::folder(source.path("folder"));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(QFile::decodeName(source.path())));
        const MoveResult within = moveInto("file", "folder", noWatcher);
        const MoveResult across = moveInto("folder", target.path(), noWatcher);
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(within.message, QByteArray());
        QCOMPARE(across.message, QByteArray());
        QVERIFY(isThere(target.path("folder/file")));
    }

    void targetMayBeALinkToAFolder()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::file(source.path("file"), "x");
        making::symbolicLink(source.path("link"), target.path());
        QCOMPARE(moveInto(source.path("file"), source.path("link"), noWatcher).message,
                 QByteArray());
        QVERIFY(isThere(target.path("file")));
    }

    void progressRisesToTheWhole()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::folder(source.path("tree"));
        making::file(source.path("tree/one"), QByteArray(1000000, '1'));
        making::file(source.path("tree/two"), QByteArray(500000, '2'));
        making::symbolicLink(source.path("tree/three"), "one");
        MoveProgress last;
        int steps = 0;
        const auto watch = [&](const MoveProgress& progress) {
            steps += progress.bytesDone > last.bytesDone ? 1 : 0;
            const bool rises = progress.bytesDone >= last.bytesDone &&
                               (last.bytesDone == 0 || progress.bytesTotal == last.bytesTotal);
            last = progress;
            return rises;
        };
        QCOMPARE(moveInto(source.path("tree"), target.path(), watch).message, QByteArray());
        QCOMPARE(last.bytesTotal, qint64(1500000));
        QCOMPARE(last.bytesDone, qint64(1500000));
        QVERIFY2(steps >= 3, "the progress of a large file shows on the way");
    }
};

int main(int argc, char** argv)
{
    enterOwnMounts();
    return runTest<tst_Move>(argc, argv);
}

#include "tst_move.moc"
