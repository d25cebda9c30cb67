#pragma once

#include "files/filehandle.h"

#include <QObject>

#include <array>
#include <csignal>

class QSocketNotifier;

/// While this lives, the signals that ask a program to end are told by the event loop, so that work
/// can be put in order before. Those that were ignored before stay so. One at a time.
class EndSignals : public QObject
{
    Q_OBJECT

public:
    EndSignals();
    /// One that came and was not told yet has its usual effect now.
    ~EndSignals() override;

    /// Does what a signal would have done without this.
    void obey(int signal);

signals:
    void received(int signal);

private:
    struct Former {
        int signal = 0;
        bool isTaken = false;
        struct sigaction action = {};
    };

    int next();
    void giveBack();

    std::array<Former, 3> former_{};
    FileHandle read_;
    FileHandle write_;
};
