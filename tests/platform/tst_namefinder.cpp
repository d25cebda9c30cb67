#include "platform/namefinder.h"
#include "tests/support/testmain.h"

#include <QRandomGenerator>

#include <algorithm>
#include <iterator>

/// Which name the keys of its first letters find.
class tst_NameFinder : public QObject
{
    Q_OBJECT

private slots:
    void nameBeginsWithWhatIsPressed_data();
    void nameBeginsWithWhatIsPressed();
    void nameDoesNotBeginWithWhatIsPressed_data();
    void nameDoesNotBeginWithWhatIsPressed();
    void digitsStandForTheLettersOfTheLanguage_data();
    void digitsStandForTheLettersOfTheLanguage();
    void laterWordBegins_data();
    void laterWordBegins();
    void laterWordsAreThoseOfAReaderFromTheLeft();
    void nextRowIsFound_data();
    void nextRowIsFound();
    void whatIsAskedIsAsItWasPressed_data();
    void whatIsAskedIsAsItWasPressed();
    void brokenNamesAreNoHarm_data();
    void brokenNamesAreNoHarm();
    void nothingIsFoundWithoutKeysOrRows();
    void clearedFinderBeginsAnew();
};

namespace
{

void press(NameFinder& finder, const QString& keys)
{
    finder.clear();
    for (const char32_t key : keys.toUcs4())
        finder.press(QString::fromUcs4(&key, 1));
}

/// The part of one name that the keys match; a null text if they do not.
QString matched(const QString& name, const QString& keys, const QString& language = "english")
{
    NameFinder finder{KeypadLetters(language)};
    press(finder, keys);
    const QByteArray bytes = name.toUtf8();
    const auto found = finder.find(1, 0, [&bytes](int) { return QByteArrayView(bytes); });
    return found.row < 0 ? QString() : QString::fromUtf8(bytes.mid(found.from, found.length));
}

/// The bytes of the character that a text begins with: of what is no UTF-8 one.
qsizetype bytesOfFirst(QByteArrayView text)
{
    const uchar lead = uchar(text.front());
    const qsizetype length = lead < 0xc0 ? 1 : lead < 0xe0 ? 2 : 3;
    const auto goesOn = [](char byte) { return (uchar(byte) & 0xc0U) == 0x80; };
    const bool isWhole =
        length <= text.size() && std::all_of(text.begin() + 1, text.begin() + length, goesOn);
    return isWhole ? length : 1;
}

/// The first word behind a name's beginning that begins with what a finder was asked, as one finds
/// it who reads from the left; -1 if there is none.
qsizetype readWord(NameFinder& finder, FoldedCharacters& characters, QByteArrayView name)
{
    using Kind = FoldedCharacters::Kind;
    bool inWord = false;
    for (qsizetype at = 0; at < name.size();) {
        const QByteArrayView rest = name.sliced(at);
        const qsizetype length = bytesOfFirst(rest);
        const QString character = QString::fromUtf8(rest.first(length));
        const Kind kind = characters.of(character.toUcs4().value(0)).kind;
        const bool begins = kind == Kind::Ideograph || (kind == Kind::Letter && !inWord);
        const auto found = finder.find(1, 0, [rest](int) { return rest; });
        if (at > 0 && begins && found.row == 0 && found.from == 0)
            return at;
        inWord = kind == Kind::Letter || (kind == Kind::Joint && inWord);
        at += length;
    }
    return -1;
}

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

void tst_NameFinder::nameBeginsWithWhatIsPressed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("part");
    const auto row = [](const char* what, const char* name, const char* keys, const char* part) {
        QTest::newRow(what) << text(name) << text(keys) << text(part);
    };
    row("letters", "Documents", "doc", "Doc");
    row("digits", "Documents", "362", "Doc");
    row("capitals", "documents", "DOC", "doc");
    row("one letter", "Documents", "d", "D");
    row("the whole name", "a1", "a1", "a1");
    row("digit key for a digit", "2024", "224", "2024");
    row("letters and digits", "img_12", "img_1", "img_1");
    row("punctuation key", "IMG_12", "464112", "IMG_12");
    row("letter and its digits mixed", "Documents", "d62", "Doc");
    row("accent in the name", "Élan", "el", "Él");
    row("accent in the name by digits", "Élan", "35", "Él");
    row("accent that is pressed", "elan", "él", "el");
    row("decomposed accent", "E\u0301lan", "el", "E\u0301l");
    row("decomposed accent by digits", "E\u0301lan", "352", "E\u0301la");
    row("both in different forms", "E\u0301lan", "él", "E\u0301l");
    row("stroke", "Øst", "os", "Øs");
    row("stroke by digits", "Łódź", "5639", "Łódź");
    row("ligature", "Ærø", "aero", "Ærø");
    row("ligature by digits", "Ærø", "2376", "Ærø");
    row("sharp s", "Straße", "strasse", "Straße");
    row("sharp s that is pressed", "STRASSE", "straß", "STRASS");
    row("sharp s by digits", "Straße", "7872773", "Straße");
    row("dotless i", "Isparta ılıca", "isparta ili", "Isparta ılı");
    row("dotted capital I", "İzmir", "iz", "İz");
    row("full width", "ＡＢＣ", "abc", "ＡＢＣ");
    row("Cyrillic", "Документы", "док", "Док");
    row("Cyrillic capitals", "документы", "ДОК", "док");
    row("Cyrillic accents", "Ёлка", "ел", "Ёл");
    row("Cyrillic short i", "Йод", "ио", "Йо");
    row("Cyrillic by digits without its language", "Документы", "354", "Док");
    row("Greek", "Έγγραφα", "εγγ", "Έγγ");
    row("Greek final sigma", "ΟΣ", "ος", "ΟΣ");
    row("Greek by digits without its language", "Έγγραφα", "322", "Έγγ");
    row("Hebrew with points", "\u05D1\u05BC\u05D0", "\u05D1\u05D0", "\u05D1\u05BC\u05D0");
    row("Hangul", "한국", "한국", "한국");
    row("ideographs", "日本語", "日本", "日本");
    row("beyond the first plane", "𐐨x", "𐐀x", "𐐨x");
    row("digits pass over blanks", "My Documents", "69362", "My Doc");
    row("digits pass over zeros", "IMG_0012", "464112", "IMG_0012");
    row("digits pass over symbols", "[Album] x", "25286", "[Album");
    row("letters need the blank", "My Documents", "my d", "My D");
    row("invisible mark", "\u200Fabc", "ab", "\u200Fab");
    row("byte-order mark", "\uFEFFabc", "ab", "\uFEFFab");
}

