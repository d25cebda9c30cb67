#include "tests/support/contrast.h"
#include "tests/support/testmain.h"

#include <QColor>
#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{

/// What pictures lie on: rows, the highlighted row, both of them in the dark, bars and titles.
const QColor Grounds[] = {QColor("#ffffff"), QColor("#ffe6d6"), QColor("#101114"),
                          QColor("#3a2417"), QColor("#000000")};

QImage staged(const QString& name, int density = 1)
{
    const QString suffix = density == 1 ? QString() : QString("@%1x").arg(density);
    return QImage(QStringLiteral(QUARN_STAGE_DIR "/") + name + suffix + ".png")
        .convertToFormat(QImage::Format_ARGB32);
}

/// The pictures beside texts, without their endings. Frames of the animation cover each other and
/// the logo lies where it is told, so both have no margin.
QStringList icons()
{
    QStringList names;
    const QDir art(QStringLiteral(QUARN_DATA_DIR "/art"));
    QDirIterator files(art.path(), {"*.svg"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString name = art.relativeFilePath(files.next()).chopped(4);
        if (name != "fm")
            names.append(name);
    }
    names.sort();
    return names;
}

/// Rows of the table `icons` for tests of one picture each.
void addIcons()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : icons())
        QTest::newRow(qPrintable(name)) << name;
}

/// What the program has one picture each of in rows of one line.
QStringList kinds()
{
    return icons().filter(QRegularExpression("^res/img/(browser|mime)/0/"));
}

bool isInk(const QImage& picture, int x, int y)
{
    return picture.valid(x, y) && qAlpha(picture.pixel(x, y)) > 200;
}

bool isGround(const QImage& picture, int x, int y)
{
    return !picture.valid(x, y) || qAlpha(picture.pixel(x, y)) < 50;
}

/// The pixels where a shape ends: inked ones beside, above or below what is left free.
QList<QPoint> rim(const QImage& picture)
{
    QList<QPoint> points;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const bool ends = isGround(picture, x - 1, y) || isGround(picture, x + 1, y) ||
                              isGround(picture, x, y - 1) || isGround(picture, x, y + 1);
            if (ends && isInk(picture, x, y))
                points.append({x, y});
        }
    }
    return points;
}

QRect inked(const QImage& picture)
{
    QRect bounds;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qAlpha(picture.pixel(x, y)) > 0)
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

/// How light a pixel looks on white, from 0 to 255.
int lightness(QRgb pixel)
{
    return (qGray(pixel) * qAlpha(pixel) + 255 * (255 - qAlpha(pixel))) / 255;
}

/// The share of the place of both pictures, in percent, where one is clearly lighter.
int difference(const QImage& one, const QImage& other)
{
    int different = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (std::abs(lightness(one.pixel(x, y)) - lightness(other.pixel(x, y))) > 40)
                ++different;
        }
    }
    return 100 * different / (14 * 14);
}

} // namespace

/// The pictures that are installed.
class tst_InstalledPictures : public QObject
{
    Q_OBJECT

private slots:
    void picturesKeepAMargin_data() { addIcons(); }
    void picturesKeepAMargin();
    void picturesAreThereForDenseScreens_data() { addIcons(); }
    void picturesAreThereForDenseScreens();
    void shapesStandOutOnEveryGround_data() { addIcons(); }
    void shapesStandOutOnEveryGround();
    void kindsAreToldWithoutColours();
    void linksAreToldFromWhatTheyLeadTo_data();
    void linksAreToldFromWhatTheyLeadTo();
    void framesOfTheAnimationCoverEachOther();
};

void tst_InstalledPictures::picturesKeepAMargin()
{
    QFETCH(QString, name);
    const QImage picture = staged(name);
    QVERIFY(!picture.isNull());
    const int margin = picture.width() == 32 ? 2 : 1;
    const QRect place = picture.rect().adjusted(margin, margin, -margin, -margin);
    const QRect bounds = inked(picture);
    QVERIFY(!bounds.isEmpty());
    QCOMPARE(bounds & place, bounds);
}

void tst_InstalledPictures::picturesAreThereForDenseScreens()
{
    QFETCH(QString, name);
    const QSize size = staged(name).size();
    const bool isKind = name.contains("/browser/") || name.contains("/mime/");
    if (isKind)
        QCOMPARE(size, name.contains("/0/") ? QSize(16, 16) : QSize(32, 32));
    for (const int density : {2, 3})
        QCOMPARE(staged(name, density).size(), size * density);
}

void tst_InstalledPictures::shapesStandOutOnEveryGround()
{
    QFETCH(QString, name);
    const QImage picture = staged(name, 3);
    const QList<QPoint> points = rim(picture);
    QVERIFY(points.size() > 40);
    for (const QColor& ground : Grounds) {
        const auto seen = std::count_if(points.begin(), points.end(), [&](QPoint point) {
            return contrast(picture.pixelColor(point), ground) >= ContrastOfStates;
        });
        // Corners are blurred.
        QVERIFY2(
            seen * 100 >= points.size() * 95,
            qPrintable(QString("%1: %2 of %3").arg(ground.name()).arg(seen).arg(points.size())));
    }
}

void tst_InstalledPictures::kindsAreToldWithoutColours()
{
    const QStringList names = kinds();
    QVERIFY(names.size() > 20);
    for (const QString& one : names) {
        for (const QString& other : names) {
            if (one >= other || one.contains("_link") || other.contains("_link"))
                continue;
            const int percent = difference(staged(one), staged(other));
            QVERIFY2(percent >= 12,
                     qPrintable(QString("%1, %2: %3 %").arg(one, other).arg(percent)));
        }
    }
}

void tst_InstalledPictures::linksAreToldFromWhatTheyLeadTo_data()
{
    QTest::addColumn<QString>("plain");
    QTest::newRow("file") << "res/img/browser/0/file";
    QTest::newRow("folder") << "res/img/browser/0/folder";
}

void tst_InstalledPictures::linksAreToldFromWhatTheyLeadTo()
{
    QFETCH(QString, plain);
    QVERIFY(difference(staged(plain), staged(plain + "_link")) >= 8);
}

void tst_InstalledPictures::framesOfTheAnimationCoverEachOther()
{
    QList<QImage> seen;
    for (int frame = 0; frame < 8; ++frame) {
        const QImage picture = staged(QString("res/img/process/%1").arg(frame));
        QCOMPARE(picture.size(), QSize(32, 32));
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                QCOMPARE(qAlpha(picture.pixel(x, y)), 255);
        }
        QVERIFY(!seen.contains(picture));
        seen.append(picture);
    }
}

QUARN_TEST_MAIN(tst_InstalledPictures)
#include "tst_installedpictures.moc"
