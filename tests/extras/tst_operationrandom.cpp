// Random copies, moves and deletes, beside what cp, mv and rm make of the same trees.

#include "tests/extras/operationplaces.h"
#include "tests/support/testmain.h"
#include "tests/tools/treetext.h"

#include <QProcess>
#include <QRandomGenerator>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

constexpr int Rounds = 120;
constexpr int OperationsInARound = 40;

QByteArray quoted(QByteArray path)
{
    return '\'' + path.replace('\'', "'\\''") + '\'';
}

/// Two trees that begin alike: in one works the engine, in the other the tools.
class Twins
{
public:
    explicit Twins(quint32 seed) : random_(seed), folder_(otherPlace())
    {
        making::folder(ours());
        fill(ours(), 3);
        run("cp -a " + quoted(ours()) + ' ' + quoted(theirs()) + '\n');
        script_ = "cd " + quoted(theirs()) + " || exit 1\n";
    }

    QByteArray ours() const { return folder_.path("ours"); }
    QByteArray theirs() const { return folder_.path("theirs"); }

    /// Does something in one tree and notes it for the other. False if the tools do not do that.
    bool doAny()
    {
        const std::vector<fs::path> all = entries();
        if (all.empty())
            return false;
        const fs::path source = all[random_.bounded(quint32(all.size()))];
        const quint32 choice = random_.bounded(10);
        if (choice == 0)
            return remove(source);
        const fs::path target = anyFolder(all);
        const fs::path place = target / source.filename();
        if (target.string().starts_with(source.string() + '/') || target == source)
            return false;
        return choice < 6 ? copy(source, target, place) : move(source, target, place);
    }

    void runTools() { run(script_); }

private:
    void run(const QByteArray& script)
    {
        QProcess shell;
        shell.start(QStringLiteral("sh"), {QStringLiteral("-s")});
        shell.write(script);
        shell.closeWriteChannel();
        QVERIFY(shell.waitForFinished(60000));
        QCOMPARE(shell.readAllStandardError(), QByteArray());
        QCOMPARE(shell.exitCode(), 0);
    }

    QByteArray anyName()
    {
        static const QByteArrayList names{"a",        "b",    "c",        "d.txt", "e e", "-f",
                                          "g'\"$(h)", "i\nj", "\xff\xfe", ".k",    "l&m", "n;o"};
        return names[random_.bounded(names.size())];
    }

    void fill(const QByteArray& folder, int depth)
    {
        std::error_code error;
        fs::create_directory(folder.toStdString(), error);
        const int count = 2 + int(random_.bounded(5));
        for (int i = 0; i < count; ++i) {
            const QByteArray path = folder + '/' + anyName();
            if (fs::exists(fs::symlink_status(path.toStdString())))
                continue;
            makeAny(path, depth);
        }
    }

    void makeAny(const QByteArray& path, int depth)
    {
        switch (random_.bounded(depth > 0 ? 8 : 5)) {
        case 0:
            making::symbolicLink(path, anyName());
            break;
        case 1:
            making::fifo(path);
            break;
        case 2:
            if (!files_.isEmpty() &&
                ::link(files_[random_.bounded(files_.size())].constData(), path.constData()) == 0)
                return;
            [[fallthrough]];
        case 3:
        case 4:
            making::file(path, QByteArray(int(random_.bounded(9000)), 'x') + path);
            if (random_.bounded(4) == 0)
                QCOMPARE(truncate(path.constData(), 200000), 0);
            QCOMPARE(chmod(path.constData(), random_.bounded(2) == 0 ? 0640 : 0400), 0);
            files_.append(path);
            break;
        default:
            fill(path, depth - 1);
            return;
        }
        making::age(path, 1000000000 + long(random_.bounded(100000)));
    }

    std::vector<fs::path> entries() const
    {
        std::vector<fs::path> all;
        for (const auto& entry : fs::recursive_directory_iterator(ours().toStdString()))
            all.push_back(entry.path());
        std::sort(all.begin(), all.end());
        return all;
    }

