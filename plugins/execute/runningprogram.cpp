#include "plugins/execute/runningprogram.h"

#include "files/names.h"
#include "plugins/execute/command.h"

#include <csignal>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace
{

/// The first descriptor behind those of input, output and errors.
constexpr unsigned FirstOther = 3;
constexpr int Patience = 2000;

/// The environment of this process, but of a terminal that can do nothing.
QList<QByteArray> environmentForPrograms()
{
    QList<QByteArray> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (qstrncmp(*variable, "TERM=", 5) != 0)
            variables.append(*variable);
    }
    variables.append("TERM=dumb");
    return variables;
}

std::vector<char*> pointersTo(QList<QByteArray>& texts)
{
    std::vector<char*> pointers;
    for (QByteArray& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

RunningProgram::RunningProgram(QObject* parent) : QObject(parent)
{
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.setStandardInputFile(QProcess::nullDevice());
    process_.setChildProcessModifier([this] { runInChild(); });
    patience_.setSingleShot(true);
    patience_.setInterval(Patience);
    connect(&patience_, &QTimer::timeout, this, [this] { sendSignal(SIGKILL); });
    connect(&process_, &QProcess::readyReadStandardOutput, this, &RunningProgram::readOutput);
    connect(&process_, &QProcess::started, this, [this] { group_ = process_.processId(); });
    connect(&process_, &QProcess::finished, this, &RunningProgram::processEnded);
    connect(&process_, &QProcess::errorOccurred, this, &RunningProgram::processFailed);
}

RunningProgram::~RunningProgram()
{
    disconnect(&process_, nullptr, this, nullptr);
    sendSignal(SIGKILL);
    process_.waitForFinished();
}

void RunningProgram::start(const Command& command)
{
    stopping_ = false;
    group_ = 0;
    command_.folder = encodedPath(command.folder);
    command_.words = {encodedPath(command.program)};
    for (const QString& argument : command.arguments)
        command_.words.append(encodedPath(argument));
    command_.environment = environmentForPrograms();
    command_.wordPointers = pointersTo(command_.words);
    command_.environmentPointers = pointersTo(command_.environment);
    // The toolkit tries these when our own attempt has failed, to find the reason. It must not find
    // what it would take a name for that is no text.
    const bool isText = command.program.isValidUtf16();
    process_.start(isText ? command.program : QStringLiteral("/proc/self/no-such-program"),
                   command.arguments, QIODevice::ReadOnly);
}

/// Between the fork and the start of the program.
void RunningProgram::runInChild() const
{
    ::setsid();
    // Of what this process may have got from others, too, nothing is for the program.
    ::close_range(FirstOther, ~0U, CLOSE_RANGE_CLOEXEC);
    ::prctl(PR_SET_PDEATHSIG, SIGHUP);
    if (::chdir(command_.folder.constData()) != 0)
        return;
    // With a path it must not try a shell on what the system cannot run.
    char* const program = command_.wordPointers.front();
    const auto run = command_.words.front().contains('/') ? ::execve : ::execvpe;
    run(program, command_.wordPointers.data(), command_.environmentPointers.data());
}

void RunningProgram::stop()
{
    if (!isRunning())
        return;
    sendSignal(stopping_ ? SIGKILL : SIGTERM);
    stopping_ = true;
    patience_.start();
}

void RunningProgram::sendSignal(int number)
{
    // Only while it runs is the number its own.
    const auto process = pid_t(process_.processId());
    if (process <= 0)
        return;
    // Before it has a session of its own there is nobody else to tell.
    if (::kill(-process, number) != 0)
        ::kill(process, number);
}

void RunningProgram::readOutput()
{
    emit output(process_.readAllStandardOutput());
}

void RunningProgram::processEnded(int code, QProcess::ExitStatus status)
{
    patience_.stop();
    if (stopping_ && group_ > 0)
        ::kill(-pid_t(group_), SIGKILL);
    readOutput();
    emit ended({code, status != QProcess::NormalExit, stopping_});
}

void RunningProgram::processFailed(QProcess::ProcessError error)
{
    // After the other errors it has ended or goes on.
    if (error == QProcess::FailedToStart)
        emit failed(process_.errorString());
}
