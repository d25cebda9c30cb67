#include "platform/keymap.h"
#include "platform/zoptionsmenu.h"
#include "platform/zscreen.h"
#include "platform/zsoftkey.h"
#include "platform/zsymbolsheet.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QSet>
#include <QSignalSpy>

#include <memory>

class tst_ZSymbolSheet : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        below_ = std::make_unique<QWidget>(ZScreen::instance());
        ZScreen::instance()->place(below_.get(), ZScreen::Layer::Main);
        below_->resize(ZScreen::Width, ZScreen::Height);
        below_->show();
        sheet_ = new ZSymbolSheet(below_.get());
        spy_ = std::make_unique<QSignalSpy>(sheet_, &ZSymbolSheet::chosen);
        sheet_->openBeside(Field);
    }

    void cleanup()
    {
        spy_.reset();
        below_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void softKeysBelowSayWhatTheyDoInIt()
    {
        QCOMPARE(ZScreen::instance()->softKeys().texts, ZOptionsMenu::softKeyTexts());
        ZScreen::instance()->softKeys().tapped(ZSoftKey::Right);
        QVERIFY(sheet_->isHidden());
        QVERIFY(spy_->isEmpty());
        sheet_->openBeside(Field);
        ZScreen::instance()->softKeys().tapped(ZSoftKey::Left);
        QVERIFY(sheet_->isHidden());
        QCOMPARE(spy_->size(), 1);
    }

    void symbolsAreAllDifferentAndFillTheSheet()
    {
        const QString symbols = ZSymbolSheet::symbols();
        QCOMPARE(symbols.size() % ZSymbolSheet::OnPage, 0);
        QCOMPARE(QSet<QChar>(symbols.begin(), symbols.end()).size(), symbols.size());
        // All that ASCII has but letters, digits and the blank.
        for (char character = '!'; character <= '~'; ++character) {
            if (!QChar(character).isLetterOrNumber())
                QVERIFY2(symbols.contains(character), qPrintable(QString(character)));
        }
    }

    void digitChoosesWhatStandsInItsPlace()
    {
        for (int digit = 1; digit <= 9; ++digit) {
            sheet_->openBeside(Field);
            pressKey('0' + digit);
            QCOMPARE(takeChosen(), ZSymbolSheet::symbols().mid(digit - 1, 1));
            QVERIFY(sheet_->isHidden());
        }
    }

    void starTurnsToTheNextNineAndHashBack()
    {
        pressKey('*');
        pressKey('3');
        QCOMPARE(takeChosen(), ZSymbolSheet::symbols().mid(9 + 2, 1));
        sheet_->openBeside(Field);
        pressKey('#');
        pressKey('1');
        QCOMPARE(takeChosen(), ZSymbolSheet::symbols().right(9).left(1));
        sheet_->openBeside(Field);
        for (int page = 0; page < ZSymbolSheet::symbols().size() / 9; ++page)
            pressKey('*');
        pressKey('1');
        QCOMPARE(takeChosen(), ZSymbolSheet::symbols().left(1));
    }

    void arrowsMoveAndGoRound_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<int>("index");
        const int last = int(ZSymbolSheet::symbols().size()) - 1;
        const auto row = [](const char* name, const QList<int>& keys, int index) {
            QTest::newRow(name) << keys << index;
        };
        row("nowhere", {}, 0);
        row("right", {PhoneKey::Right}, 1);
        row("down", {PhoneKey::Down}, 3);
        row("down and up", {PhoneKey::Down, PhoneKey::Up}, 0);
        row("right and left", {PhoneKey::Right, PhoneKey::Left}, 0);
        row("left of the first", {PhoneKey::Left}, last);
        row("above the first", {PhoneKey::Up}, last - 2);
        row("into the next nine", {PhoneKey::Down, PhoneKey::Down, PhoneKey::Down}, 9);
        row("behind the last", {PhoneKey::Left, PhoneKey::Right}, 0);
    }

    void arrowsMoveAndGoRound()
    {
        QFETCH(QList<int>, keys);
        QFETCH(int, index);
        for (const int key : keys)
            pressKey(key);
        QCOMPARE(sheet_->current(), ZSymbolSheet::symbols().mid(index, 1));
        pressKey(PhoneKey::Return);
        QCOMPARE(takeChosen(), ZSymbolSheet::symbols().mid(index, 1));
    }

    void selectKeysAndTheLeftSoftKeyChoose()
    {
        for (const int key :
             {int(PhoneKey::Return), int(PhoneKey::Enter), int(PhoneKey::SoftLeft)}) {
            sheet_->openBeside(Field);
            pressKey(key);
            QCOMPARE(takeChosen(), ZSymbolSheet::symbols().left(1));
            QVERIFY(sheet_->isHidden());
        }
    }

    void clearKeyAndTheRightSoftKeyCloseWithoutAChoice()
    {
        for (const int key : {int(PhoneKey::Clear), int(PhoneKey::SoftRight)}) {
            sheet_->openBeside(Field);
            pressKey(PhoneKey::Right);
            pressKey(key);
            QVERIFY(sheet_->isHidden());
            QCOMPARE(spy_->size(), 0);
        }
    }

    void otherKeysDoNothing()
    {
        for (const int key : {int('0'), int(PhoneKey::Modifier), int(PhoneKey::Hide), int('A'),
                              int(PhoneKey::PageDown)})
            pressKey(key);
        QVERIFY(sheet_->isVisible());
        QCOMPARE(sheet_->current(), ZSymbolSheet::symbols().left(1));
        QCOMPARE(spy_->size(), 0);
    }

    void keyHeldFromBeforeNeitherTurnsNorChooses()
    {
        for (const int key : {int('*'), int('#'), int('5'), int(PhoneKey::SoftLeft),
                              int(PhoneKey::SoftRight), int(PhoneKey::Clear)})
            repeatKey(key);
        QVERIFY(sheet_->isVisible());
        QCOMPARE(sheet_->current(), ZSymbolSheet::symbols().left(1));
    }

    void heldArrowGoesOn()
    {
        repeatKey(PhoneKey::Right);
        repeatKey(PhoneKey::Right);
        QCOMPARE(sheet_->current(), ZSymbolSheet::symbols().mid(2, 1));
    }

    void opensAtTheFirstSymbolEachTime()
    {
        pressKey('*');
        pressKey(PhoneKey::Right);
        pressKey(PhoneKey::SoftRight);
        sheet_->openBeside(Field);
        QCOMPARE(sheet_->current(), ZSymbolSheet::symbols().left(1));
    }

    void liesBesideTheFieldAndOnTheScreen_data()
    {
        QTest::addColumn<int>("top");
        QTest::addColumn<bool>("isBelow");
        QTest::newRow("field in the middle") << 150 << true;
        QTest::newRow("field at the top") << 0 << true;
        QTest::newRow("field at the bottom") << 270 << false;
    }

    void liesBesideTheFieldAndOnTheScreen()
    {
        QFETCH(int, top);
        QFETCH(bool, isBelow);
        const QRect field(11, top, 215, 24);
        sheet_->openBeside(field);
        QVERIFY(QRect(0, 0, ZScreen::Width, ZScreen::Height).contains(sheet_->geometry()));
        QVERIFY(!sheet_->geometry().intersects(field));
        QCOMPARE(sheet_->y() > top, isBelow);
    }

    void tapChoosesASymbol()
    {
        tap({100, 40});
        QCOMPARE(takeChosen(), ZSymbolSheet::symbols().mid(4, 1));
    }

    void tapOnTheFootTurnsToTheNextNine()
    {
        tap({100, sheet_->height() - 4});
        QVERIFY(sheet_->isVisible());
        QCOMPARE(sheet_->current(), ZSymbolSheet::symbols().mid(9, 1));
    }

    void tapThatEndsElsewhereChoosesNothing()
    {
        QTest::mousePress(sheet_, Qt::LeftButton, {}, {20, 10});
        QTest::mouseRelease(sheet_, Qt::LeftButton, {}, {100, 40});
        QVERIFY(sheet_->isVisible());
        QCOMPARE(spy_->size(), 0);
    }

    void tapBesideItClosesIt()
    {
        QTest::mouseClick(below_.get(), Qt::LeftButton, {}, {5, 5});
        QVERIFY(sheet_->isHidden());
        QCOMPARE(spy_->size(), 0);
    }

    void everyNineLookDifferent()
    {
        QList<QImage> pictures;
        for (int page = 0; page < ZSymbolSheet::symbols().size() / 9; ++page) {
            const QImage picture = sheet_->grab().toImage();
            QVERIFY(!pictures.contains(picture));
            pictures.append(picture);
            pressKey('*');
        }
        QCOMPARE(sheet_->grab().toImage(), pictures.first());
    }

    void highlightIsSeen()
    {
        const QImage before = sheet_->grab().toImage();
        pressKey(PhoneKey::Right);
        const QImage after = sheet_->grab().toImage();
        QVERIFY(before.pixel(3, 26) != after.pixel(3, 26));
        QCOMPARE(before.pixel(3, 26), after.pixel(75, 26));
    }

private:
    static constexpr QRect Field{11, 150, 215, 24};

    QString takeChosen() { return spy_->size() == 1 ? spy_->takeFirst().at(0).toString() : "?"; }
    void tap(QPoint point) { QTest::mouseClick(sheet_, Qt::LeftButton, {}, point); }

    std::unique_ptr<QWidget> below_;
    ZSymbolSheet* sheet_ = nullptr;
    std::unique_ptr<QSignalSpy> spy_;
};

QUARN_TEST_MAIN(tst_ZSymbolSheet)
#include "tst_zsymbolsheet.moc"
