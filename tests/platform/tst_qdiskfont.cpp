#include "platform/qdiskfont.h"
#include "tests/support/pictures.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFile>
#include <QFont>
#include <QFontInfo>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QtEndian>

namespace
{

/// A font whose family is not what a missing one falls back to.
constexpr const char* FontFile = QUARN_TEST_FONTS "/DejaVuSansMono.ttf";
constexpr const char* BoldFontFile = QUARN_TEST_FONTS "/DejaVuSansMono-Bold.ttf";
const QString FontFamily = QStringLiteral("DejaVu Sans Mono");

QDiskFont record(const QString& name, int weight, const QString& file)
{
    QDiskFont result;
    result.factory = ZFontManager::firstFactory();
    result.name = name;
    result.weight = weight;
    result.flavour = "s";
    result.file = file;
    return result;
}

/// Copies a font file of which the family's first word, which has six letters, is another one, and
/// that may have lost its characters.
void writeRenamed(const char* source, const QString& target, const QByteArray& word,
                  bool empty = false)
{
    QFile file(QString::fromLatin1(source));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    const auto wide = [](const QByteArray& text) {
        QByteArray result;
        for (const char letter : text)
            result.append('\0').append(letter);
        return result;
    };
    bytes.replace(wide("DejaVu"), wide(word));
    bytes.replace("DejaVu", word);
    if (empty) {
        const qsizetype entry = bytes.indexOf("cmap");
        QVERIFY(entry > 0 && entry < 500);
        const quint32 table = qFromBigEndian<quint32>(bytes.constData() + entry + 8);
        // Every kind of list in it says that it is of a kind that there is not.
        const quint16 lists = qFromBigEndian<quint16>(bytes.constData() + table + 2);
        for (quint16 i = 0; i < lists; ++i) {
            const quint32 list = qFromBigEndian<quint32>(bytes.constData() + table + 4 + 8 * i + 4);
            qToBigEndian<quint16>(99, bytes.data() + table + list);
        }
    }
    QFile copy(target);
    QVERIFY(copy.open(QIODevice::WriteOnly));
    QCOMPARE(copy.write(bytes), bytes.size());
}

QString familyGiven(const QString& name)
{
    return QFontInfo(QFont(name)).family();
}

} // namespace

class tst_QDiskFont : public QObject
{
    Q_OBJECT

private slots:
    void recordsAreKeptWithAllTheirFields()
    {
        QVERIFY(ZFontManager::diskFonts().isEmpty());
        ZFontManager::diskFonts().append(record("Listed", 25, "res/font.ttf"));
        ZFontManager::diskFonts().append(record("Listed", 87, "res/font.ttf"));
        const QList<QDiskFont> kept = ZFontManager::diskFonts();
        QCOMPARE(kept.size(), 2);
        QCOMPARE(kept.at(0).weight, 25);
        QCOMPARE(kept.at(1).weight, 87);
        for (const QDiskFont& font : kept) {
            QVERIFY(!font.factory.isEmpty());
            QCOMPARE(font.factory, ZFontManager::firstFactory());
            QCOMPARE(font.name, QString("Listed"));
            QCOMPARE(font.flavour, QString("s"));
            QCOMPARE(font.file, QString("res/font.ttf"));
            QCOMPARE(font.size, 0);
            QVERIFY(!font.italic);
            QVERIFY(!font.loaded);
        }
    }

    void listingAloneLoadsNothing()
    {
        ZFontManager::diskFonts().append(record("Only listed", 25, FontFile));
        QVERIFY(familyGiven("Only listed") != FontFamily);
    }

    void familyNameGivesTheFontOfTheFile()
    {
        QVERIFY(familyGiven("Two records") != FontFamily);
        ZFontManager::addDiskFont(record("Two records", 25, FontFile));
        ZFontManager::addDiskFont(record("Two records", 87, FontFile));
        QCOMPARE(familyGiven("Two records"), FontFamily);
        QCOMPARE(QFont::substitutes("Two records").size(), 1);
    }

