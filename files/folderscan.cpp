#include "files/folderscan.h"

#include "files/filehandle.h"
#include "files/names.h"

#include <algorithm>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace
{

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

EntryKind kindOf(unsigned char type, bool isLink)
{
    switch (type) {
    case DT_DIR:
        return isLink ? EntryKind::FolderLink : EntryKind::Folder;
    case DT_REG:
        return isLink ? EntryKind::FileLink : EntryKind::File;
    default:
        return EntryKind::Other;
    }
}

/// The directory's kind of entry that a file mode stands for.
unsigned char typeOf(unsigned mode)
{
    return static_cast<unsigned char>(IFTODT(mode));
}

bool stat(int folder, const char* name, int flags, struct statx& info)
{
    return statx(folder, name, AT_NO_AUTOMOUNT | flags, STATX_TYPE | STATX_SIZE | STATX_MTIME,
                 &info) == 0;
}

void keepInfo(FolderEntry& entry, const struct statx& info)
{
    entry.hasInfo = true;
    entry.size = qint64(info.stx_size);
    entry.modified = info.stx_mtime.tv_sec;
}

} // namespace

std::optional<FolderScan> FolderScan::read(const QString& path, bool withInfo)
{
    const QByteArray encoded = path.isEmpty() ? QByteArrayLiteral(".") : encodedPath(path);
    FileHandle opened(open(encoded.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseFolder> folder(opened.isOpen() ? fdopendir(opened.get())
                                                                   : nullptr);
    if (!folder)
        return std::nullopt;
    const int descriptor = opened.release();
    FolderScan scan;
    scan.path_ = encoded;
    while (const dirent* entry = readdir(folder.get())) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0)
            scan.add(descriptor, name, entry->d_type, withInfo);
    }
    scan.sort(scan.folders_);
    scan.sort(scan.others_);
    return scan;
}

void FolderScan::add(int folder, const char* name, unsigned char type, bool withInfo)
{
    struct statx info = {};
    if (type == DT_UNKNOWN && stat(folder, name, AT_SYMLINK_NOFOLLOW, info))
        type = typeOf(info.stx_mode);
    const bool isLink = type == DT_LNK;
    FolderEntry entry;
    if ((withInfo || isLink) && stat(folder, name, 0, info)) {
        type = typeOf(info.stx_mode);
        keepInfo(entry, info);
    }
    entry.kind = kindOf(type, isLink);
    entry.nameOffset = quint32(names_.size());
    entry.nameLength = quint16(std::strlen(name));
    names_.append(name, entry.nameLength);
    (entry.isFolder() ? folders_ : others_).push_back(entry);
}

void FolderScan::sort(std::vector<FolderEntry>& entries) const
{
    const char* names = names_.constData();
    std::sort(entries.begin(), entries.end(),
              [names](const FolderEntry& left, const FolderEntry& right) {
                  const int order = std::memcmp(names + left.nameOffset, names + right.nameOffset,
                                                std::min(left.nameLength, right.nameLength));
                  return order != 0 ? order < 0 : left.nameLength < right.nameLength;
              });
}

FolderEntry& FolderScan::entry(int number)
{
    const size_t place = size_t(number);
    return place < folders_.size() ? folders_[place] : others_[place - folders_.size()];
}

QByteArrayView FolderScan::nameBytes(const FolderEntry& entry) const
{
    return {names_.constData() + entry.nameOffset, entry.nameLength};
}

QString FolderScan::name(const FolderEntry& entry) const
{
    return decodeName(nameBytes(entry));
}

bool FolderScan::isHidden(const FolderEntry& entry) const
{
    return nameBytes(entry).front() == '.';
}

void FolderScan::readInfo(FolderEntry& entry) const
{
    if (entry.hasInfo)
        return;
    QByteArray path = path_ + '/';
    path += nameBytes(entry);
    struct statx info = {};
    if (stat(AT_FDCWD, path.constData(), 0, info))
        keepInfo(entry, info);
}

bool FolderScan::isSearchable() const
{
    return ::faccessat(AT_FDCWD, (path_ + '/').constData(), X_OK, AT_EACCESS) == 0;
}
