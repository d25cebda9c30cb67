#include "platform/zsoftkey.h"
#include "tests/support/debuglines.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"
#include "tests/widgets/textinputtest.h"

class tst_TextInput : public TextInputTest
{
    Q_OBJECT

    using Code = PhoneKey::Code;

private slots:
    void initTestCase() { loadTexts(QString()); }

    void init() { begin(); }
    void cleanup() { end(); }

    void newDialogFillsTheScreenAndIsHidden()
    {
        QVERIFY(dialog_->isHidden());
        QVERIFY(!dialog_->isRunning());
        QCOMPARE(dialog_->geometry(), QRect(0, 0, 240, 320));
        QCOMPARE(dialog_->objectName(), QStringLiteral("TextInput"));
        QCOMPARE(dialog_->metaObject()->className(), "TextInput");
        QCOMPARE(dialog_->metaObject()->superClass()->className(), "QWidget");
        QVERIFY(dialog_->metaObject()->indexOfSlot("Copy()") >= 0);
        QVERIFY(dialog_->metaObject()->indexOfSlot("Paste()") >= 0);
        QCOMPARE(view()->width(), 220);
        QCOMPARE(label()->width(), 220);
        QCOMPARE(edit()->width(), 215);
        QVERIFY(dialog_->inputText.isEmpty());
    }

    void textsAreEnglishUntilTheyAreSet()
    {
        QCOMPARE(dialog_->copyText, QStringLiteral("\t\t\tCopy"));
        QCOMPARE(dialog_->pasteText, QStringLiteral("\t\t\tPaste"));
        QCOMPARE(dialog_->yesText, QStringLiteral("Yes"));
        QCOMPARE(dialog_->noText, QStringLiteral("No"));
    }

    void confirmingWithoutTypingGivesTheStartText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("usual") << "a.txt";
        QTest::newRow("empty") << QString();
        QTest::newRow("blanks") << "  a  ";
        QTest::newRow("markup") << "<b>&amp;";
        QTest::newRow("letters") << QString::fromUtf8("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
        QTest::newRow("line break") << "a\nb";
        QTest::newRow("tab") << "a\tb";
        QTest::newRow("longest name") << QString(255, QLatin1Char('W'));
        QTest::newRow("over-long name") << QString(5000, QLatin1Char('n'));
        QTest::newRow("byte-order marks") << QString(2, QChar(0xfeff)) + "a" + QChar(0xfeff);
        QTest::newRow("bytes that are no text")
            << QChar(0xdcff) + QString("a") + QChar(0xdc80) + QChar(0xdc80);
        QTest::newRow("a mark behind a letter of two halves")
            << QString::fromUtf8("\xF0\x9F\x90\x80") + QChar(0xfeff);
        QTest::newRow("breaks of Unicode") << QString(QChar(0x2028)) + QChar(0x2029) + QChar(0x85);
        QTest::newRow("not for a name") << "/a//b/";
    }

    void confirmingWithoutTypingGivesTheStartText()
    {
        QFETCH(QString, text);
        dialog_->inputText = text;
        QCOMPARE(openAnd([] { pressKey(Code::SoftLeft); }), 1);
        QCOMPARE(dialog_->inputText, text);
        QVERIFY(dialog_->isHidden());
        QVERIFY(!dialog_->isRunning());
    }

