#include "plugins/picview/picturewindow.h"
#include "plugins/support/pluginapp.h"

int main(int argc, char** argv)
{
    PluginApp app(argc, argv, QStringLiteral("PicView"));
    PictureWindow window(app.file());
    return app.run(window);
}
