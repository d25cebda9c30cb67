#include "tests/support/listeners.h"
#include "tests/support/testmain.h"
#include "tests/widgets/textinputtest.h"

/// Boxes and the text dialog as programs that read the screen know them.
class tst_SpokenBoxes : public TextInputTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void questionIsReadAndAnswered_data()
    {
        QTest::addColumn<int>("child");
        QTest::addColumn<int>("result");
        QTest::newRow("yes") << 1 << 1;
        QTest::newRow("no") << 2 << 0;
    }

    void questionIsReadAndAnswered()
    {
        QFETCH(int, child);
        QFETCH(int, result);
        kWidget box;
        const int answer = askAnd(box, [&] {
            QAccessibleInterface* alert = spoken(&box);
            QCOMPARE(alert->role(), QAccessible::AlertMessage);
            QCOMPARE(alert->text(QAccessible::Name), QString("Question"));
            QCOMPARE(alert->text(QAccessible::Description), QString("Sure?"));
            QCOMPARE(childNames(*alert), (QStringList{"Sure?", LANG_YES, LANG_NO}));
            QVERIFY(act(alert->child(child), QAccessibleActionInterface::pressAction()));
        });
        QCOMPARE(answer, result);
        QVERIFY(box.isHidden());
    }

    void ruleIsReadAsANewLine()
    {
        kWidget box;
        box.showText("Title", "above<hr>below", 4, QString(), kWidget::Message);
        QCOMPARE(spoken(&box)->text(QAccessible::Description), QString("above\nbelow"));
    }

    void messageIsAnAlertAndCanBeClosed()
    {
        const Listeners listeners;
        kWidget box;
        box.showText("Error", "No such file", 4, QString(), kWidget::Message);
        awaitKeys(box);
        QCOMPARE(listeners.names(QAccessible::Alert), QStringList{"Error"});
        QVERIFY(act(spoken(&box), QAccessibleActionInterface::pressAction()));
        QTRY_VERIFY(box.isHidden());
        QVERIFY(box.isClosed());
    }

    void progressIsBusyAndCanBeCancelled()
    {
        kWidget box;
        box.showProcess("Wait", "above", 4, "below", 1, QString(), 1);
        awaitKeys(box);
        const QAccessibleInterface* alert = spoken(&box);
        QVERIFY(alert->state().busy);
        QCOMPARE(childNames(*alert), (QStringList{"above", "below", LANG_CANCEL}));
        QVERIFY(act(alert->child(2), QAccessibleActionInterface::pressAction()));
        QTRY_VERIFY(box.isClosed());
    }

    void plainBoxCannotBeClosed()
    {
        kWidget box;
        box.showText("Copying", "a.txt", 4, QString(), kWidget::Plain);
        QTRY_VERIFY(hasKeys(box));
        QVERIFY(!act(spoken(&box), QAccessibleActionInterface::pressAction()));
    }

    void newTextOfAShownBoxIsTold()
    {
        kWidget box;
        box.showText("Copying", "0%", 4, QString(), kWidget::Plain);
        awaitKeys(box);
        const Listeners listeners;
        const QAccessible::Id text = QAccessible::uniqueId(spoken(&box)->child(0));
        box.showText("Copying", "50%", 4, QString(), kWidget::Plain);
        QCOMPARE(listeners.names(QAccessible::DescriptionChanged), QStringList{"Copying"});
        QCOMPARE(spoken(&box)->text(QAccessible::Description), QString("50%"));
        // The text is the one that was there, with other words.
        QCOMPARE(QAccessible::uniqueId(spoken(&box)->child(0)), text);
    }

    void answersOfAQuestionAreNotThoseOfTheBoxBefore()
    {
        const Listeners listeners;
        kWidget box;
        box.showProcess("Wait", "above", 4, "below", 1, QString(), 0);
        awaitKeys(box);
        const QAccessible::Id second = QAccessible::uniqueId(spoken(&box)->child(1));
        box.init();
        askAnd(box, [&] {
            QVERIFY(QAccessible::uniqueId(spoken(&box)->child(1)) != second);
            pressKey(PhoneKey::SoftRight);
        });
    }

    void dialogSaysWhatIsToBeTyped()
    {
        const Listeners listeners;
        dialog_->inputText = "a.txt";
        once([this] { return ZScreen::instance()->active() == dialog_.get(); },
             [&] {
                 QAccessibleInterface* spokenDialog = spoken(dialog_.get());
                 QCOMPARE(spokenDialog->role(), QAccessible::Dialog);
                 QCOMPARE(spokenDialog->text(QAccessible::Name), QString("Rename"));
                 QCOMPARE(spokenDialog->text(QAccessible::Description), QString("New name:"));
                 QCOMPARE(childNames(*spokenDialog).mid(0, 3),
                          (QStringList{"New name:", "Yes", "No"}));
                 QCOMPARE(spoken(edit())->role(), QAccessible::EditableText);
                 QCOMPARE(spoken(edit())->text(QAccessible::Name), QString("New name:"));
                 QCOMPARE(spoken(edit())->text(QAccessible::Value), QString("a.txt"));
                 QCOMPARE(spoken(label())->text(QAccessible::Name), QString("New name:"));
                 QCOMPARE(listeners.names(QAccessible::Alert), QStringList{"Rename"});
                 QVERIFY(act(spokenDialog->child(1), QAccessibleActionInterface::pressAction()));
             });
        QCOMPARE(dialog_->showText("Rename", "New name:", QString()), 1);
    }
};

QUARN_TEST_MAIN(tst_SpokenBoxes)
#include "tst_spokenboxes.moc"
