#include "plugins/desktop/desktopwindow.h"
#include "plugins/support/pluginapp.h"

int main(int argc, char** argv)
{
    // There is no window, nor what one takes, while all goes well.
    const Handover outcome = handOver(PluginApp::fileOf(argc, argv));
    if (outcome == Handover::Done)
        return 0;
    PluginApp app(argc, argv, QStringLiteral("Desktop"));
    DesktopWindow window(app.file(), outcome);
    return app.run(window);
}
