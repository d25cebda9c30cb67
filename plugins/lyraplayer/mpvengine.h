#pragma once

#include <QByteArray>
#include <QLocalSocket>
#include <QMap>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>

#include <functional>

class QJsonObject;
class QJsonValue;

/// What is known of a track that has been opened. Texts are single lines of limited length.
struct TrackInfo {
    QString title;
    QString artist;
    QString album;
    double length = 0; ///< seconds; 0 if unknown
};

/// The program that does the playing: mpv, driven by JSON over a pair of connected sockets. There
/// is no socket file, and mpv ends by itself with the connection, so whatever becomes of this
/// process it leaves neither behind.
///
/// mpv is started with the first load() and again with the first one after a failure. Nothing
/// blocks but shutDown().
class MpvEngine : public QObject
{
    Q_OBJECT

public:
    struct Settings {
        QString program = QStringLiteral("mpv");
        QStringList options;         ///< come last and so win over those that are set here
        int answerTimeoutMs = 20000; ///< an mpv that answers later than this is given up
    };

    /// The settings of a normal start: the environment variable QUARN_MPV_OPTIONS gives the
    /// options, divided by blanks.
    static Settings settingsOfEnvironment();

    explicit MpvEngine(Settings settings, QObject* parent = nullptr);
    ~MpvEngine() override;

    /// Plays a track (an absolute path or an address) in the place of the one that plays.
    void load(const QByteArray& track);
    void stop();
    /// These do nothing while mpv does not run.
    void setPaused(bool paused);
    void seek(double seconds);
    /// Asks for the position; position() brings it.
    void askPosition();
    /// From 0 to 100; kept for an mpv that is started later.
    void setVolume(int percent);

    bool isRunning() const { return process_ != nullptr; }
    /// The process id of mpv; 0 while it does not run.
    qint64 processId() const;
    /// Ends mpv, if need be by force.
    void shutDown();

signals:
    void loaded(const TrackInfo& track);
    void position(double seconds, double length);
    void pausedChanged(bool paused);
    /// It begins to play, at the track's start or where seek() has led.
    void moved();
    /// The track has been played to its end.
    void ended();
    /// The track cannot be played.
    void unplayable(const QString& reason);
    /// The track could be played, but there is nothing to play it on.
    void noOutput(const QString& reason);
    /// mpv could not be started, has died or does not answer; it does not run any more.
    void failed(const QString& reason);

private:
    using Answer = std::function<void(const QJsonValue&)>;

    bool start();
    void startProcess(int descriptor);
    QStringList arguments(int descriptor) const;
    void fail(const QString& reason);
    void forgetEntry();
    /// Sends a command, its words as JSON. `answer` gets the data of a success.
    void send(const QList<QByteArray>& words, const Answer& answer = {});
    void readLines();
    void readLine(const QByteArray& line);
    void dropLongLine();
    void take(const QJsonObject& message);
    void takeAnswer(int request, const QJsonValue& data);
    void takeEvent(const QJsonObject& event);
    void trackEnded(const QJsonObject& event);
    void trackLoaded();

    Settings settings_;
    QProcess* process_ = nullptr;
    QLocalSocket* socket_ = nullptr;
    QMap<int, Answer> awaited_; ///< by the number of the request, in the order of the answers
    QTimer answerTimer_;        ///< runs while something is awaited
    int lastRequest_ = 0;
    int runs_ = 0;           ///< which start of mpv this is
    int loads_ = 0;          ///< which load() this is
    qint64 firstEntry_ = -1; ///< mpv's numbers of the track: one, or several if it is a list
    qint64 entry_ = -1;
    bool opened_ = false;   ///< mpv has begun with the track
    bool dropping_ = false; ///< the rest of a line is on its way that is too long to be read
    int volume_ = 100;
};
