#include "platform/zpixmap.h"
#include "tests/platform/selfrun.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QBuffer>
#include <QFile>
#include <QImage>

#include <cstdio>

namespace
{

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QImage plain(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

QByteArray png(QSize size, QColor colour)
{
    return encoded(plain(size, colour), "PNG");
}

/// A pixmap that takes `kilobytes` of the cache.
QPixmap ofSize(int kilobytes)
{
    QPixmap pixmap(16, 16 * kilobytes);
    pixmap.fill(Qt::red);
    return pixmap;
}

bool isKept(const QString& key)
{
    QPixmap found;
    return ZPixmapCache::find(key, found);
}

} // namespace

class tst_ZPixmap : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        ZPixmapCache::clear();
        ZPixmapCache::setCacheLimit(10240);
    }

    void pictureIsLoaded()
    {
        folder_.write("a.png", png({20, 10}, Qt::green));
        QPixmap pixmap;
        QVERIFY(loadPixmap(pixmap, folder_.path("a.png")));
        QCOMPARE(pixmapSize(pixmap), QSize(20, 10));
        QCOMPARE(pixmap.toImage().pixelColor(0, 0), QColor(Qt::green));
        QCOMPARE(pixmapSize(QPixmap()), QSize(0, 0));
    }

    void pictureOfAnotherFormatIsLoadedWhateverItsName()
    {
        folder_.write("bitmap.png", encoded(plain({20, 10}, Qt::green), "BMP"));
        QPixmap pixmap;
        QVERIFY(loadPixmap(pixmap, folder_.path("bitmap.png")));
        QCOMPARE(pixmapSize(pixmap), QSize(20, 10));
    }

    void usualPictureNeedsNoDecoderOfTheSystem()
    {
        folder_.write("usual.png", png({10, 10}, Qt::green));
        const SelfRun loading = SelfRun::with({"--decoders", folder_.path("usual.png")},
                                              {{"QT_QPA_PLATFORM", "offscreen"}});
        QCOMPARE(loading.output, QByteArray("10x10 at 1, 0 decoders"));
    }

    void failedLoadLeavesThePixmap_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"missing.png", "empty.png", "text.png", "cut.png", "folder.png",
                                 "fifo.png", "locked.png", "dangling.png", "huge.png", "bomb.png"})
            QTest::newRow(name) << name;
    }

    void failedLoadLeavesThePixmap()
    {
        QFETCH(QString, name);
        const ScratchFolder folder;
        const QByteArray good = png({300, 300}, Qt::green);
        folder.write("empty.png");
        folder.write("text.png", "this is no picture");
        folder.write("cut.png", good.left(30));
        folder.makeFolder("folder.png");
        folder.makeFifo("fifo.png");
        folder.write("locked.png", good);
        folder.setMode("locked.png", 0);
        folder.makeLink("dangling.png", "nowhere");
        folder.write("huge.png", QByteArray(8 * 1024 * 1024, 'x'));
        if (name == "bomb.png")
            folder.write(name, bomb());
        QPixmap pixmap(3, 3);
        pixmap.fill(Qt::blue);
        QVERIFY(!loadPixmap(pixmap, folder.path(name)));
        QCOMPARE(pixmap.size(), QSize(3, 3));
        QCOMPARE(pixmap.toImage().pixelColor(1, 1), QColor(Qt::blue));
    }

    void emptyPathIsNoPicture()
    {
        QPixmap pixmap(3, 3);
        QVERIFY(!loadPixmap(pixmap, QString()));
        QVERIFY(!pixmap.isNull());
    }

    void densePictureIsPreferredOnADenseScreen_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("scale");
        QTest::addColumn<QByteArray>("output");
        const QStringList all{"x.png", "x@2x.png", "x@3x.png"};
        QTest::newRow("plain screen") << all << "1" << QByteArray("10x10 at 1");
        QTest::newRow("twice") << all << "2" << QByteArray("10x10 at 2");
        QTest::newRow("one and a half") << all << "1.5" << QByteArray("10x10 at 2");
        QTest::newRow("three times") << all << "3" << QByteArray("10x10 at 3");
        QTest::newRow("beyond") << all << "5" << QByteArray("10x10 at 3");
        QTest::newRow("next lower") << all.mid(0, 2) << "3" << QByteArray("10x10 at 2");
        QTest::newRow("none dense") << all.mid(0, 1) << "2" << QByteArray("10x10 at 1");
        QTest::newRow("only dense") << all.mid(1, 1) << "2" << QByteArray("10x10 at 2");
        QTest::newRow("only dense, plain screen") << all.mid(1, 1) << "1" << QByteArray("none");
        QTest::newRow("broken dense")
            << QStringList{"x.png", "broken"} << "2" << QByteArray("10x10 at 1");
    }

    void densePictureIsPreferredOnADenseScreen()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, scale);
        const ScratchFolder folder;
        for (const QString& name : files) {
            const int density = name.contains("@3x") ? 3 : name.contains("@2x") ? 2 : 1;
            if (name == "broken")
                folder.write("x@2x.png", "broken");
            else
                folder.write(name, png(QSize(10, 10) * density, Qt::red));
        }
        QTEST(loadedBy(folder.path("x.png"), scale), "output");
    }

    void dotOfAFolderIsNoExtension()
    {
        const ScratchFolder folder;
        folder.write("a.d/picture", png({10, 10}, Qt::red));
        folder.write("a@2x.d/picture", png({40, 40}, Qt::red));
        QCOMPARE(loadedBy(folder.path("a.d/picture"), "2"), QByteArray("10x10 at 1"));
    }

    void cacheGivesBackWhatItGot()
    {
        QPixmap found;
        QVERIFY(!ZPixmapCache::find("a", found));
        QVERIFY(found.isNull());
        ZPixmapCache::insert("a", ofSize(1));
        QVERIFY(ZPixmapCache::find("a", found));
        QCOMPARE(found.size(), QSize(16, 16));
        ZPixmapCache::insert("a", ofSize(2));
        QVERIFY(ZPixmapCache::find("a", found));
        QCOMPARE(found.size(), QSize(16, 32));
        ZPixmapCache::clear();
        QVERIFY(!isKept("a"));
    }

    void cacheKeepsNullPixmapsToo()
    {
        ZPixmapCache::insert("null", QPixmap());
        QPixmap found(3, 3);
        QVERIFY(ZPixmapCache::find("null", found));
        QVERIFY(found.isNull());
    }

    void lastLimitCounts()
    {
        QCOMPARE(ZPixmapCache::cacheLimit(), 10240);
        ZPixmapCache::setCacheLimit(5120);
        ZPixmapCache::setCacheLimit(4096);
        QCOMPARE(ZPixmapCache::cacheLimit(), 4096);
        ZPixmapCache::setCacheLimit(-1);
        QCOMPARE(ZPixmapCache::cacheLimit(), 0);
        ZPixmapCache::insert("a", ofSize(1));
        QVERIFY(!isKept("a"));
    }

    void leastRecentlyUsedGoesFirst()
    {
        ZPixmapCache::setCacheLimit(100);
        for (const char* key : {"a", "b", "c", "d"})
            ZPixmapCache::insert(key, ofSize(25));
        QVERIFY(isKept("a"));
        ZPixmapCache::insert("e", ofSize(25));
        QVERIFY(isKept("a"));
        QVERIFY(!isKept("b"));
        QVERIFY(isKept("e"));
        ZPixmapCache::setCacheLimit(50);
        QVERIFY(isKept("a") && isKept("e"));
        QVERIFY(!isKept("c") && !isKept("d"));
    }

    void pixmapLargerThanTheCacheIsNotKept()
    {
        ZPixmapCache::setCacheLimit(100);
        ZPixmapCache::insert("small", ofSize(50));
        ZPixmapCache::insert("large", ofSize(101));
        QVERIFY(!isKept("large"));
        ZPixmapCache::insert("all", ofSize(100));
        QVERIFY(isKept("all"));
    }

