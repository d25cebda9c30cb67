#include "files/copyfile.h"
#include "tests/browser/socketfile.h"
#include "tests/fileops/filefaults.h"
#include "tests/support/scratchfolder.h"
#include "tests/support/testmain.h"
#include "tests/tools/filesystems.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr qint64 Block = 524288;
constexpr qint64 GiB = 1024LL * 1024 * 1024;

const QString Source = QStringLiteral("source");
const QString Target = QStringLiteral("target");

/// Bytes that differ from block to block.
QByteArray content(qint64 size)
{
    QByteArray bytes(size, '\0');
    for (qint64 i = 0; i < size; ++i)
        bytes[i] = char('a' + (i / 7 + i / Block) % 26);
    return bytes;
}

qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}

/// A copy and what it told on its way.
struct Copy {
    Copy(const QString& source, const QString& target, const std::function<void()>& pause = {})
    {
        const qsizetype before = openDescriptors();
        succeeded = copyFileBlocks(
            source, target,
            [this](quint32 done) {
                counts.append(done);
                steps += QLatin1Char('b');
            },
            [this, &pause] {
                steps += QLatin1Char('.');
                if (pause)
                    pause();
            });
        descriptorsLeft = openDescriptors() - before;
    }

    bool succeeded = false;
    QList<quint32> counts;
    QString steps; ///< "." a pause, "b" a block
    qsizetype descriptorsLeft = 0;
};

} // namespace

class tst_CopyFile : public QObject
{
    Q_OBJECT

private slots:
    void init() { folder_ = std::make_unique<ScratchFolder>(); }
    void cleanup() { folder_.reset(); }

