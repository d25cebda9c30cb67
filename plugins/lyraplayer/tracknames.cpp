#include "plugins/lyraplayer/tracknames.h"

#include <QRegularExpression>

namespace
{

/// How many files on each side of one tell whether theirs is a folder of numbered ones.
constexpr int FilesBeside = 3;

/// The number that a text begins with, as those of tracks look; that of a disc may be before it.
struct Number {
    QString digits;       ///< of the track; empty if there is none
    qsizetype length = 0; ///< with the disc, and all that is before the next word
    bool hasSign = false; ///< a dot, a dash or the like is behind it

    bool isEmpty() const { return digits.isEmpty(); }
    bool isPadded() const { return digits.startsWith(QLatin1Char('0')); }
    int value() const { return digits.toInt(); }
};

Number numberOf(const QRegularExpressionMatch& match)
{
    if (!match.hasMatch())
        return {};
    return {match.captured(1), match.capturedLength(), !match.captured(2).trimmed().isEmpty()};
}

/// A disc is told from a part of a name ("1-800", "4.48") by a zero or what is behind the track.
Number numberOfDisc(const QString& text)
{
    static const QRegularExpression begin(
        QStringLiteral(R"(^\d{1,2}[-.](0\d|\d\d(?=\s))(\s*[-._)]+\s*|\s+)(?=\S))"));
    return numberOf(begin.match(text));
}

/// Digits behind a sign go on with a number, but for one with a zero: that of a track.
Number numberOfName(const QString& name)
{
    static const QRegularExpression begin(QStringLiteral(
        R"(^(\d{1,3})(\s*[-._)]+(?:\s+|(?=\D))|\s+|(?<=^0\d|^0\d\d)[-._)]+)(?=\S))"));
    return numberOf(begin.match(name));
}

/// A title mostly has no number but its own ("7 Years"): only one with a sign may be a track's.
Number numberOfTitle(const QString& title)
{
    static const QRegularExpression begin(
        QStringLiteral(R"(^(\d{1,3})(\s*[.)_]\s+|\s+-\s+)(?=\S))"));
    return numberOf(begin.match(title));
}

QString nameWithoutExtension(const QByteArray& track)
{
    const QString name = trackName(track);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return isStream(track) || dot <= 0 ? name : name.left(dot);
}

QByteArray folderOf(const QByteArray& track)
{
    return track.left(track.lastIndexOf('/'));
}

/// Whether all the files of its folder that are beside a track in the list begin with a number.
bool isAmongNumbered(const Tracks& tracks, int track)
{
    const QByteArray folder = folderOf(tracks.at(track));
    int numbered = 0;
    for (int i = track - FilesBeside; i <= track + FilesBeside; ++i) {
        const QByteArray other = tracks.value(i);
        if (i == track || other.isEmpty() || folderOf(other) != folder)
            continue;
        const QString name = nameWithoutExtension(other);
        if (numberOfName(name).isEmpty() && numberOfDisc(name).isEmpty())
            return false;
        ++numbered;
    }
    return numbered > 0;
}

QString nameWithoutNumber(const QString& name, const Tracks& tracks, int track)
{
    const Number ofDisc = numberOfDisc(name);
    if (!ofDisc.isEmpty() &&
        (ofDisc.isPadded() || ofDisc.value() == track + 1 || isAmongNumbered(tracks, track)))
        return name.mid(ofDisc.length);
    const Number number = numberOfName(name);
    const bool isTracks = number.isPadded() || number.hasSign || number.value() == track + 1 ||
                          (!number.isEmpty() && isAmongNumbered(tracks, track));
    return isTracks ? name.mid(number.length) : name;
}

QString titleWithoutNumber(const QString& title, const QString& name, int track)
{
    const Number ofDisc = numberOfDisc(title);
    if (ofDisc.isPadded())
        return title.mid(ofDisc.length);
    const Number number = numberOfTitle(title);
    const bool isTracks = !number.isEmpty() && (number.isPadded() || number.value() == track + 1 ||
                                                number.value() == numberOfName(name).value() ||
                                                number.value() == numberOfDisc(name).value());
    return isTracks ? title.mid(number.length) : title;
}

} // namespace

QString songName(const QString& title, const Tracks& tracks, int track)
{
    const QByteArray file = tracks.value(track);
    const QString name = nameWithoutExtension(file);
    if (!title.isEmpty())
        return titleWithoutNumber(title, isStream(file) ? QString() : name, track);
    return isStream(file) ? name : nameWithoutNumber(name, tracks, track);
}

QString trackRow(const QString& title, const Tracks& tracks, int track)
{
    const QString song = songName(title, tracks, track);
    if (!title.isEmpty() && !numberOfTitle(song).isEmpty())
        return song;
    return QStringLiteral("%1. %2").arg(QString::number(track + 1), song);
}
