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

    void leftPutsTheCursorBeforeTheExtensionOfASelectedName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("position");
        const auto row = [](const char* name, int position) {
            QTest::newRow(name) << name << position;
        };
        row("notes.txt", 5);
        row("a.b.txt", 3);
        row("archive.tar.gz", 7);
        row(".tar.gz", 4);
        row("x.c", 1);
        row("Dr. Who", 7);
        row("folder", 6);
        row(".hidden", 7);
        row("ends.", 5);
        row("gradle.properties", 6);
        row("my project.code-workspace", 10);
        row("ARCHIVE.TAR.GZ", 7);
        row("page.1", 4);
        row("video.mkv.001", 9);
        row("film 2.3gp", 6);
        row("Report v2.5", 11);
        row("2024.11.22", 10);
        row("Chapter No.5", 12);
        row("Song (feat.X)", 13);
        row("wait.seventeen-letters", 22);
        row("why.sixteen-lettered", 3);
        row("one/two.d/name", 14);
        row("..", 2);
    }

    void leftPutsTheCursorBeforeTheExtensionOfASelectedName()
    {
        QFETCH(QString, name);
        edit_->setText(name);
        edit_->selectAll();
        pressKey(PhoneKey::Left);
        QTEST(edit_->cursorPosition(), "position");
        QVERIFY(!edit_->hasSelectedText());
        QCOMPARE(edit_->text(), name);
    }

    void leftBeforeTheExtensionCountsOddCharacters()
    {
        const QString stem = QChar(0xdc80) + QString(QChar(0xfeff)) + "\n";
        edit_->setText(stem + ".txt");
        edit_->selectAll();
        pressKey(PhoneKey::Left);
        QCOMPARE(edit_->cursorPosition(), int(stem.size()));
    }

    void leftMovesAsEverOtherwise()
    {
        edit_->setText("notes.txt");
        pressKey(PhoneKey::Left);
        QCOMPARE(edit_->cursorPosition(), 8);
        edit_->setSelection(2, 3);
        pressKey(PhoneKey::Left);
        QCOMPARE(edit_->cursorPosition(), 4);
        edit_->selectAll();
        QTest::keyClick(edit_, Qt::Key_Left, Qt::ShiftModifier);
        QCOMPARE(edit_->selectedText(), QStringLiteral("notes.tx"));
    }

    void focusThatComesByTabSelectsNothing()
    {
        for (const auto reason : {Qt::TabFocusReason, Qt::BacktabFocusReason}) {
            edit_->setCursorPosition(2);
            QFocusEvent event(QEvent::FocusIn, reason);
            QApplication::sendEvent(edit_, &event);
            QVERIFY(!edit_->hasSelectedText());
            QCOMPARE(edit_->cursorPosition(), 2);
        }
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

    void whatIsNoTextIsHeldCopiedAndPastedAsItIs_data() { addOddTexts(); }
    void whatIsNoTextIsHeldCopiedAndPastedAsItIs()
    {
        QFETCH(QString, text);
        edit_->setText(text);
        QCOMPARE(edit_->text(), text);
        for (const bool byKeys : {false, true}) {
            edit_->setText(text);
            edit_->selectAll();
            byKeys ? QTest::keyClick(edit_, Qt::Key_X, Qt::ControlModifier) : edit_->cut();
            QCOMPARE(edit_->text(), QString());
            QCOMPARE(QGuiApplication::clipboard()->text(), text);
            byKeys ? QTest::keyClick(edit_, Qt::Key_V, Qt::ControlModifier) : edit_->paste();
            QCOMPARE(edit_->text(), text);
            edit_->selectAll();
            QGuiApplication::clipboard()->setText("other");
            byKeys ? QTest::keyClick(edit_, Qt::Key_C, Qt::ControlModifier) : edit_->copy();
            QCOMPARE(QGuiApplication::clipboard()->text(), text);
        }
    }

    void whatIsNoTextIsOneMarkEach_data()
    {
        QTest::addColumn<QChar>("character");
        QTest::newRow("byte that is no text") << QChar(0xdc80);
        QTest::newRow("last byte") << QChar(0xdcff);
        QTest::newRow("byte-order mark") << QChar(0xfeff);
        QTest::newRow("mark of a direction") << QChar(0x200f);
        QTest::newRow("turn of the direction") << QChar(0x202e);
        QTest::newRow("end of a direction") << QChar(0x2069);
    }

    void whatIsNoTextIsOneMarkEach()
    {
        QFETCH(QChar, character);
        QList<int> widths;
        for (int count = 0; count < 4; ++count) {
            edit_->setText('n' + QString(count, character) + 'n');
            widths.append(inkWidth());
        }
        const int mark = widths.at(1) - widths.at(0);
        QVERIFY2(mark >= 3, qPrintable(QString::number(mark)));
        for (int count = 2; count < 4; ++count)
            QVERIFY(qAbs(widths.at(count) - widths.at(count - 1) - mark) <= 1);
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

    void halvesThatStandForNoByteDoNotBecomeMarks()
    {
        QGuiApplication::clipboard()->setText(QString(QChar(0xdc00)));
        edit_->paste();
        QCOMPARE(edit_->text().size(), 1);
        QVERIFY(edit_->text().at(0).isLowSurrogate());
    }

private:
    static void addOddTexts()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("bytes that are no text") << QChar(0xdc80) + QString("a") + QChar(0xdcff);
        QTest::newRow("byte-order marks") << QString(2, QChar(0xfeff)) + "a" + QChar(0xfeff);
        QTest::newRow("turns of the direction")
            << QString("a") + QChar(0x202e) + "gpj.exe" + QChar(0x202c) + QChar(0x2066);
        QTest::newRow("both") << QString(QChar(0xfeff)) + QChar(0xdcff) + QChar(0xfeff);
        QTest::newRow("a mark behind a letter of two halves")
            << QString::fromUtf8("\xF0\x9F\x90\x80") + QChar(0xfeff);
        QTest::newRow("a mark behind a half") << QString(QChar(0xd83d)) + QChar(0xfeff);
    }

    /// From the first to the last column that has something of the text.
    int inkWidth() const
    {
        edit_->setCursorPosition(0);
        edit_->clearFocus();
        const QImage picture = edit_->grab().toImage();
        const int middle = picture.height() / 2;
        const QRgb ground = picture.pixel(picture.width() - 6, middle);
        const auto isBlank = [&](int x) {
            for (int y = 5; y < picture.height() - 5; ++y) {
                if (picture.pixel(x, y) != ground)
                    return false;
            }
            return true;
        };
        int first = 4;
        int last = picture.width() - 6;
        while (first < last && isBlank(first))
            ++first;
        while (last > first && isBlank(last))
            --last;
        return last - first;
    }

    std::unique_ptr<Holder> holder_;
    ZMultiLineEdit* edit_ = nullptr;
};

QUARN_TEST_MAIN(tst_ZMultiLineEdit)
#include "tst_zmultilineedit.moc"
