// What copies need on file systems of all kinds, and what these can hold.

#include "extras/mounts.h"
#include "extras/operation.h"
#include "extras/targetlimits.h"
#include "files/filehandle.h"
#include "tests/extras/callfaults.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <fcntl.h>
#include <linux/magic.h>
#include <unistd.h>

namespace
{

constexpr quint64 Exfat = 0x2011bab0;
constexpr qint64 Cluster = 32L * 1024;

/// What a copy of entries is found to need and to write.
SurveyResult surveyed(const OperationPlaces& places, const QByteArrayList& names,
                      OperationKind kind = OperationKind::Copy)
{
    Operation operation(places.request(kind, names));
    while (operation.step(1000) == Operation::State::Surveying) {
    }
    return operation.survey();
}

} // namespace

class tst_TargetRoom : public QObject
{
    Q_OBJECT

private slots:
    void smallFilesTakeWholeClusters()
    {
        const OperationPlaces places;
        making::folder(places.source("tree"));
        making::folder(places.source("tree/sub"));
        for (int i = 0; i < 20; ++i)
            writeFile(places.source("tree/sub/" + QByteArray::number(i)), QByteArray(100, 'x'));
        writeFile(places.source("tree/empty"), {});
        writeFile(places.source("tree/two"), QByteArray(Cluster + 1, 'x'));
        constexpr int Clusters = 2 + 20 + 2;
        CallFaults faults;
        faults.pretendKind(MSDOS_SUPER_MAGIC);
        faults.pretendRoom(Cluster, Clusters);
        const SurveyResult enough = surveyed(places, {"tree"});
        QCOMPARE(enough.bytes, 20 * 100 + Cluster + 1);
        QCOMPARE(enough.neededBytes, Clusters * Cluster);
        QCOMPARE(enough.freeBytes, Clusters * Cluster);
        QVERIFY(enough.isPlain());
        faults.pretendRoom(Cluster, Clusters - 1);
        QVERIFY(!surveyed(places, {"tree"}).hasRoom);
        // What is there already takes nothing more.
        making::folder(places.target("tree"));
        QVERIFY(surveyed(places, {"tree"}).hasRoom);
    }

    void holesAreFilledWhereThereCanBeNone_data()
    {
        QTest::addColumn<quint64>("kind");
        QTest::addColumn<bool>("isFilled");
        QTest::newRow("FAT") << quint64(MSDOS_SUPER_MAGIC) << true;
        QTest::newRow("exFAT") << Exfat << true;
        QTest::newRow("ext4") << quint64(EXT4_SUPER_MAGIC) << false;
    }
    void holesAreFilledWhereThereCanBeNone()
    {
        QFETCH(quint64, kind);
        QFETCH(bool, isFilled);
        constexpr qint64 Size = qint64(64) * 1024 * 1024;
        const OperationPlaces places;
        writeFile(places.source("holes"), "begin");
        QCOMPARE(truncate(places.source("holes").constData(), Size), 0);
        CallFaults faults;
        faults.pretendKind(kind);
        faults.pretendRoom(Cluster, 8);
        const SurveyResult survey = surveyed(places, {"holes"});
        QCOMPARE(survey.hasRoom, !isFilled);
        QCOMPARE(survey.neededBytes, isFilled ? Size : Cluster);
    }

    void aFileIsWrittenForEachNameWhereItCanHaveOneOnly_data()
    {
        QTest::addColumn<quint64>("kind");
        QTest::addColumn<int>("times");
        QTest::newRow("FAT") << quint64(MSDOS_SUPER_MAGIC) << 3;
        QTest::newRow("ext4") << quint64(EXT4_SUPER_MAGIC) << 1;
    }
    void aFileIsWrittenForEachNameWhereItCanHaveOneOnly()
    {
        QFETCH(quint64, kind);
        QFETCH(int, times);
        const OperationPlaces places;
        writeFile(places.source("a"), QByteArray(Cluster, 'a'));
        for (const char* name : {"b", "c"})
            QCOMPARE(link(places.source("a").constData(), places.source(name).constData()), 0);
        CallFaults faults;
        faults.pretendKind(kind);
        faults.pretendRoom(Cluster, 8);
        const SurveyResult survey = surveyed(places, {"a", "b", "c"});
        QCOMPARE(survey.bytes, times * Cluster);
        QCOMPARE(survey.neededBytes, times * Cluster);
    }

