// Copies, moves and deletes, ended at every change that they make to the disk.

#include "extras/journals.h"
#include "tests/extras/operationplaces.h"
#include "tests/support/bytefiles.h"
#include "tests/support/rootpowers.h"
#include "tests/tools/treetext.h"

#include <QTest>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace
{

/// What is done, and with what in its way.
struct Deed {
    const char* name;
    const char* does;
    const char* answer;
    bool isInTheWay;
    OperationPlaces::Where where;
};

const Deed deeds[] = {
    {"copy", "copy", "replace", false, OperationPlaces::Together},
    {"replace", "copy", "replace", true, OperationPlaces::Together},
    {"keep both", "copy", "keep", true, OperationPlaces::Together},
    {"leave out", "copy", "leave", true, OperationPlaces::Together},
    {"move", "move", "replace", false, OperationPlaces::Together},
    {"merge", "move", "replace", true, OperationPlaces::Together},
    {"move across", "move", "replace", false, OperationPlaces::ApartInMemory},
    {"merge across", "move", "keep", true, OperationPlaces::ApartInMemory},
    {"delete", "delete", "replace", false, OperationPlaces::Together},
};

int runDriver(const std::vector<std::string>& arguments, const std::vector<std::string>& variables)
{
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    std::vector<char*> environment;
    for (const std::string& variable : variables)
        environment.push_back(const_cast<char*>(variable.c_str()));
    environment.push_back(nullptr);
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = -1;
    if (posix_spawn(&child, argv[0], &quiet, nullptr, argv.data(), environment.data()) == 0)
        waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&quiet);
    return status;
}

/// One deed from a fresh start.
class Case
{
public:
    explicit Case(const Deed& deed) : deed_(deed), places_(deed.where)
    {
        makeEveryKind(places_.source("tree"));
        // Nobody can take anything out of a folder that he may not write.
        if (qstrcmp(deed.does, "copy") != 0)
            QCOMPARE(chmod(places_.source("tree/locked").constData(), 0755), 0);
        making::file(places_.source("single"), "single");
        if (deed.isInTheWay)
            makeObstacles();
        ageAll(places_.source());
        ageAll(places_.target());
        before_ = all();
    }

    /// The status that waitpid() gives.
    int run(int killAt, bool after) const
    {
        return runWith({deed_.does, deed_.answer, places_.target().toStdString(),
                        places_.source("tree").toStdString(),
                        places_.source("single").toStdString()},
                       killAt, after);
    }
    /// Goes on with what was cut short: "finish" or "takeback".
    int resume(const char* how, int killAt) const { return runWith({how}, killAt, false); }

    int runWith(std::vector<std::string> arguments, int killAt, bool after) const
    {
        arguments.insert(arguments.begin(), OPERATION_DRIVER);
        std::vector<std::string> variables{std::string("LD_PRELOAD=") + KILLER_LIBRARY,
                                           "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0",
                                           "XDG_STATE_HOME=" + places_.state().toStdString(),
                                           "QUARN_KILL_COUNT=" +
                                               (places_.state() + "/count").toStdString()};
        if (killAt > 0)
            variables.push_back("QUARN_KILL_AT=" + std::to_string(killAt));
        if (after)
            variables.push_back("QUARN_KILL_AFTER=1");
        return runDriver(arguments, variables);
    }
    int count() const { return readFile(places_.state() + "/count").trimmed().toInt(); }

    /// Both sides.
    QByteArrayList all() const
    {
        QByteArrayList lines;
        for (const QByteArray& line : wholeText(places_.source()))
            lines.append("source" + line);
        for (const QByteArray& line : wholeText(places_.target()))
            lines.append("target" + line);
        return withoutTopTimes(lines);
    }
    const QByteArrayList& before() const { return before_; }

    /// What of the files of the source is whole nowhere, and what in the way has become neither
    /// what it was nor its successor.
    QByteArray lost() const
    {
        QByteArrayList now = all();
        for (QByteArray& line : now)
            line = contentOf(line);
        QByteArray text;
        for (const QByteArray& line : before_) {
            const QByteArray content = contentOf(line);
            if (line.startsWith("source") && !content.isEmpty() && !now.contains(content))
                text += line + '\n';
        }
        for (const QByteArray& line : all()) {
            const bool isNamed = line.startsWith("target") && !line.contains("/.quarn-");
            const QByteArray content = contentOf(line);
            if (isNamed && !content.isEmpty() && !isFromBefore(content))
                text += "half: " + line + '\n';
        }
        return text;
    }

