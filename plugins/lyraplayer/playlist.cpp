#include "plugins/lyraplayer/playlist.h"

#include "files/entry.h"
#include "files/names.h"
#include "files/paths.h"
#include "files/regularfile.h"

namespace
{

constexpr char FileScheme[] = "file://";
constexpr char Utf8Mark[] = "\xef\xbb\xbf";

/// Whether every line ends with "\r\n". Where only some do, "\r" is part of a name.
bool hasLongLineEnds(const QByteArray& content)
{
    bool found = false;
    for (qsizetype end = content.indexOf('\n'); end >= 0; end = content.indexOf('\n', end + 1)) {
        if (end == 0 || content.at(end - 1) != '\r')
            return false;
        found = true;
    }
    return found;
}

/// The lines without what ends them. Blanks at the ends of a line may belong to a name and stay.
QList<QByteArray> linesOf(QByteArray content)
{
    if (content.startsWith(Utf8Mark))
        content.remove(0, qsizetype(sizeof Utf8Mark) - 1);
    if (hasLongLineEnds(content))
        content.replace("\r\n", "\n");
    return content.split('\n');
}

/// The path in a "file:" address of this machine; empty for another one.
QByteArray pathOfUrl(QByteArray address)
{
    address.remove(0, qsizetype(sizeof FileScheme) - 1);
    const qsizetype path = address.indexOf('/');
    if (path < 0 || (path > 0 && address.left(path) != "localhost"))
        return {};
    address = address.mid(path);
    for (const char mark : {'?', '#'}) {
        if (const qsizetype end = address.indexOf(mark); end >= 0)
            address.truncate(end);
    }
    const QByteArray decoded = QByteArray::fromPercentEncoding(address);
    return decoded.contains('\0') ? QByteArray() : decoded;
}

QByteArray trackAt(const QByteArray& place, const QByteArray& folder)
{
    if (isStream(place) || place.startsWith('/'))
        return place;
    if (place.startsWith(FileScheme))
        return pathOfUrl(place);
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
    const QString absolute = absolutePath(path);
    const QByteArray encoded = encodedPath(absolute);
    if (encoded.isEmpty())
        return std::nullopt;
    if (!isPlaylist(absolute))
        return Tracks{encoded};
    const std::optional<QByteArray> content = readRegular(absolute, MaxPlaylistBytes);
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
    const QString name = decodeName(track);
    return isStream(track) ? name : lastPart(name);
}
