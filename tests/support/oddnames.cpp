#include "tests/support/oddnames.h"

#include "tests/support/utf8pieces.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <functional>

namespace
{

constexpr qsizetype LongestName = 255;
/// A kind that has more is thinned more.
constexpr qsizetype ManyNames = 100;
const QByteArray Mark = "\xef\xbb\xbf";

/// Each single byte that can stand between `before` and `after`.
QList<QByteArray> eachByte(const QByteArray& before, const QByteArray& after)
{
    QList<QByteArray> names;
    for (int byte = 1; byte < 256; ++byte)
        if (byte != '/' && (byte != '.' || !before.isEmpty()))
            names.append(before + char(byte) + after);
    return names;
}

/// Each sequence alone, before, behind and between letters.
QList<QByteArray> inPlaces(const QList<QByteArray>& sequences)
{
    QList<QByteArray> names;
    for (const QByteArray& sequence : sequences)
        names += {sequence, sequence + 'b', 'a' + sequence, 'a' + sequence + 'b'};
    return names;
}

QList<QByteArray> longNames()
{
    QList<QByteArray> names{QByteArray(255, 'x'), QByteArray(255, '\xff'), QByteArray(85, '\xff'),
                            QByteArray(254, 'x') + '\x80', '\x80' + QByteArray(254, 'x')};
    names += QByteArray("\xd0\x96").repeated(127) + '\xd0';
    names += Mark.repeated(85);
    return names;
}

QList<OddKind> allKinds()
{
    return {
        {"a byte alone", eachByte("", "")},
        {"a byte inside", eachByte("a", "b")},
        {"cut sequences", inPlaces({"\xc3", "\xe2\x82", "\xe2", "\xf0\x9f\x98", "\xf0\x9f",
                                    "\xc3\xc3\xa9", "\xe2\x82\xe2\x82\xac", "\x80\x80"})},
        {"overlong", inPlaces({"\xc0\xaf", "\xe0\x80\xaf", "\xf0\x80\x80\xaf", "\xc0\x80",
                               "\xc1\x81", "\xe0\x81\x81", "\xe0\x9f\xbf", "\xf0\x82\x82\xac"})},
        {"encoded surrogates",
         inPlaces({"\xed\xa0\x80", "\xed\xb2\x80", "\xed\xb3\xbf", "\xed\xbf\xbf",
                   "\xed\xa0\xbd\xed\xb8\x80", "\xed\xb8\x80\xed\xa0\xbd",
                   "\xed\xa0\xbd\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80\x80"})},
        {"beyond the last character",
         inPlaces({"\xf4\x90\x80\x80", "\xf7\xbf\xbf\xbf", "\xf8\x88\x80\x80\x80",
                   "\xfc\x84\x80\x80\x80\x80", "\xfe", "\xff", "\xff\xfe", "\xfe\xff",
                   "\xff\xfe\x41"})},
        {"the mark",
         {Mark, Mark + Mark, Mark + 'a', Mark + Mark + 'a', 'a' + Mark, 'a' + Mark + 'b',
          Mark + '\x80', '\x80' + Mark, Mark + ' ', Mark + "..", Mark + '.', ".." + Mark,
          "\xef\xbb", "\xef\xbf\xbe", "\xef\xbf\xbd"}},
        {"blanks and breaks",
         {" ",
          "  ",
          "\t",
          "\n",
          "\r",
          "\r\n",
          " a",
          "a ",
          "\ta",
          "a\t",
          "\na",
          "a\n",
          "a\nb",
          "a\r\nb",
          "a\tb",
          "a  b",
          "\xc2\xa0",
          "\xe2\x80\xa8",
          "\x7f",
          "\x1b[2J",
          "a\xe2\x80\xae"
          "b"}},
        {"signs of the shell and of paths",
         {"-",   "--",    "-rf", "--help", "-a",    "*", "?",      "[a-z]",   "~",   "~root", "...",
          "..a", ". ",    ".. ", ";",      "&",     "|", "'",      "!",       "#",   "%1",    "%2",
          "%41", "a%2fb", "a:b", ":a",     "qrc:a", ":", "file:a", "a&amp;b", "<b>a"}},
        {"composed and not",
         {"e\xcc\x81", "\xc3\xa9", "A\xcc\x8a", "\xe2\x84\xab", "\xc3\x85", "\xea\xb0\x80",
          "\xe1\x84\x80\xe1\x85\xa1", "e\xcc\x81\x80", "\xef\xac\x81"}},
        {"no text, with signs of the shell",
         {"a\xff$b", "\xff$(echo b)", "a\xff\"b", "\"\xff\"", "`echo a`\xff", "a\xff\\b", "\xff\\",
          "\\\\\x80", "a\\$b\xc3"}},
        {"the longest", longNames()},
    };
}

using Change = std::function<QByteArray(uchar byte)>;

/// A name with something else in the place of each byte that is no UTF-8.
QByteArray replaced(const QByteArray& name, const Change& change)
{
    QByteArray result;
    qsizetype at = 0;
    for (const Utf8Piece& piece : utf8Pieces(name)) {
        result += piece.valid ? name.mid(at, piece.length) : change(uchar(piece.character));
        at += piece.length;
    }
    return result;
}

QByteArray encoded(char32_t character)
{
    if (character < 0x80)
        return QByteArray(1, char(character));
    QByteArray bytes;
    const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    bytes += char((0xff00 >> (following + 1)) | (character >> (6 * following)));
    for (int i = following - 1; i >= 0; --i)
        bytes += char(0x80 | ((character >> (6 * i)) & 0x3f));
    return bytes;
}

/// As a decoder reads it that only counts the bytes of a sequence.
QByteArray readLeniently(const QByteArray& name)
{
    QList<char32_t> characters;
    for (qsizetype at = 0; at < name.size();) {
        const auto lead = uchar(name.at(at++));
        const int following = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc0 ? 1 : 0;
        char32_t character = following == 0 ? lead : lead & (0x3fu >> following);
        for (int i = 0; i < following && at < name.size(); ++i)
            character = (character << 6) | (uchar(name.at(at++)) & 0x3f);
        const bool pair =
            !characters.isEmpty() && characters.last() >> 10 == 0x36 && character >> 10 == 0x37;
        if (pair)
            character = 0x10000 + ((characters.takeLast() & 0x3ff) << 10) + (character & 0x3ff);
        characters.append(character);
    }
    QByteArray bytes;
    for (const char32_t character : characters)
        bytes += encoded(character);
    return bytes;
}

QByteArray composed(const QByteArray& name, QString::NormalizationForm form)
{
    return QString::fromUtf8(name).normalized(form).toUtf8();
}

QByteArray without(QByteArray name, const QByteArray& part)
{
    return name.replace(part, QByteArray());
}

/// As a shell reads it that is given it between double quotes.
QByteArray readByAShell(const QByteArray& name)
{
    static const QRegularExpression expanded(
        QStringLiteral("\\$\\([^)]*\\)|\\$[a-z]*|`[^`]*`|\"|\\\\(?=[\\\\$`\"])"));
    return QString::fromLatin1(name).remove(expanded).toLatin1();
}

QList<QByteArray> decodedOtherwise(const QByteArray& name)
{
    return {
        replaced(name, [](uchar) { return QByteArray("\xef\xbf\xbd"); }),
        replaced(name, [](uchar) { return QByteArray("?"); }),
        replaced(name, [](uchar) { return QByteArray("_"); }),
        replaced(name, [](uchar) { return QByteArray(); }),
        replaced(name, [](uchar byte) { return encoded(byte); }),
        replaced(name, [](uchar byte) { return encoded(0xdc00U + byte); }),
        replaced(name, [](uchar byte) { return encoded(0xf700U + byte); }),
        replaced(name, [](uchar byte) { return QByteArray(1, char(byte & 0x7f)); }),
        QString::fromUtf8(name).toUtf8(),
        QString::fromUtf8(name).toLatin1(),
        QString::fromLatin1(name).toUtf8(),
        readLeniently(name),
        readByAShell(name),
        QString::fromUtf8(readByAShell(name)).toUtf8(),
    };
}

QList<QByteArray> changedAsText(const QByteArray& name)
{
    return {
        name.startsWith(Mark) ? name.mid(Mark.size()) : name,
        without(name, Mark),
        Mark + name,
        name.trimmed(),
        name.simplified(),
        without(name, "\n"),
        without(name, "\r"),
        name.left(name.indexOf('\n')),
        name.left(254),
        name.mid(1),
        QByteArray::fromPercentEncoding(name),
        composed(name, QString::NormalizationForm_C),
        composed(name, QString::NormalizationForm_D),
        composed(name, QString::NormalizationForm_KC),
    };
}

bool isName(const QByteArray& name)
{
    return !name.isEmpty() && name.size() <= LongestName && name != "." && name != ".." &&
           !name.contains('/') && !name.contains('\0');
}

} // namespace

