#include "shell/qdaemonapp.h"

QDaemonApp* a = nullptr;

QDaemonApp::QDaemonApp(int argc, char** argv) : ZApplication(argc, argv, GuiClient) {}

void QDaemonApp::slotShutdown()
{
    processEvents();
}

void QDaemonApp::slotQuickQuit()
{
    processEvents();
}
