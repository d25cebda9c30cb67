#include "platform/zpicture.h"
#include "platform/zpixmap.h"
#include "tests/platform/selfrun.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFile>

#include <cstdio>

namespace
{

/// The smallest picture of a format whose decoder the toolkit loads when it needs it.
const QByteArray Gif = QByteArray::fromBase64("R0lGODlhAQABAIAAAP8AAP///ywAAAAAAQABAAACAkQBADs=");

bool isPlain(const ZPicture& picture, const QColor& colour)
{
    const QImage image = picture.pixmap().toImage();
    return !image.isNull() && isPlain(image, image.rect(), colour);
}

} // namespace

class tst_ZPicture : public QObject
{
    Q_OBJECT

private slots:
    void newPictureIsNull()
    {
        QVERIFY(ZPicture().pixmap().isNull());
        QVERIFY(ZPicture(QPixmap()).pixmap().isNull());
    }

    void pictureIsThatOfTheFile()
    {
        folder_.write("a.png", plainPng(20, 10, Qt::green));
        const auto picture = ZPicture::fromFile(folder_.path("a.png"));
        QCOMPARE(pixmapSize(picture.pixmap()), QSize(20, 10));
        QVERIFY(isPlain(picture, Qt::green));
    }

    void whatIsNoPictureIsNull()
    {
        folder_.write("text.png", "this is no picture");
        folder_.makeFolder("folder.png");
        for (const char* name : {"missing.png", "text.png", "folder.png"})
            QVERIFY2(ZPicture::fromFile(folder_.path(name)).pixmap().isNull(), name);
    }

    void laterChangesOfTheFileDoNotMatter()
    {
        folder_.write("changing.png", plainPng(4, 4, Qt::green));
        const auto changed = ZPicture::fromFile(folder_.path("changing.png"));
        folder_.write("changing.png", plainPng(4, 4, Qt::red));
        QVERIFY(isPlain(changed, Qt::green));
        const auto deleted = ZPicture::fromFile(folder_.path("changing.png"));
        QVERIFY(QFile::remove(folder_.path("changing.png")));
        QVERIFY(isPlain(deleted, Qt::red));
    }

    void coverTakesThePlaceUnlessItIsNoPicture()
    {
        folder_.write("red.png", plainPng(4, 4, Qt::red));
        folder_.write("text.png", "this is no picture");
        QPixmap green(4, 4);
        green.fill(Qt::green);
        ZPicture picture(green);
        picture.cover(ZPicture::fromFile(folder_.path("missing.png")));
        QVERIFY(isPlain(picture, Qt::green));
        picture.cover(ZPicture::fromFile(folder_.path("text.png")));
        QVERIFY(isPlain(picture, Qt::green));
        picture.cover(ZPicture::fromFile(folder_.path("red.png")));
        QVERIFY(isPlain(picture, Qt::red));
    }

    void coveringChangesNoCopy()
    {
        folder_.write("red.png", plainPng(4, 4, Qt::red));
        folder_.write("blue.png", plainPng(4, 4, Qt::blue));
        auto picture = ZPicture::fromFile(folder_.path("red.png"));
        const ZPicture copy = picture;
        picture.cover(ZPicture::fromFile(folder_.path("blue.png")));
        QVERIFY(isPlain(picture, Qt::blue));
        QVERIFY(isPlain(copy, Qt::red));
    }

    void picturesOfALongSeriesKeepTheLastThatIsOne()
    {
        folder_.write("red.png", plainPng(4, 4, Qt::red));
        folder_.write("text.png", "this is no picture");
        auto picture = ZPicture::fromFile(folder_.path("red.png"));
        const auto none = ZPicture::fromFile(folder_.path("text.png"));
        for (int i = 0; i < 100000; ++i)
            picture.cover(none);
        QVERIFY(isPlain(picture, Qt::red));
    }

    void variantForADenseScreenIsPreferred_data()
    {
        QTest::addColumn<QString>("scale");
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("plain screen") << "1" << QByteArray("10x10 at 1");
        QTest::newRow("twice") << "2" << QByteArray("10x10 at 2");
        QTest::newRow("three times, and that variant broken") << "3" << QByteArray("10x10 at 2");
    }

    void variantForADenseScreenIsPreferred()
    {
        QFETCH(QString, scale);
        folder_.write("x.png", plainPng(10, 10, Qt::red));
        folder_.write("x@2x.png", plainPng(20, 20, Qt::red));
        folder_.write("x@3x.png", "broken");
        QTEST(answerFor("x.png", scale).split(',').first(), "output");
    }

    void fileIsNotDecodedBeforeThePictureIsAskedFor()
    {
        folder_.write("moving.gif", Gif);
        QCOMPARE(answerFor("moving.gif", "1"), QByteArray("1x1 at 1, decoders before: no"));
    }

private:
    QByteArray answerFor(const QString& name, const QString& scale) const
    {
        return SelfRun::with({"--load", folder_.path(name)},
                             {{"QT_QPA_PLATFORM", "offscreen"}, {"QT_SCALE_FACTOR", scale}})
            .output;
    }

    ScratchFolder folder_;
};

namespace
{

/// Prints the size and the density of a picture, and whether decoders were loaded before it was
/// asked for.
int printLoaded(int argc, char** argv)
{
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    const auto picture = ZPicture::fromFile(QString::fromUtf8(argv[2]));
    QFile maps(QStringLiteral("/proc/self/maps"));
    const QByteArray before = maps.open(QIODevice::ReadOnly) ? maps.readAll() : QByteArray();
    const QPixmap pixmap = picture.pixmap();
    const QSize size = pixmapSize(pixmap);
    std::printf("%dx%d at %g, decoders before: %s", size.width(), size.height(),
                pixmap.devicePixelRatio(),
                before.isEmpty()                    ? "unknown"
                : before.contains("/imageformats/") ? "yes"
                                                    : "no");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--load") == 0)
        return printLoaded(argc, argv);
    return runTest<tst_ZPicture>(argc, argv);
}

#include "tst_zpicture.moc"
