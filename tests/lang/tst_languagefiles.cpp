#include "platform/zconfig.h"
#include "platform/zskinservice.h"
#include "tests/lang/filetexts.h"
#include "tests/lang/knowntexts.h"
#include "tests/lang/languages.h"
#include "tests/support/debuglines.h"
#include "tests/support/glyphs.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFile>
#include <QRawFont>
#include <QRegularExpression>

/// The language files that are installed.
class tst_LanguageFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useStagedFont(); }
    void everyFileOfTheRepositoryIsStaged();
    void hasEveryKeyOnceAndNoOther_data() { addFiles(); }
    void hasEveryKeyOnceAndNoOther();
    void isUtf8WithoutMark_data() { addFiles(); }
    void isUtf8WithoutMark();
    void isOfTheExpectedVersion_data() { addFiles(); }
    void isOfTheExpectedVersion();
    void givesEveryTextItself_data() { addFiles(); }
    void givesEveryTextItself();
    void englishFileSaysWhatTheProgramSaysWithoutIt();
    void everyCharacterHasAGlyph_data() { addFiles(); }
    void everyCharacterHasAGlyph();
    void namesAndNumbersHaveTheirPlaces_data() { addFiles(); }
    void namesAndNumbersHaveTheirPlaces();
    void allLanguagesAreThere();

private:
    static void addFiles();
    static QString pathOf(const QString& file);
    static QStringList placesIn(const QString& text);
};

namespace
{

QFont programFont(int points, int weight)
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), points, weight);
}

} // namespace

void tst_LanguageFiles::addFiles()
{
    QTest::addColumn<QString>("file");
    const QDir folder(QStringLiteral(QUARN_DATA_DIR "/lang"));
    const QStringList files = folder.entryList({"*.lang"}, QDir::Files);
    QVERIFY(files.contains("english.lang"));
    for (const QString& file : files)
        QTest::newRow(qPrintable(file)) << file;
}

QString tst_LanguageFiles::pathOf(const QString& file)
{
    return QStringLiteral(QUARN_STAGE_DIR "/lang/") + file;
}

void tst_LanguageFiles::everyFileOfTheRepositoryIsStaged()
{
    QCOMPARE(QDir(QStringLiteral(QUARN_STAGE_DIR "/lang")).entryList(QDir::Files),
             QDir(QStringLiteral(QUARN_DATA_DIR "/lang")).entryList(QDir::Files));
}

void tst_LanguageFiles::hasEveryKeyOnceAndNoOther()
{
    QFETCH(QString, file);
    QStringList expected{"VER"};
    for (const FileText& text : FileTexts)
        expected.append(text.key);
    QStringList found;
    QFile input(pathOf(file));
    QVERIFY(input.open(QIODevice::ReadOnly));
    for (const QString& line : QString::fromUtf8(input.readAll()).split('\n')) {
        if (line.contains('=') && !line.startsWith(';'))
            found.append(line.section('=', 0, 0).trimmed());
    }
    expected.removeDuplicates();
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
}

void tst_LanguageFiles::isUtf8WithoutMark()
{
    QFETCH(QString, file);
    QFile input(pathOf(file));
    QVERIFY(input.open(QIODevice::ReadOnly));
    const QByteArray bytes = input.readAll();
    QCOMPARE(QString::fromUtf8(bytes).toUtf8(), bytes);
    QVERIFY(!bytes.startsWith("\xef\xbb\xbf"));
    QVERIFY(!bytes.contains('\r'));
    QVERIFY(bytes.endsWith('\n'));
}

void tst_LanguageFiles::isOfTheExpectedVersion()
{
    QFETCH(QString, file);
    const DebugLines lines;
    loadTexts(pathOf(file));
    QCOMPARE(lines.all(), QStringList("--- read lang file: " + pathOf(file)));
}

void tst_LanguageFiles::givesEveryTextItself()
{
    QFETCH(QString, file);
    const ZConfig config(pathOf(file), true);
    for (const FileText& each : FileTexts) {
        const QString text = config.readEntry("Language", each.key, QString());
        QVERIFY2(!text.trimmed().isEmpty(), each.key);
    }
}

void tst_LanguageFiles::englishFileSaysWhatTheProgramSaysWithoutIt()
{
    loadTexts(pathOf("english.lang"));
    for (const KnownText& known : KnownTexts)
        QCOMPARE(*known.text, QString::fromLatin1(known.english));
    const ZConfig config(pathOf("english.lang"), true);
    for (const FileText& each : FileTexts)
        QCOMPARE(config.readEntry("Language", each.key, QString()), QString(each.english));
}

/// Which of "%1", "%2" and so on are in a text, each as often as it is.
QStringList tst_LanguageFiles::placesIn(const QString& text)
{
    static const QRegularExpression place("%[0-9L]*");
    QStringList places;
    for (auto found = place.globalMatch(text); found.hasNext();)
        places.append(found.next().captured());
    places.sort();
    return places;
}

void tst_LanguageFiles::namesAndNumbersHaveTheirPlaces()
{
    QFETCH(QString, file);
    const ZConfig config(pathOf(file), true);
    for (const FileText& each : FileTexts) {
        const QString text = config.readEntry("Language", each.key, QString());
        QCOMPARE(placesIn(text), placesIn(each.english));
    }
}

void tst_LanguageFiles::allLanguagesAreThere()
{
    const QStringList expected{"chinese.lang", "english.lang",  "french.lang",  "german.lang",
                               "italian.lang", "japanese.lang", "polish.lang",  "portuguese.lang",
                               "russian.lang", "spanish.lang",  "turkish.lang", "ukrainian.lang"};
    QCOMPARE(QDir(QStringLiteral(QUARN_STAGE_DIR "/lang")).entryList(QDir::Files, QDir::Name),
             expected);
}

void tst_LanguageFiles::everyCharacterHasAGlyph()
{
    QFETCH(QString, file);
    const QRawFont font(QStringLiteral(QUARN_STAGE_DIR "/res/font.ttf"), 13);
    QVERIFY(font.isValid());
    const ZConfig config(pathOf(file), true);
    // Scripts with thousands of characters are drawn with the system's fonts.
    const bool isItsOwn = file != "chinese.lang" && file != "japanese.lang";
    for (const FileText& each : FileTexts) {
        const QString text = config.readEntry("Language", each.key, QString());
        QCOMPARE(missingGlyphs(programFont(13, 25), text), 0);
        for (const uint character : text.toUcs4())
            QVERIFY2(!isItsOwn || font.supportsCharacter(character), each.key);
    }
}

QUARN_TEST_MAIN(tst_LanguageFiles)
#include "tst_languagefiles.moc"