    void contentIsCopiedBlockByBlock_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QList<quint32>>("counts");
        QTest::newRow("empty") << 0LL << QList<quint32>{0};
        QTest::newRow("one byte") << 1LL << QList<quint32>{0};
        QTest::newRow("less than a block") << Block - 1 << QList<quint32>{0};
        QTest::newRow("a block") << Block << QList<quint32>{0, 524288};
        QTest::newRow("more than a block") << Block + 1 << QList<quint32>{0, 524288};
        QTest::newRow("600000") << 600000LL << QList<quint32>{0, 524288};
        QTest::newRow("two megabytes")
            << 4 * Block << QList<quint32>{0, 524288, 1048576, 1572864, 2097152};
    }

    void contentIsCopiedBlockByBlock()
    {
        QFETCH(qint64, size);
        QFETCH(QList<quint32>, counts);
        folder_->write(Source, content(size));
        const Copy copy(source(), target());
        QVERIFY(copy.succeeded);
        QCOMPARE(copy.counts, counts);
        QCOMPARE(copy.steps, "." + QString("b.").repeated(counts.size()) + ".");
        QCOMPARE(copy.descriptorsLeft, 0);
        QVERIFY(folder_->exists(Target));
        QVERIFY(folder_->read(Target) == content(size));
        QVERIFY(folder_->read(Source) == content(size));
    }

    void countWrapsAtFourGigabytes()
    {
        folder_->writeSparse(Source, 4 * GiB + 5);
        folder_->makeLink(Target, "/dev/null");
        FileFaults faults(source());
        faults.pretend(4 * GiB + 5);
        const Copy copy(source(), target());
        QVERIFY(copy.succeeded);
        QCOMPARE(faults.done(), 4 * GiB + 5);
        QCOMPARE(copy.counts.size(), 8193);
        QCOMPARE(copy.counts.at(8191), quint32(4 * GiB - Block));
        QCOMPARE(copy.counts.at(8192), 0U);
    }

    void percentIsCutToAWholeNumber_data()
    {
        QTest::addColumn<quint32>("done");
        QTest::addColumn<quint32>("total");
        QTest::addColumn<int>("percent");
        QTest::newRow("nothing of nothing") << 0U << 0U << 0;
        QTest::newRow("something of nothing") << 524288U << 0U << 0;
        QTest::newRow("nothing") << 0U << 600000U << 0;
        QTest::newRow("most") << 524288U << 600000U << 87;
        QTest::newRow("nearly all") << 999999U << 1000000U << 99;
        QTest::newRow("all") << 524288U << 524288U << 100;
        QTest::newRow("large") << 3000000000U << 4000000000U << 75;
        QTest::newRow("more than all") << 524288U << 5U << 10485760;
        QTest::newRow("far more than all") << 4294443008U << 1U << std::numeric_limits<int>::max();
    }

    void percentIsCutToAWholeNumber()
    {
        QFETCH(quint32, done);
        QFETCH(quint32, total);
        QTEST(copiedPercent(done, total), "percent");
    }

    void existingTargetIsReplacedAsAWhole()
    {
        folder_->write(Source, "new");
        folder_->write(Target, "old and longer");
        folder_->setMode(Target, 0640);
        QVERIFY(Copy(source(), target()).succeeded);
        QCOMPARE(folder_->read(Target), QByteArray("new"));
        QCOMPARE(modeOf(Target), 0640U);
    }

    void newFileHasTheUsualModeNotTheSources()
    {
        folder_->write(Source, "x");
        folder_->setMode(Source, 0700);
        const mode_t before = umask(027);
        QVERIFY(Copy(source(), target()).succeeded);
        umask(before);
        QCOMPARE(modeOf(Target), 0640U);
    }

    void namesAreTakenByTheLetter_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blanks and quotes") << QStringLiteral(" a \"b\" 'c' ");
        QTest::newRow("shell") << QStringLiteral("$HOME `id` ; & * ?");
        QTest::newRow("places") << QStringLiteral("%1 %2 %%");
        QTest::newRow("line break") << QStringLiteral("a\nb");
        QTest::newRow("letters") << QString::fromUtf8("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
        QTest::newRow("longest") << QString(255, QLatin1Char('n'));
    }

    void namesAreTakenByTheLetter()
    {
        QFETCH(QString, name);
        folder_->write(name, "x");
        folder_->makeFolder("to");
        QVERIFY(Copy(folder_->path(name), folder_->path("to//" + name)).succeeded);
        QCOMPARE(folder_->read("to/" + name), QByteArray("x"));
    }

    void sourceThatCannotBeOpenedIsPassedOver_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"missing", "unreadable", "socket", "leads nowhere"})
            QTest::newRow(kind) << kind;
    }

    void sourceThatCannotBeOpenedIsPassedOver()
    {
        QFETCH(QString, kind);
        if (kind == "unreadable") {
            folder_->write(Source, "secret");
            folder_->setMode(Source, 0);
        } else if (kind == "socket") {
            makeSocket(source());
        } else if (kind == "leads nowhere") {
            folder_->makeLink(Source, folder_->path("gone"));
        }
        for (const bool targetIsThere : {false, true}) {
            if (targetIsThere)
                folder_->write(Target, "old");
            const Copy copy(source(), target());
            QVERIFY(copy.succeeded);
            QCOMPARE(copy.steps, QStringLiteral(".."));
            QCOMPARE(copy.descriptorsLeft, 0);
            QCOMPARE(folder_->exists(Target), targetIsThere);
            QCOMPARE(folder_->read(Target), targetIsThere ? "old" : QByteArray());
        }
    }

    void sourceThatVanishesBeforeItIsOpenedIsPassedOver()
    {
        folder_->write(Source, "x");
        const Copy copy(source(), target(), [this] { QFile::remove(source()); });
        QVERIFY(copy.succeeded);
        QVERIFY(!folder_->exists(Target));
    }

    void sourceThatVanishesLaterIsCopiedAsAWhole()
    {
        folder_->write(Source, content(3 * Block));
        int pauses = 0;
        const Copy copy(source(), target(), [this, &pauses] {
            if (++pauses == 2)
                QVERIFY(QFile::remove(source()));
        });
        QVERIFY(copy.succeeded);
        QVERIFY(folder_->read(Target) == content(3 * Block));
    }

    void sourceThatShrinksEndsTheCopyEarly()
    {
        folder_->write(Source, content(4 * Block));
        int pauses = 0;
        const Copy copy(source(), target(), [this, &pauses] {
            if (++pauses == 2)
                QVERIFY(QFile::resize(source(), Block + 10));
        });
        QVERIFY(copy.succeeded);
        QVERIFY(folder_->read(Target) == content(Block + 10));
    }

    void targetThatCannotBeOpenedFailsWithTheFirstBlock_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"no folder", "a folder", "protected", "protected folder",
                                 "a socket", "a FIFO that nobody reads", "a name that is too long"})
            QTest::newRow(kind) << kind;
    }

    void targetThatCannotBeOpenedFailsWithTheFirstBlock()
    {
        QFETCH(QString, kind);
        QString path = target();
        if (kind == "no folder" || kind == "protected folder")
            path = target() + "/file";
        if (kind == "a folder" || kind == "protected folder")
            folder_->makeFolder(Target);
        if (kind == "protected")
            folder_->write(Target, "old");
        if (kind.startsWith("protected"))
            folder_->setMode(Target, 0555);
        if (kind == "a socket")
            makeSocket(target());
        if (kind == "a FIFO that nobody reads")
            folder_->makeFifo(Target);
        if (kind == "a name that is too long")
            path = folder_->path(QString(256, QLatin1Char('n')));
        for (const char* bytes : {"new", ""}) {
            folder_->write(Source, bytes);
            const Copy copy(source(), path);
            QVERIFY2(!copy.succeeded, bytes);
            QCOMPARE(copy.steps, QStringLiteral("."));
            QCOMPARE(copy.descriptorsLeft, 0);
        }
        if (kind == "protected")
            QCOMPARE(folder_->read(Target), QByteArray("old"));
    }

    void failedReadEndsTheCopyAndLeavesThePart_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<qint64>("kept");
        QTest::addColumn<int>("blocks");
        QTest::newRow("at once") << 0LL << 0LL << 0;
        QTest::newRow("within the first block") << 1000LL << 0LL << 0;
        QTest::newRow("between blocks") << Block << Block << 1;
        QTest::newRow("within the third block") << 2 * Block + 1000 << 2 * Block << 2;
    }

    void failedReadEndsTheCopyAndLeavesThePart()
    {
        QFETCH(qint64, bytes);
        QFETCH(qint64, kept);
        QFETCH(int, blocks);
        folder_->write(Source, content(4 * Block));
        std::optional<FileFaults> faults(std::in_place, source());
        faults->failAfter(bytes, EIO);
        const Copy copy(source(), target());
        QVERIFY(!copy.succeeded);
        QCOMPARE(copy.steps, "." + QString("b.").repeated(blocks));
        QCOMPARE(copy.descriptorsLeft, 0);
        faults.reset();
        QVERIFY(folder_->exists(Target));
        QVERIFY(folder_->read(Target) == content(4 * Block).left(kept));
    }

    void unreadableMemoryIsAFailedRead()
    {
        // A regular file that opens and cannot be read, of the system's own.
        const Copy copy("/proc/self/mem", target());
        QVERIFY(!copy.succeeded);
        QVERIFY(copy.counts.isEmpty());
        QVERIFY(folder_->exists(Target));
    }

    void failedWriteEndsTheCopyAndLeavesThePart_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<int>("blocks");
        QTest::newRow("no space at once") << ENOSPC << 0LL << 0;
        QTest::newRow("no space within a block") << ENOSPC << 1000LL << 0;
        QTest::newRow("quota between blocks") << EDQUOT << Block << 1;
        QTest::newRow("defect within the third block") << EIO << 2 * Block + 1000 << 2;
        QTest::newRow("too large a file") << EFBIG << 3 * Block << 3;
    }

    void failedWriteEndsTheCopyAndLeavesThePart()
    {
        QFETCH(int, error);
        QFETCH(qint64, bytes);
        QFETCH(int, blocks);
        folder_->write(Source, content(4 * Block));
        std::optional<FileFaults> faults(std::in_place, target());
        faults->failAfter(bytes, error);
        const Copy copy(source(), target());
        QVERIFY(!copy.succeeded);
        QCOMPARE(copy.steps, "." + QString("b.").repeated(blocks));
        QCOMPARE(copy.descriptorsLeft, 0);
        faults.reset();
        QVERIFY(folder_->read(Target) == content(4 * Block).left(bytes));
    }

    void fullFileSystemEndsTheCopy()
    {
        folder_->write(Source, content(SmallFileSystem::Bytes + 5));
        QVERIFY(!Copy(source(), "/dev/full").succeeded);
        const SmallFileSystem small;
        if (!small.isMounted())
            return; // a user has the device alone, root has both
        const QString path = QFile::decodeName(small.path()) + "/target";
        const Copy copy(source(), path);
        QVERIFY(!copy.succeeded);
        QFile part(path);
        QVERIFY(part.open(QIODevice::ReadOnly));
        const QByteArray bytes = part.readAll();
        QVERIFY(!bytes.isEmpty() && content(SmallFileSystem::Bytes + 5).startsWith(bytes));
    }

    void smallAndInterruptedCallsMakeNoDifference_data()
    {
        QTest::addColumn<bool>("isSource");
        QTest::newRow("reading") << true;
        QTest::newRow("writing") << false;
    }

    void smallAndInterruptedCallsMakeNoDifference()
    {
        QFETCH(bool, isSource);
        folder_->write(Source, content(600000));
        std::optional<FileFaults> faults(std::in_place, isSource ? source() : target());
        faults->limitCalls(7001);
        faults->interruptCalls();
        const Copy copy(source(), target());
        QVERIFY(copy.succeeded);
        QCOMPARE(copy.counts, (QList<quint32>{0, 524288}));
        QCOMPARE(faults->done(), 600000);
        faults.reset();
        QVERIFY(folder_->read(Target) == content(600000));
    }

    void devicesAndPipesNeverKeepTheCopyWaiting()
    {
        folder_->write(Source, content(Block));
        folder_->makeFifo("pipe");
        const QString pipe = folder_->path("pipe");
        // Nobody writes, nobody reads: see above. With somebody at the other end who does nothing:
        const int other = open(QFile::encodeName(pipe).constData(), O_RDWR | O_NONBLOCK);
        QVERIFY(other >= 0);
        QVERIFY2(!Copy(pipe, target()).succeeded, "there is nothing to read");
        QVERIFY2(!Copy(source(), pipe).succeeded, "a pipe takes less than a block");
        close(other);
        const Copy unwritten(pipe, target());
        QVERIFY(unwritten.succeeded);
        QCOMPARE(unwritten.counts, QList<quint32>{0});
        QVERIFY(Copy("/dev/null", target()).succeeded);
        QCOMPARE(folder_->read(Target), QByteArray());
        QVERIFY(Copy(source(), "/dev/null").succeeded);
    }

private:
    QString source() const { return folder_->path(Source); }
    QString target() const { return folder_->path(Target); }

    unsigned modeOf(const QString& name) const
    {
        struct stat info = {};
        stat(QFile::encodeName(folder_->path(name)).constData(), &info);
        return info.st_mode & 07777;
    }

    std::unique_ptr<ScratchFolder> folder_;
};

int main(int argc, char** argv)
{
    enterOwnMounts();
    return runTest<tst_CopyFile>(argc, argv);
}

#include "tst_copyfile.moc"
