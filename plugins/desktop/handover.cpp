#include "plugins/desktop/handover.h"

#include "files/entry.h"
#include "files/names.h"

#include <QElapsedTimer>
#include <QList>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr int NotStarted = -1;

std::vector<char*> pointersTo(QList<QByteArray>& words)
{
    std::vector<char*> pointers;
    for (QByteArray& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Starts a program of $PATH whose output goes to `descriptor`, unless that is negative. Returns
/// its process; -1 if it cannot be started.
pid_t start(QList<QByteArray> words, int descriptor)
{
    posix_spawn_file_actions_t actions = {};
    ::posix_spawn_file_actions_init(&actions);
    if (descriptor >= 0)
        ::posix_spawn_file_actions_adddup2(&actions, descriptor, STDOUT_FILENO);
    std::vector<char*> pointers = pointersTo(words);
    pid_t process = -1;
    const int error =
        ::posix_spawnp(&process, pointers.front(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? process : -1;
}

/// The exit code of a process that has been started; that of a failure if a signal ended it.
int codeOf(pid_t process)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR)
            return EXIT_FAILURE;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

int run(const QList<QByteArray>& words)
{
    const pid_t process = start(words, -1);
    return process < 0 ? NotStarted : codeOf(process);
}

/// The first line of what a program writes; empty if there is none.
QByteArray answerOf(const QList<QByteArray>& words)
{
    constexpr size_t LongestAnswer = 4096;
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return {};
    const pid_t process = start(words, ends[1]);
    ::close(ends[1]);
    QByteArray answer;
    char bytes[LongestAnswer];
    ssize_t count = 0;
    do {
        count = ::read(ends[0], bytes, sizeof bytes);
        if (count > 0 && answer.size() < qsizetype(sizeof bytes))
            answer.append(bytes, count);
    } while (count > 0 || (count < 0 && errno == EINTR));
    ::close(ends[0]);
    if (process >= 0)
        codeOf(process);
    return answer.split('\n').front().trimmed();
}

QByteArray typeOf(const QByteArray& path, const DesktopTools& tools)
{
    return answerOf({tools.types, "query", "filetype", path});
}

bool hasProgramFor(const QByteArray& type, const DesktopTools& tools)
{
    return !type.isEmpty() && !answerOf({tools.types, "query", "default", type}).isEmpty();
}

/// Whether somebody can have opened a file that was handed over with success: of what has no
/// program openers give a browser the file. A desktop may also have asked the user.
bool canHaveOpened(const QByteArray& path, const DesktopTools& tools)
{
    if (!qEnvironmentVariableIsEmpty("BROWSER") ||
        !qEnvironmentVariableIsEmpty("XDG_CURRENT_DESKTOP"))
        return true;
    const QByteArray type = typeOf(path, tools);
    return type.isEmpty() || hasProgramFor(type, tools) ||
           hasProgramFor("x-scheme-handler/http", tools);
}

} // namespace

Handover handOver(const QString& file, const DesktopTools& tools)
{
    if (!entryExists(file))
        return Handover::NoFile;
    // Who ignores these signals never hears of the end of what he starts, and hands that on.
    std::signal(SIGCHLD, SIG_DFL);
    // Absolute, so that nobody takes it for an option.
    const QByteArray path = encodedPath(absolutePath(file));
    QElapsedTimer time;
    time.start();
    const int code = run({tools.opener, path});
    if (code == NotStarted)
        return Handover::NoOpener;
    if (code == 0) {
        return time.elapsed() > tools.longestNothing || canHaveOpened(path, tools)
                   ? Handover::Done
                   : Handover::NoProgram;
    }
    if (time.elapsed() > tools.longestFailure)
        return Handover::Done;
    return hasProgramFor(typeOf(path, tools), tools) ? Handover::Failed : Handover::NoProgram;
}
