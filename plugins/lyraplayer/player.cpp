#include "plugins/lyraplayer/player.h"

#include "plugins/lyraplayer/tracknames.h"
#include "plugins/support/fileproblem.h"
#include "plugins/support/plugintexts.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <sys/stat.h>
#include <utility>

namespace
{

/// Why a file is not worth a try; null if it is. mpv would wait for a FIFO and play a folder.
QString whyNotAFile(const QByteArray& track)
{
    if (isStream(track))
        return {};
    struct stat about = {};
    if (::stat(track.constData(), &about) != 0)
        return fileProblem(errno);
    return S_ISREG(about.st_mode) ? QString() : pluginTexts().notAFile;
}

/// A name that leaves room for what is to be said about it.
QString shortened(const QString& name)
{
    constexpr qsizetype Longest = 40;
    constexpr qsizetype Kept = Longest / 2 - 1;
    return name.size() <= Longest ? name : name.left(Kept) + QChar(0x2026) + name.right(Kept);
}

} // namespace

Player::Player(MpvEngine::Settings settings, QObject* parent)
    : QObject(parent), engine_(std::move(settings))
{
    openTimer_.setSingleShot(true);
    pollTimer_.setSingleShot(true);
    connect(&openTimer_, &QTimer::timeout, this, &Player::openNow);
    connect(&pollTimer_, &QTimer::timeout, &engine_, &MpvEngine::askPosition);
    connect(&engine_, &MpvEngine::loaded, this, [this](const TrackInfo& track) {
        info_ = track;
        direction_ = 1;
        setState(pauseWanted_ ? Paused : Playing);
        seekWanted();
    });
    connect(&engine_, &MpvEngine::pausedChanged, this, [this](bool paused) {
        if (state_ == Playing || state_ == Paused)
            setState(paused ? Paused : Playing);
    });
    connect(&engine_, &MpvEngine::moved, this, &Player::updatePolling);
    connect(&engine_, &MpvEngine::position, this, &Player::positionIs);
    connect(&engine_, &MpvEngine::ended, this, &Player::trackIsOver);
    connect(&engine_, &MpvEngine::unplayable, this, &Player::skip);
    connect(&engine_, &MpvEngine::noOutput, this, [this](const QString& reason) {
        message_ = pluginTexts().noSound.arg(reason);
        setState(Stopped);
    });
    connect(&engine_, &MpvEngine::failed, this, &Player::engineFailed);
}

void Player::setTracks(const Tracks& tracks)
{
    stop();
    tracks_ = tracks;
    const int before = std::exchange(current_, tracks.isEmpty() ? -1 : 0);
    emit currentChanged(current_, before);
}

void Player::play(int track)
{
    if (track < 0 || track >= count())
        return;
    forgetMessage();
    direction_ = 1;
    open(track);
}

void Player::forgetMessage()
{
    message_.clear();
    skipped_ = 0;
}

void Player::say(const QString& message)
{
    message_ = message;
    emit changed();
}

QString Player::nameOf(int track) const
{
    return track >= 0 && track < count() ? trackName(tracks_.at(track)) : QString();
}

QString Player::title() const
{
    return songName(info_.title, tracks_, current_);
}

void Player::open(int track)
{
    const int before = std::exchange(current_, track);
    info_ = {};
    position_ = 0;
    pauseWanted_ = false;
    partWanted_.reset();
    openTimer_.start(0);
    setState(Opening);
    if (before != track)
        emit currentChanged(track, before);
}

void Player::openNow()
{
    const QByteArray& track = tracks_.at(current_);
    const QString reason = whyNotAFile(track);
    if (reason.isNull()) {
        engine_.load(track);
        if (pauseWanted_)
            engine_.setPaused(true);
        return;
    }
    engine_.stop();
    skip(reason);
}

void Player::stop()
{
    openTimer_.stop();
    engine_.stop();
    info_ = {};
    position_ = 0;
    partWanted_.reset();
    setState(Stopped);
}

void Player::skip(const QString& reason)
{
    ++skipped_;
    const QString name = shortened(nameOf(current_));
    message_ = skipped_ == 1
                   ? pluginTexts().skipped.arg(name, reason)
                   : pluginTexts().skippedTracks.arg(QString::number(skipped_), name, reason);
    const int track = current_ + direction_;
    if (track >= 0 && track < count()) {
        open(track);
        return;
    }
    stop();
    if (direction_ > 0)
        emit listEnded();
}

void Player::trackIsOver()
{
    forgetMessage();
    direction_ = 1;
    if (current_ + 1 < count()) {
        open(current_ + 1);
        return;
    }
    stop();
    // The next "play" starts the list anew.
    const int before = std::exchange(current_, 0);
    if (before != 0)
        emit currentChanged(0, before);
    emit listEnded();
}

void Player::engineFailed(const QString& reason)
{
    openTimer_.stop();
    position_ = 0;
    partWanted_.reset();
    message_ = reason;
    setState(Stopped);
}

void Player::toggle()
{
    if (state_ == Stopped) {
        play(current_);
        return;
    }
    forgetMessage();
    const bool playing = isPlaying();
    if (state_ == Opening)
        pauseWanted_ = playing;
    engine_.setPaused(playing);
    emit changed();
}

void Player::next()
{
    if (current_ < 0)
        return;
    if (current_ + 1 < count())
        play(current_ + 1);
    else
        say(pluginTexts().lastTrack);
}

void Player::previous()
{
    play(std::max(current_ - 1, 0));
    direction_ = -1;
}

void Player::changeVolume(int steps)
{
    const int volume = std::clamp(volume_ + steps * VolumeStep, 0, 100);
    if (volume == volume_)
        return;
    volume_ = volume;
    engine_.setVolume(volume);
    emit changed();
}

void Player::seek(double part)
{
    if (state_ == Stopped)
        return;
    partWanted_ = std::clamp(part, 0.0, 1.0);
    seekWanted();
}

/// As soon as the track is open and its length known.
void Player::seekWanted()
{
    if (!partWanted_ || state_ == Opening || info_.length <= 0)
        return;
    position_ = *std::exchange(partWanted_, std::nullopt) * info_.length;
    engine_.seek(position_);
    emit changed();
}

void Player::setState(State state)
{
    state_ = state;
    emit changed();
    updatePolling();
}

void Player::positionIs(double seconds, double length)
{
    position_ = seconds;
    if (length > 0)
        info_.length = length;
    emit changed();
    seekWanted();
    if (watched_ && state_ == Playing) {
        // When the next second is full.
        constexpr int Second = 1000;
        constexpr int AfterIt = 20;
        const double part = seconds - std::floor(seconds);
        pollTimer_.start(Second + AfterIt - int(part * Second));
    }
}

void Player::setWatched(bool watched)
{
    watched_ = watched;
    updatePolling();
}

void Player::updatePolling()
{
    if (!watched_ || state_ == Stopped || state_ == Opening)
        pollTimer_.stop();
    else
        engine_.askPosition(); // its answer leads to the next question
}
