#pragma once

#include "files/filehandle.h"

#include <QByteArray>
#include <QList>

#include <optional>

#include <sys/types.h>

/// Tells an entry from another one that takes its name.
struct TrashedId {
    dev_t device = 0;
    ino_t inode = 0;
    friend bool operator==(const TrashedId&, const TrashedId&) = default;
};

/// One trash: a folder with "files" in it for what was thrown away, "info" for where each of them
/// was, and "expunged" for what is being deleted. All are reached through descriptors, and none of
/// them through a link, so that nobody who may write beside a trash leads it elsewhere.
class TrashFolder
{
public:
    enum class Missing { Make, Leave };

    /// The trash in the user's data folder. Like the next two: nullopt, with errno set, if it is
    /// not there, cannot be made or is nothing that may be used.
    static std::optional<TrashFolder> inHome(const QByteArray& dataHome, Missing missing);
    /// The user's part of what somebody has set up for all users of a file system: ".Trash" at its
    /// top, which must be a folder with the sticky bit.
    static std::optional<TrashFolder> shared(const QByteArray& top, uid_t user, Missing missing);
    /// The user's own at the top of a file system: ".Trash-" and the number.
    static std::optional<TrashFolder> own(const QByteArray& top, uid_t user, Missing missing);

    // The paths that they have, without a question to anybody.
    static QByteArray homePath(const QByteArray& dataHome);
    static QByteArray sharedPath(const QByteArray& top, uid_t user);
    static QByteArray ownPath(const QByteArray& top, uid_t user);

    const QByteArray& path() const { return path_; }
    /// Where relative paths of info files start.
    const QByteArray& base() const { return base_; }
    /// Whether it lies in the user's data folder, and so tells of paths anywhere.
    bool isHome() const { return isHome_; }
    const TrashedId& id() const { return id_; }

    int folder() const { return folder_.get(); }
    int files() const { return files_.get(); }
    int info() const { return info_.get(); }
    /// The folder for what is being deleted. Not open, with errno set, if it cannot be had.
    FileHandle expunged(Missing missing) const;

private:
    TrashFolder(QByteArray path, QByteArray base, bool isHome);
    static std::optional<TrashFolder> in(FileHandle folder, const QByteArray& path,
                                         const QByteArray& base, bool isHome, Missing missing);

    QByteArray path_;
    QByteArray base_;
    bool isHome_;
    TrashedId id_;
    FileHandle folder_;
    FileHandle files_;
    FileHandle info_;
};

/// What the info file of a name in "files" is called.
QByteArray infoNameOf(const QByteArray& name);
/// The names in an open folder, in no order, without "." and "..".
QByteArrayList namesIn(int folder);
