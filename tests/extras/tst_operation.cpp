// What copies, moves and deletes do with all kinds of entries, and what they refuse.

#include "extras/operation.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/oddnames.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

/// Steps until the sources are seen.
void surveyAll(Operation& operation)
{
    while (operation.state() == Operation::State::Surveying)
        operation.step(1000);
    QCOMPARE(operation.state(), Operation::State::Surveyed);
}

Trouble onlyTrouble(const Operation& operation)
{
    return operation.failures().count == 1 ? operation.failures().first.first().trouble
                                           : Trouble(-1);
}

/// Makes folders in each other, with a file in the innermost, and goes on as deep as a path cannot
/// be told in one piece.
class DeepTree
{
public:
    static constexpr int Levels = 60;

    static void make(const QByteArray& top)
    {
        int folder = open(top.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int level = 0; level < Levels; ++level) {
            QCOMPARE(mkdirat(folder, name().constData(), 0755), 0);
            folder = into(folder);
        }
        const int file = openat(folder, "file", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        QCOMPARE(write(file, "deep", 4), ssize_t(4));
        close(file);
        close(folder);
    }

    /// What the innermost file holds.
    static QByteArray content(const QByteArray& top)
    {
        int folder = open(top.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int level = 0; level < Levels && folder >= 0; ++level)
            folder = into(folder);
        const int file = openat(folder, "file", O_RDONLY | O_CLOEXEC);
        char text[16] = {};
        const ssize_t got = read(file, text, sizeof text);
        close(file);
        close(folder);
        return {text, qsizetype(std::max<ssize_t>(got, 0))};
    }

private:
    static QByteArray name() { return QByteArray(200, 'd'); }
    static int into(int folder)
    {
        const int inner = openat(folder, name().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        close(folder);
        return inner;
    }
};

} // namespace

class tst_Operation : public QObject
{
    Q_OBJECT

private slots:
    void aCopyIsTheSame_data() { addPlaces(); }
    void aCopyIsTheSame()
    {
        QFETCH(int, where);
        const OperationPlaces places{OperationPlaces::Where(where)};
        makeEveryKind(places.source("tree"));
        const QByteArrayList before = wholeText(places.source("tree"));
        runWell(places.request(OperationKind::Copy, {"tree"}));
        const QByteArrayList now = wholeText(places.target("tree"));
        QVERIFY2(now == before, differences(before, now).constData());
        QVERIFY(wholeText(places.source("tree")) == before);
        QVERIFY(places.journals().isEmpty());
    }

    void aMoveIsTheSame_data() { addPlaces(); }
    void aMoveIsTheSame()
    {
        QFETCH(int, where);
        const OperationPlaces places{OperationPlaces::Where(where)};
        makeEveryKind(places.source("tree"));
        QCOMPARE(chmod(places.source("tree/locked").constData(), 0755), 0);
        const QByteArrayList before = wholeText(places.source("tree"));
        runWell(places.request(OperationKind::Move, {"tree"}));
        const QByteArrayList now = wholeText(places.target("tree"));
        QVERIFY2(now == before, differences(before, now).constData());
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    void namesReachTheDiskExactly_data() { addOddKinds(); }
    void namesReachTheDiskExactly()
    {
        QFETCH(int, kind);
        const OperationPlaces places;
        QList<QByteArray> names;
        for (const QByteArray& name : namesForEach(kind)) {
            if (names.contains(name))
                continue;
            writeFile(places.source(name), name);
            names.append(name);
        }
        std::sort(names.begin(), names.end());
        runWell(places.request(OperationKind::Copy, names));
        QCOMPARE(namesIn(places.target()), names);
        for (const QByteArray& name : names)
            QCOMPARE(readFile(places.target(name)), name);
        runWell(places.request(OperationKind::Delete, names));
        QCOMPARE(namesIn(places.source()), QList<QByteArray>());
        OperationRequest back;
        back.kind = OperationKind::Move;
        for (const QByteArray& name : names)
            back.sources.append(places.target(name));
        back.target = places.source();
        runWell(back);
        QCOMPARE(namesIn(places.source()), names);
        QCOMPARE(namesIn(places.target()), QList<QByteArray>());
    }

    void foldersMayBeDeeperThanAPathIsLong()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("top"));
        DeepTree::make(places.source("top"));
        Operation copy(places.request(OperationKind::Copy, {"top"}));
        surveyAll(copy);
        QCOMPARE(copy.survey().folders, qint64(DeepTree::Levels + 1));
        copy.begin();
        runToEnd(copy);
        QVERIFY(copy.failures().isEmpty());
        QCOMPARE(DeepTree::content(places.target("top")), QByteArray("deep"));
        OperationRequest away = places.request(OperationKind::Delete, {});
        away.sources = {places.target("top")};
        runWell(away);
        QVERIFY(!isThere(places.target("top")));
        runWell(places.request(OperationKind::Move, {"top"}));
        QCOMPARE(DeepTree::content(places.target("top")), QByteArray("deep"));
        QVERIFY(!isThere(places.source("top")));
        runWell(away);
        QVERIFY(!isThere(places.target("top")));
    }

