#include "platform/zglide.h"
#include "platform/zmotion.h"
#include "tests/support/testmain.h"

#include <QElapsedTimer>
#include <QSignalSpy>

namespace
{

/// Milliseconds; for what takes a few seconds.
constexpr int GlidePatience = 60000;

} // namespace

class tst_ZGlide : public QObject
{
    Q_OBJECT

private slots:
    void init() { ZMotion::setEnabled(true); }
    void cleanup() { ZMotion::setEnabled(false); }

    void glidesTwiceAndIsOver()
    {
        constexpr int Distance = 6;
        constexpr int GlideMilliseconds = Distance * 1000 / ZGlide::PixelsPerSecond;
        ZGlide glide(nullptr);
        QElapsedTimer clock;
        clock.start();
        QList<qreal> offsets;
        QList<qint64> times;
        connect(&glide, &ZGlide::moved, &glide, [&] {
            offsets.append(glide.offset());
            times.append(clock.elapsed());
        });
        glide.start(Distance);
        QVERIFY(glide.isRunning());
        QVERIFY(glide.offset() < 0);
        QTRY_VERIFY_WITH_TIMEOUT(!glide.isRunning(), GlidePatience);
        QCOMPARE(offsets.count(0), 2);
        QCOMPARE(offsets.count(Distance), 2);
        QCOMPARE(offsets.count(-1), 2);
        QCOMPARE(offsets.first(), 0.0);
        QCOMPARE(offsets.last(), -1.0);
        // The clock and the timers may differ by a little.
        constexpr int Slack = 20;
        QVERIFY(times.first() >= ZGlide::RestMilliseconds - Slack);
        const qsizetype end = offsets.indexOf(Distance);
        QVERIFY(times.at(end) - times.first() >= GlideMilliseconds - Slack);
        QCOMPARE(offsets.at(end + 1), -1.0);
        QVERIFY(times.at(end + 1) - times.at(end) >= ZGlide::RestMilliseconds - Slack);
        QVERIFY(times.at(end + 2) - times.at(end + 1) >= ZGlide::RestMilliseconds - Slack);
        for (qsizetype i = 1; i <= end; ++i)
            QVERIFY(offsets.at(i) > offsets.at(i - 1));
    }

    void stopPutsItBackAtOnce()
    {
        ZGlide glide(nullptr);
        glide.start(1000);
        QTRY_VERIFY_WITH_TIMEOUT(glide.offset() > 0, GlidePatience);
        QSignalSpy moved(&glide, &ZGlide::moved);
        glide.stop();
        QVERIFY(!glide.isRunning());
        QCOMPARE(glide.offset(), -1.0);
        QCOMPARE(moved.count(), 1);
    }

    void startBeginsAnew()
    {
        ZGlide glide(nullptr);
        glide.start(1000);
        QTRY_VERIFY_WITH_TIMEOUT(glide.offset() > 0, GlidePatience);
        glide.start(1000);
        QVERIFY(glide.isRunning());
        QCOMPARE(glide.offset(), -1.0);
    }

    void doesNothingWhereThereIsNoNeed_data()
    {
        QTest::addColumn<bool>("motion");
        QTest::addColumn<int>("distance");
        QTest::newRow("without motion") << false << 100;
        QTest::newRow("text that just fits") << true << 0;
        QTest::newRow("text that fits") << true << -20;
    }

    void doesNothingWhereThereIsNoNeed()
    {
        QFETCH(bool, motion);
        QFETCH(int, distance);
        ZMotion::setEnabled(motion);
        ZGlide glide(nullptr);
        QSignalSpy moved(&glide, &ZGlide::moved);
        glide.start(distance);
        QVERIFY(!glide.isRunning());
        QCOMPARE(glide.offset(), -1.0);
        QCOMPARE(moved.count(), 0);
    }
};

QUARN_TEST_MAIN(tst_ZGlide)
#include "tst_zglide.moc"