void tst_NameFinder::nameBeginsWithWhatIsPressed()
{
    QFETCH(QString, name);
    QFETCH(QString, keys);
    QTEST(matched(name, keys), "part");
}

void tst_NameFinder::nameDoesNotBeginWithWhatIsPressed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("keys");
    QTest::newRow("another letter") << "Documents"
                                    << "dot";
    QTest::newRow("another digit") << "Documents"
                                   << "368";
    QTest::newRow("more than the name") << "Doc"
                                        << "docu";
    QTest::newRow("more digits than the name") << "Doc"
                                               << "3628";
    QTest::newRow("in the midst") << "Documents"
                                  << "oc";
    QTest::newRow("letters do not pass over blanks") << "My Documents"
                                                     << "myd";
    QTest::newRow("digits do not pass over letters") << text("აabc") << "2";
    QTest::newRow("digits do not pass over punctuation") << "a.txt"
                                                         << "28";
    QTest::newRow("no name") << ""
                             << "a";
    QTest::newRow("only blanks") << "   "
                                 << "2";
    QTest::newRow("vowel signs tell words apart") << text("कि") << text("कु");
}

void tst_NameFinder::nameDoesNotBeginWithWhatIsPressed()
{
    QFETCH(QString, name);
    QFETCH(QString, keys);
    QCOMPARE(matched(name, keys), QString());
}

void tst_NameFinder::digitsStandForTheLettersOfTheLanguage_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("digits");
    const auto row = [](const char* language, const char* name, const char* digits) {
        QTest::addRow("%s %s", language, digits) << language << text(name) << digits;
    };
    row("russian", "Музыка", "563842");
    row("russian", "Music", "68742");
    row("ukrainian", "Їжак", "4324");
    row("bulgarian", "Ъгъл", "8284");
    row("greek", "Μουσική", "5687454");
    row("german", "Äpfel", "27335");
    row("german", "Straße", "787273");
    row("polish", "Łódź", "5639");
    row("turkish", "Ilıca", "45422");
    row("czech", "Říjen", "74536");
    row("macedonian", "Ѓорѓи", "36734");
    row("hebrew", "שלום", "7524");
    row("danish", "Århus", "27487");
}

void tst_NameFinder::digitsStandForTheLettersOfTheLanguage()
{
    QFETCH(QString, language);
    QFETCH(QString, name);
    QFETCH(QString, digits);
    QCOMPARE(matched(name, digits, language), name);
}

