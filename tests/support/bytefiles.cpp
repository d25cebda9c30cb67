#include "tests/support/bytefiles.h"

#include "tests/support/utf8pieces.h"

#include <QTest>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr char16_t ByteSurrogate = 0xdc00;

void check(bool works, const QByteArray& path)
{
    if (!works)
        QFAIL(qPrintable(shown(path) + QStringLiteral(": ") +
                         QString::fromLocal8Bit(strerror(errno))));
}

int removeEntry(const char* path, const struct stat* /*info*/, int /*kind*/, FTW* place)
{
    return place->level == 0 ? 0 : remove(path);
}

bool isFolder(const QByteArray& path)
{
    struct stat info = {};
    return stat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

void writeFile(const QByteArray& path, const QByteArray& content)
{
    const int file = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    check(file >= 0, path);
    check(write(file, content.constData(), size_t(content.size())) == content.size(), path);
    close(file);
}

QByteArray readFile(const QByteArray& path)
{
    const int file = open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0)
        return {};
    QByteArray content;
    char block[4096];
    for (ssize_t got = 0; (got = read(file, block, sizeof block)) > 0;)
        content.append(block, got);
    close(file);
    return content;
}

void makeFolder(const QByteArray& path)
{
    check(mkdir(path.constData(), 0755) == 0, path);
}

void makeLink(const QByteArray& path, const QByteArray& target)
{
    check(symlink(target.constData(), path.constData()) == 0, path);
}

bool isThere(const QByteArray& path)
{
    struct stat info = {};
    return lstat(path.constData(), &info) == 0;
}

void emptyFolder(const QByteArray& folder)
{
    check(nftw(folder.constData(), removeEntry, 16, FTW_DEPTH | FTW_PHYS) == 0, folder);
}

QList<QByteArray> namesIn(const QByteArray& folder)
{
    QList<QByteArray> names;
    DIR* stream = opendir(folder.constData());
    while (const dirent* entry = stream != nullptr ? readdir(stream) : nullptr) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    if (stream != nullptr)
        closedir(stream);
    std::sort(names.begin(), names.end());
    return names;
}

QList<QByteArray> rowsOf(const QByteArray& folder)
{
    QList<QByteArray> rows = namesIn(folder);
    std::stable_partition(rows.begin(), rows.end(), [&folder](const QByteArray& name) {
        return isFolder(folder + '/' + name);
    });
    rows.prepend("..");
    return rows;
}

QString textOf(const QByteArray& name)
{
    QString text;
    for (const Utf8Piece& piece : utf8Pieces(name))
        if (piece.valid) // fromUcs4() of a string would leave a mark at its beginning out
            text += QChar::fromUcs4(piece.character);
        else
            text += QChar(char16_t(ByteSurrogate + piece.character));
    return text;
}

QByteArray bytesOf(const QString& text)
{
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const bool pair =
            unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (pair)
            bytes += text.mid(i++, 2).toUtf8();
        else if (!unit.isSurrogate())
            bytes += QString(unit).toUtf8();
        else if (unit.unicode() >= ByteSurrogate + 0x80 && unit.unicode() <= ByteSurrogate + 0xff)
            bytes += char(unit.unicode() & 0xff);
        else
            return "(not a name)";
    }
    return bytes;
}

QString shown(const QByteArray& name)
{
    QString text;
    for (const char byte : name.left(80))
        text += byte >= ' ' && byte <= '~'
                    ? QString(QLatin1Char(byte))
                    : QStringLiteral("\\x%1").arg(uchar(byte), 2, 16, QLatin1Char('0'));
    return name.size() > 80 ? text + QStringLiteral("... (%1 bytes)").arg(name.size()) : text;
}

bool ByteTree::Entry::matches(const Entry& now) const
{
    return kind == now.kind && content == now.content &&
           (fresh || (mode == now.mode && inode == now.inode));
}

ByteTree ByteTree::of(const QByteArray& top)
{
    ByteTree tree;
    tree.add(top, QByteArray());
    return tree;
}

ByteTree::Entry ByteTree::entryOf(const QByteArray& path)
{
    Entry entry;
    struct stat info = {};
    check(lstat(path.constData(), &info) == 0, path);
    entry.mode = info.st_mode;
    entry.inode = info.st_ino;
    if (S_ISDIR(info.st_mode)) {
        entry.kind = 'd';
    } else if (S_ISREG(info.st_mode)) {
        entry.kind = 'f';
        entry.content = readFile(path);
    } else if (S_ISLNK(info.st_mode)) {
        entry.kind = 'l';
        entry.content.resize(PATH_MAX);
        entry.content.resize(
            std::max<ssize_t>(readlink(path.constData(), entry.content.data(), PATH_MAX), 0));
    }
    return entry;
}

void ByteTree::add(const QByteArray& top, const QByteArray& below)
{
    for (const QByteArray& name : namesIn(top + '/' + below)) {
        const QByteArray path = below.isEmpty() ? name : below + '/' + name;
        const Entry entry = entryOf(top + '/' + path);
        entries_[path] = entry;
        if (entry.kind == 'd')
            add(top, path);
    }
}

ByteTree::Entries ByteTree::below(const QByteArray& path) const
{
    Entries found;
    for (const auto& [name, entry] : entries_)
        if (name == path || name.startsWith(path + '/'))
            found[name.mid(path.size())] = entry;
    return found;
}

void ByteTree::remove(const QByteArray& path)
{
    for (const auto& [rest, entry] : below(path))
        entries_.erase(path + rest);
}

void ByteTree::move(const QByteArray& from, const QByteArray& to)
{
    const Entries moved = below(from);
    remove(from);
    for (const auto& [rest, entry] : moved)
        entries_[to + rest] = entry;
}

void ByteTree::copy(const QByteArray& from, const QByteArray& to)
{
    for (auto [rest, entry] : below(from)) {
        entry.fresh = true;
        entries_[to + rest] = entry;
    }
}

void ByteTree::addFile(const QByteArray& path, const QByteArray& content)
{
    entries_[path] = {'f', true, 0, 0, content};
}

void ByteTree::addFolder(const QByteArray& path)
{
    entries_[path] = {'d', true, 0, 0, {}};
}

QStringList ByteTree::differences(const ByteTree& now) const
{
    QStringList lines;
    for (const auto& [path, entry] : entries_) {
        const auto found = now.entries_.find(path);
        if (found == now.entries_.end())
            lines += shown(path) + QStringLiteral(" is not there");
        else if (!entry.matches(found->second))
            lines += shown(path) + QStringLiteral(" is another or changed");
    }
    for (const auto& [path, entry] : now.entries_)
        if (!has(path))
            lines += shown(path) + QStringLiteral(" is there");
    return lines;
}
