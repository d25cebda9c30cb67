// From the key that opens a file to the plugin's first instruction, beside `sh -c` with the same
// command; and the playlist of a large folder, beside the pipeline that makes it.

#include "bench/benchprogram.h"
#include "bench/stopwatch.h"
#include "browser/filebrowserftab.h"
#include "launch/commandlines.h"
#include "shell/fm.h"
#include "shell/settings.h"
#include "widgets/kwidget.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr int Songs = 20000;

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// A plugin of the work folder: a copy of an executable.
void install(const BenchProgram& program, const QString& name, const QString& executable)
{
    const QString folder = program.work(QStringLiteral("plugins/") + name);
    QDir().mkpath(folder);
    QFile::copy(executable, folder + QLatin1Char('/') + name);
    QFile::setPermissions(folder + QLatin1Char('/') + name,
                          QFileDevice::ReadOwner | QFileDevice::ExeOwner);
}

/// Where plugins tell when they began.
class Starts
{
public:
    explicit Starts(const QByteArray& path)
    {
        mkfifo(path.constData(), 0600);
        // Open for both, so that it neither waits nor ends.
        pipe_ = open(path.constData(), O_RDWR | O_CLOEXEC);
        qputenv("QUARN_BENCH_PIPE", path);
    }

    /// Milliseconds from a time to the plugin's start.
    double since(Clock::time_point begin) const
    {
        long long nanoseconds = 0;
        if (read(pipe_, &nanoseconds, sizeof nanoseconds) != sizeof nanoseconds)
            qFatal("the plugin says nothing");
        const auto start = Clock::time_point(std::chrono::nanoseconds(nanoseconds));
        return std::chrono::duration<double, std::milli>(start - begin).count();
    }

private:
    int pipe_ = -1;
};

void pressReturn(QWidget* widget)
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void benchOpening(const BenchProgram& program, FM* window)
{
    const Starts starts(QFile::encodeName(program.work(QStringLiteral("pipe"))));
    const QString file = program.file(QStringLiteral("picture.pic"));
    writeFile(file, "x");
    program.highlight(QStringLiteral("picture.pic"));
    const ShellBytes line = CommandLine::pluginOfFolder(work_folder, QStringLiteral("Begin"), file);
    const QByteArray command = "sh -c '" + line.value() + "'";
    std::vector<double> ours;
    std::vector<double> shell;
    for (int i = 0; i < 51; ++i) {
        auto begin = Clock::now();
        if (std::system(command.constData()) != 0)
            qFatal("sh failed");
        shell.push_back(starts.since(begin));
        begin = Clock::now();
        pressReturn(window->panel(1));
        ours.push_back(starts.since(begin));
        processView->init();
    }
    printRow("key press to the plugin's start", median(ours), "ms", "sh -c", median(shell));
    printRow("what the program adds to it", median(ours) - median(shell), "ms", "aim", 25);
}

void benchPlaylist(const BenchProgram& program, FM* window)
{
    const QString folder = program.file(QStringLiteral("songs"));
    for (int album = 0; album < 100; ++album) {
        const QString name = folder + QStringLiteral("/album %1").arg(album);
        QDir().mkpath(name);
        for (int song = 0; song < Songs / 100; ++song)
            writeFile(name + QStringLiteral("/song %1.mp3").arg(song * 7919 % 1009), QByteArray());
    }
    program.highlight(QStringLiteral("songs"));
    const QString list = CommandLine::playlist(work_folder);
    std::vector<double> ours;
    std::vector<double> bare;
    // The player's start belongs to both.
    const QByteArray command = CommandLine::listFolder(work_folder, folder).value();
    const QByteArray player = CommandLine::playList(work_folder).value();
    for (int i = 0; i < 21; ++i) {
        bare.push_back(millisecondsOf([&command, &player] {
            if (std::system(command.constData()) != 0 || std::system(player.constData()) != 0)
                qFatal("find failed");
        }));
        QFile::remove(list);
        ours.push_back(millisecondsOf([window] { window->LyraPlayer(); }));
        processView->init();
    }
    QFile made(list);
    if (!made.open(QIODevice::ReadOnly) || made.readAll().count('\n') != Songs)
        qFatal("the list is not whole");
    printRow("playlist of 20,000 files", median(ours), "ms", "find and sort", median(bare));
}

} // namespace

int main(int argc, char** argv)
{
    BenchProgram program(argc, argv);
    install(program, QStringLiteral("Begin"), QStringLiteral(QUARN_BENCH_PLUGIN));
    install(program, QStringLiteral("LyraPlayer"), QStringLiteral("/bin/true"));
    writeFile(program.work(QStringLiteral("fm_plugins.cfg")), "01 0 Begin\n");
    writeFile(program.work(QStringLiteral("mime_types.cfg")), "001 01 PIC\n");
    FM* window = program.start();
    benchOpening(program, window);
    benchPlaylist(program, window);
    return 0;
}
