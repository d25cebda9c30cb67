#include "files/names.h"
#include "tests/support/testmain.h"

#include <QRandomGenerator>
#include <QSet>

#include <string>

namespace
{

/// A decoder of one character by the definition of UTF-8: the number that the bits make, and what
/// is not allowed. Gives the count of bytes, or 0.
int wholeCharacter(const QByteArray& bytes, int at)
{
    const auto byte = [&bytes](int i) { return i < bytes.size() ? uchar(bytes.at(i)) : 0; };
    const int lead = byte(at);
    if (lead < 0x80)
        return 1;
    const int length = lead >= 0xf8 || lead < 0xc0 ? 0 : lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (length == 0 || at + length > bytes.size())
        return 0;
    char32_t number = char32_t(lead) & (0x7fU >> length);
    for (int i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xc0) != 0x80)
            return 0;
        number = number << 6 | (char32_t(byte(at + i)) & 0x3fU);
    }
    const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = number >= 0xd800 && number <= 0xdfff;
    return number < smallest[length] || surrogate || number > 0x10ffff ? 0 : length;
}

QString expectedText(const QByteArray& name)
{
    std::u16string text;
    for (int i = 0; i < name.size();) {
        const int length = wholeCharacter(name, i);
        if (length == 0) {
            text += char16_t(0xdc00 + uchar(name.at(i)));
            ++i;
            continue;
        }
        char32_t number = length == 1 ? uchar(name.at(i)) : uchar(name.at(i)) & (0x7fU >> length);
        for (int k = 1; k < length; ++k)
            number = number << 6 | (uchar(name.at(i + k)) & 0x3fU);
        if (number > 0xffff) {
            text += char16_t(0xd800 + ((number - 0x10000) >> 10));
            text += char16_t(0xdc00 + ((number - 0x10000) & 0x3ff));
        } else {
            text += char16_t(number);
        }
        i += length;
    }
    // The toolkit's own way leaves out a byte-order mark.
    return QString(QStringView(text).data(), qsizetype(text.size()));
}

/// Empty if all is well.
QByteArray faultOf(const QByteArray& name)
{
    const QString text = decodeName(name);
    if (text != expectedText(name))
        return name.toHex() + " has another text";
    const auto back = encodeName(text);
    const bool hasZero = name.contains('\0');
    if (back.has_value() == hasZero || (back && *back != name))
        return name.toHex() + " does not come back";
    return {};
}

} // namespace

class tst_Names : public QObject
{
    Q_OBJECT

private slots:
    void everyByteAndPairComesBack();
    void sequencesAtTheBoundariesComeBack_data();
    void sequencesAtTheBoundariesComeBack();
    void threeBytesAroundEveryLeadComeBack();
    void randomNamesComeBackAndDiffer();
    void byteOrderMarksAreKept();
    void textsThatNameNothingAreRefused_data();
    void textsThatNameNothingAreRefused();
    void everyTextIsRefusedOrNamesItself();
    void aPathThatCannotBeIsEmpty();
};

void tst_Names::everyByteAndPairComesBack()
{
    QSet<QString> texts;
    for (int first = 0; first < 256; ++first) {
        const QByteArray one(1, char(first));
        QCOMPARE(faultOf(one), QByteArray());
        texts.insert(decodeName(one));
        for (int second = 0; second < 256; ++second) {
            const QByteArray two = one + char(second);
            QCOMPARE(faultOf(two), QByteArray());
            texts.insert(decodeName(two));
        }
    }
    QCOMPARE(texts.size(), 256 + 256 * 256);
}

void tst_Names::sequencesAtTheBoundariesComeBack_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("valid");
    const struct {
        const char* bytes;
        bool valid;
    } rows[] = {
        {"\xe0\x9f\xbf", false},     {"\xe0\xa0\x80", true},      {"\xed\x9f\xbf", true},
        {"\xed\xa0\x80", false},     {"\xed\xbf\xbf", false},     {"\xee\x80\x80", true},
        {"\xef\xbf\xbd", true},      {"\xef\xbf\xbe", true},      {"\xef\xbf\xbf", true},
        {"\xef\xb7\x90", true},      {"\xf0\x8f\xbf\xbf", false}, {"\xf0\x90\x80\x80", true},
        {"\xf4\x8f\xbf\xbf", true},  {"\xf4\x90\x80\x80", false}, {"\xf5\x80\x80\x80", false},
        {"\xf8\x88\x80\x80", false}, {"\xc0\xaf", false},         {"\xc1\xbf", false},
        {"\xe2\x82", false},         {"\xf0\x9f\x98", false},     {"\xed\xb2\x80", false},
        {"\xfe\xff", false},         {"\xff\xfe", false},         {"\xf0\x9f\x98\x80\x80", false},
    };
    for (const auto& row : rows)
        QTest::newRow(QByteArray(row.bytes).toHex().constData())
            << QByteArray(row.bytes) << row.valid;
}

