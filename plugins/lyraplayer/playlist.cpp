#include "plugins/lyraplayer/playlist.h"

#include "platform/regularfile.h"

#include <QDir>
#include <QFile>
#include <QUrl>

namespace
{

constexpr char Utf8Mark[] = "\xef\xbb\xbf";

/// The lines without what ends them. Blanks at the ends of a line may belong to a name and stay.
QList<QByteArray> linesOf(QByteArray content)
{
    if (content.startsWith(Utf8Mark))
        content.remove(0, qsizetype(sizeof Utf8Mark) - 1);
    QList<QByteArray> lines = content.split('\n');
    for (QByteArray& line : lines) {
        while (line.endsWith('\r'))
            line.chop(1);
    }
    return lines;
}

QByteArray trackAt(const QByteArray& place, const QByteArray& folder)
{
    if (isStream(place) || place.startsWith('/'))
        return place;
    if (place.startsWith("file://"))
        return QFile::encodeName(QUrl::fromEncoded(place).toLocalFile());
    return folder + '/' + place;
}

void append(Tracks& tracks, const QByteArray& place, const QByteArray& folder)
{
    // Bytes that no name has would cut what is handed on.
    if (place.trimmed().isEmpty() || place.contains('\0'))
        return;
    const QByteArray track = trackAt(place, folder);
    if (!track.isEmpty())
        tracks.append(track);
}

bool hasExtension(const QString& path, QLatin1String extension)
{
    return path.endsWith(extension, Qt::CaseInsensitive);
}

bool isPls(const QString& path)
{
    return hasExtension(path, QLatin1String(".pls"));
}

} // namespace

bool isPlaylist(const QString& path)
{
    return hasExtension(path, QLatin1String(".m3u")) ||
           hasExtension(path, QLatin1String(".m3u8")) || isPls(path);
}

Tracks parseM3u(const QByteArray& content, const QByteArray& folder)
{
    Tracks tracks;
    for (const QByteArray& line : linesOf(content)) {
        if (!line.startsWith('#'))
            append(tracks, line, folder);
    }
    return tracks;
}

Tracks parsePls(const QByteArray& content, const QByteArray& folder)
{
    constexpr qsizetype KeyLength = 4;
    Tracks tracks;
    for (const QByteArray& line : linesOf(content)) {
        const qsizetype equals = line.indexOf('=');
        bool numbered = false;
        if (equals > KeyLength && line.left(KeyLength).toLower() == "file")
            line.mid(KeyLength, equals - KeyLength).trimmed().toUInt(&numbered);
        if (numbered)
            append(tracks, line.mid(equals + 1).trimmed(), folder);
    }
    return tracks;
}

std::optional<Tracks> tracksOf(const QString& path)
{
    const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    const QByteArray encoded = QFile::encodeName(absolute);
    if (!isPlaylist(absolute))
        return Tracks{encoded};
    const std::optional<QByteArray> content = readRegularFile(absolute, MaxPlaylistBytes);
    if (!content)
        return std::nullopt;
    const QByteArray folder = encoded.left(encoded.lastIndexOf('/'));
    return isPls(absolute) ? parsePls(*content, folder) : parseM3u(*content, folder);
}

bool isStream(const QByteArray& track)
{
    return track.startsWith("http://") || track.startsWith("https://");
}

QString trackName(const QByteArray& track)
{
    return isStream(track) ? QString::fromUtf8(track)
                           : QFile::decodeName(track.mid(track.lastIndexOf('/') + 1));
}
