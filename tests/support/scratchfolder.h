#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// A folder for one test, removed with everything in it, whatever its permissions have become.
/// Names are relative to it, as decodeName() gives them. Every operation fails the test if it does
/// not work.
class ScratchFolder
{
public:
    /// Where it lies: where temporary files do, or in memory, where thousands of entries are made
    /// much faster, if there is such a place with room. What is to be executed stays on the disk.
    enum Medium { Disk, Memory };

    explicit ScratchFolder(Medium medium = Disk);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// The canonical path, without a "/" at its end.
    QString path() const { return path_; }
    QString path(const QString& name) const;

    /// Writes a file, making the folders above it.
    void write(const QString& name, const QByteArray& content = {}) const;
    /// Makes a file of that many bytes without storing them.
    void writeSparse(const QString& name, qint64 bytes) const;
    QByteArray read(const QString& name) const;
    void makeFolder(const QString& name) const;
    void makeLink(const QString& name, const QString& target) const;
    void makeFifo(const QString& name) const;
    void setMode(const QString& name, unsigned mode) const;
    /// Sets the time of last modification, seconds since 1970.
    void setModified(const QString& name, qint64 seconds) const;
    bool exists(const QString& name) const;

private:
    QTemporaryDir folder_;
    QString path_;
};
