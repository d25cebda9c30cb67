#include "plugins/execute/executewindow.h"

#include "files/paths.h"
#include "plugins/execute/runningprogram.h"
#include "plugins/support/fileproblem.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/textpane.h"

#include <QVBoxLayout>

namespace
{

/// From what comes in to its being seen: a program that floods must not make this one paint all
/// the time. Milliseconds.
constexpr int RedrawInterval = 80;

QString wordsFor(const ProgramEnd& end)
{
    if (!end.bySignal)
        return pluginTexts().exitCode.arg(end.code);
    return end.asWished ? pluginTexts().programStopped : pluginTexts().endedBySignal.arg(end.code);
}

} // namespace

ExecuteWindow::ExecuteWindow(const QString& path)
    : PluginWindow(QStringLiteral("Execute")),
      name_(lastPart(path)),
      command_(Command::forFile(path)),
      pane_(new TextPane(output_, this)),
      program_(new RunningProgram(this))
{
    contentLayout()->addWidget(pane_);
    pane_->setFollowing(true);
    redraw_.setSingleShot(true);
    redraw_.setInterval(RedrawInterval);
    connect(&redraw_, &QTimer::timeout, pane_, &TextPane::refresh);
    connect(program_, &RunningProgram::output, this, &ExecuteWindow::outputCame);
    connect(program_, &RunningProgram::ended, this, &ExecuteWindow::programEnded);
    connect(program_, &RunningProgram::failed, this, &ExecuteWindow::programFailed);
    if (command_.problem.isEmpty()) {
        start();
    } else {
        showState(QString());
        pane_->setNotice(command_.problem);
    }
}

ExecuteWindow::~ExecuteWindow()
{
    // It tells of the end of what it runs.
    disconnect(program_, nullptr, this, nullptr);
}

void ExecuteWindow::start()
{
    output_.clear();
    pane_->setNotice(pluginTexts().noOutputYet);
    showState(pluginTexts().running);
    setSoftKeyTexts(pluginTexts().stop, pluginTexts().exit);
    program_->start(command_);
}

void ExecuteWindow::end()
{
    if (!program_->isRunning()) {
        PluginWindow::end();
        return;
    }
    ending_ = true;
    showState(pluginTexts().stopping);
    program_->stop();
}

void ExecuteWindow::keyPressed(int code)
{
    if (!pane_->handleKey(code))
        PluginWindow::keyPressed(code);
}

void ExecuteWindow::leftSoftKey()
{
    if (!command_.problem.isEmpty())
        return;
    if (!program_->isRunning()) {
        start();
        return;
    }
    showState(pluginTexts().stopping);
    program_->stop();
}

void ExecuteWindow::outputCame(const QByteArray& bytes)
{
    output_.append(bytes);
    if (!redraw_.isActive())
        redraw_.start();
}

void ExecuteWindow::programEnded(const ProgramEnd& end)
{
    showEnd(wordsFor(end), pluginTexts().noOutput);
}

void ExecuteWindow::programFailed(const QString& problem)
{
    const QString program = lastPart(command_.program);
    showEnd(QString(), pluginTexts().cannotRun.arg(program, systemProblem(problem)));
}

void ExecuteWindow::showEnd(const QString& state, const QString& notice)
{
    if (ending_) {
        PluginWindow::end();
        return;
    }
    redraw_.stop();
    pane_->setNotice(notice);
    showState(state);
    setSoftKeyTexts(pluginTexts().again, pluginTexts().exit);
}

void ExecuteWindow::showState(const QString& state)
{
    showTitle(name_.isEmpty() ? QStringLiteral("Execute") : name_, state);
}
