#include "platform/qdiskfont.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QFile>
#include <QFont>
#include <QFontInfo>

namespace
{

/// A font whose family is not what a missing one falls back to.
constexpr const char* FontFile = QUARN_TEST_FONT;
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