    const OperationPlaces& places() const { return places_; }

private:
    /// Files for files, a folder for a file and a file for a folder, and folders that are joined.
    void makeObstacles()
    {
        making::folder(places_.target("tree"));
        making::file(places_.target("tree/file"), "in the way");
        making::folder(places_.target("tree/empty"));
        making::file(places_.target("tree/empty/within"), "within");
        making::file(places_.target("tree/locked"), "no folder");
        making::folder(places_.target("tree/sub"));
        making::file(places_.target("tree/sub/other"), "other");
        making::file(places_.target("tree/sub/linked"), "in the way, too");
        making::symbolicLink(places_.target("tree/fifo"), "other");
        making::file(places_.target("single"), "another");
    }

    QByteArrayList withoutTopTimes(QByteArrayList lines) const
    {
        // What was joined has got new entries, now or then.
        if (deed_.isInTheWay)
            return withoutFolderTimes(lines);
        lines.removeIf([](const QByteArray& line) {
            return line.startsWith("source mode") || line.startsWith("target mode");
        });
        return lines;
    }

    static QByteArray contentOf(const QByteArray& line)
    {
        const qsizetype at = line.indexOf(" content ");
        return at < 0 ? QByteArray() : line.mid(at);
    }
    bool isFromBefore(const QByteArray& content) const
    {
        return std::any_of(before_.begin(), before_.end(), [&content](const QByteArray& line) {
            return contentOf(line) == content;
        });
    }

    const Deed& deed_;
    OperationPlaces places_;
    QByteArrayList before_;
};

} // namespace

class tst_OperationCrash : public QObject
{
    Q_OBJECT

private:
    static void addDeeds()
    {
        QTest::addColumn<int>("number");
        for (int number = 0; number < int(std::size(deeds)); ++number)
            QTest::newRow(deeds[number].name) << number;
    }

private slots:
    void whatIsCutShortIsFinished_data() { addDeeds(); }
    void whatIsCutShortIsFinished()
    {
        QFETCH(int, number);
        const Deed& deed = deeds[number];
        Case undisturbed(deed);
        QVERIFY(WIFEXITED(undisturbed.run(0, false)));
        const int count = undisturbed.count();
        const QByteArrayList expected = undisturbed.all();
        QVERIFY(count > 8);
        int found = 0;
        // Between two changes the disk stays as it is: before the next is after the one.
        for (int killed = 1; killed <= count + 1; ++killed) {
            const Case cut(deed);
            const int status = cut.run(std::min(killed, count), killed > count);
            QVERIFY2(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL,
                     qPrintable(QString::number(status)));
            if (qstrcmp(deed.does, "delete") != 0)
                QVERIFY2(cut.lost().isEmpty(), at(killed, cut.lost()));
            const auto journals = findJournals();
            const bool isWhole = cut.all() == expected || cut.all() == cut.before();
            QVERIFY2(journals.size() == 1 || isWhole, at(killed, "no journal"));
            for (const InterruptedOperation& one : journals) {
                ++found;
                QVERIFY2(!one.isDamaged, at(killed, "damaged"));
                const auto operation = Operation::finish(one.journal);
                QVERIFY2(operation != nullptr, at(killed, std::strerror(errno)));
                runToEnd(*operation);
                QVERIFY2(operation->failures().isEmpty(), at(killed, told(*operation)));
                QVERIFY2(cut.all() == expected, at(killed, differences(expected, cut.all())));
            }
            QVERIFY2(cut.places().journals().isEmpty(), at(killed, "a journal stays"));
        }
        qInfo("%s: %d changes, killed %d times, finished %d times", deed.name, count, count + 1,
              found);
    }