const QList<OddKind>& oddKinds()
{
    static const QList<OddKind> kinds = allKinds();
    return kinds;
}

const QList<OddKind>& thinnedOddKinds()
{
    static const QList<OddKind> kinds = [] {
        QList<OddKind> thinned;
        for (const OddKind& kind : oddKinds()) {
            const int step = kind.names.size() > ManyNames ? 16 : 3;
            QList<QByteArray> names;
            for (qsizetype i = thinned.size() % 3; i < kind.names.size(); i += step)
                names.append(kind.names.at(i));
            thinned.append({kind.title, names});
        }
        return thinned;
    }();
    return kinds;
}

const QList<QByteArray>& namesForEach(int kind)
{
    return (kind == BytesInside ? thinnedOddKinds() : oddKinds()).at(kind).names;
}

void addOddKinds()
{
    QTest::addColumn<int>("kind");
    for (int kind = 0; kind < oddKinds().size(); ++kind)
        QTest::newRow(oddKinds().at(kind).title) << kind;
}

QList<QByteArray> twinsOf(const QByteArray& name)
{
    QSet<QByteArray> twins;
    for (const QByteArray& twin : decodedOtherwise(name) + changedAsText(name))
        if (isName(twin) && twin != name)
            twins.insert(twin);
    QList<QByteArray> sorted(twins.begin(), twins.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

bool survivesTheShell(const QByteArray& name)
{
    // What is no text is kept from the shell's reading.
    if (!QByteArrayView(name).isValidUtf8())
        return true;
    return std::none_of(name.begin(), name.end(), [](char byte) {
        return byte == '"' || byte == '$' || byte == '`' || byte == '\\';
    });
}
