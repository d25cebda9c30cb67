// Typing in the dialog with the keys of a phone.

#include "tests/support/debuglines.h"
#include "tests/support/testmain.h"
#include "tests/widgets/textinputtest.h"

class tst_TextInputTyping : public TextInputTest
{
    Q_OBJECT

    using Code = PhoneKey::Code;

private slots:
    void init() { begin(); }
    void cleanup()
    {
        setKeypad(false);
        end();
    }

    void clearKeyDeletesBeforeTheCursor()
    {
        dialog_->inputText = "a.txt";
        const DebugLines lines;
        openAnd([] {
            QTest::keyClick(keyReceiver(), Qt::Key_End);
            pressKey(Code::Clear);
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(dialog_->inputText, QStringLiteral("a.tx"));
        QCOMPARE(lines.all(), QStringList("KEY: 4152"));
    }

    void leftOfTheStartTextLeadsBeforeTheExtension()
    {
        dialog_->inputText = "a.txt";
        openAnd([] {
            pressKey(Code::Left);
            type("b");
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(dialog_->inputText, QStringLiteral("ab.txt"));
    }

    void letterThatMayStillChangeIsInTheAnswer()
    {
        setKeypad(true);
        const QList<std::function<void()>> answers{
            [] { pressKey(Code::SoftLeft); },
            [this] { click(view()->geometry().bottomLeft() + QPoint(30, -5)); },
        };
        for (const auto& answer : answers) {
            dialog_->inputText = "a.txt";
            QCOMPARE(openAnd([&answer] {
                         type("3355");
                         answer();
                     }),
                     1);
            QCOMPARE(dialog_->inputText, QStringLiteral("ek"));
        }
    }

    void eachDialogBeginsWithSmallLetters()
    {
        setKeypad(true);
        for (int i = 0; i < 2; ++i) {
            dialog_->inputText = QString();
            openAnd([] {
                type("2##3");
                pressKey(Code::SoftLeft);
            });
            QCOMPARE(dialog_->inputText, QStringLiteral("aD"));
        }
    }

    void endOfADialogClosesTheSheetOfSymbols()
    {
        setKeypad(true);
        bool wasOpen = false;
        openAnd([this, &wasOpen] {
            type("*");
            wasOpen = ZScreen::instance()->active() != dialog_.get();
            dialog_->hide();
            QCOMPARE(ZScreen::instance()->active(), nullptr);
            dialog_->show();
            pressKey(Code::SoftRight);
        });
        QVERIFY(wasOpen);
    }
};

QUARN_TEST_MAIN(tst_TextInputTyping)
#include "tst_textinputtyping.moc"
