#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <map>

// Files by the very bytes of their names, over the calls of the system alone, and trees of them
// that can be compared. Each operation fails the test if it does not work.

void writeFile(const QByteArray& path, const QByteArray& content);
/// The content of a file; empty if there is none.
QByteArray readFile(const QByteArray& path);
void makeFolder(const QByteArray& path);
void makeLink(const QByteArray& path, const QByteArray& target);
bool isThere(const QByteArray& path);
/// Removes everything in a folder; what links lead to stays.
void emptyFolder(const QByteArray& folder);
/// The names in a folder, "." and ".." left out, in the order of their bytes.
QList<QByteArray> namesIn(const QByteArray& folder);
/// The names of the rows that a panel shows for a folder: the way back, folders and links to
/// folders, the rest.
QList<QByteArray> rowsOf(const QByteArray& folder);

/// The text that stands for a name: UTF-8 as it is, and for each byte that is none a lone
/// surrogate, U+DC00 and the byte.
QString textOf(const QByteArray& name);
/// What textOf() made the text from; anything else in it gives "(not a name)".
QByteArray bytesOf(const QString& text);
/// A name for messages: printable ASCII as it is, any other byte as \xHH.
QString shown(const QByteArray& name);

/// All entries below a folder: kind, mode, inode, and content or target.
class ByteTree
{
public:
    static ByteTree of(const QByteArray& top);

    bool has(const QByteArray& path) const { return entries_.count(path) != 0; }
    // Changes to what is expected. Paths are relative to the top.
    /// Takes an entry out with all that is below it.
    void remove(const QByteArray& path);
    /// The same entry, all below it included, under another name.
    void move(const QByteArray& from, const QByteArray& to);
    /// A new entry of the same kind and content, of any mode and inode; so for all below it.
    void copy(const QByteArray& from, const QByteArray& to);
    /// A new entry, of any mode and inode.
    void addFile(const QByteArray& path, const QByteArray& content);
    void addFolder(const QByteArray& path);

    /// What is otherwise in another tree, a line for each entry; empty if they are alike.
    QStringList differences(const ByteTree& now) const;

private:
    struct Entry {
        char kind = '?'; ///< f, d, l, or ? for anything else
        bool fresh = false;
        unsigned mode = 0;
        quint64 inode = 0;
        QByteArray content;

        bool matches(const Entry& now) const;
    };
    using Entries = std::map<QByteArray, Entry>;

    static Entry entryOf(const QByteArray& path);
    void add(const QByteArray& top, const QByteArray& below);
    Entries below(const QByteArray& path) const;

    Entries entries_;
};
