#include "platform/qcopchannel.h"
#include "shell/settings.h"
#include "tests/fileops/copytest.h"
#include "tests/fileops/filefaults.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"
#include "tests/widgets/boxtesting.h"

#include <QDir>

#include <cerrno>
#include <optional>

namespace
{

/// Counts how often a box goes from the screen.
class Disappearances : public QObject
{
public:
    explicit Disappearances(QWidget* box) { box->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        count += event->type() == QEvent::Hide ? 1 : 0;
        return false;
    }
};

/// A user who keeps pressing a key while work lets events run.
class Impatience : public QObject
{
public:
    Impatience() { startTimer(0); }
    int presses = 0;

protected:
    void timerEvent(QTimerEvent* /*event*/) override
    {
        ++presses;
        pressKey('*');
        pressKey(PhoneKey::SoftLeft);
    }
};

} // namespace

class tst_CopyEvents : public CopyTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void modifierCountsWhenTheCopyBegins()
    {
        write("a", QByteArray(4 * Block, 'c'));
        write("b", "b");
        const DuringWork release([] { return textView->shownText().contains("Completed"); },
                                 [] { releaseKey(PhoneKey::Modifier); });
        holdKey(PhoneKey::Modifier);
        window_->copy(left("a"), right());
        QVERIFY(release.hasHappened());
        QVERIFY(!window_->modKeyHeld);
        QVERIFY(taken().contains(progress(left("a"), right("/a"), "100% (2 Mb/2 Mb)")));
        window_->copy(left("b"), right());
        QCOMPARE(taken().at(1), cp(left("b"), right()));
    }

    void boxStaysUpFromTheFirstFileOfATreeToTheLast()
    {
        for (int i = 0; i < 50; ++i)
            write(QStringLiteral("f/%1").arg(i), "x");
        textView->showText("T", "t", 4, QString(), kWidget::Plain);
        awaitKeys(*textView);
        const Disappearances disappearances(textView);
        copyBuiltIn(left("f"));
        QCOMPARE(disappearances.count, 1);
        QVERIFY(textView->isHidden());
    }

    void keysDoNotReachTheWindowDuringACopy_data()
    {
        QTest::addColumn<bool>("builtIn");
        QTest::newRow("shell") << false;
        QTest::newRow("built-in") << true;
    }

    void keysDoNotReachTheWindowDuringACopy()
    {
        QFETCH(bool, builtIn);
        for (int i = 0; i < 50; ++i)
            write(QStringLiteral("f/%1").arg(i), "x");
        {
            const Impatience user;
            window_->modKeyHeld = builtIn;
            window_->copy(left("f"), right());
            window_->modKeyHeld = false;
            QVERIFY(user.presses > 0);
        }
        QVERIFY(!full_scr);
        QCOMPARE(ZScreen::instance()->active(), window_);
        QCOMPARE(QDir(right("f")).count(), 52);
        pressKey('*');
        QVERIFY2(full_scr, "keys work again");
    }

    void keysDoNotCancelACopy()
    {
        write("a", QByteArray(8 * Block, 'c'));
        const DuringWork keys(
            [] { return textView->shownText().contains("Completed"); },
            [] {
                awaitKeys(*textView);
                for (const int code : {int(PhoneKey::SoftRight), int(PhoneKey::SoftLeft), int('5')})
                    pressKey(code);
            });
        copyBuiltIn(left("a"));
        QVERIFY(keys.hasHappened());
        QVERIFY(!textView->isClosed());
        QCOMPARE(QFileInfo(right("a")).size(), 8 * Block);
    }

    void anotherStartShowsTheWindowDuringACopy()
    {
        write("a", QByteArray(8 * Block, 'c'));
        window_->hide();
        const DuringWork start([] { return textView->shownText().contains("Completed"); },
                               [this] {
                                   QVERIFY(QCopChannel::send("Quarn", "show()"));
                                   QTRY_VERIFY(window_->isVisible());
                               });
        window_->modKeyHeld = true;
        window_->copy(left("a"), right());
        window_->modKeyHeld = false;
        QVERIFY(start.hasHappened());
        QCOMPARE(QFileInfo(right("a")).size(), 8 * Block);
    }

    void windowThatIsToCloseAsksDuringACopyWhichThenGoesOn()
    {
        write("f/a", QByteArray(4 * Block, 'c'));
        write("f/b", "x");
        fixture_->log().expect({no});
        const DuringWork close([] { return textView->shownText().contains("50%"); }, requestClose);
        copyBuiltIn(left("f"));
        QVERIFY(close.hasHappened());
        QCOMPARE(fixture_->log().unused(), 0);
        QVERIFY(taken().contains(Log::question(LANG_EXIT, LANG_EXIT_SURE, "warning")));
        QCOMPARE(QFileInfo(right("f/a")).size(), 4 * Block);
        QCOMPARE(read("f/b"), QByteArray("x"));
        QVERIFY(!textView->isUp());
    }

    void closingTheWindowJustBeforeAFailureLeavesNoBox()
    {
        write("a", QByteArray(4 * Block, 'c'));
        std::optional<FileFaults> faults(std::in_place, left("a"));
        faults->failAfter(2 * Block, EIO);
        fixture_->log().expect({no});
        const DuringWork close([] { return textView->shownText().contains("25%"); }, requestClose);
        copyBuiltIn(left("a"));
        faults.reset();
        QVERIFY(close.hasHappened());
        QVERIFY(!textView->isUp());
    }

    // The process cannot take a request to quit back, so this comes last.
    void copyUnderWayIsFinishedWhenTheProgramEnds()
    {
        write("f/a", QByteArray(4 * Block, 'c'));
        write("f/b", "x");
        fixture_->log().expect({yes});
        const DuringWork close([] { return textView->shownText().contains("25%"); }, requestClose);
        copyBuiltIn(left("f"));
        QVERIFY(close.hasHappened());
        QVERIFY(ZApplication::isQuitting());
        QCOMPARE(QFileInfo(right("f/a")).size(), 4 * Block);
        QCOMPARE(read("f/b"), QByteArray("x"));
    }
};

QUARN_TEST_MAIN(tst_CopyEvents)
#include "tst_copyevents.moc"
