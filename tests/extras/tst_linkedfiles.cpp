#include "extras/linkedfiles.h"
#include "tests/support/testmain.h"

#include <sys/stat.h>

namespace
{

struct stat fileOf(ino_t number, nlink_t names)
{
    struct stat info = {};
    info.st_dev = 7;
    info.st_ino = number;
    info.st_mode = S_IFREG | 0644;
    info.st_nlink = names;
    info.st_size = 100;
    info.st_mtim = {1300000000, 5};
    return info;
}

LinkedFiles::Place placeOf(const QByteArray& to)
{
    return {to, "work", "temporary", 3, {}};
}

QByteArray found(const LinkedFiles& files, const struct stat& source)
{
    const LinkedFiles::Place* place = files.find(source);
    return place == nullptr ? QByteArray() : place->to;
}

} // namespace

class tst_LinkedFiles : public QObject
{
    Q_OBJECT

private slots:
    void aFileIsFoundUntilAllItsNamesAreMade()
    {
        LinkedFiles files;
        const struct stat source = fileOf(1, 3);
        QCOMPARE(found(files, source), QByteArray());
        files.add(source, placeOf("a"));
        QCOMPARE(found(files, source), QByteArray("a"));
        QCOMPARE(found(files, fileOf(2, 3)), QByteArray());
        files.add(source, placeOf("b"));
        QCOMPARE(found(files, source), QByteArray("b"));
        files.add(source, placeOf("c"));
        QCOMPARE(found(files, source), QByteArray());
        QCOMPARE(files.count(), 0);
    }

    /// When it is moved, its names go one after another.
    void theLastNameOfAFileThatIsMovedIsFound()
    {
        LinkedFiles files;
        files.add(fileOf(1, 2), placeOf("a"));
        QCOMPARE(found(files, fileOf(1, 1)), QByteArray("a"));
        files.add(fileOf(1, 1), placeOf("b"));
        QCOMPARE(files.count(), 0);
    }

    void whatHasOneNameOnlyIsNotKept()
    {
        LinkedFiles files;
        files.add(fileOf(1, 1), placeOf("a"));
        struct stat folder = fileOf(2, 2);
        folder.st_mode = S_IFDIR | 0755;
        files.add(folder, placeOf("b"));
        QCOMPARE(files.count(), 0);
    }

    /// Their other names are elsewhere, as in backups that share what did not change.
    void onlyWhatIsExpectedIsKept()
    {
        LinkedFiles files;
        InodeSet expected;
        expected.insert({7, 2});
        files.expect(expected);
        for (ino_t number = 1; number <= 100; ++number)
            files.add(fileOf(number, 2), placeOf("a"));
        QCOMPARE(files.count(), 1);
        QCOMPARE(found(files, fileOf(2, 2)), QByteArray("a"));
    }

    void anotherFileWithItsNumberIsNotIt_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("nanoseconds");
        QTest::addColumn<int>("device");
        QTest::newRow("longer") << 101 << 5 << 7;
        QTest::newRow("later") << 100 << 6 << 7;
        QTest::newRow("elsewhere") << 100 << 5 << 8;
    }
    void anotherFileWithItsNumberIsNotIt()
    {
        QFETCH(int, bytes);
        QFETCH(int, nanoseconds);
        QFETCH(int, device);
        LinkedFiles files;
        files.add(fileOf(1, 2), placeOf("a"));
        struct stat other = fileOf(1, 2);
        other.st_size = bytes;
        other.st_mtim.tv_nsec = nanoseconds;
        other.st_dev = dev_t(device);
        QCOMPARE(found(files, other), QByteArray());
    }
};

QUARN_TEST_MAIN(tst_LinkedFiles)
#include "tst_linkedfiles.moc"
