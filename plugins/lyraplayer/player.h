#pragma once

#include "plugins/lyraplayer/mpvengine.h"
#include "plugins/lyraplayer/playlist.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

/// Plays a list of tracks one after the other. A track that cannot be played is skipped, with a
/// message; at the end of the list it stops.
class Player : public QObject
{
    Q_OBJECT

public:
    enum State {
        Stopped,
        Opening, ///< a track is being opened
        Playing,
        Paused,
    };

    static constexpr int VolumeStep = 5;

    explicit Player(MpvEngine::Settings settings, QObject* parent = nullptr);

    /// What is to be played. Stops; nothing is played before the first call of play().
    void setTracks(const Tracks& tracks);
    /// Plays a track of the list, counted from 0; does nothing if there is none.
    void play(int track);
    /// Says something to the user, until he does something.
    void say(const QString& message);

    State state() const { return state_; }
    /// Whether it plays, or will as soon as the track is open.
    bool isPlaying() const { return state_ == Playing || (state_ == Opening && !pauseWanted_); }
    int count() const { return int(tracks_.size()); }
    /// The track that is played or would be; -1 if the list is empty.
    int current() const { return current_; }
    QString nameOf(int track) const;
    const Tracks& tracks() const { return tracks_; }
    /// A track of the list as it was given; empty if there is none.
    QByteArray trackAt(int track) const { return tracks_.value(track); }
    /// What songName() makes of the track that is played or would be.
    QString title() const;
    const TrackInfo& track() const { return info_; }
    double position() const { return position_; } ///< seconds
    int volume() const { return volume_; }        ///< percent
    const QString& message() const { return message_; }

    /// Whether somebody looks. Only then is the position asked for, once a second while it plays.
    void setWatched(bool watched);
    const MpvEngine& engine() const { return engine_; }

public slots:
    /// Play or pause, whichever it is not.
    void toggle();
    void next();
    void previous();
    void changeVolume(int steps);
    /// To a part of the track, from 0 to 1; of one that is being opened, as soon as it is open.
    void seek(double part);

signals:
    /// Something of what there is to show has changed.
    void changed();
    void currentChanged(int track, int before);
    /// The last track is over.
    void listEnded();

private:
    void open(int track);
    void openNow();
    void stop();
    /// The track cannot be played: on to the one beside it, in the direction of the last step.
    void skip(const QString& reason);
    void forgetMessage();
    void setState(State state);
    void trackIsOver();
    void engineFailed(const QString& reason);
    void positionIs(double seconds, double length);
    void seekWanted();
    void updatePolling();

    MpvEngine engine_;
    Tracks tracks_;
    State state_ = Stopped;
    int current_ = -1;
    int direction_ = 1;
    bool pauseWanted_ = false;         ///< a pause was asked for while the track was being opened
    std::optional<double> partWanted_; ///< asked for, but not sought yet
    TrackInfo info_;
    double position_ = 0;
    int volume_ = 100;
    QString message_;
    int skipped_ = 0;  ///< tracks that the message is about
    QTimer openTimer_; ///< opens the track as soon as the events at hand are handled
    QTimer pollTimer_;
    bool watched_ = false;
};
