#pragma once

#include <QProcess>
#include <QTimer>

#include <vector>

struct Command;

/// How a program has ended.
struct ProgramEnd {
    int code = 0;          ///< its exit code, or the number of the signal
    bool bySignal = false; ///< it was ended from outside, or by a fault of its own
    bool asWished = false; ///< stop() was called
};

/// A program that runs with its output coming here, in a session of its own, so that it can be
/// stopped with what it has started. It ends with a hang-up when this process ends.
class RunningProgram : public QObject
{
    Q_OBJECT

public:
    explicit RunningProgram(QObject* parent);
    ~RunningProgram() override;

    /// From the request to stop to the end by force, milliseconds; 2000 at first.
    void setPatience(int milliseconds) { patience_.setInterval(milliseconds); }
    void start(const Command& command);
    bool isRunning() const { return process_.state() != QProcess::NotRunning; }
    /// Asks the program to end; a second time, or when it does not in time, makes it. What it
    /// leaves behind then ends with it.
    void stop();

signals:
    void output(const QByteArray& bytes);
    /// Every start is followed by one of these two.
    void ended(const ProgramEnd& end);
    void failed(const QString& problem);

private:
    void runInChild() const;
    void sendSignal(int number);
    void readOutput();
    void processEnded(int code, QProcess::ExitStatus status);
    void processFailed(QProcess::ProcessError error);

    /// What the system starts, as the toolkit, which takes texts alone, could not have it.
    struct SystemCommand {
        QList<QByteArray> words; ///< the program and its arguments
        QByteArray folder;
        QList<QByteArray> environment;
        std::vector<char*> wordPointers; ///< into the above, with nullptr at the end
        std::vector<char*> environmentPointers;
    };

    QProcess process_;
    SystemCommand command_;
    QTimer patience_;
    qint64 group_ = 0; ///< that the program and what it started belong to
    bool stopping_ = false;
};
