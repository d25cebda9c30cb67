// Copying and walking by the commands of the main window, beside the tools that a user would run
// instead and beside the bare system calls.

#include "bench/benchprogram.h"
#include "bench/stopwatch.h"
#include "shell/fm.h"
#include "widgets/kwidget.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <fts.h>
#include <memory>
#include <unistd.h>

namespace
{

constexpr size_t BlockBytes = 512 * 1024;
constexpr qint64 LargeBytes = qint64(1024) * 1024 * 1024;

void runTool(const QByteArray& command)
{
    if (std::system(command.constData()) != 0)
        qFatal("failed: %s", command.constData());
}

QByteArray quoted(const QString& path)
{
    return " '" + QFile::encodeName(path) + "'";
}

void writeLargeFile(const QString& path)
{
    QFile file(path);
    const QByteArray block(qsizetype(BlockBytes), 'x');
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    for (qint64 written = 0; written < LargeBytes; written += block.size())
        file.write(block);
}

/// What reading and writing alone cost.
void bareCopy(const QString& from, const QString& to)
{
    const int source = open(QFile::encodeName(from).constData(), O_RDONLY | O_CLOEXEC);
    const int target =
        open(QFile::encodeName(to).constData(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0644);
    const auto block = std::make_unique_for_overwrite<char[]>(BlockBytes);
    ssize_t got = 0;
    while ((got = read(source, block.get(), BlockBytes)) > 0) {
        if (write(target, block.get(), size_t(got)) != got)
            qFatal("cannot write");
    }
    close(target);
    close(source);
}

/// The sizes of all files below a folder, with one system call for each.
qint64 bareWalk(const QString& folder)
{
    QByteArray path = QFile::encodeName(folder);
    char* const roots[] = {path.data(), nullptr};
    FTS* walk = fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, nullptr);
    qint64 bytes = 0;
    while (const FTSENT* entry = fts_read(walk)) {
        if (entry->fts_info == FTS_F)
            bytes += entry->fts_statp->st_size;
    }
    fts_close(walk);
    return bytes;
}

/// Medians of two works that take turns, so that what disturbs one disturbs the other. `clean` runs
/// after each, unmeasured.
template<typename Ours, typename Theirs, typename Clean>
std::pair<double, double> compare(int runs, const Ours& ours, const Theirs& theirs,
                                  const Clean& clean)
{
    std::vector<double> first;
    std::vector<double> second;
    for (int i = 0; i < runs; ++i) {
        second.push_back(millisecondsOf(theirs));
        clean();
        first.push_back(millisecondsOf(ours));
        clean();
    }
    std::sort(first.begin(), first.end());
    std::sort(second.begin(), second.end());
    return {first[first.size() / 2], second[second.size() / 2]};
}

void benchLargeFile(const BenchProgram& program, FM* window)
{
    const QString from = program.file(QStringLiteral("large"));
    const QString folder = program.file(QStringLiteral("target"));
    const QString to = folder + QStringLiteral("/large");
    QDir().mkdir(folder);
    writeLargeFile(from);
    window->modKeyHeld = true;
    const double before = peakMemory();
    const auto [ours, bare] = compare(
        5, [&] { window->copy(from, folder); }, [&] { bareCopy(from, to); },
        [&] { QFile::remove(to); });
    printRow("built-in copy of 1 GiB", ours, "ms", "bare loop of 512 KiB", bare);
    printRow("memory after it", peakMemory(), "MiB", "before it", before);
    window->modKeyHeld = false;
    QFile::remove(from);
}

void benchTree(const BenchProgram& program, FM* window, bool builtIn, int folders, int files)
{
    const QString from = program.file(QStringLiteral("tree"));
    const QString folder = program.file(QStringLiteral("target"));
    makeTree(from, folders, files, 1000);
    QDir().mkdir(folder);
    window->modKeyHeld = builtIn;
    const double before = peakMemory();
    const auto [ours, tool] = compare(
        builtIn ? 5 : 11, [&] { window->copy(from, folder); },
        [&] { runTool("cp -R" + quoted(from) + quoted(folder)); },
        [&] { QDir(folder + QStringLiteral("/tree")).removeRecursively(); });
    if (builtIn) {
        printRow("built-in copy of 10,000 small files", ours, "ms", "cp -R", tool);
        printRow("memory after it", peakMemory(), "MiB", "before it", before);
    } else {
        printRow("shell copy of 100 small files", ours, "ms", "cp -R", tool);
        printRow("what the box adds to it", ours - tool, "ms", "aim", 30);
    }
    window->modKeyHeld = false;
    QDir(from).removeRecursively();
}

void benchWalk(const BenchProgram& program, FM* window)
{
    const QString folder = program.file(QStringLiteral("walk"));
    makeTree(folder, 100, 1000, 10);
    program.highlight(QStringLiteral("walk"));
    const double before = peakMemory();
    const auto close = [] { textView->init(); };
    const auto [ours, tool] = compare(
        5, [window] { window->slot_Properties(); },
        [&] { runTool("du -sb" + quoted(folder) + " >/dev/null"); }, close);
    if (window->fileCount != 100 * 1000)
        qFatal("%d files were counted", window->fileCount);
    const double bare = medianMilliseconds(5, [&folder] { bareWalk(folder); });
    printRow("properties of 100,000 files", ours, "ms", "du -sb", tool);
    printRow("properties of 100,000 files", ours, "ms", "bare walk", bare);
    printRow("memory after it", peakMemory(), "MiB", "before it", before);
    QDir(folder).removeRecursively();
}

} // namespace

int main(int argc, char** argv)
{
    BenchProgram program(argc, argv);
    FM* window = program.start();
    // All of it, or the part that is named.
    const QByteArray part = argc > 1 ? argv[1] : "";
    if (part.isEmpty() || part == "shell")
        benchTree(program, window, false, 1, 100);
    if (part.isEmpty() || part == "tree")
        benchTree(program, window, true, 100, 100);
    if (part.isEmpty() || part == "walk")
        benchWalk(program, window);
    if (part.isEmpty() || part == "large")
        benchLargeFile(program, window);
    return 0;
}
