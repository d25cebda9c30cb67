#include "platform/zaccessiblebox.h"
#include "tests/platform/keypadfixture.h"
#include "tests/support/listeners.h"
#include "tests/support/testmain.h"

/// Boxes, fields and the sheet of symbols as programs that read the screen know them.
class tst_ZAccessibleBox : public KeypadFixture
{
    Q_OBJECT

    /// A box that says and does what the test wants.
    class Box : public QWidget, public ZSpokenBox
    {
    public:
        Box() : QWidget(ZScreen::instance())
        {
            hide();
            resize(220, 100);
            ZScreen::instance()->place(this, ZScreen::Layer::Box);
        }

        ZBoxWords boxWords() const override { return words; }
        void chooseAnswer(int answer) override { chosen.append(answer); }

        ZBoxWords words;
        QList<int> chosen;
    };

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void questionIsAnAlertWithItsAnswers()
    {
        Box box;
        box.words = {"Delete", {"a.txt", "sure?"}, {"Yes", "No"}};
        box.show();
        const QAccessibleInterface* alert = spoken(&box);
        QCOMPARE(alert->role(), QAccessible::AlertMessage);
        QCOMPARE(alert->text(QAccessible::Name), QString("Delete"));
        QCOMPARE(alert->text(QAccessible::Description), QString("a.txt\nsure?"));
        QVERIFY(alert->state().modal);
        QCOMPARE(childNames(*alert), (QStringList{"a.txt", "sure?", "Yes", "No"}));
        QCOMPARE(alert->child(1)->role(), QAccessible::StaticText);
        QCOMPARE(alert->child(2)->role(), QAccessible::Button);
    }

    void answersCanBePressed()
    {
        Box box;
        box.words = {"Delete", {"a.txt"}, {"Yes", "No"}};
        box.show();
        const QAccessibleInterface* alert = spoken(&box);
        QVERIFY(!act(alert->child(0), QAccessibleActionInterface::pressAction()));
        QVERIFY(act(alert->child(2), QAccessibleActionInterface::pressAction()));
        QTRY_COMPARE(box.chosen, QList<int>{1});
        box.hide();
        QVERIFY(!act(alert->child(2), QAccessibleActionInterface::pressAction()));
    }

    void answersStandAtTheFoot()
    {
        Box box;
        box.words = {"Delete", {"a.txt"}, {"Yes", "No"}};
        box.show();
        QAccessibleInterface* alert = spoken(&box);
        const QPoint corner = box.mapToGlobal(QPoint(0, 0));
        QCOMPARE(alert->childAt(corner.x() + 5, corner.y() + 5), alert->child(0));
        QCOMPARE(alert->childAt(corner.x() + 5, corner.y() + 98), alert->child(1));
        QCOMPARE(alert->childAt(corner.x() + 215, corner.y() + 98), alert->child(2));
    }

    void messageCanBeClosed()
    {
        Box box;
        box.words = {"Error", {"No such file"}, {}, false, true};
        box.show();
        QVERIFY(act(spoken(&box), QAccessibleActionInterface::pressAction()));
        QTRY_COMPARE(box.chosen, QList<int>{0});
    }

    void workThatGoesOnIsBusyAndStays()
    {
        Box box;
        box.words = {"Copying", {"a.txt"}, {}, true, false};
        box.show();
        QVERIFY(spoken(&box)->state().busy);
        QVERIFY(!act(spoken(&box), QAccessibleActionInterface::pressAction()));
    }

    void boxWithAFieldIsADialog()
    {
        Box box;
        box.words = {"Rename", {"New name:"}, {"Yes", "No"}};
        auto* field = new ZMultiLineEdit(&box, false, 1, "field");
        field->setText("a.txt");
        field->setAccessibleName("New name:");
        const QAccessibleInterface* dialog = spoken(&box);
        QCOMPARE(dialog->role(), QAccessible::Dialog);
        QCOMPARE(childNames(*dialog), (QStringList{"New name:", "Yes", "No", "New name:"}));
        QAccessibleInterface* entry = dialog->child(3);
        QCOMPARE(entry->role(), QAccessible::EditableText);
        QCOMPARE(entry->text(QAccessible::Value), QString("a.txt"));
        QCOMPARE(entry->textInterface()->text(0, 5), QString("a.txt"));
        QCOMPARE(dialog->indexOfChild(entry), 3);
    }

    void partsOfAnotherQuestionAreOthers()
    {
        Box box;
        box.words = {"Delete", {"a.txt"}, {"Yes", "No"}};
        const Listeners listeners;
        const QAccessible::Id yes = QAccessible::uniqueId(spoken(&box)->child(1));
        box.words = {"Copying", {"a.txt"}, {"Cancel"}, true};
        ZAccessible::tellParts(&box);
        ZAccessible::tellContent(&box);
        ZAccessible::tellAlert(&box);
        QVERIFY(QAccessible::uniqueId(spoken(&box)->child(1)) != yes);
        QCOMPARE(listeners.names(QAccessible::NameChanged), QStringList{"Copying"});
        QCOMPARE(listeners.names(QAccessible::DescriptionChanged), QStringList{"Copying"});
        QCOMPARE(listeners.names(QAccessible::Alert), QStringList{"Copying"});
    }

    void badgeSaysTheModeOfTyping()
    {
        pressKey('2');
        QCOMPARE(spoken(badge())->role(), QAccessible::StaticText);
        QCOMPARE(spoken(badge())->text(QAccessible::Name), QString("abc"));
        pressKey('#');
        QCOMPARE(spoken(badge())->text(QAccessible::Name), QString("Abc"));
        QVERIFY(childNames(*spoken(field_)).contains(badge()->accessibleName()));
    }

    void symbolsAreMenuItems()
    {
        takeForActive(ZScreen::instance()->window());
        const Listeners listeners;
        pressKey('*');
        QVERIFY(sheet() != nullptr);
        const QAccessibleInterface* symbols = spoken(sheet());
        QCOMPARE(symbols->role(), QAccessible::PopupMenu);
        QCOMPARE(childNames(*symbols).join(QString()), ZSymbolSheet::symbols());
        QCOMPARE(symbols->child(10)->role(), QAccessible::MenuItem);
        QCOMPARE(symbols->child(10)->text(QAccessible::Accelerator), QString("2"));
        QVERIFY(symbols->child(10)->state().offscreen);
        QVERIFY(!symbols->child(8)->state().offscreen);
        pressKey(PhoneKey::Right);
        QCOMPARE(listeners.names(QAccessible::Focus).value(0), QString(","));
        QVERIFY(act(symbols->child(10), QAccessibleActionInterface::pressAction()));
        QTRY_COMPARE(field_->text(), ZSymbolSheet::symbols().mid(10, 1));
        QVERIFY(sheet()->isHidden());
    }
};

QUARN_TEST_MAIN(tst_ZAccessibleBox)
#include "tst_zaccessiblebox.moc"
