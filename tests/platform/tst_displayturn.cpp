#include "platform/displayturn.h"
#include "platform/keymap.h"
#include "platform/qcopchannel.h"
#include "tests/support/keys.h"
#include "tests/support/testmain.h"

#include <QProcess>
#include <QSignalSpy>

#include <unistd.h>

namespace
{

/// Counts what it gets.
class Counter : public QWidget
{
public:
    Counter() : QWidget(ZScreen::instance())
    {
        ZScreen::instance()->place(this, ZScreen::Layer::Main);
        resize(ZScreen::Width, ZScreen::Height);
        setFocusPolicy(Qt::StrongFocus);
    }

    int keys = 0;
    int taps = 0;
    int paints = 0;

protected:
    void keyPressEvent(QKeyEvent* /*event*/) override { ++keys; }
    void mousePressEvent(QMouseEvent* /*event*/) override { ++taps; }
    void paintEvent(QPaintEvent* /*event*/) override { ++paints; }
};

} // namespace

/// Programs that share a display without a window system.
class tst_DisplayTurn : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        other_.kill();
        other_.waitForFinished();
    }

    void hostLendsTheDisplayUntilItIsGivenBack()
    {
        DisplayTurn turn;
        turn.show();
        QVERIFY(turn.isOurs());
        const QSignalSpy changes(&turn, &DisplayTurn::changed);
        const QByteArray number = startOther();
        QVERIFY(QCopChannel::send(Channel, "taken " + number));
        QTRY_VERIFY(!turn.isOurs());
        QCOMPARE(changes.size(), 1);
        QVERIFY(QCopChannel::send(Channel, "given " + number));
        QTRY_VERIFY(turn.isOurs());
        QCOMPARE(changes.size(), 2);
    }

    void programThatEndsGivesItBack()
    {
        DisplayTurn turn;
        turn.show();
        QVERIFY(QCopChannel::send(Channel, "taken " + startOther()));
        QTRY_VERIFY(!turn.isOurs());
        other_.kill();
        QTRY_VERIFY(turn.isOurs());
    }

    void displayIsLentUntilTheLastGivesItBack()
    {
        DisplayTurn turn;
        turn.show();
        QVERIFY(QCopChannel::send(Channel, "taken " + startOther()));
        QVERIFY(QCopChannel::send(Channel, "taken " + QByteArray::number(getppid())));
        QTRY_VERIFY(!turn.isOurs());
        const QSignalSpy changes(&turn, &DisplayTurn::changed);
        other_.kill();
        QVERIFY(other_.waitForFinished());
        QVERIFY(QCopChannel::send(Channel, "given " + QByteArray::number(getppid())));
        QTRY_VERIFY(turn.isOurs());
        QCOMPARE(changes.size(), 1);
    }

    void nonsenseIsIgnored_data()
    {
        QTest::addColumn<QByteArray>("message");
        for (const char* message :
             {"", "taken ", "taken 0", "taken -1", "taken x", "taken 99999999",
              "taken 99999999999999999999", "other 1", "given 1"})
            QTest::newRow(message) << QByteArray(message);
    }

    void nonsenseIsIgnored()
    {
        QFETCH(QByteArray, message);
        DisplayTurn turn;
        turn.show();
        const QByteArray number = startOther();
        QVERIFY(QCopChannel::send(Channel, message));
        // What comes behind it shows that it has been looked at.
        QVERIFY(QCopChannel::send(Channel, "taken " + number));
        QTRY_VERIFY(!turn.isOurs());
        QVERIFY(QCopChannel::send(Channel, "given " + number));
        QTRY_VERIFY(turn.isOurs());
    }

    void whatHasEndedMeanwhileLeavesItToBeDrawnAnew()
    {
        DisplayTurn turn;
        turn.show();
        const QByteArray number = startOther();
        other_.kill();
        QVERIFY(other_.waitForFinished());
        const QSignalSpy changes(&turn, &DisplayTurn::changed);
        QVERIFY(QCopChannel::send(Channel, "taken " + number));
        QTRY_COMPARE(changes.size(), 1);
        QVERIFY(turn.isOurs());
    }

    void laterOneTakesTheDisplayWhileItsWindowIsShown()
    {
        const QCopChannel host(Channel);
        QStringList messages;
        connect(&host, &QCopChannel::received, this,
                [&messages](const QByteArray& message) { messages.append(message); });
        DisplayTurn turn;
        turn.show();
        turn.hide();
        turn.show();
        const QString number = QString::number(QCoreApplication::applicationPid());
        QTRY_COMPARE(messages,
                     QStringList({"taken " + number, "given " + number, "taken " + number}));
        QVERIFY(turn.isOurs());
    }

    void lentScreenTakesNoKeysAndDrawsNothing()
    {
        ZScreen::destroyInstance();
        DisplayTurn::setNeeded(true);
        {
            Counter widget;
            widget.show();
            QTRY_COMPARE(keyReceiver(), &widget);
            QTRY_VERIFY(widget.paints > 0);
            pressKey(PhoneKey::Down);
            tapScreen({10, 100});
            QCOMPARE(widget.keys, 1);
            QCOMPARE(widget.taps, 1);
            QVERIFY(QCopChannel::send(Channel, "taken " + startOther()));
            QTRY_VERIFY(!widget.updatesEnabled());
            pressKey(PhoneKey::Down);
            tapScreen({10, 100});
            QCOMPARE(widget.keys, 1);
            QCOMPARE(widget.taps, 1);
            const int drawn = widget.paints;
            other_.kill();
            QTRY_VERIFY(widget.updatesEnabled());
            QTRY_VERIFY(widget.paints > drawn);
            pressKey(PhoneKey::Down);
            QCOMPARE(widget.keys, 2);
        }
        DisplayTurn::setNeeded(false);
        ZScreen::destroyInstance();
    }

private:
    static constexpr char Channel[] = "QuarnDisplay";

    /// Another process; gives its number.
    QByteArray startOther()
    {
        other_.start("sleep", {"600"});
        [this] { QVERIFY(other_.waitForStarted()); }();
        return QByteArray::number(other_.processId());
    }

    QProcess other_;
};

QUARN_TEST_MAIN(tst_DisplayTurn)
#include "tst_displayturn.moc"
