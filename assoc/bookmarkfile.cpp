#include "assoc/bookmarkfile.h"

#include "assoc/tablefile.h"
#include "platform/regularfile.h"

#include <QFile>
#include <QTextStream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// The longest path of the system, bytes.
constexpr qsizetype MaxLine = 4096;
constexpr qsizetype MaxBookmarks = MaxTableLines / 2;

bool hasLineBreak(const QString& text)
{
    return text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
}

/// Appends all or nothing to an open regular file.
bool appendWhole(int file, const QByteArray& bytes)
{
    struct stat before = {};
    if (fstat(file, &before) != 0 || !S_ISREG(before.st_mode))
        return false;
    if (write(file, bytes.constData(), size_t(bytes.size())) == bytes.size())
        return true;
    // Half a record would make nonsense of those that follow.
    if (ftruncate(file, before.st_size) != 0)
        qWarning("a bookmark file was left with half a record");
    return false;
}

} // namespace

Bookmarks readBookmarks(const QString& file)
{
    Bookmarks bookmarks;
    const auto bytes = readRegularFile(file, MaxTableBytes);
    if (!bytes)
        return bookmarks;
    QTextStream stream(*bytes);
    QString line;
    while (bookmarks.names.size() < MaxBookmarks && stream.readLineInto(&line)) {
        if (line.isEmpty())
            line = stream.readLine();
        bookmarks.names.append(line.left(MaxLine));
        bookmarks.paths.append(stream.readLine().left(MaxLine));
    }
    return bookmarks;
}

bool appendBookmark(const QString& file, const QString& name, const QString& folder)
{
    if (hasLineBreak(name) || hasLineBreak(folder))
        return false;
    // Without waiting for the other end of what is no regular file.
    const int opened = open(QFile::encodeName(file).constData(),
                            O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (opened < 0)
        return false;
    const QString record = QLatin1Char('\n') + name + QLatin1Char('\n') + folder;
    const bool appended = appendWhole(opened, record.toUtf8());
    close(opened);
    return appended;
}
