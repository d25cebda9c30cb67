#include "platform/keymap.h"
#include "platform/zpixmap.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QLineEdit>

#include <algorithm>
#include <memory>

namespace
{

using PhoneKey::Code;

int showMessage(kWidget& box, int mode = kWidget::Message)
{
    return box.showText("Error", "Something", 4, QString(), mode);
}

int showProgress(kWidget& box, int mode)
{
    return box.showProcess("Wait", "above", 4, "below", 1, QString(), mode);
}

void keyRows()
{
    QTest::addColumn<int>("code");
    QTest::newRow("return") << int(Code::Return);
    QTest::newRow("page up") << int(Code::PageUp);
    QTest::newRow("modifier") << int(Code::Modifier);
    QTest::newRow("hide") << int(Code::Hide);
    QTest::newRow("folder up") << int(Code::FolderUp);
    QTest::newRow("music") << int(Code::Music);
    QTest::newRow("digit") << int('5');
    QTest::newRow("letter") << int('y');
    QTest::newRow("star") << int('*');
    QTest::newRow("hash") << int('#');
}

void softKeyRows()
{
    QTest::newRow("left soft key") << int(Code::SoftLeft);
    QTest::newRow("right soft key") << int(Code::SoftRight);
}

void arrowRows()
{
    QTest::newRow("left") << int(Code::Left);
    QTest::newRow("up") << int(Code::Up);
    QTest::newRow("right") << int(Code::Right);
    QTest::newRow("down") << int(Code::Down);
}

void tap(kWidget& box, QPoint point)
{
    QTest::mouseClick(&box, Qt::LeftButton, {}, point);
}

} // namespace

