#include "shell/qdaemonapp.h"

#include "files/names.h"
#include "platform/regularfile.h"

QDaemonApp* a = nullptr;

QDaemonApp::QDaemonApp(int argc, char** argv) : ZApplication(argc, argv, GuiClient)
{
    setPathEncoder(encodedPath);
}

void QDaemonApp::slotShutdown()
{
    processEvents();
}

void QDaemonApp::slotQuickQuit()
{
    processEvents();
}