    void fileIsReadOnceForAllItsRecords()
    {
        const ScratchFolder folder;
        const QString file = folder.path("font.ttf");
        QVERIFY(QFile::copy(FontFile, file));
        ZFontManager::addDiskFont(record("First name", 25, file));
        QVERIFY(QFile::remove(file));
        ZFontManager::addDiskFont(record("Second name", 87, file));
        QCOMPARE(familyGiven("First name"), FontFamily);
        QCOMPARE(familyGiven("Second name"), FontFamily);
    }

    void boldFileBesideItIsOfTheFamily_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("with an ending") << "font.ttf";
        QTest::newRow("without an ending") << "font";
    }

    void boldFileBesideItIsOfTheFamily()
    {
        QFETCH(QString, name);
        // A family that the system does not have.
        const QByteArray family = name.contains('.') ? "Letter" : "Signet";
        const ScratchFolder folder;
        folder.makeFolder("a.b");
        const auto path = [&](const char* bold) {
            return folder.path("a.b/" + QString(name).insert(4, QLatin1String(bold)));
        };
        writeRenamed(FontFile, path(""), family);
        writeRenamed(BoldFontFile, path("-bold"), family);
        ZFontManager::addDiskFont(record("Bold " + name, 25, path("")));
        QFont font("Bold " + name);
        font.setPixelSize(40);
        const auto outline = [](const QRawFont& face) {
            return face.pathForGlyph(face.glyphIndexesForString("Q").value(0));
        };
        QCOMPARE(outline(QRawFont::fromFont(font)), outline(QRawFont(path(""), 40)));
        font.setWeight(QFont::Black);
        QCOMPARE(outline(QRawFont::fromFont(font)), outline(QRawFont(path("-bold"), 40)));
        QVERIFY(outline(QRawFont(path(""), 40)) != outline(QRawFont(path("-bold"), 40)));
    }

    void fontThatLacksEverythingShowsSomething()
    {
        const ScratchFolder folder;
        writeRenamed(FontFile, folder.path("font.ttf"), "Hollow", true);
        ZFontManager::addDiskFont(record("Full of holes", 25, folder.path("font.ttf")));
        QFont font("Full of holes");
        QCOMPARE(QFontInfo(font).family(), QString("Hollow Sans Mono"));
        font.setPixelSize(13);
        const auto ink = [&font] {
            QPixmap sheet = coloured(Qt::white, {200, 40});
            QPainter painter(&sheet);
            painter.setFont(font);
            painter.drawText(4, 20, "Quarn \u0419\u4e2d");
            painter.end();
            return inkBounds(sheet.toImage(), {0, 0, 200, 40}, Qt::white);
        };
        // Letters of other fonts, or boxes where no other may help out.
        QVERIFY(ink().width() > 20);
        font.setStyleStrategy(QFont::NoFontMerging);
        QVERIFY(ink().width() > 20);
    }

    void uselessFileGivesTheDefaultFont_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name :
             {"missing", "empty", "text", "broken", "folder", "fifo", "locked", "dangling"})
            QTest::newRow(name) << name;
    }

    void uselessFileGivesTheDefaultFont()
    {
        QFETCH(QString, name);
        const ScratchFolder folder;
        QFile font(FontFile);
        QVERIFY(font.open(QIODevice::ReadOnly));
        const QByteArray bytes = font.readAll();
        folder.write("empty");
        folder.write("text", "this is no font");
        folder.write("broken", bytes.left(1000));
        folder.makeFolder("folder");
        folder.makeFifo("fifo");
        folder.write("locked", bytes);
        folder.setMode("locked", 0);
        folder.makeLink("dangling", "nowhere");
        const QString family = "Useless " + name;
        ZFontManager::addDiskFont(record(family, 25, folder.path(name)));
        QVERIFY(QFont::substitutes(family).isEmpty());
        QCOMPARE(familyGiven(family), familyGiven("Never registered"));
    }
};

QUARN_TEST_MAIN(tst_QDiskFont)
#include "tst_qdiskfont.moc"
