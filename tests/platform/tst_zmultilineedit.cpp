#include "platform/keymap.h"
#include "platform/zmultilineedit.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QClipboard>

#include <memory>

namespace
{

/// What holds the field, and notes the keys that it is left.
class Holder : public QWidget
{
public:
    Holder() : QWidget(ZScreen::instance())
    {
        ZScreen::instance()->place(this, ZScreen::Layer::Box);
        resize(ZScreen::Width, ZScreen::Height);
    }

    QList<int> codes;

protected:
    void keyPressEvent(QKeyEvent* event) override { codes.append(PhoneKey::code(*event)); }
};

} // namespace

class tst_ZMultiLineEdit : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        holder_ = std::make_unique<Holder>();
        edit_ = new ZMultiLineEdit(holder_.get(), false, 1, "ZLineEdit");
        holder_->show();
        edit_->setFocus();
        edit_->setText("text");
        edit_->selectAll();
    }

    void cleanup() { holder_.reset(); }

    void fieldHasItsName()
    {
        QCOMPARE(edit_->objectName(), QStringLiteral("ZLineEdit"));
        QCOMPARE(edit_->metaObject()->className(), "ZMultiLineEdit");
    }

    void keysThatMeanNothingToItAreLeftToItsParent_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("left soft key") << int(PhoneKey::SoftLeft);
        QTest::newRow("right soft key") << int(PhoneKey::SoftRight);
        QTest::newRow("modifier") << int(PhoneKey::Modifier);
        QTest::newRow("hide") << int(PhoneKey::Hide);
        QTest::newRow("folder up") << int(PhoneKey::FolderUp);
        QTest::newRow("up") << int(PhoneKey::Up);
        QTest::newRow("down") << int(PhoneKey::Down);
        QTest::newRow("return") << int(PhoneKey::Return);
        QTest::newRow("page up") << int(PhoneKey::PageUp);
    }

    void keysThatMeanNothingToItAreLeftToItsParent()
    {
        QFETCH(int, code);
        pressKey(code);
        QCOMPARE(holder_->codes, QList<int>{code});
        QCOMPARE(edit_->text(), QStringLiteral("text"));
        QCOMPARE(edit_->selectedText(), QStringLiteral("text"));
    }

    void keysThatItUsesAreItsOwn()
    {
        QTest::keyClicks(edit_, "ab1*#");
        QTest::keyClick(edit_, Qt::Key_Backspace);
        for (const int code : {PhoneKey::Left, PhoneKey::Right})
            pressKey(code);
        QCOMPARE(holder_->codes, QList<int>());
        QCOMPARE(edit_->text(), QStringLiteral("ab1*"));
    }

    void textIsPastedInThePlaceOfTheSelection()
    {
        QGuiApplication::clipboard()->setText("new");
        edit_->setSelection(1, 2);
        edit_->paste();
        QCOMPARE(edit_->text(), QStringLiteral("tnewt"));
        QCOMPARE(edit_->cursorPosition(), 4);
    }

    void pastedTextStaysInOneLine_data()
    {
        QTest::addColumn<QString>("clip");
        QTest::addColumn<QString>("text");
        QTest::newRow("one line with its end") << "a\n"
                                               << "a";
        QTest::newRow("many ends") << "a\n\r\n\n"
                                   << "a";
        QTest::newRow("break inside") << "a\nb"
                                      << "a b";
        QTest::newRow("two characters for one break") << "a\r\nb"
                                                      << "a b";
        QTest::newRow("return alone") << "a\rb"
                                      << "a b";
        QTest::newRow("empty lines") << "a\n\nb"
                                     << "a  b";
        QTest::newRow("break at the start") << "\na"
                                            << " a";
        QTest::newRow("nothing") << ""
                                 << "text";
        QTest::newRow("breaks alone") << "\n\n"
                                      << "text";
        QTest::newRow("markup") << "<b>\ta</b>"
                                << "<b>\ta</b>";
    }

    void pastedTextStaysInOneLine()
    {
        QFETCH(QString, clip);
        QGuiApplication::clipboard()->setText(clip);
        edit_->paste();
        QTEST(edit_->text(), "text");
        edit_->setText("text");
        edit_->selectAll();
        QTest::keyClick(edit_, Qt::Key_V, Qt::ControlModifier);
        QTEST(edit_->text(), "text");
    }

    void toolkitsOwnMenuNeverOpens()
    {
        // Outside the screen, which would keep every such menu away.
        ZMultiLineEdit alone(nullptr, false, 1, "");
        alone.show();
        const QPoint point(5, 5);
        QContextMenuEvent event(QContextMenuEvent::Mouse, point, alone.mapToGlobal(point));
        QApplication::sendEvent(&alone, &event);
        QCOMPARE(QApplication::activePopupWidget(), nullptr);
    }

private:
    std::unique_ptr<Holder> holder_;
    ZMultiLineEdit* edit_ = nullptr;
};

QUARN_TEST_MAIN(tst_ZMultiLineEdit)
#include "tst_zmultilineedit.moc"
