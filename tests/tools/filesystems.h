#pragma once

#include <QByteArray>

/// Makes mounts of this process its own, if it is allowed to. Call it first in main().
void enterOwnMounts();

/// A folder of its own in some folder, removed with everything in it. Paths are bytes without a "/"
/// at the end. A test that cannot have its folder fails.
class OwnFolder
{
public:
    explicit OwnFolder(const QByteArray& parent);
    ~OwnFolder();
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    const QByteArray& path() const { return path_; }
    QByteArray path(const QByteArray& name) const { return path_ + '/' + name; }
    /// The names in it, sorted.
    QList<QByteArray> names() const;

private:
    QByteArray path_;
};

/// A folder that everybody may write, on the file system of temporary files.
QByteArray usualPlace();
/// One on another file system: found, or mounted where that is allowed.
QByteArray otherPlace();

/// A file system of one megabyte; isMounted() is false where a test may not mount.
class SmallFileSystem
{
public:
    static constexpr qint64 Bytes = 1024 * 1024;

    SmallFileSystem();
    ~SmallFileSystem();
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;

    bool isMounted() const { return isMounted_; }
    const QByteArray& path() const { return place_.path(); }

private:
    OwnFolder place_;
    bool isMounted_ = false;
};
