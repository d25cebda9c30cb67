#include "tests/support/testmain.h"
#include "tests/tools/filesystems.h"
#include "tests/tools/treetext.h"
#include "tools/sys_gui/move.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <functional>

namespace
{

const MoveWatcher noWatcher;

/// Limits the size of the files that this process writes.
class FileLimit
{
public:
    explicit FileLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;

private:
    rlimit before_{};
};

/// Calls `action` once, when as many bytes are copied.
MoveWatcher when(qint64 bytes, const std::function<void()>& action)
{
    return [bytes, action, done = false](const MoveProgress& progress) mutable {
        if (!done && progress.bytesDone >= bytes) {
            done = true;
            action();
        }
        return true;
    };
}

void append(const QByteArray& path, const char* text)
{
    std::FILE* file = std::fopen(path.constData(), "a");
    QVERIFY(file != nullptr);
    std::fputs(text, file);
    std::fclose(file);
}

} // namespace

class tst_MoveFailures : public QObject
{
    Q_OBJECT

private slots:
    void interruptedMoveLeavesSourceAndNoCopy()
    {
        // Gives up at the first call, then at the second, and so on until all is moved.
        bool isMoved = false;
        for (int calls = 1; !isMoved; ++calls) {
            const OwnFolder source(usualPlace());
            const OwnFolder target(otherPlace());
            making::variety(source.path("tree"));
            const QByteArrayList before = treeText(source.path("tree"));
            int left = calls;
            const MoveResult result = moveInto(source.path("tree"), target.path(),
                                               [&left](const MoveProgress&) { return --left > 0; });
            isMoved = result.state == MoveResult::Moved;
            QCOMPARE(treeText(isMoved ? target.path("tree") : source.path("tree")), before);
            QCOMPARE((isMoved ? source : target).names(), QList<QByteArray>());
            QCOMPARE(result.state == MoveResult::Interrupted, !isMoved);
            QVERIFY(calls < 1000);
            QVERIFY2(!isMoved || calls > 40, "it could have been interrupted at each entry");
        }
    }

    void fullTargetLeavesSourceAndNoCopy_data()
    {
        QTest::addColumn<bool>("isFileLimit");
        QTest::newRow("a file may not be so large") << true;
        if (SmallFileSystem().isMounted())
            QTest::newRow("no space left") << false;
    }

    void fullTargetLeavesSourceAndNoCopy()
    {
        QFETCH(bool, isFileLimit);
        const OwnFolder source(usualPlace());
        const SmallFileSystem small;
        const OwnFolder target(isFileLimit ? otherPlace() : small.path());
        making::folder(source.path("tree"));
        making::file(source.path("tree/a"), QByteArray(400000, 'a'));
        making::folder(source.path("tree/locked"), 0555);
        making::file(source.path("tree/z"), QByteArray(SmallFileSystem::Bytes, 'z'));
        const QByteArrayList before = treeText(source.path("tree"));
        MoveResult result;
        {
            const FileLimit limit(isFileLimit ? 500000 : RLIM_INFINITY);
            result = moveInto(source.path("tree"), target.path(), noWatcher);
        }
        QCOMPARE(result.state, MoveResult::Failed);
        const char* reason = isFileLimit ? "File too large" : "No space left on device";
        QVERIFY2(result.message.contains(reason), result.message.constData());
        QVERIFY2(result.message.contains("tree/"), result.message.constData());
        QCOMPARE(treeText(source.path("tree")), before);
        QCOMPARE(target.names(), QList<QByteArray>());
    }