void tst_NameFinder::laterWordBegins_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("part");
    const auto row = [](const char* what, const char* name, const char* keys, const char* part) {
        QTest::newRow(what) << text(name) << text(keys) << text(part);
    };
    row("behind a blank", "My Documents", "doc", "Doc");
    row("by digits", "My Documents", "362", "Doc");
    row("behind a hyphen", "photo-album", "al", "al");
    row("behind an underscore", "IMG_0012", "0012", "0012");
    row("zeros that digits pass over", "IMG_0012", "12", "0012");
    row("the extension", "a.txt", "tx", "tx");
    row("of a hidden file", ".profile", "pro", "pro");
    row("behind a bracket", "a (best)", "be", "be");
    row("third word", "one two three", "thr", "thr");
    row("across words", "a big house", "big h", "big h");
    row("letters behind digits", "2abc", "abc", "");
    row("inside a word", "Documents", "ments", "");
    row("behind an apostrophe", "don't", "t", "");
    row("behind a typographic apostrophe", "l’été", "et", "");
    row("in quotes", "'best' of", "best", "best");
    row("accent in the word before", "cafe\u0301s one", "s", "");
    row("each ideograph", "日本語", "本", "本");
    row("Cyrillic", "Мои документы", "до", "до");
}

void tst_NameFinder::laterWordBegins()
{
    QFETCH(QString, name);
    QFETCH(QString, keys);
    QFETCH(QString, part);
    QCOMPARE(matched(name, keys), part.isEmpty() ? QString() : part);
}

void tst_NameFinder::laterWordsAreThoseOfAReaderFromTheLeft()
{
    const QByteArray pieces[] = {"a",    "b",    "я",        "Я",      "к",
                                 "é",    " ",    "'",        "-",      "0",
                                 "2",    "日",   "本",       "\u0301", "\u05bc\u05d0",
                                 "\xd0", "\x80", "\xe2\x82", "\xff"};
    constexpr int Names = 1000;
    FoldedCharacters characters{KeypadLetters("russian")};
    QRandomGenerator random(1);
    int found = 0;
    for (const QString keys : {"a", "я", "к", "2", "日", "a2", "як"}) {
        NameFinder finder{KeypadLetters("russian")};
        press(finder, keys);
        for (int i = 0; i < Names; ++i) {
            // Nothing begins with the first character, so only words can be found.
            QByteArray name("_");
            for (int piece = random.bounded(9); piece > 0; --piece)
                name += pieces[random.bounded(int(std::size(pieces)))];
            const qsizetype expected = readWord(finder, characters, name);
            const auto word = finder.find(1, 0, [&name](int) { return QByteArrayView(name); });
            QVERIFY2((word.row < 0 ? -1 : word.from) == expected,
                     name.toHex() + " " + keys.toUtf8());
            found += expected > 0;
        }
    }
    QVERIFY(found > Names);
}

void tst_NameFinder::nextRowIsFound_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<int>("current");
    QTest::addColumn<int>("row");
    const QStringList list{"", "Music", "Old Music", "alpha", "apple", "mail", "zebra"};
    QTest::newRow("first of them") << list << "a" << 0 << 3;
    QTest::newRow("current one stays") << list << "a" << 4 << 4;
    QTest::newRow("from the current one on") << list << "m" << 2 << 5;
    QTest::newRow("round the end") << list << "al" << 4 << 3;
    QTest::newRow("none is current") << list << "a" << -1 << 3;
    QTest::newRow("name before a nearer word") << list << "mus" << 2 << 1;
    QTest::newRow("word if no name") << list << "o" << 3 << 2;
    QTest::newRow("only a word") << QStringList{"x", "old music", "y"} << "mu" << 2 << 1;
    QTest::newRow("none") << list << "q" << 2 << -1;
    QTest::newRow("same letter goes on") << list << "aa" << 3 << 4;
    QTest::newRow("same letter in another case") << list << "aA" << 3 << 4;
    QTest::newRow("same letter goes round") << list << "aa" << 4 << 3;
    QTest::newRow("same letter a third time") << list << "aaa" << 4 << 3;
    QTest::newRow("same letter, no other") << list << "zz" << 6 << 6;
    QTest::newRow("same digit goes on") << list << "66" << 1 << 2;
    QTest::newRow("same digit twice begins a name")
        << QStringList{"Mail", "Music", "Notes"} << "66" << 0 << 2;
    QTest::newRow("same letter twice begins a name")
        << QStringList{"Aa", "Ab", "Ac"} << "aa" << 1 << 0;
    QTest::newRow("same letter twice begins the current name")
        << QStringList{"Aachen", "Aalen", "Ab"} << "aa" << 1 << 1;
    QTest::newRow("once more than any name has it")
        << QStringList{"Aachen", "Aalen", "Ab"} << "aaa" << 0 << 1;
    QTest::newRow("same letter twice begins a word alone")
        << QStringList{"Ab", "Ac", "x aa"} << "aa" << 0 << 1;
    QTest::newRow("letter of two twice begins a name")
        << QStringList{"ssa", "ssb", "ssss"} << text("ßß") << 0 << 2;
    QTest::newRow("same digits before another")
        << QStringList{"Movies", "Music", "Notes", "x"} << "668" << 1 << 2;
    QTest::newRow("same letters before another")
        << QStringList{"aab", "ab", "aac"} << "aac" << 1 << 2;
    QTest::newRow("same letter goes through words") << QStringList{"x b", "y b"} << "bb" << 0 << 1;
    QTest::newRow("letter of two") << QStringList{"ssa", "ssb"} << text("ß") << 1 << 1;
    QTest::newRow("letter of two again") << QStringList{"ssa", "ssb"} << text("ßß") << 1 << 0;
}

