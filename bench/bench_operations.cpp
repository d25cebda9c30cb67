// Safe copies, moves and deletes beside the tools that a user would run instead.

#include "bench/residentmemory.h"
#include "bench/stopwatch.h"
#include "extras/mounts.h"
#include "extras/operation.h"

#include <QTemporaryDir>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr qint64 LargeBytes = qint64(1024) * 1024 * 1024;
constexpr qint64 MovedBytes = qint64(256) * 1024 * 1024;
constexpr size_t BlockBytes = 1024 * 1024;
constexpr int SliceMilliseconds = 30;

void runTool(const std::string& command)
{
    if (std::system(command.c_str()) != 0)
        qFatal("failed: %s", command.c_str());
}

void writeFile(const std::string& path, qint64 bytes)
{
    const int file = open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
    const std::string block(size_t(std::min<qint64>(bytes, BlockBytes)), 'x');
    while (file >= 0 && bytes > 0) {
        const ssize_t put = write(file, block.data(), size_t(std::min<qint64>(bytes, BlockBytes)));
        if (put <= 0)
            break;
        bytes -= put;
    }
    if (file < 0 || bytes > 0)
        qFatal("cannot write %s", path.c_str());
    close(file);
}

void makeTree(const std::string& path, int folders, int files, qint64 bytes)
{
    mkdir(path.c_str(), 0755);
    for (int folder = 0; folder < folders; ++folder) {
        const std::string inner = path + "/folder" + std::to_string(folder);
        mkdir(inner.c_str(), 0755);
        for (int file = 0; file < files; ++file)
            writeFile(inner + "/file" + std::to_string(file), bytes);
    }
}

/// Runs an operation as the window does, and gives its memory at the highest point, MiB.
double run(OperationKind kind, const std::string& source, const std::string& target)
{
    OperationRequest request;
    request.kind = kind;
    request.sources = {QByteArray::fromStdString(source)};
    request.target = QByteArray::fromStdString(target);
    Operation operation(request);
    double most = 0;
    while (!operation.hasEnded()) {
        if (operation.step(SliceMilliseconds) == Operation::State::Surveyed)
            operation.begin();
        most = std::max(most, residentMemory());
    }
    if (!operation.failures().isEmpty())
        qFatal("failed: %s", operation.failures().first.first().path.constData());
    return most;
}

/// Medians of two works that take turns, so that what disturbs one disturbs the other. `prepare`
/// runs before each and `clean` after it, unmeasured.
template<typename Ours, typename Theirs, typename Prepare, typename Clean>
std::pair<double, double> compare(int runs, const Ours& ours, const Theirs& theirs,
                                  const Prepare& prepare, const Clean& clean)
{
    std::vector<double> first;
    std::vector<double> second;
    for (int i = 0; i < runs; ++i) {
        prepare();
        sync();
        second.push_back(millisecondsOf(theirs));
        clean();
        prepare();
        sync();
        first.push_back(millisecondsOf(ours));
        clean();
    }
    std::sort(first.begin(), first.end());
    std::sort(second.begin(), second.end());
    return {first[first.size() / 2], second[second.size() / 2]};
}

void benchLargeFile(const std::string& folder)
{
    writeFile(folder + "/large", LargeBytes);
    const std::string target = folder + "/target";
    const auto [ours, tool] = compare(
        5, [&] { run(OperationKind::Copy, folder + "/large", target); },
        [&] { runTool("cp --reflink=never '" + folder + "/large' '" + target + "' && sync"); },
        [&] { mkdir(target.c_str(), 0755); }, [&] { runTool("rm -rf '" + target + "'"); });
    printRow("safe copy of 1 GiB", ours, "ms", "cp --reflink=never; sync", tool);
    runTool("rm '" + folder + "/large'");
}

void benchSmallFiles(const std::string& folder)
{
    makeTree(folder + "/tree", 100, 100, 1000);
    const std::string target = folder + "/target";
    const auto [ours, tool] = compare(
        5, [&] { run(OperationKind::Copy, folder + "/tree", target); },
        [&] { runTool("cp -R '" + folder + "/tree' '" + target + "' && sync"); },
        [&] { mkdir(target.c_str(), 0755); }, [&] { runTool("rm -rf '" + target + "'"); });
    printRow("safe copy of 10,000 small files", ours, "ms", "cp -R; sync", tool);
    runTool("rm -rf '" + folder + "/tree'");
}