    void whatIsCutShortIsTakenBack_data() { addDeeds(); }
    void whatIsCutShortIsTakenBack()
    {
        QFETCH(int, number);
        const Deed& deed = deeds[number];
        if (qstrcmp(deed.does, "delete") == 0 || qstrcmp(deed.answer, "leave") == 0)
            return;
        Case undisturbed(deed);
        QVERIFY(WIFEXITED(undisturbed.run(0, false)));
        const int count = undisturbed.count();
        // What was replaced does not come back.
        const bool isExact = !deed.isInTheWay || qstrcmp(deed.answer, "keep") == 0;
        int taken = 0;
        for (int killed = 1; killed <= count; ++killed) {
            const Case cut(deed);
            QVERIFY(WIFSIGNALED(cut.run(killed, false)));
            for (const InterruptedOperation& one : findJournals()) {
                ++taken;
                const auto operation = Operation::takeBack(one.journal);
                QVERIFY2(operation != nullptr, at(killed, std::strerror(errno)));
                runToEnd(*operation);
                if (isExact)
                    QVERIFY2(cut.all() == cut.before(),
                             at(killed, told(*operation) + differences(cut.before(), cut.all())));
                else
                    QVERIFY2(cut.lost().isEmpty(), at(killed, cut.lost()));
            }
            QVERIFY2(cut.places().journals().isEmpty(), at(killed, "a journal stays"));
        }
        qInfo("%s: taken back %d times", deed.name, taken);
    }

    void whatIsCutShortAgainIsFinished_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<int>("part");
        for (const int number : {1, 6, 7}) {
            for (const int part : {60})
                QTest::addRow("%s, %d percent", deeds[number].name, part) << number << part;
        }
    }
    void whatIsCutShortAgainIsFinished()
    {
        QFETCH(int, number);
        QFETCH(int, part);
        const Deed& deed = deeds[number];
        const Case undisturbed(deed);
        QVERIFY(WIFEXITED(undisturbed.run(0, false)));
        const int first = undisturbed.count() * part / 100;
        const QByteArrayList expected = undisturbed.all();
        bool isOver = false;
        int kills = 0;
        // Each time from the start, cut short at the same place, and then later and later.
        for (int second = 1; !isOver; second += 3) {
            const Case cut(deed);
            QVERIFY(WIFSIGNALED(cut.run(first, false)));
            isOver = !WIFSIGNALED(cut.resume("finish", second));
            kills += isOver ? 0 : 1;
            QVERIFY2(cut.lost().isEmpty(), at(second, cut.lost()));
            QVERIFY(WIFEXITED(cut.resume("finish", 0)));
            QVERIFY2(cut.all() == expected, at(second, differences(expected, cut.all())));
            QVERIFY2(cut.places().journals().isEmpty(), at(second, "a journal stays"));
        }
        QVERIFY(kills > 3);
        qInfo("%s: cut short again %d times", deed.name, kills);
    }

    void whatIsTakenBackInPartIsTakenBackFurther()
    {
        // Copies that keep both, and moves across that do: all of it comes back.
        for (const int number : {2, 7}) {
            const Deed& deed = deeds[number];
            const Case undisturbed(deed);
            QVERIFY(WIFEXITED(undisturbed.run(0, false)));
            const int first = undisturbed.count() * 9 / 10;
            bool isOver = false;
            for (int second = 1; !isOver; second += 4) {
                const Case cut(deed);
                QVERIFY(WIFSIGNALED(cut.run(first, false)));
                isOver = !WIFSIGNALED(cut.resume("takeback", second));
                QVERIFY(WIFEXITED(cut.resume("takeback", 0)));
                QVERIFY2(cut.all() == cut.before(),
                         at(second, differences(cut.before(), cut.all())));
            }
        }
    }

private:
    const char* at(int killed, const QByteArray& text)
    {
        message_ = "killed at " + QByteArray::number(killed) + ": " + text;
        return message_.constData();
    }
    static QByteArray told(const Operation& operation)
    {
        QByteArray text;
        for (const Failure& failure : operation.failures().first)
            text += failure.path + " trouble " + QByteArray::number(int(failure.trouble)) + ' ' +
                    std::strerror(failure.error) + '\n';
        return text;
    }

    QByteArray message_;
};

int main(int argc, char** argv)
{
    giveUpRootPowers(argv);
    enterOwnMounts();
    tst_OperationCrash test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_operationcrash.moc"
