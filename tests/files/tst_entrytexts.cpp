#include "files/entrytexts.h"
#include "tests/support/testmain.h"

class tst_EntryTexts : public QObject
{
    Q_OBJECT

private slots:
    void sizeTextCutsToTwoDecimals_data()
    {
        QTest::addColumn<double>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << 0.0 << "0 b";
        QTest::newRow("below a kilobyte") << 1023.0 << "1023 b";
        QTest::newRow("half a byte") << 1023.5 << "1023.5 b";
        QTest::newRow("a kilobyte") << 1024.0 << "1 Kb";
        QTest::newRow("one and a half") << 1536.0 << "1.5 Kb";
        QTest::newRow("below a megabyte") << 1048575.0 << "1023.99 Kb";
        QTest::newRow("a megabyte") << 1048576.0 << "1 Mb";
        QTest::newRow("some") << 5000000.0 << "4.76 Mb";
        QTest::newRow("many") << 123456789.0 << "117.73 Mb";
        QTest::newRow("most of a signed number") << 2147483647.0 << "2047.99 Mb";
    }

    void sizeTextCutsToTwoDecimals()
    {
        QFETCH(double, bytes);
        QTEST(sizeText(bytes), "text");
    }

    void wideSizeTextHasLargerUnits_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        constexpr qint64 Gigabyte = qint64(1) << 30;
        QTest::newRow("nothing") << qint64(0) << "0 b";
        QTest::newRow("one and a half") << qint64(1536) << "1.5 Kb";
        QTest::newRow("below a gigabyte") << Gigabyte - 1 << "1023.99 Mb";
        QTest::newRow("a gigabyte") << Gigabyte << "1 Gb";
        QTest::newRow("beyond 32 bits") << 5 * Gigabyte << "5 Gb";
        QTest::newRow("some") << 5 * Gigabyte + 123456789 << "5.11 Gb";
        QTest::newRow("below a terabyte") << 1024 * Gigabyte - 1 << "1023.99 Gb";
        QTest::newRow("terabytes") << 1536 * Gigabyte << "1.5 Tb";
    }

    void wideSizeTextHasLargerUnits()
    {
        QFETCH(qint64, bytes);
        QTEST(wideSizeText(bytes), "text");
    }

    void dateIsDayFirstWithZeros()
    {
        QCOMPARE(dateText(1, 3, 2008), QStringLiteral("01/03/2008"));
        QCOMPARE(dateText(25, 12, 2008), QStringLiteral("25/12/2008"));
    }

    void extensionIsWhatFollowsTheLastDot()
    {
        QCOMPARE(extensionOf(QStringLiteral("photo.Jpg")), QStringLiteral("JPG"));
        QCOMPARE(extensionOf(QStringLiteral("archive.tar.gz")), QStringLiteral("GZ"));
        QCOMPARE(extensionOf(QStringLiteral(".profile")), QStringLiteral("PROFILE"));
        QCOMPARE(extensionOf(QStringLiteral("README")), QStringLiteral("quarn_execute"));
        QCOMPARE(extensionOf(QStringLiteral("dot.")), QString(QLatin1String("")));
    }
};

QUARN_TEST_MAIN(tst_EntryTexts)
#include "tst_entrytexts.moc"
