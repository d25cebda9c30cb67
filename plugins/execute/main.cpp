#include "plugins/execute/executewindow.h"
#include "plugins/support/pluginapp.h"

int main(int argc, char** argv)
{
    PluginApp app(argc, argv, QStringLiteral("Execute"));
    ExecuteWindow window(app.file());
    return app.run(window);
}