private:
    /// A small file that would be 256 megabytes of pixels.
    static QByteArray bomb()
    {
        QImage image(8000, 8000, QImage::Format_Mono);
        image.fill(0);
        return encoded(image, "PNG");
    }

    static QByteArray loadedBy(const QString& file, const QString& scale)
    {
        return SelfRun::with({"--load", file},
                             {{"QT_QPA_PLATFORM", "offscreen"}, {"QT_SCALE_FACTOR", scale}})
            .output;
    }

    ScratchFolder folder_;
};

namespace
{

/// Prints the size on the screen and the density of a picture.
int printLoaded(int argc, char** argv)
{
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    QPixmap pixmap;
    if (!loadPixmap(pixmap, QString::fromUtf8(argv[2]))) {
        std::fputs("none", stdout);
        return 0;
    }
    const QSize size = pixmapSize(pixmap);
    std::printf("%dx%d at %g", size.width(), size.height(), pixmap.devicePixelRatio());
    return 0;
}

/// The same, and how many decoders of the toolkit are loaded then.
int printDecoders(int argc, char** argv)
{
    const int status = printLoaded(argc, argv);
    QFile maps(QStringLiteral("/proc/self/maps"));
    const QByteArray lines = maps.open(QIODevice::ReadOnly) ? maps.readAll() : QByteArray();
    std::printf(", %d decoders", lines.isEmpty() ? -1 : int(lines.count("/imageformats/")));
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--decoders") == 0)
        return printDecoders(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--load") == 0)
        return printLoaded(argc, argv);
    return runTest<tst_ZPixmap>(argc, argv);
}

#include "tst_zpixmap.moc"
