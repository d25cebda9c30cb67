// How long a panel takes from setDir() to the painted list, beside `ls -lA` and a bare loop of
// getdents, statx and sort over the same folder, and on a medium that is slow to tell attributes;
// memory of a row; from key press to highlight.
//
// With "--memory FOLDER" it only lists that folder and prints the memory of the process in MiB.

#include "assoc/mimetable.h"
#include "bench/residentmemory.h"
#include "bench/stopwatch.h"
#include "browser/filebrowserftab.h"
#include "platform/zapplication.h"
#include "platform/zmainwidget.h"
#include "shell/settings.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <QVBoxLayout>

#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

/// How long each question for attributes takes beyond what the system takes.
timespec delay{0, 0};

} // namespace

/// In place of the C library's.
extern "C" int statx(int folder, const char* path, int flags, unsigned mask, struct statx* info)
{
    if (delay.tv_nsec > 0)
        clock_nanosleep(CLOCK_MONOTONIC, 0, &delay, nullptr);
    return int(syscall(SYS_statx, folder, path, flags, mask, info));
}

namespace
{

void fillFolder(const QString& path, int entries)
{
    const char* const extensions[] = {"txt", "jpg", "mp3", "bin"};
    const QByteArray folder = path.toUtf8();
    for (int i = 0; i < entries; ++i) {
        char name[64];
        std::snprintf(name, sizeof name, "/file%06d-of-some.%s", int(qint64(i) * 7919 % 1000003),
                      extensions[i % 4]);
        const int file = open((folder + name).constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        if (ftruncate(file, i) != 0)
            std::perror("ftruncate");
        close(file);
    }
}

/// What the kernel and a sort cost when nothing is shown.
size_t bareLoop(const QByteArray& path)
{
    struct Entry {
        std::string name;
        struct statx info;
    };
    std::vector<Entry> entries;
    DIR* folder = opendir(path.constData());
    while (const dirent* each = readdir(folder)) {
        entries.push_back({each->d_name, {}});
        statx(dirfd(folder), each->d_name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_BASIC_STATS,
              &entries.back().info);
    }
    closedir(folder);
    std::vector<const Entry*> order;
    for (const Entry& entry : entries)
        order.push_back(&entry);
    std::sort(order.begin(), order.end(),
              [](const Entry* left, const Entry* right) { return left->name < right->name; });
    return order.size();
}

void runLs(const QByteArray& path)
{
    const QByteArray command = "ls -lA " + path + " >/dev/null";
    if (std::system(command.constData()) != 0)
        std::perror("ls");
}

class Panel
{
public:
    explicit Panel(bool fullInfo)
        : window_(0, nullptr, "bench", {}),
          panel_(new FileBrowserFtab(fullInfo, QStringLiteral("%I%M"), &window_, 0, 40))
    {
        window_.contentLayout()->addWidget(panel_);
        window_.show();
        panel_->setFocus();
        QApplication::processEvents();
    }

    void list(const QString& path)
    {
        panel_->setDir(path, 0);
        paint();
    }

    void press(int key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(panel_, &event);
        paint();
    }

    int count() const { return panel_->count(); }
    int rowsInView() { return panel_->visibleItems(); }

private:
    void paint() { panel_->viewport()->repaint(); }

    ZMainWidget window_;
    FileBrowserFtab* panel_;
};

void benchListing(int entries, bool fullInfo)
{
    const QTemporaryDir folder;
    fillFolder(folder.path(), entries);
    const QByteArray path = folder.path().toUtf8();
    Panel panel(fullInfo);
    panel.list(QStringLiteral("/"));
    const int runs = entries >= 100000 ? 5 : 9;
    const double bare = medianMilliseconds(runs, [&path] { bareLoop(path); });
    const double ls = medianMilliseconds(runs, [&path] { runLs(path); });
    const double ours = medianMilliseconds(runs, [&panel, &folder] { panel.list(folder.path()); });
    const std::string what =
        "setDir, " + std::to_string(entries) + (fullInfo ? " entries, full" : " entries, compact");
    printRow(what.c_str(), ours, "ms", "ls -lA", ls);
    printRow(what.c_str(), ours, "ms", "getdents, statx, sort", bare);
    if (entries < 100000)
        return;
    const double press = medianMilliseconds(101, [&panel] { panel.press(Qt::Key_Down); });
    printRow("key press to painted highlight", press, "ms", "one frame", 16);
    const double page = medianMilliseconds(101, [&panel] { panel.press(Qt::Key_PageDown); });
    printRow("page down to painted highlight", page, "ms", "one frame", 16);
}

void benchSlowMedium(int entries)
{
    constexpr long TenthsOfMilliseconds = 100000;
    const QTemporaryDir folder;
    fillFolder(folder.path(), entries);
    Panel panel(true);
    const auto list = [&panel, &folder] { panel.list(folder.path()); };
    list();
    const double quick = medianMilliseconds(5, list);
    delay.tv_nsec = 2 * TenthsOfMilliseconds;
    const double slow = medianMilliseconds(5, list);
    printRow("setDir, 100000 entries, attributes 0.2 ms late", slow, "ms", "without the delay",
             quick);
    const double page = medianMilliseconds(101, [&panel] { panel.press(Qt::Key_PageDown); });
    const double aim = 16 + 0.2 * panel.rowsInView();
    printRow("page down with it", page, "ms", "a frame and the rows' delays", aim);
    delay.tv_nsec = 0;
}

void benchMemory(int entries)
{
    const QTemporaryDir folder;
    fillFolder(folder.path(), entries);
    Panel panel(true);
    panel.list(QStringLiteral("/"));
    const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    panel.list(folder.path());
    const size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    printRow("memory of a row, full", double(after - before) / panel.count(), "bytes", "aim", 200);
}

int printMemory(const QString& folder)
{
    Panel panel(true);
    panel.list(folder);
    QApplication::processEvents();
    std::printf("%.2f\n", residentMemory());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const ZApplication application(argc, argv, ZApplication::GuiClient);
    work_folder = QStringLiteral(QUARN_STAGE_DIR "/");
    loadMimes(work_folder + QStringLiteral("mime_types.cfg"));
    if (argc == 3)
        return printMemory(QString::fromLocal8Bit(argv[2]));
    for (const bool fullInfo : {false, true}) {
        for (const int entries : {1000, 10000, 100000})
            benchListing(entries, fullInfo);
    }
    benchSlowMedium(100000);
    benchMemory(100000);
    return 0;
}
