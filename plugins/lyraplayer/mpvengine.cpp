#include "plugins/lyraplayer/mpvengine.h"

#include "plugins/lyraplayer/tags.h"
#include "plugins/support/plugintexts.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int PauseObserver = 1;
// mpv's own text of the one error that is no fault of the track.
const QLatin1String OutputError("audio output initialization failed");
/// What mpv says of a track that it does not play, in the user's language as far as it is known.
QString reasonText(const QString& error)
{
    const PluginTexts& texts = pluginTexts();
    if (error.isEmpty() || error == QLatin1String("no audio or video data played"))
        return texts.nothingToPlay;
    if (error == QLatin1String("unrecognized file format"))
        return texts.unknownFormat;
    return error == QLatin1String("loading failed") ? texts.loadingFailed : error;
}

// No message that is of interest comes near this.
constexpr qint64 MaxLineBytes = 4 * 1024 * 1024;

/// A string of JSON. Bytes that are no UTF-8 go through as they are, which mpv takes for the file
/// names that they are.
QByteArray quoted(const QByteArray& text)
{
    QByteArray result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            result += '\\';
        if (static_cast<unsigned char>(c) < 0x20)
            result += "\\u00" + QByteArray(1, c).toHex();
        else
            result += c;
    }
    return result + '"';
}

} // namespace

MpvEngine::Settings MpvEngine::settingsOfEnvironment()
{
    Settings settings;
    settings.options = QProcess::splitCommand(qEnvironmentVariable("QUARN_MPV_OPTIONS"));
    return settings;
}

MpvEngine::MpvEngine(Settings settings, QObject* parent)
    : QObject(parent), settings_(std::move(settings))
{
    answerTimer_.setSingleShot(true);
    answerTimer_.setInterval(settings_.answerTimeoutMs);
    connect(&answerTimer_, &QTimer::timeout, this, [this] { fail(pluginTexts().mpvNoAnswer); });
}

MpvEngine::~MpvEngine()
{
    shutDown();
}

qint64 MpvEngine::processId() const
{
    return process_ != nullptr ? process_->processId() : 0;
}

QStringList MpvEngine::arguments(int descriptor) const
{
    return QStringList{"--no-config",
                       "--idle=yes",
                       "--no-video",
                       "--audio-display=no",
                       "--no-terminal",
                       "--load-scripts=no",
                       "--ytdl=no",
                       "--osc=no",
                       "--input-media-keys=no",
                       "--resume-playback=no",
                       "--keep-open=no",
                       "--autoload-files=no",
                       "--audio-client-name=LyraPlayer",
                       QStringLiteral("--volume=%1").arg(volume_),
                       QStringLiteral("--input-ipc-client=fd://%1").arg(descriptor)} +
           settings_.options;
}

bool MpvEngine::start()
{
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        fail(pluginTexts().mpvNoConnection);
        return false;
    }
    socket_ = new QLocalSocket(this);
    socket_->setReadBufferSize(MaxLineBytes);
    socket_->setSocketDescriptor(ends[0]);
    connect(socket_, &QLocalSocket::readyRead, this, &MpvEngine::readLines);
    startProcess(ends[1]);
    ::close(ends[1]);
    send({quoted("observe_property"), QByteArray::number(PauseObserver), quoted("pause")});
    return true;
}