class tst_kWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { loadTexts(QString()); }

    void init() { box_ = std::make_unique<kWidget>(); }
    void cleanup() { box_.reset(); }

    void newBoxIsHiddenAndCleared()
    {
        QVERIFY(box_->isHidden());
        QVERIFY(!box_->isUp());
        QVERIFY(!box_->isClosed());
        QCOMPARE(box_->geometry(), QRect(10, 20, 220, 320));
        QCOMPARE(box_->objectName(), QStringLiteral("kWidget"));
    }

    void eachNewBoxSetsThePixmapCacheLimit()
    {
        ZPixmapCache::setCacheLimit(5120);
        const kWidget another;
        QCOMPARE(ZPixmapCache::cacheLimit(), 4096);
    }

    void messageReturnsOneAtOnceAndComesUp()
    {
        QCOMPARE(showMessage(*box_), 1);
        QVERIFY(box_->isUp());
        QVERIFY(!box_->isWaiting());
        awaitKeys(*box_);
    }

    void plainBoxReturnsZeroAtOnceAndComesUp()
    {
        QCOMPARE(showMessage(*box_, kWidget::Plain), 0);
        QVERIFY(box_->isUp());
        awaitKeys(*box_);
        box_->init();
        QCOMPARE(showProgress(*box_, kWidget::Plain), 0);
        awaitKeys(*box_);
    }

    void progressThatCanBeCancelledReturnsOneAtOnce()
    {
        QCOMPARE(showProgress(*box_, kWidget::Message), 1);
        QVERIFY(box_->isUp());
        awaitKeys(*box_);
    }

    void anyKeyButTheArrowsClosesAMessage_data()
    {
        keyRows();
        softKeyRows();
    }

    void anyKeyButTheArrowsClosesAMessage()
    {
        QFETCH(int, code);
        showMessage(*box_);
        awaitKeys(*box_);
        pressKey(code);
        QVERIFY(box_->isHidden());
        QVERIFY(!box_->isUp());
        QVERIFY(box_->isClosed());
    }

    void anyKeyButTheArrowsCancelsProgress_data()
    {
        keyRows();
        softKeyRows();
    }

    void anyKeyButTheArrowsCancelsProgress()
    {
        QFETCH(int, code);
        showProgress(*box_, kWidget::Message);
        awaitKeys(*box_);
        QVERIFY(!box_->isClosed());
        pressKey(code);
        QVERIFY(box_->isHidden());
        QVERIFY(box_->isClosed());
    }

    void arrowsLeaveAMessageUp_data()
    {
        QTest::addColumn<int>("code");
        arrowRows();
    }

    void arrowsLeaveAMessageUp()
    {
        QFETCH(int, code);
        showMessage(*box_);
        awaitKeys(*box_);
        pressKey(code);
        QVERIFY(box_->isUp() && box_->isVisible());
        QVERIFY(!box_->isClosed());
    }

    void plainBoxSwallowsEveryKey_data()
    {
        keyRows();
        softKeyRows();
        arrowRows();
    }

    void plainBoxSwallowsEveryKey()
    {
        QFETCH(int, code);
        showProgress(*box_, kWidget::Plain);
        awaitKeys(*box_);
        pressKey(code);
        QVERIFY(box_->isUp() && box_->isVisible());
        QVERIFY(!box_->isClosed());
    }

    void softKeysAnswerAQuestion()
    {
        QCOMPARE(askAnd(*box_, [] { pressKey(Code::SoftLeft); }), 1);
        QVERIFY(box_->isHidden() && box_->isClosed() && !box_->isWaiting() && !box_->isUp());
        QCOMPARE(askAnd(*box_, [] { pressKey(Code::SoftRight); }), 0);
        QVERIFY(box_->isHidden() && box_->isClosed() && !box_->isWaiting() && !box_->isUp());
    }

    void otherKeysDoNotAnswerAQuestion_data()
    {
        keyRows();
        arrowRows();
    }

    void otherKeysDoNotAnswerAQuestion()
    {
        QFETCH(int, code);
        bool stillOpen = false;
        const int answer = askAnd(*box_, [this, code, &stillOpen] {
            pressKey(code);
            stillOpen = box_->isWaiting() && box_->isVisible() && !box_->isClosed();
            pressKey(Code::SoftLeft);
        });
        QVERIFY(stillOpen);
        QCOMPARE(answer, 1);
    }

    void keyHeldFromBeforeDoesNotAnswer_data()
    {
        QTest::addColumn<int>("code");
        softKeyRows();
    }

    void keyHeldFromBeforeDoesNotAnswer()
    {
        QFETCH(int, code);
        bool stillOpen = false;
        askAnd(*box_, [this, code, &stillOpen] {
            for (int i = 0; i < 5; ++i)
                repeatKey(code);
            releaseKey(code);
            stillOpen = box_->isWaiting() && box_->isVisible();
            pressKey(Code::SoftRight);
        });
        QVERIFY(stillOpen);
    }

    void keyHeldFromBeforeDoesNotCloseAMessage()
    {
        showMessage(*box_);
        awaitKeys(*box_);
        repeatKey('5');
        releaseKey('5');
        QVERIFY(box_->isUp() && !box_->isClosed());
        pressKey('5');
        QVERIFY(!box_->isUp() && box_->isClosed());
    }

    void closedIsForgottenWhenTheNextBoxComesUp()
    {
        showMessage(*box_);
        awaitKeys(*box_);
        pressKey('5');
        QVERIFY(box_->isClosed());
        showProgress(*box_, kWidget::Plain);
        QVERIFY(!box_->isClosed());
    }

    void programTakesABoxAwayWithoutClosedBeingSet()
    {
        showProgress(*box_, kWidget::Message);
        awaitKeys(*box_);
        box_->init();
        QVERIFY(box_->isHidden() && !box_->isUp() && !box_->isClosed());
        QCOMPARE(box_->geometry(), QRect(10, 20, 220, 320));
    }

    void boxTakenAwayBeforeItWasShownStaysAway()
    {
        showMessage(*box_);
        box_->init();
        // Comes up later than the first would have.
        kWidget later;
        showMessage(later);
        QTRY_VERIFY(later.isVisible());
        QVERIFY(box_->isHidden());
    }

    void boxWithNothingToDoLetsTheProgramSleep()
    {
        showProgress(*box_, kWidget::Message);
        awaitKeys(*box_);
        QVERIFY(animationTimer(*box_) != nullptr);
        box_->init();
        for (const QTimer* timer : box_->findChildren<QTimer*>())
            QVERIFY(!timer->isActive());
        showMessage(*box_);
        awaitKeys(*box_);
        QTRY_VERIFY(std::ranges::none_of(box_->findChildren<QTimer*>(), &QTimer::isActive));
    }

    void countdownClosesABoxAfterThatManyTicks_data()
    {
        QTest::addColumn<int>("ticks");
        QTest::newRow("one") << 1;
        QTest::newRow("start") << 10;
        QTest::newRow("done") << 25;
    }

    void countdownClosesABoxAfterThatManyTicks()
    {
        QFETCH(int, ticks);
        const TicksHeldBack held(*box_);
        showProgress(*box_, kWidget::Plain);
        awaitKeys(*box_);
        for (int i = 0; i < 30; ++i)
            box_->aniUpdate();
        box_->stop(ticks);
        for (int i = 1; i < ticks; ++i)
            box_->aniUpdate();
        QVERIFY(box_->isUp() && box_->isVisible());
        box_->aniUpdate();
        QVERIFY(!box_->isUp() && box_->isHidden());
        QVERIFY(!box_->isClosed());
        QCOMPARE(animationTimer(*box_), nullptr);
    }

    void countdownRunsByItself()
    {
        showProgress(*box_, kWidget::Plain);
        QElapsedTimer clock;
        clock.start();
        constexpr int Ticks = 4;
        box_->stop(Ticks);
        QTRY_VERIFY(!box_->isUp());
        // The first tick was under way, and the toolkit's timers may be early by a twentieth.
        constexpr int ShortestMilliseconds = (Ticks - 1) * 76;
        QVERIFY2(clock.elapsed() >= ShortestMilliseconds,
                 qPrintable(QString::number(clock.elapsed())));
    }

    void countdownEndsWithTheBox()
    {
        const TicksHeldBack held(*box_);
        showProgress(*box_, kWidget::Plain);
        box_->stop(2);
        box_->init();
        showProgress(*box_, kWidget::Plain);
        for (int i = 0; i < 5; ++i)
            box_->aniUpdate();
        QVERIFY(box_->isUp());
    }

    void countdownOfAClosedBoxDoesNotEndTheNext()
    {
        const TicksHeldBack held(*box_);
        showProgress(*box_, kWidget::Plain);
        box_->init();
        box_->stop(2);
        showProgress(*box_, kWidget::Plain);
        for (int i = 0; i < 5; ++i)
            box_->aniUpdate();
        QVERIFY(box_->isUp());
    }

    void boxShownOnceMoreStaysUpAndShowsTheNewText()
    {
        showMessage(*box_);
        awaitKeys(*box_);
        const QImage before = pictureOf(*box_);
        box_->showText("Error", "First\nSecond", 4, QString(), kWidget::Message);
        QVERIFY(box_->isUp());
        const int height = blockHeight(titleFont()) + blockHeight(textFont(), 2);
        QTRY_COMPARE(box_->height(), height);
        QVERIFY(pictureOf(*box_) != before);
    }

    void boxComesUpHoweverFastOneTextFollowsTheOther()
    {
        const QDeadlineTimer deadline(5000);
        int texts = 0;
        while (!box_->isVisible() && !deadline.hasExpired()) {
            box_->showText("Work", QString::number(++texts), 4, QString(), kWidget::Plain);
            ZApplication::processEvents();
        }
        QVERIFY(box_->isVisible());
    }

    void boxHasTheFocusAndGivesItBack()
    {
        QWidget window(ZScreen::instance());
        ZScreen::instance()->place(&window, ZScreen::Layer::Main);
        window.resize(ZScreen::Width, ZScreen::Height);
        QLineEdit first(&window);
        QLineEdit second(&window);
        window.show();
        second.setFocus();
        QTRY_COMPARE(keyReceiver(), &second);
        showMessage(*box_);
        QTRY_COMPARE(keyReceiver(), box_.get());
        pressKey('7');
        QCOMPARE(keyReceiver(), &second);
        QVERIFY2(second.text().isEmpty(), "the key that closed the box went on");
        pressKey('8');
        QCOMPARE(second.text(), QStringLiteral("8"));
    }

    void focusPutsABoxBackInItsPlace()
    {
        showMessage(*box_);
        awaitKeys(*box_);
        const QRect place = box_->geometry();
        for (const QEvent::Type type : {QEvent::FocusIn, QEvent::FocusOut}) {
            box_->move(0, 0);
            QFocusEvent event(type);
            QApplication::sendEvent(box_.get(), &event);
            QTRY_COMPARE(box_->geometry(), place);
        }
    }

    void losingTheFocusLeavesAClearedBoxAlone()
    {
        QFocusEvent event(QEvent::FocusOut);
        QApplication::sendEvent(box_.get(), &event);
        QVERIFY(std::ranges::none_of(box_->findChildren<QTimer*>(), &QTimer::isActive));
        QCOMPARE(box_->geometry(), QRect(10, 20, 220, 320));
    }

    void questionWithinAQuestionIsAnsweredFirst()
    {
        kWidget inner;
        QList<int> answers;
        const int outerAnswer = askAnd(*box_, [&] {
            answers.append(askAnd(inner, [&] {
                // What lies below gets no key.
                pressKey(Code::SoftRight);
                answers.append(box_->isWaiting() ? 2 : -1);
            }));
            once([this] { return hasKeys(*box_); }, [] { pressKey(Code::SoftLeft); });
        });
        QCOMPARE(answers, (QList<int>{2, 0}));
        QCOMPARE(outerAnswer, 1);
    }

    void timersGoOnWhileAQuestionIsOpen()
    {
        kWidget progress;
        showProgress(progress, kWidget::Plain);
        progress.stop(2);
        const int answer = askAnd(*box_, [&progress] {
            once([&progress] { return !progress.isUp(); }, [] { pressKey(Code::SoftLeft); });
        });
        QCOMPARE(answer, 1);
    }

    void questionIsPutWhileAnotherBoxIsUp()
    {
        kWidget progress;
        showProgress(progress, kWidget::Message);
        awaitKeys(progress);
        QCOMPARE(askAnd(*box_, [] { pressKey(Code::SoftRight); }), 0);
        QVERIFY(hasKeys(progress) && !progress.isClosed());
    }

    void questionHigherThanTheScreenCanBeAnswered()
    {
        QRect place;
        const QString text = QStringLiteral("many words ").repeated(500);
        const int answer = askAnd(
            *box_,
            [this, &place] {
                place = box_->geometry();
                pressKey(Code::SoftLeft);
            },
            text);
        QCOMPARE(answer, 1);
        QVERIFY(place.height() > ZScreen::Height);
        QCOMPARE(place.top(), 0);
    }

    void tapOnAHalfOfTheKeyBarAnswers()
    {
        QCOMPARE(askAnd(*box_, [this] { tap(*box_, {20, box_->height() - 5}); }), 1);
        QCOMPARE(askAnd(*box_, [this] { tap(*box_, {200, box_->height() - 5}); }), 0);
    }

    void tapBesideTheKeyBarDoesNotAnswer()
    {
        bool stillOpen = false;
        askAnd(*box_, [this, &stillOpen] {
            tap(*box_, {20, 5});
            stillOpen = box_->isWaiting();
            pressKey(Code::SoftRight);
        });
        QVERIFY(stillOpen);
    }

    void tapClosesAMessageAndNotAPlainBox()
    {
        showMessage(*box_);
        awaitKeys(*box_);
        tap(*box_, {100, 10});
        QVERIFY(!box_->isUp() && box_->isClosed());
        showMessage(*box_, kWidget::Plain);
        awaitKeys(*box_);
        tap(*box_, {100, 10});
        QVERIFY(box_->isUp() && !box_->isClosed());
    }

    void boxMayBeDestroyedWhileItIsUp()
    {
        showProgress(*box_, kWidget::Message);
        awaitKeys(*box_);
        box_.reset();
        QCOMPARE(ZScreen::instance()->active(), nullptr);
    }

    // The process cannot take a request to quit back, so these two come last.
    void endOfTheProgramAnswersNo()
    {
        kWidget inner;
        int innerAnswer = -1;
        const int answer = askAnd(*box_, [&inner, &innerAnswer] {
            innerAnswer = askAnd(inner, [] { ZApplication::quit(); });
        });
        QCOMPARE(innerAnswer, 0);
        QCOMPARE(answer, 0);
        QVERIFY(box_->isHidden() && !box_->isWaiting() && !box_->isUp());
        QVERIFY(inner.isHidden() && !inner.isWaiting());
    }

    void questionWhileTheProgramEndsIsAnsweredNoAtOnce()
    {
        QVERIFY(ZApplication::isQuitting());
        QCOMPARE(box_->showText("Late", "Sure?", 4, QString(), kWidget::Question), 0);
        QVERIFY(!box_->isUp());
    }

private:
    std::unique_ptr<kWidget> box_;
};

QUARN_TEST_MAIN(tst_kWidget)
#include "tst_kwidget.moc"
