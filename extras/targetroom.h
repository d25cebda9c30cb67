#pragma once

#include "extras/targetlimits.h"

#include <sys/stat.h>

/// How much room there is on a file system, and how much of it entries would take, in bytes.
class TargetRoom
{
public:
    TargetRoom() = default;
    /// Of the file system that an open folder is on, which has those limits.
    TargetRoom(int folder, const TargetLimits& limits);

    qint64 freeBytes() const { return freeBytes_; }
    /// What a copy of that file takes: whole blocks, and its holes where there can be none.
    qint64 ofFile(const struct stat& file) const;
    qint64 ofFolder() const { return blockBytes_; }

private:
    qint64 freeBytes_ = 0;
    qint64 blockBytes_ = 1;
    bool keepsHoles_ = true;
};
