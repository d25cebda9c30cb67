#include "assoc/bookmarkfile.h"

#include "assoc/tablefile.h"
#include "platform/regularfile.h"

#include <QTextStream>

namespace
{

/// The longest path of the system, bytes.
constexpr qsizetype MaxLine = 4096;

} // namespace

Bookmarks readBookmarks(const QString& file)
{
    Bookmarks bookmarks;
    const auto bytes = readRegularFile(file, MaxTableBytes);
    if (!bytes)
        return bookmarks;
    QTextStream stream(*bytes);
    QString line;
    while (stream.readLineInto(&line)) {
        if (line.isEmpty())
            line = stream.readLine();
        bookmarks.names.append(line.left(MaxLine));
        bookmarks.paths.append(stream.readLine().left(MaxLine));
    }
    return bookmarks;
}
