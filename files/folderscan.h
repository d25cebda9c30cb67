#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

/// What the icon of an entry tells.
enum class EntryKind : unsigned char {
    Folder,
    FolderLink, ///< a symbolic link to a folder
    File,
    FileLink, ///< a symbolic link to a regular file
    Other,    ///< device, socket, FIFO or a link that leads nowhere
};

/// An entry of a folder. Its name is kept by the scan.
struct FolderEntry {
    quint32 nameOffset = 0;
    quint16 nameLength = 0; ///< bytes
    EntryKind kind = EntryKind::Other;
    bool hasInfo = false; ///< size and time are known
    qint64 size = 0;      ///< bytes; of what a link leads to
    qint64 modified = 0;  ///< seconds since 1970; of what a link leads to
};

/// A folder's entries, hidden ones included, "." and ".." not: first folders and links to them,
/// then everything else, each in the byte order of the names, which for UTF-8 is code-point order.
class FolderScan
{
public:
    /// Reads a folder in one pass. `withInfo` asks for sizes and times, at the cost of one stat per
    /// entry; without it only links, and entries of file systems that do not tell the kind, cost
    /// one. An entry that vanishes meanwhile stays, without info. An empty path is the current
    /// folder. nullopt when the path is no readable folder.
    static std::optional<FolderScan> read(const QString& path, bool withInfo);

    const std::vector<FolderEntry>& folders() const { return folders_; }
    const std::vector<FolderEntry>& others() const { return others_; }
    /// How many entries there are in both, and one of them: first the folders, then the others.
    int count() const { return int(folders_.size() + others_.size()); }
    FolderEntry& entry(int number);
    /// As decodeName() gives it.
    QString name(const FolderEntry& entry) const;
    /// The name as the system has it. Valid as long as the scan.
    QByteArrayView nameBytes(const FolderEntry& entry) const;
    /// Whether the name begins with a dot.
    bool isHidden(const FolderEntry& entry) const;
    /// Asks for the size and time of an entry of this scan, unless they are known. They stay
    /// unknown if the entry is gone or may not be asked about.
    void readInfo(FolderEntry& entry) const;

private:
    void add(int folder, const char* name, unsigned char type, bool withInfo);
    void sort(std::vector<FolderEntry>& entries) const;

    QByteArray path_;
    QByteArray names_;
    std::vector<FolderEntry> folders_;
    std::vector<FolderEntry> others_;
};
