// What entries have beside their content, where the target's file system or the system does not
// take it.

#include "extras/journals.h"
#include "extras/metadata.h"
#include "extras/operation.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <array>
#include <cerrno>
#include <linux/capability.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

constexpr const char* Attribute = "user.quarn";

struct NotDone {
    QByteArray path;
    Trouble trouble = Trouble::Missing;
    int error = 0;

    friend bool operator==(const NotDone&, const NotDone&) = default;
};

QList<NotDone> notDone(const Operation& operation)
{
    QList<NotDone> all;
    for (const Failure& failure : operation.failures().first)
        all.append({failure.path, failure.trouble, failure.error});
    return all;
}

void setAttribute(const QByteArray& path)
{
    QCOMPARE(setxattr(path.constData(), Attribute, "kept", 4, 0), 0);
}

QByteArray attributeOf(const QByteArray& path)
{
    std::array<char, 16> value{};
    const ssize_t size = getxattr(path.constData(), Attribute, value.data(), value.size());
    return {value.data(), qsizetype(std::max<ssize_t>(size, 0))};
}

struct stat factsAt(const QByteArray& path)
{
    struct stat info = {};
    lstat(path.constData(), &info);
    return info;
}

/// While it lives, even root may not give files away.
class NoGivingAway
{
public:
    NoGivingAway()
    {
        syscall(SYS_capget, &head_, before_.data());
        auto now = before_;
        now[0].effective &= ~(1U << CAP_CHOWN);
        syscall(SYS_capset, &head_, now.data());
    }
    ~NoGivingAway() { syscall(SYS_capset, &head_, before_.data()); }
    NoGivingAway(const NoGivingAway&) = delete;
    NoGivingAway& operator=(const NoGivingAway&) = delete;

private:
    __user_cap_header_struct head_ = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> before_{};
};

} // namespace

class tst_OperationKept : public QObject
{
    Q_OBJECT

private slots:
    void whatADriveHasNoPlaceForIsToldOnceForAll_data() { addKinds(); }
    void whatADriveHasNoPlaceForIsToldOnceForAll()
    {
        QFETCH(OperationKind, kind);
        const OperationPlaces places(OperationPlaces::Apart);
        make(places);
        writeFile(places.source("bare"), "bare");
        Operation operation(places.request(kind, {"tree", "bare"}));
        {
            CallFaults faults;
            faults.failSetting("user.", EOPNOTSUPP);
            runToEnd(operation);
        }
        QCOMPARE(notDone(operation), QList<NotDone>());
        const bool isMove = kind == OperationKind::Move;
        QCOMPARE(operation.lacks(), isMove ? unsigned(LacksAttributes) : 0U);
        QCOMPARE(operation.outcomes(),
                 (QList<SourceOutcome>{SourceOutcome::NotAllKept, SourceOutcome::Done}));
        for (const char* name : {"a", "b"})
            QCOMPARE(readFile(places.target(QByteArray("tree/") + name)), QByteArray(name));
        QCOMPARE(isThere(places.source("tree")), !isMove);
    }

    void whatIsRefusedIsToldForEachEntry_data()
    {
        QTest::addColumn<OperationKind>("kind");
        QTest::addColumn<int>("error");
        for (const int error : {EPERM, EACCES, EINVAL, ENOSPC, E2BIG}) {
            QTest::addRow("copy, %d", error) << OperationKind::Copy << error;
            QTest::addRow("move, %d", error) << OperationKind::Move << error;
        }
    }
    void whatIsRefusedIsToldForEachEntry()
    {
        QFETCH(OperationKind, kind);
        QFETCH(int, error);
        const OperationPlaces places(OperationPlaces::Apart);
        make(places);
        Operation operation(places.request(kind, {"tree"}));
        {
            CallFaults faults;
            faults.failSetting("user.", error);
            runToEnd(operation);
        }
        const bool isMove = kind == OperationKind::Move;
        QCOMPARE(notDone(operation),
                 (QList<NotDone>{{places.source("tree/a"), Trouble::CannotKeep, error},
                                 {places.source("tree/sub"), Trouble::CannotKeep, error}}));
        QCOMPARE(operation.lacks(), 0U);
        QCOMPARE(operation.outcomes(),
                 QList<SourceOutcome>{isMove ? SourceOutcome::Failed : SourceOutcome::NotAllKept});
        // What cannot be moved whole is not moved; of a copy the rest is better than nothing.
        QCOMPARE(attributeOf(places.source("tree/a")), QByteArray("kept"));
        QCOMPARE(isThere(places.target("tree/a")), !isMove);
        QCOMPARE(isThere(places.source("tree/b")), !isMove);
        QCOMPARE(readFile(places.target("tree/b")), QByteArray("b"));
        QVERIFY(isThere(places.source("tree/sub")));
    }

