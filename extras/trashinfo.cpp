#include "extras/trashinfo.h"

#include <QByteArrayList>
#include <QDateTime>

namespace
{

constexpr QByteArrayView Group = "[Trash Info]";
constexpr QByteArrayView PathKey = "Path";
constexpr QByteArrayView DateKey = "DeletionDate";
const QLatin1String DateForm("yyyy-MM-ddTHH:mm:ss");

int hexValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

bool goesUp(const QByteArray& path)
{
    return path.split('/').contains("..");
}

/// What stands before the sign in a line, without blanks; nothing of a remark or another line.
QByteArray keyOf(const QByteArray& line)
{
    return line.startsWith('#') ? QByteArray()
                                : line.first(qMax<qsizetype>(line.indexOf('='), 0)).trimmed();
}

/// What stands behind it, blanks at its beginning left out.
QByteArrayView valueOf(const QByteArray& line)
{
    qsizetype at = line.indexOf('=') + 1;
    while (at < line.size() && (line.at(at) == ' ' || line.at(at) == '\t'))
        ++at;
    return QByteArrayView(line).sliced(at);
}

/// The line with the group, which only remarks and empty ones may stand before; -1 if there is
/// none.
qsizetype groupStart(const QByteArrayList& lines)
{
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        if (line == Group)
            return i;
        if (!line.isEmpty() && !line.startsWith('#'))
            break;
    }
    return -1;
}

qint64 secondsOf(QByteArrayView date)
{
    // Some programs add a fraction or a zone; the time is local all the same.
    const QString text = QString::fromLatin1(date.first(qMin(date.size(), DateForm.size())));
    const QDateTime time = QDateTime::fromString(text, DateForm);
    return time.isValid() ? time.toSecsSinceEpoch() : 0;
}

} // namespace

QByteArray percentEncoded(const QByteArray& bytes)
{
    return bytes.toPercentEncoding("/!*'()");
}

std::optional<QByteArray> percentDecoded(QByteArrayView text)
{
    QByteArray result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) != '%') {
            result.append(text.at(i));
            continue;
        }
        if (i + 2 >= text.size())
            return std::nullopt;
        const int high = hexValue(text.at(i + 1));
        const int low = hexValue(text.at(i + 2));
        if (high < 0 || low < 0 || high + low == 0)
            return std::nullopt;
        result.append(char(high * 16 + low));
        i += 2;
    }
    return result;
}

QByteArray trashInfoText(const TrashInfo& info)
{
    const QByteArray date =
        QDateTime::fromSecsSinceEpoch(info.deleted).toString(DateForm).toLatin1();
    return Group.toByteArray() + '\n' + PathKey.toByteArray() + '=' + percentEncoded(info.path) +
           '\n' + DateKey.toByteArray() + '=' + date + '\n';
}

std::optional<TrashInfo> parseTrashInfo(QByteArrayView text)
{
    QByteArrayList lines = text.toByteArray().split('\n');
    // A path without the end of its line may be the first half of one.
    if (keyOf(lines.last()) == PathKey)
        lines.removeLast();
    const qsizetype first = groupStart(lines);
    if (first < 0)
        return std::nullopt;
    std::optional<QByteArray> path;
    std::optional<qint64> deleted;
    // Of a key that stands there twice the first one counts, and what another group tells does not.
    for (const QByteArray& line : lines.sliced(first + 1)) {
        if (line.startsWith('['))
            break;
        if (!path && keyOf(line) == PathKey) {
            path = percentDecoded(valueOf(line));
            if (!path)
                return std::nullopt;
        } else if (!deleted && keyOf(line) == DateKey) {
            deleted = secondsOf(valueOf(line));
        }
    }
    if (!path || path->isEmpty() || goesUp(*path))
        return std::nullopt;
    return TrashInfo{*path, deleted.value_or(0)};
}
