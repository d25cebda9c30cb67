#include "platform/keypadletters.h"
#include "tests/support/testmain.h"

class tst_KeypadLetters : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { KeypadLetters::setLanguage(QString()); }

    void keyHasItsLettersInOrderAndThenItsDigit_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("digit");
        QTest::addColumn<QString>("small");
        QTest::addColumn<QString>("capitals");
        const auto row = [](const char* language, int digit, const char* small,
                            const char* capitals) {
            QTest::addRow("%s %d", language, digit) << language << digit << small << capitals;
        };
        row("english", 0, " 0", " 0");
        row("english", 1, ".-_,'!()&@+1", ".-_,'!()&@+1");
        row("english", 2, "abc2", "ABC2");
        row("english", 7, "pqrs7", "PQRS7");
        row("english", 9, "wxyz9", "WXYZ9");
        row("german", 2, "abcä2", "ABCÄ2");
        row("german", 7, "pqrsß7", "PQRSß7");
        row("polish", 9, "wxyzźż9", "WXYZŹŻ9");
        row("turkish", 4, "ghiğı4", "GHİĞI4");
        row("french", 4, "ghiîï4", "GHIÎÏ4");
        row("spanish", 1, ".-_,'!()&@+¿¡1", ".-_,'!()&@+¿¡1");
        row("romanian", 7, "pqrsș7", "PQRSȘ7");
        row("russian", 2, "абвгabc2", "АБВГABC2");
        row("russian", 3, "дежзёdef3", "ДЕЖЗЁDEF3");
        row("ukrainian", 4, "иіїйклghi4", "ИІЇЙКЛGHI4");
        row("greek", 7, "πρσςpqrs7", "ΠΡΣPQRS7");
        row("hebrew", 3, "אבגdef3", "אבגDEF3");
    }

    void keyHasItsLettersInOrderAndThenItsDigit()
    {
        QFETCH(QString, language);
        QFETCH(int, digit);
        const KeypadLetters letters(language);
        QTEST(letters.of(digit), "small");
        QTEST(letters.capitalsOf(digit), "capitals");
    }

    void everyLetterOfALanguageIsOnAKeyOnce_data()
    {
        QTest::addColumn<QString>("alphabet");
        const auto row = [](const char* language, const char* alphabet) {
            QTest::newRow(language) << alphabet;
        };
        row("albanian", "çë");
        row("arabic", "ابتثجحخدذرزسشصضطظعغفقكلمنهوي");
        row("azerbaijani", "çəğıöşü");
        row("belarusian", "абвгдеёжзійклмнопрстуўфхцчшыьэюя");
        row("bosnian", "čćđšž");
        row("bulgarian", "абвгдежзийклмнопрстуфхцчшщъьюя");
        row("catalan", "àçèéíïòóúü");
        row("croatian", "čćđšž");
        row("czech", "áčďéěíňóřšťúůýž");
        row("danish", "æøå");
        row("dutch", "éëïóü");
        row("estonian", "šžõäöü");
        row("finnish", "äöå");
        row("french", "àâæçéèêëîïôœùûüÿ");
        row("german", "äöüß");
        row("greek", "αβγδεζηθικλμνξοπρσςτυφχψωάέήίόύώϊϋΐΰ");
        row("hebrew", "אבגדהוזחטיכךלמםנןסעפףצץקרשת");
        row("hungarian", "áéíóöőúüű");
        row("icelandic", "áðéíóúýþæö");
        row("italian", "àèéìòù");
        row("latvian", "āčēģīķļņšūž");
        row("lithuanian", "ąčęėįšųūž");
        row("macedonian", "абвгдѓежзѕијклљмнњопрстќуфхцчџш");
        row("norwegian", "æøå");
        row("polish", "ąćęłńóśźż");
        row("portuguese", "áâãàçéêíóôõú");
        row("romanian", "ăâîșț");
        row("russian", "абвгдеёжзийклмнопрстуфхцчшщъыьэюя");
        row("serbian", "абвгдђежзијклљмнњопрстћуфхцчџш");
        row("slovak", "áäčďéíĺľňóôŕšťúýž");
        row("slovenian", "čšž");
        row("spanish", "áéíñóúü");
        row("swedish", "åäö");
        row("turkish", "çğıöşü");
        row("ukrainian", "абвгґдеєжзиіїйклмнопрстуфхцчшщьюя");
    }

    void everyLetterOfALanguageIsOnAKeyOnce()
    {
        QFETCH(QString, alphabet);
        const KeypadLetters letters(QString::fromLatin1(QTest::currentDataTag()));
        QString all;
        for (int digit = 0; digit < KeypadLetters::Keys; ++digit) {
            all += letters.of(digit);
            QVERIFY(letters.of(digit).endsWith(QString::number(digit)));
        }
        for (const QChar letter : alphabet + "abcdefghijklmnopqrstuvwxyz 0123456789.,-_")
            QVERIFY2(all.count(letter) == 1, qPrintable(QString(letter)));
    }

    void languageGoesByItsNameOrCodeInAnyCase()
    {
        for (const char* name : {"polish", "Polish", "POLISH", "pl", "PL"})
            QCOMPARE(KeypadLetters(name).of(2), QStringLiteral("abcąć2"));
    }

    void languageThatIsNotKnownHasEnglishLetters()
    {
        for (const char* name : {"", "klingon", "p", "polish ", "../polish"}) {
            for (int digit = 0; digit < KeypadLetters::Keys; ++digit)
                QCOMPARE(KeypadLetters(name).of(digit), KeypadLetters("english").of(digit));
        }
    }

    void usersLanguageIsEnglishUntilItIsTold()
    {
        QCOMPARE(KeypadLetters::current().of(2), QStringLiteral("abc2"));
        KeypadLetters::setLanguage("greek");
        QCOMPARE(KeypadLetters::current().of(2), QStringLiteral("αβγάabc2"));
    }

    void capitalsFollowTheLanguage()
    {
        QCOMPARE(KeypadLetters("turkish").capital(u'i'), QChar(u'İ'));
        QCOMPARE(KeypadLetters("turkish").capital(u'ı'), QChar(u'I'));
        QCOMPARE(KeypadLetters("german").capital(u'i'), QChar(u'I'));
        QCOMPARE(KeypadLetters("german").capital(u'ß'), QChar(u'ß'));
        QCOMPARE(KeypadLetters().capital(u'7'), QChar(u'7'));
    }
};

QUARN_TEST_MAIN(tst_KeypadLetters)
#include "tst_keypadletters.moc"
