#include "extras/operationbox.h"
#include "lang/texts.h"
#include "platform/keymap.h"
#include "platform/zapplication.h"
#include "tests/support/keys.h"
#include "tests/support/later.h"
#include "tests/support/mainwidget.h"
#include "tests/support/testmain.h"
#include "widgets/boxparts.h"

#include <QSignalSpy>

#include <memory>

class tst_OperationBox : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        loadTexts(QString());
        main_ = showMainWidget();
        box_ = std::make_unique<OperationBox>("Copying");
    }
    void cleanup()
    {
        box_.reset();
        main_.reset();
    }

    void isNotThereUntilItHasSomethingToSay()
    {
        QVERIFY(box_->isHidden());
        box_->showLines({"a"}, 0);
        QVERIFY(ZScreen::instance()->active() == box_.get());
    }

    /// Else its answers would not get the keys any more.
    void aQuestionThatWasAskedFirstStaysOnTop()
    {
        bool isUnder = false;
        bool isOver = false;
        once([] { return ZApplication::waitDepth() == 1; },
             [&] {
                 once([] { return ZApplication::waitDepth() == 2; },
                      [&] {
                          box_->showLines({"a"}, 0);
                          isUnder = box_->isHidden();
                          isOver = true;
                      });
                 ZApplication::waitUntil([&isOver] { return isOver; });
                 box_->showLines({"a"}, 0);
             });
        ZApplication::waitUntil([this] { return box_->isVisible(); });
        QVERIFY(isUnder);
    }

    void longNameIsCutInItsMiddle()
    {
        const QString name = QString(100, 'a') + QString(100, 'z') + ".jpg";
        box_->showLines({name}, 10);
        const QString line = box_->lines().first();
        QVERIFY(line.startsWith("aaa") && line.endsWith(".jpg") && line.contains(QChar(0x2026)));
    }

    void heightStaysWhenLinesAreEmpty()
    {
        box_->showLines({"a", "b", ""}, 0);
        const QRect place = box_->geometry();
        box_->showLines({"a", "b", "c"}, 50);
        QCOMPARE(box_->geometry(), place);
        QVERIFY(ZScreen::instance()->rect().contains(place));
        QCOMPARE(box_->width(), Box::Width);
    }

    void barFillsWithThePercent()
    {
        box_->showLines({"a"}, 0);
        const QImage empty = box_->grab().toImage();
        box_->showLines({"a"}, 100);
        QVERIFY(box_->grab().toImage() != empty);
        QCOMPARE(box_->percent(), 100);
    }

    void onlyTheRightSoftKeyCancels()
    {
        box_->showLines({"a"}, 0);
        const QSignalSpy cancels(box_.get(), &OperationBox::cancelled);
        for (const int key : {int(PhoneKey::SoftLeft), int(PhoneKey::Return), int('1'),
                              int(PhoneKey::Up), int(PhoneKey::Hide)})
            pressKey(key);
        QCOMPARE(cancels.size(), 0);
        pressKey(PhoneKey::SoftRight);
        QCOMPARE(cancels.size(), 1);
    }

    void keyThatIsStillHeldCancelsNothing()
    {
        box_->showLines({"a"}, 0);
        const QSignalSpy cancels(box_.get(), &OperationBox::cancelled);
        repeatKey(PhoneKey::SoftRight);
        QCOMPARE(cancels.size(), 0);
    }

    void tapOnTheKeyBarCancels()
    {
        box_->showLines({"a"}, 0);
        const QSignalSpy cancels(box_.get(), &OperationBox::cancelled);
        tapScreen(box_->geometry().center());
        QCOMPARE(cancels.size(), 0);
        tapScreen(box_->geometry().bottomLeft() + QPoint(Box::Width / 2, -5));
        QCOMPARE(cancels.size(), 1);
    }

    void saysInWordsWhatItDraws()
    {
        box_->showLines({"song.mp3", "1 Mb / 3 Mb", ""}, 33);
        const ZBoxWords words = box_->boxWords();
        QCOMPARE(words.title, QString("Copying"));
        QCOMPARE(words.texts, (QStringList{"song.mp3", "1 Mb / 3 Mb"}));
        QCOMPARE(words.percent, 33);
        QCOMPARE(words.answers, QStringList(LANG_CANCEL));
        QVERIFY(words.isBusy);
        const QSignalSpy cancels(box_.get(), &OperationBox::cancelled);
        box_->chooseAnswer(0);
        QCOMPARE(cancels.size(), 1);
    }

    void progressHasAValue()
    {
        QList<QAccessible::Event> told;
        heard = &told;
        ZAccessible::setListener([](QAccessibleEvent& event) { heard->append(event.type()); });
        box_->showLines({"song.mp3", "1 Mb / 3 Mb"}, 33);
        QAccessibleInterface* box = QAccessible::queryAccessibleInterface(box_.get());
        QVERIFY(told.contains(QAccessible::Alert));
        QCOMPARE(box->text(QAccessible::Description), "song.mp3\n1 Mb / 3 Mb\n33%");
        QCOMPARE(box->childCount(), 4);
        const QAccessibleInterface* line = box->child(0);
        QCOMPARE(line->role(), QAccessible::StaticText);
        QVERIFY(box->child(0)->valueInterface() == nullptr);
        QAccessibleInterface* progress = box->child(2);
        QCOMPARE(progress->role(), QAccessible::ProgressBar);
        QCOMPARE(progress->text(QAccessible::Name), "Copying");
        QCOMPARE(progress->text(QAccessible::Value), "33%");
        QVERIFY(progress->valueInterface() != nullptr);
        QCOMPARE(progress->valueInterface()->currentValue().toInt(), 33);
        QCOMPARE(progress->valueInterface()->minimumValue().toInt(), 0);
        QCOMPARE(progress->valueInterface()->maximumValue().toInt(), 100);
        QCOMPARE(box->child(3)->role(), QAccessible::Button);
        QCOMPARE(box->child(3)->text(QAccessible::Name), LANG_CANCEL);
        told.clear();
        box_->showLines({"song.mp3", "1 Mb / 3 Mb"}, 34);
        QCOMPARE(told, QList<QAccessible::Event>{QAccessible::ValueChanged});
        QCOMPARE(progress->valueInterface()->currentValue().toInt(), 34);
        // Other parts than before, which nobody takes for those.
        box_->showLines({"counting"}, -1);
        QVERIFY(!progress->isValid());
        QCOMPARE(box->childCount(), 2);
        QCOMPARE(box->child(1)->role(), QAccessible::Button);
        ZAccessible::setListener(nullptr);
    }

private:
    static inline QList<QAccessible::Event>* heard = nullptr;

    std::unique_ptr<QWidget> main_;
    std::unique_ptr<OperationBox> box_;
};

QUARN_TEST_MAIN(tst_OperationBox)
#include "tst_operationbox.moc"