    /// Labels and powers are the machine's, which gives what is new there those that suit it.
    void whatOnlyTheMachineSetsIsNotMissed_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("isTold");
        QTest::newRow("label") << QByteArray("security.quarn") << EPERM << false;
        QTest::newRow("no labels") << QByteArray("security.quarn") << EOPNOTSUPP << false;
        QTest::newRow("of root") << QByteArray("trusted.quarn") << EPERM << false;
        QTest::newRow("of another system") << QByteArray("system.quarn") << EINVAL << false;
        QTest::newRow("full disk") << QByteArray("security.quarn") << ENOSPC << true;
        QTest::newRow("of a user") << QByteArray("user.quarn") << EPERM << true;
    }
    void whatOnlyTheMachineSetsIsNotMissed()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, error);
        QFETCH(bool, isTold);
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("file"), "file");
        Operation operation(places.request(OperationKind::Move, {"file"}));
        {
            CallFaults faults;
            faults.pretendAttribute(name);
            faults.failSetting(name, error);
            runToEnd(operation);
        }
        QCOMPARE(notDone(operation).size(), qsizetype(isTold));
        QCOMPARE(operation.lacks(), 0U);
        QCOMPARE(isThere(places.source("file")), isTold);
    }

    void ownersAreKeptByWhoMayGiveThem_data()
    {
        QTest::addColumn<bool>("mayGive");
        QTest::newRow("may") << true;
        QTest::newRow("may not") << false;
    }
    void ownersAreKeptByWhoMayGiveThem()
    {
        QFETCH(bool, mayGive);
        constexpr uid_t User = 1234;
        constexpr gid_t Group = 5678;
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("file"), "file");
        const bool isRoot = chown(places.source("file").constData(), User, Group) == 0;
        QCOMPARE(chmod(places.source("file").constData(), 04755), 0);
        Operation operation(places.request(OperationKind::Copy, {"file"}));
        std::optional<NoGivingAway> none;
        if (!mayGive)
            none.emplace();
        runToEnd(operation);
        none.reset();
        // Who may not is not told of that with each file.
        QCOMPARE(notDone(operation), QList<NotDone>());
        QCOMPARE(operation.outcomes(), QList<SourceOutcome>{SourceOutcome::Done});
        const struct stat made = factsAt(places.target("file"));
        const bool isGiven = isRoot && mayGive;
        QCOMPARE(made.st_uid, isGiven ? User : geteuid());
        QCOMPARE(made.st_gid, isGiven ? Group : factsAt(places.target()).st_gid);
        // Powers of another owner are not lent.
        QCOMPARE(made.st_mode & 07777, isGiven || !isRoot ? mode_t(04755) : mode_t(0755));
    }

    void ownersThatADriveDoesNotHoldAreToldOnce()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        QByteArrayList names;
        bool isRoot = false;
        for (const char* name : {"a", "b"}) {
            names.append(name);
            writeFile(places.source(name), name);
            isRoot = chown(places.source(name).constData(), 1234, 5678) == 0;
        }
        Operation operation(places.request(OperationKind::Move, names));
        {
            CallFaults faults;
            faults.failOwning(EPERM);
            runToEnd(operation);
        }
        QCOMPARE(notDone(operation), QList<NotDone>());
        QCOMPARE(operation.lacks(), isRoot ? unsigned(LacksOwner) : 0U);
        QCOMPARE(namesIn(places.target()), names);
        QVERIFY(namesIn(places.source()).isEmpty());
    }

    void permissionsThatCannotBeKeptAreTold_data()
    {
        QTest::addColumn<quint64>("fileSystem");
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("isMoved");
        constexpr quint64 Fat = MSDOS_SUPER_MAGIC;
        constexpr quint64 Plain = EXT4_SUPER_MAGIC;
        QTest::newRow("has none") << Fat << EPERM << true;
        QTest::newRow("has none, and does not say") << Fat << 0 << true;
        QTest::newRow("does not take part") << Plain << EOPNOTSUPP << true;
        QTest::newRow("refused") << Plain << EPERM << false;
        QTest::newRow("broken medium") << Plain << EIO << false;
    }
    void permissionsThatCannotBeKeptAreTold()
    {
        QFETCH(quint64, fileSystem);
        QFETCH(int, error);
        QFETCH(bool, isMoved);
        const OperationPlaces places(OperationPlaces::Apart);
        writeFile(places.source("file"), "file");
        QCOMPARE(chmod(places.source("file").constData(), 0755), 0);
        Operation operation(places.request(OperationKind::Move, {"file"}));
        {
            CallFaults faults;
            faults.pretendKind(fileSystem);
            faults.failPermitting(error);
            runToEnd(operation);
        }
        QCOMPARE(notDone(operation),
                 isMoved ? QList<NotDone>()
                         : (QList<NotDone>{{places.source("file"), Trouble::CannotKeep, error}}));
        QCOMPARE(operation.lacks(), isMoved ? unsigned(LacksRights) : 0U);
        QCOMPARE(isThere(places.source("file")), !isMoved);
        QCOMPARE(isThere(places.target("file")), isMoved);
    }

    void whatCannotComeBackWithAllItHasStaysWhereItIs()
    {
        const OperationPlaces places(OperationPlaces::Apart);
        make(places);
        QByteArray journal;
        {
            Operation operation(places.request(OperationKind::Move, {"tree"}));
            while (operation.step(100) == Operation::State::Surveying) {
            }
            operation.begin();
            journal = operation.journal();
            QCOMPARE(link(journal.constData(), (places.state() + "/kept").constData()), 0);
            runToEnd(operation);
        }
        QCOMPARE(rename((places.state() + "/kept").constData(), journal.constData()), 0);
        const auto back = Operation::takeBack(journal);
        QVERIFY(back != nullptr);
        {
            CallFaults faults;
            faults.failSetting("user.", EPERM);
            runToEnd(*back);
        }
        QVERIFY(
            notDone(*back).contains(NotDone{places.target("tree/a"), Trouble::CannotKeep, EPERM}));
        QVERIFY(notDone(*back).contains(
            NotDone{places.target("tree/sub"), Trouble::CannotKeep, EPERM}));
        QCOMPARE(attributeOf(places.target("tree/a")), QByteArray("kept"));
        QCOMPARE(attributeOf(places.target("tree/sub")), QByteArray("kept"));
        QCOMPARE(readFile(places.source("tree/b")), QByteArray("b"));
    }

private:
    static void addKinds()
    {
        QTest::addColumn<OperationKind>("kind");
        QTest::newRow("copy") << OperationKind::Copy;
        QTest::newRow("move") << OperationKind::Move;
    }

    /// A file and a folder with an attribute, and a file without.
    static void make(const OperationPlaces& places)
    {
        making::folder(places.source("tree"));
        writeFile(places.source("tree/a"), "a");
        setAttribute(places.source("tree/a"));
        writeFile(places.source("tree/b"), "b");
        making::folder(places.source("tree/sub"));
        setAttribute(places.source("tree/sub"));
        ageAll(places.source());
    }
};

QUARN_TEST_MAIN(tst_OperationKept)
#include "tst_operationkept.moc"
