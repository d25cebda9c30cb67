#include "platform/qdiskfont.h"
#include "platform/zconfig.h"
#include "platform/zscreen.h"
#include "platform/zskinservice.h"
#include "tests/lang/knowntexts.h"
#include "tests/support/debuglines.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QRawFont>

/// The language files that are installed.
class tst_LanguageFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFileOfTheRepositoryIsStaged();
    void hasEveryKeyOnceAndNoOther_data() { addFiles(); }
    void hasEveryKeyOnceAndNoOther();
    void isUtf8WithoutMark_data() { addFiles(); }
    void isUtf8WithoutMark();
    void isOfTheExpectedVersion_data() { addFiles(); }
    void isOfTheExpectedVersion();
    void givesEveryTextItself_data() { addFiles(); }
    void givesEveryTextItself();
    void hasThePlacesForNumbersOfTheEnglishTexts_data() { addFiles(); }
    void hasThePlacesForNumbersOfTheEnglishTexts();
    void englishFileSaysWhatTheProgramSaysWithoutIt();
    void everyCharacterIsInTheProgramsFont_data() { addFiles(); }
    void everyCharacterIsInTheProgramsFont();
    void labelsFitTheirPlaces_data() { addFiles(); }
    void labelsFitTheirPlaces();

private:
    static void addFiles();
    static QString pathOf(const QString& file);
};

namespace
{

QFont programFont(int points, int weight)
{
    return ZSkinService::font(QStringLiteral("ZarnikFont"), points, weight);
}

} // namespace

void tst_LanguageFiles::initTestCase()
{
    QDiskFont record;
    record.name = QStringLiteral("ZarnikFont");
    record.file = QStringLiteral(QUARN_STAGE_DIR "/res/font.ttf");
    ZFontManager::addDiskFont(record);
    QCOMPARE(QFontInfo(programFont(14, 25)).family(), QString("ZarnikFont"));
}

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
    for (const KnownText& known : KnownTexts)
        expected.append(known.key);
    QStringList found;
    QFile input(pathOf(file));
    QVERIFY(input.open(QIODevice::ReadOnly));
    for (const QString& line : QString::fromUtf8(input.readAll()).split('\n')) {
        if (line.contains('=') && !line.startsWith(';'))
            found.append(line.section('=', 0, 0).trimmed());
    }
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
    for (const KnownText& known : KnownTexts) {
        const QString text = config.readEntry("Language", known.key, QString());
        QVERIFY2(!text.trimmed().isEmpty(), known.key);
    }
}

void tst_LanguageFiles::hasThePlacesForNumbersOfTheEnglishTexts()
{
    QFETCH(QString, file);
    loadTexts(pathOf(file));
    for (const KnownText& known : KnownTexts)
        QVERIFY2(known.text->count('%') == QString(known.english).count('%') &&
                     known.text->count("%1") == QString(known.english).count("%1"),
                 known.key);
}

void tst_LanguageFiles::englishFileSaysWhatTheProgramSaysWithoutIt()
{
    loadTexts(pathOf("english.lang"));
    for (const KnownText& known : KnownTexts)
        QCOMPARE(*known.text, QString::fromLatin1(known.english));
}

void tst_LanguageFiles::everyCharacterIsInTheProgramsFont()
{
    QFETCH(QString, file);
    const QRawFont font(QStringLiteral(QUARN_STAGE_DIR "/res/font.ttf"), 13);
    QVERIFY(font.isValid());
    loadTexts(pathOf(file));
    for (const KnownText& known : KnownTexts) {
        for (const uint character : known.text->toUcs4())
            QVERIFY2(font.supportsCharacter(character), known.key);
    }
}

void tst_LanguageFiles::labelsFitTheirPlaces()
{
    QFETCH(QString, file);
    loadTexts(pathOf(file));
    const auto fits = [](const QString& text, const QFont& font, int width) {
        const int needed = QFontMetrics(font).horizontalAdvance(text);
        return needed <= width ? QString()
                               : QString("%1: %2 of %3").arg(text).arg(needed).arg(width);
    };
    // A soft key's label takes half of the screen, but for the edge and half of the gap.
    for (const QString& text : {LANG_OPTIONS, LANG_SELECT, LANG_BACK, LANG_YES, LANG_NO})
        QCOMPARE(fits(text, programFont(14, 25), ZScreen::Width / 2 - 11), QString());
    // A menu's text begins behind three tabs and leaves the right edge to digit and arrow.
    constexpr int DigitAndArrow = 30;
    constexpr int MenuWidth =
        ZScreen::Width - 2 * 7 - 3 * ZSkinService::MenuTabWidth - DigitAndArrow;
    for (const QString& text : {LANG_OPEN_WITH, LANG_DELETE, LANG_COPY_MENU, LANG_RENAME,
                                LANG_MKDIR, LANG_BOOKMARK, LANG_ADD_BOOKMARK, LANG_BT,
                                LANG_PROPERTIES, LANG_COPY, LANG_MOVE, LANG_PASTE, LANG_PASTE_AS})
        QCOMPARE(fits(text, programFont(14, 25), MenuWidth), QString());
    // Yes and no share the key bar of a box, 220 pixels wide; its other texts are wrapped at 210.
    for (const QString& text : {LANG_YES, LANG_NO})
        QCOMPARE(fits(text, programFont(13, 25), 110), QString());
    QCOMPARE(fits(LANG_CANCEL, programFont(13, 25), 220), QString());
    for (const QString& title :
         {LANG_ERROR, LANG_WARNING, LANG_PROPERTIES, LANG_COPYING, LANG_MOVING, LANG_EXIT,
          LANG_DELETE, LANG_RENAME, LANG_MKDIR, LANG_BOOKMARK})
        QCOMPARE(fits(title, programFont(15, 87), 210), QString());
}

QUARN_TEST_MAIN(tst_LanguageFiles)
#include "tst_languagefiles.moc"
