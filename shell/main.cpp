#include "files/programnames.h"
#include "platform/screenscale.h"
#include "shell/consolelines.h"
#include "shell/startup.h"

#include <QGuiApplication>

#include <csignal>

int main(int argc, char** argv)
{
    // A copy that gets too large for a limit of the user fails; it does not end the program. Were
    // the signal ignored, programs that are started would ignore it, too.
    std::signal(SIGXFSZ, [](int) {});
    ConsoleLines::install();
    QCoreApplication::setApplicationName(QStringLiteral("quarn"));
    QGuiApplication::setApplicationDisplayName(ProgramNames::Program);
    QGuiApplication::setDesktopFileName(QStringLiteral("quarn"));
    ScreenScale::setVariable("QUARN_SCALE");
    return startQuarn(argc, argv);
}
