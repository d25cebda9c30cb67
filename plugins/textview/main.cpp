#include "plugins/support/pluginapp.h"
#include "plugins/textview/textwindow.h"

int main(int argc, char** argv)
{
    PluginApp app(argc, argv, QStringLiteral("TextView"));
    TextWindow window(app.file());
    return app.run(window);
}
