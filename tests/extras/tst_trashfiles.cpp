// What the files of a trash say, and what is read from those of others.

#include "extras/mounts.h"
#include "extras/trashinfo.h"
#include "extras/trashsizes.h"
#include "tests/support/testmain.h"

#include <QDateTime>

class tst_TrashFiles : public QObject
{
    Q_OBJECT

private slots:
    void everyByteOfAPathComesBack()
    {
        QByteArray path("/");
        for (int byte = 1; byte < 256; ++byte)
            path.append(char(byte));
        const QByteArray text = trashInfoText({path, 1000000000});
        QCOMPARE(text.count('\n'), 3);
        for (const char sign : text)
            QVERIFY(sign == '\n' || (sign >= ' ' && sign <= '~'));
        const auto info = parseTrashInfo(text);
        QVERIFY(info);
        QCOMPARE(info->path, path);
        QCOMPARE(info->deleted, qint64(1000000000));
    }

    void theFormIsTheOneOfAllDesktops()
    {
        const qint64 time = QDateTime(QDate(2026, 3, 1), QTime(2, 3, 4)).toSecsSinceEpoch();
        QCOMPARE(trashInfoText({"/home/a b/\xc3\xa4%.txt", time}),
                 QByteArray("[Trash Info]\nPath=/home/a%20b/%C3%A4%25.txt\n"
                            "DeletionDate=2026-03-01T02:03:04\n"));
    }

    void otherLinesAndSecondKeysAreIgnored()
    {
        const auto info =
            parseTrashInfo("[Trash Info]\nMood=fine\nDeletionDate=2026-03-01T02:03:04\n"
                           "Path=a/b\nPath=c\nDeletionDate=2020-01-01T00:00:00\n");
        QVERIFY(info);
        QCOMPARE(info->path, QByteArray("a/b"));
        QCOMPARE(QDateTime::fromSecsSinceEpoch(info->deleted).date(), QDate(2026, 3, 1));
    }

