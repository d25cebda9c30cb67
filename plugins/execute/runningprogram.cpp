#include "plugins/execute/runningprogram.h"

#include "plugins/execute/command.h"

#include <QProcessEnvironment>

#include <csignal>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace
{

/// The first descriptor behind those of input, output and errors.
constexpr unsigned FirstOther = 3;
constexpr int Patience = 2000;

} // namespace

RunningProgram::RunningProgram(QObject* parent) : QObject(parent)
{
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.setStandardInputFile(QProcess::nullDevice());
    process_.setChildProcessModifier([] {
        ::setsid();
        // Of what this process may have got from others, too, nothing is for the program.
        ::close_range(FirstOther, ~0U, CLOSE_RANGE_CLOEXEC);
        ::prctl(PR_SET_PDEATHSIG, SIGHUP);
    });
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TERM"), QStringLiteral("dumb"));
    process_.setProcessEnvironment(environment);
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
    process_.setWorkingDirectory(command.folder);
    process_.start(command.program, command.arguments, QIODevice::ReadOnly);
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
    emit ended(status == QProcess::NormalExit ? QStringLiteral("ended %1").arg(code)
                                              : QStringLiteral("signal %1").arg(code));
}

void RunningProgram::processFailed(QProcess::ProcessError error)
{
    // After the other errors it has ended or goes on.
    if (error == QProcess::FailedToStart)
        emit failed(process_.errorString());
}