    void typingReplacesTheStartText()
    {
        dialog_->inputText = "a.txt";
        const int answer = openAnd([this] {
            QCOMPARE(edit()->selectedText(), QStringLiteral("a.txt"));
            type("b c");
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(answer, 1);
        QCOMPARE(dialog_->inputText, QStringLiteral("b c"));
    }

    void cancellingKeepsWhatWasTyped()
    {
        dialog_->inputText = "a.txt";
        const int answer = openAnd([] {
            type("b");
            pressKey(Code::SoftRight);
        });
        QCOMPARE(answer, 0);
        QCOMPARE(dialog_->inputText, QStringLiteral("b"));
        QVERIFY(dialog_->isHidden());
        QVERIFY(!dialog_->isRunning());
    }

    void textIsEditedWhereTheCursorIs()
    {
        dialog_->inputText = "ace";
        openAnd([] {
            QTest::keyClick(keyReceiver(), Qt::Key_Home);
            type("0");
            pressKey(Code::Right);
            type("b");
            QTest::keyClick(keyReceiver(), Qt::Key_End);
            QTest::keyClick(keyReceiver(), Qt::Key_Backspace);
            type("E");
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(dialog_->inputText, QStringLiteral("0abcE"));
    }

    void digitsAndSignsAreTyped()
    {
        openAnd([] {
            type("0123456789*#");
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(dialog_->inputText, QStringLiteral("0123456789*#"));
    }

    void eachDialogStartsWithItsOwnTextAndAnswer()
    {
        for (const int confirmed : {0, 1, 0, 1}) {
            dialog_->inputText = QString::number(confirmed);
            QCOMPARE(openAnd([confirmed] {
                         pressKey(confirmed != 0 ? Code::SoftLeft : Code::SoftRight);
                     }),
                     confirmed);
            QCOMPARE(dialog_->inputText, QString::number(confirmed));
        }
    }

    void otherKeysLeaveTheDialogOpenAndTheTextAsItIs_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("up") << int(Code::Up);
        QTest::newRow("down") << int(Code::Down);
        QTest::newRow("page up") << int(Code::PageUp);
        QTest::newRow("page down") << int(Code::PageDown);
        QTest::newRow("return") << int(Code::Return);
        QTest::newRow("enter") << int(Code::Enter);
        QTest::newRow("hide") << int(Code::Hide);
        QTest::newRow("music") << int(Code::Music);
    }

    void otherKeysLeaveTheDialogOpenAndTheTextAsItIs()
    {
        QFETCH(int, code);
        dialog_->inputText = "a.txt";
        const DebugLines lines;
        bool stillOpen = false;
        openAnd([this, code, &stillOpen] {
            const QPoint place = label()->pos();
            pressKey(code);
            stillOpen = dialog_->isRunning() && dialog_->isVisible() && label()->pos() == place;
            pressKey(Code::SoftLeft);
        });
        QVERIFY(stillOpen);
        QCOMPARE(dialog_->inputText, QStringLiteral("a.txt"));
        QCOMPARE(lines.all(),
                 (QStringList{QStringLiteral("KEY: %1").arg(code), QStringLiteral("KEY: 4152")}));
    }

    void everyAnswerKeyIsLogged()
    {
        const DebugLines lines;
        openAnd([] { pressKey(Code::SoftRight); });
        QCOMPARE(lines.all(), QStringList("KEY: 4154"));
    }

    void keysOfTodaysKeyboardsAnswer()
    {
        QCOMPARE(openAnd([] { QTest::keyClick(keyReceiver(), Qt::Key_Menu); }), 1);
        QCOMPARE(openAnd([] { QTest::keyClick(keyReceiver(), Qt::Key_Escape); }), 0);
    }

    void keyHeldFromBeforeDoesNotAnswer()
    {
        for (const int code : {int(Code::SoftLeft), int(Code::SoftRight)}) {
            bool stillOpen = false;
            openAnd([this, code, &stillOpen] {
                repeatKey(code);
                releaseKey(code);
                stillOpen = dialog_->isRunning() && dialog_->isVisible();
                pressKey(Code::SoftRight);
            });
            QVERIFY(stillOpen);
        }
    }

    void dialogThatIsNotOpenHidesWithAnyKeyButTheArrows_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("hides");
        QTest::newRow("hide") << int(Code::Hide) << true;
        QTest::newRow("yes") << int(Code::SoftLeft) << true;
        QTest::newRow("no") << int(Code::SoftRight) << true;
        QTest::newRow("up") << int(Code::Up) << false;
        QTest::newRow("down") << int(Code::Down) << false;
    }

    void dialogThatIsNotOpenHidesWithAnyKeyButTheArrows()
    {
        QFETCH(int, code);
        QFETCH(bool, hides);
        dialog_->show();
        pressKey(code);
        QCOMPARE(dialog_->isHidden(), hides);
        dialog_->hide();
    }

    void clickOnAHalfOfTheKeyBarAnswers()
    {
        for (const QString& prompt : {QString("Name:"), QString("many words ").repeated(80)}) {
            const auto clickAt = [this](int x) {
                return [this, x] { click(view()->geometry().bottomLeft() + QPoint(x, -5)); };
            };
            QCOMPARE(openAnd(clickAt(30), "T", prompt), 1);
            QCOMPARE(openAnd(clickAt(190), "T", prompt), 0);
        }
    }

    void barBelowSaysAndDoesWhatTheKeysDo()
    {
        const auto main = showMainWidget();
        ZSoftKey bar(QString(), main.get(), main.get());
        bar.setText(ZSoftKey::Left, "Options");
        bar.setGeometry(0, 300, 240, 20);
        bar.show();
        const auto texts = [&bar] { return bar.shownText(0) + '|' + bar.shownText(1); };
        for (const bool yes : {true, false}) {
            QString seen;
            QString overMenu;
            QCOMPARE(openAnd([&] {
                         seen = texts();
                         pressKey(Code::Modifier);
                         overMenu = texts();
                         pressKey(Code::SoftRight);
                         seen += texts();
                         click({yes ? 20 : 220, 310});
                     }),
                     yes ? 1 : 0);
            QCOMPARE(seen, QString("Yes|NoYes|No"));
            QCOMPARE(overMenu, QString("Select|Back"));
            QCOMPARE(texts(), QString("Options|"));
        }
    }

    void barThatThePageReachesIntoLeavesItTheWordsAndAnswers()
    {
        const auto main = showMainWidget();
        ZSoftKey bar(QString(), main.get(), main.get());
        bar.setText(ZSoftKey::Left, "Options");
        for (const bool yes : {true, false}) {
            QString seen;
            const auto look = [&] {
                seen = bar.shownText(0) + '|' + bar.shownText(1);
                click({yes ? 20 : 220, 318});
            };
            QCOMPARE(openAnd(look, "T", QString("many words ").repeated(80)), yes ? 1 : 0);
            QCOMPARE(seen, QString("|"));
        }
    }

    void tapForTheMenuDoesNotAnswer()
    {
        int still = 0;
        openAnd([&] {
            for (const QPoint point :
                 {QPoint(220, 310), view()->geometry().bottomLeft() + QPoint(190, -5)}) {
                pressKey(Code::Modifier);
                click(point);
                still += findMenu()->isHidden() && dialog_->isRunning() ? 1 : 0;
            }
        });
        QCOMPARE(still, 2);
    }

    void clickElsewhereDoesNotAnswer()
    {
        dialog_->inputText = "a";
        bool stillOpen = false;
        openAnd([this, &stillOpen] {
            click(view()->geometry().topLeft() + QPoint(30, 5));
            click({2, 2});
            click({120, 299});
            click(edit()->mapTo(ZScreen::instance(), edit()->rect().center()));
            stillOpen = dialog_->isRunning() && dialog_->isVisible();
            pressKey(Code::SoftRight);
        });
        QVERIFY(stillOpen);
    }

    void focusComesBackToWhatHadIt()
    {
        QWidget window(ZScreen::instance());
        ZScreen::instance()->place(&window, ZScreen::Layer::Main);
        window.resize(ZScreen::Width, ZScreen::Height);
        QLineEdit field(&window);
        window.show();
        field.setFocus();
        openAnd([] {
            type("x");
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(keyReceiver(), &field);
        QVERIFY(field.text().isEmpty());
    }

    void questionAboveTheDialogIsAnsweredFirst()
    {
        kWidget question;
        int inner = -1;
        const int answer = openAnd([this, &question, &inner] {
            type("typed");
            inner = askAnd(question, [] { pressKey(Code::SoftRight); });
            QVERIFY(dialog_->isRunning() && dialog_->isVisible());
            QCOMPARE(keyReceiver(), edit());
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(inner, 0);
        QCOMPARE(answer, 1);
        QCOMPARE(dialog_->inputText, QStringLiteral("typed"));
    }

    void pathOfAFolderReachesToItsLastSlash_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("folder");
        QTest::newRow("file") << "/a/b/c"
                              << "/a/b/";
        QTest::newRow("folder") << "/a/b/"
                                << "/a/b/";
        QTest::newRow("top") << "/a"
                             << "/";
        QTest::newRow("name alone") << "a"
                                    << "";
    }

    void pathOfAFolderReachesToItsLastSlash()
    {
        QFETCH(QString, path);
        QTEST(TextInput::getProgramDir(path), "folder");
    }

    void endOfTheProgramCancelsAndKeepsTheText()
    {
        QCOMPARE(openAnd([] {
                     type("typed");
                     pressKey(Code::Modifier);
                     ZApplication::quit();
                 }),
                 0);
        QCOMPARE(dialog_->inputText, QStringLiteral("typed"));
        QVERIFY(dialog_->isHidden() && !dialog_->isRunning());
    }

    void dialogWhileTheProgramEndsIsCancelledAtOnce()
    {
        QVERIFY(ZApplication::isQuitting());
        dialog_->inputText = "a";
        QCOMPARE(dialog_->showText("T", "P", QString()), 0);
        QCOMPARE(dialog_->inputText, QStringLiteral("a"));
        QVERIFY(dialog_->isHidden());
    }
};

QUARN_TEST_MAIN(tst_TextInput)
#include "tst_textinput.moc"
