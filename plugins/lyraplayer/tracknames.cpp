#include "plugins/lyraplayer/tracknames.h"

#include "plugins/lyraplayer/playlist.h"

#include <QRegularExpression>

namespace
{

/// A file's name without the number that it begins with: one that begins with 0, is the row's own,
/// or has a sign behind it.
QString nameWithoutNumber(const QString& name, int number)
{
    static const QRegularExpression begin(QStringLiteral(R"(^(\d{1,3})(\s*[-._)]+\s*|\s+)(?=\S))"));
    const QRegularExpressionMatch match = begin.match(name);
    if (!match.hasMatch())
        return name;
    const QString digits = match.captured(1);
    const bool isTracks = digits.startsWith(QLatin1Char('0')) || digits.toInt() == number ||
                          !match.captured(2).trimmed().isEmpty();
    return isTracks ? name.mid(match.capturedLength()) : name;
}

/// A title mostly has no number but its own ("7 Years"): only what looks like the row's is taken
/// off.
QString titleWithoutNumber(const QString& title, int number)
{
    static const QRegularExpression begin(
        QStringLiteral(R"(^(\d{1,3})(?:\s*[.)_]|\s+-)\s+(?=\S))"));
    const QRegularExpressionMatch match = begin.match(title);
    const bool isRows = match.hasMatch() && (match.captured(1).startsWith(QLatin1Char('0')) ||
                                             match.captured(1).toInt() == number);
    return isRows ? title.mid(match.capturedLength()) : title;
}

QString nameWithoutExtension(const QByteArray& track)
{
    const QString name = trackName(track);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return isStream(track) || dot <= 0 ? name : name.left(dot);
}

} // namespace

QString songName(const QString& title, const QByteArray& track, int number)
{
    return title.isEmpty() ? nameWithoutNumber(nameWithoutExtension(track), number)
                           : titleWithoutNumber(title, number);
}

QString trackRow(const QString& title, const QByteArray& track, int number)
{
    return QStringLiteral("%1. %2").arg(QString::number(number), songName(title, track, number));
}