    void linksAreNeverFollowed()
    {
        const OperationPlaces places;
        making::folder(places.source("elsewhere"));
        writeFile(places.source("elsewhere/kept"), "kept");
        making::folder(places.source("tree"));
        makeLink(places.source("tree/into target"), places.target());
        makeLink(places.source("tree/up"), "..");
        // In the target a link has the name of the folder that comes.
        makeLink(places.target("tree"), places.source("elsewhere"));
        runWell(places.request(OperationKind::Copy, {"tree"}), Answer::Replace);
        QCOMPARE(namesIn(places.source("elsewhere")), QList<QByteArray>{"kept"});
        QCOMPARE(wholeText(places.target("tree")), wholeText(places.source("tree")));
        OperationRequest away = places.request(OperationKind::Delete, {"tree"});
        runWell(away);
        QCOMPARE(readFile(places.source("elsewhere/kept")), QByteArray("kept"));
        QVERIFY(isThere(places.target("tree")));
    }

    void anEntryOntoItselfIsRefused_data()
    {
        QTest::addColumn<bool>("isMove");
        QTest::newRow("copy") << false;
        QTest::newRow("move") << true;
    }
    void anEntryOntoItselfIsRefused()
    {
        QFETCH(bool, isMove);
        const OperationPlaces places;
        writeFile(places.target("file"), "content");
        writeFile(places.source("other"), "other");
        // By another path to the same folder.
        makeLink(places.source("again"), places.target());
        OperationRequest request = places.request(
            isMove ? OperationKind::Move : OperationKind::Copy, {"again/file", "other"});
        Operation operation(request);
        surveyAll(operation);
        QCOMPARE(operation.survey().troubles.count, qint64(1));
        QCOMPARE(operation.survey().troubles.first.first().trouble, Trouble::SameFile);
        QVERIFY(!operation.survey().isPlain());
        runToEnd(operation);
        QCOMPARE(onlyTrouble(operation), Trouble::SameFile);
        QCOMPARE(readFile(places.target("file")), QByteArray("content"));
        QCOMPARE(readFile(places.target("other")), QByteArray("other"));
        QCOMPARE(operation.outcomes(),
                 (QList<SourceOutcome>{SourceOutcome::Failed, SourceOutcome::Done}));
    }

