#include "launch/pluginstart.h"

#include "files/programnames.h"
#include "platform/zscreen.h"

int startPlugin(const ShellBytes& command)
{
    const QByteArray place = ZScreen::placeOnDisplay();
    if (place.isEmpty())
        return runShell(command);
    qputenv(ProgramNames::PlaceVariable, place);
    const int status = runShell(command);
    qunsetenv(ProgramNames::PlaceVariable);
    return status;
}
