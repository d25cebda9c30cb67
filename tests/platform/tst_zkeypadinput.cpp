#include "tests/platform/keypadfixture.h"
#include "tests/support/testmain.h"

#include <QClipboard>

class tst_ZKeypadInput : public KeypadFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void keysWriteText_data()
    {
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* keys, const char* text) {
            QTest::newRow(keys) << QByteArray(keys) << text;
        };
        row("2", "a");
        row("22", "b");
        row("2222", "2");
        row("22222", "a");
        row("23", "ad");
        row("2>2", "aa");
        row("60666", "m o");
        row("00", "0");
        row("0>0", "  ");
        row("1", ".");
        row("11", "-");
        row("#2>2", "Aa");
        row("#21021", "A. A.");
        row("##23", "AD");
        row("###2233", "2233");
        row("####2", "a");
        row("2#2", "aa");
        row("2##2", "aA");
        row("2###2", "a2");
        row("23c", "a");
        row("23cc", "");
        row("23>cc", "");
        row("22c2", "a");
        row("24<<3", "dag");
        row("24<3", "adg");
        row("24><<>3", "adg");
        row("2*14", "a.g");
        row("*c2", "a");
        row("***5", ";");
    }

    void keysWriteText()
    {
        QFETCH(QByteArray, keys);
        press(keys);
        QTEST(field_->text(), "text");
        QCOMPARE(holder_->codes, QList<int>());
    }

    void lettersAreThoseOfTheLanguage()
    {
        KeypadLetters::setLanguage("russian");
        makeField();
        press("66622233");
        QCOMPARE(field_->text(), QStringLiteral("тве"));
    }

    void letterThatMayChangeIsAPartOfTheTextWhereTheCursorIs()
    {
        field_->setText("ab");
        press("<3");
        QCOMPARE(keypad().openLetter(), QStringLiteral("d"));
        QCOMPARE(field_->text(), QStringLiteral("adb"));
        press("3");
        QCOMPARE(field_->text(), QStringLiteral("aeb"));
    }

    void letterThatMayChangeIsUnderlined()
    {
        field_->setText("n");
        press("6");
        const QImage open = field_->grab().toImage();
        press("6>");
        QCOMPARE(field_->text(), QStringLiteral("nn"));
        press("c6");
        QCOMPARE(field_->text(), QStringLiteral("nm"));
        QCOMPARE(field_->grab().toImage(), open);
        press(">");
        QCOMPARE(field_->text(), QStringLiteral("nm"));
        const QImage settled = field_->grab().toImage();
        QVERIFY(settled != open);
        QVERIFY(lowestInk(open) > lowestInk(settled));
    }

    void pressWithinTheTimeTakesTheNextLetter_data()
    {
        QTest::addColumn<int>("pause");
        QTest::addColumn<QString>("text");
        QTest::newRow("at once") << 1 << "b";
        QTest::newRow("just in time") << 900 << "b";
        QTest::newRow("too late") << 901 << "aa";
        QTest::newRow("much later") << 60000 << "aa";
    }

    void pressWithinTheTimeTakesTheNextLetter()
    {
        QFETCH(int, pause);
        keypad().setTimes(ZKeypadInput::LetterTime, Never);
        pressAt('2', 5000);
        pressAt('2', 5000 + quint64(pause));
        QTEST(field_->text(), "text");
    }

    void eachPressGivesTheLetterItsTimeAnew()
    {
        keypad().setTimes(ZKeypadInput::LetterTime, Never);
        for (const int time : {5000, 5800, 6600})
            pressAt('2', quint64(time));
        QCOMPARE(field_->text(), QStringLiteral("c"));
    }

    void letterSettlesWhenItsTimeIsOver()
    {
        keypad().setTimes(1, Never);
        press("2");
        QTRY_COMPARE(keypad().openLetter(), QString());
        QCOMPARE(field_->text(), QStringLiteral("a"));
        press("2");
        QCOMPARE(field_->text(), QStringLiteral("aa"));
    }

    void pressInTimeThatArrivesLateTakesTheNextLetter()
    {
        field_->setText("xz");
        press("<");
        keypad().setTimes(800, Never);
        pressAt('2', 5000);
        QTRY_COMPARE(keypad().openLetter(), QString());
        QCOMPARE(field_->text(), QStringLiteral("xaz"));
        pressAt('2', 5799);
        QCOMPARE(field_->text(), QStringLiteral("xbz"));
        QCOMPARE(keypad().openLetter(), QStringLiteral("b"));
        press(">3");
        QCOMPARE(field_->text(), QStringLiteral("xbdz"));
    }

    void latePressBeginsALetterIfAnythingElseWasDone()
    {
        keypad().setTimes(800, Never);
        pressAt('2', 5000);
        QTRY_COMPARE(keypad().openLetter(), QString());
        press("<>");
        pressAt('2', 5799);
        QCOMPARE(field_->text(), QStringLiteral("aa"));
    }

    void heldDigitWritesItself()
    {
        keypad().setTimes(Never, 1);
        holdKey('7');
        QTRY_COMPARE(field_->text(), QStringLiteral("7"));
        QCOMPARE(keypad().openLetter(), QString());
        releaseKey('7');
        pressKey('2');
        QCOMPARE(field_->text(), QStringLiteral("7a"));
    }

    void heldDigitTakesThePlaceOfALetterThatTimeHasSettled()
    {
        keypad().setTimes(1, 200);
        field_->setText("x");
        holdKey('7');
        QTRY_COMPARE(field_->text(), QStringLiteral("x7"));
    }

    void digitThatIsReleasedIsNotHeld()
    {
        keypad().setTimes(Never, 20);
        press("2");
        QTest::qWait(40); // waits: for what must not come, twice its time
        holdKey('3');
        QTRY_COMPARE(field_->text(), QStringLiteral("a3"));
    }

    void repeatsOfAHeldKeyWriteNothing()
    {
        for (const int key : {int('2'), int('*'), int('#'), int(Code::Clear)}) {
            field_->setText("text");
            holdKey(key);
            const QString before = field_->text();
            const Mode mode = keypad().mode();
            repeatKey(key);
            repeatKey(key);
            QCOMPARE(field_->text(), before);
            QCOMPARE(keypad().mode(), mode);
            releaseKey(key);
            if (sheet() != nullptr)
                sheet()->hide();
        }
    }

    // What reaches a program that is late: not marked as repetitions, but of one time.
    void releaseAndPressOfOneTimeAreARepetition_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("held");
        QTest::newRow("digit") << int('7') << "textp"
                               << "text7";
        QTest::newRow("clear") << int(Code::Clear) << "tex"
                               << "";
    }

    void releaseAndPressOfOneTimeAreARepetition()
    {
        QFETCH(int, key);
        QFETCH(QString, first);
        QFETCH(QString, held);
        field_->setText("text");
        sendFromDevice(QEvent::KeyPress, key, 1000);
        for (const quint64 time : {1500, 1530, 1560}) {
            sendFromDevice(QEvent::KeyRelease, key, time);
            sendFromDevice(QEvent::KeyPress, key, time);
        }
        QCOMPARE(field_->text(), first);
        keypad().setTimes(Never, 100);
        field_->setText("text");
        sendFromDevice(QEvent::KeyPress, key, 2000);
        sendFromDevice(QEvent::KeyRelease, key, 2030);
        sendFromDevice(QEvent::KeyPress, key, 2030);
        QTRY_COMPARE(field_->text(), held);
        sendFromDevice(QEvent::KeyRelease, key, 2900);
        sendFromDevice(QEvent::KeyPress, key, 2900);
        QCOMPARE(field_->text(), held);
    }

    void pressOfAnotherTimeOrKeyIsNoRepetition()
    {
        sendFromDevice(QEvent::KeyPress, '2', 1000);
        sendFromDevice(QEvent::KeyRelease, '2', 1050);
        sendFromDevice(QEvent::KeyPress, '2', 1100);
        sendFromDevice(QEvent::KeyRelease, '2', 1150);
        QCOMPARE(field_->text(), QStringLiteral("b"));
        sendFromDevice(QEvent::KeyPress, '3', 1150);
        QCOMPARE(field_->text(), QStringLiteral("bd"));
    }

    void namesOfBytesKeepThem()
    {
        const QString odd = QChar(0xdc80) + QString("ab") + QChar(0xfeff) + QChar(0xdcff);
        field_->setText(odd);
        press("<2>c");
        QCOMPARE(field_->text(), odd);
        press("c");
        QCOMPARE(field_->text(), QChar(0xdc80) + QString("ab") + QChar(0xdcff));
        press("<2");
        QCOMPARE(field_->text(), QChar(0xdc80) + QString("aab") + QChar(0xdcff));
    }

    void letterReplacesTheSelection()
    {
        field_->setText("text");
        field_->selectAll();
        press("#22");
        QCOMPARE(field_->text(), QStringLiteral("B"));
    }

    void otherKeysSettleTheLetterAndAreLeftToTheParent()
    {
        press("2");
        pressKey(Code::Modifier);
        QCOMPARE(keypad().openLetter(), QString());
        QCOMPARE(field_->text(), QStringLiteral("a"));
        pressKey(Code::SoftLeft);
        pressKey(Code::Up);
        QCOMPARE(holder_->codes, (QList<int>{Code::Modifier, Code::SoftLeft, Code::Up}));
    }

    void focusThatGoesAndClicksSettleTheLetter()
    {
        takeForActive(holder_->window());
        press("2");
        field_->clearFocus();
        QCOMPARE(keypad().openLetter(), QString());
        field_->setFocus();
        press("2");
        QTest::mouseClick(field_, Qt::LeftButton, {}, {4, 10});
        QCOMPARE(keypad().openLetter(), QString());
        QCOMPARE(field_->text(), QStringLiteral("aa"));
        QCOMPARE(field_->cursorPosition(), 0);
    }

    void pasteAndCopyCountTheOpenLetter()
    {
        QGuiApplication::clipboard()->setText("new");
        press("2");
        field_->paste();
        QCOMPARE(field_->text(), QStringLiteral("anew"));
        QCOMPARE(keypad().openLetter(), QString());
    }

    void newTextForgetsTheLetterAndTheMode()
    {
        press("#2");
        field_->setText("text");
        QCOMPARE(field_->text(), QStringLiteral("text"));
        QCOMPARE(keypad().openLetter(), QString());
        QCOMPARE(keypad().mode(), Mode::Small);
        QCOMPARE(badge()->accessibleName(), QStringLiteral("abc"));
        press("2");
        QCOMPARE(field_->text(), QStringLiteral("texta"));
    }

private:
    /// A key as a device sends it, with a time in milliseconds and a scan code.
    static void sendFromDevice(QEvent::Type type, int key, quint64 time)
    {
        const bool isClear = key == Code::Clear;
        QKeyEvent event(type, isClear ? Qt::Key_F3 : Qt::Key(key), Qt::NoModifier, quint32(key), 0,
                        0, isClear ? QString() : QString(QChar(key)));
        event.setTimestamp(time);
        QApplication::sendEvent(keyReceiver(), &event);
    }

    /// The lowest line of a picture of the field, its frame aside, that has something of the text.
    static int lowestInk(const QImage& picture)
    {
        const QRgb ground = picture.pixel(100, picture.height() / 2);
        for (int y = picture.height() - 4; y > 0; --y) {
            // Right of the cursor's place before the first letter, left of that behind the last.
            for (int x = 5; x < 20; ++x) {
                if (picture.pixel(x, y) != ground)
                    return y;
            }
        }
        return -1;
    }
};

QUARN_TEST_MAIN(tst_ZKeypadInput)
#include "tst_zkeypadinput.moc"