    /// A server tells how much it takes at once.
    void whatAServerTakesAtOnceIsNoCluster_data()
    {
        QTest::addColumn<quint64>("kind");
        QTest::addColumn<bool>("isCluster");
        QTest::newRow("a server") << quint64(NFS_SUPER_MAGIC) << false;
        QTest::newRow("exFAT") << Exfat << true;
    }
    void whatAServerTakesAtOnceIsNoCluster()
    {
        QFETCH(quint64, kind);
        QFETCH(bool, isCluster);
        constexpr qint64 Large = qint64(1024) * 1024;
        const OperationPlaces places;
        writeFile(places.source("small"), QByteArray(100, 'x'));
        CallFaults faults;
        faults.pretendKind(kind);
        faults.pretendRoom(Large, 8);
        QCOMPARE(surveyed(places, {"small"}).neededBytes, isCluster ? Large : 100);
    }

    void whatIsOnlyRenamedNeedsNoRoom()
    {
        const OperationPlaces places;
        writeFile(places.source("a"), "a");
        CallFaults faults;
        faults.pretendRoom(Cluster, 0);
        QVERIFY(surveyed(places, {"a"}, OperationKind::Move).hasRoom);
    }

    void aProgramsFileSystemHasAName_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("notes");
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("the kernel's own")
            << QByteArray("ext4") << QByteArray() << QByteArray("ext4");
        QTest::newRow("named, a disk")
            << QByteArray("fuseblk.exfat") << QByteArray() << QByteArray("exfat");
        QTest::newRow("named, no disk")
            << QByteArray("fuse.sshfs") << QByteArray() << QByteArray("sshfs");
        QTest::newRow("noted by the system")
            << QByteArray("fuseblk") << QByteArray("I:1\nE:ID_FS_TYPE=ntfs\nE:ID_FS_USAGE=x\n")
            << QByteArray("ntfs");
        QTest::newRow("noted without a kind")
            << QByteArray("fuseblk") << QByteArray("E:ID_FS_USAGE=x\n") << QByteArray();
        QTest::newRow("not noted") << QByteArray("fuseblk") << QByteArray() << QByteArray();
        QTest::newRow("nameless") << QByteArray("fuse") << QByteArray() << QByteArray();
    }
    void aProgramsFileSystemHasAName()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, notes);
        const OwnFolder devices(usualPlace());
        if (!notes.isEmpty())
            writeFile(devices.path("b8:17"), notes);
        const QList<Mount> mounts =
            parseMounts("36 25 8:17 / /media/card rw - " + type + " /dev/sdb1 rw\n");
        QCOMPARE(mounts.size(), qsizetype(1));
        QTEST(fileSystemName(mounts.first(), devices.path()), "name");
    }

    void whatAProgramProvidesHasTheLimitsOfItsKind()
    {
        const TargetLimits exfat = TargetLimits::ofProgram("exfat", 255);
        QVERIFY(exfat.ignoresCase && !exfat.keepsHoles && !exfat.keepsLinks && exfat.hasClusters);
        QVERIFY(!exfat.takesName("a:b") && exfat.takesName(QByteArray("\xd0\xbf").repeated(255)));
        QVERIFY(exfat.mostFileBytes > (qint64(1) << 40));
        const TargetLimits fat = TargetLimits::ofProgram("vfat", 255);
        QCOMPARE(fat.mostFileBytes, (qint64(1) << 32) - 1);
        // Whether it takes names that other systems cannot have was said when it was mounted.
        const TargetLimits ntfs = TargetLimits::ofProgram("ntfs", 255);
        QVERIFY(ntfs.takesName("a:b") && !ntfs.takesName("\xff") && !ntfs.ignoresCase);
        QVERIFY(ntfs.keepsHoles && ntfs.keepsLinks);
        const TargetLimits other = TargetLimits::ofProgram("sshfs", 255);
        QVERIFY(other.takesName("a:b\xff") && other.keepsHoles && other.keepsLinks);
    }

    /// The mount that a folder is on is found, whatever it is.
    void theFileSystemOfAnOpenFolderHasAName()
    {
        const FileHandle folder(open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        QCOMPARE(fileSystemName(folder.get()), QByteArray("proc"));
    }
};

QTEST_GUILESS_MAIN(tst_TargetRoom)
#include "tst_targetroom.moc"
