#include "platform/keypadtyping.h"
#include "tests/support/testmain.h"

namespace
{

using Mode = KeypadTyping::Mode;

void switchTo(KeypadTyping& typing, Mode mode)
{
    while (typing.mode() != mode)
        typing.nextMode();
}

/// What the presses of digits write behind `before`, each beginning anew.
QString typed(KeypadTyping& typing, const QString& digits, QString before = QString())
{
    const qsizetype start = before.size();
    for (const QChar digit : digits)
        before += typing.press(digit.digitValue(), false, before);
    return before.mid(start);
}

/// What so many presses of one key leave.
QChar pressedTimes(KeypadTyping& typing, int digit, int times, const QString& before = QString())
{
    QChar last = typing.press(digit, false, before);
    for (int i = 1; i < times; ++i)
        last = typing.press(digit, true, before);
    return last;
}

} // namespace

class tst_KeypadTyping : public QObject
{
    Q_OBJECT

private slots:
    void pressesGoThroughTheLettersOfTheKeyAndRound()
    {
        KeypadTyping typing;
        QString letters;
        for (int times = 1; times <= 9; ++times)
            letters += pressedTimes(typing, 7, times);
        QCOMPARE(letters, QStringLiteral("pqrs7pqrs"));
    }

    void pressOfAnotherKeyBeginsItsOwnLetters()
    {
        KeypadTyping typing;
        QCOMPARE(typing.press(2, false, QString()), QChar('a'));
        QCOMPARE(typing.press(2, true, QString()), QChar('b'));
        QCOMPARE(typing.press(3, true, QString()), QChar('d'));
        QCOMPARE(typing.press(2, true, QString()), QChar('a'));
    }

    void pressAfterTheEndBeginsAnew()
    {
        KeypadTyping typing;
        QCOMPARE(typing.openDigit(), -1);
        typing.press(2, false, QString());
        QCOMPARE(typing.openDigit(), 2);
        typing.end();
        QCOMPARE(typing.openDigit(), -1);
        QCOMPARE(typing.press(2, true, QString()), QChar('a'));
    }

    void modesGoRoundInTheirOrder()
    {
        KeypadTyping typing;
        QStringList names;
        for (int i = 0; i < 5; ++i) {
            names += typing.nameOf(typing.mode());
            typing.nextMode();
        }
        QCOMPARE(names, (QStringList{"abc", "Abc", "ABC", "123", "abc"}));
    }

    void namesOfModesAreInTheUsersLetters_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::newRow("russian") << QStringList{"абв", "Абв", "АБВ", "123"};
        QTest::newRow("greek") << QStringList{"αβγ", "Αβγ", "ΑΒΓ", "123"};
        QTest::newRow("polish") << QStringList{"abc", "Abc", "ABC", "123"};
        // Without capitals of its own it could not tell them apart.
        QTest::newRow("hebrew") << QStringList{"abc", "Abc", "ABC", "123"};
    }

    void namesOfModesAreInTheUsersLetters()
    {
        const KeypadTyping typing{KeypadLetters(QString::fromLatin1(QTest::currentDataTag()))};
        QStringList names;
        for (int mode = 0; mode < KeypadTyping::Modes; ++mode)
            names += typing.nameOf(static_cast<Mode>(mode));
        QTEST(names, "names");
    }

    void smallModeWritesSmallLettersEverywhere()
    {
        KeypadTyping typing;
        QCOMPARE(typed(typing, "2345"), QStringLiteral("adgj"));
    }

    void capitalModeWritesCapitalsEverywhere()
    {
        KeypadTyping typing;
        switchTo(typing, Mode::Capital);
        QCOMPARE(typed(typing, "20345"), QStringLiteral("A DGJ"));
        QCOMPARE(pressedTimes(typing, 7, 4), QChar('S'));
    }

    void sentenceModeWritesACapitalAtTheStartOfASentence_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("text");
        QTest::newRow("start of the field") << ""
                                            << "Ad";
        QTest::newRow("behind a sentence") << "one. "
                                           << "Ad";
        QTest::newRow("behind a dot") << "one."
                                      << "ad";
        QTest::newRow("behind a blank") << "one "
                                        << "ad";
        QTest::newRow("in a word") << "on"
                                   << "ad";
    }

    void sentenceModeWritesACapitalAtTheStartOfASentence()
    {
        QFETCH(QString, before);
        KeypadTyping typing;
        switchTo(typing, Mode::Sentence);
        QTEST(typed(typing, "23", before), "text");
    }

    void furtherPressesKeepTheCapitalOfTheFirst()
    {
        KeypadTyping typing;
        switchTo(typing, Mode::Sentence);
        QCOMPARE(typing.press(2, false, QString()), QChar('A'));
        // The letter itself stands before the cursor by then.
        QCOMPARE(typing.press(2, true, QStringLiteral("A")), QChar('B'));
    }

    void digitModeWritesDigitsAtOnce()
    {
        KeypadTyping typing;
        switchTo(typing, Mode::Digits);
        QCOMPARE(typed(typing, "0123456789"), QStringLiteral("0123456789"));
        QCOMPARE(typing.openDigit(), -1);
        QCOMPARE(pressedTimes(typing, 2, 3), QChar('2'));
    }

    void anotherModeBeginsAnotherLetter()
    {
        KeypadTyping typing;
        typing.press(2, false, QString());
        typing.nextMode();
        QCOMPARE(typing.openDigit(), -1);
    }

    void turkishCapitalsKeepTheirDots()
    {
        KeypadTyping typing{KeypadLetters("turkish")};
        switchTo(typing, Mode::Capital);
        QCOMPARE(pressedTimes(typing, 4, 3), QChar(u'İ'));
        QCOMPARE(pressedTimes(typing, 4, 5), QChar(u'I'));
    }
};

QUARN_TEST_MAIN(tst_KeypadTyping)
#include "tst_keypadtyping.moc"
