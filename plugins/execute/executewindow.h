#pragma once

#include "plugins/execute/command.h"
#include "plugins/execute/outputbuffer.h"
#include "plugins/support/pluginwindow.h"

#include <QTimer>

class RunningProgram;
class TextPane;
struct ProgramEnd;

/// Runs a program and shows what it writes; the title tells how it is doing. The left soft key
/// stops it and, when it has ended, runs it again. Ending the plugin ends the program.
class ExecuteWindow : public PluginWindow
{
    Q_OBJECT

public:
    explicit ExecuteWindow(const QString& path);
    ~ExecuteWindow() override;

    TextPane* pane() const { return pane_; }

public slots:
    void end() override;

protected:
    void keyPressed(int code) override;
    void leftSoftKey() override;

private:
    void start();
    void outputCame(const QByteArray& bytes);
    void programEnded(const ProgramEnd& end);
    void programFailed(const QString& problem);
    void showEnd(const QString& state, const QString& notice);
    void showState(const QString& state);

    QString name_;
    Command command_;
    OutputBuffer output_;
    TextPane* pane_;
    RunningProgram* program_;
    QTimer redraw_;
    bool ending_ = false;
};
