#include "assoc/bookmarkfile.h"

#include "files/names.h"
#include "files/regularfile.h"
#include "files/textlines.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// The longest path of the system, bytes.
constexpr qsizetype MaxLine = 4096;
/// Far beyond what anyone makes; they keep a broken file from taking all memory.
constexpr qsizetype MaxBytes = 64 * 1024 * 1024;
constexpr qsizetype MaxBookmarks = 1000000;

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
    auto bytes = readRegular(file, MaxBytes + 1);
    if (!bytes)
        return bookmarks;
    // Of a record that the bound cuts nothing is kept.
    const bool isCut = bytes->size() > MaxBytes;
    if (isCut)
        bytes->truncate(bytes->lastIndexOf('\n') + 1);
    TextLines lines(*bytes);
    while (bookmarks.names.size() < MaxBookmarks && !lines.atEnd()) {
        QString line = lines.next();
        if (line.isEmpty())
            line = lines.next();
        if (isCut && lines.atEnd())
            break;
        bookmarks.names.append(line.left(MaxLine));
        bookmarks.paths.append(lines.next().left(MaxLine));
    }
    return bookmarks;
}

bool appendBookmark(const QString& file, const QString& name, const QString& folder)
{
    const auto path = encodeName(folder);
    if (hasLineBreak(name) || hasLineBreak(folder) || !path)
        return false;
    // Without waiting for the other end of what is no regular file.
    const FileHandle opened(open(encodedPath(file).constData(),
                                 O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666));
    // The name is for people; what stands for no bytes may go.
    return opened.isOpen() &&
           appendWhole(opened.get(),
                       '\n' + encodeName(name).value_or(name.toUtf8()) + '\n' + *path);
}
