#include "extras/estimate.h"
#include "tests/support/testmain.h"

#include <cmath>
#include <cstdlib>

namespace
{

constexpr qint64 Mebi = 1024 * 1024;
constexpr qint64 Tick = 200; ///< milliseconds between two notes

} // namespace

class tst_Estimate : public QObject
{
    Q_OBJECT

private slots:
    void saysNothingAtFirst()
    {
        Estimate estimate(100 * Mebi);
        QCOMPARE(estimate.secondsLeft(), -1);
        estimate.note(0, 5000);
        estimate.note(Mebi, 5000 + Tick);
        QCOMPARE(estimate.secondsLeft(), -1);
    }

    void knowsASteadyPace()
    {
        Estimate estimate(100 * Mebi);
        for (qint64 time = 0; time <= 20000; time += Tick)
            estimate.note(time * Mebi / 1000, time);
        QVERIFY(std::abs(estimate.rate() - double(Mebi)) < 0.01 * double(Mebi));
        QVERIFY(std::abs(estimate.secondsLeft() - 80) <= 1);
    }

    void countsDownWithTheClockWhenWorkComesInGulps()
    {
        // A flush every two seconds, and nothing in between.
        Estimate estimate(200 * Mebi);
        int before = -1;
        for (qint64 time = 0; time <= 60000; time += Tick) {
            estimate.note(time / 2000 * 2 * Mebi, time);
            const int now = estimate.secondsLeft();
            if (time > 20000) {
                QVERIFY2(now <= before + 1, qPrintable(QString::number(time)));
                QVERIFY2(now >= before - 2, qPrintable(QString::number(time)));
            }
            before = now;
        }
        QVERIFY(std::abs(before - 140) < 15);
    }

    void doesNotJumpWhenTheMediumGetsSlow()
    {
        Estimate estimate(100 * Mebi);
        qint64 done = 0;
        int before = -1;
        int most = 0;
        for (qint64 time = 0; time <= 60000; time += Tick) {
            done += (time < 10000 ? 2 : 1) * Mebi * Tick / 1000;
            estimate.note(done, time);
            const int now = estimate.secondsLeft();
            if (before >= 0)
                most = std::max(most, std::abs(now - before));
            before = now;
        }
        QVERIFY2(most <= 2, qPrintable(QString::number(most)));
        // And it is right in the end: 70 MiB are done, 30 remain.
        QVERIFY2(std::abs(before - 30) <= 4, qPrintable(QString::number(before)));
    }

    void aQuestionTakesNoTime()
    {
        Estimate estimate(100 * Mebi);
        qint64 time = 0;
        for (; time <= 10000; time += Tick)
            estimate.note(time * Mebi / 1000, time);
        const int before = estimate.secondsLeft();
        const double rate = estimate.rate();
        estimate.skip(3600 * 1000);
        estimate.note(time * Mebi / 1000, time + 3600 * 1000);
        QVERIFY(std::abs(estimate.secondsLeft() - before) <= 1);
        QVERIFY(std::abs(estimate.rate() - rate) < 0.1 * rate);
    }

    void endsAtNothing()
    {
        Estimate estimate(10 * Mebi);
        for (qint64 time = 0; time <= 10000; time += Tick) {
            estimate.note(time * Mebi / 1000, time);
            QVERIFY(time < 2000 || time == 10000 || estimate.secondsLeft() >= 1);
        }
        QCOMPARE(estimate.secondsLeft(), 0);
    }

    void worksAgainstALargerTotal()
    {
        Estimate estimate(10 * Mebi);
        qint64 time = 0;
        for (; time <= 5000; time += Tick)
            estimate.note(time * Mebi / 1000, time);
        estimate.setTotal(100 * Mebi);
        for (; time <= 30000; time += Tick)
            estimate.note(time * Mebi / 1000, time);
        QVERIFY2(std::abs(estimate.secondsLeft() - 70) <= 4,
                 qPrintable(QString::number(estimate.secondsLeft())));
    }
};

QUARN_TEST_MAIN(tst_Estimate)
#include "tst_estimate.moc"