    void aDateThatIsNoneIsNotKnown_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("none") << QByteArray();
        QTest::newRow("empty") << QByteArray("DeletionDate=\n");
        QTest::newRow("words") << QByteArray("DeletionDate=yesterday\n");
        QTest::newRow("no such day") << QByteArray("DeletionDate=2026-02-30T00:00:00\n");
    }
    void aDateThatIsNoneIsNotKnown()
    {
        QFETCH(QByteArray, line);
        const auto info = parseTrashInfo("[Trash Info]\nPath=/a\n" + line);
        QVERIFY(info);
        QCOMPARE(info->path, QByteArray("/a"));
        QCOMPARE(info->deleted, qint64(0));
    }

    void aPartOfASecondIsLeftOut()
    {
        const auto info =
            parseTrashInfo("[Trash Info]\nPath=/a\nDeletionDate=2026-03-01T02:03:04.5Z\n");
        QVERIFY(info);
        QCOMPARE(QDateTime::fromSecsSinceEpoch(info->deleted).time(), QTime(2, 3, 4));
    }

    void aFileIsReadHoweverItIsWritten_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("blanks around the signs")
            << QByteArray("[Trash Info]\nPath = /a%20b\nDeletionDate\t=  2026-03-01T02:03:04\n");
        QTest::newRow("remarks and empty lines")
            << QByteArray("# by hand\n\n[Trash Info]\n#Path=/c\n\nPath=/a%20b\n# Path=/d\n"
                          "DeletionDate=2026-03-01T02:03:04\n");
        QTest::newRow("other keys")
            << QByteArray("[Trash Info]\nPathOf=/c\nPath[de]=/d\nPath=/a%20b\n"
                          "DeletionDate=2026-03-01T02:03:04\nX=1\n");
        QTest::newRow("another group")
            << QByteArray("[Trash Info]\nDeletionDate=2026-03-01T02:03:04\nPath=/a%20b\n"
                          "[Other]\nPath=/c\n");
    }
    void aFileIsReadHoweverItIsWritten()
    {
        QFETCH(QByteArray, text);
        const auto info = parseTrashInfo(text);
        QVERIFY(info);
        QCOMPARE(info->path, QByteArray("/a b"));
        QCOMPARE(QDateTime::fromSecsSinceEpoch(info->deleted).time(), QTime(2, 3, 4));
    }

    void whatTellsNoPathIsNoInfo_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("other group") << QByteArray("[Desktop Entry]\nPath=/a\n");
        QTest::newRow("no path") << QByteArray("[Trash Info]\nDeletionDate=2026-03-01T02:03:04\n");
        QTest::newRow("empty path") << QByteArray("[Trash Info]\nPath=\n");
        QTest::newRow("half a path") << QByteArray("[Trash Info]\nPath=/home/us");
        QTest::newRow("half a path behind a blank") << QByteArray("[Trash Info]\nPath = /home/us");
        QTest::newRow("path of another group")
            << QByteArray("[Trash Info]\n[Other]\nPath=/home/us\n");
        QTest::newRow("half a byte") << QByteArray("[Trash Info]\nPath=/a%2\n");
        QTest::newRow("no digits") << QByteArray("[Trash Info]\nPath=/a%zz\n");
        QTest::newRow("zero") << QByteArray("[Trash Info]\nPath=/a%00b\n");
        QTest::newRow("up") << QByteArray("[Trash Info]\nPath=../a\n");
        QTest::newRow("up within") << QByteArray("[Trash Info]\nPath=/a/%2E./b\n");
    }
    void whatTellsNoPathIsNoInfo()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!parseTrashInfo(text));
    }

    void mountsAreRead()
    {
        const QList<Mount> mounts =
            parseMounts("21 1 8:1 / / rw,relatime shared:1 master:2 - ext4 /dev/sda1 rw\n"
                        "nonsense\n"
                        "35 21 8:2 /sub /mnt/a\\040b\\134c ro,nosuid - vfat /dev/sdb1 rw\n"
                        "36 21 8:3 / /mnt/x rw - btrfs /dev/sdc1 ro,subvol=/\n");
        const QList<Mount> expected{{21, "/", "ext4", false, "8:1"},
                                    {35, "/mnt/a b\\c", "vfat", true, "8:2"},
                                    {36, "/mnt/x", "btrfs", true, "8:3"}};
        QCOMPARE(mounts, expected);
    }

    void noFileOfMountsIsNoMounts() { QVERIFY(readMounts("/none/mountinfo").isEmpty()); }

    void aTrashIsSoughtWhereEntriesAreKept_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<bool>("keeps");
        QTest::addColumn<bool>("isFar");
        for (const char* type :
             {"ext4", "vfat", "exfat", "btrfs", "xfs", "tmpfs", "overlay", "f2fs", "ntfs3"})
            QTest::newRow(type) << QByteArray(type) << true << false;
        for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "9p", "fuse.sshfs", "fuse.rclone",
                                 "fuse", "fuseblk", "fuseblk.exfat"})
            QTest::newRow(type) << QByteArray(type) << true << true;
        for (const char* type : {"proc", "sysfs", "cgroup2", "devtmpfs", "autofs", "squashfs",
                                 "fuse.portal", "fuse.gvfsd-fuse"})
            QTest::newRow(type) << QByteArray(type) << false << QByteArray(type).startsWith("fuse");
    }
    void aTrashIsSoughtWhereEntriesAreKept()
    {
        QFETCH(QByteArray, type);
        QFETCH(bool, keeps);
        QCOMPARE(keepsEntries({1, "/mnt", type, false}), keeps);
        QVERIFY(!keepsEntries({1, "/mnt", type, true}));
        QTEST(isFar({1, "/mnt", type, false}), "isFar");
    }

    void sizesOfFoldersAreRead()
    {
        const TrashedSizes sizes = parseTrashedSizes("4096 1200000000 a%20b\nnonsense\n-1 1 c\n"
                                                     "16384 1300000000 d\n5 x e\n6 7 f%g\n");
        const TrashedSizes expected{{"a b", {4096, 1200000000}}, {"d", {16384, 1300000000}}};
        QCOMPARE(sizes, expected);
        QCOMPARE(parseTrashedSizes(trashedSizesText(sizes)), sizes);
    }
};

QUARN_TEST_MAIN(tst_TrashFiles)
#include "tst_trashfiles.moc"
