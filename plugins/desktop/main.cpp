#include "files/programnames.h"
#include "plugins/desktop/desktopwindow.h"
#include "plugins/support/pluginapp.h"

int main(int argc, char** argv)
{
    // The place of a window of ours is not for the programs that are started.
    const QByteArray place = qgetenv(ProgramNames::PlaceVariable);
    qunsetenv(ProgramNames::PlaceVariable);
    // There is no window, nor what one takes, while all goes well.
    const Handover outcome = handOver(PluginApp::fileOf(argc, argv));
    if (outcome == Handover::Done)
        return 0;
    qputenv(ProgramNames::PlaceVariable, place);
    PluginApp app(argc, argv, QStringLiteral("Desktop"));
    DesktopWindow window(app.file(), outcome);
    return app.run(window);
}