    fs::path anyFolder(const std::vector<fs::path>& all)
    {
        std::vector<fs::path> folders{ours().toStdString()};
        for (const fs::path& path : all) {
            if (fs::is_directory(fs::symlink_status(path)))
                folders.push_back(path);
        }
        return folders[random_.bounded(quint32(folders.size()))];
    }

    QByteArray inTheirs(const fs::path& path) const
    {
        const QByteArray relative = QByteArray::fromStdString(path.string()).mid(ours().size());
        return quoted('.' + relative);
    }

    /// Whether one can take the place of the other, or join it, as the tools see it: kind for kind,
    /// and not with itself.
    static bool canTake(const fs::path& source, const fs::path& place)
    {
        const auto kind = fs::symlink_status(place).type();
        if (kind == fs::file_type::not_found)
            return true;
        const bool isFolder = fs::is_directory(fs::symlink_status(source));
        if (isFolder != (kind == fs::file_type::directory))
            return false;
        struct stat one = {};
        struct stat other = {};
        lstat(source.c_str(), &one);
        lstat(place.c_str(), &other);
        if (one.st_ino == other.st_ino)
            return false;
        // cp asks where links lead.
        if (stat(source.c_str(), &one) == 0 && stat(place.c_str(), &other) == 0 &&
            one.st_ino == other.st_ino)
            return false;
        if (!isFolder)
            return true;
        for (const auto& entry : fs::directory_iterator(source)) {
            if (!canTake(entry.path(), place / entry.path().filename()))
                return false;
        }
        return true;
    }

    bool copy(const fs::path& source, const fs::path& target, const fs::path& place)
    {
        if (!canTake(source, place))
            return false;
        script_ +=
            "cp -a --remove-destination -- " + inTheirs(source) + ' ' + inTheirs(target) + "/\n";
        perform(OperationKind::Copy, source, target);
        return true;
    }

    bool move(const fs::path& source, const fs::path& target, const fs::path& place)
    {
        const bool isThere = fs::exists(fs::symlink_status(place));
        if (isThere && (!canTake(source, place) || fs::is_directory(fs::symlink_status(source))))
            return false;
        script_ += "mv -f -- " + inTheirs(source) + ' ' + inTheirs(target) + "/\n";
        perform(OperationKind::Move, source, target);
        return true;
    }

    bool remove(const fs::path& source)
    {
        script_ += "rm -rf -- " + inTheirs(source) + '\n';
        perform(OperationKind::Delete, source, {});
        return true;
    }

    static void perform(OperationKind kind, const fs::path& source, const fs::path& target)
    {
        OperationRequest request;
        request.kind = kind;
        request.sources = {QByteArray::fromStdString(source.string())};
        request.target = QByteArray::fromStdString(target.string());
        runWell(request);
    }

    QRandomGenerator random_;
    OwnFolder folder_;
    QByteArrayList files_;
    QByteArray script_;
};

} // namespace

class tst_OperationRandom : public QObject
{
    Q_OBJECT

private slots:
    void doesWhatTheToolsDo()
    {
        const OwnFolder state(otherPlace());
        qputenv("XDG_STATE_HOME", state.path());
        int done = 0;
        for (quint32 round = 0; round < Rounds; ++round) {
            Twins twins(round);
            for (int i = 0; i < OperationsInARound; ++i)
                done += twins.doAny() ? 1 : 0;
            QVERIFY2(!QTest::currentTestFailed(), qPrintable(QString::number(round)));
            twins.runTools();
            const QByteArrayList ours = withoutFolderTimes(wholeText(twins.ours()));
            const QByteArrayList theirs = withoutFolderTimes(wholeText(twins.theirs()));
            QVERIFY2(ours == theirs,
                     ("round " + QByteArray::number(round) + ": " + differences(theirs, ours))
                         .constData());
        }
        qInfo("%d operations", done);
        QVERIFY(done > 1000);
    }
};

QUARN_TEST_MAIN(tst_OperationRandom)
#include "tst_operationrandom.moc"
