// sys_gui: moves a file or folder while a box shows how far it is.

#include "tools/sys_gui/boxprocess.h"
#include "tools/sys_gui/move.h"

#include <QElapsedTimer>

#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <string_view>

namespace
{

constexpr int Success = 0;
constexpr int Failure = 1;
constexpr int WrongUsage = 2;
// Most moves are over by then and need no box.
constexpr qint64 QuietMilliseconds = 150;
constexpr qint64 UpdateMilliseconds = 50;

volatile std::sig_atomic_t endRequested = 0;

void requestEnd(int /*number*/)
{
    endRequested = 1;
}

int usage()
{
    std::fputs("usage: sys_gui mv SRC DSTDIR TITLE TEXT ICON\n", stderr);
    return WrongUsage;
}

void setUpSignals()
{
    struct sigaction action = {};
    action.sa_handler = requestEnd;
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction before = {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
    // A file too large for a limit of the user is an error like others.
    std::signal(SIGXFSZ, SIG_IGN);
}

/// Lets the program go as deep into folders as the system allows.
void openManyFiles()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

int move(const QByteArray& source, const QByteArray& folder, BoxProcess& box)
{
    const bool canShow = BoxProcess::canShow();
    QElapsedTimer time;
    time.start();
    qint64 nextUpdate = QuietMilliseconds;
    const MoveResult result = moveInto(source, folder, [&](const MoveProgress& progress) {
        if (canShow && time.elapsed() >= nextUpdate) {
            if (!box.isStarted())
                box.start();
            box.showProgress(progress);
            nextUpdate = time.elapsed() + UpdateMilliseconds;
        }
        return endRequested == 0;
    });
    if (result.state == MoveResult::Moved)
        return Success;
    std::fprintf(stderr, "sys_gui: %s\n", result.message.constData());
    if (canShow && result.state == MoveResult::Failed) {
        if (!box.isStarted())
            box.start();
        box.showFailure(result.message);
        box.waitUntilClosed();
    }
    return Failure;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 7 || std::string_view(argv[1]) != "mv")
        return usage();
    setUpSignals();
    openManyFiles();
    BoxProcess box({argv[4], argv[5], argv[6]}, argv);
    return move(argv[2], argv[3], box);
}
