#include "plugins/support/pluginapp.h"

#include "files/entry.h"
#include "files/linktext.h"
#include "files/names.h"
#include "files/paths.h"
#include "files/programnames.h"
#include "platform/keymap.h"
#include "platform/qdiskfont.h"
#include "platform/regularfile.h"
#include "platform/screenscale.h"
#include "platform/zmotion.h"
#include "platform/zscreen.h"
#include "platform/ztheme.h"
#include "plugins/support/pluginsettings.h"
#include "plugins/support/plugintexts.h"
#include "plugins/support/pluginwindow.h"

#include <QGuiApplication>

namespace
{

constexpr int LightWeight = 25;
constexpr int BlackWeight = 87;

/// Before the application object is made, which reads it.
int withScale(int argc)
{
    ScreenScale::setVariable("QUARN_SCALE");
    return argc;
}

/// Both with "/" at the end. The root is its own.
QString folderAbove(QString folder)
{
    folder.chop(1);
    return folder.isEmpty() ? QStringLiteral("/") : folderPart(folder);
}

/// In a work folder of links, which an installed program has, the file itself lies elsewhere: there
/// the name that the plugin was started by tells the folder.
QString folderOfPlugin()
{
    const QString called = folderPart(decodeName(ZApplication::programName()));
    const bool isWhole = called.startsWith(QLatin1Char('/'));
    if (isWhole && entryExists(folderAbove(folderAbove(called)) + QStringLiteral("fm.cfg")))
        return called;
    return folderPart(linkText(QStringLiteral("/proc/self/exe")));
}

void registerFont(const QString& file)
{
    for (const int weight : {LightWeight, BlackWeight}) {
        QDiskFont record;
        record.factory = ZFontManager::firstFactory();
        record.name = ProgramNames::Font;
        record.weight = weight;
        record.flavour = QStringLiteral("s");
        record.file = file;
        ZFontManager::diskFonts().append(record);
        ZFontManager::addDiskFont(record);
    }
}

} // namespace

PluginApp::PluginApp(int argc, char** argv, const QString& title, const QString& workFolder)
    : ZApplication(withScale(argc), argv, GuiClient), file_(fileOf(argc, argv))
{
    QCoreApplication::setApplicationName(title);
    QGuiApplication::setApplicationDisplayName(title);
    setPathEncoder(encodedPath);
    // It is not for the programs that a plugin starts.
    ZScreen::setPlace(qgetenv(ProgramNames::PlaceVariable));
    qunsetenv(ProgramNames::PlaceVariable);
    workFolder_ = workFolder.isEmpty() ? folderAbove(folderAbove(folderOfPlugin())) : workFolder;
    settings_ = readPluginSettings(workFolder_ + QStringLiteral("fm.cfg"));
    ZMotion::setEnabled(settings_.motion);
    ZTheme::choose(settings_.theme == 1 ? ZTheme::Dark : ZTheme::Light);
    loadPluginTexts(workFolder_ + QStringLiteral("lang/") + settings_.language +
                    QStringLiteral(".lang"));
    registerFont(workFolder_ + QStringLiteral("res/font.ttf"));
    KeyMap::instance().load(workFolder_ + QStringLiteral("keymap.cfg"));
}

QString PluginApp::fileOf(int argc, char** argv)
{
    const int position = argc > 2 && qstrcmp(argv[1], "-d") == 0 ? 2 : 1;
    return argc > position ? decodeName(argv[position]) : QString();
}

int PluginApp::run(PluginWindow& window)
{
    setMainWidget(&window);
    connect(ZScreen::instance(), &ZScreen::closeRequested, &window, &PluginWindow::end);
    window.show();
    return exec();
}
