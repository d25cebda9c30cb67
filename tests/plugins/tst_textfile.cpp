#include "plugins/textview/textfile.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

/// Reading a file where it is asked for.
class tst_TextFile : public QObject
{
    Q_OBJECT

private slots:
    void partsAreRead();
    void whatIsNoReadableFileIsRefused_data();
    void whatIsNoReadableFileIsRefused();
    void fileMayGrowAndShrink();
    void fileMayLoseItsName();
    void filesOfTheKernelHaveContent();
    void theEndOfAHugeFileIsReadAtOnce();
};

void tst_TextFile::partsAreRead()
{
    const ScratchFolder folder;
    folder.write("a", "0123456789");
    TextFile file;
    QString problem;
    QVERIFY(file.open(folder.path("a"), problem));
    QCOMPARE(file.end(), 10);
    QCOMPARE(file.read(0, 3), QByteArray("012"));
    QCOMPARE(file.read(8, 100), QByteArray("89"));
    QCOMPARE(file.read(10, 1), QByteArray());
}

void tst_TextFile::whatIsNoReadableFileIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("problem");
    QTest::newRow("missing") << "missing"
                             << "There is no such file.";
    QTest::newRow("below a file") << "file/a"
                                  << "There is no such file.";
    QTest::newRow("folder") << "folder"
                            << "This is a folder.";
    QTest::newRow("FIFO") << "fifo"
                          << "This is not a regular file.";
    QTest::newRow("device") << "device"
                            << "This is not a regular file.";
    QTest::newRow("unreadable") << "unreadable"
                                << "You may not read this file.";
}

void tst_TextFile::whatIsNoReadableFileIsRefused()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write("file", "x");
    folder.makeFolder("folder");
    folder.makeFifo("fifo");
    folder.makeLink("device", "/dev/zero");
    folder.write("unreadable", "x");
    folder.setMode("unreadable", 0);
    TextFile file;
    QString problem;
    QVERIFY(!file.open(folder.path(name), problem));
    QTEST(problem, "problem");
    QCOMPARE(file.end(), 0);
    QVERIFY(!TextFile().open(QString(), problem));
    QCOMPARE(problem, QString("No file was given."));
}

void tst_TextFile::fileMayGrowAndShrink()
{
    const ScratchFolder folder;
    folder.write("a", "first");
    TextFile file;
    QString problem;
    QVERIFY(file.open(folder.path("a"), problem));
    folder.write("a", "first and second");
    QCOMPARE(file.end(), 16);
    QCOMPARE(file.read(10, 10), QByteArray("second"));
    folder.write("a", "f");
    QCOMPARE(file.end(), 1);
    QCOMPARE(file.read(10, 10), QByteArray());
}

void tst_TextFile::fileMayLoseItsName()
{
    const ScratchFolder folder;
    folder.write("a", "content");
    TextFile file;
    QString problem;
    QVERIFY(file.open(folder.path("a"), problem));
    QVERIFY(QFile::remove(folder.path("a")));
    QCOMPARE(file.read(0, 100), QByteArray("content"));
}

void tst_TextFile::filesOfTheKernelHaveContent()
{
    TextFile file;
    QString problem;
    QVERIFY(file.open("/proc/self/status", problem));
    QVERIFY(file.end() > 0);
    QVERIFY(file.read(0, file.end()).contains("\nPid:"));
    QCOMPARE(file.read(1, 3), QByteArray("ame"));
}

void tst_TextFile::theEndOfAHugeFileIsReadAtOnce()
{
    constexpr qint64 Bytes = 4LL * 1024 * 1024 * 1024 + 5;
    const ScratchFolder folder;
    folder.writeSparse("a", Bytes);
    TextFile file;
    QString problem;
    QVERIFY(file.open(folder.path("a"), problem));
    QCOMPARE(file.end(), Bytes);
    QCOMPARE(file.read(Bytes - 5, 100), QByteArray(5, '\0'));
}

QUARN_TEST_MAIN(tst_TextFile)
#include "tst_textfile.moc"