void tst_NameFinder::nextRowIsFound()
{
    QFETCH(QStringList, names);
    QFETCH(QString, keys);
    QFETCH(int, current);
    QList<QByteArray> rows;
    for (const QString& name : names)
        rows.append(name.toUtf8());
    NameFinder finder{KeypadLetters("english")};
    press(finder, keys);
    const auto nameOf = [&rows](int row) { return QByteArrayView(rows.at(row)); };
    const auto found = finder.find(int(rows.size()), current, nameOf);
    QTEST(found.row, "row");
    if (found.row >= 0)
        QVERIFY(found.from >= 0 && found.from + found.length <= rows.at(found.row).size());
}

void tst_NameFinder::whatIsAskedIsAsItWasPressed_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("asked");
    QTest::newRow("letters") << text("Été") << text("Été");
    QTest::newRow("digits") << "362"
                            << "362";
    QTest::newRow("one key again") << "ddd"
                                   << "d";
    QTest::newRow("and another") << "ddo"
                                 << "ddo";
    QTest::newRow("accent alone") << text("a\u0301b") << "ab";
    QTest::newRow("nothing") << ""
                             << "";
}

void tst_NameFinder::whatIsAskedIsAsItWasPressed()
{
    QFETCH(QString, keys);
    NameFinder finder;
    press(finder, keys);
    QTEST(finder.asked(), "asked");
    QCOMPARE(finder.isEmpty(), keys.isEmpty());
}

void tst_NameFinder::brokenNamesAreNoHarm_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<bool>("found");
    QTest::newRow("byte of Latin-1") << QByteArray("M\xfcsik") << "m" << true;
    QTest::newRow("digits pass over it") << QByteArray("M\xfcsik") << "675" << false;
    QTest::newRow("digits pass over it at the start") << QByteArray("\xfcsik") << "74" << true;
    QTest::newRow("cut off") << QByteArray("a\xd0") << "a" << true;
    QTest::newRow("longer than it") << QByteArray("a\xf0\x9f\x98") << "ab" << false;
    QTest::newRow("overlong") << QByteArray("\xc0\xaf"
                                            "a")
                              << "2" << true;
    QTest::newRow("surrogate") << QByteArray("\xed\xa0\x80"
                                             "a")
                               << "a" << true;
    QTest::newRow("beyond all planes") << QByteArray("\xf7\xbf\xbf\xbf") << "a" << false;
    QTest::newRow("past the last character") << QByteArray("\xf4\xbf\xbf\xbf") << "a" << false;
    QTest::newRow("zero") << QByteArray("\0a", 2) << "2" << true;
    QTest::newRow("endless") << QByteArray(100000, '\xd0') << "2" << false;
}

void tst_NameFinder::brokenNamesAreNoHarm()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, keys);
    NameFinder finder{KeypadLetters("english")};
    press(finder, keys);
    const auto found = finder.find(1, 0, [&name](int) { return QByteArrayView(name); });
    QTEST(found.row == 0, "found");
}

void tst_NameFinder::nothingIsFoundWithoutKeysOrRows()
{
    NameFinder finder;
    QCOMPARE(finder.find(1, 0, [](int) { return QByteArrayView("a"); }).row, -1);
    finder.press("a");
    QCOMPARE(finder.find(0, -1, [](int) { return QByteArrayView("a"); }).row, -1);
    QCOMPARE(finder.find(1, -1, [](int) { return QByteArrayView("a"); }).row, 0);
}

void tst_NameFinder::clearedFinderBeginsAnew()
{
    NameFinder finder;
    press(finder, "zz");
    finder.clear();
    QVERIFY(finder.isEmpty());
    finder.press("a");
    QCOMPARE(finder.asked(), QString("a"));
    const auto nameOf = [](int) { return QByteArrayView("a"); };
    QCOMPARE(finder.find(2, 1, nameOf).row, 1);
}

QUARN_TEST_MAIN(tst_NameFinder)
#include "tst_namefinder.moc"
