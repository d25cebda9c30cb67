#include "files/paths.h"
#include "tests/support/testmain.h"

class tst_Paths : public QObject
{
    Q_OBJECT

private slots:
    void pathIsCutBehindItsLastSlash_data();
    void pathIsCutBehindItsLastSlash();
};

void tst_Paths::pathIsCutBehindItsLastSlash_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("name");
    QTest::newRow("file") << "/a/b.txt"
                          << "/a/"
                          << "b.txt";
    QTest::newRow("in the root") << "/b.txt"
                                 << "/"
                                 << "b.txt";
    QTest::newRow("root") << "/"
                          << "/"
                          << "";
    QTest::newRow("slash at the end") << "/a/b/"
                                      << "/a/b/"
                                      << "";
    QTest::newRow("double slash") << "/a//b"
                                  << "/a//"
                                  << "b";
    QTest::newRow("relative") << "a/b"
                              << "a/"
                              << "b";
    QTest::newRow("no slash") << "b.txt"
                              << ""
                              << "";
    QTest::newRow("empty") << ""
                           << ""
                           << "";
    QTest::newRow("null") << QString() << ""
                          << "";
    QTest::newRow("dots") << "/a/../.."
                          << "/a/../"
                          << "..";
    QTest::newRow("beyond Latin-1") << "/Папка/😀"
                                    << "/Папка/"
                                    << "😀";
}

void tst_Paths::pathIsCutBehindItsLastSlash()
{
    QFETCH(QString, path);
    QTEST(folderPart(path), "folder");
    QTEST(namePart(path), "name");
}

QUARN_TEST_MAIN(tst_Paths)
#include "tst_paths.moc"