    void aFolderIntoItselfIsRefused_data()
    {
        QTest::addColumn<QByteArray>("into");
        QTest::addColumn<bool>("isMove");
        for (const bool isMove : {false, true}) {
            QTest::newRow(isMove ? "moved into itself" : "itself")
                << QByteArray("folder") << isMove;
            QTest::newRow(isMove ? "moved below itself" : "below itself")
                << QByteArray("folder/sub/deep") << isMove;
            QTest::newRow(isMove ? "moved through a link" : "through a link")
                << QByteArray("link") << isMove;
        }
    }
    void aFolderIntoItselfIsRefused()
    {
        QFETCH(QByteArray, into);
        QFETCH(bool, isMove);
        const OperationPlaces places;
        making::folder(places.source("folder"));
        making::folder(places.source("folder/sub"));
        making::folder(places.source("folder/sub/deep"));
        makeLink(places.source("link"), "folder/sub");
        const QByteArrayList before = wholeText(places.source());
        OperationRequest request =
            places.request(isMove ? OperationKind::Move : OperationKind::Copy, {"folder"});
        request.target = places.source(into);
        Operation operation(request);
        surveyAll(operation);
        QCOMPARE(operation.survey().troubles.first.first().trouble, Trouble::IntoItself);
        runToEnd(operation);
        QCOMPARE(onlyTrouble(operation), Trouble::IntoItself);
        QCOMPARE(wholeText(places.source()), before);
    }

