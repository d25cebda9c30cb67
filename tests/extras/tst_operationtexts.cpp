#include "extras/failurerows.h"
#include "extras/metadata.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "lang/texts.h"
#include "tests/support/testmain.h"

#include <cerrno>
#include <cstring>

class tst_OperationTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { loadTexts(QString()); }

    void durationHasNoMoreThanItTakes_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0 << "0 s";
        QTest::newRow("seconds") << 59 << "59 s";
        QTest::newRow("a minute") << 60 << "1:00";
        QTest::newRow("minutes") << 125 << "2:05";
        QTest::newRow("below an hour") << 3599 << "59:59";
        QTest::newRow("an hour") << 3600 << "1:00:00";
        QTest::newRow("hours") << 3600 * 25 + 61 << "25:01:01";
    }

    void durationHasNoMoreThanItTakes()
    {
        QFETCH(int, seconds);
        QTEST(durationText(seconds), "text");
    }

    void whatIsPutInIsNotReadAgain()
    {
        QCOMPARE(filledText("%1 of %2", "%2", "%1"), QString("%2 of %1"));
        QCOMPARE(filledText("a 5% b %1", "%"), QString("a 5% b %"));
    }

    void systemsErrorIsSaidInWords_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("text");
        QTest::newRow("full") << ENOSPC << "No room left";
        QTest::newRow("quota") << EDQUOT << "Your share of the drive is full";
        QTest::newRow("rights") << EACCES << "No permission";
        QTest::newRow("fault") << EIO << "The drive is faulty";
        QTest::newRow("read-only") << EROFS << "The drive is read-only";
        QTest::newRow("there already") << EEXIST << LANG_RENAME_EXISTS;
        QTest::newRow("without a text of ours")
            << EMLINK << QString::fromLocal8Bit(std::strerror(EMLINK));
        QTest::newRow("none") << 0 << QString();
    }

    void systemsErrorIsSaidInWords()
    {
        QFETCH(int, error);
        QTEST(errorText(error), "text");
    }

    void reasonIsTheSystemsIfItGaveOne()
    {
        QCOMPARE(reasonText({"/a", Trouble::CannotWrite, ENOSPC}), QString("No room left"));
        QCOMPARE(reasonText({"/a", Trouble::CannotWrite, 0}), QString("Cannot be written"));
        // What is refused is so whatever the system would say.
        QCOMPARE(reasonText({"/a", Trouble::TooLarge, EFBIG}),
                 QString("Too large for the drive there"));
        QCOMPARE(reasonText({"/a", Trouble::IntoItself, EINVAL}),
                 QString("A folder cannot go into itself"));
    }

    void failuresBecomeRowsWithTheirFolders()
    {
        Listed<Failure> failures;
        failures.add({"/home/user/a\nb\xff", Trouble::CannotWrite, ENOSPC});
        failures.add({"/c", Trouble::Missing, 0});
        const QList<EntryPage::Row> rows = failureRows(failures);
        QCOMPARE(rows.size(), 2);
        QVERIFY(!rows.at(0).name.contains('\n'));
        QCOMPARE(rows.at(0).detail, QString("No room left"));
        QCOMPARE(rows.at(0).notes, (QStringList{"/home/user", "Cannot be written"}));
        QCOMPARE(rows.at(1).name, QString("c"));
        QCOMPARE(rows.at(1).notes, (QStringList{"/", QString()}));
    }

    void failuresBeyondTheListAreCounted()
    {
        Listed<Failure> failures;
        for (qint64 i = 0; i < Listed<Failure>::Most + 7; ++i)
            failures.add({"/a", Trouble::CannotRead, EIO});
        QCOMPARE(failureRows(failures).last().name, QString("And 7 more"));
    }

    void aNameThatIsRefusedIsSaidToBe()
    {
        const QString impossible = "The name is not possible there";
        QCOMPARE(reasonText({"/a:b", Trouble::CannotRename, EINVAL}), impossible);
        QCOMPARE(reasonText({"/a\xff", Trouble::CannotRename, EILSEQ}), impossible);
        QVERIFY(reasonText({"/a", Trouble::CannotRead, EINVAL}) != impossible);
        QCOMPARE(reasonText({"/a", Trouble::CannotWrite, EFBIG}),
                 QString("Too large for the drive there"));
    }

    void whatWasToldIsTheSameEntryForTheSameReason()
    {
        Listed<Failure> told;
        told.add({"/a", Trouble::NotAllowed, EACCES});
        told.add({"/b", Trouble::TooLarge, EFBIG});
        Listed<Failure> failures;
        QVERIFY(wereTold(failures, {}));
        failures.add({"/a", Trouble::CannotRead, EACCES});
        QVERIFY(wereTold(failures, told));
        QVERIFY(!wereTold(failures, {}));
        failures.add({"/b", Trouble::CannotWrite, ENOSPC});
        QVERIFY(!wereTold(failures, told));
    }

    void whatIsCountedOnlyWasNotTold()
    {
        Listed<Failure> failures;
        for (qint64 i = 0; i <= Listed<Failure>::Most; ++i)
            failures.add({"/a", Trouble::CannotRead, EIO});
        QVERIFY(!wereTold(failures, failures));
    }

    void figuresAreBytesWhereThereAreAny()
    {
        OperationProgress progress;
        progress.entriesDone = 12;
        progress.entriesTotal = 340;
        QCOMPARE(doneText(progress), QString("12 / 340"));
        QCOMPARE(paceText(progress), QString());
        progress.bytesTotal = qint64(3) << 30;
        progress.bytesDone = 1536;
        progress.bytesPerSecond = 12.5 * 1024 * 1024;
        QCOMPARE(doneText(progress), QString("1.5 Kb / 3 Gb"));
        QCOMPARE(paceText(progress), QString("12.5 Mb/s"));
        progress.secondsLeft = 125;
        QCOMPARE(paceText(progress), QString("12.5 Mb/s   2:05 left"));
    }

    void whatIsNotKeptIsNamed()
    {
        QCOMPARE(lacksText(0), QString());
        QCOMPARE(lacksText(LacksRights), QString("Rights"));
        QCOMPARE(lacksText(LacksOwner | LacksRights | LacksTime | LacksAttributes),
                 LANG_OWNER + ", Rights, Date, Attributes");
    }

    void factsSayWhatItIs()
    {
        const qint64 day = 1700000000 * qint64(1000000000);
        QVERIFY(factsText({EntryType::File, 1536, day}).startsWith("1.5 Kb, "));
        QVERIFY(factsText({EntryType::Folder, 4096, day}).startsWith(LANG_FOLDER + ", "));
        QVERIFY(factsText({EntryType::Link, 4, day}).startsWith(LANG_SYMLINK + ", "));
    }
};

QUARN_TEST_MAIN(tst_OperationTexts)
#include "tst_operationtexts.moc"
