// Playing music: what is picked in a panel becomes the player's file or list.

#include "shell/fm.h"

#include "assoc/plugintable.h"
#include "files/entry.h"
#include "files/programnames.h"
#include "launch/busynotice.h"
#include "launch/commandlines.h"
#include "launch/pluginstart.h"
#include "launch/shellcommand.h"
#include "platform/qcopchannel.h"
#include "platform/zapplication.h"
#include "shell/settings.h"
#include "widgets/errorbox.h"
#include "widgets/kwidget.h"

#include <QDebug>

namespace
{

// Ticks of the busy box after the player was started.
constexpr int PlayerLingerTicks = 15;

void showGenerating()
{
    showBusy(QStringLiteral("Generate playlist..."));
}

void startOnList()
{
    startPlugin(CommandLine::playList(work_folder));
    processView->stop(PlayerLingerTicks);
}

void playMarked(const QStringList& entries)
{
    showGenerating();
    processView->paintNow();
    const QString list = CommandLine::playlist(work_folder);
    if (entryExists(list))
        removeFile(list);
    // One pass more than there are entries: the list ends with an empty line.
    for (qsizetype i = 0; i <= entries.size(); ++i) {
        const QString entry = entries.value(i);
        const ShellBytes line = EntryInfo(entry).isFolder()
                                    ? CommandLine::addFolder(work_folder, entry)
                                    : CommandLine::addFile(work_folder, entry);
        if (!line)
            qWarning().noquote() << "playlist: left out:" << entry;
        runShellInByteOrder(line);
    }
    startOnList();
}

void playFolder(const QString& folder)
{
    showGenerating();
    processView->paintNow();
    ZApplication::processEvents();
    runShellInByteOrder(CommandLine::listFolder(work_folder, folder));
    startOnList();
}

} // namespace

void FM::LyraPlayer()
{
    if (QCopChannel::isRegistered(ProgramNames::Player)) {
        QCopChannel::send(ProgramNames::Player, "show");
        return;
    }
    const QString current = getActiveFileName();
    const QStringList marked = getActiveMultiStat() ? getActiveFileNames() : QStringList();
    if (!marked.isEmpty())
        playMarked(marked);
    else if (EntryInfo(current).isFolder())
        playFolder(current);
    else
        startPlugin(CommandLine::playFile(work_folder, current));
}

bool FM::playerInstalled()
{
    if (pluginIsInstalled(work_folder, QString::fromLatin1(ProgramNames::Player)))
        return true;
    showError(QStringLiteral("Please install LyraPlayer"));
    return false;
}

void FM::playMusic()
{
    if (playerInstalled())
        LyraPlayer();
}

void FM::sendToPlayer(const char* message)
{
    if (playerInstalled() && QCopChannel::isRegistered(ProgramNames::Player))
        QCopChannel::send(ProgramNames::Player, message);
}

void FM::previousTrack()
{
    sendToPlayer("prew");
}

void FM::nextTrack()
{
    sendToPlayer("next");
}

void FM::showPlayer()
{
    modKeyHeld = false;
    if (!playerInstalled())
        return;
    if (QCopChannel::isRegistered(ProgramNames::Player)) {
        QCopChannel::send(ProgramNames::Player, "show");
        return;
    }
    showBusy();
    startOnList();
}