    void whatIsNoEntryIsRefused()
    {
        const OperationPlaces places;
        writeFile(places.source("kept"), "kept");
        for (const char* name : {"..", ".", "missing"}) {
            for (const OperationKind kind :
                 {OperationKind::Copy, OperationKind::Move, OperationKind::Delete}) {
                Operation operation(places.request(kind, {name}));
                surveyAll(operation);
                QCOMPARE(operation.survey().troubles.count, qint64(1));
                runToEnd(operation);
                QCOMPARE(onlyTrouble(operation), Trouble::Missing);
                QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::Failed});
            }
        }
        QCOMPARE(namesIn(places.source()), QList<QByteArray>{"kept"});
        QVERIFY(namesIn(places.target()).isEmpty());
    }

    void whatHasTakenTheNameOfASourceIsNotMeant()
    {
        const OperationPlaces places;
        for (const OperationKind kind :
             {OperationKind::Copy, OperationKind::Move, OperationKind::Delete}) {
            writeFile(places.source("file"), "meant");
            writeFile(places.source("other"), "not meant");
            Operation operation(places.request(kind, {"file"}));
            surveyAll(operation);
            QCOMPARE(rename(places.source("other").constData(), places.source("file").constData()),
                     0);
            runToEnd(operation);
            QCOMPARE(onlyTrouble(operation), Trouble::SourceChanged);
            QCOMPARE(readFile(places.source("file")), QByteArray("not meant"));
            QVERIFY(namesIn(places.target()).isEmpty());
        }
    }

    void aMoveJoinsFoldersEntryByEntry()
    {
        const OperationPlaces places;
        for (const QByteArray& folder : {places.source("f"), places.target("f")}) {
            making::folder(folder);
            making::folder(folder + "/both");
        }
        writeFile(places.source("f/both/mine"), "mine");
        writeFile(places.source("f/both/same"), "new");
        writeFile(places.target("f/both/same"), "old");
        writeFile(places.target("f/both/theirs"), "theirs");
        making::folder(places.source("f/only"));
        runWell(places.request(OperationKind::Move, {"f"}), Answer::Replace);
        QVERIFY(namesIn(places.source()).isEmpty());
        QCOMPARE(namesIn(places.target("f")), (QList<QByteArray>{"both", "only"}));
        QCOMPARE(namesIn(places.target("f/both")), (QList<QByteArray>{"mine", "same", "theirs"}));
        QCOMPARE(readFile(places.target("f/both/same")), QByteArray("new"));
    }

    void aMoveLeavesWhatWasLeftOut()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        making::folder(places.source("f"));
        making::folder(places.target("f"));
        writeFile(places.source("f/same"), "new");
        writeFile(places.source("f/other"), "other");
        writeFile(places.target("f/same"), "old");
        Operation operation(places.request(OperationKind::Move, {"f"}));
        runToEnd(operation, Answer::LeaveOut);
        QVERIFY(operation.failures().isEmpty());
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::LeftOut});
        QCOMPARE(namesIn(places.source("f")), QList<QByteArray>{"same"});
        QCOMPARE(readFile(places.source("f/same")), QByteArray("new"));
        QCOMPARE(readFile(places.target("f/same")), QByteArray("old"));
        QCOMPARE(readFile(places.target("f/other")), QByteArray("other"));
    }

    void aFolderAndAFileReplaceEachOther()
    {
        const OperationPlaces places;
        making::folder(places.source("was file"));
        writeFile(places.source("was file/in"), "in");
        writeFile(places.source("was folder"), "file");
        writeFile(places.target("was file"), "old");
        making::folder(places.target("was folder"));
        writeFile(places.target("was folder/old"), "old");
        for (const OperationKind kind : {OperationKind::Copy, OperationKind::Move}) {
            runWell(places.request(kind, {"was file", "was folder"}), Answer::Replace);
            QCOMPARE(readFile(places.target("was file/in")), QByteArray("in"));
            QCOMPARE(readFile(places.target("was folder")), QByteArray("file"));
            QCOMPARE(namesIn(places.target()), (QList<QByteArray>{"was file", "was folder"}));
            // The other way round for the second time.
            if (kind == OperationKind::Copy) {
                runWell(deletion({places.target("was file"), places.target("was folder")}));
                writeFile(places.target("was file"), "old");
                making::folder(places.target("was folder"));
            }
        }
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    void bothAreKeptUnderFreeNames_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("second");
        QTest::newRow("extension") << QByteArray("a.tar.gz") << QByteArray("a.tar (2).gz");
        QTest::newRow("none") << QByteArray("README") << QByteArray("README (2)");
        QTest::newRow("hidden") << QByteArray(".profile") << QByteArray(".profile (2)");
        QTest::newRow("no UTF-8") << QByteArray("\xff.x") << QByteArray("\xff (2).x");
        QTest::newRow("longest") << QByteArray(251, 'n') + ".txt"
                                 << QByteArray(247, 'n') + " (2).txt";
        QTest::newRow("longest of two bytes") << QByteArray("\xd0\xbf").repeated(127) + "x"
                                              << QByteArray("\xd0\xbf").repeated(125) + " (2)";
    }
    void bothAreKeptUnderFreeNames()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, second);
        const OperationPlaces places;
        writeFile(places.source(name), "new");
        writeFile(places.target(name), "old");
        runWell(places.request(OperationKind::Copy, {name}), Answer::KeepBoth);
        QCOMPARE(readFile(places.target(name)), QByteArray("old"));
        QCOMPARE(readFile(places.target(second)), QByteArray("new"));
        writeFile(places.source(name), "third");
        runWell(places.request(OperationKind::Move, {name}), Answer::KeepBoth);
        QCOMPARE(namesIn(places.target()).size(), qsizetype(3));
        QCOMPARE(readFile(places.target(second)), QByteArray("new"));
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    void eachConflictHasItsAnswer()
    {
        const OperationPlaces places;
        for (const QByteArray& name : QByteArrayList{"a", "b", "c"}) {
            writeFile(places.source(name), "new " + name);
            writeFile(places.target(name), "old");
        }
        Operation operation(places.request(OperationKind::Copy, {"a", "b", "c"}));
        surveyAll(operation);
        const Listed<Conflict>& conflicts = operation.survey().conflicts;
        QCOMPARE(conflicts.count, qint64(3));
        QCOMPARE(conflicts.first[1].source, places.source("b"));
        QCOMPARE(conflicts.first[1].target, places.target("b"));
        QCOMPARE(conflicts.first[1].sourceFacts.size, qint64(5));
        QCOMPARE(conflicts.first[1].targetFacts.size, qint64(3));
        operation.decide(0, Answer::Replace);
        operation.decide(1, Answer::LeaveOut);
        operation.decide(2, Answer::KeepBoth);
        operation.begin();
        runToEnd(operation);
        QVERIFY(operation.failures().isEmpty());
        QCOMPARE(readFile(places.target("a")), QByteArray("new a"));
        QCOMPARE(readFile(places.target("b")), QByteArray("old"));
        QCOMPARE(readFile(places.target("c")), QByteArray("old"));
        QCOMPARE(readFile(places.target("c (2)")), QByteArray("new c"));
    }

    void whatHasNoAnswerIsAskedWhenItIsReached()
    {
        const OperationPlaces places;
        for (const char* name : {"a", "b", "c"}) {
            writeFile(places.source(name), "new");
            writeFile(places.target(name), "old");
        }
        Operation operation(places.request(OperationKind::Copy, {"a", "b", "c"}));
        surveyAll(operation);
        operation.begin();
        while (operation.step(1000) == Operation::State::Working) {
        }
        QCOMPARE(operation.state(), Operation::State::Asking);
        QCOMPARE(operation.question().source, places.source("a"));
        operation.answer(Answer::LeaveOut, false);
        while (operation.step(1000) == Operation::State::Working) {
        }
        QCOMPARE(operation.state(), Operation::State::Asking);
        QCOMPARE(operation.question().source, places.source("b"));
        operation.answer(Answer::Replace, true);
        while (operation.step(1000) == Operation::State::Working) {
        }
        QCOMPARE(operation.state(), Operation::State::Finished);
        QCOMPARE(readFile(places.target("a")), QByteArray("old"));
        QCOMPARE(readFile(places.target("b")), QByteArray("new"));
        QCOMPARE(readFile(places.target("c")), QByteArray("new"));
    }

    void twoSourcesOfOneNameAreInEachOthersWay()
    {
        const OperationPlaces places;
        making::folder(places.source("other"));
        writeFile(places.source("name"), "first");
        writeFile(places.source("other/name"), "second");
        runWell(places.request(OperationKind::Copy, {"name", "other/name"}), Answer::KeepBoth);
        QCOMPARE(readFile(places.target("name")), QByteArray("first"));
        QCOMPARE(readFile(places.target("name (2)")), QByteArray("second"));
    }

    void aSingleSourceMayGetAnotherName()
    {
        const OperationPlaces places;
        making::folder(places.source("old"));
        writeFile(places.source("old/in"), "in");
        OperationRequest request = places.request(OperationKind::Copy, {"old"});
        request.newName = "new";
        runWell(request);
        QCOMPARE(readFile(places.target("new/in")), QByteArray("in"));
        QVERIFY(!isThere(places.target("old")));
    }

    void inheritedAccessListsDoNotStay()
    {
        const OperationPlaces places;
        // User 1 may write whatever is made in the target.
        const unsigned char list[] = {2,   0,   0,   0,   1,   0,   7,  0,   255, 255, 255,
                                      255, 2,   0,   6,   0,   1,   0,  0,   0,   4,   0,
                                      5,   0,   255, 255, 255, 255, 16, 0,   7,   0,   255,
                                      255, 255, 255, 32,  0,   5,   0,  255, 255, 255, 255};
        QCOMPARE(
            setxattr(places.target().constData(), "system.posix_acl_default", list, sizeof list, 0),
            0);
        writeFile(places.source("file"), "secret");
        QCOMPARE(chmod(places.source("file").constData(), 0640), 0);
        const QByteArrayList before = wholeText(places.source("file"));
        runWell(places.request(OperationKind::Copy, {"file"}));
        QCOMPARE(wholeText(places.target("file")), before);
        QCOMPARE(getxattr(places.target("file").constData(), "system.posix_acl_access", nullptr, 0),
                 ssize_t(-1));
    }

private:
    static void addPlaces()
    {
        QTest::addColumn<int>("where");
        QTest::newRow("on one file system") << int(OperationPlaces::Together);
        QTest::newRow("from one to another") << int(OperationPlaces::Apart);
    }

    static OperationRequest deletion(const QByteArrayList& paths)
    {
        OperationRequest request;
        request.kind = OperationKind::Delete;
        request.sources = paths;
        return request;
    }
};

QUARN_TEST_MAIN(tst_Operation)
#include "tst_operation.moc"