void MpvEngine::startProcess(int descriptor)
{
    process_ = new QProcess(this);
    process_->setStandardInputFile(QProcess::nullDevice());
    process_->setStandardOutputFile(QProcess::nullDevice());
    process_->setStandardErrorFile(QProcess::nullDevice());
    process_->setChildProcessModifier([descriptor] {
        ::fcntl(descriptor, F_SETFD, 0);
        // One that hangs would not notice the end of the connection.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    // Queued, since the process is given up when it is told; by then another one may run.
    const auto failOnce = [this, run = ++runs_](const QString& reason) {
        if (run == runs_)
            fail(reason);
    };
    connect(
        process_, &QProcess::errorOccurred, this,
        [failOnce](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                failOnce(pluginTexts().mpvNotStarted);
        },
        Qt::QueuedConnection);
    const auto over = [failOnce] { failOnce(pluginTexts().mpvEnded); };
    connect(process_, &QProcess::finished, this, over, Qt::QueuedConnection);
    // One that could not be started has no connection either; that is told otherwise.
    const auto left = [this, over] {
        if (process_ != nullptr && process_->state() == QProcess::Running)
            over();
    };
    connect(socket_, &QLocalSocket::disconnected, this, left, Qt::QueuedConnection);
    process_->start(settings_.program, arguments(descriptor));
}

void MpvEngine::shutDown()
{
    answerTimer_.stop();
    awaited_.clear();
    dropping_ = false;
    forgetEntry();
    ++runs_; // what they still have to say is no news
    QLocalSocket* socket = std::exchange(socket_, nullptr);
    if (socket != nullptr) {
        socket->disconnect(this);
        socket->abort();
        socket->deleteLater();
    }
    QProcess* process = std::exchange(process_, nullptr);
    if (process == nullptr)
        return;
    constexpr int EndsByItselfMs = 1000;
    process->disconnect(this);
    if (process->state() != QProcess::NotRunning && !process->waitForFinished(EndsByItselfMs)) {
        process->kill();
        process->waitForFinished(EndsByItselfMs);
    }
    process->deleteLater();
}

void MpvEngine::fail(const QString& reason)
{
    if (process_ != nullptr) {
        process_->kill();
        shutDown();
    }
    emit failed(reason);
}

void MpvEngine::send(const QList<QByteArray>& words, const Answer& answer)
{
    if (socket_ == nullptr)
        return;
    const int request = ++lastRequest_;
    awaited_.insert(request, answer);
    if (!answerTimer_.isActive())
        answerTimer_.start();
    socket_->write("{\"command\":[" + words.join(',') +
                   "],\"request_id\":" + QByteArray::number(request) + "}\n");
}

void MpvEngine::load(const QByteArray& track)
{
    if (process_ == nullptr && !start())
        return;
    forgetEntry();
    const int load = ++loads_;
    send({quoted("loadfile"), quoted(track), quoted("replace")},
         [this, load](const QJsonValue& data) {
             const qint64 entry =
                 data.toObject().value(QLatin1String("playlist_entry_id")).toInteger(-1);
             if (entry < 0)
                 fail(pluginTexts().mpvTooOld);
             else if (load == loads_)
                 firstEntry_ = entry_ = entry;
         });
    setPaused(false);
}

void MpvEngine::stop()
{
    forgetEntry();
    ++loads_;
    send({quoted("stop")});
}

void MpvEngine::forgetEntry()
{
    firstEntry_ = entry_ = -1;
    opened_ = false;
}

void MpvEngine::setPaused(bool paused)
{
    send({quoted("set_property"), quoted("pause"), paused ? "true" : "false"});
}

void MpvEngine::seek(double seconds)
{
    send({quoted("seek"), QByteArray::number(seconds, 'f', 3), quoted("absolute")});
}

void MpvEngine::setVolume(int percent)
{
    volume_ = percent;
    send({quoted("set_property"), quoted("volume"), QByteArray::number(percent)});
}

void MpvEngine::askPosition()
{
    const qint64 entry = entry_;
    // The length of some files is only guessed at first.
    send({quoted("get_property"), quoted("duration")}, [this, entry](const QJsonValue& length) {
        send({quoted("get_property"), quoted("time-pos")},
             [this, entry, length](const QJsonValue& seconds) {
                 if (entry >= 0 && entry == entry_ && seconds.isDouble())
                     emit position(seconds.toDouble(), length.toDouble());
             });
    });
}

void MpvEngine::readLines()
{
    // What a line leads to may end the connection.
    while (socket_ != nullptr && socket_->canReadLine()) {
        const QByteArray line = socket_->readLine();
        if (!std::exchange(dropping_, false))
            readLine(line);
    }
    if (socket_ != nullptr && socket_->bytesAvailable() >= MaxLineBytes)
        dropLongLine();
}

void MpvEngine::readLine(const QByteArray& line)
{
    QJsonDocument message = QJsonDocument::fromJson(line);
    // Tags that are in no known encoding come as they are.
    if (message.isNull())
        message = QJsonDocument::fromJson(QString::fromUtf8(line).toUtf8());
    if (message.isObject())
        take(message.object());
}

/// Only a tag can be that long, and only one that nobody could read. Answers come in the order of
/// the requests.
void MpvEngine::dropLongLine()
{
    socket_->readAll();
    if (std::exchange(dropping_, true))
        return;
    if (!awaited_.isEmpty())
        takeAnswer(awaited_.firstKey(), QJsonValue());
}

void MpvEngine::take(const QJsonObject& message)
{
    if (message.contains(QLatin1String("event"))) {
        takeEvent(message);
        return;
    }
    takeAnswer(message.value(QLatin1String("request_id")).toInt(-1),
               message.value(QLatin1String("data")));
}

void MpvEngine::takeAnswer(int request, const QJsonValue& data)
{
    const auto awaited = awaited_.find(request);
    if (awaited == awaited_.end())
        return;
    const Answer answer = *awaited;
    awaited_.erase(awaited);
    if (awaited_.isEmpty())
        answerTimer_.stop();
    else
        answerTimer_.start();
    if (answer)
        answer(data);
}

void MpvEngine::takeEvent(const QJsonObject& event)
{
    const QString name = event.value(QLatin1String("event")).toString();
    const qint64 entry = event.value(QLatin1String("playlist_entry_id")).toInteger(-1);
    const bool ours = entry >= 0 && entry >= firstEntry_ && entry <= entry_;
    if (name == QLatin1String("start-file"))
        opened_ = ours;
    else if (name == QLatin1String("file-loaded") && opened_)
        trackLoaded();
    else if (name == QLatin1String("playback-restart") && opened_)
        emit moved();
    else if (name == QLatin1String("end-file") && ours && entry == entry_)
        trackEnded(event);
    else if (name == QLatin1String("property-change") &&
             event.value(QLatin1String("id")).toInt() == PauseObserver)
        emit pausedChanged(event.value(QLatin1String("data")).toBool());
}

void MpvEngine::trackEnded(const QJsonObject& event)
{
    const QString reason = event.value(QLatin1String("reason")).toString();
    const qint64 parts = event.value(QLatin1String("playlist_insert_num_entries")).toInteger();
    if (reason == QLatin1String("redirect") && parts > 0) {
        // The file was a list itself. mpv plays what it names; the end of the last is awaited.
        firstEntry_ = event.value(QLatin1String("playlist_insert_id")).toInteger();
        entry_ = firstEntry_ + parts - 1;
        return;
    }
    forgetEntry();
    const QString error = event.value(QLatin1String("file_error")).toString();
    if (reason == QLatin1String("eof"))
        emit ended();
    else if (error == OutputError)
        emit noOutput(pluginTexts().noAudioOutput);
    else if (reason == QLatin1String("error") || reason == QLatin1String("redirect"))
        emit unplayable(reasonText(error));
}

void MpvEngine::trackLoaded()
{
    const auto track = std::make_shared<TrackInfo>();
    const auto askTag = [this, track](const char* name, QString TrackInfo::* tag) {
        send({quoted("get_property"), quoted(QByteArray("metadata/by-key/") + name)},
             [track, tag](const QJsonValue& value) { (*track).*tag = tagLine(value.toString()); });
    };
    // One by one: what else is in the tags may be of any length.
    askTag("title", &TrackInfo::title);
    askTag("artist", &TrackInfo::artist);
    askTag("album", &TrackInfo::album);
    const qint64 entry = entry_;
    send({quoted("get_property"), quoted("duration")},
         [this, entry, track](const QJsonValue& length) {
             track->length = length.toDouble();
             if (entry == entry_)
                 emit loaded(*track);
         });
}
