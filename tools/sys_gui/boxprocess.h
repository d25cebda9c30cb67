#pragma once

#include "files/filehandle.h"
#include "tools/sys_gui/move.h"

#include <sys/types.h>

/// What the box of a move shows besides its progress. Texts are UTF-8; names in them may have any
/// bytes.
struct BoxTexts {
    QByteArray title;
    QByteArray text;
    QByteArray icon;
};

/// The box of a move in a process of its own: a display that hangs, goes away or cannot be opened
/// then neither delays nor ends the move. The process goes with this object.
class BoxProcess
{
public:
    BoxProcess(const BoxTexts& texts, char** argv);
    ~BoxProcess();
    BoxProcess(const BoxProcess&) = delete;
    BoxProcess& operator=(const BoxProcess&) = delete;

    /// Whether there is a display that somebody may see.
    static bool canShow();
    /// Starts the process. Call it in a program of one thread. Failure leaves the move without box.
    void start();
    bool isStarted() const { return process_ > 0; }
    void showProgress(const MoveProgress& progress);
    void showFailure(const QByteArray& message);
    /// Waits until the box is closed by its user or by itself, or a signal arrives.
    void waitUntilClosed();

private:
    void send(const QByteArray& line);

    BoxTexts texts_;
    char** argv_;
    pid_t process_ = -1;
    FileHandle channel_;
};
