#include "platform/qcopchannel.h"
#include "plugins/lyraplayer/player.h"
#include "plugins/lyraplayer/playerwindow.h"
#include "plugins/support/pluginapp.h"
#include "plugins/support/plugintexts.h"

#include <QDeadlineTimer>

#include <optional>

namespace
{

const char Channel[] = "LyraPlayer";

/// Whether this process is the one to play. Another one that is just starting is waited for.
bool becomeThePlayer()
{
    const QDeadlineTimer longestStart(10000);
    if (QCopChannel::isRegistered(Channel))
        return false;
    if (QCopChannel::reserve(Channel, int(longestStart.remainingTime())))
        return true;
    // Without a usable folder for channels there are no other players to be found.
    return !longestStart.hasExpired() && !QCopChannel::isRegistered(Channel);
}

void openTracks(Player& player, const QString& path)
{
    const std::optional<Tracks> tracks = path.isEmpty() ? Tracks() : tracksOf(path);
    player.setTracks(tracks.value_or(Tracks()));
    if (path.isEmpty())
        player.say(pluginTexts().chooseMusic);
    else if (!tracks)
        player.say(pluginTexts().listUnreadable.arg(path));
    else if (tracks->isEmpty())
        player.say(pluginTexts().listEmpty);
}

} // namespace

int main(int argc, char** argv)
{
    if (!becomeThePlayer())
        return QCopChannel::send(Channel, "show") ? 0 : 1;
    PluginApp app(argc, argv, QStringLiteral("LyraPlayer"));
    const QCopChannel channel(Channel);
    Player player(MpvEngine::settingsOfEnvironment());
    openTracks(player, app.file());
    PlayerWindow window(player);
    QObject::connect(&channel, &QCopChannel::received, &window, &PlayerWindow::take);
    player.play(0);
    return app.run(window);
}