void tst_Names::sequencesAtTheBoundariesComeBack()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, valid);
    for (const char* before : {"", "a", "\xff", "\xc3\xa4", "\xef\xbb\xbf"}) {
        for (const char* behind : {"", "z", "\x80", "\xc3\xa4"})
            QCOMPARE(faultOf(before + name + behind), QByteArray());
    }
    QCOMPARE(decodeName(name).isValidUtf16(), valid);
}

void tst_Names::threeBytesAroundEveryLeadComeBack()
{
    const QByteArray seconds = QByteArray::fromHex("7f808f909fa0bfc0ff");
    for (int lead = 0x80; lead < 256; ++lead) {
        for (const char second : seconds) {
            for (const char third : seconds) {
                for (const char fourth : seconds)
                    QCOMPARE(faultOf(QByteArray{} + char(lead) + second + third + fourth),
                             QByteArray());
            }
        }
    }
}

void tst_Names::randomNamesComeBackAndDiffer()
{
    QRandomGenerator random(20240607);
    const QByteArray likely = QByteArray::fromHex("41807fbfc2c3e0a0ed9fa0eefebbbff0908ff4f5ff");
    QHash<QString, QByteArray> names;
    for (int round = 0; round < 100000; ++round) {
        QByteArray name;
        const int length = 1 + random.bounded(12);
        for (int i = 0; i < length; ++i) {
            name += random.bounded(3) == 0 ? char(1 + random.bounded(255))
                                           : likely.at(random.bounded(int(likely.size())));
        }
        QCOMPARE(faultOf(name), QByteArray());
        const auto known = names.constFind(decodeName(name));
        QVERIFY2(known == names.constEnd() || *known == name, name.toHex().constData());
        names.insert(decodeName(name), name);
    }
}

void tst_Names::byteOrderMarksAreKept()
{
    const QByteArray mark("\xef\xbb\xbf");
    QCOMPARE(decodeName(mark), QString(QChar(0xfeff)));
    QCOMPARE(decodeName(mark + mark), QString(2, QChar(0xfeff)));
    QCOMPARE(decodeName(mark + "a"), QChar(0xfeff) + QStringLiteral("a"));
    QCOMPARE(decodeName("\xff" + mark + mark + "a"),
             QString(QChar(0xdcff)) + QString(2, QChar(0xfeff)) + QStringLiteral("a"));
    QCOMPARE(encodeName(QString(2, QChar(0xfeff))).value_or("none"), mark + mark);
}

void tst_Names::textsThatNameNothingAreRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("a zero") << QString(QChar(u'\0'));
    QTest::newRow("a zero at the end") << QStringLiteral("a") + QChar(u'\0');
    QTest::newRow("a high surrogate") << QString(QChar(0xd800));
    QTest::newRow("a high surrogate before a letter") << QChar(0xdbff) + QStringLiteral("a");
    QTest::newRow("the first low surrogate") << QString(QChar(0xdc00));
    QTest::newRow("an escape of a letter") << QString(QChar(0xdc41));
    QTest::newRow("the last before the escapes") << QString(QChar(0xdc7f));
    QTest::newRow("the first behind the escapes") << QString(QChar(0xdd00));
    QTest::newRow("escapes of a letter with dots")
        << QString(QChar(0xdcc3)) + QString(QChar(0xdca4));
    QTest::newRow("escapes of a byte-order mark")
        << QString(QChar(0xdcef)) + QChar(0xdcbb) + QChar(0xdcbf);
    QTest::newRow("a zero beside an escape") << QString(QChar(0xdcff)) + QChar(u'\0');
}

void tst_Names::textsThatNameNothingAreRefused()
{
    QFETCH(QString, text);
    QVERIFY(!encodeName(text));
    QVERIFY(!encodeName(QStringLiteral("/a/") + text));
}

void tst_Names::everyTextIsRefusedOrNamesItself()
{
    QRandomGenerator random(7062024);
    const char16_t likely[] = {u'a',   u'/',   0xd800, 0xdbff, 0xdc00, 0xdc80, 0xdca4, 0xdcbb,
                               0xdcbf, 0xdcc3, 0xdcef, 0xdcff, 0xdd00, 0xfeff, 0xffff, 0xe4};
    for (int round = 0; round < 100000; ++round) {
        QString text;
        const int length = 1 + random.bounded(8);
        for (int i = 0; i < length; ++i)
            text += QChar(likely[random.bounded(int(std::size(likely)))]);
        if (const auto name = encodeName(text))
            QCOMPARE(decodeName(*name), text);
    }
}

void tst_Names::aPathThatCannotBeIsEmpty()
{
    QCOMPARE(encodedPath(QStringLiteral("/a/b")), QByteArray("/a/b"));
    QCOMPARE(encodedPath(QStringLiteral("/a/") + QChar(0xdcff)), QByteArray("/a/\xff"));
    QCOMPARE(encodedPath(QStringLiteral("/a/") + QChar(0xd800)), QByteArray());
}

QUARN_TEST_MAIN(tst_Names)
#include "tst_names.moc"
