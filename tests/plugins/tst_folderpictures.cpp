#include "plugins/picview/folderpictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

/// A picture's neighbours in its folder.
class tst_FolderPictures : public QObject
{
    Q_OBJECT

private slots:
    void picturesAreInTheOrderOfTheirBytes();
    void onlyPicturesCount();
    void theFileItselfCountsWhateverItsName();
    void onePictureHasNoNeighbour();
    void missingFileStandsAlone_data();
    void missingFileStandsAlone();
    void relativePathsAreThoseOfTheWorkingFolder();

private:
    static QStringList names(FolderPictures pictures);
};

/// From the given one on, once round.
QStringList tst_FolderPictures::names(FolderPictures pictures)
{
    QStringList result;
    const int start = pictures.position();
    do {
        result.append(pictures.name());
    } while (pictures.move(1) && pictures.position() != start);
    return result;
}

void tst_FolderPictures::picturesAreInTheOrderOfTheirBytes()
{
    const ScratchFolder folder;
    for (const char* name :
         {"b.png", "a.jpg", "B.png", "10.png", "9.png", "\xc3\xa4.png", ".h.png"})
        folder.write(QString::fromUtf8(name));
    FolderPictures pictures(folder.path("b.png"));
    QCOMPARE(pictures.count(), 7);
    QCOMPARE(pictures.position(), 5);
    QCOMPARE(pictures.path(), folder.path("b.png"));
    QCOMPARE(names(pictures),
             QString::fromUtf8("b.png|\xc3\xa4.png|.h.png|10.png|9.png|B.png|a.jpg").split('|'));
    QVERIFY(pictures.move(-1));
    QCOMPARE(pictures.name(), QString("a.jpg"));
    QVERIFY(pictures.move(-5));
    QCOMPARE(pictures.name(), QString::fromUtf8("\xc3\xa4.png"));
    QVERIFY(pictures.move(1));
    QCOMPARE(pictures.path(), folder.path(".h.png"));
}

void tst_FolderPictures::onlyPicturesCount()
{
    const ScratchFolder folder;
    for (const char* name : {"a.png", "b.PNG", "c.txt", "png", "d.jpe", "e.png.bak", "g.gif"})
        folder.write(name);
    folder.makeFolder("folder.png");
    folder.makeFifo("fifo.png");
    folder.makeLink("link.png", "a.png");
    folder.makeLink("dead.png", "nothing");
    QCOMPARE(names(FolderPictures(folder.path("a.png"))),
             (QStringList{"a.png", "b.PNG", "d.jpe", "g.gif", "link.png"}));
}

void tst_FolderPictures::theFileItselfCountsWhateverItsName()
{
    const ScratchFolder folder;
    for (const char* name : {"a.png", "b", "c.png"})
        folder.write(name);
    QCOMPARE(names(FolderPictures(folder.path("b"))), (QStringList{"b", "c.png", "a.png"}));
}

void tst_FolderPictures::onePictureHasNoNeighbour()
{
    const ScratchFolder folder;
    folder.write("a.png");
    FolderPictures pictures(folder.path("a.png"));
    QVERIFY(!pictures.move(1));
    QVERIFY(!pictures.move(-1));
    QCOMPARE(pictures.position(), 0);
}

void tst_FolderPictures::missingFileStandsAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("missing") << "x.png" << QStringList{"x.png", "a.png"};
    QTest::newRow("folder missing") << "x/x.png" << QStringList{"x.png"};
}

void tst_FolderPictures::missingFileStandsAlone()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    folder.write("a.png");
    const FolderPictures pictures(folder.path(name));
    QCOMPARE(pictures.path(), folder.path(name));
    QTEST(names(pictures), "expected");
}

void tst_FolderPictures::relativePathsAreThoseOfTheWorkingFolder()
{
    const ScratchFolder folder;
    folder.write("a.png");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const FolderPictures pictures("a.png");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(pictures.path(), folder.path("a.png"));
}

QUARN_TEST_MAIN(tst_FolderPictures)
#include "tst_folderpictures.moc"
