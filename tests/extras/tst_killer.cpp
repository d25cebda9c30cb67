#include "tests/support/bytefiles.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <csignal>

namespace
{

/// A process that makes changes, from its start to its end.
struct Changing {
    explicit Changing(const QStringList& variables, const QStringList& more = {})
    {
        folder.write("source", "source");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LD_PRELOAD", KILLER_LIBRARY);
        // The sanitizer wants to be first.
        environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
        environment.insert("QUARN_KILL_COUNT", countFile());
        for (const QString& variable : variables)
            environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(CHANGE_DRIVER, QStringList{folder.path()} + more);
        if (!process.waitForFinished(60000))
            return;
        crashed = process.exitStatus() == QProcess::CrashExit;
        status = process.exitCode();
        made = process.readAllStandardOutput().split('\n');
        made.removeLast();
    }

    QString countFile() const { return counts.path("count"); }

    ScratchFolder folder;
    ScratchFolder counts;
    bool crashed = false;
    int status = -1; ///< exit status, or the signal that ended it
    QByteArrayList made;
};

} // namespace

class tst_Killer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const Changing all({});
        QVERIFY(!all.crashed);
        QCOMPARE(all.status, 0);
        all_ = all.made;
        QVERIFY(all_.size() > 40);
        count_ = all.counts.read("count").trimmed().toInt();
    }

    void everyChangeCountsOnce() { QCOMPARE(count_, int(all_.size())); }

    void whatOnlyReadsDoesNotCount()
    {
        const Changing reading({}, {"only reading"});
        QCOMPARE(reading.status, 0);
        QCOMPARE(reading.counts.read("count"), QByteArray("0\n"));
    }

    void theProcessEndsBeforeTheChosenChange()
    {
        for (int number = 1; number <= count_; ++number) {
            const Changing killed({"QUARN_KILL_AT=" + QString::number(number)});
            QVERIFY(killed.crashed);
            QCOMPARE(killed.status, SIGKILL);
            QCOMPARE(killed.made, all_.mid(0, number - 1));
            QVERIFY(!killed.counts.exists("count"));
        }
    }

    void theChosenChangeIsNotMade()
    {
        const Changing killed({"QUARN_KILL_AT=1"});
        QVERIFY(!killed.folder.exists("a"));
    }

    void theChosenChangeIsMadeIfItIsToEndAfterIt()
    {
        const Changing killed({"QUARN_KILL_AT=1", "QUARN_KILL_AFTER=1"});
        QCOMPARE(killed.status, SIGKILL);
        QVERIFY(killed.made.isEmpty());
        QVERIFY(killed.folder.exists("a"));
    }

    void aNumberBeyondTheLastChangeEndsNothing()
    {
        const Changing whole({"QUARN_KILL_AT=" + QString::number(count_ + 1)});
        QCOMPARE(whole.status, 0);
        QCOMPARE(whole.made, all_);
    }

private:
    QByteArrayList all_;
    int count_ = 0;
};

QUARN_TEST_MAIN(tst_Killer)
#include "tst_killer.moc"
