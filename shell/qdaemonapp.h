#pragma once

#include "platform/zapplication.h"

/// The program's application object. Requests of the system to shut down or to quit do not end the
/// program; only its own exit command does.
class QDaemonApp : public ZApplication
{
    Q_OBJECT

public:
    QDaemonApp(int argc, char** argv);

public slots:
    void slotShutdown() override;
    void slotQuickQuit() override;
};

/// The application object that runs the event loop.
extern QDaemonApp* a;