/// The top of a disk that is mounted and may be written, other than the one that a folder is on;
/// empty if there is none. One that lies in a file is none.
std::string otherDisk(const std::string& folder)
{
    struct stat here = {};
    if (stat(folder.c_str(), &here) != 0)
        return {};
    for (const Mount& mount : readMounts("/proc/self/mountinfo")) {
        struct stat there = {};
        const bool isDisk = !mount.device.startsWith("0:") && !mount.device.startsWith("7:");
        if (isDisk && keepsEntries(mount) && !isFar(mount) &&
            stat(mount.point.constData(), &there) == 0 && S_ISDIR(there.st_mode) &&
            there.st_dev != here.st_dev && access(mount.point.constData(), W_OK) == 0)
            return mount.point.toStdString();
    }
    return {};
}

void benchMove(const std::string& folder, const std::string& memory)
{
    const std::string disk = otherDisk(folder);
    const QTemporaryDir made(QString::fromStdString((disk.empty() ? memory : disk) + "/to-XXXXXX"));
    if (!made.isValid())
        qFatal("cannot write to %s", disk.c_str());
    const std::string other = made.path().toStdString();
    const auto [ours, tool] = compare(
        5, [&] { run(OperationKind::Move, folder + "/moved", other); },
        [&] { runTool("mv '" + folder + "/moved' '" + other + "'"); },
        [&] {
            makeTree(folder + "/moved", 10, 100, 1000);
            writeFile(folder + "/moved/large", MovedBytes);
        },
        [&] { runTool("rm -rf '" + other + "/moved'"); });
    // With one disk only what is written costs nothing, and both are faster than they would be.
    printRow(disk.empty() ? "safe move into memory (there is one disk)"
                          : "safe move to another disk",
             ours, "ms", "mv of 256 MiB and 1,000 files", tool);
}

void benchDelete(const std::string& folder)
{
    const auto [ours, tool] = compare(
        3, [&] { run(OperationKind::Delete, folder + "/gone", {}); },
        [&] { runTool("rm -rf '" + folder + "/gone'"); },
        [&] { makeTree(folder + "/gone", 100, 1000, 10); }, [] {});
    printRow("safe delete of 100,000 files", ours, "ms", "rm -rf", tool);
}

/// Gives every file of a tree of makeTree() a second name elsewhere.
void linkAll(const std::string& path, const std::string& elsewhere, int folders, int files)
{
    mkdir(elsewhere.c_str(), 0755);
    for (int folder = 0; folder < folders; ++folder) {
        const std::string inner = "/folder" + std::to_string(folder);
        mkdir((elsewhere + inner).c_str(), 0755);
        for (int file = 0; file < files; ++file) {
            const std::string name = inner + "/file" + std::to_string(file);
            if (link((path + name).c_str(), (elsewhere + name).c_str()) != 0)
                qFatal("link: %s", std::strerror(errno));
        }
    }
}

/// Where files cost no disk, since there are a million of them.
void benchMemory(const std::string& folder)
{
    const std::string target = folder + "/target";
    mkdir(target.c_str(), 0755);
    setenv("XDG_STATE_HOME", (folder + "/state").c_str(), 1);
    makeTree(folder + "/few", 10, 1000, 0);
    makeTree(folder + "/many", 1000, 1000, 0);
    const double few = run(OperationKind::Copy, folder + "/few", target);
    const double many = run(OperationKind::Copy, folder + "/many", target);
    printRow("memory of a copy of 1,000,000 entries", many, "MiB", "of 10,000", few);
    runTool("rm -rf '" + target + "/many'");
    linkAll(folder + "/many", folder + "/other", 1000, 1000);
    const double linked = run(OperationKind::Copy, folder + "/many", target);
    printRow("memory of the same with second names elsewhere", linked, "MiB", "without", many);
    const double deleted = run(OperationKind::Delete, folder + "/many", {});
    printRow("memory of a delete of 1,000,000 entries", deleted, "MiB", "of 10,000", few);
}

} // namespace

int main(int argc, char** argv)
{
    const QTemporaryDir disk;
    const QTemporaryDir memory(QStringLiteral("/dev/shm/bench-XXXXXX"));
    const std::string here = disk.path().toStdString();
    const std::string there = memory.path().toStdString();
    setenv("XDG_STATE_HOME", (here + "/state").c_str(), 1);
    // All of it, or the part that is named.
    const std::string part = argc > 1 ? argv[1] : "";
    if (part.empty() || part == "large")
        benchLargeFile(here);
    if (part.empty() || part == "small")
        benchSmallFiles(here);
    if (part.empty() || part == "move")
        benchMove(here, there);
    if (part.empty() || part == "delete")
        benchDelete(here);
    if (part.empty() || part == "memory")
        benchMemory(there);
    return 0;
}