    void wrongPathsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("reason");
        const QByteArray none("No such file or directory");
        QTest::newRow("source is gone") << QByteArray("gone") << QByteArray("folder") << none;
        QTest::newRow("source is empty") << QByteArray() << QByteArray("folder") << none;
        QTest::newRow("target is gone") << QByteArray("file") << QByteArray("gone") << none;
        QTest::newRow("target is empty") << QByteArray("file") << QByteArray() << none;
        QTest::newRow("target is a file")
            << QByteArray("file") << QByteArray("other") << QByteArray("Not a directory");
        QTest::newRow("source below a file")
            << QByteArray("file/x") << QByteArray("folder") << QByteArray("Not a directory");
        QTest::newRow("folder into itself")
            << QByteArray("folder") << QByteArray("folder") << QByteArray("into itself");
        QTest::newRow("folder into its subfolder")
            << QByteArray("folder") << QByteArray("folder/a/b") << QByteArray("into itself");
        QTest::newRow("folder into itself by a link")
            << QByteArray("folder") << QByteArray("link") << QByteArray("into itself");
        QTest::newRow("file into its own folder")
            << QByteArray("file") << QByteArray(".") << QByteArray("File exists");
        QTest::newRow("current folder")
            << QByteArray(".") << QByteArray("folder") << QByteArray("busy");
        QTest::newRow("folder above")
            << QByteArray("folder/..") << QByteArray("folder") << QByteArray("busy");
        QTest::newRow("root") << QByteArray("/") << QByteArray("folder") << QByteArray("busy");
        QTest::newRow("name too long")
            << QByteArray(256, 'n') << QByteArray("folder") << QByteArray("File name too long");
    }

    void wrongPathsAreRefused()
    {
        QFETCH(QByteArray, source);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, reason);
        const OwnFolder place(usualPlace());
        making::file(place.path("file"), "x");
        making::file(place.path("other"), "y");
        making::folder(place.path("folder"));
        making::folder(place.path("folder/a"));
        making::folder(place.path("folder/a/b"));
        making::symbolicLink(place.path("link"), "folder/a");
        const QByteArrayList before = treeText(place.path());
        const QString current = QDir::currentPath();
        QVERIFY(QDir::setCurrent(QFile::decodeName(place.path())));
        const MoveResult result = moveInto(source, target, noWatcher);
        QVERIFY(QDir::setCurrent(current));
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains(reason), result.message.constData());
        QCOMPARE(treeText(place.path()), before);
    }

    void whatIsInTheTargetStays_data()
    {
        QTest::addColumn<bool>("across");
        QTest::addColumn<QByteArray>("kind");
        for (const bool across : {false, true}) {
            for (const QByteArray kind : {"file", "folder", "broken link"})
                QTest::addRow("%s, %s", kind.constData(), across ? "across" : "within")
                    << across << kind;
        }
    }

    void whatIsInTheTargetStays()
    {
        QFETCH(bool, across);
        QFETCH(QByteArray, kind);
        const OwnFolder source(usualPlace());
        const OwnFolder target(across ? otherPlace() : usualPlace());
        making::file(source.path("name"), "new");
        if (kind == "file")
            making::file(target.path("name"), "old");
        else if (kind == "folder")
            making::folder(target.path("name"));
        else
            making::symbolicLink(target.path("name"), "gone");
        const QByteArrayList before = treeText(target.path());
        const MoveResult result = moveInto(source.path("name"), target.path(), noWatcher);
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("File exists"), result.message.constData());
        QCOMPARE(treeText(target.path()), before);
        QCOMPARE(source.names(), QList<QByteArray>{"name"});
    }

    void whatComesIntoTheTargetMeanwhileStays()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::file(source.path("name"), "new");
        const auto put = [&] { making::file(target.path("name"), "another's"); };
        const MoveResult result = moveInto(source.path("name"), target.path(), when(1, put));
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("File exists"), result.message.constData());
        QCOMPARE(target.names(), QList<QByteArray>{"name"});
        QVERIFY(treeText(target.path("name")).first().contains(" content 9 "));
        QVERIFY(treeText(source.path("name")).first().contains(" content 3 "));
    }

    void fileThatGrowsMeanwhileStays()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::file(source.path("log"), QByteArray(600000, 'l'));
        const auto grow = [&] { append(source.path("log"), "more"); };
        const MoveResult result = moveInto(source.path("log"), target.path(), when(1, grow));
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("changes"), result.message.constData());
        QVERIFY(treeText(source.path("log")).first().contains(" content 600004 "));
        QCOMPARE(target.names(), QList<QByteArray>());
    }

    void fileThatChangesAfterItWasCopiedStays()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::folder(source.path("tree"));
        making::file(source.path("tree/log"), "log");
        bool isChanged = false;
        const auto watch = [&](const MoveProgress&) {
            const bool isInPlace = !treeText(target.path("tree")).isEmpty();
            if (isInPlace && !isChanged)
                append(source.path("tree/log"), "more");
            isChanged = isInPlace;
            return true;
        };
        const MoveResult result = moveInto(source.path("tree"), target.path(), watch);
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("has changed"), result.message.constData());
        QVERIFY(treeText(source.path("tree/log")).first().contains(" content 7 "));
        QVERIFY(treeText(target.path("tree/log")).first().contains(" content 3 "));
        QCOMPARE(target.names(), QList<QByteArray>{"tree"});
    }

    void whatComesIntoTheSourceMeanwhileStays()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::folder(source.path("tree"));
        making::file(source.path("tree/old"), "old");
        const auto put = [&] { making::file(source.path("tree/late"), "late"); };
        const MoveResult result = moveInto(source.path("tree"), target.path(), when(1, put));
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("copied, but cannot remove"), result.message.constData());
        QCOMPARE(treeText(source.path("tree")).size(), 2);
        QVERIFY(treeText(source.path("tree/late")).first().contains(" content 4 "));
        QCOMPARE(treeText(target.path("tree")).size(), 2);
        QVERIFY(treeText(target.path("tree/old")).first().contains(" content 3 "));
    }

    void sourceThatVanishesMeanwhileIsAFailure()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder target(otherPlace());
        making::folder(source.path("tree"));
        making::file(source.path("tree/file"), "x");
        const auto watch = [&](const MoveProgress& progress) {
            if (progress.bytesTotal > 0)
                unlink(source.path("tree/file").constData());
            return true;
        };
        const MoveResult result = moveInto(source.path("tree"), target.path(), watch);
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("'tree/file': No such file"), result.message.constData());
        QCOMPARE(source.names(), QList<QByteArray>{"tree"});
        QCOMPARE(target.names(), QList<QByteArray>());
    }

    void permissionsAreRespected_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<unsigned>("mode");
        QTest::newRow("file may not be read") << QByteArray("source/tree/sub/file") << 0U;
        QTest::newRow("folder may not be read") << QByteArray("source/tree/sub") << 0300U;
        QTest::newRow("folder may not be emptied") << QByteArray("source/tree/sub") << 0555U;
        QTest::newRow("top may not be emptied") << QByteArray("source/tree") << 0555U;
        QTest::newRow("source may not leave its folder") << QByteArray("source") << 0555U;
        QTest::newRow("target may not be written") << QByteArray("target") << 0555U;
    }

    void permissionsAreRespected()
    {
        QFETCH(QByteArray, path);
        QFETCH(unsigned, mode);
        const OwnFolder usual(usualPlace());
        const OwnFolder other(otherPlace());
        const bool isTarget = path == "target";
        const QByteArray from = usual.path("source");
        const QByteArray to = other.path("target");
        making::folder(from);
        making::folder(to);
        making::folder(from + "/tree");
        making::file(from + "/tree/a", "copied first or not");
        making::folder(from + "/tree/sub");
        making::file(from + "/tree/sub/file", "x");
        const QByteArrayList before = treeText(from + "/tree/sub/file");
        const QByteArray changed = isTarget ? to : usual.path(path);
        QCOMPARE(chmod(changed.constData(), mode), 0);
        const QByteArrayList all = treeText(from);
        const MoveResult result = moveInto(from + "/tree", to, noWatcher);
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("Permission denied"), result.message.constData());
        QCOMPARE(treeText(from), all);
        QCOMPARE(treeText(to).size(), 1);
        QCOMPARE(chmod(changed.constData(), 0700), 0);
        if (!path.endsWith("file"))
            QCOMPARE(treeText(from + "/tree/sub/file"), before);
    }

    void unreadableTargetThatMayBeWrittenWorks()
    {
        const OwnFolder source(usualPlace());
        const OwnFolder other(otherPlace());
        making::folder(other.path("target"), 0300);
        making::file(source.path("file"), "x");
        QCOMPARE(moveInto(source.path("file"), other.path("target"), noWatcher).message,
                 QByteArray());
        QCOMPARE(treeText(other.path("target/file")).size(), 1);
    }

    void mountedFolderIsRefusedBeforeAnythingIsDone()
    {
        const SmallFileSystem small;
        if (!small.isMounted())
            return; // nobody without the right to mount has mounts that may be emptied
        const OwnFolder target(otherPlace());
        making::file(small.path() + "/file", "x");
        const MoveResult result = moveInto(small.path(), target.path(), noWatcher);
        QCOMPARE(result.state, MoveResult::Failed);
        QVERIFY2(result.message.contains("busy"), result.message.constData());
        QCOMPARE(treeText(small.path()).size(), 2);
        QCOMPARE(target.names(), QList<QByteArray>());
    }
};

int main(int argc, char** argv)
{
    enterOwnMounts();
    return runTest<tst_MoveFailures>(argc, argv);
}

#include "tst_movefailures.moc"
