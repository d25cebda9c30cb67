#include "files/regularfile.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <cerrno>

class tst_RegularRead : public QObject
{
    Q_OBJECT

private slots:
    void aFileIsReadUpToALimit()
    {
        const ScratchFolder folder;
        folder.write("file", "0123456789");
        folder.write("empty", "");
        QCOMPARE(readRegular(folder.path("file"), 100).value_or("none"), QByteArray("0123456789"));
        QCOMPARE(readRegular(folder.path("file"), 4).value_or("none"), QByteArray("0123"));
        const auto empty = readRegular(folder.path("empty"), 4);
        QVERIFY(empty && empty->isEmpty() && !empty->isNull());
    }

    void whatIsNoFileSaysWhy_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("error");
        QTest::newRow("missing") << "missing" << ENOENT;
        QTest::newRow("folder") << "folder" << EISDIR;
        QTest::newRow("FIFO") << "fifo" << ENXIO;
        QTest::newRow("a link that leads nowhere") << "nowhere" << ENOENT;
        QTest::newRow("no path") << QString(QChar(0xd800)) << ENOENT;
    }

    void whatIsNoFileSaysWhy()
    {
        QFETCH(QString, name);
        const ScratchFolder folder;
        folder.makeFolder("folder");
        folder.makeFifo("fifo");
        folder.makeLink("nowhere", "gone");
        const FileHandle file = openRegular(folder.path() + QLatin1Char('/') + name);
        const int error = errno;
        QVERIFY(!file.isOpen());
        QTEST(error, "error");
        QVERIFY(!readRegular(folder.path() + QLatin1Char('/') + name, 100));
    }

    void aDeviceOwnsItsDescriptor()
    {
        const ScratchFolder folder;
        folder.write("file", "content");
        int descriptor = -1;
        {
            QFile device;
            QVERIFY(openRegular(device, folder.path("file")));
            QCOMPARE(device.size(), 7);
            QCOMPARE(device.readAll(), QByteArray("content"));
            descriptor = device.handle();
            QVERIFY(!openRegular(device, folder.path("missing")));
        }
        QCOMPARE(::lseek(descriptor, 0, SEEK_CUR), off_t(-1));
    }
};

QUARN_TEST_MAIN(tst_RegularRead)
#include "tst_regularread.moc"
