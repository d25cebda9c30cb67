#include "shell/startup.h"

#include "files/programnames.h"
#include "launch/shellcommand.h"
#include "platform/keymap.h"
#include "platform/keypadletters.h"
#include "platform/qcopchannel.h"
#include "platform/qdiskfont.h"
#include "platform/zmotion.h"
#include "platform/zskinservice.h"
#include "platform/ztheme.h"
#include "shell/consolelines.h"
#include "shell/fm.h"
#include "shell/qdaemonapp.h"
#include "shell/settings.h"
#include "shell/util.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFont>

namespace
{

/// Whether this process is the one to run. Another one that is just starting is waited for.
bool becomeTheInstance()
{
    constexpr int LongestStartMilliseconds = 10000;
    if (QCopChannel::isRegistered(ProgramNames::Channel))
        return false;
    QElapsedTimer waited;
    waited.start();
    if (QCopChannel::reserve(ProgramNames::Channel, LongestStartMilliseconds))
        return true;
    // Without a usable folder for channels there are no other instances to be found; the program
    // is of use all the same.
    return waited.elapsed() < LongestStartMilliseconds &&
           !QCopChannel::isRegistered(ProgramNames::Channel);
}

void registerFont(int weight)
{
    QDiskFont record;
    record.factory = ZFontManager::firstFactory();
    record.name = ProgramNames::Font;
    record.weight = weight;
    record.flavour = QStringLiteral("s");
    record.file = work_folder + QStringLiteral("res/font.ttf");
    ZFontManager::diskFonts().append(record);
}

} // namespace

int startQuarn(int argc, char** argv)
{
    keepUsersLocale();
    const QDaemonApp local(argc, argv);
    ConsoleLines::displayIsLookedFor();
    if (!becomeTheInstance()) {
        QCopChannel::send(ProgramNames::Channel, "show()");
        return 0;
    }
    u = new util;
    a = new QDaemonApp(argc, argv);
    const QString programDir = u->getProgramDir();
    readConfig(programDir);
    ZTheme::choose(extras.theme == 1 ? ZTheme::Dark : ZTheme::Light);
    ZMotion::setEnabled(extras.motion);
    KeyMap::instance().load(programDir + QStringLiteral("keymap.cfg"));
    KeyMap::instance().loadKeypadVariable("QUARN_KEYPAD");
    KeypadLetters::setLanguage(lang);
    registerFont(25);
    registerFont(87);
    for (const QDiskFont& record : ZFontManager::diskFonts())
        ZFontManager::addDiskFont(record);
    const QFont font = ZSkinService::font(ProgramNames::Font, 14, 25);
    // Fields measure the default font when they are made: the system's would be searched for and
    // opened for nothing else.
    QApplication::setFont(font);
    quarn = new FM;
    quarn->setFont(font);
    a->setMainWidget(quarn);
    quarn->show();
    return a->exec();
}
