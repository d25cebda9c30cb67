#include "tests/platform/keypadfixture.h"
#include "tests/support/testmain.h"

class tst_ZKeypadField : public KeypadFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void clearKeyDeletesBeforeTheCursor()
    {
        field_->setText("text");
        press("<<c");
        QCOMPARE(field_->text(), QStringLiteral("txt"));
        QCOMPARE(field_->cursorPosition(), 1);
        press("cc");
        QCOMPARE(field_->text(), QStringLiteral("xt"));
    }

    void clearKeyDeletesTheSelection()
    {
        field_->setText("text");
        field_->selectAll();
        press("c");
        QCOMPARE(field_->text(), QString());
    }

    void heldClearKeyEmptiesTheField()
    {
        for (const bool hasKeypad : {true, false}) {
            setKeypad(hasKeypad);
            keypad().setTimes(Never, 1);
            field_->setText("a long text");
            field_->setCursorPosition(3);
            holdKey(Code::Clear);
            QTRY_COMPARE(field_->text(), QString());
            releaseKey(Code::Clear);
        }
    }

    void clearKeyWorksWithAKeyboardToo()
    {
        setKeypad(false);
        field_->setText("text");
        press("<c");
        QCOMPARE(field_->text(), QStringLiteral("tet"));
        QCOMPARE(holder_->codes, QList<int>());
    }

    void keyboardRepeatsItsBackspace()
    {
        setKeypad(false);
        keypad().setTimes(Never, 1);
        field_->setText("a long text");
        for (int i = 0; i < 3; ++i) {
            QKeyEvent event(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier, QString(), i > 0);
            QApplication::sendEvent(field_, &event);
        }
        QCOMPARE(field_->text(), QStringLiteral("a long t"));
    }

    void backspaceIsTheClearKeyOfAKeypad()
    {
        keypad().setTimes(Never, 1);
        field_->setText("a long text");
        QTest::keyPress(field_, Qt::Key_Backspace);
        QTRY_COMPARE(field_->text(), QString());
    }

    void keyboardTypesAsEver()
    {
        setKeypad(false);
        QTest::keyClicks(field_, "22*#ab0");
        QCOMPARE(field_->text(), QStringLiteral("22*#ab0"));
        QVERIFY(badge() == nullptr || badge()->isHidden());
        QVERIFY(sheet() == nullptr);
    }

    void lettersOfAKeyboardAreTypedBesideAKeypadsToo()
    {
        QTest::keyClicks(field_, "2x");
        QCOMPARE(field_->text(), QStringLiteral("ax"));
    }

    void keysWithControlAreTheToolkits()
    {
        field_->setText("text");
        press("2");
        QTest::keyClick(field_, Qt::Key_2, Qt::ControlModifier);
        QTest::keyClick(field_, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(field_->text(), QStringLiteral("texta"));
        QCOMPARE(field_->selectedText(), QStringLiteral("texta"));
    }

    void badgeSaysTheMode()
    {
        QStringList names;
        for (int i = 0; i < 4; ++i) {
            names += badge()->accessibleName();
            press("#");
        }
        QCOMPARE(names, (QStringList{"abc", "Abc", "ABC", "123"}));
        QVERIFY(badge()->isVisible());
    }

    void badgeIsFourteenHighAtTheRightAndHidesNoText()
    {
        const QRect place = badge()->geometry();
        QCOMPARE(place.height(), 14);
        QVERIFY(field_->rect().adjusted(2, 2, -2, -2).contains(place));
        QVERIFY(place.right() > field_->width() - 8);
        field_->setText(QString(300, 'W'));
        const QImage picture = field_->grab().toImage();
        for (int y = 3; y < picture.height() - 3; ++y)
            QCOMPARE(picture.pixel(place.left() - 1, y), picture.pixel(place.left() - 1, 3));
        field_->resize(180, field_->height());
        QVERIFY(badge()->geometry().right() < 180);
    }

    void badgeLooksDifferentInEachMode()
    {
        QList<QImage> pictures;
        for (int i = 0; i < 4; ++i) {
            const QImage picture = badge()->grab().toImage();
            QVERIFY(!pictures.contains(picture));
            pictures.append(picture);
            press("#");
        }
        QCOMPARE(badge()->grab().toImage(), pictures.first());
    }

    void badgeComesAndGoesWithTheKeypad()
    {
        setKeypad(false);
        makeField();
        QVERIFY(badge() == nullptr);
        pressToolkitKey(Qt::Key_Select);
        QVERIFY(badge()->isVisible());
        pressToolkitKey(Qt::Key_A, "a");
        QVERIFY(badge()->isHidden());
        QCOMPARE(field_->textMargins(), QMargins());
        QCOMPARE(field_->text(), QStringLiteral("a"));
    }

    void firstKeyThatOnlyAKeypadHasTurnsItOn_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("select") << int(Qt::Key_Select);
        QTest::newRow("call") << int(Qt::Key_Call);
        QTest::newRow("hang up") << int(Qt::Key_Hangup);
        QTest::newRow("first soft key") << int(Qt::Key_Context1);
    }

    void firstKeyThatOnlyAKeypadHasTurnsItOn()
    {
        QFETCH(int, key);
        setKeypad(false);
        press("2");
        QCOMPARE(field_->text(), QStringLiteral("2"));
        pressToolkitKey(key);
        press("2");
        QCOMPARE(field_->text(), QStringLiteral("2a"));
    }

    void keypadsOwnDigitsWriteLettersFromTheFirst()
    {
        setKeypad(false);
        for (const quint32 symbol : {0x10081202U, 0x10081202U, 0x1008120bU, 0x10081203U}) {
            for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
                QKeyEvent event(type, Qt::Key_unknown, Qt::NoModifier, 0, symbol, 0);
                QApplication::sendEvent(field_, &event);
            }
        }
        QCOMPARE(field_->text(), QStringLiteral("bd"));
        QCOMPARE(keypad().mode(), Mode::Sentence);
    }

    void sheetLiesBesideTheFieldAndGivesItsSymbol()
    {
        field_->setText("text");
        field_->setSelection(1, 2);
        press("*");
        QCOMPARE(ZScreen::instance()->active(), sheet());
        QVERIFY(!sheet()->geometry().intersects(field_->geometry()));
        press("4");
        QCOMPARE(ZScreen::instance()->active(), holder_.get());
        QCOMPARE(keyReceiver(), field_);
        QCOMPARE(field_->text(), QStringLiteral("t_t"));
    }

    void sheetThatIsClosedLeavesTheText()
    {
        for (const int key : {int(Code::Clear), int(Code::SoftRight)}) {
            field_->setText("text");
            field_->selectAll();
            press("*");
            QCOMPARE(ZScreen::instance()->active(), sheet());
            pressKey(key);
            QCOMPARE(keyReceiver(), field_);
            QCOMPARE(field_->text(), QStringLiteral("text"));
            QCOMPARE(field_->selectedText(), QStringLiteral("text"));
        }
        QCOMPARE(holder_->codes, QList<int>());
    }

    void sheetGoesWithTheField()
    {
        press("*");
        QVERIFY(sheet()->isVisible());
        field_->hide();
        QVERIFY(sheet()->isHidden());
    }
};

QUARN_TEST_MAIN(tst_ZKeypadField)
#include "tst_zkeypadfield.moc"
