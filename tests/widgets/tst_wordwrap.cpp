#include "tests/support/testmain.h"
#include "widgets/wordwrap.h"

#include <QRandomGenerator>

namespace
{

constexpr int CharacterWidth = 10;

QStringList wrapped(const QString& text, int usableWidth)
{
    return wrapWords(text, usableWidth, [](char32_t) { return CharacterWidth; });
}

QString withoutBlanks(QString text)
{
    return text.remove(QLatin1Char(' ')).remove(QLatin1Char('\n'));
}

/// Words of up to nine letters between single blanks or line ends.
QString randomText(QRandomGenerator& random)
{
    QString text;
    for (int words = random.bounded(1, 20); words > 0; --words) {
        text += QString(random.bounded(1, 10), QChar(char16_t(random.bounded('a', 'z'))));
        text += QLatin1Char(random.bounded(5) == 0 ? '\n' : ' ');
    }
    return text;
}

} // namespace

class tst_WordWrap : public QObject
{
    Q_OBJECT

private slots:
    // Five characters fit.
    void linesBreakAtTheLastSpaceOrBehindWhatOverflows_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("nothing") << QString() << QStringList();
        QTest::newRow("short") << "abc" << QStringList{"abc"};
        QTest::newRow("just fits") << "abcde" << QStringList{"abcde"};
        QTest::newRow("two words just fit") << "ab cd" << QStringList{"ab cd"};
        QTest::newRow("one too wide keeps what overflows") << "abcdef" << QStringList{"abcdef"};
        QTest::newRow("word broken without hyphen") << "abcdefgh" << QStringList{"abcdef", "gh"};
        QTest::newRow("word broken twice")
            << "abcdefghijklmn" << QStringList{"abcdef", "ghijkl", "mn"};
        QTest::newRow("space dropped") << "aaa bbb" << QStringList{"aaa", "bbb"};
        QTest::newRow("last of several spaces") << "a b ccc" << QStringList{"a b", "ccc"};
        QTest::newRow("width goes on behind the space")
            << "aaa bbb ccc" << QStringList{"aaa", "bbb", "ccc"};
        QTest::newRow("moved word fills its line")
            << "aa bbbb cc" << QStringList{"aa", "bbbb", "cc"};
        QTest::newRow("long word behind a short one")
            << "ab cdefghijk" << QStringList{"ab", "cdefgh", "ijk"};
        QTest::newRow("space at the beginning does not count")
            << " bbbbbbbb" << QStringList{" bbbbb", "bbb"};
        QTest::newRow("space behind a broken word does not count")
            << "abcdef ghijklmn" << QStringList{"abcdef", " ghijk", "lmn"};
        QTest::newRow("space of the line before does not count")
            << "aaa bbbbbbbb" << QStringList{"aaa", "bbbbbb", "bb"};
    }

    void linesBreakAtTheLastSpaceOrBehindWhatOverflows()
    {
        QFETCH(QString, text);
        QTEST(wrapped(text, 5 * CharacterWidth), "lines");
    }

    void paragraphsAreWrappedOnTheirOwn_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("two") << "ab\ncd" << QStringList{"ab", "cd"};
        QTest::newRow("empty one between") << "ab\n\ncd" << QStringList{"ab", "cd"};
        QTest::newRow("line end at the end") << "ab\n" << QStringList{"ab"};
        QTest::newRow("line end at the beginning") << "\nab" << QStringList{"ab"};
        QTest::newRow("only line ends") << "\n\n\n" << QStringList();
        QTest::newRow("width begins anew") << "abcde\nabcde" << QStringList{"abcde", "abcde"};
        QTest::newRow("break at the very end") << "abcdef\ngh" << QStringList{"abcdef", "gh"};
        QTest::newRow("space of the one before does not count")
            << "a b\ncccccccc" << QStringList{"a b", "cccccc", "cc"};
    }

    void paragraphsAreWrappedOnTheirOwn()
    {
        QFETCH(QString, text);
        QTEST(wrapped(text, 5 * CharacterWidth), "lines");
    }

    void eachCharacterCountsWithItsOwnWidth()
    {
        const auto advance = [](char32_t character) { return character == U'm' ? 30 : 5; };
        QCOMPARE(wrapWords("iiiiiiiiii", 50, advance), QStringList{"iiiiiiiiii"});
        QCOMPARE(wrapWords("mmm", 50, advance), (QStringList{"mm", "m"}));
        QCOMPARE(wrapWords("im im im", 80, advance), (QStringList{"im im", "im"}));
    }

    void charactersOutsideTheBasicPlaneAreMeasuredAndKeptWhole()
    {
        const QString face = QString::fromUtf8("\xF0\x9F\x98\x80");
        QList<char32_t> measured;
        const auto advance = [&measured](char32_t character) {
            measured.append(character);
            return CharacterWidth;
        };
        QCOMPARE(wrapWords(face.repeated(4), 2 * CharacterWidth, advance),
                 (QStringList{face.repeated(3), face}));
        QCOMPARE(measured, QList<char32_t>(4, char32_t(0x1F600)));
    }

    void halfACharacterIsNoTrouble()
    {
        const QString half(QChar(0xD83D));
        QCOMPARE(wrapped(half, 50), QStringList{half});
        QCOMPARE(wrapped(half + "a", 50), QStringList{half + "a"});
    }

    void withoutAnyRoomEachCharacterHasItsLine_data()
    {
        QTest::addColumn<int>("usableWidth");
        QTest::newRow("none") << 0;
        QTest::newRow("less than none") << -30;
    }

    void withoutAnyRoomEachCharacterHasItsLine()
    {
        QFETCH(int, usableWidth);
        QCOMPARE(wrapped("abc", usableWidth), (QStringList{"a", "b", "c"}));
    }

    void nothingButBlanksIsLostAndNoLineIsTooWide()
    {
        QRandomGenerator random(20261121);
        for (int round = 0; round < 2000; ++round) {
            const QString text = randomText(random);
            const int room = random.bounded(1, 12);
            const QStringList lines = wrapped(text, room * CharacterWidth);
            QCOMPARE(withoutBlanks(lines.join(QString())), withoutBlanks(text));
            for (const QString& line : lines)
                QVERIFY2(line.size() <= room + 1, qPrintable(line));
        }
    }

    void aVeryLongTextIsWrapped()
    {
        const QStringList lines = wrapped(QString(300000, QLatin1Char('x')), 2 * CharacterWidth);
        QCOMPARE(lines.size(), 100000);
        QCOMPARE(lines.last(), QStringLiteral("xxx"));
    }
};

QUARN_TEST_MAIN(tst_WordWrap)
#include "tst_wordwrap.moc"
