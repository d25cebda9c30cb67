// Everything that is done with a trash, ended at every change that it makes to the disk.

#include "tests/extras/trashplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <algorithm>
#include <csignal>

namespace
{

/// A tree without times, which differ for files that were made anew.
QByteArrayList withoutTimes(const QByteArray& path)
{
    QByteArrayList lines = treeText(path);
    for (QByteArray& line : lines) {
        const qsizetype start = line.lastIndexOf(" time ");
        const qsizetype end = line.indexOf(' ', start + 6);
        line.remove(start, (end < 0 ? line.size() : end) - start);
    }
    return lines;
}

/// What a run left behind, with nothing in it that differs from time to time.
struct Left {
    QByteArrayList tree;   ///< at its place
    QByteArrayList files;  ///< in the trash
    QByteArrayList infos;  ///< names
    QByteArrayList others; ///< names beside them
    QByteArrayList list;   ///< paths of what is listed

    friend bool operator==(const Left&, const Left&) = default;
};

/// One thing that is done, from a fresh start.
class Case
{
public:
    explicit Case(const QByteArray& does) : does_(does)
    {
        making::variety(places_.top("tree"));
        making::file(places_.top("single"), "single");
        whole_ = treeText(places_.top("tree"));
        if (does != "put") {
            run("put", {}, {});
            if (does == "replace")
                making::file(places_.top("tree"), "in the way");
        }
    }

    /// Ends with the number of the signal, or 0.
    int run(const QByteArray& does, const QByteArray& killAt, const QByteArray& after)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LD_PRELOAD", KILLER_LIBRARY);
        environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0");
        environment.insert("QUARN_KILL_AT", killAt);
        environment.insert("QUARN_KILL_AFTER", after);
        environment.insert("QUARN_KILL_COUNT", places_.beside("count"));
        QStringList arguments{places_.home(), places_.places().mounts, does};
        if (does != "empty")
            arguments << places_.top("tree") << places_.top("single");
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(TRASH_DRIVER, arguments);
        if (!process.waitForFinished(60000))
            return -1;
        return process.exitStatus() == QProcess::CrashExit ? process.exitCode() : 0;
    }
    int runKilled(int number, bool after)
    {
        return run(does_, QByteArray::number(number), after ? "1" : "0");
    }
    int goOn() { return run(does_, {}, {}); }

    int count() const { return readFile(places_.beside("count")).trimmed().toInt(); }

    Left left() const
    {
        Left result;
        result.tree = withoutTimes(places_.top("tree")) + withoutTimes(places_.top("single"));
        for (const QByteArray& name : namesOf(places_.home() + "/Trash/files"))
            result.files += withoutTimes(places_.home() + "/Trash/files/" + name);
        result.infos = namesOf(places_.home() + "/Trash/info");
        result.others = namesOf(places_.home() + "/Trash");
        // What folders take is only remembered.
        result.others.removeOne("directorysizes");
        result.others += namesOf(places_.home() + "/Trash/expunged");
        for (const TrashEntry& entry : places_.trash().entries())
            result.list.append(places_.relative(entry.path));
        std::sort(result.list.begin(), result.list.end());
        return result;
    }

    /// Whether the tree is whole at its place, or in the list and whole.
    bool isWhole() const
    {
        if (treeText(places_.top("tree")) == whole_)
            return true;
        for (const TrashEntry& entry : places_.trash().entries()) {
            if (entry.path == places_.top("tree") &&
                treeText(entry.trash + "/files/" + entry.name) == whole_)
                return true;
        }
        return false;
    }
    /// Whether what was in the way is whole at its place or in the list.
    bool keepsTheReplaced() const
    {
        if (readFile(places_.top("tree")) == "in the way")
            return true;
        for (const TrashEntry& entry : places_.trash().entries()) {
            if (entry.path == places_.top("tree") &&
                readFile(entry.trash + "/files/" + entry.name) == "in the way")
                return true;
        }
        return false;
    }

private:
    QByteArray does_;
    TrashPlaces places_;
    QByteArrayList whole_;
};

} // namespace

class tst_TrashCrash : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsLostWhereverItIsCutShort_data()
    {
        QTest::addColumn<QByteArray>("does");
        for (const char* does : {"put", "restore", "replace", "delete", "empty"})
            QTest::newRow(does) << QByteArray(does);
    }
    void nothingIsLostWhereverItIsCutShort()
    {
        QFETCH(QByteArray, does);
        Case undisturbed(does);
        QCOMPARE(undisturbed.goOn(), 0);
        const int count = undisturbed.count();
        const Left expected = undisturbed.left();
        QVERIFY(count > 5);
        int kills = 0;
        // Between two changes the disk stays as it is: before the next is after the one.
        for (int number = 1; number <= count + 1; ++number) {
            Case cut(does);
            QCOMPARE(cut.runKilled(qMin(number, count), number > count), SIGKILL);
            ++kills;
            QVERIFY(does == "delete" || does == "empty" || cut.isWhole());
            QVERIFY(does != "replace" || cut.keepsTheReplaced());
            QCOMPARE(cut.goOn(), 0);
            const Left now = cut.left();
            if (!(now == expected))
                qCritical() << "after" << number << now.tree << now.files << now.infos << now.others
                            << now.list;
            QVERIFY(now == expected);
        }
        qInfo("%s: %d changes, killed %d times", does.constData(), count, kills);
    }
};

QUARN_TEST_MAIN(tst_TrashCrash)
#include "tst_trashcrash.moc"
