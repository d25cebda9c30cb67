#include "tests/support/testmain.h"
#include "tests/widgets/textinputtest.h"

#include <QClipboard>
#include <QPointer>

namespace
{

void setClipboard(const QString& text)
{
    QGuiApplication::clipboard()->setText(text);
}

QString clipboard()
{
    return QGuiApplication::clipboard()->text();
}

} // namespace

/// The dialog's menu, and what it copies and pastes.
class tst_TextInputMenu : public TextInputTest
{
    Q_OBJECT

    using Code = PhoneKey::Code;

private slots:
    void initTestCase() { loadTexts(QString()); }

    void init()
    {
        begin();
        setClipboard("before");
    }

    void cleanup() { end(); }

    void menuHasCopyAndPaste()
    {
        ZOptionsMenu* menu = findMenu();
        QCOMPARE(menu->count(), 2);
        QCOMPARE(menu->idAt(0), 2);
        QCOMPARE(menu->idAt(1), 4);
        QCOMPARE(menu->textAt(0), QStringLiteral("\t\t\tCopy"));
        QCOMPARE(menu->textAt(1), QStringLiteral("\t\t\tPaste"));
        QVERIFY(menu->isItemEnabled(2) && menu->isItemEnabled(4));
        QVERIFY(isPlain(menu->iconAt(0).toImage(), {0, 0, 16, 16}, Qt::red));
        QVERIFY(isPlain(menu->iconAt(1).toImage(), {0, 0, 16, 16}, Qt::green));
    }

    void menuTextsAreThoseSetBefore()
    {
        dialog_ = std::make_unique<TextInput>(folder_->path() + '/');
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        dialog_->copyText = "\t\t\tKopie";
        dialog_->pasteText = "\t\t\tRein";
        dialog_->Init();
        QCOMPARE(findMenu()->textAt(0), QStringLiteral("\t\t\tKopie"));
        QCOMPARE(findMenu()->textAt(1), QStringLiteral("\t\t\tRein"));
    }

    void menuCopiesTheSelection()
    {
        dialog_->inputText = "copied";
        openAnd([this] {
            pressKey(Code::Modifier);
            QCOMPARE(ZScreen::instance()->active(), findMenu());
            pressKey(Code::Return);
            QCOMPARE(ZScreen::instance()->active(), dialog_.get());
            QCOMPARE(keyReceiver(), edit());
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(clipboard(), QStringLiteral("copied"));
        QCOMPARE(dialog_->inputText, QStringLiteral("copied"));
    }

    void menuPastesOverTheSelection()
    {
        setClipboard("pasted");
        dialog_->inputText = "a.txt";
        openAnd([] {
            pressKey(Code::Modifier);
            pressKey(Code::Down);
            pressKey(Code::SoftLeft);
            type("!");
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(dialog_->inputText, QStringLiteral("pasted!"));
    }

    void menuIsLeftWithoutAChoice()
    {
        dialog_->inputText = "a";
        openAnd([this] {
            pressKey(Code::Modifier);
            pressKey(Code::SoftRight);
            QVERIFY(dialog_->isRunning());
            QCOMPARE(keyReceiver(), edit());
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(dialog_->inputText, QStringLiteral("a"));
        QCOMPARE(clipboard(), QStringLiteral("before"));
    }

    void menuThatIsUpGoesWhenADialogOpens()
    {
        findMenu()->show();
        bool wasUp = true;
        openAnd([this, &wasUp] {
            wasUp = findMenu()->isVisible();
            pressKey(Code::SoftLeft);
        });
        QVERIFY(!wasUp);
    }

    void menuOpensAtTheDialogsTopLeftCorner_data()
    {
        QTest::addColumn<QString>("prompt");
        QTest::newRow("centred") << "Name:";
        QTest::newRow("too high") << QString("many words ").repeated(80);
    }

    void menuOpensAtTheDialogsTopLeftCorner()
    {
        QFETCH(QString, prompt);
        QPoint place;
        openAnd(
            [this, &place] {
                pressKey(Code::Modifier);
                place = findMenu()->pos();
                pressKey(Code::SoftRight);
                pressKey(Code::SoftRight);
            },
            "T", prompt, QString());
        QCOMPARE(place, view()->pos());
    }

    void copyWithoutASelectionLeavesTheClipboard()
    {
        dialog_->inputText = QString();
        openAnd([this] {
            dialog_->Copy();
            pressKey(Code::SoftLeft);
        });
        QCOMPARE(clipboard(), QStringLiteral("before"));
    }

    void pastedLinesBecomeOne_data()
    {
        QTest::addColumn<QString>("clip");
        QTest::addColumn<QString>("text");
        QTest::newRow("one") << "name"
                             << "name";
        QTest::newRow("with its end") << "name\n"
                                      << "name";
        QTest::newRow("two") << "one\ntwo\n"
                             << "one two";
        QTest::newRow("of another system") << "one\r\ntwo\r\n"
                                           << "one two";
        QTest::newRow("nothing but an end") << "\n"
                                            << "a.txt";
        QTest::newRow("nothing") << ""
                                 << "a.txt";
    }

    void pastedLinesBecomeOne()
    {
        QFETCH(QString, clip);
        setClipboard(clip);
        for (const bool byMenu : {true, false}) {
            dialog_->inputText = "a.txt";
            openAnd([this, byMenu] {
                byMenu ? dialog_->Paste()
                       : QTest::keyClick(keyReceiver(), Qt::Key_V, Qt::ControlModifier);
                pressKey(Code::SoftLeft);
            });
            QTEST(dialog_->inputText, "text");
        }
    }

    void menuGoesWithTheDialog()
    {
        const QPointer<ZOptionsMenu> menu = findMenu();
        dialog_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(menu.isNull());
    }

    // The process cannot take a request to quit back, so these come last.
};

QUARN_TEST_MAIN(tst_TextInputMenu)
#include "tst_textinputmenu.moc"
